// The process's own heap functions stay those of the C and C++ run-times: their blocks are blocks
// of the run-time's heap, and blocks of the library's heap are not.

#include <morvantis/memory/xylheap.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <new>

#include <morvantis/platform/system/windows/include_windows.h>

#include <malloc.h>

namespace {

bool is_in_runtime_heap(const void* block) {
	return HeapValidate(reinterpret_cast<HANDLE>(_get_heap_handle()), 0, block) != 0;
}

constexpr size_t sizes[] = {1, 16, 100, 4096, 100'000, 1 << 20};

} // namespace

TEST(ProcessHeap, BlocksOfMallocAreInTheRuntimesHeap) {
	for (const size_t size : sizes) {
		SCOPED_TRACE(size);
		void* block = std::malloc(size);
		EXPECT_TRUE(is_in_runtime_heap(block));
		block = std::realloc(block, 2 * size);
		EXPECT_TRUE(is_in_runtime_heap(block));
		std::free(block);
		void* const zeroed = std::calloc(1, size);
		EXPECT_TRUE(is_in_runtime_heap(zeroed));
		std::free(zeroed);
	}
}

TEST(ProcessHeap, BlocksOfNewAreInTheRuntimesHeap) {
	for (const size_t size : sizes) {
		SCOPED_TRACE(size);
		void* const object = ::operator new(size);
		EXPECT_TRUE(is_in_runtime_heap(object));
		::operator delete(object);
		void* const array = ::operator new[](size, std::nothrow);
		EXPECT_TRUE(is_in_runtime_heap(array));
		::operator delete[](array);
	}
}

TEST(ProcessHeap, BlocksOfTheLibrarysHeapAreNot) {
	for (const size_t size : sizes) {
		SCOPED_TRACE(size);
		void* const block = xyl_heap_allocate(size);
		EXPECT_FALSE(is_in_runtime_heap(block));
		xyl_heap_free(block);
	}
}
