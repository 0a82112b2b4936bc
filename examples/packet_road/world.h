// The world that is sent: agents that tumble through space, the same on every machine for the same
// seed.
#pragma once

#include "../shared/snapshot.h"

#include <morvantis/core/xylrandom_generator.h>

class World : public Sent_world {
public:
	World(int agent_count, unsigned int seed);
	void step() override;
	const Snapshot& snapshot() const override { return now_; }

private:
	struct Motion {
		float velocity[3]; // metres a tick
		float spin[3];     // half radians a tick
	};

	xylRandom_generator random_; // gives the same numbers everywhere
	Snapshot now_;
	std::vector<Motion> motions_; // of the agents, in their order
};
