#include <morvantis/memory/xylpage_allocator.h>

#include <morvantis/memory/allocation_size.h>
#include <morvantis/memory/page_size.h>
#include <morvantis/platform/system/memory.h>

#include <cstring>

namespace {

constexpr int release = -1; // what the callback is told of one

void tell(eastl::function<void(int)>& callback, int size) {
	if (callback) callback(size);
}

} // namespace

xylPage_allocator::xylPage_allocator() : total_allocation_size_(0) { default_alignment_ = 65536; }
xylPage_allocator::~xylPage_allocator() = default;

void* xylPage_allocator::allocate_aligned_mem(size_t size, size_t, Allocation_group) {
	tell(allocation_callback_, static_cast<int>(size));
	const size_t whole_pages = round_up_to_page_size(size);
	total_allocation_size_ += whole_pages;
	return os::take_pages(whole_pages);
}

void* xylPage_allocator::reallocate_aligned_mem(void* memory, size_t size, size_t alignment,
                                                Allocation_group group) {
	const size_t old_size = os::region_size(memory);
	void* moved = xylPage_allocator::allocate_aligned_mem(size, alignment, group);
	const size_t copied = copied_allocation_size(size, old_size);
	if (copied > 0) std::memcpy(moved, memory, copied);
	deallocate_mem(memory, old_size);
	return moved;
}

bool xylPage_allocator::deallocate_mem(void* memory, size_t) {
	tell(allocation_callback_, release);
	if (!memory) return true;
	total_allocation_size_ -= os::region_size(memory);
	return os::release_pages(memory);
}

bool xylPage_allocator::decommit_mem(void* memory, size_t size, size_t) {
	tell(allocation_callback_, release);
	if (!memory) return true;
	total_allocation_size_ -= size;
	return os::decommit_pages(memory, size);
}

size_t xylPage_allocator::get_total_allocation_size() const { return total_allocation_size_; }

size_t xylPage_allocator::page_size() const { return known_page_size(); }
