// The library's ordered map: eastl::map on the general heap.
#pragma once

#include <EASTL/allocator.h>
#include <EASTL/functional.h> // less
#include <EASTL/map.h>

// One block of the heap for each element; whoever uses it in a host links nothing but the library.
template <typename K, typename V, typename C = eastl::less<K>, typename A = eastl::allocator>
using xylMap = eastl::map<K, V, C, A>;
