// Call stacks as text, one line for each frame.
#pragma once

#include <morvantis/memory/xylarray.h>
#include <morvantis/strings/xylvarstring.h>

#include <string>

class zubRaw_callstack;
struct xylGuid_type;

// A stack whose frames have been looked up in the symbol files of exactly the images that ran.
//
// A line has one of two forms, told apart by the first character:
//
//   @module@source (line): function                      where the symbol file could be opened, or
//                                                        the image isn't known; what isn't known
//                                                        stands as "unknown_module" and so on
//   #symbol file@{GUID} (age): 0:offset                  where it couldn't: all that is needed to
//                                                        look the frame up elsewhere and later
//
// Resolving is slow by design: each frame opens its symbol file anew. Capture with zubRaw_callstack
// or capture_counters(), and resolve only when a text is asked for.
//
// zub_debughelp_interface must point to the host's object. Lines are on the library's heap.
//
// Threads: an object belongs to one thread at a time; resolves of several wait for each other.
class MORVANTIS_API zubCallstack {
public:
	// Captures as zubRaw_callstack::capture() does, takes newly loaded images into the cache, and
	// resolves.
	//
	// Threads: changes the module cache, see zubCallstack_helpers.
	void capture(void* context, unsigned int skip_count);
	// Replaces the lines by those of a captured stack. False, with no lines, when it has no frames.
	// The module cache is used as it is.
	bool resolve_from_raw(const zubRaw_callstack& raw);

	unsigned int get_frame_count() const { return static_cast<unsigned int>(stack.size()); }
	// Innermost first.
	const xylArray<xylVarString>& get_stack() const { return stack; }
	// Each line with a line feed behind it, or a sentence when there are none.
	xylVarString get_stack_str() const;
	// kept: always 0.
	unsigned long long calculate_hash() { return 0; }

	// Records where this thread is as bare addresses, innermost first, without taking a lock.
	//
	// `addresses`   room for `max_count`; a 0 follows the last address
	// `hash`        the system's hash of what was captured, 0 when that is nothing
	// `max_count`   at least 1, as it counts the 0. No stack is followed beyond 512 frames on Linux
	//               and 65,535 on Windows.
	// `skip_count`  that many innermost frames are left out, the first being this function's own
	// Result        whether any address was captured.
	static bool capture_counters(unsigned long long* addresses, unsigned long long* hash,
	                             unsigned int max_count, unsigned int skip_count);
	// Replaces `out` by a line of text for each address up to the first 0, from the system's symbol
	// engine; each line goes to the debugger as well, with a note of every question that the engine
	// has no answer for. No line is longer than 4096 bytes.
	//
	// Result  false, with `out` untouched, when zub_debughelp_interface isn't initialised; false,
	//         with `out` empty, without memory.
	// kept: each call leaves a block of 4128 bytes of the C runtime behind.
	//
	// Threads: takes no lock; one thread at a time.
	static bool resolve_counters(unsigned long long* addresses, int count, std::string& out);

	xylArray<xylVarString> stack; // a line for each frame

private:
	// The form with "#"; of `pdb_name` only the file name is shown.
	void format_and_push_frame_str(const xylVarString& pdb_name, const xylGuid_type& guid,
	                               unsigned int age, unsigned long long offset);
	// The form with "@".
	void format_and_push_frame_str(const xylVarString& module, const xylVarString& source,
	                               const xylVarString& line, const xylVarString& function);
};
