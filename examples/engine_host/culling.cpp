#include "culling.h"

#include "../shared/road.h"

#include <morvantis/core/xylrandom_generator.h>
#include <morvantis/math/xylfrustum.h>
#include <morvantis/math/xylray.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

constexpr int body_count = 4096;
constexpr int tick_count = 100;
constexpr int ray_count = 64; // a tick
constexpr float tick_seconds = 1.0f / 50;
constexpr float half_width = 100.0f; // of the cube that the boxes stay in, metres
constexpr float depth = 150.0f;      // to the camera's far plane

// Turns the frame about its own up axis by the angle whose half has the tangent `t`.
void turn(xylMatrix_frame& frame, float t) {
	const float cosine = (1 - t * t) / (1 + t * t), sine = 2 * t / (1 + t * t);
	frame.f = frame.f * cosine - frame.s * sine;
	frame.orthonormalize(); // brings the side axis along, and keeps rounding from adding up
}

// A camera at the origin that sees 90 degrees wide and high.
class Camera {
public:
	Camera() { aim(); }
	void step() {
		turn(frame_, 0.02f);
		aim();
	}
	const xylFrustum& frustum() const { return frustum_; }
	const xylVec3& eye() const { return frame_.origin; }

private:
	void aim() {
		const float h = std::sqrt(0.5f);
		const xylPlane local[6] = {{{0, 1, 0}, {0, 1, 0}},  {{0, depth, 0}, {0, -1, 0}},
		                           {{0, 0, 0}, {h, h, 0}},  {{0, 0, 0}, {-h, h, 0}},
		                           {{0, 0, 0}, {0, h, -h}}, {{0, 0, 0}, {0, h, h}}};
		xylPlane planes[6];
		for (int i = 0; i < 6; ++i) {
			planes[i] = {frame_.transform_point(local[i].point),
			             frame_.transform_direction(local[i].normal)};
		}
		frustum_.set_planes(planes);
	}

	xylMatrix_frame frame_ = xylMatrix_frame::identity();
	xylFrustum frustum_;
};

struct Body {
	xylMatrix_frame frame;
	xylBounding_box box; // in the space of the frame
	xylVec3 velocity;
	float spin;
	xylObject_bounds_cache cache;
	xylFrustum_check_result sight;
};

class Crowd {
public:
	Crowd() {
		for (Body& body : bodies_) {
			body.frame = xylMatrix_frame::identity();
			body.frame.origin = any_point(half_width);
			body.velocity = any_point(20);
			body.spin = random_.random_float_ranged(-0.05f, 0.05f);
			turn(body.frame, random_.random_float_ranged(-3, 3));
			const xylVec3 half = {any_size(), any_size(), any_size()};
			body.box.min = -half;
			body.box.max = half;
			body.box.radius = half.length();
		}
	}

	void move() {
		for (Body& body : bodies_) {
			turn(body.frame, body.spin);
			body.frame.origin += body.velocity * tick_seconds;
			bounce(body.frame.origin.x, body.velocity.x);
			bounce(body.frame.origin.y, body.velocity.y);
			bounce(body.frame.origin.z, body.velocity.z);
		}
	}
	void update_caches() {
		for (Body& body : bodies_) body.cache.update(body.box, body.frame);
	}
	// Adds to the counts of each result.
	void cull(const xylFrustum& frustum, int* counts) {
		for (Body& body : bodies_) {
			body.sight = frustum.check_bounds_cache(body.cache);
			++counts[body.sight];
		}
	}
	// Rays from the eye at the middles of bodies in sight.
	std::vector<xylRay> aim_rays(const xylVec3& eye) {
		std::vector<xylRay> rays;
		for (int tries = 0; tries < body_count && rays.size() < ray_count; ++tries) {
			const Body& body = bodies_[random_.random_int(body_count)];
			if (body.sight == frustum_inside) rays.push_back({eye, body.cache.center - eye, true});
		}
		return rays;
	}

	const std::vector<Body>& bodies() const { return bodies_; }

private:
	xylVec3 any_point(float reach) {
		const float x = random_.random_float_ranged(-reach, reach);
		const float y = random_.random_float_ranged(-reach, reach);
		return {x, y, random_.random_float_ranged(-reach, reach)};
	}
	float any_size() { return random_.random_float_ranged(0.3f, 2.0f); }
	static void bounce(float place, float& speed) {
		if (std::fabs(place) > half_width && place * speed > 0) speed = -speed;
	}

