#include <morvantis/platform/system/back_trace.h>

#include <unwind.h>

namespace {

struct Walk {
	unsigned int skip; // frames still to be left out
	unsigned int count;
	unsigned int written = 0;
	xylUInt64* addresses;
};

_Unwind_Reason_Code take_frame(_Unwind_Context* frame, void* data) {
	auto& walk = *static_cast<Walk*>(data);
	if (walk.skip > 0) {
		--walk.skip;
		return _URC_NO_REASON;
	}
	if (walk.written == walk.count) return _URC_END_OF_STACK;
	const xylUInt64 address = _Unwind_GetIP(frame);
	if (address == 0) return _URC_END_OF_STACK;
	walk.addresses[walk.written++] = address;
	return _URC_NO_REASON;
}

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
	// This function's own frame comes first.
	Walk walk{skip < ~0u ? skip + 1 : skip, count, 0, addresses};
	_Unwind_Backtrace(take_frame, &walk);
	*hash = walk.written > 0 ? hash_of(addresses, walk.written) : 0;
	return walk.written;
}
