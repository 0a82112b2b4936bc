#include <morvantis/math/xyluvec2.h>

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();

bool is_dim(const xylUDim& dim, float scale, float offset) {
	return dim.scale == scale && dim.offset == offset;
}
bool is_pair(const xylUVec2& v, const xylUDim& x, const xylUDim& y) {
	return is_dim(v.x, x.scale, x.offset) && is_dim(v.y, y.scale, y.offset);
}

} // namespace

TEST(xylUDim, MixesShareAndAmount) {
	EXPECT_TRUE(is_dim(xylUDim(), 0, 0));
	EXPECT_EQ(xylUDim(0.5f, 10).asAbsolute(100), 60.0f);
	EXPECT_EQ(xylUDim(0.5f, 10).asRelative(100), 0.6f);
	EXPECT_EQ(xylUDim(0.5f, 10).asRelative(0), 0.0f);
	EXPECT_EQ(xylUDim(0.5f, 10).asRelative(-0.0f), 0.0f);
}

TEST(xylUDim, WorksPartByPart) {
	const xylUDim a(3, 12);
	const xylUDim b(2, -4);
	EXPECT_TRUE(is_dim(a + b, 5, 8));
	EXPECT_TRUE(is_dim(a - b, 1, 16));
	EXPECT_TRUE(is_dim(a * b, 6, -48));
	EXPECT_TRUE(is_dim(a / b, 1.5f, -3));
	EXPECT_TRUE(is_dim(a * 2.0f, 6, 24));
	EXPECT_TRUE(is_dim(a / 4.0f, 0.75f, 3));
	xylUDim c = a;
	EXPECT_TRUE(is_dim(c += b, 5, 8));
	EXPECT_TRUE(is_dim(c -= b, 3, 12));
	EXPECT_TRUE(is_dim(c *= b, 6, -48));
	EXPECT_TRUE(is_dim(c /= b, 3, 12));
	EXPECT_TRUE(is_dim(c *= 2.0f, 6, 24));
	EXPECT_TRUE(is_dim(c /= c, 1, 1));
}

TEST(xylUDim, OnlyCompoundDivisionGuardsAgainstZero) {
	const xylUDim divisor(0, 2);
	const xylUDim quotient = xylUDim(1, 1) / divisor;
	EXPECT_TRUE(is_dim(quotient, infinity, 0.5f));
	xylUDim guarded(1, 1);
	guarded /= divisor;
	EXPECT_TRUE(is_dim(guarded, 0, 0.5f));
	guarded /= xylUDim(1, -0.0f);
	EXPECT_TRUE(is_dim(guarded, 0, 0));
	EXPECT_TRUE(is_dim(xylUDim(1, -1) / 0.0f, infinity, -infinity));
}

TEST(xylUDim, DivisionByNumberMultipliesByTheReciprocal) {
	ASSERT_NE(5.0f / 3.0f, 5.0f * (1.0f / 3.0f));
	EXPECT_TRUE(is_dim(xylUDim(5, 5) / 3.0f, 5 * (1 / 3.0f), 5 * (1 / 3.0f)));
	EXPECT_TRUE(is_dim(xylUDim(5, 5) / xylUDim(3, 3), 5 / 3.0f, 5 / 3.0f));
	const xylUVec2 v(xylUDim(5, 5), xylUDim(5, 5));
	EXPECT_TRUE(is_pair(v / xylUDim(3, 3), {5 * (1 / 3.0f), 5 * (1 / 3.0f)},
	                    {5 * (1 / 3.0f), 5 * (1 / 3.0f)}));
	EXPECT_TRUE(is_pair(v / xylUVec2({3, 3}, {3, 3}), {5 / 3.0f, 5 / 3.0f}, {5 / 3.0f, 5 / 3.0f}));
	// The compound forms divide.
	xylUDim dim(5, 5);
	EXPECT_TRUE(is_dim(dim /= xylUDim(3, 3), 5 / 3.0f, 5 / 3.0f));
	xylUVec2 pair = v;
	EXPECT_TRUE(is_pair(pair /= xylUDim(3, 3), {5 / 3.0f, 5 / 3.0f}, {5 / 3.0f, 5 / 3.0f}));
	pair = v;
	EXPECT_TRUE(
		is_pair(pair /= xylUVec2({3, 3}, {3, 3}), {5 / 3.0f, 5 / 3.0f}, {5 / 3.0f, 5 / 3.0f}));
}

TEST(xylUDim, RelativeSizeDividesTheOffsetAlone) {
	ASSERT_NE(5.0f / 3.0f, 5.0f * (1.0f / 3.0f));
	EXPECT_EQ(xylUDim(0, 5).asRelative(3), 5 / 3.0f);
	EXPECT_EQ(xylUDim(2, 5).asRelative(-4), 0.75f);
	EXPECT_EQ(xylUDim(2, 5).asAbsolute(-4), -3.0f);
	// Smaller than any normal number is not 0.
	EXPECT_EQ(xylUDim(2, 0).asRelative(1e-45f), 2.0f);
}

