// Where heap blocks come from: mimalloc's own memory, and nobody else's blocks do.

#include "mimalloc_distance.h"

#include <morvantis/memory/xylheap.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>

namespace {

// mimalloc's own answer whether it handed out the memory at `address`. The function is not
// exported, so it is called at its place in the library.
bool is_in_mimalloc_region(const void* address) {
	std::uintptr_t place = reinterpret_cast<std::uintptr_t>(&xyl_heap_free);
	place += static_cast<std::uintptr_t>(mimalloc_distance);
	bool (*function)(const void*) = nullptr;
	static_assert(sizeof(function) == sizeof(place));
	std::memcpy(&function, &place, sizeof(place));
	return function(address);
}

struct Heap_free {
	void operator()(void* memory) const { xyl_heap_free(memory); }
};
using Heap_block = std::unique_ptr<void, Heap_free>;

constexpr size_t sizes[] = {1, 16, 100, 4096, 100'000, 1 << 20, 40 << 20};

} // namespace

TEST(HeapRegion, HeapBlocksComeFromMimalloc) {
	for (const size_t size : sizes) {
		SCOPED_TRACE(size);
		const Heap_block block(xyl_heap_allocate(size));
		EXPECT_TRUE(is_in_mimalloc_region(block.get()));
		const Heap_block aligned(xyl_heap_allocate_aligned(size, 256));
		EXPECT_TRUE(is_in_mimalloc_region(aligned.get()));
	}
}

TEST(HeapRegion, HeapBlocksOfOtherThreadsComeFromMimalloc) {
	Heap_block block;
	std::thread([&] { block.reset(xyl_heap_allocate(64)); }).join();
	EXPECT_TRUE(is_in_mimalloc_region(block.get()));
}

TEST(HeapRegion, BlocksOfMallocAndNewDoNot) {
	for (const size_t size : sizes) {
		SCOPED_TRACE(size);
		void* const block = std::malloc(size);
		EXPECT_FALSE(is_in_mimalloc_region(block));
		std::free(block);
		void* const object = ::operator new(size);
		EXPECT_FALSE(is_in_mimalloc_region(object));
		::operator delete(object);
	}
}
