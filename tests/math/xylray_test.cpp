#include "plain_queries.h"
#include "samples.h"
#include "shapes.h"

namespace {

using Vec_d = plain::Vec<double>;

const xylVec3 untouched(77, 77, 77, 77);

// From (0, 0, 0) along +X.
xylRay along_x(float max_distance = 100000.0f) {
	return {{0, 0, 0}, {1, 0, 0}, max_distance, true};
}

xylObject_bounds_cache cache_of(const xylVec3& min, const xylVec3& max) {
	xylBounding_box box;
	box.min = min;
	box.max = max;
	xylObject_bounds_cache cache{};
	cache.update(box, xylMatrix_frame::identity());
	return cache;
}

template <typename T> plain::Ray<T> to_plain(const xylRay& ray) {
	return {to_plain<T>(ray.origin), to_plain<T>(ray.direction), T(ray.max_distance)};
}
template <typename T> plain::Capsule<T> to_plain(const zubCapsule_data& c) {
	return {to_plain<T>(c.start), to_plain<T>(c.end), T(c.radius)};
}
template <typename T> plain::Quad<T> to_plain(const zubQuad_data& quad) {
	plain::Quad<T> result{};
	for (int i = 0; i < 4; ++i) {
		result.corners[i] = to_plain<T>(quad.corners[i]);
		result.edge_normals[i] = to_plain<T>(quad.edge_normals[i]);
	}
	result.normal = to_plain<T>(quad.normal);
	result.flags = quad.flags;
	return result;
}

// Mostly aimed near the origin, one in eight along an axis.
xylRay sample_ray(Samples& samples) {
	const xylVec3 origin = samples.one_in(8) ? samples.awkward(3) : samples.point(20);
	xylVec3 direction = samples.point(4) - origin;
	if (samples.one_in(8)) direction = samples.awkward(2);
	if (samples.one_in(8)) direction = {samples.one_in(2) ? 1.0f : -1.0f, 0, 0};
	return {origin, direction, samples.one_in(4) ? samples.between(0, 30) : 100000.0f, false};
}

zubCapsule_data sample_capsule(Samples& samples) {
	const xylVec3 start = samples.awkward(5);
	xylVec3 end = samples.one_in(8) ? start : samples.awkward(5);
	if (samples.one_in(8)) end = start + xylVec3(samples.between(-5, 5), 0, 0);
	return {start, end, samples.between(0.1f, 3)};
}

// A face with straight angles between normal and edge normals.
zubQuad_data sample_quad(Samples& samples) {
	zubQuad_data quad{};
	const xylMatrix_frame frame =
		samples.one_in(4) ? xylMatrix_frame::identity() : samples.frame(4);
	xylVec3 side = frame.s, up = frame.f;
	side.normalize();
	up.normalize();
	const float w = samples.between(0.5f, 5), h = samples.between(0.5f, 5);
	quad.corners[0] = frame.origin - side * w - up * h;
	quad.corners[1] = frame.origin + side * w - up * h;
	quad.corners[2] = frame.origin + side * w + up * h;
	quad.corners[3] = frame.origin - side * w + up * h;
	quad.normal = side.cross(up);
	for (int i = 0; i < 4; ++i) {
		quad.edge_normals[i] = quad.normal.cross(quad.corners[(i + 1) % 4] - quad.corners[i]);
		quad.edge_normals[i].normalize();
	}
	quad.flags = samples.below(4);
	if (samples.one_in(16)) quad.edge_normals[samples.below(4)] = {0, 0, 0};
	return quad;
}

} // namespace

TEST(xylRay, IsConstructed) {
	const xylRay none;
	EXPECT_TRUE(is_vector(none.origin, 0, 0, 0, 0));
	EXPECT_TRUE(is_vector(none.direction, 1, 0, 0, marker));
	EXPECT_EQ(none.max_distance, 100000.0f);
	const xylRay kept({1, 2, 3, 4}, {0, 2, 0, 5}, 7, true);
	EXPECT_TRUE(is_vector(kept.get_origin(), 1, 2, 3, 4));
	EXPECT_TRUE(is_vector(kept.get_direction(), 0, 2, 0, 5));
	EXPECT_EQ(kept.get_max_distance(), 7.0f);
	EXPECT_TRUE(is_vector(kept.get_end_point(), 1, 16, 3, marker));
	EXPECT_EQ(xylRay({1, 2, 3}, {0, 2, 0}, 7.0f, false).direction, xylVec3(0, 1, 0));
	const xylRay measured({1, 2, 3}, {0, 0, 2}, true);
	EXPECT_EQ(measured.direction, xylVec3(0, 0, 1));
	EXPECT_EQ(measured.max_distance, 2.0f);
	EXPECT_EQ(xylRay({1, 2, 3}, {0, 0, 2}, false).max_distance, 100000.0f);
	const xylRay too_short({1, 2, 3}, {0, 0, 1e-4f}, true);
	EXPECT_EQ(too_short.direction, xylVec3(0, 1, 0));
	EXPECT_EQ(too_short.max_distance, 0.0f);
	xylRay copy;
	copy = kept;
	EXPECT_TRUE(is_vector(copy.origin, 1, 2, 3, 4));
	EXPECT_EQ(copy.max_distance, 7.0f);
}

