// One number over the bits of a great many results. It has to come out the same under every
// compiler, with optimisation and without: this file is part of math_tests, and of
// math_unoptimized_tests together with the library's own sources.
//
// Left out is what passes through the approximate reciprocal root or the runtime's trigonometry.

#include "samples.h"

#include <morvantis/math/xylmath.h>
#include <morvantis/math/xylray.h>
#include <morvantis/math/xyluvec2.h>

namespace {

// FNV-1a. All NaN are one: which of several survives is the compiler's choice.
class Hash {
public:
	void add(unsigned bits) {
		for (int i = 0; i < 4; ++i, bits >>= 8) value_ = (value_ ^ (bits & 255)) * 0x100000001B3ull;
	}
	void add(int number) { add(static_cast<unsigned>(number)); }
	void add(bool answer) { add(static_cast<unsigned>(answer)); }
	void add(float number) {
		unsigned bits = 0x7FC00000u;
		if (number == number) std::memcpy(&bits, &number, sizeof(bits));
		add(bits);
	}
	void add(const xylVec3& v) { add(v.x), add(v.y), add(v.z), add(v.w); }
	void add(const xylMat3& m) { add(m.s), add(m.f), add(m.u); }
	void add(const xylQuaternion& q) { add(q.w), add(q.x), add(q.y), add(q.z); }
	void add(const xylBounding_box& b) { add(b.min), add(b.max), add(b.center), add(b.radius); }

