#include <morvantis/math/xylconvex_polygon.h>

#include "polygon_samples.h"
#include "test_data.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <initializer_list>
#include <sstream>
#include <string>
#include <type_traits>

// The order of fields.
static_assert(offsetof(xylConvex_polygon, points) == 0);
static_assert(offsetof(xylConvex_polygon, rectangular_min) == sizeof(Points));
static_assert(offsetof(xylConvex_polygon, rectangular_max) == sizeof(Points) + sizeof(xylVec2));

namespace {

constexpr float float_max = std::numeric_limits<float>::max();

// The private operations: an explicit instantiation may name them.
bool comes_before(const xylVec2& a, const xylVec2& b);
bool lies_apart_on(const xylVec2& axis, const xylConvex_polygon& a, const xylConvex_polygon& b);
void sort_array(Points& input);
void sort_plain_array(xylVec2* input, int count);
template <bool (*comparator)(const xylVec2&, const xylVec2&),
          bool (xylConvex_polygon::*question)(const xylVec2&, const xylConvex_polygon&,
                                              const xylConvex_polygon&) const,
          void (*of_array)(Points&), void (*of_plain_array)(xylVec2*, int)>
struct Private_operations {
	friend bool comes_before(const xylVec2& a, const xylVec2& b) { return comparator(a, b); }
	friend bool lies_apart_on(const xylVec2& axis, const xylConvex_polygon& a,
	                          const xylConvex_polygon& b) {
		return (xylConvex_polygon().*question)(axis, a, b);
	}
	friend void sort_array(Points& input) { of_array(input); }
	friend void sort_plain_array(xylVec2* input, int count) { of_plain_array(input, count); }
};
template struct Private_operations<&xylConvex_polygon::xy_comparator,
                                   &xylConvex_polygon::is_axis_seperating, &xylConvex_polygon::sort,
                                   &xylConvex_polygon::sort>;

xylConvex_polygon hull(std::initializer_list<xylVec2> points) { return hull_of(Points(points)); }
xylConvex_polygon square(float low, float high) {
	return hull({{low, low}, {high, low}, {high, high}, {low, high}});
}
xylConvex_polygon box(float x0, float y0, float x1, float y1) {
	return hull({{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}});
}

testing::AssertionResult has_corners(const xylConvex_polygon& polygon,
                                     std::initializer_list<xylVec2> corners) {
	const Points expected(corners);
	if (polygon.points == expected) return testing::AssertionSuccess();
	auto result = testing::AssertionFailure();
	for (const xylVec2& p : polygon.points) result << p;
	return result;
}

// Whether the points are in order, and the very bits of `before`.
testing::AssertionResult is_sorted_form(const Points& after, const Points& before) {
	for (size_t i = 1; i < after.size(); ++i) {
		if (plain::is_before(to_plain<float>(after[i]), to_plain<float>(after[i - 1]))) {
			return testing::AssertionFailure() << after[i - 1] << " before " << after[i];
		}
	}
	const auto bits = [](const Points& points) {
		std::vector<unsigned long long> result;
		for (const xylVec2& p : points) result.push_back(std::bit_cast<unsigned long long>(p));
		std::sort(result.begin(), result.end());
		return result;
	};
	if (bits(after) != bits(before)) return testing::AssertionFailure() << "other points";
	return testing::AssertionSuccess();
}

// --- Construction

TEST(xylConvex_polygon, NewOneIsEmpty) {
	const xylConvex_polygon polygon;
	EXPECT_TRUE(polygon.points.empty());
	EXPECT_EQ(polygon.get_rectangular_min(), xylVec2(0, 0));
	EXPECT_EQ(polygon.get_rectangular_max(), xylVec2(0, 0));
	EXPECT_FALSE(polygon.is_valid());
}

TEST(xylConvex_polygon, HullOfASquareRunsCounterClockwiseFromTheFirstPoint) {
	const xylConvex_polygon polygon = hull({{2, 2}, {0, 2}, {1, 1}, {2, 0}, {0, 0}});
	EXPECT_TRUE(has_corners(polygon, {{0, 0}, {2, 0}, {2, 2}, {0, 2}}));
	EXPECT_TRUE(polygon.is_valid());
	EXPECT_EQ(polygon.rectangular_min, xylVec2(0, 0));
	EXPECT_EQ(polygon.rectangular_max, xylVec2(2, 2));
	EXPECT_EQ(&polygon.get_rectangular_min(), &polygon.rectangular_min);
	EXPECT_EQ(&polygon.get_rectangular_max(), &polygon.rectangular_max);
}

TEST(xylConvex_polygon, CollinearAndRepeatedPointsDropOut) {
	struct Case {
		const char* name;
		std::initializer_list<xylVec2> points, corners;
		bool is_valid;
	};
	const Case cases[] = {
		{"three on a line", {{0, 0}, {1, 1}, {2, 2}}, {{0, 0}, {2, 2}}, false},
		{"three on a vertical line", {{1, 3}, {1, 1}, {1, 2}}, {{1, 1}, {1, 3}}, false},
		{"points along the edges",
	     {{0, 0}, {1, 0}, {2, 0}, {2, 1}, {2, 2}, {1, 2}, {0, 2}, {0, 1}},
	     {{0, 0}, {2, 0}, {2, 2}, {0, 2}},
	     true},
		{"every corner twice",
	     {{0, 0}, {3, 0}, {0, 3}, {0, 0}, {3, 0}, {0, 3}},
	     {{0, 0}, {3, 0}, {0, 3}},
	     true},
		{"two points", {{4, 1}, {2, 3}}, {{2, 3}, {4, 1}}, false},
		{"two points, one of them twice", {{4, 1}, {2, 3}, {2, 3}}, {{2, 3}, {4, 1}}, false},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		const xylConvex_polygon polygon = hull(c.points);
		EXPECT_TRUE(has_corners(polygon, c.corners));
		EXPECT_EQ(polygon.is_valid(), c.is_valid);
	}
}

// kept: the steps of the chain give these.
TEST(xylConvex_polygon, OnePointIsNoCornerOrTwo) {
	const xylConvex_polygon once = hull({{1, 2}});
	EXPECT_TRUE(once.points.empty());
	EXPECT_EQ(once.rectangular_min, xylVec2(float_max, float_max));
	EXPECT_EQ(once.rectangular_max, xylVec2(-float_max, -float_max));
	for (const xylConvex_polygon& often :
	     {hull({{1, 2}, {1, 2}}), hull({{1, 2}, {1, 2}, {1, 2}})}) {
		EXPECT_TRUE(has_corners(often, {{1, 2}, {1, 2}}));
		EXPECT_EQ(often.rectangular_min, xylVec2(1, 2));
		EXPECT_EQ(often.rectangular_max, xylVec2(1, 2));
	}
}

TEST(xylConvex_polygon, NoPointsGiveANewPolygon) {
	xylVec2 unused(1, 2);
	Points none;
	for (const int form : {0, 1, 2}) {
		SCOPED_TRACE(form);
		xylConvex_polygon polygon = square(1, 2);
		if (form == 0) polygon.initialize(none);
		if (form == 1) polygon.initialize(&unused, 0);
		if (form == 2) polygon.initialize(nullptr, -1);
		EXPECT_TRUE(polygon.points.empty());
		EXPECT_EQ(polygon.points.capacity(), 0u);
		EXPECT_EQ(polygon.rectangular_min, xylVec2(0, 0));
		EXPECT_EQ(polygon.rectangular_max, xylVec2(0, 0));
	}
	EXPECT_EQ(unused, xylVec2(1, 2));
}

TEST(xylConvex_polygon, InputIsLeftSortedAndWholeInBothForms) {
	Samples samples(7501);
	for (int i = 0; i < 20000; ++i) {
		const Points before = scattered_points(samples);
		Points array = before, plain_array = before;
		xylConvex_polygon of_array, of_plain_array;
		of_array.initialize(array);
		of_plain_array.initialize(plain_array.data(), static_cast<int>(plain_array.size()));
		ASSERT_TRUE(is_sorted_form(array, before));
		ASSERT_TRUE(is_sorted_form(plain_array, before));
		ASSERT_EQ(of_array.points, of_plain_array.points);
	}
}

TEST(xylConvex_polygon, PointsCompareByXThenByY) {
	struct Case {
		xylVec2 a, b;
		bool is_before;
	};
	const Case cases[] = {
		{{1, 9}, {2, 0}, true},
		{{1, 2}, {1, 3}, true},
		{{1, 2}, {1, 2}, false},
		{{-2, 0}, {-1, 0}, true},
		{{-0.0f, 1}, {0, 2}, true},
		{{0, 1}, {-0.0f, 2}, true},
		{{not_a_number, 1}, {0, 2}, false},
		{{0, not_a_number}, {0, 2}, false},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(testing::Message() << c.a << c.b);
		EXPECT_EQ(comes_before(c.a, c.b), c.is_before);
		EXPECT_FALSE(comes_before(c.b, c.a));
	}
}

TEST(xylConvex_polygon, SortsArraysOfBothForms) {
	const Points before = {{2, 0}, {1, 3}, {2, -1}, {1, 2}, {-5, 7}};
	const Points sorted = {{-5, 7}, {1, 2}, {1, 3}, {2, -1}, {2, 0}};
	Points array = before, plain_array = before;
	sort_array(array);
	EXPECT_EQ(array, sorted);
	sort_plain_array(plain_array.data() + 1, 0); // nothing
	EXPECT_EQ(plain_array, before);
	sort_plain_array(plain_array.data(), 5);
	EXPECT_EQ(plain_array, sorted);
}

// Equal x in both zeros, more than a few points: sorted by y across the two.
TEST(xylConvex_polygon, BothZerosAreOneNumber) {
	for (const int count : {4, 300}) {
		SCOPED_TRACE(count);
		Points points;
		for (int i = 0; i < count; ++i) {
			points.push_back({i % 2 ? 0.0f : -0.0f, static_cast<float>((i * 7) % count)});
		}
		const Points before = points;
		xylConvex_polygon polygon;
		polygon.initialize(points);
		EXPECT_TRUE(is_sorted_form(points, before));
		EXPECT_TRUE(has_corners(polygon, {{0, 0}, {0, static_cast<float>(count - 1)}}));
	}
}

TEST(xylConvex_polygon, MemoryIsExact) {
	Samples samples(7502);
	xylConvex_polygon polygon;
	for (const unsigned count : {1000u, 5u, 40u, 3u}) {
		Points points = scattered_points(samples, count, anywhere);
		polygon.initialize(points);
		EXPECT_GE(polygon.points.size(), 3u);
		EXPECT_EQ(polygon.points.capacity(), polygon.points.size());
	}
}

TEST(xylConvex_polygon, ItsOwnPointsMayBeTheInput) {
	xylConvex_polygon polygon;
	polygon.points = {{2, 2}, {0, 2}, {1, 1}, {2, 0}, {0, 0}};
	polygon.initialize(polygon.points);
	EXPECT_TRUE(has_corners(polygon, {{0, 0}, {2, 0}, {2, 2}, {0, 2}}));
}

TEST(xylConvex_polygon, CopiesAreValues) {
	const xylConvex_polygon original = square(1, 3);
	xylConvex_polygon copy(original);
	EXPECT_EQ(copy.points, original.points);
	EXPECT_NE(copy.points.data(), original.points.data());
	EXPECT_EQ(copy.rectangular_min, original.rectangular_min);
	EXPECT_EQ(copy.rectangular_max, original.rectangular_max);
	xylConvex_polygon assigned = square(7, 8);
	assigned = original;
	copy.points[0] = {9, 9};
	EXPECT_EQ(assigned.points, original.points);
	EXPECT_EQ(assigned.rectangular_min, xylVec2(1, 1));
	EXPECT_EQ(assigned.rectangular_max, xylVec2(3, 3));
	const xylConvex_polygon& itself = assigned;
	const xylVec2* const memory = assigned.points.data();
	assigned = itself;
	EXPECT_EQ(assigned.points, original.points);
	EXPECT_EQ(assigned.points.data(), memory);
}

// --- Questions

TEST(xylConvex_polygon, BorderIsNotInterior) {
	const xylConvex_polygon polygon = square(0, 4);
	struct Case {
		const char* name;
		xylVec2 p;
		bool expected;
	};
	const Case cases[] = {
		{"middle", {2, 2}, true},          {"near an edge", {2, 0.001f}, true},
		{"on an edge", {2, 0}, false},     {"on the closing edge", {0, 2}, false},
		{"a corner", {4, 4}, false},       {"outside", {5, 2}, false},
		{"beyond an edge", {2, 9}, false}, {"not a number", {not_a_number, 2}, false},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		EXPECT_EQ(polygon.interior_check(c.p), c.expected);
	}
}

TEST(xylConvex_polygon, EmptyOneHoldsEveryPointAndDegenerateOnesNone) {
	EXPECT_TRUE(xylConvex_polygon().interior_check({1, 2}));
	EXPECT_FALSE(hull({{0, 0}, {2, 2}}).interior_check({1, 1}));
	EXPECT_FALSE(hull({{1, 1}, {1, 1}}).interior_check({1, 1}));
}

TEST(xylConvex_polygon, InclusionNeedsEveryCornerInside) {
	const xylConvex_polygon outer = square(0, 4);
	EXPECT_TRUE(outer.convex_poly_inclusion_check(square(1, 3)));
	EXPECT_FALSE(outer.convex_poly_inclusion_check(box(1, 1, 5, 3)));
	EXPECT_FALSE(outer.convex_poly_inclusion_check(hull({{0, 0}, {3, 1}, {1, 3}}))); // one corner
	EXPECT_FALSE(outer.convex_poly_inclusion_check(outer));
	EXPECT_FALSE(square(1, 3).convex_poly_inclusion_check(outer));
	EXPECT_TRUE(outer.convex_poly_inclusion_check(xylConvex_polygon()));
	EXPECT_TRUE(xylConvex_polygon().convex_poly_inclusion_check(outer));
}

TEST(xylConvex_polygon, AreaIsThatOfTheCorners) {
	EXPECT_EQ(square(1, 4).get_area(), 9);
	EXPECT_EQ(hull({{0, 0}, {4, 0}, {0, 3}}).get_area(), 6);
	EXPECT_EQ(hull({{0, 0}, {4, 3}}).get_area(), 0);
	EXPECT_EQ(hull({{1e20f, 1e20f}, {2e20f, 1e20f}}).get_area(), 0); // their products are infinite
	EXPECT_EQ(xylConvex_polygon().get_area(), 0);
	xylConvex_polygon clockwise;
	clockwise.points = {{0, 0}, {0, 3}, {4, 0}};
	EXPECT_EQ(clockwise.get_area(), 6);
}

TEST(xylConvex_polygon, CenterIsPulledToWhereTheCornersAre) {
	EXPECT_EQ(square(0, 4).get_center_pos(), xylVec2(2, 2));
	// A corner more on the right: the centroid of the area would stay below x = 2.4.
	const xylConvex_polygon pulled = hull({{0, 0}, {4, 0}, {5, 2}, {4, 4}, {0, 4}});
	EXPECT_EQ(pulled.get_center_pos(), xylVec2(13, 10) / 5);
	EXPECT_TRUE(std::isnan(xylConvex_polygon().get_center_pos().x));
}

TEST(xylConvex_polygon, ClosestPositionOnTheBorder) {
	const xylConvex_polygon polygon = square(0, 4);
	struct Case {
		const char* name;
		xylVec2 p, closest;
		float distance;
	};
	const Case cases[] = {
		{"inside", {1, 2}, {0, 2}, 1},
		{"inside, below", {2, 0.5f}, {2, 0}, 0.5f},
		{"beside an edge", {7, 3}, {4, 3}, 3},
		{"beyond a corner", {7, 8}, {4, 4}, 5},
		{"on an edge", {4, 1}, {4, 1}, 0},
		{"in the middle the first edge wins", {2, 2}, {2, 0}, 2},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		xylVec2 out(-1, -1);
		EXPECT_EQ(polygon.get_closest_boundary_position(c.p, out), c.distance);
		EXPECT_EQ(out, c.closest);
	}
}

TEST(xylConvex_polygon, ClosestPositionOfDegenerateOnes) {
	xylVec2 out(-1, -1);
	EXPECT_EQ(xylConvex_polygon().get_closest_boundary_position({1, 2}, out), float_max);
	EXPECT_EQ(out, xylVec2(-1, -1));
	EXPECT_EQ(hull({{1, 1}, {1, 1}}).get_closest_boundary_position({4, 5}, out), 5);
	EXPECT_EQ(out, xylVec2(1, 1));
	EXPECT_EQ(hull({{0, 0}, {4, 0}}).get_closest_boundary_position({3, 2}, out), 2);
	EXPECT_EQ(out, xylVec2(3, 0));
	out = {-1, -1};
	EXPECT_EQ(square(0, 1).get_closest_boundary_position({float_max, 0}, out), float_max);
	EXPECT_EQ(square(0, 1).get_closest_boundary_position({not_a_number, 0}, out), float_max);
	EXPECT_EQ(out, xylVec2(-1, -1));
}

// kept: the end of an edge counts from beyond it only, so where rounding has lost the end, the
// point that the steps lead to is taken for a point of the border.
TEST(xylConvex_polygon, ParameterOfExactlyOneStepsAlongTheEdge) {
	const xylConvex_polygon long_one = hull({{1, 0}, {1e8f, 0}});
	xylVec2 out(-1, -1);
	EXPECT_EQ(long_one.get_closest_boundary_position({0, 0}, out), 0);
	EXPECT_EQ(out, xylVec2(0, 0)); // 1e8 - (1e8 - 1) in single precision
}

TEST(xylConvex_polygon, EdgeWhoseSquareIsZeroIsItsFirstEnd) {
	const xylConvex_polygon tiny = hull({{0, 0}, {1e-30f, 0}});
	xylVec2 out(-1, -1);
	EXPECT_EQ(tiny.get_closest_boundary_position({1, 0}, out), 1);
	EXPECT_EQ(out, xylVec2(0, 0));
}

// An edge whose square is infinite has no parameter: its first end stands for it.
TEST(xylConvex_polygon, ParameterThatIsNoNumberIsTheFirstEnd) {
	const xylConvex_polygon huge = hull({{0, 0}, {1e20f, 0}});
	xylVec2 out(-1, -1);
	EXPECT_EQ(huge.get_closest_boundary_position({1e19f, 0}, out), 1e19f);
	EXPECT_EQ(out, xylVec2(0, 0));
}

// --- Collisions

TEST(xylConvex_polygon, AxisSeparatesOnlyProjectionsThatDoNotTouch) {
	const xylConvex_polygon polygon = square(0, 4), beside = box(4, 9, 6, 11);
	struct Case {
		const char* name;
		xylVec2 axis;
		const xylConvex_polygon &a, &b;
		bool expected;
	};
	const xylConvex_polygon far_off = box(5, 0, 6, 4), empty;
	const Case cases[] = {
		{"touching", {1, 0}, polygon, beside, false},
		{"apart", {0, 1}, polygon, beside, true},
		{"apart, of any length", {0, -0.001f}, polygon, beside, true},
		{"apart in x", {1, 0}, polygon, far_off, true},
		{"one in the other", {0, 1}, polygon, far_off, false},
		{"no axis", {0, 0}, polygon, far_off, false},
		{"no numbers", {not_a_number, 1}, polygon, far_off, true}, // no projection at all
		{"an empty one", {1, 0}, polygon, empty, true},
		{"two empty ones", {1, 0}, empty, empty, true},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		EXPECT_EQ(lies_apart_on(c.axis, c.a, c.b), c.expected);
		EXPECT_EQ(lies_apart_on(c.axis, c.b, c.a), c.expected);
	}
}

TEST(xylConvex_polygon, TouchingPolygonsCollide) {
	const xylConvex_polygon polygon = square(0, 4);
	struct Case {
		const char* name;
		xylConvex_polygon other;
		bool expected;
	};
	const Case cases[] = {
		{"apart in x", box(5, 0, 8, 4), false},
		{"apart in y", box(0, 5, 4, 8), false},
		{"a shared edge", box(4, 0, 8, 4), true},
		{"a shared corner", box(4, 4, 8, 8), true},
		{"just apart", box(4.0001f, 0, 8, 4), false},
		{"overlapping", box(3, 3, 8, 8), true},
		{"inside", square(1, 2), true},
		{"around", square(-1, 9), true},
		// The rectangles overlap; an edge of the triangle parts them.
		{"beyond a corner, diagonally", hull({{8, 3}, {8, 8}, {3, 8}}), false},
		{"over the corner", hull({{7, 0}, {7, 7}, {0, 7}}), true},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		EXPECT_EQ(polygon.check_collision_with_convex_poligon(c.other), c.expected);
		EXPECT_EQ(c.other.check_collision_with_convex_poligon(polygon), c.expected);
	}
}

TEST(xylConvex_polygon, CollisionsOfDegenerateOnes) {
	const xylConvex_polygon empty, polygon = square(0, 4);
	const xylConvex_polygon point_here = hull({{0, 0}, {0, 0}}),
							point_there = hull({{9, 9}, {9, 9}});
	const xylConvex_polygon left = hull({{0, 1}, {1, 1}}), right = hull({{8, 1}, {9, 1}});
	const xylConvex_polygon above = hull({{0, 2}, {1, 2}});
	struct Case {
		const char* name;
		const xylConvex_polygon &a, &b;
		bool expected;
	};
	const Case cases[] = {
		{"two empty ones", empty, empty, true},
		{"an empty one and a square", empty, polygon, false},
		{"an empty one and a point", empty, point_here, false},
		{"points anywhere", point_here, point_there, true},
		{"a point inside", polygon, hull({{1, 1}, {1, 1}}), true},
		{"a point outside", polygon, point_there, false},
		{"segments on one line", left, right, true},
		{"parallel segments", left, above, false},
		{"a segment across a square", polygon, hull({{-1, 1}, {9, 1}}), true},
		{"a segment beside a square", polygon, right, false},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		EXPECT_EQ(c.a.check_collision_with_convex_poligon(c.b), c.expected);
		EXPECT_EQ(c.b.check_collision_with_convex_poligon(c.a), c.expected);
	}
}

TEST(xylConvex_polygon, EveryEdgeIsTried) {
	// Regular polygons around the origin, and a point just outside each edge in turn.
	for (int corners = 3; corners <= 19; ++corners) {
		Points points;
		const auto at = [corners](float i, float radius) {
			const float angle = 6.2831853f * i / static_cast<float>(corners);
			return xylVec2(radius * std::cos(angle), radius * std::sin(angle));
		};
		for (int i = 0; i < corners; ++i) points.push_back(at(static_cast<float>(i), 1));
		const xylConvex_polygon polygon = hull_of(points);
		ASSERT_EQ(polygon.points.size(), static_cast<size_t>(corners));
		const float border = std::cos(3.1415927f / static_cast<float>(corners));
		for (int i = 0; i < corners; ++i) {
			SCOPED_TRACE(testing::Message() << corners << " corners, edge " << i);
			const float middle = static_cast<float>(i) + 0.5f;
			const xylVec2 outside = at(middle, border * 1.001f);
			const xylVec2 inside = at(middle, border * 0.999f);
			const xylConvex_polygon point_outside = hull({outside, outside});
			const xylConvex_polygon point_inside = hull({inside, inside});
			EXPECT_FALSE(polygon.check_collision_with_convex_poligon(point_outside));
			EXPECT_FALSE(point_outside.check_collision_with_convex_poligon(polygon));
			EXPECT_TRUE(polygon.check_collision_with_convex_poligon(point_inside));
			EXPECT_TRUE(point_inside.check_collision_with_convex_poligon(polygon));
		}
	}
}

TEST(xylConvex_polygon, ShadowOfABoxIsTheHullOfItsCorners) {
	const xylConvex_polygon polygon = square(0, 4);
	xylBounding_box box;
	box.min = {-1, -1, 100};
	box.max = {1, 1, 200};
	xylMatrix_frame frame = xylMatrix_frame::identity();
	const auto collides_at = [&](float x, float y) {
		frame.origin = {x, y, -500, 1};
		return polygon.check_collision_with_transformed_bounding_box_2d(box, frame);
	};
	EXPECT_TRUE(collides_at(2, 2));
	EXPECT_TRUE(collides_at(5, 2)); // touching
	EXPECT_FALSE(collides_at(5.01f, 2));
	// Turned by an eighth: the corner reaches further, the edge is nearer to the diagonal.
	const float half = std::sqrt(0.5f);
	frame.s = {half, half, 0, 0};
	frame.f = {-half, half, 0, 0};
	EXPECT_TRUE(collides_at(5.4f, 2));
	EXPECT_FALSE(collides_at(5.42f, 2));
	EXPECT_FALSE(collides_at(4.75f, 4.75f));
	// Standing on edge: x of the shadow is z of the box.
	frame.s = {0, 0, 1, 0};
	frame.f = {0, 1, 0, 0};
	frame.u = {-1, 0, 0, 0};
	EXPECT_TRUE(collides_at(204, 2));
	EXPECT_FALSE(collides_at(204.1f, 2));
	// No size: one point.
	frame = xylMatrix_frame::identity();
	box.min = box.max = {3, 3, 0};
	EXPECT_TRUE(collides_at(0, 0));
	EXPECT_FALSE(collides_at(3, 0));
}

// A bounding box leaves a frame that is nearly the identity out; its shadow doesn't.
TEST(xylConvex_polygon, ShadowFollowsFramesThatAreNearlyTheIdentity) {
	const xylConvex_polygon polygon = square(0, 4);
	xylBounding_box box;
	box.min = {4, 0, 0};
	box.max = {5, 4, 1};
	xylMatrix_frame frame = xylMatrix_frame::identity();
	EXPECT_TRUE(polygon.check_collision_with_transformed_bounding_box_2d(box, frame));
	frame.origin.x = 5e-5f;
	EXPECT_FALSE(polygon.check_collision_with_transformed_bounding_box_2d(box, frame));
}

// --- Against the plain steps and the model in double

TEST(xylConvex_polygon, HullIsThatOfThePlainSteps) {
	Samples samples(7503);
	for (int i = 0; i < sample_count; ++i) {
		const Points points = scattered_points(samples);
		const xylConvex_polygon ours = hull_of(points);
		ASSERT_EQ(to_plain<float>(ours.points), plain::hull(to_plain<float>(points))) << i;
		xylVec2 low(float_max, float_max), high(-float_max, -float_max);
		for (const xylVec2& p : ours.points) {
			low = {std::min(low.x, p.x), std::min(low.y, p.y)};
			high = {std::max(high.x, p.x), std::max(high.y, p.y)};
		}
		ASSERT_EQ(ours.rectangular_min, low);
		ASSERT_EQ(ours.rectangular_max, high);
	}
}

// On whole coordinates float is exact, so the model in double gives the very corners; elsewhere
// every point lies in the hull but for rounding, and the area is the model's.
TEST(xylConvex_polygon, HullIsThatOfTheModel) {
	Samples samples(7504);
	for (int i = 0; i < sample_count; ++i) {
		const Points points = scattered_points(samples);
		const xylConvex_polygon ours = hull_of(points);
		const plain::Polygon<double> model = plain::hull(to_plain<double>(points));
		const auto is_whole = [](const xylVec2& p) {
			return p.x == std::floor(p.x) && p.y == std::floor(p.y);
		};
		if (std::all_of(points.begin(), points.end(), is_whole)) {
			ASSERT_EQ(to_plain<double>(ours.points), model) << i;
		}
		ASSERT_NEAR(static_cast<double>(ours.get_area()), plain::area(model), 1e-3) << i;
		const plain::Polygon<double> corners = to_plain<double>(ours.points);
		for (size_t k = 0; corners.size() > 2 && k < corners.size(); ++k) {
			for (const xylVec2& p : points) {
				const auto& a = corners[k];
				const auto& b = corners[(k + 1) % corners.size()];
				ASSERT_GT(plain::turn(a, b, to_plain<double>(p)), -1e-4) << i << ' ' << p;
			}
		}
	}
}

TEST(xylConvex_polygon, QuestionsAnswerAsThePlainStepsAndTheModel) {
	Samples samples(7505);
	int inside = 0, settled = 0;
	for (int i = 0; i < sample_count; ++i) {
		const xylConvex_polygon polygon = hull_of(scattered_points(samples));
		const plain::Polygon<float> steps = to_plain<float>(polygon.points);
		const plain::Polygon<double> model = to_plain<double>(polygon.points);
		const xylVec2 p = scattered(samples, samples.below(scatter_count));
		const bool is_inside = polygon.interior_check(p);
		ASSERT_EQ(is_inside, plain::interior_check(steps, to_plain<float>(p))) << i;
		inside += is_inside;
		const Jitter jitter(samples, 1e-4f);
		const auto ask = [&](const Jitter& moved) {
			return plain::interior_check(model, {moved(p.x), moved(p.y)});
		};
		if (polygon.is_valid() && jitter.is_settled(ask)) {
			++settled;
			ASSERT_EQ(is_inside, ask(Jitter(samples, 0))) << i;
		}

		ASSERT_EQ(polygon.get_area(), plain::area(steps)) << i;
		xylVec2 out(-1, -1);
		plain::Vec2<float> steps_out = {-1, -1};
		plain::Vec2<double> model_out = {-1, -1};
		const float distance = polygon.get_closest_boundary_position(p, out);
		ASSERT_EQ(distance, plain::closest(steps, to_plain<float>(p), steps_out)) << i;
		ASSERT_EQ(to_plain<float>(out), steps_out) << i;
		if (polygon.points.empty()) continue;
		const double model_distance = plain::closest(model, to_plain<double>(p), model_out);
		ASSERT_NEAR(static_cast<double>(distance), model_distance, 1e-4) << i;
	}
	EXPECT_GT(inside, sample_count / 20);
	EXPECT_GT(settled, sample_count / 3);
}

TEST(xylConvex_polygon, CollisionsAreThoseOfThePlainStepsAndTheModel) {
	Samples samples(7506);
	int collisions = 0, settled = 0;
	for (int i = 0; i < sample_count; ++i) {
		const xylConvex_polygon a = hull_of(scattered_points(samples));
		Points points = scattered_points(samples);
		const xylVec2 way = scattered(samples, anywhere);
		for (xylVec2& p : points) p += way;
		const xylConvex_polygon b = hull_of(points);
		const bool ours = a.check_collision_with_convex_poligon(b);
		ASSERT_EQ(ours, plain::collide(to_plain<float>(a.points), to_plain<float>(b.points))) << i;
		ASSERT_EQ(ours, b.check_collision_with_convex_poligon(a)) << i;
		collisions += ours;
		if (!a.is_valid() || !b.is_valid()) continue;
		const plain::Polygon<double> model = to_plain<double>(a.points);
		const auto ask = [&](const Jitter& moved) {
			const double x = moved(0), y = moved(0);
			plain::Polygon<double> other = to_plain<double>(b.points);
			for (auto& p : other) p = {p.x + x, p.y + y};
			return plain::share_a_point(model, other);
		};
		if (Jitter(samples, 1e-4f).is_settled(ask)) {
			++settled;
			ASSERT_EQ(ours, ask(Jitter(samples, 0))) << i;
		}
	}
	EXPECT_GT(collisions, sample_count / 10);
	EXPECT_LT(collisions, sample_count * 9 / 10);
	EXPECT_GT(settled, sample_count / 3);
}

TEST(xylConvex_polygon, ShadowsCollideAsTheHullsOfTheirCorners) {
	Samples samples(7507);
	int collisions = 0;
	for (int i = 0; i < sample_count; ++i) {
		const xylConvex_polygon polygon = hull_of(scattered_points(samples));
		const xylBounding_box box = samples.box(10, 5);
		const xylMatrix_frame frame = samples.frame(5);
		xylVec3 tips[8];
		xylBounding_box::get_transformed_tip_points(tips, box.min, box.max, frame);
		Points shadow;
		for (const xylVec3& tip : tips) shadow.push_back({tip.x, tip.y});
		const bool ours = polygon.check_collision_with_transformed_bounding_box_2d(box, frame);
		ASSERT_EQ(ours, polygon.check_collision_with_convex_poligon(hull_of(shadow))) << i;
		collisions += ours;
	}
	EXPECT_GT(collisions, sample_count / 10);
	EXPECT_LT(collisions, sample_count * 9 / 10);
}

// --- Numbers that aren't finite, or too large

TEST(xylConvex_polygon, AnyNumbersAreTakenAndKept) {
	constexpr float specials[] = {not_a_number, -not_a_number, infinity, -infinity, 0.0f,
	                              -0.0f,        float_max,     1e-45f,   1e19f,     -1e30f};
	Samples samples(7508);
	for (int i = 0; i < 20000; ++i) {
		Points points = scattered_points(samples);
		for (xylVec2& p : points) {
			if (samples.one_in(3)) p.x = specials[samples.below(std::size(specials))];
			if (samples.one_in(3)) p.y = specials[samples.below(std::size(specials))];
		}
		const Points before = points;
		xylConvex_polygon polygon;
		polygon.initialize(points);
		const auto bits = [](const xylVec2& p) { return std::bit_cast<unsigned long long>(p); };
		const auto less = [&](const xylVec2& a, const xylVec2& b) { return bits(a) < bits(b); };
		Points sorted = points, expected = before;
		std::sort(sorted.begin(), sorted.end(), less);
		std::sort(expected.begin(), expected.end(), less);
		for (size_t k = 0; k < sorted.size(); ++k) ASSERT_EQ(bits(sorted[k]), bits(expected[k]));
		ASSERT_LE(polygon.points.size(), 2 * points.size());
		const plain::Polygon<float> corners = to_plain<float>(polygon.points);
		ASSERT_EQ(polygon.check_collision_with_convex_poligon(polygon),
		          plain::collide(corners, corners))
			<< i;
		xylVec2 out(0, 0);
		const float distance = polygon.get_closest_boundary_position({1, 2}, out);
		ASSERT_TRUE(distance >= 0 && distance <= float_max);
		plain::Vec2<float> steps_out;
		ASSERT_EQ(distance, plain::closest(corners, {1, 2}, steps_out)) << i;
	}
}

TEST(xylConvex_polygon, EdgesTooLongToBeSquaredSeparateEverything) {
	const xylConvex_polygon huge = square(-1e20f, 1e20f);
	EXPECT_FALSE(huge.check_collision_with_convex_poligon(huge));
	EXPECT_FALSE(huge.check_collision_with_convex_poligon(square(0, 1)));
	EXPECT_TRUE(square(-1e18f, 1e18f).check_collision_with_convex_poligon(square(0, 1)));
}

// The least normal number under the root keeps the axis finite.
TEST(xylConvex_polygon, EdgesTooShortToBeSquaredSeparateNevertheless) {
	const xylConvex_polygon tiny = square(0, 1e-20f);
	EXPECT_FALSE(tiny.check_collision_with_convex_poligon(box(3e-20f, 0, 4e-20f, 1e-20f)));
	EXPECT_FALSE(tiny.check_collision_with_convex_poligon(box(0, 3e-20f, 1e-20f, 4e-20f)));
	EXPECT_TRUE(tiny.check_collision_with_convex_poligon(square(5e-21f, 4e-20f)));
}

// --- Golden hulls

const std::string golden_file = test_data("golden/convex_hull.txt");

void put(std::string& text, float value) {
	char digits[32];
	text.append(digits, std::to_chars(digits, digits + sizeof(digits), value).ptr);
}

// For each kind of points a hull: a '#' with its name and size, then the corners, a line for each,
// in the shortest form that gives the numbers back, then its area.
std::string golden_text() {
	constexpr unsigned exact_scatters[] = {anywhere, on_a_grid, on_a_line, clustered, at_zeros};
	Samples samples(7509);
	std::string text;
	for (const unsigned scatter : exact_scatters) {
		for (const unsigned count : {2u, 8u, 100u, 1000u, 10000u}) {
			const xylConvex_polygon polygon = hull_of(scattered_points(samples, count, scatter));
			text += "# " + std::to_string(scatter) + ' ' + std::to_string(count) + '\n';
			for (const xylVec2& p : polygon.points) {
				put(text, p.x + 0.0f); // which of two zeros it is, is not told
				text += ' ';
				put(text, p.y + 0.0f);
				text += '\n';
			}
			text += "area ";
			put(text, polygon.get_area());
			text += '\n';
		}
	}
	return text;
}

TEST(xylConvex_polygon, HullsAreTheGoldenOnes) {
	if (const char* path = std::getenv("MORVANTIS_WRITE_GOLDEN")) {
		std::ofstream(path, std::ios::binary) << golden_text();
		GTEST_SKIP() << "golden hulls written";
	}
	std::ostringstream expected;
	expected << std::ifstream(golden_file, std::ios::binary).rdbuf();
	ASSERT_FALSE(expected.str().empty());
	EXPECT_EQ(golden_text(), expected.str());
}

} // namespace
