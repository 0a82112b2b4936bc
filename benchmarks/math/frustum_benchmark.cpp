// Culling: 16,384 bounds caches against a frustum. "mixed" is a scene around the observer, most of
// it out of sight; in "straddling" every box is near a plane and the corners decide. In "mixed" the
// observer looks elsewhere in every pass, as one does in a game; "standing" is the same scene seen
// alike over and over, so that a branch predictor learns what becomes of each object by heart.

#include "inputs.h"
#include "peers.h"
#include "plain_frustum.h"

#include <benchmark/benchmark.h>
#include <glm/glm.hpp>

namespace {

constexpr int cache_count = 16384;

// A camera at the origin, 90 degrees wide and high, that looks along the frame's forward axis.
xylFrustum camera(const xylMatrix_frame& frame) {
	const float h = xyl_lanes::square_root(0.5f);
	xylPlane planes[6] = {{{0, 1, 0}, {0, 1, 0}},  {{0, 100, 0}, {0, -1, 0}},
	                      {{0, 0, 0}, {h, h, 0}},  {{0, 0, 0}, {-h, h, 0}},
	                      {{0, 0, 0}, {0, h, -h}}, {{0, 0, 0}, {0, h, h}}};
	for (xylPlane& plane : planes) {
		plane.point = frame.transform_direction(plane.point);
		plane.normal = frame.transform_direction(plane.normal);
	}
	xylFrustum frustum;
	frustum.set_planes(planes);
	return frustum;
}

// Where the observer looks, pass after pass.
enum class View { standing, turning };
std::vector<xylFrustum> cameras(View view) {
	if (view == View::standing) return {camera(xylMatrix_frame::identity())};
	Inputs inputs;
	return inputs.array(256, [&] { return camera(inputs.frame(0)); });
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

// One pass holds all objects against one camera, the next against the next one.
template <typename Camera, typename In, typename Call>
void cull(benchmark::State& state, const std::vector<Camera>& cameras, const std::vector<In>& in,
          Call call) {
	std::size_t pass = 0;
	for (auto _ : state) {
		const Camera& camera = cameras[pass++ % cameras.size()];
		int seen = 0;
		for (const In& object : in) seen += static_cast<int>(call(camera, object)) != 0;
		benchmark::DoNotOptimize(seen);
	}
	state.SetItemsProcessed(state.iterations() * static_cast<long>(in.size()));
}

std::vector<plain::Frustum<float>> plain_cameras(View view) {
	std::vector<plain::Frustum<float>> result;
	for (const xylFrustum& frustum : cameras(view)) {
		plain::Frustum<float>& copy = result.emplace_back();
		for (int i = 0; i < 6; ++i) {
			copy.planes[i] = {to_plain(frustum.planes_[i].point),
			                  to_plain(frustum.planes_[i].normal)};
		}
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
struct Glm_frustum {
	Glm_plane planes[6];
};
std::vector<Glm_frustum> glm_cameras(View view) {
	std::vector<Glm_frustum> result;
	for (const xylFrustum& frustum : cameras(view)) {
		Glm_frustum& copy = result.emplace_back();
		for (int i = 0; i < 6; ++i) {
			copy.planes[i] = {to_glm(frustum.planes_[i].point), to_glm(frustum.planes_[i].normal)};
		}
	}
	return result;
}
std::vector<Glm_cache> glm_scene(bool straddling) {
	std::vector<Glm_cache> result;
	for (const xylObject_bounds_cache& cache : scene(straddling)) {
		Glm_cache& copy = result.emplace_back();
		copy.center = to_glm(cache.center);
		copy.radius = cache.radius;
		for (int i = 0; i < 8; ++i) copy.tips[i] = to_glm(cache.tips[i]);
	}
	return result;
}
[[gnu::noinline]] int check_glm(const Glm_frustum& frustum, const Glm_cache& cache) {
	const auto distance = [](const Glm_plane& plane, const glm::vec3& p) {
		return glm::dot(p - plane.point, plane.normal);
	};
	return check_in_two_phases(
		frustum.planes, cache, distance,
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
                                         const Plain_sphere& sphere) {
	return plain::check_sphere(frustum, sphere.center, sphere.radius);
}

void caches_ours(benchmark::State& state, View view, bool straddling) {
	cull(state, cameras(view), scene(straddling),
	     [](const auto& camera, const auto& cache) { return camera.check_bounds_cache(cache); });
}
void caches_plain(benchmark::State& state, View view, bool straddling) {
	cull(state, plain_cameras(view), plain_scene(straddling), check_plain);
}
void caches_glm(benchmark::State& state, View view, bool straddling) {
	cull(state, glm_cameras(view), glm_scene(straddling), check_glm);
}
#define CACHES(name, view, straddling)                                                             \
	BENCHMARK_CAPTURE(caches_ours, name, view, straddling)->Name(#name "/ours");                   \
	BENCHMARK_CAPTURE(caches_plain, name, view, straddling)->Name(#name "/plain");                 \
	BENCHMARK_CAPTURE(caches_glm, name, view, straddling)->Name(#name "/glm")
CACHES(check_bounds_cache_mixed, View::turning, false);
CACHES(check_bounds_cache_standing, View::standing, false);
CACHES(check_bounds_cache_straddling, View::standing, true);

void sphere_ours(benchmark::State& state, View view) {
	std::vector<Sphere> spheres;
	for (const auto& cache : scene(false)) spheres.push_back({cache.center, cache.radius});
	cull(state, cameras(view), spheres, [](const xylFrustum& camera, const Sphere& s) {
		return camera.check_sphere(s.center, s.radius);
	});
}
void sphere_plain(benchmark::State& state, View view) {
	std::vector<Plain_sphere> spheres;
	for (const auto& cache : scene(false)) {
		spheres.push_back({to_plain(cache.center), cache.radius});
	}
	cull(state, plain_cameras(view), spheres, check_plain_sphere);
}
#define SPHERES(name, view)                                                                        \
	BENCHMARK_CAPTURE(sphere_ours, name, view)->Name(#name "/ours");                               \
	BENCHMARK_CAPTURE(sphere_plain, name, view)->Name(#name "/plain")
SPHERES(check_sphere, View::turning);
SPHERES(check_sphere_standing, View::standing);

} // namespace