TEST(xylRay, HitsSpheres) {
	struct Case {
		const char* name;
		xylVec3 center;
		float radius, max_distance;
		bool hit;
		float x; // of the point
	};
	const Case cases[] = {
		{"ahead", {10, 0, 0}, 2, 100, true, 8},
		{"touching", {10, 2, 0}, 2, 100, true, 10},
		{"passing", {10, 2.1f, 0}, 2, 100, false, 0},
		{"behind", {-10, 0, 0}, 2, 100, false, 0},
		{"inside, centre ahead", {1, 0, 0}, 2, 100, true, 0},
		{"inside, centre behind", {-1, 0, 0}, 2, 100, true, 0},
		{"on the surface, centre behind", {-2, 0, 0}, 2, 100, false, 0},
		{"beyond the limit", {10, 0, 0}, 2, 7.9f, false, 0},
		{"at the limit", {10, 0, 0}, 2, 8, true, 8},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		xylRay ray = along_x(c.max_distance);
		ray.origin.w = 5;
		xylVec3 point = untouched;
		ASSERT_EQ(ray.intersect_with_sphere(c.center, c.radius, point), c.hit);
		if (!c.hit) {
			EXPECT_TRUE(is_vector(point, 77, 77, 77, 77));
		} else {
			EXPECT_TRUE(is_vector(point, c.x, 0, 0, c.x == 0 ? 5 : marker)); // the origin whole
		}
	}
}

TEST(xylRay, SphereDetailsCountInLengthsOfTheDirection) {
	const xylRay ray({0, 0, 0}, {2, 0, 0}, 100, true);
	float near = 77, far = 77;
	EXPECT_TRUE(ray.get_sphere_intersection_details({{10, 0, 0}, 2}, near, far));
	EXPECT_EQ(near, 4.0f);
	EXPECT_EQ(far, 6.0f);
	EXPECT_TRUE(ray.get_sphere_intersection_details({{1, 0, 0}, 2}, near, far)); // inside
	EXPECT_EQ(near, -0.5f);
	EXPECT_EQ(far, 1.5f);
	EXPECT_FALSE(ray.get_sphere_intersection_details({{-10, 0, 0}, 2}, near, far)); // behind
	EXPECT_EQ(near, -6.0f); // written all the same
	EXPECT_EQ(far, -4.0f);
	near = far = 77;
	EXPECT_FALSE(ray.get_sphere_intersection_details({{10, 3, 0}, 2}, near, far));
	EXPECT_EQ(near, 77.0f);
	EXPECT_EQ(far, 77.0f);
	EXPECT_TRUE(along_x(8).get_sphere_intersection_details({{10, 0, 0}, 2}, near, far));
	EXPECT_FALSE(along_x(7.9f).get_sphere_intersection_details({{10, 0, 0}, 2}, near, far));
}

TEST(xylRay, SlabTest) {
	struct Case {
		const char* name;
		xylVec3 origin, direction;
		bool hit;
		float near, far;
	};
	const float h = std::sqrt(0.5f);
	const Case cases[] = {
		{"ahead", {-5, 0, 0}, {1, 0, 0}, true, 4, 6},
		{"inside", {0, 0, 0}, {1, 0, 0}, true, -1, 1},
		{"behind", {5, 0, 0}, {1, 0, 0}, false, 0, 0},
		{"zero components pass", {-5, 0.5f, -0.5f}, {1, 0, -0.0f}, true, 4, 6},
		{"zero components miss", {-5, 1.5f, 0}, {1, 0, 0}, false, 0, 0},
		{"diagonal", {-2, -1, 0}, {h, h, 0}, true, 1 / h, 2 / h},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		const xylRay ray(c.origin, c.direction, 1, true); // the limit of 1 plays no part
		EXPECT_EQ(ray.intersects_with_bounding_box_simple({-1, -1, -1}, {1, 1, 1}), c.hit);
		for (const bool skip : {true, false}) {
			xylVec3 near = untouched, far = untouched;
			ASSERT_EQ(ray.intersect_ray_bounding_box({-1, -1, -1}, {1, 1, 1}, &near, &far, skip),
			          c.hit);
			if (c.hit) {
				EXPECT_TRUE(near == ray.origin + ray.direction * c.near ||
				            (near - (ray.origin + ray.direction * c.near)).length() < 1e-5f);
				EXPECT_LT((far - (ray.origin + ray.direction * c.far)).length(), 1e-5f);
				EXPECT_EQ(near.w, marker);
			} else {
				EXPECT_TRUE(is_vector(near, 77, 77, 77, 77));
				EXPECT_TRUE(is_vector(far, 77, 77, 77, 77));
			}
		}
	}
}

TEST(xylRay, SlabTestWritesFarOnlyTogetherWithNear) {
	const xylRay ray({-5, 0, 0}, {1, 0, 0}, 1, true);
	xylVec3 point = untouched;
	EXPECT_TRUE(ray.intersect_ray_bounding_box({-1, -1, -1}, {1, 1, 1}, nullptr, &point, false));
	EXPECT_TRUE(is_vector(point, 77, 77, 77, 77));
	EXPECT_TRUE(ray.intersect_ray_bounding_box({-1, -1, -1}, {1, 1, 1}, &point, nullptr, false));
	EXPECT_NEAR(point.x, -1, 2e-6);
	EXPECT_TRUE(ray.intersect_ray_bounding_box({-1, -1, -1}, {1, 1, 1}, nullptr, nullptr, false));
}

