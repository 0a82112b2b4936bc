// Exactly on the border of each test: which comparisons are strict, and on which side the numbers
// lie that the tests are told to have. Inputs are chosen so that every step is exact.

#include "samples.h"
#include "shapes.h"

#include <morvantis/math/xylmath.h>

namespace {

const xylVec3 untouched(77, 77, 77, 77);

float above(float v) { return std::nextafter(v, infinity); }
float below(float v) { return std::nextafter(v, -infinity); }

// From `origin` along +X.
xylRay along_x(const xylVec3& origin, float max_distance = 100) {
	return {origin, {1, 0, 0}, max_distance, true};
}

// A sphere and eight equal corners, which need not lie in it.
xylObject_bounds_cache cache_of(const xylVec3& center, float radius, const xylVec3& tip) {
	xylObject_bounds_cache cache{};
	cache.center = center;
	cache.radius = radius;
	for (xylVec3& t : cache.tips) t = tip;
	return cache;
}

xylBounding_box box_of(const xylVec3& min, const xylVec3& max, float radius) {
	xylBounding_box box;
	box.min = min;
	box.max = max;
	box.center = (min + max) * 0.5f;
	box.radius = radius;
	return box;
}

// A float whose square is exactly `squared`, which the caller asserts.
float root_near(float squared) {
	float root = std::sqrt(squared);
	for (int i = 0; i < 4 && root * root < squared; ++i) root = above(root);
	for (int i = 0; i < 4 && root * root > squared; ++i) root = below(root);
	return root;
}

} // namespace

TEST(xylBounding_box, NearIdentityIsBelowATenThousandth) {
	const xylBounding_box box = box_of({0, 0, 0}, {4, 5, 6}, 0);
	constexpr float ulp_above_one = 0x1p-23f, ulp_below_one = 0x1p-24f;
	for (int i = 0; i < 12; ++i) {
		SCOPED_TRACE(i);
		const bool is_one = i == 0 || i == 4 || i == 8;
		// The last number that is taken for the identity's, and the first that isn't.
		const float kept_high = is_one ? 1 + 838 * ulp_above_one : below(0.0001f);
		const float moved_high = is_one ? 1 + 839 * ulp_above_one : 0.0001f;
		const float kept_low = is_one ? 1 - 1677 * ulp_below_one : above(-0.0001f);
		const float moved_low = is_one ? 1 - 1678 * ulp_below_one : -0.0001f;
		const auto is_kept = [&](float number) {
			xylMatrix_frame frame = xylMatrix_frame::identity();
			xylVec3& row = i < 3 ? frame.s : i < 6 ? frame.f : i < 9 ? frame.u : frame.origin;
			(i % 3 == 0 ? row.x : i % 3 == 1 ? row.y : row.z) = number;
			xylVec3 tips[8];
			box.get_transformed_tip_points(tips, frame);
			return tips[1] == xylVec3(4, 5, 6);
		};
		EXPECT_TRUE(is_kept(kept_high));
		EXPECT_TRUE(is_kept(kept_low));
		EXPECT_FALSE(is_kept(moved_high));
		EXPECT_FALSE(is_kept(moved_low));
	}
}

TEST(xylBounding_box, RelaxesWithItsOwnFormElsewhere) {
	xylMatrix_frame frame = xylMatrix_frame::identity();
	frame.origin.x = 10;
	xylBounding_box box = box_of({0, 0, 0}, {4, 5, 6}, 0);
	box.relax_with_transformed_bounding_box(box, frame);
	EXPECT_EQ(box.min, xylVec3(0, 0, 0));
	EXPECT_EQ(box.max, xylVec3(14, 5, 6));
}

