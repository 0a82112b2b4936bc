// Whole pages of the system behind the allocator interface.
#pragma once

#include <morvantis/memory/xylmemory_allocator_base.h>

#include <atomic>

// For large, long-lived blocks: every call goes to the system, and a reallocation always copies.
// Blocks are zeroed, begin on a page and belong to the caller until deallocate_mem(), which any
// page allocator takes: one may end before its blocks.
//
// Each operation calls the callback first, if one is set: with the size of a request, cut to 32
// bits, or with -1 for a release. Groups and alignments are not looked at.
//
// Threads: all operations may run on any thread at the same time; the callback must be safe for
// that.
class MORVANTIS_API xylPage_allocator : public xylMemory_allocator_base {
public:
	// A total of 0, no callback, and a default_alignment_ of 65536.
	xylPage_allocator();
	~xylPage_allocator();

	// Takes `size` bytes, rounded up to a multiple of page_size(); null when the system refuses,
	// as it does for size 0.
	//
	// kept: the total goes up by the rounded size before the system is asked, and stays there.
	void* allocate_aligned_mem(size_t size, size_t alignment, Allocation_group group) override;
	// Takes a new block, copies the smaller of the two sizes and releases the old block, with a
	// second call of the callback. `memory` must be a live block and not null, which is not tested.
	//
	// kept: sizes are compared as signed 32-bit numbers, so blocks of 2 GiB and more lose their
	// contents; and a refusal of the system isn't looked at, so that the copy ends the process.
	void* reallocate_aligned_mem(void* memory, size_t size, size_t alignment,
	                             Allocation_group group) override;
	// Gives a block back, whatever `size` says; true for null, false when the system refuses.
	//
	// kept: the total goes down by what the system says of the block's first region, which is less
	// than what was added once a part of the block was decommitted.
	bool deallocate_mem(void* memory, size_t size) override;
	// Drops the contents of the pages that [memory, memory + size) touches; they must not be used
	// again. kept: the third argument is ignored, and the total goes down by `size` even when the
	// system refuses. True for null, with the total as it was.
	bool decommit_mem(void* memory, size_t size, size_t);
	size_t get_total_allocation_size() const override;
	size_t page_size() const override; // as zubPlatform::page_size()

	std::atomic<xylUInt64> total_allocation_size_; // bytes taken from the system, at best a guess
};