TEST(xylRay, SlabTestAddsAMillionth) {
	// A box of no thickness at x = -1e-6 lies exactly at parameter 0, one farther back behind.
	const xylRay ray({0, 0, 0}, {1, 0, 0}, 1, true);
	EXPECT_TRUE(ray.intersects_with_bounding_box_simple({-1, -1, -1}, {-1e-6f, 1, 1}));
	EXPECT_FALSE(ray.intersects_with_bounding_box_simple({-1, -1, -1}, {-1.1e-6f, 1, 1}));
	// The test against a cache does not.
	const float h = std::sqrt(1 / 3.0f);
	const xylRay diagonal({0, 0, 0}, {h, h, h}, 1, true);
	const xylVec3 behind(-5e-7f, -5e-7f, -5e-7f);
	EXPECT_TRUE(diagonal.intersects_with_bounding_box_simple({-1, -1, -1}, behind));
	EXPECT_FALSE(diagonal.intersects_with_bounding_box(cache_of({-1, -1, -1}, behind), nullptr));
	EXPECT_TRUE(diagonal.intersects_with_bounding_box(cache_of({-1, -1, -1}, {0, 0, 0}), nullptr));
}

TEST(xylRay, SphereTestInFrontOfTheSlabsCanBeSkipped) {
	// An inverted box: its "sphere" rejects what is far from its centre, the slabs reject all.
	const xylRay ray({-5, 1.5f, 1.5f}, {1, 0, 0}, 1, true);
	EXPECT_FALSE(ray.intersect_ray_bounding_box({-1, -1, -1}, {1, 1, 1}, nullptr, nullptr, false));
	// A direction that is not of unit length makes the sphere test too strict.
	const xylRay fast({-5, 0.9f, 0.9f}, {8, 0, 0}, 1, true);
	EXPECT_TRUE(fast.intersect_ray_bounding_box({-1, -1, -1}, {1, 1, 1}, nullptr, nullptr, true));
	EXPECT_FALSE(fast.intersect_ray_bounding_box({-1, -1, -1}, {1, 1, 1}, nullptr, nullptr, false));
	EXPECT_FALSE(fast.intersects_with_bounding_box(cache_of({-1, -1, -1}, {1, 1, 1}), nullptr));
}

TEST(xylRay, CacheTestIsLoose) {
	// The ray grazes the sphere of radius 1.73 and misses the box.
	const xylRay grazing({-5, 1.2f, 0}, {1, 0, 0}, 1, true);
	EXPECT_FALSE(grazing.intersects_with_bounding_box_simple({-1, -1, -1}, {1, 1, 1}));
	xylVec3 point = untouched;
	EXPECT_TRUE(grazing.intersects_with_bounding_box(cache_of({-1, -1, -1}, {1, 1, 1}), &point));
	// Parameters of the axes without motion are 0, so the least entry is 0: the origin.
	EXPECT_TRUE(is_vector(point, -5, 1.2f, 0, marker));
	// Wholly behind along X alone: the greatest exit is that of the axes without motion, 0.
	const xylRay past({5, 0, 0}, {1, 0, 0}, 1, true);
	EXPECT_TRUE(past.intersects_with_bounding_box(cache_of({-1, -1, -1}, {1, 1, 1}), &point));
	EXPECT_TRUE(is_vector(point, -1, 0, 0, marker)); // near = -6
	// With motion along all axes a box behind is rejected.
	xylVec3 direction(1, 1, 1);
	direction.normalize();
	const xylRay behind({5, 5, 5}, direction, 1, true);
	point = untouched;
	EXPECT_FALSE(behind.intersects_with_bounding_box(cache_of({-1, -1, -1}, {1, 1, 1}), &point));
	EXPECT_TRUE(is_vector(point, 77, 77, 77, 77));
}

TEST(xylRay, HitsTrianglesFromTheFront) {
	// (b − a) × (c − a) points to -X, towards the origin.
	const xylVec3 a(5, -1, -1), b(5, -1, 3), c(5, 3, -1);
	xylVec3 point = untouched;
	EXPECT_EQ(along_x(1).intersect_with_triangle(a, b, c, point), 5.0f); // beyond max_distance
	EXPECT_TRUE(is_vector(point, 5, 0, 0, marker));
	struct Case {
		const char* name;
		xylVec3 origin, a, b, c;
	};
	const Case misses[] = {
		{"back", {0, 0, 0}, a, c, b},
		{"behind", {6, 0, 0}, a, b, c},
		{"origin on its plane", {5, 0, 0}, a, b, c},
		{"beside u", {0, -1.1f, 0}, a, b, c},
		{"beside v", {0, 0, -1.1f}, a, b, c},
		{"beside u + v", {0, 1.1f, 1.1f}, a, b, c},
		{"edge-on", {0, 0, 0}, {5, -1, 0}, {6, 1, 0}, {5, 1, 0}},
		{"no area", {0, 0, 0}, a, a, a},
	};
	for (const Case& k : misses) {
		SCOPED_TRACE(k.name);
		point = untouched;
		const xylRay ray(k.origin, {1, 0, 0}, 100, true);
		EXPECT_EQ(ray.intersect_with_triangle(k.a, k.b, k.c, point), -1.0f);
		EXPECT_TRUE(is_vector(point, 0, 0, 0, marker));
	}
	// Corners and edges belong to it.
	for (const xylVec3& corner : {a, b, c, (a + b) * 0.5f, (b + c) * 0.5f}) {
		const xylRay ray({0, corner.y, corner.z}, {1, 0, 0}, 100, true);
		EXPECT_EQ(ray.intersect_with_triangle(a, b, c, point), 5.0f);
	}
}

