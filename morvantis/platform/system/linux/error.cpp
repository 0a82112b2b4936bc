#include <morvantis/platform/system/error.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

xylUInt32 os::last_error() { return static_cast<xylUInt32>(errno); }

void os::set_last_error(xylUInt32 code) { errno = static_cast<int>(code); }

bool os::system_message(xylUInt32 code, char* buffer, xylUInt32 size) {
	const char* message = strerrordesc_np(static_cast<int>(code));
	const size_t length = message ? std::strlen(message) : 0;
	if (!message || length >= size) {
		errno = message ? ERANGE : EINVAL;
		return false;
	}
	std::memcpy(buffer, message, length + 1);
	return true;
}

char* os::allocate_system_message(xylUInt32 code) {
	const char* message = strerrordesc_np(static_cast<int>(code));
	return message ? strdup(message) : nullptr;
}

void os::free_system_message(char* message) { std::free(message); }

// The stream has no buffer unless the host gives it one.
void os::debug_output(const char* text) {
	std::fputs(text, stderr);
	std::fflush(stderr);
}
