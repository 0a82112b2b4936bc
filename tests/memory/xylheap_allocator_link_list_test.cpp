#include <morvantis/memory/xylheap_allocator_link_list.h>

#include <morvantis/memory/xylheap.h>

#include "expected_leaks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <map>
#include <new>
#include <random>
#include <utility>
#include <vector>

namespace {

using Allocator = xylHeap_allocator_link_list;
constexpr auto group = xylMemory_allocator_base::render;
constexpr size_t unit = 64 << 20;

std::uintptr_t number(const void* address) { return reinterpret_cast<std::uintptr_t>(address); }

// Gives chunks out of one reservation, at the places that a test asks for, and remembers them.
class Parent : public xylMemory_allocator_base {
public:
	struct Request {
		size_t size;
		Allocation_group group;
	};

	explicit Parent(size_t reservation)
		: Parent(static_cast<char*>(xyl_heap_allocate_aligned(reservation, 1 << 20)), reservation) {
		owned_ = memory_;
	}
	// Gives addresses, whether there is memory behind them or not.
	Parent(char* start, size_t size) : memory_(start), end_(start + size), next_(start) {
		default_alignment_ = 16;
	}
	~Parent() { xyl_heap_free(owned_); }

	// The next chunk starts this many bytes behind the last one.
	size_t gap = 0;
	std::vector<Request> requests;

	char* start() const { return memory_; }

	void* allocate_aligned_mem(size_t size, size_t, Allocation_group asked) override {
		requests.push_back({size, asked});
		next_ += gap;
		if (next_ + size > end_) std::abort();
		return std::exchange(next_, next_ + size);
	}
	void* reallocate_aligned_mem(void*, size_t, size_t, Allocation_group) override { std::abort(); }
	bool deallocate_mem(void*, size_t) override { std::abort(); }
	size_t get_total_allocation_size() const override { return 0; }
	size_t page_size() const override { return 4096; }

private:
	char* memory_;
	char* end_;
	char* next_;
	char* owned_ = nullptr;
};

struct Range {
	std::uintptr_t start;
	size_t size;

	bool operator==(const Range&) const = default;
};

std::vector<Range> free_ranges(const Allocator& allocator) {
	std::vector<Range> ranges;
	for (auto* record = allocator.free_list_; record; record = record->next) {
		ranges.push_back({number(record->address), record->size});
	}
	return ranges;
}

// The whole state against what the test knows to be in use.
void check_state(const Allocator& allocator, const std::map<std::uintptr_t, size_t>& in_use) {
	size_t sum = 0;
	const Allocator::List_record* prev = nullptr;
	std::uintptr_t last_end = 0;
	auto block = in_use.begin();
	for (auto* record = allocator.free_list_; record; prev = record, record = record->next) {
		ASSERT_EQ(record->prev, prev);
		ASSERT_GT(record->size, 0u);
		ASSERT_EQ(record->size % 16, 0u);
		if (prev) {
			ASSERT_GT(number(record->address), last_end) << "unsorted or touching";
		}
		// Blocks between the last range and this one overlap neither.
		for (; block != in_use.end() && block->first < number(record->address); ++block) {
			ASSERT_GE(block->first, last_end);
			ASSERT_LE(block->first + block->second, number(record->address));
		}
		last_end = number(record->address) + record->size;
		sum += record->size;
	}
	if (block != in_use.end()) {
		ASSERT_GE(block->first, last_end);
	}
	for (const auto& [address, size] : in_use) sum += size;
	ASSERT_EQ(sum, allocator.get_total_allocation_size());
}

class Heap_allocator_link_list_test : public testing::Test {
protected:
	~Heap_allocator_link_list_test() override {
		allocator.Allocator::~Allocator();
		xyl_heap_free(&allocator);
	}

	Heap_allocator_link_list_test() = default;
	explicit Heap_allocator_link_list_test(char* start, size_t size) : parent(start, size) {}

	Expected_leaks records_; // which an allocator never frees
	Parent parent{4 * unit + (16 << 20)};
	Allocator& allocator = *new (xyl_heap_allocate(sizeof(Allocator))) Allocator(&parent);

