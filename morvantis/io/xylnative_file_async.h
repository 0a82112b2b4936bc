// A file on the system's own handle that is read while the caller goes on.
#pragma once

#include <morvantis/core/xyltypes.h>
#include <morvantis/io/xylnative_file.h> // flags and starting points

enum xylAsync_io_status {
	xylAsync_io_failed = 0,
	xylAsync_io_pending = 1,
	xylAsync_io_completed = 2,
};

// The system's record of one read under way; zeros before the first one.
struct xylOverlapped {
	alignas(8) unsigned char storage[192];
};

// Reads by the system's overlapped reads, one at a time: start with read(), ask with
// get_async_status(). Until that no longer says pending, or the object is closed, the object and
// the memory that is read to belong to the system and must stay where they are.
//
// Failure: the results say so; nothing is reported to the host.
// Threads: an object belongs to one thread at a time.
// Allocation: none from the library's heap.
class MORVANTIS_API xylNative_file_async {
public:
	// Closed.
	xylNative_file_async() = default;
	// Closed, then open().
	xylNative_file_async(const char* name, int access, int mode);
	// Closes an open file.
	~xylNative_file_async();

	bool is_valid() const; // whether it is open

	// As xylNative_file::open(), for overlapped use, without a counter.
	bool open(const char* name, int access, int mode);
	// As xylNative_file::close(). A read under way is given up first: afterwards nothing more
	// arrives in its memory.
	bool close();

	// Where the next read starts: at `offset`, which is the result, whatever `from` says. The file
	// isn't touched.
	//
	// kept: a read takes the low 32 bits of it, so it starts within the first 4 GiB.
	xylInt64 set_pointer(xylUInt64 offset, xylFile_starting_point from);

	// Starts reading at read_position, which stays; the caller moves it with set_pointer(). Of a
	// pipe the position has no meaning.
	//
	// `size`  bytes, cut to 32 bits
	// Whether it could be started is seen in get_async_status().
	void read(void* dst, xylUInt64 size);

	// How the last read() goes; with `wait`, not before it has ended. May be asked again.
	//
	// `transferred`  null, or where the bytes read go; 0 unless completed
	// Result         completed with fewer bytes than asked for where the file ends; a read that
	//                starts at the end or behind it has failed. An object that has not read says
	//                completed, with no bytes.
	xylAsync_io_status get_async_status(xylUInt64* transferred, bool wait);

	// Not available: writes nothing. The first call in the process says so on the debug output.
	void write(const void*, xylUInt64);

	// Bytes of the file; no meaning on failure.
	xylUInt64 get_file_size() const;

	xylOverlapped overlapped{};
	// The system's handle; all bits set when closed.
	void* handle = reinterpret_cast<void*>(~xylUInt64{0});
	xylUInt64 read_position = 0; // where the next read starts, in bytes

private:
	// Not copied: two objects would close one handle.
	xylNative_file_async(const xylNative_file_async&) {}
	xylNative_file_async& operator=(const xylNative_file_async&) { return *this; }
};
