// Threads of this process, by opaque handles.
#pragma once

#include <morvantis/core/xyltypes.h>

namespace os {

// Any thread may call all of these; none allocates.

// The calling thread. Where the handle is a pseudo handle it means the caller wherever it is used,
// so it is no identity to give to another thread.
void* current_thread();

// The system's number of a thread; 0 where it can't be told. Told on every system for the calling
// thread's handle.
unsigned long thread_id(void* thread);

// Tells debuggers the name of a thread; systems with a limit cut it. Whether anyone listens is not
// known. `name` is never null.
void name_thread(void* thread, const char* name);

// `priority`  -2 lowest, 0 normal, 2 highest.
// Result      false when the system refuses, as it may for a raise.
bool set_thread_priority(void* thread, int priority);

// Bit n of `mask` allows processor n.
// Result  false, with nothing changed, when the system refuses, as for a mask of 0.
bool set_thread_affinity(void* thread, xylUInt64 mask);

} // namespace os
