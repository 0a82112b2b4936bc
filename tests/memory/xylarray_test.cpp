#include "eastl_test_objects.h"

#include <morvantis/memory/xylarray.h>
#include <morvantis/memory/xylheap.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using Counts = Counting_allocator::Counts;
using Counting_array = xylArray<int, Counting_allocator>;

class Array_test : public testing::Test {
protected:
	void SetUp() override { Counted::alive = Counted::copies = 0; }
	void TearDown() override { EXPECT_EQ(Counted::alive, 0) << "elements are ended"; }

	static std::vector<int> values(const xylArray<Counted>& array) {
		std::vector<int> result;
		for (const Counted& element : array) result.push_back(element.value);
		return result;
	}
};

} // namespace

TEST(xylArray, IsEastlVector) {
	EXPECT_TRUE((std::is_same_v<xylArray<int>, eastl::vector<int, eastl::allocator>>));
	EXPECT_TRUE((std::is_same_v<xylArray<int>::iterator, int*>));
	EXPECT_EQ(sizeof(xylArray<int>), 3 * sizeof(void*));
}

TEST(xylArray, StartsEmptyWithoutABlock) {
	const xylArray<int> array;
	EXPECT_TRUE(array.empty());
	EXPECT_EQ(array.size(), 0u);
	EXPECT_EQ(array.capacity(), 0u);
	EXPECT_EQ(array.data(), nullptr);
	EXPECT_EQ(array.begin(), array.end());
}

TEST(xylArray, AppendsDoubleFromOne) {
	xylArray<int> array;
	const size_t capacities[] = {1, 2, 4, 4, 8, 8, 8, 8, 16, 16, 16, 16, 16, 16, 16, 16, 32};
	for (const size_t capacity : capacities) {
		array.push_back(static_cast<int>(array.size()));
		EXPECT_EQ(array.capacity(), capacity) << array.size();
	}
	for (size_t i = 0; i < array.size(); ++i) EXPECT_EQ(array[i], static_cast<int>(i));
	while (array.size() < 1000) array.emplace_back();
	EXPECT_EQ(array.capacity(), 1024u);
}

// Twice the size where that is enough, else just enough; and never from the capacity.
TEST(xylArray, LongerAdditionsGrowByTheSameRule) {
	struct Case {
		const char* name;
		size_t size;
		size_t addition;
		size_t capacity;
	};
	const Case cases[] = {
		{"one to nothing", 0, 1, 1},    {"five to nothing", 0, 5, 5}, {"one to three", 3, 1, 6},
		{"three to three", 3, 3, 6},    {"four to three", 3, 4, 7},   {"none to three", 3, 0, 3},
		{"ninety to ten", 10, 90, 100},
	};
	const std::vector<int> source(100, 7);
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		const auto last = source.begin() + static_cast<ptrdiff_t>(c.addition);
		xylArray<int> by_value(c.size), by_range(c.size), by_resize(c.size), by_fill(c.size);
		by_value.insert(by_value.begin(), c.addition, 7);
		EXPECT_EQ(by_value.capacity(), c.capacity);
		by_range.insert(by_range.begin(), source.begin(), last);
		EXPECT_EQ(by_range.capacity(), c.capacity);
		by_resize.resize(c.size + c.addition);
		EXPECT_EQ(by_resize.capacity(), c.capacity);
		by_fill.resize(c.size + c.addition, 7);
		EXPECT_EQ(by_fill.capacity(), c.capacity);
		EXPECT_EQ(by_value, by_range);
	}
}

TEST(xylArray, InsertIntoAFullBlockDoubles) {
	xylArray<int> array = {1, 2, 3};
	EXPECT_EQ(*array.insert(array.begin() + 1, 9), 9);
	EXPECT_EQ(array.capacity(), 6u);
	EXPECT_EQ(array, (xylArray<int>{1, 9, 2, 3}));
}