TEST(xylRay, TriangleThresholds) {
	xylVec3 point;
	// det is twice the area here: 0.9e-6 is no triangle, 1.1e-6 is one.
	for (const float area : {0.9e-6f, 1.1e-6f}) {
		const xylRay ray({0, 0, 0}, {1, 0, 0}, 100, true);
		const float hit = ray.intersect_with_triangle({5, 0, 0}, {5, 0, area}, {5, 1, 0}, point);
		EXPECT_EQ(hit, area > 1e-6f ? 5.0f : -1.0f);
	}
	const xylVec3 a(0, -1, -1), b(0, -1, 3), c(0, 3, -1);
	EXPECT_EQ(
		xylRay({-0.9e-6f, 0, 0}, {1, 0, 0}, 100, true).intersect_with_triangle(a, b, c, point),
		-1.0f);
	EXPECT_NEAR(
		xylRay({-1.1e-6f, 0, 0}, {1, 0, 0}, 100, true).intersect_with_triangle(a, b, c, point),
		1.1e-6f, 1e-12);
}

TEST(xylRay, HitsQuadsThroughEitherTriangle) {
	const xylVec3 a(5, -1, -1), b(5, -1, 1), c(5, 1, 1), d(5, 1, -1);
	xylVec3 point;
	for (const xylVec3& origin : {xylVec3(0, -0.5f, 0.5f), xylVec3(0, 0.5f, -0.5f)}) {
		const xylRay ray(origin, {1, 0, 0}, 1, true);
		EXPECT_EQ(ray.intersect_with_quad(a, b, c, d, point), 5.0f);
		EXPECT_TRUE(is_vector(point, 5, origin.y, origin.z, marker));
		EXPECT_EQ(ray.intersect_with_quad(d, c, b, a, point), -1.0f); // back
		EXPECT_TRUE(is_vector(point, 0, 0, 0, marker));
	}
	EXPECT_EQ(xylRay({0, 1.1f, 0}, {1, 0, 0}, 1, true).intersect_with_quad(a, b, c, d, point),
	          -1.0f);
}

TEST(xylRay, HitsFaces) {
	xylVec3 point = untouched;
	EXPECT_TRUE(along_x().intersects_with_quad(square(), point));
	EXPECT_TRUE(is_vector(point, 5, 0, 0, marker));
	point = untouched;
	EXPECT_FALSE(along_x(4.9f).intersects_with_quad(square(), point)); // limited
	EXPECT_TRUE(along_x(5).intersects_with_quad(square(), point));
	// The back.
	const xylRay back({10, 0, 0}, {-1, 0, 0}, 100, true);
	EXPECT_FALSE(back.intersects_with_quad(square(), point));
	EXPECT_TRUE(back.intersects_with_quad(square(zubQuad_data::two_sided_flag), point));
	// Behind the origin.
	EXPECT_FALSE(xylRay({6, 0, 0}, {1, 0, 0}, 100, true).intersects_with_quad(square(), point));
	// Edges have a tolerance of 0.006.
	EXPECT_TRUE(xylRay({0, 1.005f, 0}, {1, 0, 0}, 100, true).intersects_with_quad(square(), point));
	EXPECT_FALSE(
		xylRay({0, 1.007f, 0}, {1, 0, 0}, 100, true).intersects_with_quad(square(), point));
	EXPECT_FALSE(
		xylRay({0, 0, -1.007f}, {1, 0, 0}, 100, true).intersects_with_quad(square(), point));
	// A triangle has no fourth edge.
	const xylRay beyond_fourth({0, -3, 0}, {1, 0, 0}, 100, true);
	EXPECT_FALSE(beyond_fourth.intersects_with_quad(square(), point));
	EXPECT_TRUE(beyond_fourth.intersects_with_quad(square(zubQuad_data::triangle_flag), point));
	// A zero edge normal: never hit, unless it is the ignored one.
	zubQuad_data damaged = square();
	damaged.edge_normals[3] = {0, 0, -0.0f, 9};
	EXPECT_FALSE(along_x().intersects_with_quad(damaged, point));
	damaged.flags = zubQuad_data::triangle_flag;
	EXPECT_TRUE(along_x().intersects_with_quad(damaged, point));
}

