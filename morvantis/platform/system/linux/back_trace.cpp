#include <morvantis/platform/system/back_trace.h>

#include <morvantis/platform/system/unwind.h>

#include <algorithm>

namespace {

constexpr unsigned int most_steps = 512; // of one walk, 8 KiB of stack

// FNV-1a in 64 bits over the bytes of the addresses.
xylUInt64 hash_of(const xylUInt64* addresses, unsigned int count) {
	constexpr xylUInt64 basis = 0xCBF29CE484222325, prime = 0x100000001B3;
	xylUInt64 hash = basis;
	for (unsigned int i = 0; i < count; ++i) {
		for (unsigned int shift = 0; shift < 64; shift += 8) {
			hash = (hash ^ (addresses[i] >> shift & 0xFF)) * prime;
		}
	}
	return hash;
}

} // namespace

unsigned int os::back_trace(unsigned int skip, unsigned int count, xylUInt64* addresses,
                            xylUInt64* hash) {
	Unwind_step steps[most_steps];
	// This function's own frame is one more to skip.
	const unsigned int first = std::min(skip, most_steps - 1) + 1;
	const unsigned int room = std::min(count, most_steps - first) + first;
	const unsigned int walked = walk_callers(steps, room);
	const unsigned int written = walked > first ? walked - first : 0;
	for (unsigned int i = 0; i < written; ++i) addresses[i] = steps[first + i].pc;
	*hash = written > 0 ? hash_of(addresses, written) : 0;
	return written;
}
