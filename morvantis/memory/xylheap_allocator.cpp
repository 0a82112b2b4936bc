#include <morvantis/memory/xylheap_allocator.h>

#include <morvantis/memory/allocation_size.h>
#include <morvantis/memory/xylheap.h>

#include <algorithm>

namespace {

constexpr size_t least_alignment = 16;

} // namespace

xylHeap_allocator::xylHeap_allocator(xylMemory_allocator_base*) { default_alignment_ = 16384; }
xylHeap_allocator::xylHeap_allocator(const xylHeap_allocator&) = default;
xylHeap_allocator& xylHeap_allocator::operator=(const xylHeap_allocator&) = default;
xylHeap_allocator::~xylHeap_allocator() = default;

void* xylHeap_allocator::allocate_aligned_mem(size_t size, size_t alignment, Allocation_group) {
	return xyl_heap_allocate_aligned(size, std::max(alignment, least_alignment));
}

void* xylHeap_allocator::reallocate_aligned_mem(void* memory, size_t size, size_t alignment,
                                                Allocation_group) {
	if (size == 0) return nullptr; // kept: the heap's own form would free here
	return xyl_heap_reallocate_aligned(memory, size, std::max(alignment, least_alignment));
}

bool xylHeap_allocator::deallocate_mem(void* memory, size_t) {
	xyl_heap_free(memory);
	return true;
}

size_t xylHeap_allocator::get_total_allocation_size() const { return 0; }

size_t xylHeap_allocator::page_size() const { return 1; }

void* xylHeap_allocator::allocate_mem(size_t size, Allocation_group) {
	return xyl_heap_allocate(size);
}

void* xylHeap_allocator::reallocate_mem(void* memory, size_t size, Allocation_group) {
	if (size == 0) return nullptr;
	return xyl_heap_reallocate_aligned(memory, size, least_alignment);
}

size_t xylHeap_allocator::get_allocated_memory_size(void* memory) {
	return counted_allocation_size(xyl_heap_usable_size(memory));
}

void xylHeap_allocator::print_stats() { xyl_heap_print_statistics(); }
