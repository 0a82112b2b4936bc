#include "world.h"

#include <morvantis/core/xylreport.h>

#include <cmath>

// Nothing here but sums, products and square roots, which every machine rounds alike. Sine and
// cosine are not among them: they differ in the last digit from one run-time to the next.

namespace {

void move(float& position, float& velocity, float low, float high) {
	position += velocity;
	if (position < low || position > high) {
		velocity = -velocity;
		position = position < low ? low : high;
	}
}

// Turns q by a small rotation and brings its length back to 1.
void turn(float (&q)[4], const float (&spin)[3]) {
	const auto [w, x, y, z] = q;
	q[0] = w - (x * spin[0] + y * spin[1] + z * spin[2]);
	q[1] = x + (w * spin[0] + y * spin[2] - z * spin[1]);
	q[2] = y + (w * spin[1] + z * spin[0] - x * spin[2]);
	q[3] = z + (w * spin[2] + x * spin[1] - y * spin[0]);
	const float length = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
	for (float& component : q) component /= length;
}

} // namespace

World::World(int agent_count, unsigned int seed) {
	random_.set_seed(seed);
	for (int i = 0; i < agent_count; ++i) {
		Sent_agent agent{};
		Motion motion{};
		for (float& component : agent.position)
			component = random_.random_float_ranged(0, world_height);
		for (float& component : motion.velocity) component = random_.random_float_ranged(-2, 2);
		for (float& component : motion.spin) component = random_.random_float_ranged(-0.1f, 0.1f);
		agent.orientation[0] = 1;
		agent.health = 100;
		xyl_snprintf(agent.name, sizeof(agent.name), "unit %d", i);
		now_.agents.push_back(agent);
		motions_.push_back(motion);
	}
}

void World::step() {
	++tick_;
	for (size_t i = 0; i < now_.agents.size(); ++i) {
		Sent_agent& agent = now_.agents[i];
		Motion& motion = motions_[i];
		move(agent.position[0], motion.velocity[0], -world_half_width, world_half_width);
		move(agent.position[1], motion.velocity[1], -world_half_width, world_half_width);
		move(agent.position[2], motion.velocity[2], 0, world_height);
		turn(agent.orientation, motion.spin);
		agent.health = random_.random_int_ranged(0, 100);
	}
	now_.event_size = random_.random_int_ranged(0, event_capacity);
	for (int i = 0; i < now_.event_size; ++i) {
		now_.event[i] = static_cast<unsigned char>(random_.random_int());
	}
}