TEST(xylRay, RunsInThePlaneOfAFace) {
	xylVec3 point = untouched;
	// From inside: the origin, whole.
	const xylRay inside({5, 0, 0.009f, 3}, {1, 0, 0}, 100, true);
	EXPECT_TRUE(inside.intersects_with_quad(floor_square(), point));
	EXPECT_TRUE(is_vector(point, 5, 0, 0.009f, 3));
	// The plane's tolerance is 0.01.
	EXPECT_FALSE(
		xylRay({5, 0, 0.011f}, {1, 0, 0}, 100, true).intersects_with_quad(floor_square(), point));
	EXPECT_FALSE(
		xylRay({5, 0, -0.011f}, {1, 0, 0}, 100, true).intersects_with_quad(floor_square(), point));
	// The edges' is 0: just outside is not inside. But an edge may be crossed by a thousandth of
	// the ray's length behind the origin.
	const xylRay leaving({6.003f, 0, 0}, {1, 0, 0}, 100, true);
	EXPECT_TRUE(leaving.intersects_with_quad(floor_square(), point));
	EXPECT_NEAR(point.x, 6, 1e-5);
	const xylRay gone({6.2f, 0, 0}, {1, 0, 0}, 100, true);
	EXPECT_FALSE(gone.intersects_with_quad(floor_square(), point));
	// From outside: the nearest crossing at the height of the origin.
	const xylRay outside({0, 0.5f, 0.005f}, {1, 0, 0}, 100, true);
	EXPECT_TRUE(outside.intersects_with_quad(floor_square(), point));
	EXPECT_NEAR(point.x, 4, 1e-5);
	EXPECT_EQ(point.y, 0.5f);
	EXPECT_EQ(point.z, 0.005f);
	EXPECT_EQ(point.w, marker);
	// Too short to reach it, or passing by.
	EXPECT_FALSE(
		xylRay({0, 0, 0}, {1, 0, 0}, 3.9f, true).intersects_with_quad(floor_square(), point));
	EXPECT_FALSE(
		xylRay({0, 1.5f, 0}, {1, 0, 0}, 100, true).intersects_with_quad(floor_square(), point));
	// Zero edge normals count as inside here.
	zubQuad_data damaged = floor_square();
	for (xylVec3& normal : damaged.edge_normals) normal = {0, 0, 0};
	EXPECT_TRUE(outside.intersects_with_quad(damaged, point));
	EXPECT_EQ(point.x, 0.0f);
}

TEST(xylRay, ComesNearCapsules) {
	// Axis along Z at x = 5.
	const zubCapsule_data capsule = {{5, 0, -2}, {5, 0, 2}, 1};
	xylVec3 point = untouched;
	float length = 77;
	EXPECT_TRUE(along_x().intersects_with_capsule(capsule));
	EXPECT_TRUE(along_x().intersects_with_capsule(capsule, point, length));
	EXPECT_NEAR(point.x, 5, 1e-4); // the point closest to the axis
	EXPECT_NEAR(length, 1, 1e-4);
	// Passing at 0.6 from the axis: the surface is sqrt(1 − 0.36) before the closest point.
	const xylRay beside({0, 0.6f, 0}, {1, 0, 0}, 100, true);
	EXPECT_TRUE(beside.intersects_with_capsule(capsule, point, length));
	EXPECT_NEAR(length, 0.8f, 1e-4);
	EXPECT_EQ(point.w, marker);
	const xylRay missing({0, 1.01f, 0}, {1, 0, 0}, 100, true);
	EXPECT_FALSE(missing.intersects_with_capsule(capsule));
	EXPECT_FALSE(missing.intersects_with_capsule(capsule, point, length));
	EXPECT_TRUE(is_vector(point, 0, 0, 0, marker));
	EXPECT_EQ(length, 0.0f);
	EXPECT_FALSE(along_x(3.9f).intersects_with_capsule(capsule));
	EXPECT_TRUE(along_x(4.1f).intersects_with_capsule(capsule));
	// Above the end: the sphere there.
	EXPECT_TRUE(xylRay({0, 0, 2.9f}, {1, 0, 0}, 100, true).intersects_with_capsule(capsule));
	EXPECT_FALSE(xylRay({0, 0, 3.1f}, {1, 0, 0}, 100, true).intersects_with_capsule(capsule));
	// Start equal to end acts as a sphere.
	const zubCapsule_data ball = {{5, 0, 0}, {5, 0, 0}, 1};
	EXPECT_TRUE(beside.intersects_with_capsule(ball));
	EXPECT_FALSE(missing.intersects_with_capsule(ball));
	EXPECT_TRUE(xylRay({5, 0.5f, 0}, {1, 0, 0}, 100, true).intersects_with_capsule(ball)); // inside
}

TEST(xylRay, ThroughTheAxisTakesForwardAsTheWayOut) {
	// δ = (0, 1, 0) and l = 0: g = 0, B = 0, and the length is half of sqrt(4r²).
	const zubCapsule_data capsule = {{4, 0, -2}, {4, 0, 2}, 1.5f};
	xylVec3 point;
	float length;
	EXPECT_TRUE(along_x(8).intersects_with_capsule(capsule, point, length));
	EXPECT_EQ(point, xylVec3(4, 0, 0));
	EXPECT_EQ(length, 1.5f);
}