	void* allocate(size_t size, size_t alignment = 16) {
		return allocator.allocate_aligned_mem(size, alignment, group);
	}
	void release(void* memory) {
		EXPECT_TRUE(allocator.deallocate_mem(memory, 0));
		allocator.clear_ptrs();
	}
	Range at(size_t offset, size_t size) const { return {number(parent.start()) + offset, size}; }
};

// Over addresses without memory: what touches a block or a free range ends the program.
class Heap_allocator_link_list_distant_test : public Heap_allocator_link_list_test {
protected:
	Heap_allocator_link_list_distant_test()
		: Heap_allocator_link_list_test(reinterpret_cast<char*>(size_t{1} << 50), size_t{1} << 40) {
	}
};

} // namespace

TEST_F(Heap_allocator_link_list_test, StartsEmpty) {
	EXPECT_EQ(allocator.parent_allocator_, &parent);
	EXPECT_EQ(allocator.free_list_, nullptr);
	EXPECT_TRUE(allocator.active_);
	EXPECT_EQ(allocator.get_total_allocation_size(), 0u);
	EXPECT_EQ(allocator.current_index_, 0);
	EXPECT_TRUE(allocator.deferred_frees_[0].empty());
	EXPECT_TRUE(allocator.deferred_frees_[1].empty());
	EXPECT_EQ(allocator.default_alignment_, 16);
	EXPECT_EQ(allocator.page_size(), 0u);
	EXPECT_EQ(Allocator::ALLOCATION_GRANULARITY, 16u);
	EXPECT_EQ(Allocator::INTERNAL_ALLOCATION_GRANULARITY, 67108864u);
	EXPECT_EQ(std::size(allocator.allocation_sizes_.entries_), 8388608u);
	EXPECT_TRUE(parent.requests.empty());
}

TEST(xylHeap_allocator_link_list, ClearsItsTableWhateverTheMemoryHeld) {
	auto* const memory = static_cast<unsigned char*>(xyl_heap_allocate(sizeof(Allocator)));
	std::memset(memory, 0xAB, sizeof(Allocator));
	auto* const allocator = new (memory) Allocator(nullptr);
	for (const auto& entry : allocator->allocation_sizes_.entries_) {
		ASSERT_EQ(entry.key.load(), nullptr);
	}
	allocator->Allocator::~Allocator();
	xyl_heap_free(memory);
}

TEST_F(Heap_allocator_link_list_test, TheFirstByteTakesABlockOf16AndAChunkOf64MiB) {
	void* const first = allocate(1);
	EXPECT_EQ(first, parent.start());
	ASSERT_EQ(parent.requests.size(), 1u);
	EXPECT_EQ(parent.requests[0].size, unit);
	EXPECT_EQ(parent.requests[0].group, xylMemory_allocator_base::default_group);
	EXPECT_EQ(allocator.get_total_allocation_size(), unit);
	EXPECT_EQ(free_ranges(allocator), std::vector<Range>{at(16, unit - 16)});
	void* const second = allocate(17);
	EXPECT_EQ(number(second) - number(first), 16u);
	EXPECT_EQ(parent.requests.size(), 1u);
	EXPECT_EQ(free_ranges(allocator), std::vector<Range>{at(48, unit - 48)});
	EXPECT_EQ(allocator.allocation_sizes_.remove(second), 32u);
}

TEST_F(Heap_allocator_link_list_test, ChunksAreWholeUnits) {
	struct Case {
		const char* name;
		size_t size;
		size_t chunk;
	};
	const Case cases[] = {
		{"a whole unit", unit, unit},
		{"one byte more", unit + 1, 2 * unit},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		allocate(c.size);
		EXPECT_EQ(parent.requests.back().size, c.chunk);
	}
	EXPECT_EQ(allocator.get_total_allocation_size(), 3 * unit);
}

