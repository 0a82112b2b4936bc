// Zero vectors, inverted boxes, NaN, infinities and the ends of the range in every argument:
// nothing traps or hangs, nothing writes beside its outputs, and the results are those of the plain
// steps. docs/geometry.md says in words what comes out.

#include "plain_queries.h"
#include "samples.h"

#include <morvantis/math/xylmath.h>
#include <morvantis/math/xylray.h>

namespace {

constexpr float specials[] = {not_a_number, infinity, -infinity, 0.0f,   -0.0f, marker,
                              -marker,      1e-45f,   -1e-45f,   1e-38f, 1e19f, -1e30f};

float special(Samples& samples) { return specials[samples.below(std::size(specials))]; }

// `v` with none to all of its four numbers replaced.
xylVec3 damaged(Samples& samples, xylVec3 v) {
	if (samples.one_in(3)) return v;
	for (float* number : {&v.x, &v.y, &v.z, &v.w}) {
		if (samples.one_in(3)) *number = special(samples);
	}
	return v;
}
xylMatrix_frame damaged(Samples& samples, xylMatrix_frame m) {
	for (xylVec3* row : {&m.s, &m.f, &m.u, &m.origin}) {
		if (samples.one_in(4)) *row = damaged(samples, *row);
	}
	return m;
}
xylBounding_box damaged(Samples& samples, xylBounding_box box) {
	if (samples.one_in(4)) std::swap(box.min, box.max);
	for (xylVec3* v : {&box.min, &box.max, &box.center}) *v = damaged(samples, *v);
	if (samples.one_in(4)) box.radius = special(samples);
	return box;
}

const xylVec3 canary(11, 22, 33, 44);

// Outputs between two canaries.
struct Guarded {
	Guarded() { std::fill(std::begin(all), std::end(all), canary); }
	~Guarded() {
		EXPECT_TRUE(is_vector(all[0], 11, 22, 33, 44));
		EXPECT_TRUE(is_vector(all[9], 11, 22, 33, 44));
	}
	xylVec3* out() { return all + 1; }

	xylVec3 all[10];
};

} // namespace

TEST(Bad_input, BoxesFollowThePlainSteps) {
	Samples samples(91);
	for (int i = 0; i < sample_count; ++i) {
		const xylMatrix_frame frame = damaged(samples, samples.frame(10));
		const xylBounding_box box = damaged(samples, samples.box(10, 10));
		const auto pf = to_plain<float>(frame);
		const auto pb = to_plain<float>(box);
		plain::Vec<float> ptips[8], pmin, pmax;
		Guarded tips;
		box.get_transformed_tip_points(tips.out(), frame);
		plain::transformed_tips(pb, pf, ptips);
		for (int k = 0; k < 8; ++k) {
			ASSERT_TRUE(same_bits(tips.out()[k], ptips[k]));
			ASSERT_EQ(tips.out()[k].w, 1.0f);
		}
		Guarded plain_tips;
		box.get_tip_points(plain_tips.out());
		xylBounding_box::get_transformed_tip_points(plain_tips.out(), box.min, box.max, frame);
		for (int k = 0; k < 8; ++k) ASSERT_EQ(plain_tips.out()[k].w, marker);
		xylVec3 min, max;
		box.get_global_bounds(frame, min, max);
		plain::global_bounds(pb, pf, pmin, pmax);
		ASSERT_TRUE(same_bits(min, pmin) && same_bits(max, pmax));
		ASSERT_TRUE(min.is_not_nan() && max.is_not_nan());
		const auto moved = box.get_transformed_bounding_box(frame);
		const auto pmoved = plain::transformed_box(pb, pf);
		ASSERT_TRUE(same_bits(moved.min, pmoved.min) && same_bits(moved.max, pmoved.max));
		xylObject_bounds_cache cache;
		cache.update(box, frame);
		const auto pcache = plain::cache_of(pb, pf);
		ASSERT_TRUE(same_bits(cache.min, pcache.min) && same_bits(cache.max, pcache.max));
		ASSERT_TRUE(same_bits(cache.center, pcache.center));
		ASSERT_TRUE(same_bits(cache.radius, pcache.radius));
		ASSERT_EQ(cache.min.w, 1.0f);
		ASSERT_EQ(cache.center.w, marker);
	}
}

