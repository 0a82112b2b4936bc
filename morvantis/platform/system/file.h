// Files on the system's own handles, reads that go on by themselves, and what the run-time's
// streams leave to the system.
//
// A handle is the system's, opaque; no_file() for none. Calls are single calls of the system: no
// limit on sizes but that of the type, no buffer, no allocation from the library's heap. A call
// that fails leaves its reason in last_error(). Any thread may call all of these, one at a time on
// one handle.
#pragma once

#include <morvantis/core/xyltypes.h> // xylInt64, xylUInt32, xylUInt64

#include <cstdio> // FILE

namespace os {

// All bits set.
inline void* no_file() { return reinterpret_cast<void*>(~xylUInt64{0}); }

struct File_request {
	// What the handle is for; neither is allowed and leaves a handle that only answers questions.
	bool read = false;
	bool write = false;
	// What other handles may do meanwhile. No effect where the system has no such rule.
	bool share_read = false;
	bool share_write = false;
	// 1 makes a file and fails when there is one, 2 makes it or empties the one that is there, 3
	// opens the one that is there; all else fails.
	xylUInt32 disposition = 0;
	// Attributes of a file that is made. Where the system has but one of them it is read_only, and
	// the new handle may still write. `normal` says that the file has none and is set alone.
	bool normal = false;
	bool archive = false;
	bool read_only = false;
	bool system = false;
	bool temporary = false;
	// Ways of use.
	bool backup_semantics = false; // lets a folder be opened
	bool overlapped = false;       // for start_overlapped_read()
	bool sequential = false;       // a hint

	bool operator==(const File_request&) const = default;
};

// Opens a file; processes that the library starts don't inherit the handle. no_file() on failure,
// as for a folder without backup_semantics.
void* open_file(const char* path, const File_request& request);

bool close_file(void* handle);

// Reads from the file's position on and moves it.
//
// Result  the bytes read, 0 at the end of the file, and possibly fewer than `size` from a pipe;
//         negative on failure.
xylInt64 read_file(void* handle, void* target, xylUInt32 size);

// Writes at the file's position and moves it. The bytes written, possibly fewer than `size`;
// negative on failure.
xylInt64 write_file(void* handle, const void* source, xylUInt32 size);

// Whether a call that has just failed met nothing worse than a signal, before any byte, and is to
// be made again.
bool is_interrupted();

enum class File_origin { start, current, end };

// Moves the file's position; it may go behind the end. `offset` is an unsigned form of a signed
// number. The new position, or -1 when the system refuses.
xylInt64 seek_file(void* handle, xylUInt64 offset, File_origin origin);

// Bytes of a file; of anything else what the system says. False, with `*size` untouched, when it
// won't say.
bool file_size(void* handle, xylUInt64* size);

// --- Overlapped reads

// Room for the system's record of one read, aligned to 8. All zeros: no read was started.
inline constexpr size_t overlapped_size = 192;

enum class Overlapped_state { failed, pending, completed };

// Starts reading from `offset`, which the file's position has no part in; of something that has no
// positions, from where it is. How it went, even that it could not be started, is asked below.
//
// `overlapped`  zeroed; belongs to the system, with `target`, for as long as the read is pending.
void start_overlapped_read(void* handle, void* overlapped, xylUInt64 offset, void* target,
                           xylUInt32 size);

// How the read goes; with `wait`, not before it has ended. A read of no bytes although some were
// asked for, as at the end of a file, has failed; a record without a read is completed.
// `*transferred` has the bytes read once completed, and otherwise may be untouched. May be asked
// again and again.
Overlapped_state query_overlapped(void* handle, void* overlapped, bool wait,
                                  xylUInt32* transferred);

// Ends a read that is pending, one way or the other, and comes back when the system has let go of
// the record and the target. Nothing to do when none is pending.
void give_up_overlapped_read(void* handle, void* overlapped);

// --- Streams of the C run-time

// fopen() and freopen(), with the reason of a failure in errno. A folder doesn't open, whatever the
// mode; the stream that was to be reopened is closed in any case.
std::FILE* open_stream(const char* path, const char* mode);
std::FILE* reopen_stream(const char* path, const char* mode, std::FILE* stream);

// Position and seeking with 64 bits; `origin` is one of the run-time's SEEK_ numbers.
xylInt64 tell_stream(std::FILE* stream);                         // -1 on failure
int seek_stream(std::FILE* stream, xylInt64 offset, int origin); // 0, or another number on failure

} // namespace os
