#include "samples.h"

TEST(xylPlane, ProjectsAlongTheNormal) {
	const xylPlane plane({0, 0, 2}, {0, 0, 1});
	const xylVec3 p = plane.project_point({3, 4, 7, 9});
	EXPECT_NEAR(p.x, 3, 1e-5);
	EXPECT_NEAR(p.y, 4, 1e-5);
	EXPECT_NEAR(p.z, 2, 1e-5);
	EXPECT_EQ(p.w, marker);
	EXPECT_EQ(xylPoint_projection_on_plane(plane, {3, 4, 7}), p);
	// The plane's own point stays where it is.
	EXPECT_TRUE(is_vector(plane.project_point({0, 0, 2, 5}), 0, 0, 2, marker));
}

TEST(xylPlane, ProjectionTakesTheWayOfTheNormalisedDirection) {
	// |v| overflows here, which a plain dot product would not notice.
	const xylPlane plane({0, 0, 0}, {0, 0, 1});
	EXPECT_FALSE(plane.project_point({2e19f, 0, 5}).is_not_nan());
}

TEST(xylPlane, ProjectionAgreesWithThePlainStepsAndDoubles) {
	Samples samples(31);
	for (int i = 0; i < sample_count; ++i) {
		const xylPlane plane{samples.awkward(50), samples.unit()};
		const xylVec3 p = samples.one_in(16) ? plane.point : samples.awkward(50);
		const xylVec3 projected = plane.project_point(p);
		ASSERT_TRUE(
			same_bits(projected, plain::project(to_plain<float>(plane), to_plain<float>(p))));
		// The exact answer is the plain dot product.
		const auto normal = to_plain<double>(plane.normal);
		const double off = plain::dot(to_plain<double>(p) - to_plain<double>(plane.point), normal);
		ASSERT_TRUE(near(projected, to_plain<double>(p) - normal * off, 2e-4));
	}
}

TEST(xylPlane, NearlyEqualsIsStrictInAllSix) {
	const xylPlane plane({1, 2, 3}, {0, 0, 1});
	EXPECT_TRUE(plane.nearly_equals(plane, 1e-30f));
	EXPECT_FALSE(plane.nearly_equals(plane, 0));
	for (int i = 0; i < 6; ++i) {
		SCOPED_TRACE(i);
		xylPlane other = plane;
		xylVec3& changed = i < 3 ? other.point : other.normal;
		float& number = i % 3 == 0 ? changed.x : i % 3 == 1 ? changed.y : changed.z;
		number += 0.25f;
		EXPECT_FALSE(plane.nearly_equals(other, 0.25f));
		EXPECT_FALSE(other.nearly_equals(plane, 0.25f));
		EXPECT_TRUE(plane.nearly_equals(other, 0.26f));
		number = not_a_number;
		EXPECT_FALSE(plane.nearly_equals(other, infinity));
	}
	xylPlane other = plane;
	other.point.w = other.normal.w = not_a_number;
	EXPECT_TRUE(plane.nearly_equals(other, 0.1f));
}

TEST(xylPlane, PointOnTheLineIsOnTheSameSideAsAny) {
	const xylVec3 a(0, 0, 0);
	const xylVec3 b(4, 0, 0);
	EXPECT_TRUE(xylIs_points_in_same_side_of_line({1, 0, 0}, {1, 5, 0}, a, b));
	EXPECT_TRUE(xylIs_points_in_same_side_of_line({1, 0, 0}, {1, -5, 0}, a, b));
	EXPECT_TRUE(xylIs_points_in_same_side_of_line({1, -5, 0}, {9, 0, 0}, a, b));
	EXPECT_TRUE(xylIs_points_in_same_side_of_line({1, 5, 0}, {3, 1, 0}, a, b));
	EXPECT_FALSE(xylIs_points_in_same_side_of_line({1, 5, 0}, {3, -1, 0}, a, b));
	EXPECT_TRUE(xylIs_points_in_same_side_of_line({1, 5, 0}, {3, -1, 0}, a, a));
	// In three dimensions: at an angle below 90 degrees around the line it is the same side.
	EXPECT_TRUE(xylIs_points_in_same_side_of_line({1, 5, 1}, {3, 1, -1}, a, b));
}

