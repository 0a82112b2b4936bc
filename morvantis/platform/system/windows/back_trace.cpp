#include <morvantis/platform/system/back_trace.h>

#include <morvantis/platform/system/windows/include_windows.h>

#include <algorithm>

unsigned int os::back_trace(unsigned int skip, unsigned int count, xylUInt64* addresses,
                            xylUInt64* hash) {
	constexpr unsigned int most = 0xFFFF; // frames that the system counts
	static_assert(sizeof(void*) == sizeof(xylUInt64));
	ULONG word = 0;
	// This function's own frame is one more to skip.
	const USHORT written = RtlCaptureStackBackTrace(std::min(skip, most) + 1, std::min(count, most),
	                                                reinterpret_cast<void**>(addresses), &word);
	*hash = word;
	return written;
}
