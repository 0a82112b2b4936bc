// The calling thread's stack as bare addresses.
#pragma once

#include <morvantis/core/xyltypes.h>

namespace os {

// Writes the addresses of at most `count` frames, innermost first, from the calling function on.
//
// `skip`  frames left out, the calling function's being the first
// `hash`  a number made of the addresses that were written, 0 when there are none
// Result  how many were written. Frames behind the first 512 are left out on Linux.
// Any thread; takes no lock.
unsigned int back_trace(unsigned int skip, unsigned int count, xylUInt64* addresses,
                        xylUInt64* hash);

} // namespace os
