// The general heap behind the allocator interface.
#pragma once

#include <morvantis/memory/xylmemory_allocator_base.h>

// Lets code that is written against xylMemory_allocator_base use the library's heap. It has no
// state of its own, so all instances are interchangeable; groups and the callback are not looked
// at, and blocks have the alignment they are asked for, never less than 16.
//
// Null from an operation means that memory is exhausted, if it isn't said to mean something else;
// nothing is reported.
// Threads: all operations may run on any thread at the same time.
class MORVANTIS_API xylHeap_allocator : public xylMemory_allocator_base {
public:
	// kept: the argument is ignored, and default_alignment_ is 16384, which nothing here uses.
	explicit xylHeap_allocator(xylMemory_allocator_base*);
	xylHeap_allocator(const xylHeap_allocator& other);
	xylHeap_allocator& operator=(const xylHeap_allocator& other);
	~xylHeap_allocator();

	// Null for size 0. `alignment` is a power of two.
	void* allocate_aligned_mem(size_t size, size_t alignment, Allocation_group group) override;
	// Null memory: as allocate_aligned_mem(). kept: a size of 0 returns null and frees nothing, so
	// `memory` is still the caller's to give back.
	void* reallocate_aligned_mem(void* memory, size_t size, size_t alignment,
	                             Allocation_group group) override;
	// Frees a block of the heap; null does nothing. `size` is ignored. Always true.
	bool deallocate_mem(void* memory, size_t size) override;
	size_t get_total_allocation_size() const override; // kept: 0, nothing is counted
	size_t page_size() const override;                 // 1
	// The aligned forms with an alignment of 16.
	void* allocate_mem(size_t size, Allocation_group group) override;
	void* reallocate_mem(void* memory, size_t size, Allocation_group group) override;

	// What a block of the heap counts as: its usable size up to 2 MiB; above that the next multiple
	// of 4 MiB. kept: an exact multiple of 4 MiB goes up as well.
	size_t get_allocated_memory_size(void* memory);
	// Prints the heap's own statistics to standard error; nothing where it keeps none.
	void print_stats();
};