TEST_F(Heap_allocator_link_list_test, FieldsStandInTheirOrder) {
	const void* const fields[] = {&allocator.allocation_callback_,
	                              &allocator.parent_allocator_,
	                              &allocator.free_list_,
	                              &allocator.active_,
	                              &allocator.total_allocation_size_,
	                              &allocator.allocation_sizes_,
	                              &allocator.current_index_,
	                              &allocator.deferred_frees_};
	EXPECT_TRUE(std::is_sorted(std::begin(fields), std::end(fields)));
	const Allocator::List_record record = {};
	const void* const parts[] = {&record.address, &record.size, &record.next, &record.prev};
	EXPECT_TRUE(std::is_sorted(std::begin(parts), std::end(parts)));
}

TEST_F(Heap_allocator_link_list_distant_test, NothingIsWrittenIntoTheManagedMemory) {
	std::vector<void*> blocks;
	for (size_t i = 0; i < 40; ++i) blocks.push_back(allocate(1 + 50 * i, size_t{16} << i % 8));
	for (size_t i = 0; i < 40; i += 2) release(blocks[i]);
	for (size_t i = 1; i < 40; i += 2) release(blocks[i]);
	EXPECT_EQ(free_ranges(allocator), std::vector<Range>{at(0, unit)});
}

// kept: a range is compared by the low 32 bits of its size, and 2 GiB are negative.
TEST_F(Heap_allocator_link_list_distant_test, ARangeOf2GiBHoldsNoSmallBlock) {
	constexpr size_t large = 32 * unit;
	void* const block = allocate(large);
	EXPECT_EQ(block, parent.start());
	EXPECT_EQ(allocator.free_list_, nullptr);
	release(block);
	EXPECT_EQ(free_ranges(allocator), std::vector<Range>{at(0, large)});
	parent.gap = unit; // or the next chunk makes the range a longer one
	EXPECT_EQ(allocate(16), parent.start() + large + unit);
	EXPECT_EQ(parent.requests.size(), 2u);
	EXPECT_EQ(allocate(large), block) << "its like it holds";
	EXPECT_EQ(parent.requests.size(), 2u);
}

TEST_F(Heap_allocator_link_list_distant_test, WhatIsLeftOfARangeOfMoreThan2GiBIsWhole) {
	constexpr size_t large = 32 * unit;
	EXPECT_EQ(allocate(large + 1), parent.start());
	EXPECT_EQ(parent.requests.back().size, large + unit);
	EXPECT_EQ(free_ranges(allocator), std::vector<Range>{at(large + 16, unit - 16)});
	EXPECT_EQ(allocator.allocation_sizes_.remove(parent.start()), large + 16);
}

TEST_F(Heap_allocator_link_list_test, AllocateMemUsesTheDefaultAlignment) {
	allocate(16);
	void* const memory = allocator.allocate_mem(16, group);
	EXPECT_EQ(memory, parent.start() + 16);
	allocator.default_alignment_ = 4096;
	EXPECT_EQ(allocator.allocate_mem(16, group), parent.start() + 4096);
	std::memcpy(memory, "sixteen letters", 16);
	void* const moved = allocator.reallocate_mem(memory, 8192, group);
	EXPECT_EQ(moved, parent.start() + 8192);
	EXPECT_STREQ(static_cast<char*>(moved), "sixteen letters");
}

TEST_F(Heap_allocator_link_list_test, ReleasingIsDeferredToTheClearingOfItsList) {
	void* const memory = allocate(64);
	const auto before = free_ranges(allocator);
	EXPECT_TRUE(allocator.deallocate_mem(memory, 64));
	EXPECT_EQ(free_ranges(allocator), before);
	EXPECT_EQ(allocator.deferred_frees_[0], std::vector<void*>{memory});
	allocator.swap_indices();
	allocator.clear_ptrs();
	EXPECT_EQ(free_ranges(allocator), before);
	allocator.swap_indices();
	EXPECT_EQ(allocator.current_index_, 0);
	const size_t capacity = allocator.deferred_frees_[0].capacity();
	allocator.clear_ptrs();
	EXPECT_EQ(free_ranges(allocator), std::vector<Range>{at(0, unit)});
	EXPECT_TRUE(allocator.deferred_frees_[0].empty());
	EXPECT_EQ(allocator.deferred_frees_[0].capacity(), capacity);
	EXPECT_EQ(allocator.allocation_sizes_.remove(memory), 0u);
	EXPECT_EQ(allocator.get_total_allocation_size(), unit);
}