TEST(xylObject_bounds_cache, RadiusIsUnscaledWithinAMillionthOfTheSquare) {
	// Squared lengths of 1 + 8·2^-23 (9.5e-7 off), 1 + 10·2^-23, 1 - 16·2^-24 and 1 - 18·2^-24.
	constexpr float up = 0x1p-23f, down = 0x1p-24f;
	struct Case {
		float length, radius;
	};
	const Case cases[] = {{1 + 4 * up, 8},
	                      {1 + 5 * up, 8 * std::sqrt(1 + 10 * up)},
	                      {1 - 8 * down, 8},
	                      {1 - 9 * down, 8 * std::sqrt(1 - 18 * down)}};
	xylBounding_box box;
	box.radius = 8;
	for (const Case& c : cases) {
		SCOPED_TRACE(c.length);
		xylMatrix_frame frame = xylMatrix_frame::identity();
		frame.s = {0, c.length, 0, 0};
		frame.f = {0, 0, 0.5f, 0};
		frame.u = {0.25f, 0, 0, 0};
		xylObject_bounds_cache cache;
		cache.update(box, frame);
		EXPECT_EQ(cache.radius, c.radius);
	}
}

TEST(xylFrustum, TouchingSpheresAreNeitherOutsideNorStraddling) {
	const xylFrustum frustum = box_frustum();
	const xylVec3 within(0, 10, 0);
	const xylVec3 ways[6] = {{0, 1, 0}, {0, -1, 0}, {1, 0, 0}, {-1, 0, 0}, {0, 0, -1}, {0, 0, 1}};
	for (int i = 0; i < 6; ++i) {
		SCOPED_TRACE(i);
		const xylVec3 on_plane = within - ways[i] * 10;
		// Touching from inside: no corner is looked at, though all are outside.
		auto cache = cache_of(on_plane + ways[i], 1, on_plane - ways[i]);
		EXPECT_EQ(frustum.check_bounds_cache(cache), frustum_inside);
		EXPECT_TRUE(frustum.encloses_bounding_box(cache));
		cache.radius = above(1);
		EXPECT_EQ(frustum.check_bounds_cache(cache), frustum_outside);
		EXPECT_FALSE(frustum.encloses_bounding_box(cache));
		// Touching from outside: the corners decide.
		cache = cache_of(on_plane - ways[i], 1, within);
		EXPECT_EQ(frustum.check_bounds_cache(cache), frustum_inside);
		EXPECT_TRUE(frustum.encloses_bounding_box(cache));
		EXPECT_EQ(frustum.check_sphere(cache.center, 1), frustum_intersects);
		cache.radius = below(1);
		EXPECT_EQ(frustum.check_bounds_cache(cache), frustum_outside);
		EXPECT_FALSE(frustum.encloses_bounding_box(cache));
		EXPECT_EQ(frustum.check_sphere(cache.center, below(1)), frustum_outside);
		// A plane that is no number has everything outside.
		xylFrustum broken = frustum;
		broken.planes_[i].normal.x = not_a_number;
		EXPECT_EQ(broken.check_sphere(within, 1), frustum_outside);
		EXPECT_EQ(broken.check_bounds_cache(cache_of(within, 1, within)), frustum_outside);
	}
}

TEST(xylFrustum, SquaresOnTheBorderAreNotOutside) {
	const xylFrustum frustum = box_frustum();
	// The centre of each is 1 below near; the third corner reaches in.
	xylVec3 quad[4] = {{1, -1, 0}, {-1, -1, 0}, {0, 2, 0}, {0, -4, 0}};
	EXPECT_EQ(frustum.check_quad(quad), frustum_intersects);
	EXPECT_TRUE(frustum.encloses_quad(quad));
	quad[0].x = below(1), quad[1].x = -below(1);
	EXPECT_EQ(frustum.check_quad(quad), frustum_outside);
	EXPECT_FALSE(frustum.encloses_quad(quad));
	EXPECT_TRUE(frustum.encloses_check_global_bounds({0, -4, -2}, {0, -4, 2}));
	EXPECT_FALSE(frustum.encloses_check_global_bounds({0, -4, -1.999f}, {0, -4, 1.999f}));
}

