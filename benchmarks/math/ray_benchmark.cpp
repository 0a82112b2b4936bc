// Picking: one ray after the other against one shape each. Boxes are hit by half of the rays,
// spheres by a third, triangles by one in 24.

#include "inputs.h"
#include "peers.h"
#include "plain_queries.h"

#include <benchmark/benchmark.h>
#include <glm/glm.hpp>
#define GLM_ENABLE_EXPERIMENTAL
#include <glm/gtx/intersect.hpp>

namespace {

plain::Ray<float> to_plain(const xylRay& ray) {
	return {to_plain(ray.origin), to_plain(ray.direction), ray.max_distance};
}

struct Shot {
	xylRay ray;
	xylVec3 a, b, c;  // a triangle
	xylVec3 min, max; // a box
	float radius;
};
struct Plain_shot {
	plain::Ray<float> ray;
	plain::Vec<float> a, b, c, min, max;
	float radius;
};
struct Glm_shot {
	glm::vec3 origin, direction, a, b, c, min, max;
	float radius;
};

std::vector<Shot> shots() {
	Inputs inputs;
	return inputs.array(input_count, [&] {
		const xylVec3 origin = inputs.point(20);
		const xylVec3 middle = inputs.point(5);
		const xylRay ray(origin, middle - origin + inputs.point(4), false);
		const xylVec3 half(3, 3, 3);
		const xylVec3 a = middle + inputs.point(4);
		return Shot{ray,      a, middle + inputs.point(4), middle + inputs.point(4), a - half,
		            a + half, 3};
	});
}
std::vector<Plain_shot> plain_shots() {
	std::vector<Plain_shot> result;
	for (const Shot& s : shots()) {
		result.push_back({to_plain(s.ray), to_plain(s.a), to_plain(s.b), to_plain(s.c),
		                  to_plain(s.min), to_plain(s.max), s.radius});
	}
	return result;
}
std::vector<Glm_shot> glm_shots() {
	std::vector<Glm_shot> result;
	for (const Shot& s : shots()) {
		result.push_back({to_glm(s.ray.origin), to_glm(s.ray.direction), to_glm(s.a), to_glm(s.b),
		                  to_glm(s.c), to_glm(s.min), to_glm(s.max), s.radius});
	}
	return result;
}

template <typename In, typename Call>
void shoot(benchmark::State& state, const std::vector<In>& in, Call call) {
	Any_order order(in.size());
	for (auto _ : state) {
		order.next_pass();
		int hits = 0;
		for (std::size_t i = 0; i < in.size(); ++i) hits += call(in[order[i]]);
		benchmark::DoNotOptimize(hits);
	}
	state.SetItemsProcessed(state.iterations() * static_cast<long>(in.size()));
}

void box_ours(benchmark::State& state) {
	shoot(state, shots(),
	      [&](const Shot& s) { return s.ray.intersects_with_bounding_box_simple(s.min, s.max); });
}
[[gnu::noinline]] bool plain_box(const plain::Ray<float>& ray, plain::Vec<float> min,
                                 plain::Vec<float> max) {
	float near, far;
	return plain::slabs(ray, min, max, near, far);
}
void box_plain(benchmark::State& state) {
	shoot(state, plain_shots(),
	      [&](const Plain_shot& s) { return plain_box(s.ray, s.min, s.max); });
}
[[gnu::noinline]] bool glm_box(const Glm_shot& s, const glm::vec3& min, const glm::vec3& max) {
	const glm::vec3 inverse = 1.0f / s.direction;
	const glm::vec3 a = (min - s.origin + 1e-6f) * inverse;
	const glm::vec3 b = (max - s.origin + 1e-6f) * inverse;
	const glm::vec3 low = glm::min(a, b);
	const glm::vec3 high = glm::max(a, b);
	const float near = glm::max(glm::max(low.x, low.y), low.z);
	const float far = glm::min(glm::min(high.x, high.y), high.z);
	return far >= 0 && near <= far;
}
void box_glm(benchmark::State& state) {
	shoot(state, glm_shots(), [&](const Glm_shot& s) { return glm_box(s, s.min, s.max); });
}
BENCHMARK(box_ours)->Name("ray_against_box/ours");
BENCHMARK(box_plain)->Name("ray_against_box/plain");
BENCHMARK(box_glm)->Name("ray_against_box/glm");

void triangle_ours(benchmark::State& state) {
	shoot(state, shots(), [](const Shot& s) {
		xylVec3 point;
		const bool hit = s.ray.intersect_with_triangle(s.a, s.b, s.c, point) > 0;
		benchmark::DoNotOptimize(point);
		return hit;
	});
}
[[gnu::noinline]] float plain_triangle(const Plain_shot& s, plain::Vec<float>& point) {
	return plain::hit_triangle(s.ray, s.a, s.b, s.c, point);
}
void triangle_plain(benchmark::State& state) {
	shoot(state, plain_shots(), [](const Plain_shot& s) {
		plain::Vec<float> point;
		const bool hit = plain_triangle(s, point) > 0;
		benchmark::DoNotOptimize(point);
		return hit;
	});
}
[[gnu::noinline]] bool glm_triangle(const Glm_shot& s, glm::vec3& point) {
	glm::vec2 where;
	float distance;
	const bool hit =
		glm::intersectRayTriangle(s.origin, s.direction, s.a, s.b, s.c, where, distance) &&
		distance > 0;
	if (hit) point = s.origin + s.direction * distance;
	return hit;
}
void triangle_glm(benchmark::State& state) {
	shoot(state, glm_shots(), [](const Glm_shot& s) {
		glm::vec3 point;
		const bool hit = glm_triangle(s, point);
		benchmark::DoNotOptimize(point);
		return hit;
	});
}
BENCHMARK(triangle_ours)->Name("ray_against_triangle/ours");
BENCHMARK(triangle_plain)->Name("ray_against_triangle/plain");
BENCHMARK(triangle_glm)->Name("ray_against_triangle/glm");

void sphere_ours(benchmark::State& state) {
	shoot(state, shots(), [](const Shot& s) {
		xylVec3 point;
		const bool hit = s.ray.intersect_with_sphere(s.a, s.radius, point);
		benchmark::DoNotOptimize(point);
		return hit;
	});
}
[[gnu::noinline]] bool plain_sphere(const Plain_shot& s, plain::Vec<float>& point) {
	return plain::hit_sphere(s.ray, s.a, s.radius, point);
}
void sphere_plain(benchmark::State& state) {
	shoot(state, plain_shots(), [](const Plain_shot& s) {
		plain::Vec<float> point;
		const bool hit = plain_sphere(s, point);
		benchmark::DoNotOptimize(point);
		return hit;
	});
}
[[gnu::noinline]] bool glm_sphere(const Glm_shot& s, glm::vec3& point) {
	float distance;
	const bool hit =
		glm::intersectRaySphere(s.origin, s.direction, s.a, s.radius * s.radius, distance);
	if (hit) point = s.origin + s.direction * distance;
	return hit;
}
void sphere_glm(benchmark::State& state) {
	shoot(state, glm_shots(), [](const Glm_shot& s) {
		glm::vec3 point;
		const bool hit = glm_sphere(s, point);
		benchmark::DoNotOptimize(point);
		return hit;
	});
}
BENCHMARK(sphere_ours)->Name("ray_against_sphere/ours");
BENCHMARK(sphere_plain)->Name("ray_against_sphere/plain");
BENCHMARK(sphere_glm)->Name("ray_against_sphere/glm");

} // namespace
