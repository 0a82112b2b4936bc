// The door to the general heap: everything the library allocates itself comes through here.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API, size_t

// The general heap is separate from the C runtime's: memory of one must never be released
// through the other, and a polymorphic object that lives here must not be ended with `delete`.
// Make an object with placement new on xyl_heap_allocate(sizeof(T)); end it by taking the most
// derived address, running the destructor and calling xyl_heap_free().
//
// Threads: all functions may be called from any thread at the same time, and memory may be freed
// by another thread than the one that took it. No function takes a lock of the library's.

// Takes `size` bytes, aligned to 16, contents unset.
//
// Result  the block, owned by the caller until xyl_heap_free(); null for size 0, and null when
//         memory is exhausted, which is not reported.
MORVANTIS_API void* xyl_heap_allocate(size_t size);

// The same with an alignment of the caller's, a power of two from 1 up.
MORVANTIS_API void* xyl_heap_allocate_aligned(size_t size, size_t alignment);

// Moves a block to `size` bytes at `alignment`, keeping its first min(old, new) bytes.
//
// `memory`  a block of this heap, or null, which makes this xyl_heap_allocate_aligned().
// Result    the new block; `memory` is then no longer valid. Null when memory is exhausted, with
//           `memory` untouched, and null for size 0, with `memory` freed.
MORVANTIS_API void* xyl_heap_reallocate_aligned(void* memory, size_t size, size_t alignment);

// Gives a block back. Null is allowed and does nothing.
MORVANTIS_API void xyl_heap_free(void* memory);

// Bytes that the block really has: its size as asked for, or more. 0 for null.
MORVANTIS_API size_t xyl_heap_usable_size(const void* memory);

// Prints the heap's own statistics to standard error; nothing where it keeps none. Not exported: a
// host asks xylHeap_allocator.
void xyl_heap_print_statistics();

// The heap under the names that the engine's modules know: xyl_heap_allocate() and
// xyl_heap_free(). Nothing in the library calls these two.
extern "C" MORVANTIS_API void* XXH_malloc(size_t size);
extern "C" MORVANTIS_API void XXH_free(void* memory);
