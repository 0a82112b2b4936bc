#include "agents.h"

#include <morvantis/core/xylreport.h>

#include <algorithm>
#include <cmath>

namespace {

// Turns a vector of the plane by the angle whose half has the tangent `t`: cosine and sine of the
// whole are quotients of it.
xylVec3 turned(const xylVec3& v, float t) {
	const float cosine = (1 - t * t) / (1 + t * t), sine = 2 * t / (1 + t * t);
	return {v.x * cosine - v.y * sine, v.x * sine + v.y * cosine, 0};
}

// Brings a heading back to length 1, which rounding takes it away from.
xylVec3 of_length_one(const xylVec3& v) {
	const float length = std::sqrt(v.x * v.x + v.y * v.y);
	return {v.x / length, v.y / length, 0};
}

} // namespace

xylMatrix_frame Agent::frame() const {
	xylMatrix_frame frame;
	frame.s = {heading.y, -heading.x, 0, 0};
	frame.f = {heading.x, heading.y, 0, 0};
	frame.u = {0, 0, 1, 0};
	frame.origin = {position.x, position.y, position.z, 1};
	return frame;
}

xylBounding_box Agent::box() const {
	const bool is_box = shape == Agent_shape::box;
	const xylVec3 half = is_box ? xylVec3(1.1f, 2.1f, 0.9f) : xylVec3(0.6f, 0.6f, 1.2f);
	xylBounding_box box;
	box.min = {-half.x, -half.y, 0};
	box.max = {half.x, half.y, 2 * half.z};
	box.center = {0, 0, half.z};
	box.radius = std::sqrt(half.x * half.x + half.y * half.y + half.z * half.z);
	return box;
}

World::World(int agent_count, unsigned int seed) {
	random_.set_seed(seed);
	for (int i = 0; i < agent_count; ++i) {
		Agent agent{};
		agent.id = i;
		agent.shape = i % 3 == 0 ? Agent_shape::box : Agent_shape::capsule;
		xyl_snprintf(agent.name, sizeof(agent.name),
		             agent.shape == Agent_shape::box ? "cart %d" : "unit %d", i);
		agent.position = {random_.random_float_ranged(-half_width, half_width),
		                  random_.random_float_ranged(-half_width, half_width), 0};
		agent.heading = of_length_one(
			{random_.random_float_ranged(-1, 1) + 1e-3f, random_.random_float_ranged(-1, 1), 0});
		agent.health = random_.random_int_ranged(40, 100);
		agents_.push_back(agent);
	}
	tell();
}

// Follows its heading, which it changes at random, and looks inwards at the border.
void World::wander(Agent& agent) {
	const float speed = agent.shape == Agent_shape::box ? 7.0f : 3.0f;
	if (random_.random_int(25) == 0) agent.spin = random_.random_float_ranged(-0.02f, 0.02f);
	agent.heading = of_length_one(turned(agent.heading, agent.spin));
	agent.velocity = agent.heading * speed;
	agent.position += agent.velocity * tick_seconds;
	const auto turn_inwards = [](float place, float& heading) {
		if (std::fabs(place) > half_width && place * heading > 0) heading = -heading;
	};
	turn_inwards(agent.position.x, agent.heading.x);
	turn_inwards(agent.position.y, agent.heading.y);
	if (random_.random_int(50) == 0) {
		agent.health = std::clamp(agent.health + random_.random_int_ranged(-9, 8), 1, 100);
	}
}

void World::step() {
	++tick_;
	for (Agent& agent : agents_) wander(agent);
	tell();
}

void World::tell() {
	snapshot_.agents.clear();
	for (const Agent& agent : agents_) {
		Sent_agent sent{};
		sent.position[0] = agent.position.x;
		sent.position[1] = agent.position.y;
		sent.position[2] = agent.position.z;
		// A turn from +Y to the heading about the up axis, by the half-angle formulas.
		const float cosine = agent.heading.y;
		sent.orientation[0] = std::sqrt(std::max(0.0f, (1 + cosine) / 2));
		sent.orientation[3] = std::sqrt(std::max(0.0f, (1 - cosine) / 2));
		if (agent.heading.x > 0) sent.orientation[3] = -sent.orientation[3];
		sent.health = agent.health;
		std::copy(std::begin(agent.name), std::end(agent.name), sent.name);
		snapshot_.agents.push_back(sent);
	}
}
