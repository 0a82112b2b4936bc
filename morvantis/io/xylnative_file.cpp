#include <morvantis/io/xylnative_file.h>

#include <morvantis/io/open_file.h>
#include <morvantis/platform/system/file.h>

#include <algorithm>

namespace {

constexpr xylUInt64 largest_read = 0x1000000;   // 16 MiB
constexpr xylUInt64 largest_write = 0xFFFFFFFF; // what the system's count can say

os::File_origin origin_of(xylFile_starting_point from) {
	switch (from) {
	case xylFile_from_current:
		return os::File_origin::current;
	case xylFile_from_end:
		return os::File_origin::end;
	default:
		return os::File_origin::start;
	}
}

} // namespace

std::atomic<int> xylNative_file::open_files_count_ = 0;

xylNative_file::xylNative_file(const char* name, int access, int mode) { open(name, access, mode); }

xylNative_file::~xylNative_file() { close(); }

bool xylNative_file::is_valid() const { return handle != os::no_file(); }

bool xylNative_file::open(const char* name, int access, int mode) {
	handle = open_handle(name, access, mode, false);
	if (!is_valid()) return false;
	++open_files_count_;
	return true;
}

bool xylNative_file::close() {
	if (!is_valid()) return false;
	--open_files_count_;
	return close_handle(handle);
}

xylInt64 xylNative_file::set_pointer(xylUInt64 offset, xylFile_starting_point from) {
	return os::seek_file(handle, offset, origin_of(from));
}

xylUInt64 xylNative_file::read(void* dst, xylUInt64 size) {
	char* target = static_cast<char*>(dst);
	xylUInt64 total = 0;
	while (total < size) {
		const xylUInt64 piece = std::min(size - total, largest_read);
		const xylInt64 count = os::read_file(handle, target + total, static_cast<xylUInt32>(piece));
		if (count < 0 && os::is_interrupted()) continue;
		if (count < 0) return 0;
		if (count == 0) break;
		total += static_cast<xylUInt64>(count);
	}
	return total;
}

xylUInt64 xylNative_file::write(const void* src, xylUInt64 size) {
	const char* source = static_cast<const char*>(src);
	xylUInt64 total = 0;
	while (total < size) {
		const xylUInt64 piece = std::min(size - total, largest_write);
		const xylInt64 count =
			os::write_file(handle, source + total, static_cast<xylUInt32>(piece));
		if (count > 0) total += static_cast<xylUInt64>(count);
	}
	return total;
}

xylUInt64 xylNative_file::get_file_size() const {
	xylUInt64 size = 0;
	return os::file_size(handle, &size) ? size : ~xylUInt64{0};
}
