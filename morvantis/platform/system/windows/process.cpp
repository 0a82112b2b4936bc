#include <morvantis/platform/system/process.h>

#include <morvantis/platform/system/windows/include_windows.h>

#include <objbase.h> // CoCreateGuid

#include <cstring>

xylUInt32 os::current_process_id() { return GetCurrentProcessId(); }

void* os::current_process() { return GetCurrentProcess(); }

bool os::is_debugger_present() { return IsDebuggerPresent() != 0; }

void os::raise_exception(unsigned int code) { RaiseException(code, 0, 0, nullptr); }

bool os::set_environment_variable(const char* name, const char* value) {
	return SetEnvironmentVariableA(name, value) == TRUE;
}

size_t os::environment_variable(const char* name, char* buffer, size_t size) {
	const DWORD length = GetEnvironmentVariableA(name, buffer, static_cast<DWORD>(size));
	return length < size ? length : 0;
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

size_t os::current_folder(char* buffer, size_t size) {
	const DWORD length = GetCurrentDirectoryA(static_cast<DWORD>(size), buffer);
	return length < size ? length : 0;
}

int os::start_process(char* command_line, xylUInt32 creation_flags, const char* environment,
                      const char* folder, Child_process* child) {
	STARTUPINFOA startup{};
	static_assert(sizeof(startup) == 104);
	startup.cb = sizeof(startup);
	startup.wShowWindow = SW_SHOWNORMAL; // without effect: dwFlags doesn't name it
	PROCESS_INFORMATION information{};
	const BOOL result =
		CreateProcessA(nullptr, command_line, nullptr, nullptr, FALSE, creation_flags,
	                   const_cast<char*>(environment), folder, &startup, &information);
	*child = {information.hProcess, information.hThread, information.dwProcessId};
	return result;
}

void os::wait_for_process(const Child_process& child) {
	WaitForSingleObject(child.process, INFINITE);
}

void os::create_guid(unsigned char bytes[16]) {
	GUID guid;
	static_assert(sizeof(guid) == 16);
	std::memcpy(&guid, bytes, sizeof(guid));
	CoCreateGuid(&guid);
	std::memcpy(bytes, &guid, sizeof(guid));
}
