// Crash dumps of this process, and the exception that stands in for a crash.
#pragma once

#include <morvantis/core/xyltypes.h>

namespace os {

// An exception as its handler meets it: the system's record of it and the registers of the thread,
// both in the system's own form (EXCEPTION_RECORD and CONTEXT, or siginfo_t and ucontext_t). Alone
// its address leaves the layer.
struct Exception_pointers {
	void* record;
	void* context;
};

// Calls `raise` with `code`, which raises an exception on the calling thread, and `filter` from
// its handler, with the exception's pointers and `argument`. Then execution goes on behind this
// call: `raise` doesn't get the control back, and nobody else sees the exception.
//
// `filter`  may not throw; the pointers are valid until it returns.
// Any thread. Where exceptions are signals, calls of several threads take their turns, and a
// handler of the host for this signal is not in force meanwhile.
void catch_exception(unsigned int code, void (*raise)(unsigned int code),
                     void (*filter)(void* pointers, void* argument), void* argument);

// A dump that is about to be written, and who writes it.
struct Dump {
	void* process = nullptr; // handle of this process; null where none is needed
	void* file = nullptr;
	xylUInt32 process_id = 0;
	xylUInt32 thread_id = 0; // of the calling thread
};

// The three below serve a process that may be damaged, from an exception's handler too: on systems
// where that is possible they touch no heap, take no lock, and read memory only where it is. A
// stack of 16 KiB is enough.

// Makes the file anew, or empties it, and keeps everybody else from writing it.
//
// Result  false when the system refuses, as for a missing folder or while another dump is being
//         written there. kept: the handle of the process then stays open.
bool open_dump(const char* path, Dump* dump);

// Writes what the system's debuggers need to show all threads of the process, the calling one at
// the exception. That an area is unreadable isn't told, nor that the disk is full; on Linux the
// file is left empty then.
//
// `exception_pointers`  an Exception_pointers.
// Threads: one at a time; the caller sees to that. The others are stopped meanwhile.
void write_dump(const Dump& dump, void* exception_pointers);

void close_dump(const Dump& dump);

} // namespace os
