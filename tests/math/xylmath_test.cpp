#include "plain_queries.h"
#include "samples.h"

#include <morvantis/math/xylmath.h>

namespace {

using Vec = plain::Vec<double>;

// The least distance between two segments, from all that could be closest: both ends against the
// other segment, and the crossing of the lines where it lies within.
double least_distance(Vec p0, Vec p1, Vec q0, Vec q1) {
	const auto to_segment = [](Vec p, Vec a, Vec b) {
		const Vec d = b - a;
		const double squared = plain::dot(d, d);
		const double t = squared > 0 ? std::clamp(plain::dot(p - a, d) / squared, 0.0, 1.0) : 0.0;
		return plain::length(p - (a + d * t));
	};
	double least = std::min({to_segment(p0, q0, q1), to_segment(p1, q0, q1), to_segment(q0, p0, p1),
	                         to_segment(q1, p0, p1)});
	const Vec u = p1 - p0, v = q1 - q0, n = plain::cross(u, v);
	const double squared = plain::dot(n, n);
	if (squared > 1e-12) {
		const Vec way = q0 - p0;
		const double s = plain::dot(plain::cross(way, v), n) / squared;
		const double t = plain::dot(plain::cross(way, u), n) / squared;
		if (s >= 0 && s <= 1 && t >= 0 && t <= 1) {
			least = std::min(least, std::abs(plain::dot(way, n)) / std::sqrt(squared));
		}
	}
	return least;
}

struct Segments {
	explicit Segments(Samples& samples)
		: p0(samples.awkward(10)), p1(samples.awkward(10)), q0(samples.awkward(10)),
		  q1(samples.awkward(10)) {
		if (samples.one_in(16)) q1 = q0 + (p1 - p0) * 2.0f; // parallel
		if (samples.one_in(16)) p1 = p0;
		if (samples.one_in(16)) q1 = q0;
		if (samples.one_in(16)) q0 = p0;
	}

	xylVec3 p0, p1, q0, q1;
};

} // namespace

TEST(xylMath, DistanceToSegment) {
	struct Case {
		const char* name;
		xylVec3 a, b, p;
		float distance;
	};
	const Case cases[] = {
		{"above the middle", {0, 0, 0}, {4, 0, 0}, {2, 3, 0}, 3},
		{"beyond a", {0, 0, 0}, {4, 0, 0}, {-3, 4, 0}, 5},
		{"beyond b", {0, 0, 0}, {4, 0, 0}, {7, 0, 4}, 5},
		{"right above a", {0, 0, 0}, {4, 0, 0}, {0, 2, 0}, 2},
		{"right above b", {0, 0, 0}, {4, 0, 0}, {4, 2, 0}, 2},
		{"on it", {0, 0, 0}, {4, 0, 0}, {1, 0, 0}, 0},
		{"on its end", {0, 0, 0}, {4, 0, 0}, {4, 0, 0}, 0},
		{"a point, nearer b", {0, 0, 0}, {0.0099f, 0, 0}, {1, 0, 0}, 1 - 0.0099f},
		{"a point, nearer a", {0, 0, 0}, {-0.0099f, 0.0099f, 0.0099f}, {1, 0, 0}, 1},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		EXPECT_NEAR(xylMath::shortest_dist_between_line_and_point(c.a, c.b, c.p), c.distance, 1e-6);
	}
	// Just above the middle of a segment below 0.01 no Heron step is made: the nearer end counts.
	const float half = 0.0099f / 2;
	EXPECT_EQ(xylMath::shortest_dist_between_line_and_point({0, 0, 0}, {2 * half, 0, 0},
	                                                        {half, 0.001f, 0}),
	          std::sqrt(half * half + 0.001f * 0.001f));
	for (int axis = 0; axis < 3; ++axis) {
		const xylVec3 b(axis == 0 ? 0.0101f : 0, axis == 1 ? 0.0101f : 0, axis == 2 ? 0.0101f : 0);
		EXPECT_LT(xylMath::shortest_dist_between_line_and_point({0, 0, 0}, b, b * 0.5f), 1e-4f);
	}
}

