#include <morvantis/platform/system/process.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <limits.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/random.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr size_t most_words = 512; // what a command line of 1,024 characters can hold

// Parts a command line at its blanks, in place; double quotes group and vanish.
//
// Result  the number of words, which `words` holds with a null behind them; 0 when there are more
//         than fit.
size_t split_words(char* text, char* (&words)[most_words + 1]) {
	size_t count = 0;
	for (;;) {
		text += std::strspn(text, " \t");
		if (!*text) break;
		if (count == most_words) return 0;
		words[count++] = text;
		char* end = text; // of the word as it is without its quotes
		for (bool quoted = false; *text && (quoted || !std::strchr(" \t", *text)); ++text) {
			if (*text == '"') {
				quoted = !quoted;
			} else {
				*end++ = *text;
			}
		}
		const bool is_last = !*text;
		*end = 0;
		if (is_last) break;
		++text;
	}
	words[count] = nullptr;
	return count;
}

// The texts of an environment block, as far as they fit, with a null behind them.
void split_texts(const char* block, char* (&texts)[most_words + 1]) {
	size_t count = 0;
	for (; *block && count < most_words; block += std::strlen(block) + 1) {
		texts[count++] = const_cast<char*>(block); // only read
	}
	texts[count] = nullptr;
}

} // namespace

xylUInt32 os::current_process_id() { return static_cast<xylUInt32>(getpid()); }

// Nothing here has such handles; the value is the other system's.
void* os::current_process() { return reinterpret_cast<void*>(-1); }

bool os::is_debugger_present() {
	char text[2048];
	// Of the thread: no debugger attaches to the process's first one once that has ended.
	const int file = open("/proc/thread-self/status", O_RDONLY | O_CLOEXEC);
	if (file < 0) return false;
	const ssize_t count = read(file, text, sizeof(text) - 1);
	close(file);
	text[count > 0 ? count : 0] = 0;
	static constexpr char label[] = "\nTracerPid:"; // the first line is a name of anybody's choice
	const char* line = std::strstr(text, label);
	return line && std::strtol(line + sizeof(label) - 1, nullptr, 10) != 0;
}

void os::raise_exception(unsigned int) { std::raise(SIGTRAP); }

bool os::set_environment_variable(const char* name, const char* value) {
	return setenv(name, value, 1) == 0;
}

size_t os::environment_variable(const char* name, char* buffer, size_t size) {
	const char* value = std::getenv(name);
	const size_t length = value ? std::strlen(value) : 0;
	if (length >= size) return 0;
	std::memcpy(buffer, value ? value : "", length + 1);
	return length;
}

// The host part alone, cut like the other system's names.
bool os::computer_name(char* buffer, xylUInt32* size) {
	char name[HOST_NAME_MAX + 1]{};
	if (gethostname(name, sizeof(name) - 1) != 0) return false;
	const size_t length = std::min<size_t>(std::strcspn(name, "."), 15);
	if (length >= *size) {
		errno = ERANGE;
		return false;
	}
	std::memcpy(buffer, name, length);
	buffer[length] = 0;
	*size = static_cast<xylUInt32>(length);
	return true;
}

bool os::user_name(char* buffer, xylUInt32* size) {
	char strings[4096];
	passwd entry{};
	passwd* found = nullptr;
	const int failure = getpwuid_r(geteuid(), &entry, strings, sizeof(strings), &found);
	if (!found) {
		errno = failure ? failure : ENOENT;
		return false;
	}
	const size_t length = std::strlen(entry.pw_name);
	if (length >= *size) {
		errno = ERANGE;
		return false;
	}
	std::memcpy(buffer, entry.pw_name, length + 1);
	*size = static_cast<xylUInt32>(length + 1);
	return true;
}

size_t os::current_folder(char* buffer, size_t size) {
	return getcwd(buffer, size) ? std::strlen(buffer) : 0;
}

int os::start_process(char* command_line, xylUInt32, const char* environment, const char* folder,
                      Child_process* child) {
	char* arguments[most_words + 1];
	if (split_words(command_line, arguments) == 0) {
		errno = EINVAL;
		return 0;
	}
	char* variables[most_words + 1];
	if (environment) split_texts(environment, variables);
	posix_spawn_file_actions_t actions;
	posix_spawn_file_actions_init(&actions);
	posix_spawn_file_actions_addchdir_np(&actions, folder);
	posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
	pid_t id = 0;
	errno = posix_spawnp(&id, arguments[0], &actions, nullptr, arguments,
	                     environment ? variables : environ);
	posix_spawn_file_actions_destroy(&actions);
	if (errno != 0) return 0;
	// The number stands for the process: it isn't given to another one before it is collected.
	child->process = reinterpret_cast<void*>(static_cast<size_t>(id));
	child->id = static_cast<xylUInt32>(id);
	return 1;
}

void os::wait_for_process(const Child_process& child) {
	while (waitpid(static_cast<pid_t>(child.id), nullptr, 0) < 0 && errno == EINTR) {
	}
}

// A random one: version 4, variant 1 of RFC 4122.
void os::create_guid(unsigned char bytes[16]) {
	unsigned char random[16];
	if (getrandom(random, sizeof(random), 0) != sizeof(random)) return;
	random[7] = static_cast<unsigned char>((random[7] & 0x0F) | 0x40); // the third part's high byte
	random[8] = static_cast<unsigned char>((random[8] & 0x3F) | 0x80);
	std::memcpy(bytes, random, sizeof(random));
}