TEST(xylRay, CapsuleDetails) {
	struct Case {
		const char* name;
		xylRay ray;
		zubCapsule_data capsule;
		xylVec3 entry, exit, entry_normal, exit_normal;
	};
	const zubCapsule_data upright = {{5, 0, -2}, {5, 0, 2}, 1};
	const zubCapsule_data lying = {{4, 0, 0}, {6, 0, 0}, 1};
	const zubCapsule_data lying_backward = {{6, 0, 0}, {4, 0, 0}, 1};
	const float h = std::sqrt(0.75f);
	const Case cases[] = {
		{"cylinder", along_x(), upright, {4, 0, 0}, {6, 0, 0}, {-1, 0, 0}, {1, 0, 0}},
		{"sphere at end",
	     {{0, 0, 2.5f}, {1, 0, 0}, 100, true},
	     upright,
	     {5 - h, 0, 2.5f},
	     {5 + h, 0, 2.5f},
	     {-h, 0, 0.5f},
	     {h, 0, 0.5f}},
		{"sphere at start",
	     {{0, 0, -2.5f}, {1, 0, 0}, 100, true},
	     upright,
	     {5 - h, 0, -2.5f},
	     {5 + h, 0, -2.5f},
	     {-h, 0, -0.5f},
	     {h, 0, -0.5f}},
		{"from inside",
	     {{5, 0, 0}, {1, 0, 0}, 100, true},
	     upright,
	     {4, 0, 0},
	     {6, 0, 0},
	     {-1, 0, 0},
	     {1, 0, 0}},
		{"along the axis", along_x(), lying, {3, 0, 0}, {7, 0, 0}, {-1, 0, 0}, {1, 0, 0}},
		{"against the axis",
	     along_x(),
	     lying_backward,
	     {3, 0, 0},
	     {7, 0, 0},
	     {-1, 0, 0},
	     {1, 0, 0}},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		xylVec3 entry, exit, entry_normal, exit_normal;
		ASSERT_TRUE(c.ray.get_capsule_intersection_details(c.capsule, entry, exit, entry_normal,
		                                                   exit_normal));
		EXPECT_LT((entry - c.entry).length(), 1e-5f);
		EXPECT_LT((exit - c.exit).length(), 1e-5f);
		EXPECT_LT((entry_normal - c.entry_normal).length(), 1e-5f);
		EXPECT_LT((exit_normal - c.exit_normal).length(), 1e-5f);
		EXPECT_EQ(entry.w, marker);
		EXPECT_EQ(exit_normal.w, marker);
	}
	const xylRay misses[] = {{{0, 1.1f, 0}, {1, 0, 0}, 100, true},
	                         {{0, 0, 3.1f}, {1, 0, 0}, 100, true},
	                         {{0, 0, -3.1f}, {1, 0, 0}, 100, true},
	                         {{7, 0, 0}, {1, 0, 0}, 100, true},
	                         along_x(3.9f)};
	for (const xylRay& ray : misses) {
		SCOPED_TRACE(testing::Message() << ray.origin);
		xylVec3 out[4] = {untouched, untouched, untouched, untouched};
		EXPECT_FALSE(ray.get_capsule_intersection_details(upright, out[0], out[1], out[2], out[3]));
		for (const xylVec3& v : out) EXPECT_TRUE(is_vector(v, 77, 77, 77, 77));
	}
	xylVec3 out[4];
	EXPECT_FALSE(
		along_x(2.9f).get_capsule_intersection_details(lying, out[0], out[1], out[2], out[3]));
}

TEST(xylRay, CapsuleWithoutLengthTakesTheSubstituteAxis) {
	const zubCapsule_data ball = {{5, 0, 0}, {5, 0, 0}, 1};
	xylVec3 entry, exit, entry_normal, exit_normal;
	ASSERT_TRUE(
		along_x().get_capsule_intersection_details(ball, entry, exit, entry_normal, exit_normal));
	EXPECT_LT((entry - xylVec3(4, 0, 0)).length(), 2e-3f);
	EXPECT_LT((exit - xylVec3(6, 0, 0)).length(), 2e-3f);
	// Along that axis the ray counts as parallel or nearly so, and hits the two spheres.
	xylVec3 direction(1, 1, 1);
	direction.normalize();
	const xylRay diagonal({5 - 3, -3, -3}, direction, 100, true);
	plain::Capsule_hit<float> expected{};
	const bool hit =
		plain::capsule_details(to_plain<float>(diagonal), to_plain<float>(ball), expected);
	EXPECT_EQ(
		diagonal.get_capsule_intersection_details(ball, entry, exit, entry_normal, exit_normal),
		hit);
	if (hit) {
		EXPECT_TRUE(same_bits(entry, expected.entry));
	}
}