TEST(xylFrustum, OnlyTheCheckedBoxHasTheShortcutForTheIdentity) {
	const xylFrustum frustum = box_frustum();
	xylMatrix_frame nudged = xylMatrix_frame::identity();
	nudged.origin.x = 0.00009f;
	// Flush with the right plane; moved by 0.00009 it would be cut.
	EXPECT_EQ(frustum.check_bounding_box(box_of({8, 9, -1}, {10, 11, 1}, 3), nudged),
	          frustum_inside);
	nudged.origin.x = 0.0002f;
	EXPECT_EQ(frustum.check_bounding_box(box_of({8, 9, -1}, {10, 11, 1}, 3), nudged),
	          frustum_intersects);
	// The box around is always moved.
	nudged.origin.x = 0.00009f;
	const xylBounding_box around = box_of({-2, -2, -2}, {2, 2, 2}, 4);
	const xylBounding_box flush = box_of({0, -1, -1}, {2.00005f, 1, 1}, 2);
	EXPECT_TRUE(
		xylBounding_box::obb_inside_obb(flush, xylMatrix_frame::identity(), around, nudged));
	EXPECT_FALSE(xylBounding_box::obb_inside_obb(flush, xylMatrix_frame::identity(), around,
	                                             xylMatrix_frame::identity()));
}

TEST(xylFrustum, PlanesMeetUnlessTheirDeterminantIsExactlyZero) {
	xylFrustum frustum = box_frustum();
	frustum.planes_[xylFrustum::right_plane].normal = {-1e-15f, 0, 0};
	xylVec3 corners[8];
	EXPECT_TRUE(frustum.get_global_frustum_box_points(corners));
	EXPECT_NEAR(corners[0].x, 10, 1e-5);
}

TEST(xylFrustum, GeneratedPlanesTakeTheirPointsWhole) {
	xylVec3 tips[8];
	for (int i = 0; i < 8; ++i) tips[i] = {0, 0, 0, static_cast<float>(i)};
	xylFrustum frustum;
	frustum.generate_from_bounding_box_points(tips);
	const float sources[6] = {0, 1, 0, 1, 1, 0};
	for (int i = 0; i < 6; ++i) EXPECT_EQ(frustum.planes_[i].point.w, sources[i]) << i;
}

// Sums of three rounded numbers depend on their order.
TEST(xylFrustum, SumsAreTakenInTheirOrder) {
	const xylFrustum frustum = box_frustum();
	// The axes' first components are 2^24, 1 and 1: one after the other each 1 is lost, so that the
	// radius is 10, which touches the planes, and not a little more.
	xylMatrix_frame frame = xylMatrix_frame::identity();
	frame.s = {0x1p24f, 0, 0, 0};
	frame.f = {1, 0, 0, 0};
	frame.u = {1, 0, 0, 0};
	frame.origin = {0, 10, 0, 1};
	xylBounding_box box = box_of({0, -99, 0}, {0, 99, 0}, 10 * 0x1p-24f);
	EXPECT_EQ(frustum.check_bounding_box(box, frame), frustum_inside);
	box.radius = above(box.radius);
	EXPECT_EQ(frustum.check_bounding_box(box, frame), frustum_intersects);
	// A quad's corners likewise: the mean is at y = -0.25, which is the first corner, and not 0.
	const xylVec3 quad[4] = {{0, -0.25f, 0}, {0, 0x1p24f, 0}, {0, -0x1p24f, 0}, {0, -1, 0}};
	EXPECT_EQ(frustum.check_quad(quad), frustum_outside);
	EXPECT_FALSE(frustum.encloses_quad(quad));
}