TEST(xylArray, EverythingElseTakesExactBlocks) {
	const int numbers[] = {1, 2, 3, 4, 5};
	EXPECT_EQ(xylArray<int>(5).capacity(), 5u);
	EXPECT_EQ(xylArray<int>(5, 3).capacity(), 5u);
	EXPECT_EQ(xylArray<int>(numbers, numbers + 5).capacity(), 5u);
	EXPECT_EQ((xylArray<int>{1, 2, 3}).capacity(), 3u);
	xylArray<int> grown(numbers, numbers + 5);
	grown.push_back(6);
	EXPECT_EQ(grown.capacity(), 10u);
	EXPECT_EQ(xylArray<int>(grown).capacity(), 6u);
	xylArray<int> assigned;
	assigned = grown;
	EXPECT_EQ(assigned.capacity(), 6u);
	assigned.assign(7, 1);
	EXPECT_EQ(assigned.capacity(), 7u);
	assigned.reserve(9);
	EXPECT_EQ(assigned.capacity(), 9u);
	assigned.reserve(3);
	EXPECT_EQ(assigned.capacity(), 9u);
	assigned.shrink_to_fit();
	EXPECT_EQ(assigned.capacity(), 7u);
	EXPECT_EQ(xylArray<int>(size_t{0}).data(), nullptr);
}

TEST(xylArray, AssignmentKeepsALargeEnoughBlock) {
	xylArray<int> array(100);
	const int* const block = array.data();
	const xylArray<int> three = {1, 2, 3};
	array = three;
	EXPECT_EQ(array, three);
	array.assign(100, 4);
	EXPECT_EQ(array.back(), 4);
	array = {5, 6};
	EXPECT_EQ(array, (xylArray<int>{5, 6}));
	EXPECT_EQ(array.data(), block);
	EXPECT_EQ(array.capacity(), 100u);
}

TEST(xylArray, MoveTakesTheBlockAndEmptiesTheSource) {
	xylArray<int> source = {1, 2, 3};
	const int* const block = source.data();
	xylArray<int> target(std::move(source));
	EXPECT_EQ(target.data(), block);
	EXPECT_TRUE(source.empty());
	EXPECT_EQ(source.capacity(), 0u);
	xylArray<int> assigned = {4};
	assigned = std::move(target);
	EXPECT_EQ(assigned.data(), block);
	EXPECT_EQ(target.capacity(), 0u);
	xylArray<int>& same = assigned;
	assigned = std::move(same);
	assigned = same;
	EXPECT_EQ(assigned, (xylArray<int>{1, 2, 3}));
}

TEST(xylArray, ClearKeepsTheBlock) {
	xylArray<int> array(5, 1);
	array.clear();
	EXPECT_TRUE(array.empty());
	EXPECT_EQ(array.capacity(), 5u);
}

TEST(xylArray, SetCapacityCutsAndShrinks) {
	xylArray<int> array = {1, 2, 3, 4, 5};
	array.set_capacity(8);
	EXPECT_EQ(array.capacity(), 8u);
	array.set_capacity(3);
	EXPECT_EQ(array, (xylArray<int>{1, 2, 3}));
	EXPECT_EQ(array.capacity(), 3u);
	array.reserve(10);
	array.set_capacity();
	EXPECT_EQ(array.capacity(), 3u);
	array.set_capacity(0);
	EXPECT_EQ(array.data(), nullptr);
}

TEST(xylArray, ResizeClearsNewElements) {
	xylArray<int> array(4, 7);
	array.resize(1);
	array.resize(4);
	EXPECT_EQ(array, (xylArray<int>{7, 0, 0, 0}));
	array.resize(2);
	array.resize(3, 5);
	EXPECT_EQ(array, (xylArray<int>{7, 0, 5}));
	array.resize(1, 5);
	EXPECT_EQ(array.size(), 1u);
}

TEST(xylArray, ReachesItsElements) {
	xylArray<int> array = {1, 2, 3};
	const xylArray<int>& same = array;
	EXPECT_EQ(array.front() + same.front(), 2);
	EXPECT_EQ(array.back() + same.back(), 6);
	EXPECT_EQ(array[1] + same[1], 4);
	EXPECT_EQ(array.at(2) + same.at(2), 6);
	EXPECT_THROW(array.at(3), std::out_of_range);
	EXPECT_THROW(same.at(3), std::out_of_range);
	EXPECT_EQ(*array.rbegin() + *same.rbegin() + *same.crbegin(), 9);
	EXPECT_EQ(array.rend() - array.rbegin(), 3);
	EXPECT_EQ(same.crend() - same.rbegin(), 3);
	EXPECT_EQ(same.rend() - same.crbegin(), 3);
	EXPECT_EQ(array.cend() - array.cbegin(), 3);
	EXPECT_EQ(same.data(), array.data());
	EXPECT_TRUE(array.validate());
}

