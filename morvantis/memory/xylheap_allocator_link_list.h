// A first-fit allocator over large chunks that writes nothing into the memory it manages.
#pragma once

#include <morvantis/memory/xylmemory_allocator_base.h>
#include <morvantis/memory/xylstatic_hashtable.h>

#include <atomic>
#include <vector>

// Free space is a list of ranges, sorted by address, whose records live outside the managed memory;
// block sizes live in a table keyed by block address. So a block has no header, and a free range no
// link inside it.
//
// A release is deferred: deallocate_mem() only notes the block in one of two lists, and
// clear_ptrs() merges the noted blocks of the current list into the free ranges. A host that calls
// swap_indices() and then clear_ptrs() once per cycle merges in each cycle what was released in the
// cycle before the last, so that a released block stays untouched for at least one whole cycle.
//
// The object holds the table of 8,388,608 entries in place, 128 MiB: it belongs into static storage
// or a block of its own.
//
// kept: ranges and blocks of 2 GiB and more don't compare properly, since the search reckons with
// the low 32 bits of sizes, signed: most such ranges hold no block but their like. A reallocation
// of such a block may lose its contents.
//
// Threads: one at a time; the host serialises all operations but get_total_allocation_size().
class MORVANTIS_API xylHeap_allocator_link_list : public xylMemory_allocator_base {
public:
	// Every block size is a multiple of this.
	static const size_t ALLOCATION_GRANULARITY = 16;
	// The unit in which chunks are asked of the parent: 64 MiB.
	static const size_t INTERNAL_ALLOCATION_GRANULARITY = 0x4000000;

	// One free range.
	struct List_record {
		void* address;     // where it starts
		size_t size;       // bytes
		List_record* next; // the next range at a higher address, or null
		List_record* prev; // the previous range, or null
	};

	// `parent` gives the chunks. It is not owned, must outlive this object, and must succeed: its
	// null would be taken for memory.
	explicit xylHeap_allocator_link_list(xylMemory_allocator_base* parent);
	xylHeap_allocator_link_list(const xylHeap_allocator_link_list&) = delete;
	xylHeap_allocator_link_list& operator=(const xylHeap_allocator_link_list&) = delete;
	// kept: chunks are not given back to the parent, and the records of free ranges stay allocated.
	~xylHeap_allocator_link_list();

	// The first range from the lowest address that holds `size` bytes, rounded up to 16, at
	// `alignment`, a power of two; a chunk of the parent's (group 0) where there is none. A size of
	// 0 wraps around and is outside the contract. Null, recorded as a block, when even a new chunk
	// can't hold it, as may happen with a large alignment. Linear in the number of free ranges.
	void* allocate_aligned_mem(size_t size, size_t alignment, Allocation_group group) override;
	// Always moves, and merges the old block into the free ranges at once. `memory` must be a live
	// block.
	void* reallocate_aligned_mem(void* memory, size_t size, size_t alignment,
	                             Allocation_group group) override;
	// Notes a block for a later clear_ptrs(); always true. `size` is not used. `memory` must be a
	// live block and not null, which is not tested.
	bool deallocate_mem(void* memory, size_t size) override;
	// Bytes taken from the parent so far. Never falls.
	size_t get_total_allocation_size() const override;
	// 0: there are no pages, so round_up_to_page_size() must not be used on this class.
	size_t page_size() const override;

	// Turns from one list of noted blocks to the other.
	void swap_indices();
	// Merges the noted blocks of the current list into the free ranges, in the order in which they
	// were noted, and empties the list.
	void clear_ptrs();

	xylMemory_allocator_base* parent_allocator_; // source of chunks
	List_record* free_list_;                     // the lowest free range, or null
	bool active_;                                // true; kept: nothing reads it
	std::atomic<xylUInt64> total_allocation_size_;
	// The size of every block that is live or noted, by its address.
	xylStatic_hashtable<void*, xylUInt64, 8388608> allocation_sizes_;
	int current_index_;                    // which of the two lists is current, 0 or 1
	std::vector<void*> deferred_frees_[2]; // blocks noted by deallocate_mem()

private:
	void* find_memory(size_t size, size_t alignment);
	void find_and_split_block(size_t size, size_t alignment, void** memory, size_t* rounded_size);
	List_record* find_prev_for_address(void* address) const;
	void insert_sorted_and_merge(void* address, size_t size);
	void ensure_empty_size(size_t size);

	void* take_from(List_record* record, void* start, size_t size);
	List_record* make_record(void* address, size_t size, List_record* prev, List_record* next);
	void remove_record(List_record* record);
	void put_records_in_order();

	static void* align_address(void* address, int alignment);
	static void* offset_address(void* address, int offset);
	static size_t address_dif(void* first, void* second);

	// Records come from slabs, so that walking the list stays within few cache lines. Where records
	// that follow one another in the list don't do so in memory, a walk of 10,000 of them takes
	// several times as long; clear_ptrs() then copies them into list order.
	List_record* spare_records_; // unused records, chained by `next`
	std::vector<List_record*> slabs_;
	size_t record_count_; // records in the list
	size_t
		out_of_order_count_; // since the last copying, made elsewhere than behind their predecessor
};
