#include "samples.h"
#include "shapes.h"

namespace {

xylBounding_box box_of(const xylVec3& min, const xylVec3& max) {
	xylBounding_box box;
	box.min = min;
	box.max = max;
	box.center = (min + max) * 0.5f;
	box.radius = (max - box.center).length();
	return box;
}

xylObject_bounds_cache cache_of(const xylBounding_box& box) {
	xylObject_bounds_cache cache{};
	cache.update(box, xylMatrix_frame::identity());
	return cache;
}

plain::Check plain_of(xylFrustum_check_result result) { return static_cast<plain::Check>(result); }

} // namespace

TEST(xylFrustum, ResultsHaveTheirNumbers) {
	EXPECT_EQ(static_cast<int>(frustum_outside), 0);
	EXPECT_EQ(static_cast<int>(frustum_inside), 1);
	EXPECT_EQ(static_cast<int>(frustum_intersects), 2);
	static_assert(sizeof(xylFrustum_check_result) == 4);
}

TEST(xylFrustum, SetPlanesKeepsTheOrder) {
	const xylFrustum frustum = box_frustum();
	EXPECT_EQ(frustum.planes_[xylFrustum::near_plane].normal, xylVec3(0, 1, 0));
	EXPECT_EQ(frustum.planes_[xylFrustum::far_plane].normal, xylVec3(0, -1, 0));
	EXPECT_EQ(frustum.planes_[xylFrustum::left_plane].normal, xylVec3(1, 0, 0));
	EXPECT_EQ(frustum.planes_[xylFrustum::right_plane].normal, xylVec3(-1, 0, 0));
	EXPECT_EQ(frustum.planes_[xylFrustum::top_plane].normal, xylVec3(0, 0, -1));
	EXPECT_EQ(frustum.planes_[xylFrustum::bottom_plane].normal, xylVec3(0, 0, 1));
}

TEST(xylFrustum, ChecksBoxesByAllThreeRoads) {
	const xylFrustum frustum = box_frustum();
	struct Case {
		const char* name;
		xylBounding_box box;
		xylFrustum_check_result expected;
	};
	const Case cases[] = {
		{"well inside", box_of({-1, 9, -1}, {1, 11, 1}), frustum_inside},
		{"sphere straddles, corners inside", box_of({7, 9, 7}, {9.5f, 11, 9.5f}), frustum_inside},
		{"through the right plane", box_of({9, 9, 0}, {11, 11, 1}), frustum_intersects},
		{"sphere straddles, corners outside", box_of({10.1f, 9, -1}, {12, 11, 1}), frustum_outside},
		{"far off", box_of({100, 9, -1}, {102, 11, 1}), frustum_outside},
		{"beyond far", box_of({-1, 30, -1}, {1, 32, 1}), frustum_outside},
		{"around the frustum", box_of({-50, -50, -50}, {50, 50, 50}), frustum_intersects},
		{"flush with the right plane", box_of({8, 9, -1}, {10, 11, 1}), frustum_inside},
		{"a point inside", box_of({1, 1, 1}, {1, 1, 1}), frustum_inside},
		{"a point on near", box_of({1, 0, 1}, {1, 0, 1}), frustum_inside},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		EXPECT_EQ(frustum.check_bounding_box(c.box, xylMatrix_frame::identity()), c.expected);
		EXPECT_EQ(frustum.check_bounding_box_identity_frame(c.box), c.expected);
		EXPECT_EQ(frustum.check_bounds_cache(cache_of(c.box)), c.expected);
		EXPECT_EQ(frustum.encloses_bounding_box(cache_of(c.box)), c.expected != frustum_outside);
		EXPECT_EQ(frustum.encloses_bounding_box_identity_frame(c.box),
		          c.expected != frustum_outside);
	}
}

TEST(xylFrustum, SphereDecidesBeforeCornersAreLookedAt) {
	const xylFrustum frustum = box_frustum();
	// The corners are far outside, but the sphere is inside all planes: no corner work.
	xylObject_bounds_cache cache = cache_of(box_of({900, 900, 900}, {901, 901, 901}));
	cache.center = {0, 10, 0};
	cache.radius = 1;
	EXPECT_EQ(frustum.check_bounds_cache(cache), frustum_inside);
	EXPECT_TRUE(frustum.encloses_bounding_box(cache));
	// Only marked planes are tested: these corners are outside of far, which isn't straddled.
	cache.center = {0, 1, 0};
	cache.radius = 2;
	for (xylVec3& tip : cache.tips) tip = {0, 999, 0};
	EXPECT_EQ(frustum.check_bounds_cache(cache), frustum_inside);
	EXPECT_TRUE(frustum.encloses_bounding_box(cache));
	// And the sphere's verdict outside stands whatever the corners say.
	cache.center = {0, -3, 0};
	for (xylVec3& tip : cache.tips) tip = {0, 10, 0};
	EXPECT_EQ(frustum.check_bounds_cache(cache), frustum_outside);
	EXPECT_FALSE(frustum.encloses_bounding_box(cache));
}

