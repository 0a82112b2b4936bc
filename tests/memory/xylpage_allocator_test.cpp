#include <morvantis/memory/xylpage_allocator.h>
#include <morvantis/platform/zubplatform.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;

constexpr auto group = xylMemory_allocator_base::mesh_edit_data;
constexpr size_t system_page = 4096; // of the processor, on both systems

class Page_allocator_test : public testing::Test {
protected:
	Page_allocator_test() {
		allocator_.allocation_callback_ = [this](int size) {
			told_.push_back(size);
			total_when_told_ = allocator_.get_total_allocation_size();
		};
	}
	std::vector<int> told() { return std::exchange(told_, {}); }

	xylPage_allocator allocator_;
	const size_t page_ = allocator_.page_size();
	size_t total_when_told_ = 0;

private:
	std::vector<int> told_;
};

TEST_F(Page_allocator_test, ConstructionSetsTotalAlignmentAndPage) {
	const xylPage_allocator allocator;
	EXPECT_EQ(allocator.get_total_allocation_size(), 0u);
	EXPECT_EQ(allocator.total_allocation_size_, 0u);
	EXPECT_EQ(allocator.default_alignment_, 65536);
	EXPECT_FALSE(allocator.allocation_callback_);
	EXPECT_EQ(allocator.page_size(), zubPlatform::page_size());
}

TEST_F(Page_allocator_test, TotalGoesUpByWholePagesAndDownByTheRegion) {
	void* memory = allocator_.allocate_aligned_mem(1, 16, group);
	ASSERT_NE(memory, nullptr);
	EXPECT_EQ(allocator_.get_total_allocation_size(), page_);
	void* second = allocator_.allocate_mem(page_ + 1, group);
	EXPECT_EQ(allocator_.get_total_allocation_size(), 3 * page_);
	EXPECT_EQ(allocator_.total_allocation_size_, 3 * page_);
	EXPECT_TRUE(allocator_.deallocate_mem(memory, 99)) << "the size is ignored";
	EXPECT_EQ(allocator_.get_total_allocation_size(), 2 * page_);
	EXPECT_TRUE(allocator_.deallocate_mem(second, 0));
	EXPECT_EQ(allocator_.get_total_allocation_size(), 0u);
}

TEST_F(Page_allocator_test, BlocksAreZeroedPages) {
	auto* memory = static_cast<unsigned char*>(allocator_.allocate_mem(page_, group));
	ASSERT_NE(memory, nullptr);
	EXPECT_EQ(reinterpret_cast<size_t>(memory) % page_, 0u);
	for (size_t i = 0; i < page_; ++i) ASSERT_EQ(memory[i], 0);
	memory[page_ - 1] = 1;
	allocator_.deallocate_mem(memory, 0);
}

TEST_F(Page_allocator_test, CallbackComesFirst) {
	void* memory = allocator_.allocate_aligned_mem(100, 16, group);
	EXPECT_EQ(total_when_told_, 0u) << "before the total is raised";
	EXPECT_THAT(told(), ElementsAre(100));
	EXPECT_TRUE(allocator_.decommit_mem(memory, 1, 0));
	EXPECT_EQ(total_when_told_, page_);
	EXPECT_THAT(told(), ElementsAre(-1));
	EXPECT_TRUE(allocator_.deallocate_mem(memory, 0));
	EXPECT_EQ(total_when_told_, page_ - 1);
	EXPECT_THAT(told(), ElementsAre(-1));
}

TEST_F(Page_allocator_test, NullIsToldAndTrue) {
	EXPECT_TRUE(allocator_.deallocate_mem(nullptr, 5));
	EXPECT_THAT(told(), ElementsAre(-1));
	EXPECT_TRUE(allocator_.decommit_mem(nullptr, 5, 5));
	EXPECT_THAT(told(), ElementsAre(-1));
	EXPECT_EQ(allocator_.get_total_allocation_size(), 0u);
}

TEST_F(Page_allocator_test, WorksWithoutACallback) {
	xylPage_allocator allocator;
	void* memory = allocator.allocate_mem(1, group);
	memory = allocator.reallocate_mem(memory, 2, group);
	EXPECT_TRUE(allocator.decommit_mem(memory, 1, 0));
	EXPECT_TRUE(allocator.deallocate_mem(memory, 1));
}

TEST_F(Page_allocator_test, RefusalIsNullWithTheTotalTooHigh) {
	constexpr size_t size = size_t{1} << 62;
	EXPECT_EQ(allocator_.allocate_mem(size, group), nullptr);
	EXPECT_EQ(allocator_.get_total_allocation_size(), size);
	EXPECT_THAT(told(), ElementsAre(0)) << "the size as 32 bits";
}

TEST_F(Page_allocator_test, SizeZeroWrapsToNothing) {
	EXPECT_EQ(allocator_.allocate_mem(0, group), nullptr);
	EXPECT_EQ(allocator_.get_total_allocation_size(), 0u);
}

