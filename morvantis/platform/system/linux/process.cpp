#include <morvantis/platform/system/process.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <limits.h>
#include <pwd.h>
#include <sys/random.h>
#include <unistd.h>

xylUInt32 os::current_process_id() { return static_cast<xylUInt32>(getpid()); }

bool os::is_debugger_present() {
	char text[2048];
	const int file = open("/proc/self/status", O_RDONLY | O_CLOEXEC);
	if (file < 0) return false;
	const ssize_t count = read(file, text, sizeof(text) - 1);
	close(file);
	text[count > 0 ? count : 0] = 0;
	static constexpr char label[] = "TracerPid:";
	const char* line = std::strstr(text, label);
	return line && std::strtol(line + sizeof(label) - 1, nullptr, 10) != 0;
}

void os::raise_exception(unsigned int) { std::raise(SIGTRAP); }

bool os::set_environment_variable(const char* name, const char* value) {
	return setenv(name, value, 1) == 0;
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

// A random one: version 4, variant 1 of RFC 4122.
void os::create_guid(unsigned char bytes[16]) {
	unsigned char random[16];
	if (getrandom(random, sizeof(random), 0) != sizeof(random)) return;
	random[7] = static_cast<unsigned char>((random[7] & 0x0F) | 0x40); // the third part's high byte
	random[8] = static_cast<unsigned char>((random[8] & 0x3F) | 0x80);
	std::memcpy(bytes, random, sizeof(random));
}
