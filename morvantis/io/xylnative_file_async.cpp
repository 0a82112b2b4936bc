#include <morvantis/io/xylnative_file_async.h>

#include <morvantis/core/not_implemented.h>
#include <morvantis/io/open_file.h>
#include <morvantis/platform/system/file.h>

static_assert(sizeof(xylOverlapped) == os::overlapped_size);

xylNative_file_async::xylNative_file_async(const char* name, int access, int mode) {
	open(name, access, mode);
}

xylNative_file_async::~xylNative_file_async() { close(); }

bool xylNative_file_async::is_valid() const { return handle != os::no_file(); }

bool xylNative_file_async::open(const char* name, int access, int mode) {
	handle = open_handle(name, access, mode, true);
	return is_valid();
}

bool xylNative_file_async::close() {
	if (!is_valid()) return false;
	os::give_up_overlapped_read(handle, &overlapped);
	return close_handle(handle);
}

xylInt64 xylNative_file_async::set_pointer(xylUInt64 offset, xylFile_starting_point) {
	read_position = offset;
	return static_cast<xylInt64>(offset);
}

void xylNative_file_async::read(void* dst, xylUInt64 size) {
	overlapped = {};
	// kept: the high half of the position is left out.
	os::start_overlapped_read(handle, &overlapped, static_cast<xylUInt32>(read_position), dst,
	                          static_cast<xylUInt32>(size));
}

xylAsync_io_status xylNative_file_async::get_async_status(xylUInt64* transferred, bool wait) {
	xylUInt32 count = 0;
	const os::Overlapped_state state = os::query_overlapped(handle, &overlapped, wait, &count);
	if (transferred) *transferred = count;
	switch (state) {
	case os::Overlapped_state::completed:
		return xylAsync_io_completed;
	case os::Overlapped_state::pending:
		return xylAsync_io_pending;
	default:
		return xylAsync_io_failed;
	}
}

void xylNative_file_async::write(const void*, xylUInt64) {
	static constinit std::atomic<bool> said = false;
	// kept: the place that log tools know.
	say_not_implemented(said, "xylNative_file_async::write", "xylnative_file", 776);
}

xylUInt64 xylNative_file_async::get_file_size() const {
	xylUInt64 size = 0;
	os::file_size(handle, &size);
	return size;
}
