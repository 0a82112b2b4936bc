// A call stack as images and offsets, taken without symbols.
#pragma once

#include <morvantis/diagnostics/zubcallstack_frame.h>
#include <morvantis/memory/xylarray.h>
#include <morvantis/strings/xylvarstring.h>

// Where a thread is: a frame for each function on its stack, the innermost first. Taking it is
// cheap; the text can wait, and names come last of all, on another machine if need be.
//
// Copying copies the frames, moving takes over their storage.
class MORVANTIS_API zubRaw_callstack {
public:
	zubRaw_callstack() = default;

	// Replaces the frames by those of a thread, and keeps the storage.
	//
	// `context`     null for the current position, whose first frame is this operation itself; or
	//               the system's record of a thread's registers (CONTEXT, ucontext_t), such as a
	//               signal handler or an exception handler is given. It is changed: the walk moves
	//               it along to the caller of the last frame.
	// `skip_count`  how many of the innermost frames to leave out. They count among the
	//               zubCallstack_helpers::callstack_max_depth steps of a walk, so from there on
	//               nothing is left.
	// A frame without unwind data has base 0 and is taken for a leaf. A damaged stack ends early,
	// gives nonsense, or faults where it points to no memory.
	//
	// Any thread, in a signal handler too. No lock; allocates nothing but room for the frames,
	// doubling from 1, so an object that has held as many before allocates nothing.
	void capture(void* context, unsigned int skip_count);

	unsigned int get_frame_count() const { return static_cast<unsigned int>(stack.size()); }
	const xylArray<zubCallstack_frame>& get_stack() const { return stack; }

	// One line for each frame: its base and its offset (the low 32 bits of each), identity and age
	// of its image's symbol file, and what stands behind the last backslash of the image's path. A
	// frame whose image isn't cached has "[unresolvable frame]" on a line of its own, ahead of a
	// line with the identity of no image. "No native frames available" without frames.
	//
	// Adds images loaded meanwhile to zubCallstack_helpers::Modules and reads it without a lock:
	// not to run while another thread changes that.
	xylVarString get_stack_str() const;

	// kept: 0 for every stack; it is there for its callers.
	unsigned long long calculate_hash() { return 0; }

	xylArray<zubCallstack_frame> stack; // the innermost frame first

private:
	// Appends the text of one frame, which is get_stack_str()'s.
	static void get_frame_str(const zubCallstack_frame& frame, xylVarString& out);
};
