// Holding all other threads of the process where they are, from any place: without a heap or lock.
#pragma once

#include <morvantis/core/xyltypes.h>

#include <sys/types.h>
#include <ucontext.h>

namespace os {

struct Held_thread {
	pid_t id;
	// Where it was interrupted, valid until it is let go. Null for one that didn't come: it keeps
	// signals out, or stands deep in the kernel.
	const ucontext_t* context;
};

// The threads that can be held; more run on and are not listed.
constexpr size_t most_held_threads = 1024;

// Interrupts every other thread by a signal and waits until all are held; for those that don't come
// 100 ms in all. Calls of the system that were under way may end with EINTR.
//
// Result  how many threads there are to ask for.
// Threads: one at a time, with a release_threads() after each call.
size_t hold_other_threads();
Held_thread held_thread(size_t index);
// Lets them go on, and comes back when they have.
void release_threads();

} // namespace os