TEST(xylArray, ErasesOneAndMany) {
	xylArray<int> array = {0, 1, 2, 3, 4, 5};
	EXPECT_EQ(*array.erase(array.begin() + 1), 2);
	EXPECT_EQ(*array.erase(array.begin() + 1, array.begin() + 3), 4);
	EXPECT_EQ(array, (xylArray<int>{0, 4, 5}));
	EXPECT_EQ(array.erase(array.begin(), array.begin()), array.begin()) << "nothing to erase";
	const int* next = array.erase(array.end() - 1);
	EXPECT_EQ(next, array.end());
	array.push_back(6);
	EXPECT_EQ(*array.erase_unsorted(array.begin()), 6);
	EXPECT_EQ(array, (xylArray<int>{6, 4}));
	next = array.erase_unsorted(array.begin() + 1);
	EXPECT_EQ(next, array.end());
	array.pop_back();
	EXPECT_TRUE(array.empty());
}

TEST(xylArray, ComparesByElements) {
	const xylArray<int> a = {1, 2}, b = {1, 2, 0}, c = {1, 3};
	EXPECT_TRUE(a == a && a != b && a < b && b < c && c > a && a <= b && c >= c);
}

TEST(xylArray, TakesInputIterators) {
	std::istringstream text("4 5 6"), more("1 2 3");
	xylArray<int> array{std::istream_iterator<int>(text), std::istream_iterator<int>()};
	array.insert(array.begin(), std::istream_iterator<int>(more), std::istream_iterator<int>());
	EXPECT_EQ(array, (xylArray<int>{1, 2, 3, 4, 5, 6}));
	std::istringstream again("7 8");
	array.assign(std::istream_iterator<int>(again), std::istream_iterator<int>());
	EXPECT_EQ(array, (xylArray<int>{7, 8}));
}

TEST(xylArray, BoolsAreBytes) {
	xylArray<bool> array(3, true);
	bool* first = &array[0];
	*first = false;
	EXPECT_FALSE(array.front());
	EXPECT_TRUE(array[1]);
}

TEST(xylArray, ElementsAreAligned) {
	struct alignas(256) Wide {
		char byte = 1;
	};
	for (int round = 0; round < 20; ++round) {
		xylArray<Wide> array;
		for (int i = 0; i < 9; ++i) {
			array.push_back(Wide{});
			ASSERT_EQ(reinterpret_cast<std::uintptr_t>(array.data()) % 256, 0u);
		}
	}
}

TEST(xylArray, BlocksAreTheHeaps) {
	xylArray<int> array = {1, 2, 3};
	int* const block = array.data();
	EXPECT_GE(xyl_heap_usable_size(block), 3 * sizeof(int));
	EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0u);
	array.reset_lose_memory();
	EXPECT_EQ(array.capacity(), 0u);
	xyl_heap_free(block);
}

TEST(xylArray, AsksItsAllocatorForEveryBlock) {
	Counts counts;
	{
		Counting_array array{Counting_allocator(&counts)};
		for (int i = 0; i < 9; ++i) array.push_back(i);
		EXPECT_EQ(counts.allocations, 5) << "1, 2, 4, 8 and 16 elements";
		EXPECT_EQ(counts.blocks, 1);
		EXPECT_EQ(counts.bytes, 16 * sizeof(int));
		EXPECT_EQ(counts.last_alignment, 0u) << "the plain form is aligned enough for an int";
		Counts other_counts;
		Counting_array other(2, 5, Counting_allocator(&other_counts));
		other.swap(array);
		swap(other, array);
		EXPECT_EQ(other.get_allocator().counts, &other_counts);
		Counting_array copy(array, other.get_allocator());
		EXPECT_EQ(other_counts.blocks, 2);
		EXPECT_EQ(copy, array);
	}
	EXPECT_EQ(counts.blocks, 0);
	EXPECT_EQ(counts.bytes, 0u);
}