TEST(xylUDim, ComparesExactlyAndNanWithAnything) {
	EXPECT_TRUE(xylUDim(1, 2) == xylUDim(1, 2));
	EXPECT_TRUE(xylUDim(1, 2) != xylUDim(1, 3));
	EXPECT_TRUE(xylUDim(1, 2) != xylUDim(0, 2));
	EXPECT_TRUE(xylUDim(2, 2) != xylUDim(3, 2));
	EXPECT_TRUE(xylUDim(1, 3) != xylUDim(1, 2));
	EXPECT_TRUE(xylUDim(not_a_number, 2) == xylUDim(5, 2));
	EXPECT_TRUE(xylUDim(1, 2) == xylUDim(1, not_a_number));
	EXPECT_FALSE(xylUDim(not_a_number, 2) == xylUDim(5, 3));
}

TEST(xylUVec2, IsMadeFromScalesOrParts) {
	EXPECT_TRUE(is_pair(xylUVec2(), {0, 0}, {0, 0}));
	EXPECT_TRUE(is_pair(xylUVec2(0.25f, 0.5f), {0.25f, 0}, {0.5f, 0}));
	EXPECT_TRUE(is_pair(xylUVec2({1, 2}, {3, 4}), {1, 2}, {3, 4}));
}

TEST(xylUVec2, ConvertsEachAxisByItsRule) {
	const xylUVec2 v({0.5f, 10}, {0.25f, 20});
	EXPECT_EQ(v.asAbsolute({100, 200}), xylVec2(60, 70));
	EXPECT_EQ(v.asRelative({0, 100}), xylVec2(0, 0.45f));
}

TEST(xylUVec2, WorksAxisByAxis) {
	const xylUVec2 a({3, 12}, {6, 8});
	const xylUVec2 b({1, 4}, {2, -2});
	EXPECT_TRUE(is_pair(a + b, {4, 16}, {8, 6}));
	EXPECT_TRUE(is_pair(a - b, {2, 8}, {4, 10}));
	EXPECT_TRUE(is_pair(a * b, {3, 48}, {12, -16}));
	EXPECT_TRUE(is_pair(a / b, {3, 3}, {3, -4}));
	EXPECT_TRUE(is_pair(a * 2.0f, {6, 24}, {12, 16}));
	xylUVec2 c = a;
	EXPECT_TRUE(is_pair(c += b, {4, 16}, {8, 6}));
	EXPECT_TRUE(is_pair(c -= b, {3, 12}, {6, 8}));
	EXPECT_TRUE(is_pair(c *= b, {3, 48}, {12, -16}));
	EXPECT_TRUE(is_pair(c /= b, {3, 12}, {6, 8}));
	EXPECT_TRUE(a == a);
	EXPECT_TRUE(a != b);
	EXPECT_TRUE(a != xylUVec2({3, 12}, {6, 9}));
	EXPECT_TRUE(a != xylUVec2({4, 12}, {6, 8}));
	EXPECT_TRUE(a == xylUVec2({not_a_number, 12}, {6, not_a_number}));
}

TEST(xylUVec2, SingleDimensionGoesToBothAxes) {
	const xylUVec2 a({3, 12}, {6, 8});
	const xylUDim dim(2, 4);
	EXPECT_TRUE(is_pair(a + dim, {5, 16}, {8, 12}));
	EXPECT_TRUE(is_pair(a - dim, {1, 8}, {4, 4}));
	EXPECT_TRUE(is_pair(a * dim, {6, 48}, {12, 32}));
	EXPECT_TRUE(is_pair(a / dim, {1.5f, 3}, {3, 2}));
	xylUVec2 c = a;
	EXPECT_TRUE(is_pair(c += dim, {5, 16}, {8, 12}));
	EXPECT_TRUE(is_pair(c -= dim, {3, 12}, {6, 8}));
	EXPECT_TRUE(is_pair(c *= dim, {6, 48}, {12, 32}));
	EXPECT_TRUE(is_pair(c /= dim, {3, 12}, {6, 8}));
	EXPECT_TRUE(is_pair(c -= c.x, {0, 0}, {3, -4})); // its own part
}

TEST(xylUVec2, OnlyCompoundDivisionGuardsAgainstZero) {
	const xylUVec2 a({1, 1}, {-1, 1});
	EXPECT_TRUE(is_pair(a / xylUDim(0, 2), {infinity, 0.5f}, {-infinity, 0.5f}));
	EXPECT_TRUE(is_pair(a / xylUVec2({0, 2}, {4, 0}), {infinity, 0.5f}, {-0.25f, infinity}));
	xylUVec2 c = a;
	c /= xylUDim(0, 2);
	EXPECT_TRUE(is_pair(c, {0, 0.5f}, {0, 0.5f}));
	c = a;
	c /= xylUVec2({0, 2}, {4, 0});
	EXPECT_TRUE(is_pair(c, {0, 0.5f}, {-0.25f, 0}));
}
