#include "eastl_test_objects.h"

#include <morvantis/memory/xylmap.h>

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace {

template <typename Map> std::vector<int> keys(const Map& map) {
	std::vector<int> result;
	for (const auto& entry : map) result.push_back(entry.first);
	return result;
}

} // namespace

TEST(xylMap, IsEastlMap) {
	EXPECT_TRUE((std::is_same_v<xylMap<int, char>,
	                            eastl::map<int, char, eastl::less<int>, eastl::allocator>>));
}

TEST(xylMap, StartsEmpty) {
	const xylMap<int, int> map;
	EXPECT_TRUE(map.empty());
	EXPECT_EQ(map.size(), 0u);
	EXPECT_EQ(map.begin(), map.end());
	EXPECT_EQ(map.find(1), map.end());
}

TEST(xylMap, StandsInTheOrderOfItsKeys) {
	xylMap<int, std::string> map;
	for (const int key : {5, 1, 4, 2, 3}) map[key] = std::to_string(key);
	EXPECT_EQ(keys(map), (std::vector<int>{1, 2, 3, 4, 5}));
	EXPECT_EQ(map.begin()->second, "1");
	EXPECT_EQ(map.rbegin()->first, 5);
	xylMap<int, int, std::greater<int>> falling = {{1, 0}, {3, 0}, {2, 0}};
	EXPECT_EQ(keys(falling), (std::vector<int>{3, 2, 1}));
}

TEST(xylMap, KeysStandOnce) {
	xylMap<int, int> map;
	EXPECT_TRUE(map.insert({1, 10}).second);
	const auto again = map.insert(eastl::make_pair(1, 20));
	EXPECT_FALSE(again.second);
	EXPECT_EQ(again.first->second, 10);
	EXPECT_EQ(map.size(), 1u);
	map[1] = 30;
	EXPECT_EQ(map.at(1), 30);
	EXPECT_EQ(map.count(1), 1u);
	EXPECT_FALSE(map.emplace(1, 40).second);
	map.insert_or_assign(1, 50);
	EXPECT_EQ(map.at(1), 50);
	EXPECT_THROW(map.at(2), std::out_of_range);
}

TEST(xylMap, SubscriptMakesAClearedValue) {
	xylMap<int, int> map;
	EXPECT_EQ(map[7], 0);
	EXPECT_EQ(map.size(), 1u);
}

TEST(xylMap, FindsBounds) {
	const xylMap<int, int> map = {{10, 1}, {20, 2}, {30, 3}};
	EXPECT_EQ(map.lower_bound(20)->first, 20);
	EXPECT_EQ(map.upper_bound(20)->first, 30);
	EXPECT_EQ(map.lower_bound(21)->first, 30);
	EXPECT_EQ(map.upper_bound(30), map.end());
}

TEST(xylMap, ErasesByKeyAndByPlace) {
	xylMap<int, int> map = {{1, 1}, {2, 2}, {3, 3}};
	EXPECT_EQ(map.erase(2), 1u);
	EXPECT_EQ(map.erase(2), 0u);
	EXPECT_EQ(map.erase(map.begin())->first, 3);
	map.clear();
	EXPECT_TRUE(map.empty());
}

TEST(xylMap, CopiesAndMoves) {
	xylMap<int, int> source = {{1, 10}, {2, 20}};
	xylMap<int, int> copy(source), assigned;
	assigned = source;
	EXPECT_TRUE(copy == source && assigned == source);
	copy[1] = 11;
	EXPECT_FALSE(copy == source);
	const auto* const element = &*source.begin();
	xylMap<int, int> moved(std::move(source));
	EXPECT_EQ(&*moved.begin(), element) << "elements stay where they are";
	swap(moved, copy);
	EXPECT_EQ(moved.at(1), 11);
	xylMap<int, int>& same = moved;
	moved = same;
	EXPECT_EQ(moved.size(), 2u);
}

TEST(xylMap, AsksItsAllocatorForEveryElement) {
	using Map = xylMap<int, int, eastl::less<int>, Counting_allocator>;
	Counting_allocator::Counts counts;
	{
		Map map{Counting_allocator(&counts)};
		EXPECT_EQ(counts.blocks, 0);
		for (int i = 0; i < 100; ++i) map[i] = i;
		EXPECT_EQ(counts.allocations, 100);
		EXPECT_EQ(counts.blocks, 100);
		map.erase(5);
		EXPECT_EQ(counts.blocks, 99);
		const Map copy(map);
		EXPECT_EQ(counts.blocks, 198);
	}
	EXPECT_EQ(counts.blocks, 0);
	EXPECT_EQ(counts.bytes, 0u);
}

TEST(xylMap, EndsItsValues) {
	Counted::alive = 0;
	{
		xylMap<int, Counted> map;
		for (int i = 0; i < 50; ++i) map.emplace(i % 20, Counted(i));
		EXPECT_EQ(Counted::alive, 20);
		map.erase(3);
		EXPECT_EQ(Counted::alive, 19);
	}
	EXPECT_EQ(Counted::alive, 0);
}

TEST(xylMap, DoesWhatStdMapDoes) {
	xylMap<int, int> map;
	std::map<int, int> model;
	std::mt19937 random(2026);
	for (int step = 0; step < 20000; ++step) {
		const int key = static_cast<int>(random() % 200);
		if (random() % 2) {
			map[key] = model[key] = step;
		} else {
			ASSERT_EQ(map.erase(key), model.erase(key)) << "step " << step;
		}
		ASSERT_EQ(map.size(), model.size());
	}
	EXPECT_TRUE(std::equal(map.begin(), map.end(), model.begin(), model.end()));
}