// All corners in one place and all planes alike: the answer is the sign of one corner.
TEST(xylFrustum, OneSignInDoubtIsThatOfTheNormalisedProduct) {
	Samples samples(67);
	int doubtful = 0;
	for (int i = 0; i < sample_count; ++i) {
		const float scale = std::ldexp(1.0f, static_cast<int>(samples.below(150)) - 75);
		const float normal_scale = std::ldexp(1.0f, static_cast<int>(samples.below(120)) - 60);
		const xylVec3 normal = samples.unit();
		xylVec3 in_plane = normal.cross(samples.unit());
		in_plane.normalize();
		const xylPlane plane = {samples.one_in(2) ? samples.point(1) * scale : xylVec3(0, 0, 0),
		                        normal * normal_scale};
		const xylVec3 tip = plane.point + in_plane * scale;
		xylFrustum frustum;
		for (xylPlane& p : frustum.planes_) p = plane;
		const auto cache = cache_of(plane.point, marker, tip);
		const auto p = to_plain<float>(plane);
		const auto t = to_plain<float>(tip);
		const bool is_inner = plain::dot(plain::fast_normalized(t - p.point), p.normal) >= 0;
		ASSERT_EQ(frustum.check_bounds_cache(cache), is_inner ? frustum_inside : frustum_outside)
			<< plane.point << plane.normal << tip;
		ASSERT_EQ(frustum.encloses_bounding_box(cache), plain::distance(p, t) >= 0);
		doubtful += is_inner != (plain::distance(p, t) >= 0);
	}
	EXPECT_GT(doubtful, 1000);
}

TEST(xylRay, SphereBorders) {
	xylVec3 point = untouched;
	// The centre beside the origin: strictly inside or no hit.
	EXPECT_FALSE(along_x({0, 0, 0}).intersect_with_sphere({0, 2, 0}, 2, point));
	EXPECT_TRUE(is_vector(point, 77, 77, 77, 77));
	EXPECT_TRUE(along_x({0, 0, 0, 5}).intersect_with_sphere({0, 2, 0}, above(2), point));
	EXPECT_TRUE(is_vector(point, 0, 0, 0, 5));
	// On the surface with the centre ahead: an entry at distance 0, which the limit holds for.
	EXPECT_TRUE(along_x({0, 0, 0, 5}).intersect_with_sphere({2, 0, 0}, 2, point));
	EXPECT_TRUE(is_vector(point, 0, 0, 0, marker));
	point = untouched;
	EXPECT_FALSE(along_x({0, 0, 0}, -1).intersect_with_sphere({2, 0, 0}, 2, point));
	EXPECT_TRUE(is_vector(point, 77, 77, 77, 77));
	// From inside it doesn't.
	EXPECT_TRUE(along_x({0, 0, 0, 5}, -1).intersect_with_sphere({1, 0, 0}, 2, point));
	EXPECT_TRUE(is_vector(point, 0, 0, 0, 5));
	EXPECT_TRUE(along_x({0, 0, 0, 5}, -1).intersect_with_sphere({-1, 0, 0}, 2, point));
	// A limit that is no number limits nothing.
	EXPECT_TRUE(along_x({0, 0, 0}, not_a_number).intersect_with_sphere({10, 0, 0}, 2, point));
	EXPECT_TRUE(is_vector(point, 8, 0, 0, marker));
	// A direction that is none leaves the question whether the origin is inside.
	const xylRay lost({0, 0, 0, 5}, {not_a_number, 0, 0}, 100, true);
	EXPECT_TRUE(lost.intersect_with_sphere({1, 0, 0}, 2, point));
	EXPECT_TRUE(is_vector(point, 0, 0, 0, 5));
	EXPECT_FALSE(lost.intersect_with_sphere({3, 0, 0}, 2, point));
	// Only the square of the radius counts.
	EXPECT_TRUE(along_x({0, 0, 0}).intersect_with_sphere({10, 0, 0}, -2, point));
	EXPECT_TRUE(is_vector(point, 8, 0, 0, marker));
}

TEST(xylRay, SphereDetailsBorders) {
	float near = 77, far = 77;
	EXPECT_TRUE(along_x({0, 0, 0}).get_sphere_intersection_details({{-2, 0, 0}, 2}, near, far));
	EXPECT_EQ(near, -4.0f);
	EXPECT_EQ(far, 0.0f);
	EXPECT_TRUE(along_x({0, 0, 0}).get_sphere_intersection_details({{10, 2, 0}, 2}, near, far));
	EXPECT_EQ(near, 10.0f);
	EXPECT_EQ(far, 10.0f);
	EXPECT_TRUE(along_x({0, 0, 0}, not_a_number)
	                .get_sphere_intersection_details({{10, 0, 0}, 2}, near, far));
}