TEST_F(Heap_allocator_link_list_test, SwapThenClearMergesWhatWasReleasedTheCycleBeforeTheLast) {
	void* const a = allocate(16);
	void* const b = allocate(16);
	allocator.deallocate_mem(a, 16);
	allocator.swap_indices();
	allocator.clear_ptrs();
	EXPECT_EQ(free_ranges(allocator).size(), 1u);
	allocator.deallocate_mem(b, 16);
	allocator.swap_indices();
	allocator.clear_ptrs(); // a
	EXPECT_EQ(free_ranges(allocator), (std::vector<Range>{at(0, 16), at(32, unit - 32)}));
	allocator.swap_indices();
	allocator.clear_ptrs(); // b
	EXPECT_EQ(free_ranges(allocator), std::vector<Range>{at(0, unit)});
}

// Every neighbourhood that a released block may have.
TEST_F(Heap_allocator_link_list_test, MergesWithTheRangesThatTouch) {
	void* blocks[6];
	for (void*& block : blocks) block = allocate(32);
	release(blocks[2]); // between blocks, behind no range: a new head
	EXPECT_EQ(free_ranges(allocator), (std::vector<Range>{at(64, 32), at(192, unit - 192)}));
	release(blocks[0]); // below the head, not touching it
	EXPECT_EQ(free_ranges(allocator),
	          (std::vector<Range>{at(0, 32), at(64, 32), at(192, unit - 192)}));
	release(blocks[4]); // between two ranges, touching neither
	EXPECT_EQ(free_ranges(allocator),
	          (std::vector<Range>{at(0, 32), at(64, 32), at(128, 32), at(192, unit - 192)}));
	release(blocks[1]); // touching both
	EXPECT_EQ(free_ranges(allocator),
	          (std::vector<Range>{at(0, 96), at(128, 32), at(192, unit - 192)}));
	release(blocks[5]); // touching both, up to the chunk's rest
	EXPECT_EQ(free_ranges(allocator), (std::vector<Range>{at(0, 96), at(128, unit - 128)}));
	EXPECT_EQ(allocate(96), blocks[0]);
	void* const behind = allocate(16);
	EXPECT_EQ(number(behind), at(128, 0).start);
	release(behind); // touching only the range above
	EXPECT_EQ(free_ranges(allocator), std::vector<Range>{at(128, unit - 128)});
	release(blocks[3]); // below the head and touching it
	EXPECT_EQ(free_ranges(allocator), std::vector<Range>{at(96, unit - 96)});
}

TEST_F(Heap_allocator_link_list_test, MergesWithTheRangeBelowAlone) {
	void* const a = allocate(32);
	void* const b = allocate(32);
	allocate(32);
	release(a);
	release(b);
	EXPECT_EQ(free_ranges(allocator), (std::vector<Range>{at(0, 64), at(96, unit - 96)}));
}

TEST_F(Heap_allocator_link_list_test, FirstFitTakesTheLowestRangeThatHoldsTheBlock) {
	void* const small = allocate(16);
	allocate(16);
	void* const large = allocate(64);
	allocate(16);
	release(small);
	release(large);
	EXPECT_EQ(allocate(32), large);
	EXPECT_EQ(allocate(16), small);
	// What is left behind the 32 bytes: taken whole, its record goes.
	EXPECT_EQ(allocate(32), static_cast<char*>(large) + 32);
	EXPECT_EQ(free_ranges(allocator), std::vector<Range>{at(112, unit - 112)});
}

