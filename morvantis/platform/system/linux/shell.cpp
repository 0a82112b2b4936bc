#include <morvantis/platform/system/shell.h>

#include <cerrno>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

// A shell starts the desktop's opener and ends at once: the opener is nobody's child, so nobody has
// to collect it, and a missing one is noticed where nobody hears of it.
void os::shell_execute(const char*, const char* file) {
	if (!file) return;
	static constexpr char script[] =
		"if command -v xdg-open; then xdg-open \"$1\" & fi"; // $1: not read as text of the script
	const char* arguments[] = {"sh", "-c", script, "sh", file, nullptr};
	posix_spawn_file_actions_t actions;
	posix_spawn_file_actions_init(&actions);
	for (int standard_file = STDIN_FILENO; standard_file <= STDERR_FILENO; ++standard_file) {
		posix_spawn_file_actions_addopen(&actions, standard_file, "/dev/null", O_RDWR, 0);
	}
	posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
	posix_spawnattr_t attributes;
	posix_spawnattr_init(&attributes);
	posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID); // outlives our terminal
	pid_t id = 0;
	const int failure =
		posix_spawn(&id, "/bin/sh", &actions, &attributes, const_cast<char**>(arguments), environ);
	posix_spawnattr_destroy(&attributes);
	posix_spawn_file_actions_destroy(&actions);
	if (failure) return;
	while (waitpid(id, nullptr, 0) < 0 && errno == EINTR) {
	}
}

void os::open_folder_and_select(const char* folder, const char*) { shell_execute(nullptr, folder); }