TEST(xylRay, BoxBorders) {
	// Through a corner of a flat box, which lies on its sphere.
	const xylRay grazing = along_x({0, 1, 1});
	EXPECT_TRUE(
		grazing.intersect_ray_bounding_box({5, -1, -1}, {5, 1, 1}, nullptr, nullptr, false));
	xylObject_bounds_cache cache{};
	cache.min = {5, -1, -1}, cache.max = {5, 1, 1}, cache.center = {5, 0, 0};
	EXPECT_TRUE(grazing.intersects_with_bounding_box(cache, nullptr));
	// The half extent is taken from the maximum: with a centre that is rounded it is the longer.
	const xylRay fast({0x1p22f, 0, 0}, {0, 0, 2}, 1, true);
	EXPECT_TRUE(
		fast.intersect_ray_bounding_box({1, -1, 5}, {0x1p24f, 1, 6}, nullptr, nullptr, false));
}

TEST(xylRay, TriangleBorders) {
	xylVec3 point;
	const auto area = [&](float size) {
		return along_x({0, 0, 0}).intersect_with_triangle({5, 0, 0}, {5, 0, size}, {5, 1, 0},
		                                                  point);
	};
	EXPECT_EQ(area(1e-6f), 5.0f);
	EXPECT_EQ(area(below(1e-6f)), -1.0f);
	const auto distance = [&](float x) {
		return along_x({-x, 0, 0})
		    .intersect_with_triangle({0, -1, -1}, {0, -1, 3}, {0, 3, -1}, point);
	};
	EXPECT_EQ(distance(1e-6f), -1.0f);
	EXPECT_EQ(distance(above(1e-6f)), above(1e-6f));
}

TEST(xylRay, FaceBorders) {
	xylVec3 point = untouched;
	// Neither seen from the back nor parallel where the cosine is exactly ±0.001.
	zubQuad_data face = square();
	for (const float cosine : {0.001f, -0.001f}) {
		SCOPED_TRACE(cosine);
		face.normal = {cosine, 0, 0};
		EXPECT_TRUE(along_x({0, 0, 0}).intersects_with_quad(face, point));
		EXPECT_EQ(point, xylVec3(5, 0, 0));
		// Closer to 0 it is parallel: the origin.
		face.normal = {cosine > 0 ? below(cosine) : above(cosine), 0, 0};
		EXPECT_TRUE(along_x({0, 0, 0}).intersects_with_quad(face, point));
		EXPECT_EQ(point, xylVec3(0, 0, 0));
	}
	face.normal = {above(0.001f), 0, 0};
	EXPECT_FALSE(along_x({0, 0, 0}).intersects_with_quad(face, point));
	// On the plane.
	EXPECT_TRUE(along_x({5, 0, 0}).intersects_with_quad(square(), point));
	EXPECT_EQ(point, xylVec3(5, 0, 0));
	// The limit is squared, so that its sign is lost; one that is no number is none.
	EXPECT_TRUE(along_x({0, 0, 0}, -5).intersects_with_quad(square(), point));
	EXPECT_FALSE(along_x({0, 0, 0}, -4).intersects_with_quad(square(), point));
	EXPECT_TRUE(along_x({0, 0, 0}, not_a_number).intersects_with_quad(square(), point));
	// The edge of this one is at y = 0.
	face = square();
	for (xylVec3& corner : face.corners) corner.y += 1;
	EXPECT_TRUE(along_x({0, -0.006f, 0}).intersects_with_quad(face, point));
	EXPECT_FALSE(along_x({0, below(-0.006f), 0}).intersects_with_quad(face, point));
	// An edge normal that is no number rejects nothing.
	face.edge_normals[3].x = not_a_number;
	EXPECT_TRUE(along_x({0, -0.5f, 0}).intersects_with_quad(face, point));
}