TEST(xylFrustum, RadiusOfAFramedBoxIsTheLargestSumOfAxes) {
	// A frame turned by 180 degrees about Z sums to (-1, -1, 1): the radius is kept.
	xylFrustum frustum = box_frustum();
	xylMatrix_frame frame = xylMatrix_frame::identity();
	frame.s = {-1, 0, 0, 0};
	frame.f = {0, -1, 0, 0};
	frame.origin = {0, 10, 0, 1};
	xylBounding_box box = box_of({-1, -1, -1}, {1, 1, 1});
	box.radius = 10.001f;
	box.max = {99, 99, 99}; // seen only if the sphere straddles
	EXPECT_EQ(frustum.check_bounding_box(box, frame), frustum_intersects);
	box.radius = 9.999f;
	EXPECT_EQ(frustum.check_bounding_box(box, frame), frustum_inside);
	// Axes that cancel each other make the sphere a point, though the box is wide.
	frame.f = {1, 0, 0, 0};
	frame.u = {0, 0, 0, 0};
	box.radius = 500;
	EXPECT_EQ(frustum.check_bounding_box(box, frame), frustum_inside);
}

TEST(xylFrustum, CornerOnThePlanesPointIsInside) {
	xylFrustum frustum = box_frustum();
	xylObject_bounds_cache cache = cache_of(box_of({0, -1, 0}, {0, 0, 0}));
	// One corner coincides with the point of near; the rest are outside.
	for (int i = 1; i < 8; ++i) cache.tips[i] = {0, -1, 0};
	cache.tips[0] = frustum.planes_[0].point;
	EXPECT_EQ(frustum.check_bounds_cache(cache), frustum_intersects);
}

TEST(xylFrustum, SphereStopsAtTheFirstStraddledPlane) {
	const xylFrustum frustum = box_frustum();
	EXPECT_EQ(frustum.check_sphere({0, 10, 0}, 5), frustum_inside);
	EXPECT_EQ(frustum.check_sphere({0, 10, 0}, 10), frustum_inside); // touching
	EXPECT_EQ(frustum.check_sphere({0, 10, 0}, 10.01f), frustum_intersects);
	EXPECT_EQ(frustum.check_sphere({0, -6, 0}, 5), frustum_outside);
	EXPECT_EQ(frustum.check_sphere({0, -5, 0}, 5), frustum_intersects); // d = -r is not outside
	// Straddles near and lies beyond the later right plane: the first one answers.
	EXPECT_EQ(frustum.check_sphere({500, 0, 0}, 5), frustum_intersects);
	// Beyond right and straddling top: right comes first.
	EXPECT_EQ(frustum.check_sphere({500, 10, 10}, 5), frustum_outside);
	EXPECT_EQ(frustum.check_sphere({0, 0, 0}, 0), frustum_inside); // radius 0 on a plane
	EXPECT_EQ(frustum.check_sphere({0, 10, 0}, -5), frustum_inside);
	EXPECT_EQ(frustum.check_sphere({0, 1, 0}, -5), frustum_outside);
	EXPECT_EQ(frustum.check_sphere({0, not_a_number, 0}, 5), frustum_outside);
	EXPECT_EQ(frustum.check_sphere({0, 10, 0}, not_a_number), frustum_outside);
}

TEST(xylFrustum, SphereStraddlingNearBeyondFarIntersects) {
	xylFrustum frustum = box_frustum();
	frustum.planes_[xylFrustum::far_plane] = {{0, -50, 0}, {0, -1, 0}};
	EXPECT_EQ(frustum.check_sphere({0, 1, 0}, 5), frustum_intersects);
}