TEST_F(Heap_allocator_link_list_test, AlignmentLeavesTheGapFree) {
	allocate(16);
	EXPECT_EQ(allocate(32, 256), parent.start() + 256);
	EXPECT_EQ(free_ranges(allocator), (std::vector<Range>{at(16, 240), at(288, unit - 288)}));
	EXPECT_EQ(allocator.allocation_sizes_.remove(parent.start() + 256), 32u);
	// A block that ends exactly at the range's end, behind a gap.
	EXPECT_EQ(allocate(128, 128), parent.start() + 128);
	EXPECT_EQ(free_ranges(allocator), (std::vector<Range>{at(16, 112), at(288, unit - 288)}));
	// Large enough, but not once aligned: the search goes on.
	EXPECT_EQ(allocate(112, 32), parent.start() + 288);
	EXPECT_EQ(free_ranges(allocator), (std::vector<Range>{at(16, 112), at(400, unit - 400)}));
}

TEST_F(Heap_allocator_link_list_test, ABlockThatEvenANewChunkCannotHoldIsNull) {
	parent.gap = 16; // no chunk is aligned to a MiB
	EXPECT_EQ(allocate(unit, 1 << 20), nullptr);
	EXPECT_EQ(parent.requests.size(), 1u);
	EXPECT_EQ(allocator.get_total_allocation_size(), unit);
}

TEST_F(Heap_allocator_link_list_test, ChunksThatTouchBecomeOneRange) {
	allocate(unit);
	allocate(unit);
	release(parent.start());
	release(parent.start() + unit);
	EXPECT_EQ(free_ranges(allocator), std::vector<Range>{at(0, 2 * unit)});
	parent.gap = 4096;
	allocate(2 * unit);
	allocate(unit);
	release(parent.start() + 2 * unit + 4096);
	EXPECT_EQ(free_ranges(allocator), std::vector<Range>{at(2 * unit + 4096, unit)});
}

TEST_F(Heap_allocator_link_list_test, ReallocationMovesKeepsTheContentsAndMergesAtOnce) {
	auto* const memory = static_cast<char*>(allocate(32));
	std::memcpy(memory, "thirty-two bytes with the ending", 32);
	auto* const grown =
		static_cast<char*>(allocator.reallocate_aligned_mem(memory, 100, 64, group));
	EXPECT_EQ(grown, parent.start() + 64);
	EXPECT_EQ(std::memcmp(grown, "thirty-two bytes with the ending", 32), 0);
	EXPECT_TRUE(allocator.deferred_frees_[0].empty());
	EXPECT_EQ(free_ranges(allocator), (std::vector<Range>{at(0, 64), at(176, unit - 176)}));
	std::memset(parent.start() + 10, 0x55, 6);
	auto* const shrunk = static_cast<char*>(allocator.reallocate_aligned_mem(grown, 10, 16, group));
	EXPECT_EQ(shrunk, parent.start());
	EXPECT_EQ(std::memcmp(shrunk, "thirty-two\x55\x55\x55\x55\x55\x55", 16), 0)
		<< "exactly the new size is copied";
	EXPECT_EQ(allocator.allocation_sizes_.remove(grown), 0u);
	EXPECT_EQ(allocator.allocation_sizes_.remove(shrunk), 16u);
}

TEST_F(Heap_allocator_link_list_test, APointerThatIsNoBlockMergesAsNothing) {
	allocate(64);
	release(parent.start() + 32);
	EXPECT_EQ(free_ranges(allocator), (std::vector<Range>{at(32, 0), at(64, unit - 64)}));
}

TEST_F(Heap_allocator_link_list_test, ADestroyedAllocatorLeavesItsChunksAlone) {
	void* const memory = allocate(16);
	allocator.deallocate_mem(memory, 16);
	const auto* const record = allocator.free_list_;
	allocator.Allocator::~Allocator(); // the parent aborts on a release
	EXPECT_EQ(record->size, unit - 16);
	new (&allocator) Allocator(&parent);
}

