#include <morvantis/platform/system/file.h>

#include <morvantis/platform/system/windows/include_windows.h>

static_assert(sizeof(OVERLAPPED) <= os::overlapped_size && alignof(OVERLAPPED) <= 8);

namespace {

DWORD flag(bool is_set, DWORD value) { return is_set ? value : 0; }

} // namespace

void* os::open_file(const char* path, const File_request& request) {
	const DWORD access = flag(request.read, GENERIC_READ) | flag(request.write, GENERIC_WRITE);
	const DWORD share =
		flag(request.share_read, FILE_SHARE_READ) | flag(request.share_write, FILE_SHARE_WRITE);
	const DWORD attributes = flag(request.normal, FILE_ATTRIBUTE_NORMAL) |
	                         flag(request.archive, FILE_ATTRIBUTE_ARCHIVE) |
	                         flag(request.read_only, FILE_ATTRIBUTE_READONLY) |
	                         flag(request.system, FILE_ATTRIBUTE_SYSTEM) |
	                         flag(request.temporary, FILE_ATTRIBUTE_TEMPORARY) |
	                         flag(request.backup_semantics, FILE_FLAG_BACKUP_SEMANTICS) |
	                         flag(request.overlapped, FILE_FLAG_OVERLAPPED) |
	                         flag(request.sequential, FILE_FLAG_SEQUENTIAL_SCAN);
	static_assert(CREATE_NEW == 1 && CREATE_ALWAYS == 2 && OPEN_EXISTING == 3);
	return CreateFileA(path, access, share, nullptr, request.disposition, attributes, nullptr);
}

bool os::close_file(void* handle) { return CloseHandle(handle) != 0; }

xylInt64 os::read_file(void* handle, void* target, xylUInt32 size) {
	DWORD count = 0;
	return ReadFile(handle, target, size, &count, nullptr) ? count : -1ll;
}

xylInt64 os::write_file(void* handle, const void* source, xylUInt32 size) {
	DWORD count = 0;
	return WriteFile(handle, source, size, &count, nullptr) ? count : -1ll;
}

bool os::is_interrupted() { return false; }

xylInt64 os::seek_file(void* handle, xylUInt64 offset, File_origin origin) {
	static constexpr DWORD method[] = {FILE_BEGIN, FILE_CURRENT, FILE_END};
	LARGE_INTEGER distance, position;
	distance.QuadPart = static_cast<LONGLONG>(offset);
	if (!SetFilePointerEx(handle, distance, &position, method[static_cast<int>(origin)])) return -1;
	return position.QuadPart;
}

bool os::file_size(void* handle, xylUInt64* size) {
	LARGE_INTEGER answer;
	if (!GetFileSizeEx(handle, &answer)) return false;
	*size = static_cast<xylUInt64>(answer.QuadPart);
	return true;
}

void os::start_overlapped_read(void* handle, void* overlapped, xylUInt64 offset, void* target,
                               xylUInt32 size) {
	OVERLAPPED* record = static_cast<OVERLAPPED*>(overlapped);
	record->Offset = static_cast<DWORD>(offset);
	record->OffsetHigh = static_cast<DWORD>(offset >> 32);
	ReadFile(handle, target, size, nullptr, record);
}

os::Overlapped_state os::query_overlapped(void* handle, void* overlapped, bool wait,
                                          xylUInt32* transferred) {
	DWORD count = 0;
	const BOOL result =
		GetOverlappedResult(handle, static_cast<OVERLAPPED*>(overlapped), &count, wait);
	*transferred = count;
	if (result == TRUE) return Overlapped_state::completed;
	const DWORD error = GetLastError();
	return error == ERROR_IO_INCOMPLETE || error == ERROR_IO_PENDING ? Overlapped_state::pending
	                                                                 : Overlapped_state::failed;
}

// A read that could not be started looks as if it were pending; there is nothing to cancel then.
void os::give_up_overlapped_read(void* handle, void* overlapped) {
	OVERLAPPED* record = static_cast<OVERLAPPED*>(overlapped);
	DWORD count = 0;
	if (HasOverlappedIoCompleted(record) || !CancelIoEx(handle, record)) return;
	GetOverlappedResult(handle, record, &count, TRUE);
}

std::FILE* os::open_stream(const char* path, const char* mode) { return std::fopen(path, mode); }

std::FILE* os::reopen_stream(const char* path, const char* mode, std::FILE* stream) {
	return std::freopen(path, mode, stream);
}

xylInt64 os::tell_stream(std::FILE* stream) { return _ftelli64(stream); }

// mingw-w64 makes the call out of fsetpos(), after which Wine 8 keeps the mark of the end.
int os::seek_stream(std::FILE* stream, xylInt64 offset, int origin) {
	if (_fseeki64(stream, offset, origin) != 0) return -1;
	if (std::feof(stream) && !std::ferror(stream)) std::clearerr(stream);
	return 0;
}