TEST(Bad_input, FrustumFollowsThePlainSteps) {
	Samples samples(92);
	for (int i = 0; i < sample_count; ++i) {
		xylFrustum frustum = samples.frustum();
		for (xylPlane& plane : frustum.planes_) {
			if (samples.one_in(8)) plane.point = damaged(samples, plane.point);
			if (samples.one_in(8)) plane.normal = damaged(samples, plane.normal);
		}
		const xylMatrix_frame frame = damaged(samples, samples.frame(5));
		const xylBounding_box box = damaged(samples, samples.box(3, 4));
		xylObject_bounds_cache cache;
		const xylBounding_box around = samples.box(3, 4);
		cache.update(around, samples.frame(5));
		for (xylVec3& tip : cache.tips) {
			if (samples.one_in(4)) tip = damaged(samples, tip);
		}
		if (samples.one_in(4)) cache.radius = special(samples);
		const auto pf = to_plain<float>(frustum);
		const auto pb = to_plain<float>(box);
		const auto pc = to_plain<float>(cache);
		ASSERT_EQ(static_cast<int>(frustum.check_bounds_cache(cache)),
		          static_cast<int>(plain::check_cache(pf, pc)));
		ASSERT_EQ(static_cast<int>(frustum.check_bounding_box(box, frame)),
		          static_cast<int>(plain::check_box(pf, pb, to_plain<float>(frame))));
		ASSERT_EQ(static_cast<int>(frustum.check_bounding_box_identity_frame(box)),
		          static_cast<int>(plain::check_world_box(pf, pb)));
		ASSERT_EQ(static_cast<int>(frustum.check_sphere(box.center, box.radius)),
		          static_cast<int>(plain::check_sphere(pf, pb.center, pb.radius)));
		ASSERT_EQ(static_cast<int>(frustum.check_quad(cache.tips)),
		          static_cast<int>(plain::check_quad(pf, pc.tips)));
		ASSERT_EQ(frustum.encloses_bounding_box(cache),
		          plain::encloses(pf, pc.center, pc.radius, pc.tips));
		ASSERT_EQ(frustum.encloses_check_global_bounds(box.min, box.max),
		          plain::encloses_global_bounds(pf, pb.min, pb.max));
		Guarded corners;
		frustum.get_global_frustum_box_points(corners.out());
		Guarded near_face;
		frustum.get_global_frustum_near_plane_points(near_face.out());
		xylFrustum generated;
		generated.generate_from_bounding_box_points(cache.tips);
	}
}

