// The library's growing array: eastl::vector on the general heap.
#pragma once

#include <EASTL/allocator.h>
#include <EASTL/vector.h>

namespace eastl {

// The allocator that stands behind GetDefaultAllocator() at the start: the library's one empty
// static allocator, whose memory is the general heap. EASTL's own headers don't declare it.
extern EASTL_API allocator* gpDefaultAllocator;

} // namespace eastl

// Grows by doubling from 1; whoever uses it in a host links nothing but the library.
template <typename T, typename A = eastl::allocator> using xylArray = eastl::vector<T, A>;