TEST(xylFrustum, ChecksQuads) {
	const xylFrustum frustum = box_frustum();
	struct Case {
		const char* name;
		xylVec3 points[4];
		xylFrustum_check_result expected;
		bool encloses;
	};
	const Case cases[] = {
		{"inside", {{-1, 5, 0}, {1, 5, 0}, {1, 6, 0}, {-1, 6, 0}}, frustum_inside, true},
		{"through right", {{9, 5, 0}, {11, 5, 0}, {11, 6, 0}, {9, 6, 0}}, frustum_intersects, true},
		{"outside by the sphere",
	     {{50, 5, 0}, {51, 5, 0}, {51, 6, 0}, {50, 6, 0}},
	     frustum_outside,
	     false},
		{"outside by the corners",
	     {{10.5f, 0.1f, 0}, {12, 0.1f, 0}, {12, 19, 0}, {10.5f, 19, 0}},
	     frustum_outside,
	     false},
		{"flush with near", {{-1, 0, 0}, {1, 0, 0}, {1, 0, 1}, {-1, 0, 1}}, frustum_inside, true},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		EXPECT_EQ(frustum.check_quad(c.points), c.expected);
		EXPECT_EQ(frustum.encloses_quad(c.points), c.encloses);
	}
	// The sphere's radius is taken to the first corner alone: here 0.5, though the third one
	// reaches into the frustum.
	const xylVec3 slanted[4] = {{11, 10, 0}, {11.5f, 10, 0}, {9, 10, 0}, {14.5f, 10, 0}};
	EXPECT_EQ(frustum.check_quad(slanted), frustum_outside);
}

TEST(xylFrustum, GlobalBoundsAreCoarse) {
	const xylFrustum frustum = box_frustum();
	EXPECT_TRUE(frustum.encloses_check_global_bounds({-1, 9, -1}, {1, 11, 1}));
	// A cube of edge 2 has the diagonal 3.46: its centre may lie that far outside.
	EXPECT_TRUE(frustum.encloses_check_global_bounds({12, 9, -1}, {14, 11, 1}));
	EXPECT_TRUE(frustum.encloses_check_global_bounds({12.4f, 9, -1}, {14.4f, 11, 1}));
	EXPECT_FALSE(frustum.encloses_check_global_bounds({12.5f, 9, -1}, {14.5f, 11, 1}));
	EXPECT_FALSE(frustum.encloses_check_global_bounds({-99, 9, -1}, {-97, 11, 1}));
}

TEST(xylFrustum, GeneratesInwardPlanesFromABox) {
	xylVec3 tips[8];
	xylBounding_box::get_transformed_tip_points(tips, {-1, -2, -3}, {1, 2, 3},
	                                            xylMatrix_frame::identity());
	tips[6] = tips[7] = {not_a_number, not_a_number, not_a_number}; // not looked at
	xylFrustum frustum;
	frustum.generate_from_bounding_box_points(tips);
	const xylVec3 normals[6] = {{0, 1, 0},  {0, -1, 0}, {1, 0, 0},
	                            {-1, 0, 0}, {0, 0, -1}, {0, 0, 1}};
	for (int i = 0; i < 6; ++i) {
		SCOPED_TRACE(i);
		EXPECT_LT((frustum.planes_[i].normal - normals[i]).length(), 1e-6f);
		const bool is_max = i == 1 || i == 3 || i == 4;
		EXPECT_EQ(frustum.planes_[i].point, is_max ? tips[1] : tips[0]);
		EXPECT_EQ(frustum.planes_[i].normal.w, marker);
	}
}

TEST(xylFrustum, ObbInsideObb) {
	const xylBounding_box big = box_of({-2, -2, -2}, {2, 2, 2});
	const xylBounding_box small = box_of({-1, -1, -1}, {1, 1, 1});
	const xylMatrix_frame identity = xylMatrix_frame::identity();
	EXPECT_TRUE(xylBounding_box::obb_inside_obb(small, identity, big, identity));
	EXPECT_FALSE(xylBounding_box::obb_inside_obb(big, identity, small, identity));
	xylMatrix_frame moved = identity;
	moved.origin.x = 1.5f;
	EXPECT_FALSE(xylBounding_box::obb_inside_obb(small, moved, big, identity));
	EXPECT_TRUE(xylBounding_box::obb_inside_obb(small, moved, big, moved));
	// Turned by 45 degrees about Z the small one's corners reach 1.41.
	const float h = std::sqrt(0.5f);
	xylMatrix_frame turned = identity;
	turned.s = {h, h, 0, 0};
	turned.f = {-h, h, 0, 0};
	EXPECT_TRUE(xylBounding_box::obb_inside_obb(small, turned, big, identity));
	turned.origin.x = 0.7f;
	EXPECT_FALSE(xylBounding_box::obb_inside_obb(small, turned, big, identity));
}

