#include <morvantis/memory/xylheap_allocator_link_list.h>

#include <morvantis/memory/allocation_size.h>
#include <morvantis/memory/xylheap.h>

#include <cstdint>
#include <cstring>
#include <utility>

namespace {

constexpr size_t slab_records = 128; // 4 KiB

using List_record = xylHeap_allocator_link_list::List_record;

std::uintptr_t number(const void* address) { return reinterpret_cast<std::uintptr_t>(address); }

// The low 32 bits, signed: how this class counts distances.
int low_word(size_t size) { return static_cast<int>(static_cast<xylUInt32>(size)); }

size_t round_up(size_t size) {
	constexpr size_t unit = xylHeap_allocator_link_list::ALLOCATION_GRANULARITY;
	return ((size - 1) & ~(unit - 1)) + unit;
}

} // namespace

const size_t xylHeap_allocator_link_list::ALLOCATION_GRANULARITY;
const size_t xylHeap_allocator_link_list::INTERNAL_ALLOCATION_GRANULARITY;

xylHeap_allocator_link_list::xylHeap_allocator_link_list(xylMemory_allocator_base* parent)
	: parent_allocator_(parent), free_list_(nullptr), active_(true), total_allocation_size_(0),
	  current_index_(0), spare_records_(nullptr), record_count_(0), out_of_order_count_(0) {
	default_alignment_ = 16;
}

xylHeap_allocator_link_list::~xylHeap_allocator_link_list() = default;

void* xylHeap_allocator_link_list::allocate_aligned_mem(size_t size, size_t alignment,
                                                        Allocation_group) {
	void* memory = nullptr;
	size_t rounded_size = 0;
	find_and_split_block(size, alignment, &memory, &rounded_size);
	allocation_sizes_.insert(memory, rounded_size);
	return memory;
}

void* xylHeap_allocator_link_list::reallocate_aligned_mem(void* memory, size_t size,
                                                          size_t alignment,
                                                          Allocation_group group) {
	void* const moved = allocate_aligned_mem(size, alignment, group);
	const size_t old_size = allocation_sizes_.remove(memory);
	std::memcpy(moved, memory, copied_allocation_size(size, old_size));
	insert_sorted_and_merge(memory, old_size);
	return moved;
}

bool xylHeap_allocator_link_list::deallocate_mem(void* memory, size_t) {
	deferred_frees_[current_index_].push_back(memory);
	return true;
}

size_t xylHeap_allocator_link_list::get_total_allocation_size() const {
	return total_allocation_size_;
}

size_t xylHeap_allocator_link_list::page_size() const { return 0; }

void xylHeap_allocator_link_list::swap_indices() { current_index_ = (current_index_ + 1) % 2; }

void xylHeap_allocator_link_list::clear_ptrs() {
	std::vector<void*>& noted = deferred_frees_[current_index_];
	for (void* const memory : noted) {
		insert_sorted_and_merge(memory, allocation_sizes_.remove(memory));
	}
	noted.clear();
	// The copying writes so many records: 16 at most for each one that was made out of order.
	if (out_of_order_count_ > (record_count_ + slab_records) / 16) put_records_in_order();
}

// First fit from the lowest address.
void* xylHeap_allocator_link_list::find_memory(size_t size, size_t alignment) {
	for (List_record* record = free_list_; record; record = record->next) {
		if (record->size < size) continue;
		void* const start = align_address(record->address, low_word(alignment));
		void* const range_end = offset_address(record->address, low_word(record->size));
		if (number(offset_address(start, low_word(size))) > number(range_end)) continue;
		return take_from(record, start, size);
	}
	return nullptr;
}

// Cuts the block out of the range, which holds it.
void* xylHeap_allocator_link_list::take_from(List_record* record, void* start, size_t size) {
	void* const end = reinterpret_cast<void*>(number(start) + size);
	const size_t gap = address_dif(start, record->address);
	const size_t rest = record->size - gap - size;
	if (gap == 0) {
		record->address = end;
		record->size = rest;
	} else {
		record->size = gap;
		if (rest > 0) make_record(end, rest, record, record->next);
	}
	if (record->size == 0) remove_record(record);
	return start;
}

