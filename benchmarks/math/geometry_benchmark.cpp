// Vectors, quaternions, boxes and segments: what is done for each object each frame.

#include "inputs.h"
#include "peers.h"
#include "plain_queries.h"

#include <morvantis/math/xylmath.h>

#include <Eigen/Geometry>
#include <LinearMath/btAabbUtil2.h>
#include <LinearMath/btTransform.h>
#include <benchmark/benchmark.h>
#include <glm/glm.hpp>
#include <glm/gtc/quaternion.hpp>

namespace {

plain::Frame<float> to_plain(const xylMatrix_frame& m) {
	return {to_plain(m.s), to_plain(m.f), to_plain(m.u), to_plain(m.origin)};
}
btVector3 to_bullet(const xylVec3& v) { return {v.x, v.y, v.z}; }

// One call per input; `out` takes the results.
template <typename Order = Same_order, typename In, typename Out, typename Call>
void pass(benchmark::State& state, const std::vector<In>& in, Out out_value, Call call) {
	std::vector<Out> out(in.size(), out_value);
	Order order(in.size());
	for (auto _ : state) {
		order.next_pass();
		for (std::size_t i = 0; i < in.size(); ++i) call(in[order[i]], out[i]);
		benchmark::ClobberMemory();
	}
	benchmark::DoNotOptimize(out.data());
	state.SetItemsProcessed(state.iterations() * static_cast<long>(in.size()));
}

constexpr int point_count = 1024; // without branches: in and out fit the first cache

std::vector<xylVec3> points() {
	Inputs inputs;
	return inputs.array(point_count, [&] { return inputs.point(10); });
}

void fast_normalize_ours(benchmark::State& state) {
	pass(state, points(), xylVec3{}, [](const xylVec3& in, xylVec3& out) {
		out = in;
		out.fast_normalize();
	});
}
void normalize_full(benchmark::State& state) {
	pass(state, points(), xylVec3{}, [](const xylVec3& in, xylVec3& out) {
		out = in;
		out.normalize();
	});
}
void normalize_glm(benchmark::State& state) {
	Inputs inputs;
	const auto in = inputs.array(point_count, [&] { return to_glm(inputs.point(10)); });
	pass(state, in, glm::vec3(),
	     [](const glm::vec3& v, glm::vec3& out) { out = glm::normalize(v); });
}
BENCHMARK(fast_normalize_ours)->Name("fast_normalize/ours");
BENCHMARK(normalize_full)->Name("fast_normalize/full_root");
BENCHMARK(normalize_glm)->Name("fast_normalize/glm");

void point_by_frame_ours(benchmark::State& state) {
	Inputs inputs;
	const xylMatrix_frame frame = inputs.frame(10);
	pass(state, points(), xylVec3{},
	     [&](const xylVec3& in, xylVec3& out) { out = frame.transform_point(in); });
}
void point_by_frame_glm(benchmark::State& state) {
	Inputs inputs;
	const xylMatrix_frame f = inputs.frame(10);
	const glm::mat4 matrix(glm::vec4(to_glm(f.s), 0), glm::vec4(to_glm(f.f), 0),
	                       glm::vec4(to_glm(f.u), 0), glm::vec4(to_glm(f.origin), 1));
	const auto in = inputs.array(point_count, [&] { return to_glm(inputs.point(10)); });
	pass(state, in, glm::vec3(),
	     [&](const glm::vec3& v, glm::vec3& out) { out = glm::vec3(matrix * glm::vec4(v, 1)); });
}
void point_by_frame_plain(benchmark::State& state) {
	Inputs inputs;
	const auto frame = to_plain(inputs.frame(10));
	const auto in = inputs.array(point_count, [&] { return to_plain(inputs.point(10)); });
	pass(state, in, plain::Vec<float>(),
	     [&](const auto& v, auto& out) { out = plain::transform_point(frame, v); });
}
BENCHMARK(point_by_frame_ours)->Name("point_by_frame/ours");
BENCHMARK(point_by_frame_glm)->Name("point_by_frame/glm");
BENCHMARK(point_by_frame_plain)->Name("point_by_frame/plain");

template <typename Make> auto rotations(Make make) {
	Inputs inputs;
	return inputs.array(input_count, [&] { return make(inputs.rotation()); });
}

void matrix_of_quaternion_ours(benchmark::State& state) {
	pass(state, rotations([](xylQuaternion q) { return q; }), xylMat3::identity(),
	     [](const xylQuaternion& q, xylMat3& out) { xylQuaternion::mat3_from_quaternion(out, q); });
}
void matrix_of_quaternion_glm(benchmark::State& state) {
	pass(state, rotations([](xylQuaternion q) { return glm::quat(q.w, q.x, q.y, q.z); }),
	     glm::mat3(), [](const glm::quat& q, glm::mat3& out) { out = glm::mat3_cast(q); });
}
void matrix_of_quaternion_eigen(benchmark::State& state) {
	pass(state, rotations([](xylQuaternion q) { return Eigen::Quaternionf(q.w, q.x, q.y, q.z); }),
	     Eigen::Matrix3f(Eigen::Matrix3f::Identity()),
	     [](const Eigen::Quaternionf& q, Eigen::Matrix3f& out) { out = q.toRotationMatrix(); });
}
BENCHMARK(matrix_of_quaternion_ours)->Name("matrix_of_quaternion/ours");
BENCHMARK(matrix_of_quaternion_glm)->Name("matrix_of_quaternion/glm");
BENCHMARK(matrix_of_quaternion_eigen)->Name("matrix_of_quaternion/eigen");

void quaternion_of_matrix_ours(benchmark::State& state) {
	pass<Any_order>(
		state, rotations([](xylQuaternion q) { return q.to_mat3(); }), xylQuaternion{},
		[](const xylMat3& m, xylQuaternion& out) { xylQuaternion::quaternion_from_mat3(out, m); });
}
void quaternion_of_matrix_glm(benchmark::State& state) {
	pass<Any_order>(
		state,
		rotations([](xylQuaternion q) { return glm::mat3_cast(glm::quat(q.w, q.x, q.y, q.z)); }),
		glm::quat(), [](const glm::mat3& m, glm::quat& out) { out = glm::quat_cast(m); });
}
void quaternion_of_matrix_eigen(benchmark::State& state) {
	pass<Any_order>(state, rotations([](xylQuaternion q) {
						return Eigen::Matrix3f(
							Eigen::Quaternionf(q.w, q.x, q.y, q.z).toRotationMatrix());
					}),
	                Eigen::Quaternionf(Eigen::Quaternionf::Identity()),
	                [](const Eigen::Matrix3f& m, Eigen::Quaternionf& out) { out = m; });
}
// What nobody can do without: one root, one division, and a product of what comes out.
void quaternion_of_matrix_floor(benchmark::State& state) {
	pass<Any_order>(state, rotations([](xylQuaternion q) { return q.to_mat3(); }), xylQuaternion{},
	                [](const xylMat3& m, xylQuaternion& out) {
						const __m128 row = m.s.lanes();
						const __m128 scale = _mm_div_ss(_mm_set_ss(0.5f), _mm_sqrt_ss(row));
						_mm_store_ps(&out.w, _mm_mul_ps(row, xyl_lanes::splat<0>(scale)));
					});
}
BENCHMARK(quaternion_of_matrix_ours)->Name("quaternion_of_matrix/ours");
BENCHMARK(quaternion_of_matrix_glm)->Name("quaternion_of_matrix/glm");
BENCHMARK(quaternion_of_matrix_eigen)->Name("quaternion_of_matrix/eigen");
BENCHMARK(quaternion_of_matrix_floor)->Name("quaternion_of_matrix/root_and_division");

struct Placed {
	xylBounding_box box;
	xylMatrix_frame frame;
};
std::vector<Placed> placed_boxes() {
	Inputs inputs;
	return inputs.array(1024, [&] { return Placed{inputs.box(3), inputs.frame(50)}; });
}

void bounds_cache_ours(benchmark::State& state) {
	pass(state, placed_boxes(), xylObject_bounds_cache{},
	     [](const Placed& in, xylObject_bounds_cache& out) { out.update(in.box, in.frame); });
}
struct Plain_placed {
	plain::Box<float> box;
	plain::Frame<float> frame;
};
std::vector<Plain_placed> plain_placed_boxes() {
	std::vector<Plain_placed> result;
	for (const Placed& in : placed_boxes()) {
		result.push_back(
			{{to_plain(in.box.min), to_plain(in.box.max), {}, in.box.radius}, to_plain(in.frame)});
	}
	return result;
}
// As calls, like ours.
[[gnu::noinline]] void plain_update(const Plain_placed& in, plain::Cache<float>& out) {
	out = plain::cache_of(in.box, in.frame);
}
[[gnu::noinline]] plain::Box<float> plain_transformed(const Plain_placed& in) {
	return plain::transformed_box(in.box, in.frame);
}
void bounds_cache_plain(benchmark::State& state) {
	pass(state, plain_placed_boxes(), plain::Cache<float>(), plain_update);
}
BENCHMARK(bounds_cache_ours)->Name("bounds_cache_update/ours");
BENCHMARK(bounds_cache_plain)->Name("bounds_cache_update/plain");

void transformed_box_ours(benchmark::State& state) {
	pass(state, placed_boxes(), xylBounding_box(), [](const Placed& in, xylBounding_box& out) {
		out = in.box.get_transformed_bounding_box(in.frame);
	});
}
void transformed_box_plain(benchmark::State& state) {
	pass(state, plain_placed_boxes(), plain::Box<float>(),
	     [](const Plain_placed& in, plain::Box<float>& out) { out = plain_transformed(in); });
}
struct Bullet_placed {
	btVector3 min, max;
	btTransform transform;
};
struct Bullet_bounds {
	btVector3 min, max;
};
void transformed_box_bullet(benchmark::State& state) {
	std::vector<Bullet_placed> boxes;
	for (const Placed& in : placed_boxes()) {
		const xylMatrix_frame& m = in.frame;
		const btMatrix3x3 basis(m.s.x, m.f.x, m.u.x, m.s.y, m.f.y, m.u.y, m.s.z, m.f.z, m.u.z);
		boxes.push_back({to_bullet(in.box.min), to_bullet(in.box.max),
		                 btTransform(basis, to_bullet(m.origin))});
	}
	pass(state, boxes, Bullet_bounds(), [](const Bullet_placed& in, Bullet_bounds& out) {
		btTransformAabb(in.min, in.max, 0, in.transform, out.min, out.max);
	});
}
BENCHMARK(transformed_box_ours)->Name("transformed_box/ours");
BENCHMARK(transformed_box_plain)->Name("transformed_box/plain");
BENCHMARK(transformed_box_bullet)->Name("transformed_box/bullet");

struct Segments {
	xylVec3 p0, p1, q0, q1;
};
struct Points {
	xylVec3 p, q;
};
std::vector<Segments> segments() {
	Inputs inputs;
	return inputs.array(input_count, [&] {
		return Segments{inputs.point(10), inputs.point(10), inputs.point(10), inputs.point(10)};
	});
}
void segment_pairs_ours(benchmark::State& state) {
	pass<Any_order>(state, segments(), Points(), [](const Segments& in, Points& out) {
		xylMath::shortest_segment_between_lines(in.p0, in.p1, in.q0, in.q1, out.p, out.q);
	});
}
struct Plain_segments {
	plain::Vec<float> p0, p1, q0, q1;
};
struct Plain_points {
	plain::Vec<float> p, q;
};
// As a call, like ours.
[[gnu::noinline]] void plain_segment_pair(const Plain_segments& in, Plain_points& out) {
	plain::closest_of_segments(in.p0, in.p1, in.q0, in.q1, out.p, out.q);
}
void segment_pairs_plain(benchmark::State& state) {
	std::vector<Plain_segments> in;
	for (const Segments& s : segments()) {
		in.push_back({to_plain(s.p0), to_plain(s.p1), to_plain(s.q0), to_plain(s.q1)});
	}
	pass<Any_order>(state, in, Plain_points(), plain_segment_pair);
}
BENCHMARK(segment_pairs_ours)->Name("segment_pairs/ours");
BENCHMARK(segment_pairs_plain)->Name("segment_pairs/plain");

} // namespace