TEST(Bad_input, RaysFollowThePlainSteps) {
	Samples samples(93);
	for (int i = 0; i < sample_count; ++i) {
		const xylRay ray{damaged(samples, samples.point(10)), damaged(samples, samples.unit()),
		                 samples.one_in(4) ? special(samples) : 50.0f, samples.one_in(2)};
		const plain::Ray<float> p = {to_plain<float>(ray.origin), to_plain<float>(ray.direction),
		                             ray.max_distance};
		xylVec3 v[4];
		plain::Vec<float> pv[4];
		for (int k = 0; k < 4; ++k) {
			v[k] = damaged(samples, samples.point(5));
			pv[k] = to_plain<float>(v[k]);
		}
		const float radius = samples.one_in(4) ? special(samples) : samples.between(0, 5);
		xylVec3 point = canary;
		auto pp = to_plain<float>(canary);
		float near = 1, far = 2, pnear = 1, pfar = 2;
		ASSERT_EQ(ray.intersect_with_sphere(v[0], radius, point),
		          plain::hit_sphere(p, pv[0], radius, pp));
		ASSERT_TRUE(same_bits(point, pp));
		ASSERT_EQ(ray.get_sphere_intersection_details({v[0], radius}, near, far),
		          plain::sphere_details(p, pv[0], radius, pnear, pfar));
		ASSERT_TRUE(same_bits(near, pnear) && same_bits(far, pfar));
		ASSERT_EQ(ray.intersects_with_bounding_box_simple(v[0], v[1]),
		          plain::slabs(p, pv[0], pv[1], pnear, pfar));
		ASSERT_EQ(ray.intersect_ray_bounding_box(v[0], v[1], &point, &point, false),
		          plain::hit_box(p, pv[0], pv[1], false, pnear, pfar));
		xylObject_bounds_cache cache{};
		cache.min = v[0], cache.max = v[1], cache.center = v[2];
		ASSERT_EQ(ray.intersects_with_bounding_box(cache, nullptr),
		          plain::hit_cache(p, pv[0], pv[1], pv[2], pnear));
		ASSERT_TRUE(same_bits(ray.intersect_with_quad(v[0], v[1], v[2], v[3], point),
		                      plain::hit_quad(p, pv[0], pv[1], pv[2], pv[3], pp)));
		ASSERT_TRUE(same_bits(point, pp));
		const plain::Capsule<float> capsule = {pv[0], pv[1], radius};
		ASSERT_EQ(ray.intersects_with_capsule({v[0], v[1], radius}, point, near),
		          plain::near_capsule(p, capsule, pp, pnear));
		ASSERT_TRUE(same_bits(point, pp) && same_bits(near, pnear));
		const auto start = to_plain<float>(canary);
		plain::Capsule_hit<float> hit = {start, start, start, start};
		xylVec3 out[4] = {canary, canary, canary, canary};
		ASSERT_EQ(ray.get_capsule_intersection_details({v[0], v[1], radius}, out[0], out[1], out[2],
		                                               out[3]),
		          plain::capsule_details(p, capsule, hit));
		ASSERT_TRUE(same_bits(out[0], hit.entry) && same_bits(out[1], hit.exit) &&
		            same_bits(out[2], hit.entry_normal) && same_bits(out[3], hit.exit_normal));
		zubQuad_data face = {
			{v[0], v[1], v[2], v[3]}, damaged(samples, samples.unit()), {}, samples.bits()};
		plain::Quad<float> pface = {
			{pv[0], pv[1], pv[2], pv[3]}, to_plain<float>(face.normal), {}, face.flags};
		for (int k = 0; k < 4; ++k) {
			face.edge_normals[k] = damaged(samples, samples.unit());
			pface.edge_normals[k] = to_plain<float>(face.edge_normals[k]);
		}
		ASSERT_EQ(ray.intersects_with_quad(face, point), plain::hit_face(p, pface, pp));
		ASSERT_TRUE(same_bits(point, pp));
	}
}

TEST(Bad_input, QueriesAndRotationsFollowThePlainSteps) {
	Samples samples(94);
	for (int i = 0; i < sample_count; ++i) {
		xylVec3 v[4];
		plain::Vec<float> p[4];
		for (int k = 0; k < 4; ++k) {
			v[k] = damaged(samples, samples.point(5));
			p[k] = to_plain<float>(v[k]);
		}
		xylVec3 a, b;
		plain::Vec<float> pa, pb;
		ASSERT_TRUE(same_bits(xylMath::shortest_dist_between_line_and_point(v[0], v[1], v[2]),
		                      plain::distance_to_segment(p[0], p[1], p[2])));
		xylMath::shortest_segment_between_lines(v[0], v[1], v[2], v[3], a, b);
		plain::closest_of_segments(p[0], p[1], p[2], p[3], pa, pb);
		ASSERT_TRUE(same_bits(a, pa) && same_bits(b, pb));
		xylMath::shortest_segment_between_lines_precise(v[0], v[1], v[2], v[3], a, b);
		plain::closest_of_segments_precise(p[0], p[1], p[2], p[3], pa, pb);
		ASSERT_TRUE(same_bits(a, pa) && same_bits(b, pb));
		xylMath::shortest_segment_between_line_and_point(v[0], v[1], v[2], a, b);
		ASSERT_TRUE(same_bits(a, plain::closest_on_segment(p[0], p[1], p[2], true)));
		float w[3], pw[3];
		xylMath::get_barycentric_coords(v[0], v[1], v[2], v[3], w[0], w[1], w[2]);
		plain::barycentric(p[0], p[1], p[2], p[3], pw[0], pw[1], pw[2]);
		for (int k = 0; k < 3; ++k) ASSERT_TRUE(same_bits(w[k], pw[k]));
		ASSERT_EQ(xylPoint_inside_triangle(v[0], v[1], v[2], v[3]),
		          plain::inside_triangle(p[0], p[1], p[2], p[3]));
		ASSERT_TRUE(same_bits(xylPlane(v[0], v[1]).project_point(v[2]),
		                      plain::project<float>({p[0], p[1]}, p[2])));

		ASSERT_TRUE(same_bits(xylMat3::create_rotation_matrix_from_two_vector(v[0], v[1]),
		                      plain::rotation_between(p[0], p[1])));
		const auto center = xylMatrix_frame::center_frame_of_two_points(v[0], v[1], v[2]);
		const auto pcenter = plain::center_frame(p[0], p[1], p[2]);
		ASSERT_TRUE(same_bits(center.s, pcenter.s) && same_bits(center.f, pcenter.f) &&
		            same_bits(center.u, pcenter.u) && same_bits(center.origin, pcenter.origin));
		ASSERT_TRUE(same_bits(xylQuaternion::find_shortest_arc_as_quat(v[0], v[1]),
		                      plain::shortest_arc(p[0], p[1])));
		const xylQuaternion q(v[0].x, v[1].x, v[2].x, v[3].x);
		const auto pq = to_plain<float>(q);
		const float between = xylQuaternion::angle_between(q, {v[0].y, v[1].y, v[2].y, v[3].y});
		ASSERT_TRUE(between >= 0 && between <= 3.1415927f);
		xylVec3 axis, angles;
		plain::Vec<float> paxis;
		float angle, pangle;
		xylQuaternion::axis_angle_from_quaternion(axis, angle, q);
		plain::axis_angle_of(pq, paxis, pangle);
		ASSERT_TRUE(same_bits(axis, paxis) && nearly_same(angle, pangle));
		ASSERT_TRUE(angle >= 0);
		xylQuaternion::euler_angle_from_quaternion(angles, q);
		ASSERT_TRUE(nearly_same(angles, plain::euler_angles(pq)));
		xylQuaternion made = xylQuaternion::quaternion_look_at(v[0]);
		ASSERT_TRUE(nearly_same(made, plain::look_at(p[0])));
		const float turn = special(samples);
		xylQuaternion::quaternion_from_axis_angle(made, v[0], turn);
		ASSERT_TRUE(nearly_same(made, plain::from_axis_angle(p[0], turn)));
		made = xylQuaternion::quaternion_from_two_vectors(v[0], v[1]);
		ASSERT_TRUE(same_bits(made, plain::from_two_vectors(p[0], p[1])));
	}
}