TEST(xylMath, DistanceAgreesWithThePlainStepsAndDoubles) {
	Samples samples(71);
	for (int i = 0; i < sample_count; ++i) {
		const xylVec3 a = samples.awkward(10);
		const xylVec3 b = samples.awkward(10);
		const xylVec3 p =
			samples.one_in(4) ? a + (b - a) * samples.between(-1, 2) : samples.awkward(10);
		const float distance = xylMath::shortest_dist_between_line_and_point(a, b, p);
		ASSERT_TRUE(
			same_bits(distance, plain::distance_to_segment(to_plain<float>(a), to_plain<float>(b),
		                                                   to_plain<float>(p))));
		const Vec d = to_plain<double>(b) - to_plain<double>(a);
		if (plain::length(d) < 0.02) continue;
		const Vec closest = plain::closest_on_segment(to_plain<double>(a), to_plain<double>(b),
		                                              to_plain<double>(p), false);
		// Heron's formula loses half of the digits near the segment.
		ASSERT_NEAR(distance, plain::length(to_plain<double>(p) - closest), 0.03) << a << b << p;
	}
}

TEST(xylMath, ClosestPointsOfSegments) {
	using Operation = void (*)(const xylVec3&, const xylVec3&, const xylVec3&, const xylVec3&,
	                           xylVec3&, xylVec3&);
	for (const Operation closest : {xylMath::shortest_segment_between_lines,
	                                xylMath::shortest_segment_between_lines_precise}) {
		xylVec3 p, q;
		// Crossing.
		closest({-1, 0, 0}, {1, 0, 0}, {0, -1, 0}, {0, 3, 0}, p, q);
		EXPECT_TRUE(is_vector(p, 0, 0, 0, marker));
		EXPECT_TRUE(is_vector(q, 0, 0, 0, marker));
		// Parallel: s = 0 and t from the clamp.
		closest({0, 0, 0}, {4, 0, 0}, {1, 2, 0}, {9, 2, 0}, p, q);
		EXPECT_EQ(p, xylVec3(1, 0, 0));
		EXPECT_EQ(q, xylVec3(1, 2, 0));
		closest({2, 0, 0}, {4, 0, 0}, {1, 2, 0}, {9, 2, 0}, p, q);
		EXPECT_EQ(p, xylVec3(2, 0, 0));
		EXPECT_EQ(q, xylVec3(2, 2, 0));
		// Beyond the end of the second.
		closest({0, 0, 0}, {4, 0, 0}, {5, 1, 0}, {5, 9, 0}, p, q);
		EXPECT_EQ(p, xylVec3(4, 0, 0));
		EXPECT_EQ(q, xylVec3(5, 1, 0));
		closest({0, 0, 0}, {4, 0, 0}, {1, 9, 0}, {1, 1, 0}, p, q);
		EXPECT_EQ(p, xylVec3(1, 0, 0));
		EXPECT_EQ(q, xylVec3(1, 1, 0));
		// Degenerate: both are copied whole, one is its first point.
		closest({1, 2, 3, 4}, {1.003f, 2, 3, 5}, {6, 7, 8, 9}, {6, 7, 8, 10}, p, q);
		EXPECT_TRUE(is_vector(p, 1, 2, 3, 4));
		EXPECT_TRUE(is_vector(q, 6, 7, 8, 9));
		closest({1, 5, 0}, {1, 5, 0}, {0, 0, 0}, {4, 0, 0}, p, q);
		EXPECT_TRUE(is_vector(p, 1, 5, 0, marker));
		EXPECT_TRUE(is_vector(q, 1, 0, 0, marker));
		closest({0, 0, 0}, {4, 0, 0}, {3, 5, 0}, {3, 5.003f, 0}, p, q);
		EXPECT_EQ(p, xylVec3(3, 0, 0));
		EXPECT_EQ(q, xylVec3(3, 5, 0));
		// A squared length just above 1e-5 has a direction.
		closest({1, 2, 3, 4}, {1.0032f, 2, 3}, {6, 7, 8}, {6, 7, 8}, p, q);
		EXPECT_TRUE(is_vector(p, 1.0032f, 2, 3, marker));
	}
}

TEST(xylMath, SegmentsMayBeReplacedByTheirResults) {
	xylVec3 p0(0, 0, 0), p1(4, 0, 0), q0(1, 1, 0), q1(1, 9, 0);
	xylMath::shortest_segment_between_lines(p0, p1, q0, q1, q0, p0);
	EXPECT_EQ(q0, xylVec3(1, 0, 0));
	EXPECT_EQ(p0, xylVec3(1, 1, 0));
	xylVec3 a(1, 2, 3), b(4, 5, 6);
	xylMath::shortest_segment_between_lines(a, a, b, b, b, a);
	EXPECT_EQ(b, xylVec3(1, 2, 3));
	EXPECT_EQ(a, xylVec3(4, 5, 6));
	p0 = {0, 0, 0}, q0 = {1, 1, 0};
	xylMath::shortest_segment_between_lines_precise(p0, p1, q0, q1, q0, p0);
	EXPECT_EQ(q0, xylVec3(1, 0, 0));
	EXPECT_EQ(p0, xylVec3(1, 1, 0));
	a = {1, 2, 3};
	b = {4, 5, 6};
	xylMath::shortest_segment_between_lines_precise(a, a, b, b, b, a);
	EXPECT_EQ(b, xylVec3(1, 2, 3));
	EXPECT_EQ(a, xylVec3(4, 5, 6));
}