TEST(xylFrustum, CornersStandInTheirSlots) {
	const xylFrustum frustum = box_frustum();
	xylVec3 corners[8];
	ASSERT_TRUE(frustum.get_global_frustum_box_points(corners));
	const xylVec3 expected[8] = {{10, 0, 10},  {-10, 20, -10}, {10, 0, -10},  {-10, 0, -10},
	                             {10, 20, 10}, {-10, 20, 10},  {10, 20, -10}, {-10, 0, 10}};
	for (int i = 0; i < 8; ++i) {
		SCOPED_TRACE(i);
		EXPECT_TRUE(is_vector(corners[i], expected[i].x, expected[i].y, expected[i].z, marker));
	}
	xylVec3 near_face[4];
	ASSERT_TRUE(frustum.get_global_frustum_near_plane_points(near_face));
	EXPECT_EQ(near_face[0], xylVec3(10, 0, 10));
	EXPECT_EQ(near_face[1], xylVec3(-10, 0, 10));
	EXPECT_EQ(near_face[2], xylVec3(10, 0, -10));
	EXPECT_EQ(near_face[3], xylVec3(-10, 0, -10));
	ASSERT_TRUE(frustum.get_global_frustum_box_points_with_custom_near_plane(
		corners, {{0, 5, 0}, {0, 1, 0}}));
	EXPECT_EQ(corners[0], xylVec3(10, 5, 10));
	EXPECT_EQ(corners[7], xylVec3(-10, 5, 10));
	EXPECT_EQ(corners[1], xylVec3(-10, 20, -10));
}

TEST(xylFrustum, ParallelPlanesLeaveTheirSlotsAlone) {
	xylFrustum frustum = box_frustum();
	frustum.planes_[xylFrustum::right_plane].normal = {0, 0, 1}; // parallel to top and bottom
	xylVec3 corners[8];
	for (xylVec3& corner : corners) corner = {7, 7, 7, 7};
	EXPECT_FALSE(frustum.get_global_frustum_box_points(corners));
	for (const int slot : {0, 2, 4, 6}) EXPECT_TRUE(is_vector(corners[slot], 7, 7, 7, 7));
	EXPECT_EQ(corners[1], xylVec3(-10, 20, -10));
	EXPECT_EQ(corners[7], xylVec3(-10, 0, 10)); // computed in spite of the earlier failures
	xylVec3 near_face[4] = {};
	EXPECT_FALSE(frustum.get_global_frustum_near_plane_points(near_face));
	EXPECT_EQ(near_face[3], xylVec3(-10, 0, -10));
	frustum.debug_display(1.0f); // draws nothing, reports nothing
}

TEST(xylFrustum, DecidesBoxesLikeThePlainSteps) {
	Samples samples(61);
	int counts[3] = {};
	for (int i = 0; i < sample_count * 2; ++i) {
		const xylFrustum frustum = samples.frustum();
		const xylMatrix_frame frame = samples.frame(12);
		xylBounding_box box = samples.box(3, 4);
		if (samples.one_in(8)) box.radius *= 0.3f; // spheres that don't hold their box
		// Corners flush with planes, where signs are in doubt.
		if (samples.one_in(8)) box.max = frustum.planes_[samples.below(6)].point;
		xylObject_bounds_cache cache;
		cache.update(box, frame);
		if (samples.one_in(8))
			cache.tips[samples.below(8)] = frustum.planes_[samples.below(6)].point;
		const auto pf = to_plain<float>(frustum);
		const auto pb = to_plain<float>(box);
		const auto pc = to_plain<float>(cache);
		const auto result = frustum.check_bounds_cache(cache);
		++counts[result];
		ASSERT_EQ(plain_of(result), plain::check_cache(pf, pc));
		ASSERT_EQ(plain_of(frustum.check_bounding_box(box, frame)),
		          plain::check_box(pf, pb, to_plain<float>(frame)));
		ASSERT_EQ(plain_of(frustum.check_bounding_box_identity_frame(box)),
		          plain::check_world_box(pf, pb));
		ASSERT_EQ(frustum.encloses_bounding_box(cache),
		          plain::encloses(pf, pc.center, pc.radius, pc.tips));
		plain::Vec<float> tips[8];
		plain::tips_of(pb.min, pb.max, tips);
		ASSERT_EQ(frustum.encloses_bounding_box_identity_frame(box),
		          plain::encloses(pf, pb.center, pb.radius, tips));
		ASSERT_EQ(frustum.encloses_check_global_bounds(box.min, box.max),
		          plain::encloses_global_bounds(pf, pb.min, pb.max));
		ASSERT_EQ(plain_of(frustum.check_sphere(box.center, box.radius)),
		          plain::check_sphere(pf, pb.center, pb.radius));
	}
	for (const int count : counts) EXPECT_GT(count, sample_count / 20);
}

