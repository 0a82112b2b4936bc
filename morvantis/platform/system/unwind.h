// From the innermost frame of a thread out: who called whom.
#pragma once

#include <morvantis/core/xyltypes.h>

namespace os {

// One frame of a walk.
struct Unwind_step {
	xylUInt64 base; // of the image that holds the instruction; 0 where no unwind entry covers it
	xylUInt64 pc;   // the instruction's address
};

// Both walks fill `steps` from the innermost frame out, ending at an instruction address of 0 or
// after `room` steps, and return how many they filled. A frame without unwind entry is a leaf: its
// caller's address is what the stack pointer points to, and the stack pointer grows by 8.
//
// A whole walk per call, not a step: a step costs about as much as the call would.
//
// Any thread, in a signal handler too: no lock, no memory, no system call. The stack is read as its
// frames tell, so a damaged one gives nonsense, or faults where it points nowhere.

// Walks from the function that calls this, which is the first step.
unsigned int walk_callers(Unwind_step* steps, unsigned int room);

// Walks from the point that a thread was in: `context` is the system's record of its registers
// (CONTEXT, ucontext_t) and is moved along, so that it ends as the caller of the last step.
unsigned int walk_context(void* context, Unwind_step* steps, unsigned int room);

} // namespace os
