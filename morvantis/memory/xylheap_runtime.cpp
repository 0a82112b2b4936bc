// The heap door on the C runtime, where the address sanitizer sees overruns and leaks. Blocks have
// exactly the size that was asked for, so that one byte too far is seen. For POSIX systems.

#include <morvantis/memory/xylheap.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <malloc.h> // malloc_usable_size

void* xyl_heap_allocate(size_t size) { return xyl_heap_allocate_aligned(size, 16); }

void* xyl_heap_allocate_aligned(size_t size, size_t alignment) {
	if (size == 0) return nullptr;
	void* memory = nullptr;
	// posix_memalign() takes no alignment below a pointer's.
	if (posix_memalign(&memory, std::max(alignment, sizeof(void*)), size) != 0) return nullptr;
	return memory;
}

// Always moves, so that a use of the former block is seen.
void* xyl_heap_reallocate_aligned(void* memory, size_t size, size_t alignment) {
	void* moved = xyl_heap_allocate_aligned(size, alignment);
	if (memory == nullptr || (moved == nullptr && size != 0)) return moved;
	if (size != 0) std::memcpy(moved, memory, std::min(size, xyl_heap_usable_size(memory)));
	xyl_heap_free(memory);
	return moved;
}

void xyl_heap_free(void* memory) { std::free(memory); }

size_t xyl_heap_usable_size(const void* memory) {
	return malloc_usable_size(const_cast<void*>(memory));
}

void xyl_heap_print_statistics() {} // the C runtime keeps none that every system can print
