#include <morvantis/memory/xylheap.h>

#include <mimalloc.h>

void* xyl_heap_allocate(size_t size) {
	if (size == 0) return nullptr;
	// mimalloc aligns to 16 from 9 bytes up; below that only to 8.
	return mi_malloc(size < 16 ? 16 : size);
}

void* xyl_heap_allocate_aligned(size_t size, size_t alignment) {
	return size == 0 ? nullptr : mi_malloc_aligned_at(size, alignment, 0);
}

void* xyl_heap_reallocate_aligned(void* memory, size_t size, size_t alignment) {
	if (size == 0) {
		mi_free(memory);
		return nullptr;
	}
	return mi_realloc_aligned_at(memory, size, alignment, 0);
}

void xyl_heap_free(void* memory) { mi_free(memory); }

size_t xyl_heap_usable_size(const void* memory) { return mi_usable_size(memory); }
