#include <morvantis/memory/allocation_size.h>
#include <morvantis/memory/xylheap.h>
#include <morvantis/memory/xylheap_allocator.h>
#include <morvantis/memory/xylmemory_allocator_globals.h>
#include <morvantis/memory/xylpage_allocator.h>

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <string>

namespace {

constexpr auto group = xylMemory_allocator_base::render;

bool is_aligned(const void* memory, size_t alignment) {
	return reinterpret_cast<size_t>(memory) % alignment == 0;
}

class Heap_allocator_test : public testing::Test {
protected:
	xylHeap_allocator allocator_{nullptr};
};

TEST_F(Heap_allocator_test, ConstructionSetsOnlyTheDefaultAlignment) {
	EXPECT_EQ(allocator_.default_alignment_, 16384);
	EXPECT_FALSE(allocator_.allocation_callback_);
	EXPECT_EQ(sizeof(xylHeap_allocator), sizeof(xylMemory_allocator_base)) << "no field of its own";
}

TEST_F(Heap_allocator_test, SizeZeroIsNull) {
	EXPECT_EQ(allocator_.allocate_mem(0, group), nullptr);
	EXPECT_EQ(allocator_.allocate_aligned_mem(0, 64, group), nullptr);
	EXPECT_EQ(allocator_.reallocate_mem(nullptr, 0, group), nullptr);
	EXPECT_TRUE(allocator_.deallocate_mem(nullptr, 0));
}

TEST_F(Heap_allocator_test, BlocksHaveTheirAlignmentAndAtLeastSixteen) {
	for (size_t alignment = 1; alignment <= 65536; alignment *= 2) {
		SCOPED_TRACE(alignment);
		void* memory = allocator_.allocate_aligned_mem(100, alignment, group);
		EXPECT_TRUE(is_aligned(memory, alignment < 16 ? 16 : alignment));
		memory = allocator_.reallocate_aligned_mem(memory, 5000, alignment, group);
		EXPECT_TRUE(is_aligned(memory, alignment < 16 ? 16 : alignment));
		EXPECT_TRUE(allocator_.deallocate_mem(memory, 12345)) << "the size is ignored";
	}
	// default_alignment_ has no effect: that many blocks can't all lie on it by chance.
	int on_default = 0;
	void* blocks[64];
	for (void*& block : blocks) {
		block = allocator_.allocate_mem(40, group);
		EXPECT_TRUE(is_aligned(block, 16));
		on_default += is_aligned(block, 16384);
	}
	EXPECT_LT(on_default, 64);
	for (void* block : blocks) allocator_.deallocate_mem(block, 0);
}

// Every size with every alignment, fresh and moved.
TEST_F(Heap_allocator_test, WholeGridOfSizesAndAlignments) {
	for (size_t alignment = 1; alignment <= 65536; alignment *= 2) {
		for (size_t size = 1; size <= 4096; size += size < 300 ? 1 : 37) {
			void* memory = allocator_.allocate_aligned_mem(size, alignment, group);
			ASSERT_TRUE(memory && is_aligned(memory, alignment)) << size << " at " << alignment;
			memory = allocator_.reallocate_aligned_mem(memory, 4097 - size, alignment, group);
			ASSERT_TRUE(memory && is_aligned(memory, alignment)) << size << " at " << alignment;
			allocator_.deallocate_mem(memory, size);
		}
	}
}

TEST_F(Heap_allocator_test, ReallocationKeepsTheContents) {
	auto* memory = static_cast<unsigned char*>(allocator_.reallocate_mem(nullptr, 100, group));
	ASSERT_NE(memory, nullptr);
	std::memset(memory, 0x5A, 100);
	for (const size_t size : {1000u, 50u, 100000u, 50u}) {
		memory = static_cast<unsigned char*>(allocator_.reallocate_mem(memory, size, group));
		ASSERT_NE(memory, nullptr);
		EXPECT_TRUE(is_aligned(memory, 16));
		for (size_t i = 0; i < 50; ++i) ASSERT_EQ(memory[i], 0x5A);
	}
	allocator_.deallocate_mem(memory, 50);
}

TEST_F(Heap_allocator_test, ReallocationToZeroIsNoFree) {
	auto* memory = static_cast<unsigned char*>(allocator_.allocate_mem(100, group));
	std::memset(memory, 0x5A, 100);
	EXPECT_EQ(allocator_.reallocate_mem(memory, 0, group), nullptr);
	EXPECT_EQ(allocator_.reallocate_aligned_mem(memory, 0, 64, group), nullptr);
	// Still allocated: nothing else gets the address, and the contents are there.
	void* others[100];
	for (void*& other : others) {
		other = allocator_.allocate_mem(100, group);
		EXPECT_NE(other, memory);
		std::memset(other, 0, 100);
	}
	for (int i = 0; i < 100; ++i) ASSERT_EQ(memory[i], 0x5A);
	for (void* other : others) allocator_.deallocate_mem(other, 100);
	EXPECT_TRUE(allocator_.deallocate_mem(memory, 100));
}

TEST_F(Heap_allocator_test, CallbackIsNeverCalledAndNothingIsCounted) {
	int calls = 0;
	allocator_.allocation_callback_ = [&calls](int) { ++calls; };
	void* memory = allocator_.allocate_mem(1000, group);
	memory = allocator_.reallocate_mem(memory, 2000, group);
	EXPECT_EQ(allocator_.get_total_allocation_size(), 0u);
	allocator_.deallocate_mem(memory, 2000);
	EXPECT_EQ(calls, 0);
	EXPECT_EQ(allocator_.page_size(), 1u);
	EXPECT_EQ(allocator_.round_up_to_page_size(17), 17u);
}

TEST_F(Heap_allocator_test, ExhaustedMemoryIsNull) {
	EXPECT_EQ(allocator_.allocate_aligned_mem(size_t{1} << 60, 16, group), nullptr);
	EXPECT_EQ(allocator_.allocate_mem(size_t{1} << 60, group), nullptr);
}

TEST_F(Heap_allocator_test, AllocatedSizeIsTheHeapsOwnRounded) {
	for (const size_t size : {1u, 100u, 4096u, 2097152u, 2097153u, 4194304u, 9000000u}) {
		void* memory = allocator_.allocate_mem(size, group);
		EXPECT_EQ(allocator_.get_allocated_memory_size(memory),
		          counted_allocation_size(xyl_heap_usable_size(memory)));
		allocator_.deallocate_mem(memory, size);
	}
	EXPECT_EQ(allocator_.get_allocated_memory_size(nullptr), 0u);
}

TEST_F(Heap_allocator_test, CopiesTakeTheFieldsOfTheBase) {
	int calls = 0;
	allocator_.default_alignment_ = 32;
	allocator_.allocation_callback_ = [&calls](int) { ++calls; };
	const xylHeap_allocator copy(allocator_);
	xylHeap_allocator assigned(nullptr);
	assigned = allocator_;
	for (const xylHeap_allocator* other :
	     {&copy, &static_cast<const xylHeap_allocator&>(assigned)}) {
		EXPECT_EQ(other->default_alignment_, 32);
		ASSERT_TRUE(other->allocation_callback_);
		other->allocation_callback_(0);
	}
	EXPECT_EQ(calls, 2);
	// Instances are interchangeable.
	assigned.deallocate_mem(allocator_.allocate_mem(10, group), 10);
}

TEST_F(Heap_allocator_test, StatisticsGoToStandardError) {
	testing::internal::CaptureStderr();
	allocator_.print_stats();
	const std::string text = testing::internal::GetCapturedStderr();
	const bool keeps_statistics = std::string(MORVANTIS_HEAP) == "mimalloc";
	EXPECT_EQ(text.find("reserved") != std::string::npos, keeps_statistics) << text;
}

TEST(xylMemory_allocator_globals, BothAllocatorsAreThereFromLoadOn) {
	ASSERT_NE(xylMemory_allocator_globals::page_allocator_, nullptr);
	ASSERT_NE(xylMemory_allocator_globals::heap_allocator_, nullptr);
	EXPECT_EQ(xylMemory_allocator_globals::heap_allocator_->default_alignment_, 16384);
	EXPECT_EQ(xylMemory_allocator_globals::page_allocator_->default_alignment_, 65536);
	xylMemory_allocator_globals::finalize_global_allocators();
	xylMemory_allocator_base* allocator = xylMemory_allocator_globals::heap_allocator_;
	void* memory = allocator->allocate_mem(10, group);
	EXPECT_NE(memory, nullptr) << "nothing was torn down";
	EXPECT_TRUE(allocator->deallocate_mem(memory, 10));
}

TEST(xylMemory_allocator_globals, FurtherInitialisationReplacesBoth) {
	xylPage_allocator* page_allocator = xylMemory_allocator_globals::page_allocator_;
	xylHeap_allocator* heap_allocator = xylMemory_allocator_globals::heap_allocator_;
	xylMemory_allocator_globals::init_global_allocators();
	EXPECT_NE(xylMemory_allocator_globals::page_allocator_, page_allocator);
	EXPECT_NE(xylMemory_allocator_globals::heap_allocator_, heap_allocator);
	// From the runtime's heap, and without a virtual destructor, as a host would end them.
	xylMemory_allocator_globals::page_allocator_->xylPage_allocator::~xylPage_allocator();
	xylMemory_allocator_globals::heap_allocator_->xylHeap_allocator::~xylHeap_allocator();
	::operator delete(xylMemory_allocator_globals::page_allocator_);
	::operator delete(xylMemory_allocator_globals::heap_allocator_);
	xylMemory_allocator_globals::page_allocator_ = page_allocator;
	xylMemory_allocator_globals::heap_allocator_ = heap_allocator;
}

} // namespace