TEST(xylRay, AgreesWithThePlainSteps) {
	Samples samples(81);
	int hits[9] = {};
	for (int i = 0; i < sample_count; ++i) {
		const xylRay ray = sample_ray(samples);
		const auto p = to_plain<float>(ray);
		const xylVec3 c = samples.awkward(4);
		const float radius = samples.between(0, 5);
		xylVec3 point = untouched;
		auto pp = to_plain<float>(untouched);
		const bool sphere = ray.intersect_with_sphere(c, radius, point);
		ASSERT_EQ(sphere, plain::hit_sphere(p, to_plain<float>(c), radius, pp));
		ASSERT_TRUE(same_bits(point, pp));
		hits[0] += sphere;

		float near = 77, far = 77, pnear = 77, pfar = 77;
		const bool details = ray.get_sphere_intersection_details({c, radius}, near, far);
		ASSERT_EQ(details, plain::sphere_details(p, to_plain<float>(c), radius, pnear, pfar));
		ASSERT_TRUE(same_bits(near, pnear) && same_bits(far, pfar));
		hits[1] += details;

		xylBounding_box box = samples.box(4, 4);
		if (samples.one_in(16)) box.min = ray.origin;
		if (samples.one_in(16)) std::swap(box.min, box.max);
		const auto min = to_plain<float>(box.min), max = to_plain<float>(box.max);
		const bool simple = ray.intersects_with_bounding_box_simple(box.min, box.max);
		ASSERT_EQ(simple, plain::slabs(p, min, max, pnear, pfar));
		hits[2] += simple;
		const bool skip = samples.one_in(2);
		xylVec3 far_point = untouched;
		point = untouched;
		const bool in_box =
			ray.intersect_ray_bounding_box(box.min, box.max, &point, &far_point, skip);
		ASSERT_EQ(in_box, plain::hit_box(p, min, max, skip, pnear, pfar));
		if (in_box) {
			ASSERT_TRUE(same_bits(point, plain::at(p, pnear)));
			ASSERT_TRUE(same_bits(far_point, plain::at(p, pfar)));
		}
		hits[3] += in_box;

		xylObject_bounds_cache cache{};
		cache.update(box, samples.one_in(2) ? xylMatrix_frame::identity() : samples.frame(4));
		const bool in_cache = ray.intersects_with_bounding_box(cache, &point);
		ASSERT_EQ(in_cache,
		          plain::hit_cache(p, to_plain<float>(cache.min), to_plain<float>(cache.max),
		                           to_plain<float>(cache.center), pnear));
		if (in_cache) {
			ASSERT_TRUE(same_bits(point, plain::at(p, pnear)));
		}
		hits[4] += in_cache;

		const xylVec3 t[4] = {samples.awkward(6), samples.awkward(6), samples.awkward(6),
		                      samples.awkward(6)};
		const plain::Vec<float> pt[4] = {to_plain<float>(t[0]), to_plain<float>(t[1]),
		                                 to_plain<float>(t[2]), to_plain<float>(t[3])};
		const float triangle = ray.intersect_with_triangle(t[0], t[1], t[2], point);
		ASSERT_TRUE(same_bits(triangle, plain::hit_triangle(p, pt[0], pt[1], pt[2], pp)));
		ASSERT_TRUE(same_bits(point, pp));
		const float quad = ray.intersect_with_quad(t[0], t[1], t[2], t[3], point);
		ASSERT_TRUE(same_bits(quad, plain::hit_quad(p, pt[0], pt[1], pt[2], pt[3], pp)));
		ASSERT_TRUE(same_bits(point, pp));
		hits[5] += quad > 0;
	}
	for (int i = 0; i < 6; ++i) EXPECT_GT(hits[i], 1000) << i;
}

TEST(xylRay, FacesAndCapsulesAgreeWithThePlainSteps) {
	Samples samples(82);
	int hits[3] = {};
	int in_plane = 0;
	for (int i = 0; i < sample_count; ++i) {
		xylRay ray = sample_ray(samples);
		const zubQuad_data quad = sample_quad(samples);
		if (samples.one_in(4)) { // into the plane of the face
			const xylVec3 target =
				quad.corners[0] + (quad.corners[2] - quad.corners[0]) * samples.between(0, 1);
			ray.origin = ray.origin - quad.normal * (quad.normal.dot(ray.origin - target) +
			                                         samples.between(-0.011f, 0.011f));
			ray = xylRay(ray.origin, target - ray.origin, ray.max_distance, false);
			++in_plane;
		}
		const auto p = to_plain<float>(ray);
		xylVec3 point = untouched;
		auto pp = to_plain<float>(untouched);
		const bool face = ray.intersects_with_quad(quad, point);
		ASSERT_EQ(face, plain::hit_face(p, to_plain<float>(quad), pp));
		ASSERT_TRUE(same_bits(point, pp));
		hits[0] += face;

		const zubCapsule_data capsule = sample_capsule(samples);
		float length = 77, plain_length = 77;
		const bool near = ray.intersects_with_capsule(capsule, point, length);
		ASSERT_EQ(near, plain::near_capsule(p, to_plain<float>(capsule), pp, plain_length));
		ASSERT_TRUE(same_bits(point, pp) && same_bits(length, plain_length));
		ASSERT_EQ(ray.intersects_with_capsule(capsule), near);
		hits[1] += near;

		xylVec3 out[4] = {untouched, untouched, untouched, untouched};
		const auto u = to_plain<float>(untouched);
		plain::Capsule_hit<float> expected = {u, u, u, u};
		const bool details =
			ray.get_capsule_intersection_details(capsule, out[0], out[1], out[2], out[3]);
		ASSERT_EQ(details, plain::capsule_details(p, to_plain<float>(capsule), expected));
		ASSERT_TRUE(same_bits(out[0], expected.entry) && same_bits(out[1], expected.exit));
		ASSERT_TRUE(same_bits(out[2], expected.entry_normal) &&
		            same_bits(out[3], expected.exit_normal));
		hits[2] += details;
	}
	for (const int count : hits) EXPECT_GT(count, 1000);
	EXPECT_GT(in_plane, 1000);
}