void xylHeap_allocator_link_list::find_and_split_block(size_t size, size_t alignment, void** memory,
                                                       size_t* rounded_size) {
	*rounded_size = round_up(size);
	*memory = find_memory(*rounded_size, alignment);
	if (*memory) return;
	ensure_empty_size(size);
	*memory = find_memory(*rounded_size, alignment);
}

// Takes a chunk of whole units from the parent, enough for `size` bytes.
void xylHeap_allocator_link_list::ensure_empty_size(size_t size) {
	constexpr size_t unit = INTERNAL_ALLOCATION_GRANULARITY;
	const size_t chunk_size = ((size - 1) & ~(unit - 1)) + unit;
	void* const chunk = parent_allocator_->allocate_mem(chunk_size, default_group);
	total_allocation_size_ += chunk_size;
	insert_sorted_and_merge(chunk, chunk_size);
}

// The last range that starts below `address`, or null.
List_record* xylHeap_allocator_link_list::find_prev_for_address(void* address) const {
	List_record* prev = nullptr;
	for (List_record* record = free_list_; record && number(record->address) < number(address);
	     record = record->next) {
		prev = record;
	}
	return prev;
}

void xylHeap_allocator_link_list::insert_sorted_and_merge(void* address, size_t size) {
	List_record* const prev = find_prev_for_address(address);
	List_record* const next = prev ? prev->next : free_list_;
	const bool touches_prev = prev && number(prev->address) + prev->size == number(address);
	const bool touches_next = next && number(next->address) == number(address) + size;
	if (touches_prev) {
		prev->size += size;
		if (touches_next) {
			prev->size += next->size;
			remove_record(next);
		}
	} else if (touches_next) {
		next->address = address;
		next->size += size;
	} else {
		make_record(address, size, prev, next);
	}
}

List_record* xylHeap_allocator_link_list::make_record(void* address, size_t size, List_record* prev,
                                                      List_record* next) {
	if (!spare_records_) {
		slabs_.push_back(
			static_cast<List_record*>(xyl_heap_allocate(slab_records * sizeof(List_record))));
		for (size_t i = slab_records; i-- > 0;) {
			List_record* const spare = slabs_.back() + i;
			spare->next = std::exchange(spare_records_, spare);
		}
	}
	List_record* const record = spare_records_;
	spare_records_ = record->next;
	*record = {address, size, next, prev};
	(prev ? prev->next : free_list_) = record;
	if (next) next->prev = record;
	++record_count_;
	if (prev && record != prev + 1) ++out_of_order_count_;
	return record;
}

void xylHeap_allocator_link_list::remove_record(List_record* record) {
	(record->prev ? record->prev->next : free_list_) = record->next;
	if (record->next) record->next->prev = record->prev;
	record->next = std::exchange(spare_records_, record);
	--record_count_;
}

// Copies the records into one slab in the order of the list, and gives the old slabs back.
void xylHeap_allocator_link_list::put_records_in_order() {
	const size_t room = record_count_ + slab_records;
	auto* const slab = static_cast<List_record*>(xyl_heap_allocate(room * sizeof(List_record)));
	size_t copied = 0;
	List_record* prev = nullptr;
	List_record** link = &free_list_;
	for (const List_record* record = free_list_; record; record = record->next) {
		List_record* const copy = slab + copied++;
		*copy = {record->address, record->size, nullptr, prev};
		*link = copy;
		link = &copy->next;
		prev = copy;
	}
	spare_records_ = nullptr;
	for (size_t i = room; i-- > copied;) slab[i].next = std::exchange(spare_records_, slab + i);
	for (List_record* const old : slabs_) xyl_heap_free(old);
	slabs_.assign(1, slab);
	out_of_order_count_ = 0;
}

void* xylHeap_allocator_link_list::align_address(void* address, int alignment) {
	const auto wide = static_cast<std::uintptr_t>(static_cast<xylInt64>(alignment));
	return reinterpret_cast<void*>((number(address) + wide - 1) & (0 - wide));
}

void* xylHeap_allocator_link_list::offset_address(void* address, int offset) {
	return reinterpret_cast<void*>(number(address) +
	                               static_cast<std::uintptr_t>(static_cast<xylInt64>(offset)));
}

size_t xylHeap_allocator_link_list::address_dif(void* first, void* second) {
	return number(first) - number(second);
}