// Where the normalised and the plain product may have different signs: corners within rounding of a
// plane, huge and tiny ones, normals of any length.
TEST(xylFrustum, SignsInDoubtAreDecidedLikeThePlainSteps) {
	Samples samples(62);
	int doubtful = 0;
	for (int i = 0; i < sample_count; ++i) {
		xylFrustum frustum;
		const float scale = std::ldexp(1.0f, static_cast<int>(samples.below(150)) - 75);
		const float normal_scale = std::ldexp(1.0f, static_cast<int>(samples.below(200)) - 100);
		for (xylPlane& plane : frustum.planes_) {
			plane = {samples.point(1) * scale,
			         samples.unit() * (samples.one_in(2) ? 1 : normal_scale)};
		}
		xylObject_bounds_cache cache{};
		cache.center = {0, 0, 0};
		cache.radius = marker; // straddles everything that isn't infinitely far
		for (xylVec3& tip : cache.tips) {
			const xylPlane& plane = frustum.planes_[samples.below(6)];
			xylVec3 in_plane = plane.normal.cross(samples.unit());
			in_plane.normalize();
			tip = plane.point + in_plane * scale; // on the plane but for rounding
			if (samples.one_in(16)) tip.x = not_a_number;
			if (samples.one_in(16)) tip.y = infinity;
			if (samples.one_in(16)) tip = plane.point;
		}
		const auto pf = to_plain<float>(frustum);
		const auto pc = to_plain<float>(cache);
		const auto expected = plain::check_cache(pf, pc);
		ASSERT_EQ(plain_of(frustum.check_bounds_cache(cache)), expected) << i;
		// How often deciding by the plain product alone would have been wrong.
		for (const auto& plane : pf.planes) {
			for (const auto& tip : pc.tips) {
				const bool normalised =
					plain::dot(plain::fast_normalized(tip - plane.point), plane.normal) >= 0;
				doubtful += normalised != (plain::distance(plane, tip) >= 0);
			}
		}
	}
	EXPECT_GT(doubtful, 1000);
}

TEST(xylFrustum, QuadsLikeThePlainSteps) {
	Samples samples(63);
	int counts[3] = {};
	for (int i = 0; i < sample_count; ++i) {
		const xylFrustum frustum = samples.frustum();
		const xylVec3 a = samples.awkward(10), b = samples.point(5), c = samples.point(5);
		xylVec3 points[4] = {a, a + b, a + b + c, a + c};
		if (samples.one_in(8)) points[samples.below(4)] = frustum.planes_[samples.below(6)].point;
		plain::Vec<float> p[4];
		for (int k = 0; k < 4; ++k) p[k] = to_plain<float>(points[k]);
		const auto pf = to_plain<float>(frustum);
		const auto expected = plain::check_quad(pf, p);
		++counts[expected];
		ASSERT_EQ(plain_of(frustum.check_quad(points)), expected);
		ASSERT_EQ(frustum.encloses_quad(points), expected != plain::outside);
	}
	for (const int count : counts) EXPECT_GT(count, sample_count / 100);
}

