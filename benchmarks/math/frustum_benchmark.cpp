// Culling: 16,384 bounds caches against one frustum. "mixed" is a scene around the observer, most
// of it out of sight; in "straddling" every box is near a plane and the corners decide.

#include "inputs.h"
#include "plain_frustum.h"

#include <benchmark/benchmark.h>
#include <glm/glm.hpp>

namespace {

constexpr int cache_count = 16384;

// A camera at the origin that looks along +Y, 90 degrees wide and high.
xylFrustum camera() {
	const float h = xyl_lanes::square_root(0.5f);
	xylPlane planes[6] = {{{0, 1, 0}, {0, 1, 0}},  {{0, 100, 0}, {0, -1, 0}},
	                      {{0, 0, 0}, {h, h, 0}},  {{0, 0, 0}, {-h, h, 0}},
	                      {{0, 0, 0}, {0, h, -h}}, {{0, 0, 0}, {0, h, h}}};
	xylFrustum frustum;
	frustum.set_planes(planes);
	return frustum;
}

std::vector<xylObject_bounds_cache> scene(bool straddling) {
	Inputs inputs;
	std::vector<xylObject_bounds_cache> caches(cache_count);
	const float h = xyl_lanes::square_root(0.5f);
	for (xylObject_bounds_cache& cache : caches) {
		xylMatrix_frame frame = inputs.frame(100);
		if (straddling) { // on the left or the right plane, at some depth
			const float depth = inputs.between(10, 90);
			const float side = inputs.between(-1, 1) < 0 ? -1.0f : 1.0f;
			const float off = inputs.between(-2, 2);
			frame.origin = {side * (depth + off * h), depth - off * h, inputs.between(-5, 5), 1};
		}
		cache.update(inputs.box(3), frame);
	}
	return caches;
}

template <typename In, typename Call>
void cull(benchmark::State& state, const std::vector<In>& in, Call call) {
	for (auto _ : state) {
		int seen = 0;
		for (const In& cache : in) seen += static_cast<int>(call(cache)) != 0;
		benchmark::DoNotOptimize(seen);
	}
	state.SetItemsProcessed(state.iterations() * static_cast<long>(in.size()));
}

plain::Vec<float> to_plain(const xylVec3& v) { return {v.x, v.y, v.z}; }
plain::Frustum<float> plain_camera() {
	plain::Frustum<float> result;
	const xylFrustum frustum = camera();
	for (int i = 0; i < 6; ++i) {
		result.planes[i] = {to_plain(frustum.planes_[i].point),
		                    to_plain(frustum.planes_[i].normal)};
	}
	return result;
}
std::vector<plain::Cache<float>> plain_scene(bool straddling) {
	std::vector<plain::Cache<float>> result;
	for (const xylObject_bounds_cache& cache : scene(straddling)) {
		plain::Cache<float> copy = {
			to_plain(cache.min), to_plain(cache.max), to_plain(cache.center), {}, cache.radius};
		for (int i = 0; i < 8; ++i) copy.tips[i] = to_plain(cache.tips[i]);
		result.push_back(copy);
	}
	return result;
}

// The scalar steps of the two phases, corners only against planes that the sphere straddles.
template <typename Plane, typename Cache, typename Distance, typename Is_inner>
int check_in_two_phases(const Plane* planes, const Cache& cache, Distance distance,
                        Is_inner is_inner) {
	unsigned marked = 0;
	for (int i = 0; i < 6; ++i) {
		const float d = distance(planes[i], cache.center);
		if (!(d >= -cache.radius)) return 0;
		if (d < cache.radius) marked |= 1u << i;
	}
	int result = 1;
	for (int i = 0; i < 6; ++i) {
		if (!(marked >> i & 1)) continue;
		int inner = 0;
		for (const auto& tip : cache.tips) inner += is_inner(planes[i], tip);
		if (inner == 0) return 0;
		if (inner != 8) result = 2;
	}
	return result;
}

// As a user of glm would write it: decisions as ours but for rounding.
struct Glm_cache {
	glm::vec3 center, tips[8];
	float radius;
};
struct Glm_plane {
	glm::vec3 point, normal;
};
[[gnu::noinline]] int check_glm(const Glm_plane* planes, const Glm_cache& cache) {
	const auto distance = [](const Glm_plane& plane, const glm::vec3& p) {
		return glm::dot(p - plane.point, plane.normal);
	};
	return check_in_two_phases(
		planes, cache, distance,
		[&](const Glm_plane& plane, const glm::vec3& tip) { return distance(plane, tip) >= 0; });
}

// The library's own steps.
[[gnu::noinline]] int check_plain(const plain::Frustum<float>& frustum,
                                  const plain::Cache<float>& cache) {
	return check_in_two_phases(frustum.planes, cache, plain::distance<float>,
	                           [](const plain::Plane<float>& plane, plain::Vec<float> tip) {
								   const auto way = plain::fast_normalized(tip - plane.point);
								   return plain::dot(way, plane.normal) >= 0;
							   });
}
struct Sphere {
	xylVec3 center;
	float radius;
};
struct Plain_sphere {
	plain::Vec<float> center;
	float radius;
};
[[gnu::noinline]] int check_plain_sphere(const plain::Frustum<float>& frustum,
                                         const plain::Vec<float>& center, float radius) {
	return plain::check_sphere(frustum, center, radius);
}

void caches_ours(benchmark::State& state, bool straddling) {
	const xylFrustum frustum = camera();
	cull(state, scene(straddling),
	     [&](const auto& cache) { return frustum.check_bounds_cache(cache); });
}
void caches_plain(benchmark::State& state, bool straddling) {
	const auto frustum = plain_camera();
	cull(state, plain_scene(straddling),
	     [&](const auto& cache) { return check_plain(frustum, cache); });
}
void caches_glm(benchmark::State& state, bool straddling) {
	const xylFrustum frustum = camera();
	Glm_plane planes[6];
	const auto to_glm = [](const xylVec3& v) { return glm::vec3(v.x, v.y, v.z); };
	for (int i = 0; i < 6; ++i) {
		planes[i] = {to_glm(frustum.planes_[i].point), to_glm(frustum.planes_[i].normal)};
	}
	std::vector<Glm_cache> caches;
	for (const xylObject_bounds_cache& cache : scene(straddling)) {
		Glm_cache copy = {to_glm(cache.center), {}, cache.radius};
		for (int i = 0; i < 8; ++i) copy.tips[i] = to_glm(cache.tips[i]);
		caches.push_back(copy);
	}
	cull(state, caches, [&](const auto& cache) { return check_glm(planes, cache); });
}
BENCHMARK_CAPTURE(caches_ours, m, false)->Name("check_bounds_cache_mixed/ours");
BENCHMARK_CAPTURE(caches_plain, m, false)->Name("check_bounds_cache_mixed/plain");
BENCHMARK_CAPTURE(caches_glm, m, false)->Name("check_bounds_cache_mixed/glm");
BENCHMARK_CAPTURE(caches_ours, s, true)->Name("check_bounds_cache_straddling/ours");
BENCHMARK_CAPTURE(caches_plain, s, true)->Name("check_bounds_cache_straddling/plain");
BENCHMARK_CAPTURE(caches_glm, s, true)->Name("check_bounds_cache_straddling/glm");

void sphere_ours(benchmark::State& state) {
	const xylFrustum frustum = camera();
	std::vector<Sphere> spheres;
	for (const auto& cache : scene(false)) spheres.push_back({cache.center, cache.radius});
	cull(state, spheres, [&](const Sphere& s) { return frustum.check_sphere(s.center, s.radius); });
}
void sphere_plain(benchmark::State& state) {
	const auto frustum = plain_camera();
	std::vector<Plain_sphere> spheres;
	for (const auto& cache : scene(false))
		spheres.push_back({to_plain(cache.center), cache.radius});
	cull(state, spheres,
	     [&](const Plain_sphere& s) { return check_plain_sphere(frustum, s.center, s.radius); });
}
BENCHMARK(sphere_ours)->Name("check_sphere/ours");
BENCHMARK(sphere_plain)->Name("check_sphere/plain");

} // namespace
