#include "watcher.h"

namespace {

constexpr float near_distance = 7, far_distance = 46; // metres
constexpr float half_width_tangent = 0.55f, half_height_tangent = 0.31f;
constexpr float step_tangent = 0.0011f; // of half the angle walked in a tick
constexpr int ticks_per_target = 40;

// The way from the agent's middle to its ends, along which a capsule stretches.
zubCapsule_data capsule_of(const Agent& agent) {
	const xylBounding_box box = agent.box();
	const xylVec3 up(0, 0, box.max.x);
	return {agent.position + up, agent.position + xylVec3(0, 0, box.max.z) - up, box.max.x};
}

// The ray in the space of an agent whose axes are orthonormal.
xylRay in_space_of(const xylMatrix_frame& frame, const xylRay& ray) {
	const auto local = [&](const xylVec3& v) {
		return xylVec3(v.dot(frame.s), v.dot(frame.f), v.dot(frame.u));
	};
	return {local(ray.origin - frame.origin), local(ray.direction), ray.max_distance, true};
}

// Whether the ray hits the agent, and at which distance.
bool hits(const xylRay& ray, const Agent& agent, float* distance) {
	const xylMatrix_frame frame = agent.frame();
	const xylBounding_box box = agent.box();
	xylObject_bounds_cache bounds{};
	bounds.update(box, frame);
	if (!ray.intersects_with_bounding_box(bounds, nullptr)) return false; // most end here
	if (agent.shape == Agent_shape::capsule) {
		xylVec3 nearest;
		float depth = 0; // of that point below the surface
		if (!ray.intersects_with_capsule(capsule_of(agent), nearest, depth)) return false;
		*distance = (nearest - ray.origin).length();
		return true;
	}
	const xylRay local = in_space_of(frame, ray);
	xylVec3 entry, exit;
	if (!local.intersect_ray_bounding_box(box.min, box.max, &entry, &exit, false)) return false;
	*distance = (entry - local.origin).length();
	return *distance <= ray.max_distance;
}

} // namespace

Watcher::Watcher() {
	frame_.origin = {-28, -24, 10, 1};
	face_the_middle();
}

void Watcher::step() {
	++steps_;
	constexpr float t = step_tangent;
	constexpr float cosine = (1 - t * t) / (1 + t * t), sine = 2 * t / (1 + t * t);
	const xylVec3 at = frame_.origin;
	frame_.origin = {at.x * cosine - at.y * sine, at.x * sine + at.y * cosine, at.z, 1};
	face_the_middle();
}

// Builds the axes and the six planes. generate_from_bounding_box_points() makes a frustum of a box
// in one call; this one has an apex, and normals whose last digit is the same on every processor.
void Watcher::face_the_middle() {
	xylMatrix_frame& at = frame_;
	xylVec3 f = xylVec3(0, 0, 1) - at.origin;
	f.normalize();
	xylVec3 s = f.cross(xylVec3(0, 0, 1));
	s.normalize();
	const xylVec3 u = s.cross(f);
	at.s = {s.x, s.y, s.z, 0};
	at.f = {f.x, f.y, f.z, 0};
	at.u = {u.x, u.y, u.z, 0};
	const auto side = [&](const xylVec3& inwards, float tangent) {
		xylVec3 normal = inwards + f * tangent;
		normal.normalize();
		return xylPlane(at.origin, normal);
	};
	xylPlane planes[6];
	planes[xylFrustum::near_plane] = {at.origin + f * near_distance, f};
	planes[xylFrustum::far_plane] = {at.origin + f * far_distance, -f};
	planes[xylFrustum::left_plane] = side(s, half_width_tangent);
	planes[xylFrustum::right_plane] = side(-s, half_width_tangent);
	planes[xylFrustum::top_plane] = side(-u, half_height_tangent);
	planes[xylFrustum::bottom_plane] = side(u, half_height_tangent);
	frustum_.set_planes(planes);
}

Sight Watcher::look(const World& world) const {
	Sight sight;
	for (const Agent& agent : world.agents()) {
		xylObject_bounds_cache bounds{};
		bounds.update(agent.box(), agent.frame());
		sight.checks.push_back(frustum_.check_bounds_cache(bounds));
		++sight.counts[sight.checks.back()];
	}
	pick(world, &sight);
	return sight;
}

// Looks at each agent that is fully inside in turn, for a while, and takes what stands in the way.
void Watcher::pick(const World& world, Sight* sight) const {
	std::vector<const Agent*> inside;
	for (const Agent& agent : world.agents()) {
		if (sight->checks[static_cast<size_t>(agent.id)] == frustum_inside)
			inside.push_back(&agent);
	}
	xylVec3 target(0, 0, 1);
	if (!inside.empty()) {
		const size_t turn = static_cast<size_t>(steps_ / ticks_per_target) * 7;
		target = inside[turn % inside.size()]->position + xylVec3(0, 0, 1);
	}
	sight->ray = xylRay(frame_.origin, target - frame_.origin, far_distance, false);
	for (const Agent& agent : world.agents()) {
		float distance = 0;
		if (!hits(sight->ray, agent, &distance)) continue;
		if (sight->picked >= 0 && distance >= sight->distance) continue;
		sight->picked = agent.id;
		sight->distance = distance;
	}
	sight->hit = sight->ray.origin + sight->ray.direction * sight->distance;
}