TEST(xylMath, SegmentsAgreeWithThePlainStepsAndDoubles) {
	Samples samples(72);
	for (int i = 0; i < sample_count; ++i) {
		const Segments k(samples);
		xylVec3 p, q;
		plain::Vec<float> pp, pq;
		xylMath::shortest_segment_between_lines(k.p0, k.p1, k.q0, k.q1, p, q);
		plain::closest_of_segments(to_plain<float>(k.p0), to_plain<float>(k.p1),
		                           to_plain<float>(k.q0), to_plain<float>(k.q1), pp, pq);
		ASSERT_TRUE(same_bits(p, pp) && same_bits(q, pq)) << k.p0 << k.p1 << k.q0 << k.q1;
		const double least = least_distance(to_plain<double>(k.p0), to_plain<double>(k.p1),
		                                    to_plain<double>(k.q0), to_plain<double>(k.q1));
		// Nearly parallel ones lose digits in D; and a segment that counts as a point is up to
		// 0.0032 long.
		const double found = plain::length(to_plain<double>(p) - to_plain<double>(q));
		ASSERT_GT(found, least - 1e-5);
		ASSERT_LT(found, least + 0.02) << k.p0 << k.p1 << k.q0 << k.q1;
		xylVec3 precise_p, precise_q;
		xylMath::shortest_segment_between_lines_precise(k.p0, k.p1, k.q0, k.q1, precise_p,
		                                                precise_q);
		plain::closest_of_segments_precise(to_plain<float>(k.p0), to_plain<float>(k.p1),
		                                   to_plain<float>(k.q0), to_plain<float>(k.q1), pp, pq);
		ASSERT_TRUE(same_bits(precise_p, pp) && same_bits(precise_q, pq));
		const double precise =
			plain::length(to_plain<double>(precise_p) - to_plain<double>(precise_q));
		ASSERT_GT(precise, least - 1e-5);
		ASSERT_LT(precise, least + 4e-3);
	}
}

TEST(xylMath, ClosestPointOfASegment) {
	using Operation = void (*)(const xylVec3&, const xylVec3&, const xylVec3&, xylVec3&, xylVec3&);
	for (const Operation closest :
	     {xylMath::shortest_segment_between_line_and_point,
	      xylMath::shortest_segment_between_line_and_point_no_degenerate_check}) {
		xylVec3 on, point;
		closest({0, 0, 0}, {4, 0, 0}, {1, 5, 0, 7}, on, point);
		EXPECT_TRUE(is_vector(on, 1, 0, 0, marker));
		EXPECT_TRUE(is_vector(point, 1, 5, 0, 7)); // whole
		closest({0, 0, 0}, {4, 0, 0}, {-1, 5, 0}, on, point);
		EXPECT_EQ(on, xylVec3(0, 0, 0));
		closest({0, 0, 0}, {4, 0, 0}, {9, 5, 0}, on, point);
		EXPECT_EQ(on, xylVec3(4, 0, 0));
	}
	xylVec3 on, point;
	xylMath::shortest_segment_between_line_and_point({1, 2, 3, 9}, {1.003f, 2, 3}, {5, 5, 5}, on,
	                                                 point);
	EXPECT_TRUE(is_vector(on, 1, 2, 3, 9));
	xylMath::shortest_segment_between_line_and_point_no_degenerate_check({1, 2, 3, 9}, {1, 2, 3, 9},
	                                                                     {5, 5, 5}, on, point);
	EXPECT_TRUE(is_vector(on, 1, 2, 3, marker));
	xylMath::shortest_segment_between_line_and_point_no_degenerate_check({1, 2, 3}, {1.003f, 2, 3},
	                                                                     {5, 5, 5}, on, point);
	EXPECT_EQ(on, xylVec3(1.003f, 2, 3));
	// Outputs may be the inputs.
	for (const Operation closest :
	     {xylMath::shortest_segment_between_line_and_point,
	      xylMath::shortest_segment_between_line_and_point_no_degenerate_check}) {
		xylVec3 a(0, 0, 0), p(1, 5, 0);
		closest(a, {4, 0, 0}, p, p, a);
		EXPECT_EQ(p, xylVec3(1, 0, 0));
		EXPECT_EQ(a, xylVec3(1, 5, 0));
	}
}