TEST_F(Page_allocator_test, ReallocationAlwaysMovesAndTellsTwice) {
	auto* memory = static_cast<unsigned char*>(allocator_.allocate_mem(2 * page_, group));
	for (size_t i = 0; i < 2 * page_; ++i) memory[i] = static_cast<unsigned char>(i % 251);
	told();
	auto* grown = static_cast<unsigned char*>(allocator_.reallocate_mem(memory, 4 * page_, group));
	ASSERT_NE(grown, nullptr);
	EXPECT_NE(grown, memory);
	EXPECT_THAT(told(), ElementsAre(static_cast<int>(4 * page_), -1));
	EXPECT_EQ(allocator_.get_total_allocation_size(), 4 * page_);
	for (size_t i = 0; i < 2 * page_; ++i) ASSERT_EQ(grown[i], i % 251);
	for (size_t i = 2 * page_; i < 4 * page_; ++i) ASSERT_EQ(grown[i], 0);

	auto* shrunk =
		static_cast<unsigned char*>(allocator_.reallocate_aligned_mem(grown, page_ / 2, 16, group));
	ASSERT_NE(shrunk, nullptr);
	EXPECT_EQ(allocator_.get_total_allocation_size(), page_);
	for (size_t i = 0; i < page_ / 2; ++i) ASSERT_EQ(shrunk[i], i % 251);
	EXPECT_EQ(shrunk[page_ / 2], 0) << "the first `size` bytes and no more";
	EXPECT_FALSE(zubPlatform::deallocate_memory(grown, 0)) << "released already";
	allocator_.deallocate_mem(shrunk, 0);
	EXPECT_EQ(allocator_.get_total_allocation_size(), 0u);
}

TEST_F(Page_allocator_test, DecommittedBlockTakesLessOffTheTotal) {
	auto* memory = static_cast<char*>(allocator_.allocate_mem(4 * page_, group));
	EXPECT_TRUE(allocator_.decommit_mem(memory + 2 * page_, page_, 77));
	EXPECT_EQ(allocator_.get_total_allocation_size(), 3 * page_);
	EXPECT_TRUE(allocator_.deallocate_mem(memory, 0));
	EXPECT_EQ(allocator_.get_total_allocation_size(), page_)
		<< "four came, one and the first region of two went";
}

TEST_F(Page_allocator_test, RefusedReleasesHaveLoweredTheTotal) {
	auto* memory = static_cast<char*>(allocator_.allocate_mem(4 * page_, group));
	EXPECT_FALSE(allocator_.deallocate_mem(memory + page_, 0)) << "the middle of a block";
	EXPECT_EQ(allocator_.get_total_allocation_size(), page_);
	EXPECT_FALSE(allocator_.decommit_mem(memory, 5 * page_, 0)) << "more than the block";
	EXPECT_EQ(allocator_.get_total_allocation_size(), size_t{0} - 4 * page_) << "wraps around";
	EXPECT_TRUE(allocator_.deallocate_mem(memory, 0));
}

TEST_F(Page_allocator_test, RoundsAsTheBaseClassDoes) {
	EXPECT_EQ(allocator_.round_up_to_page_size(1), page_);
	EXPECT_EQ(allocator_.round_up_to_page_size(page_), page_);
	EXPECT_EQ(allocator_.round_up_to_page_size(page_ + 1), 2 * page_);
	EXPECT_EQ(page_ % system_page, 0u);
}

TEST_F(Page_allocator_test, BlocksOutliveTheirAllocator) {
	void* memory = nullptr;
	{
		xylPage_allocator allocator;
		memory = allocator.allocate_mem(100, group);
	}
	std::memset(memory, 1, 100);
	EXPECT_TRUE(allocator_.deallocate_mem(memory, 100));
}

TEST(xylPage_allocator, TotalIsExactUnderThreads) {
	xylPage_allocator allocator;
	std::vector<std::thread> threads;
	for (int i = 0; i < 4; ++i) {
		threads.emplace_back([&allocator] {
			for (size_t round = 1; round < 100; ++round) {
				void* memory = allocator.allocate_mem(round * 1000, group);
				memory = allocator.reallocate_mem(memory, round * 500, group);
				EXPECT_TRUE(allocator.deallocate_mem(memory, 0));
			}
		});
	}
	for (std::thread& thread : threads) thread.join();
	EXPECT_EQ(allocator.get_total_allocation_size(), 0u);
}

TEST(xylPage_allocator_death_test, RefusedReallocationEndsTheProcess) {
	xylPage_allocator allocator;
	void* memory = allocator.allocate_mem(100, group);
	// Its low 32 bits are a size to copy.
	constexpr size_t refused = (size_t{1} << 62) + 4096;
	EXPECT_DEATH(allocator.reallocate_mem(memory, refused, group), "");
	EXPECT_TRUE(allocator.deallocate_mem(memory, 0));
}

} // namespace
