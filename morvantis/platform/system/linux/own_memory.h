// Reading memory of this process that may not be there.
#pragma once

#include <morvantis/core/xyltypes.h>

namespace os {

// Copies from `address`, which may be any number; the kernel reads, so nothing faults. No heap, no
// lock, any thread, a signal's handler too.
//
// Result  how many bytes were readable from there on, at most `size`.
size_t read_own_memory(xylUInt64 address, void* target, size_t size);

} // namespace os