TEST(Bad_input, RotationsAndFramesFallBackAsTold) {
	const xylMat3 of_zero = xylQuaternion(0, 0, 0, 0).to_mat3();
	EXPECT_EQ(of_zero.s, xylVec3(1, 0, 0));
	EXPECT_EQ(of_zero.f, xylVec3(0, 1, 0));
	EXPECT_EQ(of_zero.u, xylVec3(0, 0, 1));
	EXPECT_TRUE(std::isnan(xylQuaternion(not_a_number, 0, 0, 0).calculate_s().y));

	xylQuaternion q;
	xylQuaternion::quaternion_from_axis_angle(q, {0, 0, 0}, 2);
	EXPECT_TRUE(nearly_same(q.w, std::cos(1.0f)) && q.x == 0 && q.y == 0 && q.z == 0);
	xylQuaternion::quaternion_from_axis_angle(q, {0, 0, 1}, infinity);
	EXPECT_TRUE(std::isnan(q.w) && std::isnan(q.z));

	xylMatrix_frame frame = xylMatrix_frame::identity();
	frame.f = {0, 0, 0};
	frame.orthonormalize();
	for (const xylVec3& row : {frame.s, frame.f, frame.u}) EXPECT_TRUE(is_vector(row, 0, 0, 0, 0));
	frame.f = {not_a_number, 0, 0};
	frame.orthonormalize();
	for (const xylVec3& row : {frame.s, frame.f, frame.u}) EXPECT_FALSE(row.is_not_nan());

	const xylVec3 up(0, 0, 1);
	frame = xylMatrix_frame::center_frame_of_two_points({not_a_number, 0, 0}, {1, 2, 3}, up);
	EXPECT_TRUE(is_vector(frame.s, 0, 1, 0, 0) && is_vector(frame.f, -1, 0, 0, 0));
	EXPECT_TRUE(is_vector(frame.u, 0, 0, 1, 0) &&
	            is_vector(frame.origin, not_a_number, 1, 1.5f, 1));
	frame = xylMatrix_frame::center_frame_of_two_points({0, 0, 0}, {1, 0, 0}, {0, 0, not_a_number});
	EXPECT_TRUE(is_vector(frame.s, 1, 0, 0, 0) && is_vector(frame.f, 0, 1, 0, 0));
	frame = xylMatrix_frame::center_frame_of_two_points({0, 0, 0}, {1e20f, 0, 0}, up);
	EXPECT_TRUE(is_vector(frame.s, 0, 0, 0, 0) && is_vector(frame.f, 0, 1, 0, 0));
	EXPECT_TRUE(is_vector(frame.u, 0, 0, 0, 0));
	frame = xylMatrix_frame::center_frame_of_two_points({0, 0, 0}, {infinity, 0, 0}, up);
	EXPECT_TRUE(is_vector(frame.s, not_a_number, 0, 0, 0) && is_vector(frame.f, 0, 1, 0, 0));

	EXPECT_EQ(xylQuaternion::find_shortest_arc_as_quat({infinity, 0, 0}, {1, 0, 0}).w, infinity);
	q = xylQuaternion::find_shortest_arc_as_quat({0, not_a_number, 1}, {1, 0, 0});
	EXPECT_TRUE(q.w == 0 && std::isnan(q.x) && std::isnan(q.y) && std::isnan(q.z));

	frame = xylMatrix_frame::identity();
	EXPECT_EQ(xylMatrix_frame::get_random_frame_with_distance(frame, 0).origin, xylVec3(0, 0, 0));
	const auto lost = xylMatrix_frame::get_random_frame_with_distance(frame, not_a_number);
	EXPECT_TRUE(std::isnan(lost.origin.x) && std::isnan(lost.origin.y));
	EXPECT_EQ(lost.origin.z, 0.0f);
	EXPECT_FALSE(
		xylMatrix_frame::get_random_frame_with_distance(frame, infinity).origin.is_finite());
}