	xylRandom_generator random_;
	std::vector<Body> bodies_ = std::vector<Body>(body_count);
};

// How far along the ray the nearest world box in sight begins; negative for none.
float nearest_hit(const xylRay& ray, const std::vector<Body>& bodies) {
	float nearest = -1;
	for (const Body& body : bodies) {
		if (body.sight == frustum_outside) continue;
		if (!ray.intersects_with_bounding_box(body.cache, nullptr)) continue;
		xylVec3 entry;
		if (!ray.intersect_ray_bounding_box(body.cache.min, body.cache.max, &entry, nullptr,
		                                    true)) {
			continue;
		}
		const float distance = std::max(0.0f, (entry - ray.origin).dot(ray.direction));
		if (nearest < 0 || distance < nearest) nearest = distance;
	}
	return nearest;
}

// Whether the caches hold the bounds that the boxes give by themselves.
bool caches_hold(const std::vector<Body>& bodies) {
	return std::all_of(bodies.begin(), bodies.end(), [](const Body& body) {
		xylVec3 min, max;
		body.box.get_global_bounds(body.frame, min, max);
		return body.cache.min == min && body.cache.max == max;
	});
}

// Whether the corners bear out what the frustum said: those of a body inside lie inside of all
// planes, and none of a body outside lies inside of all.
bool sights_hold(const std::vector<Body>& bodies, const xylFrustum& frustum) {
	constexpr float rounding = 1e-3f;
	const auto depth_of = [&frustum](const xylVec3& corner) { // below the nearest plane
		float least = depth;
		for (const xylPlane& plane : frustum.planes_) {
			least = std::min(least, (corner - plane.point).dot(plane.normal));
		}
		return least;
	};
	return std::all_of(bodies.begin(), bodies.end(), [&](const Body& body) {
		return std::all_of(body.cache.tips, body.cache.tips + 8, [&](const xylVec3& corner) {
			if (body.sight == frustum_inside) return depth_of(corner) > -rounding;
			return body.sight == frustum_intersects || depth_of(corner) < rounding;
		});
	});
}

std::string per_tick(int count) { return std::to_string((count + tick_count / 2) / tick_count); }

} // namespace

Culling_round run_culling_round() {
	Crowd crowd;
	Camera camera;
	Stopwatch moving, updating, culling, picking;
	int counts[3] = {};
	int ray_total = 0;
	bool are_caches_right = true, are_sights_right = true, are_picks_right = true;
	for (int tick = 0; tick < tick_count; ++tick) {
		camera.step();
		moving.time([&] { crowd.move(); });
		updating.time([&] { crowd.update_caches(); });
		culling.time([&] { crowd.cull(camera.frustum(), counts); });
		const std::vector<xylRay> rays = crowd.aim_rays(camera.eye());
		std::vector<float> hits(rays.size());
		picking.time([&] {
			for (size_t i = 0; i < rays.size(); ++i) hits[i] = nearest_hit(rays[i], crowd.bodies());
		});
		ray_total += static_cast<int>(rays.size());
		// Each ray ends in the middle of a box that is in sight: it meets that one or one before
		// it.
		for (size_t i = 0; i < rays.size(); ++i) {
			are_picks_right &= hits[i] >= 0 && hits[i] <= rays[i].max_distance;
		}
		are_caches_right &= caches_hold(crowd.bodies());
		are_sights_right &= sights_hold(crowd.bodies(), camera.frustum());
	}

	Culling_round round;
	const auto add = [&round](const char* what, const std::string& amount, const Stopwatch& watch,
	                          bool is_right) {
		round.work.add(
			{what, amount, in_digits(watch.mean_microseconds(), 0), is_right ? "yes" : "NO"});
		round.is_sound &= is_right;
	};
	const std::string all = std::to_string(body_count);
	round.work.add({"boxes moved", all, in_digits(moving.mean_microseconds(), 0), "-"});
	add("bounds updated", all, updating, are_caches_right);
	add("culled", all, culling, are_sights_right && counts[frustum_inside] > 0);
	round.work.add({"  in sight", per_tick(counts[frustum_inside]), "-", "-"});
	round.work.add({"  partly", per_tick(counts[frustum_intersects]), "-", "-"});
	round.work.add({"  out of sight", per_tick(counts[frustum_outside]), "-", "-"});
	add("rays against those in sight", per_tick(ray_total), picking,
	    are_picks_right && ray_total > 0);
	return round;
}