// Long random runs: every block keeps its contents, and the whole state is right after every step.
TEST_F(Heap_allocator_link_list_test, RandomRunsKeepEveryBlockAndTheWholeState) {
	std::mt19937 random(2024);
	const auto below = [&](size_t n) { return static_cast<unsigned int>(random() % n); };
	struct Block {
		size_t size;        // as asked for
		unsigned char mark; // what its bytes hold
	};
	std::map<std::uintptr_t, Block> live;
	std::map<std::uintptr_t, size_t> in_use; // live and noted, rounded
	std::vector<std::uintptr_t> noted[2];
	int index = 0;
	const auto rounded = [](size_t size) { return (size + 15) / 16 * 16; };
	const auto pick = [&] { return std::next(live.begin(), below(live.size())); };
	for (int step = 0; step < 6000; ++step) {
		const unsigned int what = live.empty() ? 0 : below(100);
		const size_t size = 1 + below(what % 10 == 0 ? 100000 : 300);
		const size_t alignment = size_t{1} << below(13);
		const auto mark = static_cast<unsigned char>(step);
		if (what < 45) {
			void* const memory = allocate(size, alignment);
			ASSERT_EQ(number(memory) % std::max<size_t>(alignment, 16), 0u);
			std::memset(memory, mark, size);
			live[number(memory)] = {size, mark};
			in_use[number(memory)] = rounded(size);
		} else if (what < 60) {
			const auto old = pick();
			const auto [old_address, block] = *old;
			auto* const memory = static_cast<unsigned char*>(allocator.reallocate_aligned_mem(
				reinterpret_cast<void*>(old_address), size, alignment, group));
			const size_t kept = std::min(size, block.size);
			ASSERT_EQ(std::count(memory, memory + kept, block.mark),
			          static_cast<std::ptrdiff_t>(kept));
			live.erase(old);
			in_use.erase(old_address);
			std::memset(memory, mark, size);
			live[number(memory)] = {size, mark};
			in_use[number(memory)] = rounded(size);
		} else if (what < 90) {
			const auto block = pick();
			const auto* const bytes = reinterpret_cast<unsigned char*>(block->first);
			ASSERT_EQ(std::count(bytes, bytes + block->second.size, block->second.mark),
			          static_cast<std::ptrdiff_t>(block->second.size));
			allocator.deallocate_mem(reinterpret_cast<void*>(block->first), block->second.size);
			noted[index].push_back(block->first);
			live.erase(block);
		} else if (what < 95) {
			allocator.swap_indices();
			index = 1 - index;
		} else {
			allocator.clear_ptrs();
			for (const std::uintptr_t address : noted[index]) in_use.erase(address);
			noted[index].clear();
		}
		ASSERT_EQ(allocator.current_index_, index);
		ASSERT_NO_FATAL_FAILURE(check_state(allocator, in_use)) << "step " << step;
	}
	EXPECT_GT(free_ranges(allocator).size(), 1u);
}

// Thousands of ranges released in random order: the records are copied into order on the way, which
// nobody sees but the clock.
TEST_F(Heap_allocator_link_list_test, ScatteredReleasesKeepTheListWhole) {
	std::vector<void*> blocks;
	for (int i = 0; i < 6000; ++i) blocks.push_back(allocate(16));
	std::vector<void*> odd;
	for (size_t i = 1; i < blocks.size(); i += 2) odd.push_back(blocks[i]);
	std::shuffle(odd.begin(), odd.end(), std::mt19937(5));
	std::map<std::uintptr_t, size_t> in_use;
	for (void* block : blocks) in_use[number(block)] = 16;
	for (size_t i = 0; i < odd.size(); ++i) {
		allocator.deallocate_mem(odd[i], 16);
		if (i % 500 != 499) continue;
		allocator.clear_ptrs();
		for (size_t k = i - 499; k <= i; ++k) in_use.erase(number(odd[k]));
		ASSERT_NO_FATAL_FAILURE(check_state(allocator, in_use));
	}
	// First fit hands them out again from the lowest address on.
	std::sort(odd.begin(), odd.end());
	for (void* block : odd) ASSERT_EQ(allocate(16), block);
	EXPECT_EQ(free_ranges(allocator), std::vector<Range>{at(6000 * 16, unit - 6000 * 16)});
}
