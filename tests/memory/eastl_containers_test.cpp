// Smoke
#include <EASTL/sort.h>
#include <gtest/gtest.h>
#include <morvantis/memory/xylarray.h>
#include <morvantis/memory/xylmap.h>
#include <string>
TEST(xylArray, Smoke) {
	xylArray<std::string> a;
	for (int i = 0; i < 9; ++i) a.push_back(std::to_string(i));
	EXPECT_EQ(a.capacity(), 16u);
	a.insert(a.begin() + 2, "x");
	a.erase(a.begin());
	eastl::quick_sort(a.begin(), a.end());
	xylArray<std::string> b = a, c = std::move(a);
	EXPECT_EQ(b, c);
	xylMap<int, std::string> m;
	m[3] = "z";
	m.insert(eastl::make_pair(4, "q"));
	xylMap<int, std::string> n = m;
	EXPECT_TRUE(m == n);
	eastl::function<int(int)> f = [](int i) { return i + 1; };
	EXPECT_EQ(f(1), 2);
}