TEST(xylRay, InThePlaneOfAFaceBorders) {
	xylVec3 point = untouched;
	for (const float z : {0.01f, -0.01f}) {
		EXPECT_FALSE(along_x({5, 0, z}).intersects_with_quad(floor_square(), point));
		EXPECT_TRUE(along_x({5, 0, z > 0 ? below(z) : above(z)})
		                .intersects_with_quad(floor_square(), point));
	}
	// On an edge is inside: the origin, whole.
	EXPECT_TRUE(along_x({4, 0, 0, 3}).intersects_with_quad(floor_square(), point));
	EXPECT_TRUE(is_vector(point, 4, 0, 0, 3));
}

// One edge at x = `x` from y = 0 to 2; the others run along the ray or lie far away, and the origin
// is on none of their inner sides. The ray is 1 long, so its parameter is x, and the edge's is the
// height of the origin halved.
TEST(xylRay, EdgesInThePlaneAreCrossedWithinAThousandth) {
	struct Case {
		const char* name;
		float x, along_edge;
		bool hit;
	};
	const Case cases[] = {
		{"ray, lower end", -0.001f, 0.5f, true},
		{"ray, below it", below(-0.001f), 0.5f, false},
		{"ray, upper end", 1.001f, 0.5f, true},
		{"ray, above it", above(1.001f), 0.5f, false},
		{"edge, lower end", 0.5f, -0.001f, true},
		{"edge, below it", 0.5f, below(-0.001f), false},
		{"edge, upper end", 0.5f, 1.001f, true},
		{"edge, above it", 0.5f, above(1.001f), false},
		{"both above 1", 1.0005f, 1.0005f, false},
		{"one at 1", 1.0005f, 1, true},
		{"both below 0", -0.0005f, -0.0005f, false},
		{"one at 0", -0.0005f, 0, true},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		const float inwards = c.x > 0 ? 1.0f : -1.0f;
		const zubQuad_data face = {{{c.x, 0, 0}, {c.x, 2, 0}, {50, 2, 0}, {50, 0, 0}},
		                           {0, 0, 1},
		                           {{inwards, 0, 0}, {inwards, 0, 0}, {}, {}},
		                           0};
		xylVec3 point = untouched;
		const float y = c.along_edge * 2;
		EXPECT_EQ(along_x({0, y, 0}, 1).intersects_with_quad(face, point), c.hit);
		EXPECT_TRUE(c.hit ? is_vector(point, c.x, y, 0, marker) : is_vector(point, 77, 77, 77, 77));
	}
}

TEST(xylRay, OnlyADeterminantOfExactlyZeroPassesOverAnEdge) {
	const zubQuad_data face = {{{5e-8f, 0, 0}, {5e-8f, 2, 0}, {50, 2, 0}, {50, 0, 0}},
	                           {0, 0, 1},
	                           {{1, 0, 0}, {}, {}, {}},
	                           0};
	xylVec3 point;
	EXPECT_TRUE(along_x({0, 1, 0}, 1e-7f).intersects_with_quad(face, point));
	EXPECT_NEAR(point.x, 5e-8f, 1e-14);
}

TEST(xylRay, OfEquallyNearCrossingsTheFirstIsKept) {
	// Half a thousandth behind the origin and ahead of it.
	const zubQuad_data face = {
		{{-0.0005f, 0, 0}, {-0.0005f, 2, 0}, {0.0005f, 2, 0}, {0.0005f, 0, 0}},
		{0, 0, 1},
		{{-1, 0, 0}, {}, {}, {}},
		0};
	xylVec3 point;
	EXPECT_TRUE(along_x({0, 1, 0}, 1).intersects_with_quad(face, point));
	EXPECT_TRUE(is_vector(point, -0.0005f, 1, 0, marker));
}

