#include <morvantis/platform/system/path.h>

#include <morvantis/platform/system/windows/include_windows.h>

#include <shellapi.h> // SHFileOperationA

#include <cstring>

#include <sys/stat.h>
#include <sys/types.h>

size_t os::temporary_folder(char* buffer, size_t size) {
	buffer[0] = 0;
	return GetTempPathA(static_cast<DWORD>(size), buffer);
}

size_t os::executable_path(char* buffer, size_t size) {
	buffer[0] = 0;
	const size_t length = GetModuleFileNameA(nullptr, buffer, static_cast<DWORD>(size));
	buffer[size - 1] = 0; // older systems fill the buffer without one
	return length;
}

size_t os::absolute_path(const char* path, char* buffer, size_t size) {
	buffer[0] = 0;
	return GetFullPathNameA(path, static_cast<DWORD>(size), buffer, nullptr);
}

const char* os::file_name(const char* path) {
	const char* separator = std::strrchr(path, '\\');
	return separator ? separator + 1 : path;
}

os::Path_kind os::path_kind(const char* path) {
	const DWORD attributes = GetFileAttributesA(path);
	if (attributes == INVALID_FILE_ATTRIBUTES) return Path_kind::missing;
	return attributes & FILE_ATTRIBUTE_DIRECTORY ? Path_kind::folder : Path_kind::file;
}

bool os::modification_time(const char* path, xylInt64* seconds) {
	struct _stat64i32 facts;
	if (_stat64i32(path, &facts) != 0) return false;
	*seconds = facts.st_mtime;
	return true;
}

bool os::create_folder(const char* path) { return CreateDirectoryA(path, nullptr) != 0; }

bool os::delete_tree(const char* path) {
	SHFILEOPSTRUCTA operation{};
	operation.wFunc = FO_DELETE;
	operation.pFrom = path;
	operation.fFlags = FOF_SILENT | FOF_NOCONFIRMATION;
	static_assert((FOF_SILENT | FOF_NOCONFIRMATION) == 20);
	return SHFileOperationA(&operation) == 0;
}