TEST(xylRay, AnswersLikeDoublesAwayFromBoundaries) {
	Samples samples(83);
	const Jitter jitter(samples, 2e-3f);
	const Jitter still(samples, 0);
	int settled[6] = {};
	for (int i = 0; i < sample_count; ++i) {
		const xylRay ray{samples.point(20), samples.point(1), samples.between(5, 50), false};
		const auto d = to_plain<double>(ray);
		const auto moved = [&](const Jitter& j) {
			return plain::Ray<double>{j(d.origin), d.direction, j(d.max)};
		};
		const auto check = [&](int kind, bool answer, auto ask) {
			if (!jitter.is_settled(ask)) return;
			++settled[kind];
			ASSERT_EQ(answer, ask(still)) << kind;
		};
		const xylVec3 c = ray.origin + ray.direction * samples.between(-10, 40) + samples.point(4);
		const Vec_d dc = to_plain<double>(c);
		const float radius = samples.between(0.5f, 5);
		xylVec3 point;
		check(0, ray.intersect_with_sphere(c, radius, point), [&](const Jitter& j) {
			Vec_d ignored;
			return plain::hit_sphere(moved(j), j(dc), j(radius), ignored);
		});
		const xylVec3 half = {samples.between(0.5f, 4), samples.between(0.5f, 4),
		                      samples.between(0.5f, 4)};
		check(1, ray.intersect_ray_bounding_box(c - half, c + half, nullptr, nullptr, false),
		      [&](const Jitter& j) {
				  double near, far;
				  return plain::hit_box(moved(j), j(to_plain<double>(c - half)),
			                            j(to_plain<double>(c + half)), false, near, far);
			  });
		const xylVec3 b = c + samples.point(5), e = c + samples.point(5);
		check(2, ray.intersect_with_triangle(c, b, e, point) > 0, [&](const Jitter& j) {
			Vec_d ignored;
			return plain::hit_triangle(moved(j), j(dc), j(to_plain<double>(b)),
			                           j(to_plain<double>(e)), ignored) > 0;
		});
		const zubCapsule_data capsule = {c, b, radius};
		check(3, ray.intersects_with_capsule(capsule), [&](const Jitter& j) {
			Vec_d ignored;
			double length;
			return plain::near_capsule(moved(j), {j(dc), j(to_plain<double>(b)), j(radius)},
			                           ignored, length);
		});
		xylVec3 out[4];
		check(4, ray.get_capsule_intersection_details(capsule, out[0], out[1], out[2], out[3]),
		      [&](const Jitter& j) {
				  plain::Capsule_hit<double> ignored{};
				  return plain::capsule_details(
					  moved(j), {j(dc), j(to_plain<double>(b)), j(radius)}, ignored);
			  });
		zubQuad_data quad = sample_quad(samples);
		for (xylVec3& corner : quad.corners) corner += c;
		check(5, ray.intersects_with_quad(quad, point), [&](const Jitter& j) {
			Vec_d ignored;
			auto face = to_plain<double>(quad);
			for (auto& corner : face.corners) corner = j(corner);
			return plain::hit_face(moved(j), face, ignored);
		});
	}
	for (int i = 0; i < 6; ++i) EXPECT_GT(settled[i], sample_count / 2) << i;
}

TEST(xylRay, PointsAreWhereDoublesPutThem) {
	Samples samples(84);
	int compared[3] = {};
	for (int i = 0; i < sample_count; ++i) {
		const xylRay ray{samples.point(10), samples.unit(), 100.0f, true};
		const auto d = to_plain<double>(ray);
		const xylVec3 c = ray.origin + ray.direction * samples.between(5, 20) + samples.point(1);
		const float radius = samples.between(2, 4); // the ray passes well inside
		xylVec3 point;
		Vec_d exact;
		if (ray.intersect_with_sphere(c, radius, point) &&
		    plain::hit_sphere(d, to_plain<double>(c), double(radius), exact)) {
			++compared[0];
			ASSERT_TRUE(near(point, exact, 2e-4));
		}
		const xylVec3 a = c + samples.point(5), b = c + samples.point(5), e = c + samples.point(5);
		const double hit = plain::hit_triangle(d, to_plain<double>(a), to_plain<double>(b),
		                                       to_plain<double>(e), exact);
		if (hit > 0 && ray.intersect_with_triangle(a, b, e, point) > 0) {
			const Vec_d n = plain::cross(to_plain<double>(b - a), to_plain<double>(e - a));
			if (std::abs(plain::dot(n, d.direction)) < 3) continue; // seen from the side
			++compared[1];
			ASSERT_TRUE(near(point, exact, 5e-4));
		}
		xylVec3 out[4];
		plain::Capsule_hit<double> hits{};
		const zubCapsule_data capsule = {c, c + samples.point(3), radius};
		if (ray.get_capsule_intersection_details(capsule, out[0], out[1], out[2], out[3]) &&
		    plain::capsule_details(d, to_plain<double>(capsule), hits)) {
			++compared[2];
			// On the surface, in the direction of the normal.
			const Vec_d axis = to_plain<double>(capsule.end) - to_plain<double>(capsule.start);
			for (int k = 0; k < 2; ++k) {
				const Vec_d p = to_plain<double>(out[k]);
				const Vec_d from = p - to_plain<double>(capsule.start);
				const double h =
					std::clamp(plain::dot(from, axis) / plain::dot(axis, axis), 0.0, 1.0);
				const Vec_d off = p - (to_plain<double>(capsule.start) + axis * h);
				ASSERT_NEAR(plain::length(off), radius, 2e-2);
				ASSERT_NEAR(plain::dot(off, to_plain<double>(out[k + 2])), radius, 2e-2);
			}
		}
	}
	for (const int count : compared) EXPECT_GT(count, sample_count / 20);
}