TEST(xylRay, CapsuleBorders) {
	const zubCapsule_data upright = {{5, 0, -2}, {5, 0, 2}, 1};
	xylVec3 point;
	float length = 77;
	// Touching is near, and the way from the surface is none.
	EXPECT_TRUE(along_x({0, 0, 0}, 4).intersects_with_capsule(upright, point, length));
	EXPECT_EQ(point, xylVec3(4, 0, 0));
	EXPECT_EQ(length, 0.0f);
	EXPECT_FALSE(along_x({0, 0, 0}, below(4)).intersects_with_capsule(upright, point, length));
	EXPECT_TRUE(along_x({0, 1, 0}, 10).intersects_with_capsule(upright));
	EXPECT_FALSE(along_x({0, above(1), 0}, 10).intersects_with_capsule(upright));
	// Details: leaving at the origin, entering at the limit, touching.
	xylVec3 out[4];
	const auto details = [&](const xylRay& ray) {
		return ray.get_capsule_intersection_details(upright, out[0], out[1], out[2], out[3]);
	};
	EXPECT_TRUE(details(along_x({6, 0, 0})));
	EXPECT_EQ(out[0], xylVec3(4, 0, 0));
	EXPECT_EQ(out[1], xylVec3(6, 0, 0));
	EXPECT_FALSE(details(along_x({above(6), 0, 0})));
	EXPECT_TRUE(details(along_x({0, 0, 0}, 4)));
	EXPECT_FALSE(details(along_x({0, 0, 0}, below(4))));
	EXPECT_TRUE(details(along_x({0, 1, 0})));
	EXPECT_EQ(out[0], xylVec3(5, 1, 0));
	EXPECT_EQ(out[1], xylVec3(5, 1, 0));
}

TEST(xylRay, SmallNumbersInTheApproachToACapsule) {
	// Perpendicular segments whose determinant is exactly 0.0001 are not parallel: the far end of
	// the axis is close. A shorter ray makes them parallel, and the start counts.
	ASSERT_EQ(0.01f * 0.01f, 0.0001f);
	const auto upward = [](float max_distance) {
		return xylRay({2, 0, 0}, {0, 1, 0}, max_distance, true);
	};
	const zubCapsule_data axis = {{0, 0, 0}, {1, 0, 0}, 1.5f};
	EXPECT_TRUE(upward(0.01f).intersects_with_capsule(axis));
	EXPECT_FALSE(upward(below(0.01f)).intersects_with_capsule(axis));
	// A numerator of exactly 0.0001 is not taken for 0.
	const zubCapsule_data thin = {{0, 0, 0}, {1, 0, 0}, 0.00005f};
	EXPECT_TRUE(xylRay({0.0001f, 0, 0}, {0, 1, 0}, 1, true).intersects_with_capsule(thin));
	EXPECT_FALSE(xylRay({below(0.0001f), 0, 0}, {0, 1, 0}, 1, true).intersects_with_capsule(thin));
	// The end of a short axis: its parameter of 1 is a fraction of numbers below 0.0001, hence 0.
	constexpr float side = 0x1p-7f;
	const zubCapsule_data short_axis = {{0, 0, 0}, {side, 0, 0}, 1};
	xylVec3 point;
	float length;
	EXPECT_TRUE(along_x({side, 0, 0}, 1).intersects_with_capsule(short_axis, point, length));
	EXPECT_EQ(point, xylVec3(side, 0, 0));
	EXPECT_EQ(length, 1 + side);
}

TEST(xylRay, OutputsMayBeInputs) {
	xylVec3 center(10, 0, 0);
	EXPECT_TRUE(along_x({0, 0, 0}).intersect_with_sphere(center, 2, center));
	EXPECT_TRUE(is_vector(center, 8, 0, 0, marker));
	xylVec3 a(5, -1, -1), b(5, -1, 1), c(5, 1, 1), d(5, 1, -1);
	for (xylVec3* corner : {&a, &b, &c, &d}) {
		const xylVec3 kept = *corner;
		EXPECT_EQ(along_x({0, 0.5f, -0.5f}).intersect_with_quad(a, b, c, d, *corner), 5.0f);
		EXPECT_TRUE(is_vector(*corner, 5, 0.5f, -0.5f, marker));
		*corner = kept;
	}
	zubCapsule_data capsule = {{5, 0.5f, -2}, {5, 0.5f, 2}, 1};
	xylVec3 point;
	float expected, length;
	EXPECT_TRUE(along_x({0, 0, 0}).intersects_with_capsule(capsule, point, expected));
	EXPECT_TRUE(along_x({0, 0, 0}).intersects_with_capsule(capsule, capsule.start, length));
	EXPECT_EQ(capsule.start, point);
	EXPECT_EQ(length, expected);
	capsule = {{5, 0, -2}, {5, 0, 2}, 1};
	xylVec3 entry, exit;
	EXPECT_TRUE(along_x({0, 0, 0}).get_capsule_intersection_details(capsule, capsule.start,
	                                                                capsule.end, entry, exit));
	EXPECT_LT((entry - xylVec3(-1, 0, 0)).length(), 1e-6f);
	EXPECT_LT((exit - xylVec3(1, 0, 0)).length(), 1e-6f);
}

