// The heap door on mimalloc. See xylheap_runtime.cpp for the door that sanitizers can look behind.

#include <morvantis/memory/xylheap.h>

#include <mimalloc.h>

#include <cstdio>

// mi_malloc() of mimalloc 2.0.9 aligns to 16 from 9 bytes up and only to 8 below, so the plain form
// with a floor on the size is enough, and it is the fast one: mi_malloc_aligned(size, 16) costs 4
// to 15 % more and goes to the system from 16 MiB up. The alignment is an observation and not a
// promise of mimalloc's: a test walks the sizes.
void* xyl_heap_allocate(size_t size) {
	// One branch on the usual way: a maximum would make mimalloc's look-up wait for it.
	if (size < 16) [[unlikely]]
		return size == 0 ? nullptr : mi_malloc(16);
	return mi_malloc(size);
}

// The _at forms: in 2.0.9 mi_malloc_aligned() gives misaligned blocks for some sizes at 256 to
// 1,024, and mi_realloc_aligned() keeps the former block's offset.
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

// Through standard error, where mimalloc's own output on Windows looks for a console.
void xyl_heap_print_statistics() {
	mi_stats_print_out([](const char* text, void*) { std::fputs(text, stderr); }, nullptr);
}