TEST_F(Array_test, GrowthMovesAndNeverCopies) {
	xylArray<Counted> array;
	for (int i = 0; i < 100; ++i) array.emplace_back(i);
	EXPECT_EQ(Counted::copies, 0);
	EXPECT_EQ(Counted::alive, 100);
	array.reserve(1000);
	array.shrink_to_fit();
	EXPECT_EQ(Counted::copies, 0);
	EXPECT_EQ(values(array).back(), 99);
}

TEST_F(Array_test, TakesItsOwnElements) {
	xylArray<Counted> array = {1, 2};
	array.push_back(array[0]); // the block is full and moves
	array.insert(array.begin(), array[1]);
	array.push_back(array[1]);
	EXPECT_EQ(values(array), (std::vector<int>{2, 1, 2, 1, 1}));
	array.shrink_to_fit();
	array.insert(array.begin() + 1, 2, array[2]);
	EXPECT_EQ(values(array), (std::vector<int>{2, 2, 2, 1, 2, 1, 1}));
	array.shrink_to_fit();
	array.resize(8, array[3]);
	EXPECT_EQ(values(array), (std::vector<int>{2, 2, 2, 1, 2, 1, 1, 1}));
	array.assign(2, array[3]);
	EXPECT_EQ(values(array), (std::vector<int>{1, 1}));
	array.assign(9, array[1]);
	EXPECT_EQ(values(array), std::vector<int>(9, 1));
}

TEST_F(Array_test, DoesWhatStdVectorDoes) {
	xylArray<Counted> array;
	std::vector<int> model;
	std::mt19937 random(2026);
	const auto below = [&random](size_t limit) {
		return static_cast<ptrdiff_t>(random() % (limit + 1));
	};
	for (int step = 0; step < 20000; ++step) {
		const ptrdiff_t at = below(model.size());
		const ptrdiff_t to = at + below(model.size() - static_cast<size_t>(at));
		const auto n = static_cast<size_t>(below(4));
		switch (random() % 10) {
		case 0:
			array.push_back(step);
			model.push_back(step);
			break;
		case 1:
			array.insert(array.begin() + at, Counted(step));
			model.insert(model.begin() + at, step);
			break;
		case 2:
			array.insert(array.begin() + at, n, step);
			model.insert(model.begin() + at, n, step);
			break;
		case 3:
			array.insert(array.begin() + at, {1, 2, 3});
			model.insert(model.begin() + at, {1, 2, 3});
			break;
		case 4:
			array.emplace(array.begin() + at, step);
			model.emplace(model.begin() + at, step);
			break;
		case 5:
			array.resize(model.size() + n, step);
			model.resize(model.size() + n, step);
			break;
		case 6:
			if (random() % 8 == 0) {
				array = xylArray<Counted>(array);
				array.shrink_to_fit();
			}
			break;
		case 7:
			if (!model.empty()) {
				array.pop_back();
				model.pop_back();
			}
			break;
		default:
			array.erase(array.begin() + at, array.begin() + to);
			model.erase(model.begin() + at, model.begin() + to);
			break;
		}
		ASSERT_TRUE(array.validate());
		ASSERT_EQ(values(array), model) << "step " << step;
		ASSERT_EQ(Counted::alive, static_cast<int>(model.size()));
	}
}

// What a constructor throws passes through, and nothing stays behind.
TEST(xylArray, AThrowingElementLeavesNothingBehind) {
	struct Fragile {
		explicit Fragile(int number) : counted(number) {
			if (number == 3) throw std::runtime_error("three");
		}
		Fragile(const Fragile& other) : Fragile(other.counted.value + 1) {}
		Fragile(Fragile&&) noexcept = default;
		Counted counted;
	};
	Counted::alive = 0;
	{
		xylArray<Fragile> array;
		array.emplace_back(1);
		EXPECT_THROW(array.emplace_back(3), std::runtime_error) << "into a new block";
		EXPECT_EQ(array.size(), 1u);
		array.reserve(3);
		EXPECT_THROW(array.emplace_back(3), std::runtime_error) << "in place";
		array.emplace_back(2);
		EXPECT_THROW(xylArray<Fragile>{array}, std::runtime_error);
		EXPECT_EQ(Counted::alive, 2);
	}
	EXPECT_EQ(Counted::alive, 0);
}
