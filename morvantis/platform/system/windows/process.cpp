#include <morvantis/platform/system/process.h>

#include <morvantis/platform/system/windows/include_windows.h>

#include <objbase.h> // CoCreateGuid

#include <cstring>

xylUInt32 os::current_process_id() { return GetCurrentProcessId(); }

bool os::is_debugger_present() { return IsDebuggerPresent() != 0; }

void os::raise_exception(unsigned int code) { RaiseException(code, 0, 0, nullptr); }

bool os::set_environment_variable(const char* name, const char* value) {
	return SetEnvironmentVariableA(name, value) == TRUE;
}

bool os::computer_name(char* buffer, xylUInt32* size) {
	DWORD count = *size;
	if (!GetComputerNameA(buffer, &count)) return false;
	*size = count;
	return true;
}

bool os::user_name(char* buffer, xylUInt32* size) {
	DWORD count = *size;
	if (!GetUserNameA(buffer, &count)) return false;
	*size = count;
	return true;
}

void os::create_guid(unsigned char bytes[16]) {
	GUID guid;
	static_assert(sizeof(guid) == 16);
	std::memcpy(&guid, bytes, sizeof(guid));
	CoCreateGuid(&guid);
	std::memcpy(bytes, &guid, sizeof(guid));
}