TEST(xylFrustum, DecidesLikeDoublesAwayFromBoundaries) {
	Samples samples(64);
	const Jitter jitter(samples, 1e-3f);
	int settled[4] = {};
	for (int i = 0; i < sample_count; ++i) {
		const xylFrustum frustum = samples.frustum();
		const xylMatrix_frame frame = samples.frame(12);
		const xylBounding_box box = samples.box(3, 4);
		xylObject_bounds_cache cache;
		cache.update(box, frame);
		const auto df = to_plain<double>(frustum);
		const auto db = to_plain<double>(box);
		const auto dc = plain::cache_of(db, to_plain<double>(frame));
		xylVec3 quad[4] = {cache.tips[3], cache.tips[0], cache.tips[2], cache.tips[7]};

		const auto ask_cache = [&](const Jitter& j) {
			auto moved = dc;
			moved.radius = j(dc.radius);
			for (auto& tip : moved.tips) tip = j(tip);
			return plain::check_cache(j(df), moved);
		};
		const auto ask_box = [&](const Jitter& j) {
			auto moved = db;
			moved.radius = j(db.radius);
			return plain::check_box(j(df), moved, to_plain<double>(frame));
		};
		const auto ask_sphere = [&](const Jitter& j) {
			return plain::check_sphere(j(df), j(dc.center), j(dc.radius));
		};
		const auto ask_quad = [&](const Jitter& j) {
			plain::Vec<double> p[4];
			for (int k = 0; k < 4; ++k) p[k] = j(to_plain<double>(quad[k]));
			return plain::check_quad(j(df), p);
		};
		const Jitter still(samples, 0);
		if (jitter.is_settled(ask_cache)) {
			++settled[0];
			ASSERT_EQ(plain_of(frustum.check_bounds_cache(cache)), ask_cache(still));
		}
		if (jitter.is_settled(ask_box)) {
			++settled[1];
			ASSERT_EQ(plain_of(frustum.check_bounding_box(box, frame)), ask_box(still));
		}
		if (jitter.is_settled(ask_sphere)) {
			++settled[2];
			ASSERT_EQ(plain_of(frustum.check_sphere(cache.center, cache.radius)),
			          ask_sphere(still));
		}
		if (jitter.is_settled(ask_quad)) {
			++settled[3];
			ASSERT_EQ(plain_of(frustum.check_quad(quad)), ask_quad(still));
		}
	}
	for (const int count : settled) EXPECT_GT(count, sample_count / 2);
}

TEST(xylFrustum, CornersAgreeWithThePlainStepsAndDoubles) {
	Samples samples(65);
	int compared = 0;
	for (int i = 0; i < sample_count; ++i) {
		xylFrustum frustum = samples.frustum();
		const bool is_degenerate = samples.one_in(16);
		if (is_degenerate) { // the sides never meet
			frustum.planes_[xylFrustum::right_plane].normal =
				-frustum.planes_[xylFrustum::top_plane].normal;
		}
		const auto pf = to_plain<float>(frustum);
		const auto df = to_plain<double>(frustum);
		xylVec3 corners[8];
		bool all_meet = true;
		for (const auto& planes : plain::box_corners) {
			plain::Vec<float> ignored;
			all_meet &= plain::meet(pf.planes[planes[0]], pf.planes[planes[1]],
			                        pf.planes[planes[2]], ignored);
		}
		ASSERT_EQ(frustum.get_global_frustum_box_points(corners), all_meet);
		ASSERT_FALSE(is_degenerate && all_meet);
		for (int k = 0; k < 8; ++k) {
			const int* planes = plain::box_corners[k];
			plain::Vec<float> p{};
			if (plain::meet(pf.planes[planes[0]], pf.planes[planes[1]], pf.planes[planes[2]], p)) {
				ASSERT_TRUE(same_bits(corners[k], p));
			}
			plain::Vec<double> d{};
			const auto& a = df.planes[planes[0]];
			const auto& b = df.planes[planes[1]];
			const auto& c = df.planes[planes[2]];
			if (std::abs(plain::dot(a.normal, plain::cross(b.normal, c.normal))) < 0.3) continue;
			plain::meet(a, b, c, d);
			++compared;
			ASSERT_TRUE(near(corners[k], d, 2e-4));
		}
	}
	EXPECT_GT(compared, 4 * sample_count);
}

TEST(xylFrustum, ObbInsideObbLikeThePlainSteps) {
	Samples samples(66);
	int inside = 0;
	for (int i = 0; i < sample_count; ++i) {
		const xylBounding_box a = samples.box(1, 1);
		const xylBounding_box b = samples.box(1, 6);
		const xylMatrix_frame frame_b = samples.frame(5);
		xylMatrix_frame frame_a = samples.frame(0);
		frame_a.origin = frame_b.origin;
		plain::Vec<float> tips[8];
		plain::tips_of(to_plain<float>(b.min), to_plain<float>(b.max), tips);
		for (auto& tip : tips) tip = plain::transform_point(to_plain<float>(frame_b), tip);
		const auto expected =
			plain::check_box(plain::frustum_of(tips), to_plain<float>(a), to_plain<float>(frame_a));
		ASSERT_EQ(xylBounding_box::obb_inside_obb(a, frame_a, b, frame_b),
		          expected == plain::inside);
		inside += expected == plain::inside;
	}
	EXPECT_GT(inside, sample_count / 20);
}