TEST(Bad_input, PlanesAndVolumesFallBackAsTold) {
	const xylPlane floor = {{1, 2, 3}, {0, 0, 1}};
	EXPECT_EQ(floor.project_point({1, 2, 3}), xylVec3(1, 2, 3));
	EXPECT_FALSE(floor.project_point({1, 2, not_a_number}).is_not_nan());
	EXPECT_FALSE(floor.project_point({1, 2, 2e19f}).is_not_nan());
	EXPECT_FALSE(floor.nearly_equals(floor, 0));
	EXPECT_FALSE(floor.nearly_equals({{1, 2, not_a_number}, {0, 0, 1}}, 1));
	const xylPlane far_away = {{1, 2, infinity}, {0, 0, 1}};
	EXPECT_FALSE(far_away.nearly_equals(far_away, 1));

	xylVec3 corners[8];
	std::fill(std::begin(corners), std::end(corners), xylVec3(5, 5, 5));
	xylFrustum frustum;
	frustum.generate_from_bounding_box_points(corners);
	EXPECT_EQ(frustum.check_sphere({-70, 0, 0}, 1), frustum_intersects);
	corners[0].x = corners[1].x = not_a_number;
	frustum.generate_from_bounding_box_points(corners);
	EXPECT_EQ(frustum.check_sphere({5, 5, 5}, 100), frustum_outside);

	const xylMatrix_frame identity = xylMatrix_frame::identity();
	xylBounding_box small, point;
	small.min = {1, 1, 1}, small.max = {2, 2, 2}, small.center = {1.5f, 1.5f, 1.5f};
	small.radius = 1;
	EXPECT_TRUE(xylBounding_box::obb_inside_obb(small, identity, point, identity));
	xylBounding_box broken = small;
	broken.max.x = not_a_number;
	EXPECT_FALSE(xylBounding_box::obb_inside_obb(small, identity, broken, identity));
	xylBounding_box inverted = small;
	inverted.min = {9, -9, -9}, inverted.max = {-9, 9, 9};
	EXPECT_FALSE(xylBounding_box::obb_inside_obb(small, identity, inverted, identity));
}

TEST(Bad_input, RaysWithoutADirectionLookForward) {
	for (const xylVec3& direction : {xylVec3(0, 0, 0), xylVec3(0, not_a_number, 1)}) {
		const xylRay by_length({1, 2, 3}, direction, true);
		EXPECT_EQ(by_length.get_direction(), xylVec3(0, 1, 0));
		EXPECT_EQ(by_length.get_max_distance(), 0.0f);
		EXPECT_EQ(xylRay({1, 2, 3}, direction, 7, false).get_direction(), xylVec3(0, 1, 0));
	}
}
