#include <morvantis/io/open_file.h>

#include <morvantis/io/xylfile.h>
#include <morvantis/io/xylnative_file.h> // the flags
#include <morvantis/platform/system/file.h>
#include <morvantis/platform/zubplatform.h>

xylConstString<256> final_path(const char* name) {
	xylConstString<256> path;
	if (name) path = xylConstString<256>(name); // which ends the process where it does not fit
	return zubPlatform::convert_base_path_to_final(path);
}

namespace {

// The flags taken apart, without `overlapped`.
os::File_request decode_open_flags(int access, int mode) {
	os::File_request request;
	request.read = access & xylFile_access_read;
	request.write = access & xylFile_access_write;
	request.share_read = access & xylFile_share_read;
	request.share_write = access & xylFile_share_write;
	// kept: the bits are put together, so create-new with create-always is open-existing, and
	// open-existing stays itself with anything.
	request.disposition = (mode & xylFile_flag_open_existing ? 3u : 0u) |
	                      (mode & xylFile_flag_create_always ? 2u : 0u) |
	                      (mode & xylFile_flag_create_new ? 1u : 0u);
	request.normal = mode & xylFile_flag_normal;
	if (request.normal) return request; // drops the other attributes and ways of use
	request.archive = mode & xylFile_flag_archive;
	request.backup_semantics = mode & xylFile_flag_backup_semantics;
	request.read_only = mode & xylFile_flag_read_only;
	request.sequential = mode & xylFile_flag_sequential;
	request.system = mode & xylFile_flag_system;
	request.temporary = mode & xylFile_flag_temporary;
	return request;
}

} // namespace

void* open_handle(const char* name, int access, int mode, bool overlapped) {
	os::File_request request = decode_open_flags(access, mode);
	request.overlapped = overlapped;
	return os::open_file(final_path(name).char_p(), request);
}

bool close_handle(void*& handle) {
	const bool is_closed = os::close_file(handle);
	handle = os::no_file();
	return is_closed;
}

xylUInt64 size_to_load(xylFile& file) {
	constexpr xylUInt64 no_position = ~xylUInt64{0};
	const xylUInt64 size = file.get_file_size();
	return size == no_position ? 0 : size;
}