	unsigned long long value() const { return value_; }

private:
	unsigned long long value_ = 0xCBF29CE484222325ull;
};

void add_vectors(Hash& hash, Samples& samples) {
	const xylVec3 a = samples.awkward(10);
	const xylVec3 b = samples.awkward(10);
	const float k = samples.between(-2, 2);
	hash.add(a + b), hash.add(a - b), hash.add(-a), hash.add(a * k), hash.add(a / k);
	hash.add(a.dot(b)), hash.add(a.cross(b)), hash.add(a.length()), hash.add(a == b);
	xylVec3 n = a;
	hash.add(n.normalize()), hash.add(n);
	n /= k;
	hash.add(n);
	const xylVec2 flat = xylVec2(a.x, a.y) / k;
	hash.add(flat.x), hash.add(flat.y);
	const xylUVec2 mixed = xylUVec2({a.x, a.y}, {b.x, b.y}) / xylUDim(k, b.z);
	hash.add(mixed.x.scale), hash.add(mixed.y.offset);
	hash.add(xylUDim(a.x, a.y).asRelative(b.x));
}

void add_frames(Hash& hash, Samples& samples) {
	const xylQuaternion q = samples.rotation();
	hash.add(q.to_mat3()), hash.add(q.calculate_f());
	const xylMatrix_frame frame = samples.frame(20);
	xylQuaternion back;
	xylQuaternion::quaternion_from_mat3(back, frame);
	hash.add(back);
	const xylVec3 p = samples.awkward(10);
	hash.add(frame.transform_point(p)), hash.add(frame.transform_direction(p));
	const xylMatrix_frame between = xylMatrix_frame::center_frame_of_two_points(p, frame.origin);
	hash.add(between), hash.add(between.origin);
	const xylVec3 u = samples.unit();
	const xylVec3 v = samples.unit();
	if (u.dot(v) > -0.9f) hash.add(xylQuaternion::find_shortest_arc_as_quat(u, v));
}

void add_boxes(Hash& hash, Samples& samples) {
	const xylMatrix_frame frame = samples.frame(20);
	xylBounding_box box = samples.box(20, 5);
	if (samples.one_in(16)) std::swap(box.min, box.max);
	xylVec3 tips[8];
	box.get_transformed_tip_points(tips, frame);
	for (const xylVec3& tip : tips) hash.add(tip);
	xylVec3 min, max;
	box.get_global_bounds(frame, min, max);
	hash.add(min), hash.add(max);
	const xylBounding_box moved = box.get_transformed_bounding_box(frame);
	hash.add(moved);
	xylBounding_box sum = samples.box(20, 5);
	hash.add(xylBounding_box::bounding_boxes_intersect(sum, moved));
	sum.relax_with_transformed_bounding_box(box, frame);
	hash.add(sum);
	xylObject_bounds_cache cache;
	cache.update(box, frame);
	hash.add(cache.min), hash.add(cache.max), hash.add(cache.center), hash.add(cache.radius);
	for (const xylVec3& tip : cache.tips) hash.add(tip);

	xylFrustum frustum;
	for (xylPlane& plane : frustum.planes_) plane = {samples.point(30), samples.unit()};
	hash.add(static_cast<int>(frustum.check_sphere(box.center, box.radius)));
	hash.add(frustum.encloses_bounding_box(cache));
	hash.add(frustum.encloses_bounding_box_identity_frame(box));
	hash.add(frustum.encloses_check_global_bounds(cache.min, cache.max));
	xylVec3 corners[8] = {};
	hash.add(frustum.get_global_frustum_box_points(corners));
	for (const xylVec3& corner : corners) hash.add(corner);
}

void add_rays(Hash& hash, Samples& samples) {
	const xylRay ray{samples.awkward(10), samples.awkward(1), samples.between(1, 40), false};
	const xylVec3 a = samples.awkward(6), b = samples.awkward(6), c = samples.awkward(6),
				  d = samples.awkward(6);
	const float radius = samples.between(0, 5);
	xylVec3 p(0, 0, 0), q(0, 0, 0);
	float near = 0, far = 0;
	hash.add(ray.intersect_with_sphere(a, radius, p)), hash.add(p);
	hash.add(ray.get_sphere_intersection_details({b, radius}, near, far));
	hash.add(near), hash.add(far);
	const xylBounding_box box = samples.box(5, 5);
	hash.add(ray.intersects_with_bounding_box_simple(box.min, box.max));
	hash.add(ray.intersect_ray_bounding_box(box.min, box.max, &p, &q, false));
	hash.add(p), hash.add(q);
	xylObject_bounds_cache cache;
	cache.update(box, samples.frame(5));
	hash.add(ray.intersects_with_bounding_box(cache, &p)), hash.add(p);
	hash.add(ray.intersect_with_quad(a, b, c, d, p)), hash.add(p);
	hash.add(ray.intersects_with_capsule({a, b, radius}, p, near)), hash.add(p), hash.add(near);
	zubQuad_data face = {{a, b, c, d}, samples.unit(), {}, samples.below(4)};
	for (xylVec3& normal : face.edge_normals) normal = samples.unit();
	hash.add(ray.intersects_with_quad(face, p)), hash.add(p);
}

void add_queries(Hash& hash, Samples& samples) {
	const xylVec3 a = samples.awkward(6), b = samples.awkward(6), c = samples.awkward(6),
				  d = samples.awkward(6);
	xylVec3 p, q;
	float u, v, w;
	bool parallel;
	hash.add(xylMath::shortest_dist_between_line_and_point(a, b, c));
	xylMath::shortest_segment_between_lines(a, b, c, d, p, q);
	hash.add(p), hash.add(q);
	xylMath::shortest_segment_between_lines_precise(a, b, c, d, p, q);
	hash.add(p), hash.add(q);
	xylMath::shortest_segment_between_line_and_point(a, b, c, p, q);
	hash.add(p), hash.add(q);
	xylMath::get_barycentric_coords(a, b, c, d, u, v, w);
	hash.add(u), hash.add(v), hash.add(w);
	hash.add(xylMath::find_plane_line_intersection_point_with_normal(a, b, c, d, parallel));
	hash.add(parallel);
	hash.add(xylPoint_inside_triangle(a, b, c, d));
	hash.add(xylPoint_position_according_to_line(a, b, c, 0.5f));
}

} // namespace

TEST(Golden_hash, IsTheSameEverywhere) {
	Hash hash;
	Samples samples(2026);
	for (int i = 0; i < 20000; ++i) {
		add_vectors(hash, samples);
		add_frames(hash, samples);
		add_boxes(hash, samples);
		add_rays(hash, samples);
		add_queries(hash, samples);
	}
	EXPECT_EQ(hash.value(), 0xF4FB41646A65560Cull);
}