TEST(xylPlane, PositionAccordingToLine) {
	// c = 4·(p.x − 1) for a line along +Y of length 4: right of it is positive.
	const xylVec3 a(1, 0, 7);
	const xylVec3 b(1, 4, -7);
	EXPECT_EQ(xylPoint_position_according_to_line({2, 0, 0}, a, b, 1), 1);
	EXPECT_EQ(xylPoint_position_according_to_line({0, 9, 0}, a, b, 1), -1);
	EXPECT_EQ(xylPoint_position_according_to_line({1, 9, 0}, a, b, 1), 0);
	// Exactly eps off is on the line, on both sides.
	EXPECT_EQ(xylPoint_position_according_to_line({1.25f, 0, 0}, a, b, 1), 0);
	EXPECT_EQ(xylPoint_position_according_to_line({0.75f, 0, 0}, a, b, 1), 0);
	EXPECT_EQ(xylPoint_position_according_to_line({1.26f, 0, 0}, a, b, 1), 1);
	EXPECT_EQ(xylPoint_position_according_to_line({0.74f, 0, 0}, a, b, 1), -1);
	EXPECT_EQ(xylPoint_position_according_to_line({not_a_number, 0, 0}, a, b, 1), 0);
}

TEST(xylPlane, PointInsideTriangleTakesEdgesAndHeights) {
	const xylVec3 a(0, 0, 0);
	const xylVec3 b(4, 0, 0);
	const xylVec3 c(0, 4, 0);
	struct Case {
		const char* name;
		xylVec3 p;
		bool inside;
	};
	const Case cases[] = {
		{"inside", {1, 1, 0}, true},
		{"edge ab", {2, 0, 0}, true},
		{"edge bc", {2, 2, 0}, true},
		{"edge ca", {0, 2, 0}, true},
		{"corner", {4, 0, 0}, true},
		{"beyond ab", {1, -0.5f, 0}, false},
		{"beyond bc", {2.5f, 2.5f, 0}, false},
		{"beyond ca", {-0.5f, 1, 0}, false},
		{"a little above", {1, 1, 0.5f}, true},
	};
	for (const Case& k : cases) {
		SCOPED_TRACE(k.name);
		EXPECT_EQ(xylPoint_inside_triangle(a, b, c, k.p), k.inside);
		EXPECT_EQ(xylPoint_inside_triangle(c, b, a, k.p), k.inside);
	}
}

TEST(xylPlane, SideTestsAgreeWithThePlainStepsAndDoubles) {
	Samples samples(32);
	int settled = 0;
	for (int i = 0; i < sample_count; ++i) {
		const xylVec3 a = samples.awkward(10);
		const xylVec3 b = samples.awkward(10);
		const xylVec3 c = samples.awkward(10);
		const xylVec3 ends[4] = {a, b, c, a};
		const unsigned edge = samples.below(3);
		const xylVec3 p = samples.one_in(4)
		                      ? ends[edge] + (ends[edge + 1] - ends[edge]) * samples.between(-1, 2)
		                      : samples.awkward(10);
		const float eps = samples.between(0, 1);
		const auto pa = to_plain<float>(a), pb = to_plain<float>(b), pc = to_plain<float>(c),
				   pp = to_plain<float>(p);
		const bool same_side = xylIs_points_in_same_side_of_line(p, c, a, b);
		const bool in_triangle = xylPoint_inside_triangle(a, b, c, p);
		const int position = xylPoint_position_according_to_line(p, a, b, eps);
		ASSERT_EQ(same_side, plain::same_side(pp, pc, pa, pb));
		ASSERT_EQ(in_triangle, plain::inside_triangle(pa, pb, pc, pp));
		ASSERT_EQ(position, plain::position_according_to_line(pp, pa, pb, eps));

		const auto da = to_plain<double>(a), db = to_plain<double>(b), dc = to_plain<double>(c),
				   dp = to_plain<double>(p);
		// Product of the two sines, 0 where a length is too short to have many digits.
		const auto side = [](auto p1, auto p2, auto from, auto to) {
			const auto r = to - from;
			const double r_length = plain::length(r);
			const double length1 = plain::length(p1 - from);
			const double length2 = plain::length(p2 - from);
			if (std::min({r_length, length1, length2}) < 0.1) return 0.0;
			return plain::dot(plain::cross(r, p1 - from), plain::cross(r, p2 - from)) /
			       (r_length * r_length * length1 * length2);
		};
		const double margin = 1e-4;
		if (std::abs(side(dp, dc, da, db)) > margin) {
			ASSERT_EQ(same_side, plain::same_side(dp, dc, da, db));
		}
		const double position_value = (db.y - da.y) * (dp.x - da.x) - (dp.y - da.y) * (db.x - da.x);
		if (std::abs(std::abs(position_value) - static_cast<double>(eps)) > 1e-3) {
			ASSERT_EQ(position,
			          plain::position_according_to_line(dp, da, db, static_cast<double>(eps)));
		}
		if (std::abs(side(dp, da, db, dc)) > margin && std::abs(side(dp, db, da, dc)) > margin &&
		    std::abs(side(dp, dc, da, db)) > margin) {
			++settled;
			ASSERT_EQ(in_triangle, plain::inside_triangle(da, db, dc, dp));
		}
	}
	EXPECT_GT(settled, sample_count / 2);
}
