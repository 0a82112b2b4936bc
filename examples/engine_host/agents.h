// The small world of this engine: agents that wander about a square, on foot or on wheels.
#pragma once

#include "../shared/snapshot.h"

#include <morvantis/core/xylrandom_generator.h>
#include <morvantis/math/xylbounding_box.h>
#include <morvantis/math/xylmatrix_frame.h>

#include <vector>

enum class Agent_shape { capsule, box };

struct Agent {
	int id;        // from 0
	char name[16]; // zero-terminated, at most largest_name_size long
	Agent_shape shape;
	xylVec3 position; // metres; on the ground
	xylVec3 velocity; // metres a second
	xylVec3 heading;  // where it looks: a unit vector of the plane
	float spin;       // tangent of half the angle that it turns in a tick
	int health;       // 0..100

	// Side, forward (the heading), up, and the position.
	xylMatrix_frame frame() const;
	// In the space of the frame.
	xylBounding_box box() const;
};

// The same for the same seed on every machine: nothing here but sums, products, divisions and
// square roots, which every machine rounds alike. Sine and cosine are not among them.
class World : public Sent_world {
public:
	static constexpr float half_width = 44.0f;       // of the square, metres
	static constexpr float tick_seconds = 1.0f / 50; // what Sent_world::time() counts

	World(int agent_count, unsigned int seed);
	void step() override;

	const std::vector<Agent>& agents() const { return agents_; }
	const Snapshot& snapshot() const override { return snapshot_; }

private:
	void wander(Agent& agent);
	void tell();

	xylRandom_generator random_;
	std::vector<Agent> agents_;
	Snapshot snapshot_; // of the agents as they stand
};