TEST(xylMath, DistanceBorders) {
	// A side of exactly 0.01 makes a segment: the height above it and not the way to an end.
	const float half = 0.01f / 2;
	const auto distance = [&](float length) {
		return xylMath::shortest_dist_between_line_and_point({0, 0, 0}, {0, length, 0},
		                                                     {0.5f * half, half, 0});
	};
	EXPECT_NEAR(distance(0.01f), 0.5f * half, 1e-6);
	EXPECT_GT(distance(below(0.01f)), half);
	// At right angles to an end it is the way to that end, where Heron's formula loses digits.
	const xylVec3 a(0, 0, 0), b(1000, 0, 0);
	EXPECT_EQ(xylMath::shortest_dist_between_line_and_point(a, b, {0, 3, 0}), 3.0f);
	EXPECT_EQ(xylMath::shortest_dist_between_line_and_point(a, b, {1000, 3, 0}), 3.0f);
}

TEST(xylMath, SegmentsOfTheSmallestLength) {
	const float side = root_near(1e-5f);
	ASSERT_EQ(side * side, 1e-5f);
	const xylVec3 start(0, 0, 0, 5), end(side, 0, 0), beyond(1, 0, 0), up(1, 1, 0);
	xylVec3 p, q;
	// Not greater than 1e-5: the first point stands for the segment.
	xylMath::shortest_segment_between_lines(start, end, beyond, up, p, q);
	EXPECT_EQ(p, start);
	xylMath::shortest_segment_between_lines(beyond, up, start, end, p, q);
	EXPECT_EQ(q, start);
	xylMath::shortest_segment_between_line_and_point(start, end, beyond, p, q);
	EXPECT_TRUE(is_vector(p, 0, 0, 0, 5));
	const xylVec3 longer(above(side), 0, 0);
	xylMath::shortest_segment_between_lines(start, longer, beyond, up, p, q);
	EXPECT_EQ(p, longer);
	xylMath::shortest_segment_between_lines(beyond, up, start, longer, p, q);
	EXPECT_EQ(q, longer);
	xylMath::shortest_segment_between_line_and_point(start, longer, beyond, p, q);
	EXPECT_EQ(p, longer);
}

TEST(xylMath, PreciseSegmentsHaveTheSameThreshold) {
	// Squared lengths between the float 1e-5, which is the lesser, and the double.
	const double low = 1e-5f, high = 1e-5;
	ASSERT_LT(low, high);
	const float x = 0.003f;
	float y = static_cast<float>(std::sqrt(low - double(x) * x));
	while (double(x) * x + double(y) * y <= low) y = above(y);
	ASSERT_LT(double(x) * x + double(y) * y, high);
	const xylVec3 start(0, 0, 0), end(x, y, 0), beyond(1, 0, 0), up(1, 1, 0);
	xylVec3 p, q;
	xylMath::shortest_segment_between_lines_precise(start, end, beyond, up, p, q);
	EXPECT_NE(p, start);
	xylMath::shortest_segment_between_lines_precise(beyond, up, start, end, p, q);
	EXPECT_NE(q, start);
	// Both are short, but one is a segment.
	xylMath::shortest_segment_between_lines_precise(start, end, beyond, beyond, p, q);
	EXPECT_NE(p, start);
}
