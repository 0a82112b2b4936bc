#include <morvantis/platform/system/error.h>

#include <morvantis/platform/system/windows/include_windows.h>

namespace {

constexpr DWORD process_default_language = 0x400;

} // namespace

xylUInt32 os::last_error() { return GetLastError(); }

void os::set_last_error(xylUInt32 code) { SetLastError(code); }

bool os::system_message(xylUInt32 code, char* buffer, xylUInt32 size) {
	return FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, process_default_language,
	                      buffer, size, nullptr) != 0;
}

char* os::allocate_system_message(xylUInt32 code) {
	char* message = nullptr;
	FormatMessageA(
		FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
		nullptr, code, process_default_language, reinterpret_cast<char*>(&message), 0, nullptr);
	return message;
}

void os::free_system_message(char* message) { LocalFree(message); }

void os::debug_output(const char* text) { OutputDebugStringA(text); }