TEST(xylMath, BarycentricWeightsOfTheCorners) {
	const xylVec3 a(1, 0, 0), b(4, 1, 0), c(2, 5, 1);
	const xylVec3 corners[3] = {a, b, c};
	for (int i = 0; i < 3; ++i) {
		float u, v, w;
		xylMath::get_barycentric_coords(corners[i], a, b, c, u, v, w);
		EXPECT_NEAR(u, i == 0, 1e-6);
		EXPECT_NEAR(v, i == 1, 1e-6);
		EXPECT_NEAR(w, i == 2, 1e-6);
	}
	float u, v, w;
	xylMath::get_barycentric_coords({1, 1, 1}, a, a, a, u, v, w);
	EXPECT_FALSE(std::isfinite(u));
	EXPECT_FALSE(std::isfinite(v));
	EXPECT_FALSE(std::isfinite(w));
}

TEST(xylMath, PlaneAndLine) {
	bool parallel = true;
	const xylVec3 hit = xylMath::find_plane_line_intersection_point_with_normal(
		{0, 0, 5}, {0, 0, 2}, {1, 1, 0}, {1, 1, 1}, parallel);
	EXPECT_FALSE(parallel);
	EXPECT_TRUE(is_vector(hit, 1, 1, 5, marker)); // the line has no ends
	const xylVec3 normal(0, 0, 2, 8);
	EXPECT_TRUE(is_vector(xylMath::find_plane_line_intersection_point_with_normal(
							  {0, 0, 5}, normal, {1, 1, 5}, {2, 2, 5}, parallel),
	                      0, 0, 2, 8));
	EXPECT_TRUE(parallel);
}

TEST(xylMath, TrianglesAndPlanesAgreeWithThePlainStepsAndDoubles) {
	Samples samples(73);
	for (int i = 0; i < sample_count; ++i) {
		const xylVec3 a = samples.awkward(10), b = samples.awkward(10), c = samples.awkward(10),
					  p = samples.awkward(10);
		const auto pa = to_plain<float>(a), pb = to_plain<float>(b), pc = to_plain<float>(c),
				   pp = to_plain<float>(p);
		const auto da = to_plain<double>(a), db = to_plain<double>(b), dc = to_plain<double>(c),
				   dp = to_plain<double>(p);
		float u, v, w, pu, pv, pw;
		xylMath::get_barycentric_coords(p, a, b, c, u, v, w);
		plain::barycentric(pp, pa, pb, pc, pu, pv, pw);
		ASSERT_TRUE(same_bits(u, pu) && same_bits(v, pv) && same_bits(w, pw));
		const Vec n = plain::cross(db - da, dc - da);
		if (plain::length(n) > 20) {
			// The weights make the projection of p onto the plane.
			const Vec off = dp - (da * double(u) + db * double(v) + dc * double(w));
			ASSERT_LT(plain::length(plain::cross(off, n)) / plain::length(n), 5e-3);
		}
		bool parallel, plain_parallel;
		const xylVec3 hit =
			xylMath::find_plane_line_intersection_point_with_normal(p, c, a, b, parallel);
		ASSERT_TRUE(same_bits(hit, plain::plane_and_line(pp, pc, pa, pb, plain_parallel)));
		ASSERT_EQ(parallel, plain_parallel);
		xylVec3 on, point;
		xylMath::shortest_segment_between_line_and_point(a, b, p, on, point);
		ASSERT_TRUE(same_bits(on, plain::closest_on_segment(pa, pb, pp, true)));
		if (plain::length(db - da) > 0.01) {
			ASSERT_TRUE(near(on, plain::closest_on_segment(da, db, dp, true), 1e-4));
		}
		xylMath::shortest_segment_between_line_and_point_no_degenerate_check(a, b, p, on, point);
		ASSERT_TRUE(same_bits(on, plain::closest_on_segment(pa, pb, pp, false)));
		const double slope = plain::dot(dc, db - da);
		if (std::abs(slope) > 1) {
			bool ignored;
			ASSERT_TRUE(near(hit, plain::plane_and_line(dp, dc, da, db, ignored), 0.05));
		}
	}
}
