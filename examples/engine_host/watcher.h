// An observer who walks round the square and looks at its middle: culling and picking.
#pragma once

#include "agents.h"

#include <morvantis/math/xylfrustum.h>
#include <morvantis/math/xylray.h>

// What the watcher sees of the world as it stands.
struct Sight {
	std::vector<xylFrustum_check_result> checks; // of the agents, in their order
	int counts[3] = {};                          // of each result
	xylRay ray;                                  // the look at one of the agents
	int picked = -1;                             // what it hits first; -1 for nothing
	xylVec3 hit{};
	float distance = 0; // to the hit, metres
};

// Exact on every machine, as the world is.
class Watcher {
public:
	Watcher();
	void step();
	Sight look(const World& world) const;

	const xylMatrix_frame& frame() const { return frame_; }
	const xylFrustum& frustum() const { return frustum_; }

private:
	void face_the_middle();
	void pick(const World& world, Sight* sight) const;

	xylMatrix_frame frame_;
	xylFrustum frustum_;
	int steps_ = 0;
};
