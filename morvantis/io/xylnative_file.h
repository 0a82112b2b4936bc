// A file on the system's own handle, without a buffer of its own.
#pragma once

#include <morvantis/core/xyltypes.h>

#include <atomic>

// Where an offset counts from; any other value is as from_start.
enum xylFile_starting_point : int {
	xylFile_from_start = 0,
	xylFile_from_current = 1,
	xylFile_from_end = 2,
};

// What a file is opened for, and what other handles may do with it meanwhile. Linux has no rule of
// sharing; there the two bits have no effect. With neither read nor write the handle only answers
// questions; on Linux that needs the right to both.
enum xylFile_access_flags {
	xylFile_access_read = 1,
	xylFile_access_write = 2,
	xylFile_share_read = 4,
	xylFile_share_write = 8,
};

// How a file is opened.
//
// open_existing fails on a missing file, create_new on an existing one, and create_always empties
// an existing one. Without any of the three open() fails. kept: they are bits of one number and not
// a choice: create_always with create_new is open_existing, and open_existing wins over anything.
//
// A folder opens only with backup_semantics. The attributes archive, system and temporary are
// Windows's; read_only makes a file of mode 0444 on Linux. Each is for a file that is made, which
// the new handle may write in any case. With normal, all other attributes, backup_semantics and
// sequential are dropped. sequential is a hint.
enum xylFile_mode_flags {
	xylFile_flag_sequential = 1,
	xylFile_flag_temporary = 2,
	xylFile_flag_open_existing = 4,
	xylFile_flag_create_always = 8,
	xylFile_flag_create_new = 16,
	xylFile_flag_backup_semantics = 32,
	xylFile_flag_archive = 64,
	xylFile_flag_system = 128,
	xylFile_flag_normal = 256,
	xylFile_flag_read_only = 1024,
};

// Reads go straight into the caller's memory and writes straight out of it.
//
// Failure: the results say so; nothing is reported to the host. The reason is left in the system's
// last error.
// Threads: an object belongs to one thread at a time; the counter may be read by any.
// Allocation: none.
class MORVANTIS_API xylNative_file {
public:
	// Closed.
	xylNative_file() = default;
	// Closed, then open(), whose result is_valid() tells.
	xylNative_file(const char* name, int access, int mode);
	// Closes an open file.
	~xylNative_file();

	bool is_valid() const; // whether it is open

	// Opens a file. Programs that the library starts don't inherit it.
	//
	// `name`    may be base-relative; null is the empty name, which opens nothing. One of 256
	//           characters or more ends the process.
	// `access`  bits of xylFile_access_flags
	// `mode`    bits of xylFile_mode_flags
	// Result    whether it is open now. On failure the object is closed, whatever it was before.
	// kept: a file that was open is not closed; its handle is lost, and the counter stays one too
	// high.
	bool open(const char* name, int access, int mode);
	// False on a closed object, with nothing done, and when the system's closing fails; the object
	// is closed in any case.
	bool close();

	// Moves the position; it may go behind the end. `offset` is 64 bits with a sign in an unsigned
	// type, so that a step back is possible.
	//
	// Result  the new position, which has a meaning only when the system could do it.
	xylInt64 set_pointer(xylUInt64 offset, xylFile_starting_point from);

	// Reads from the position on, in calls of the system for at most 16 MiB each.
	//
	// Result  bytes read, fewer than `size` only when a call delivered none, as at the end of the
	//         file.
	// kept: a call that fails makes the result 0, even when bytes have arrived before it.
	xylUInt64 read(void* dst, xylUInt64 size);

	// Writes all bytes at the position, in calls of the system for as much as 32 bits say.
	//
	// Result  `size`.
	// kept: failures are not looked at, and what was not written is tried again: on a full disk, or
	// on a closed object, this never returns.
	xylUInt64 write(const void* src, xylUInt64 size);

	// Bytes of the file; all bits set on failure, as for a closed object.
	xylUInt64 get_file_size() const;

	// Open handles of this class in the process: successes of open() less closings.
	static std::atomic<int> open_files_count_;

	// The system's handle; all bits set when closed.
	void* handle = reinterpret_cast<void*>(~xylUInt64{0});

private:
	// Not copied: two objects would close one handle.
	xylNative_file(const xylNative_file&) {}
	xylNative_file& operator=(const xylNative_file&) { return *this; }
};
