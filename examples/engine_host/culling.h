// Thousands of boxes that fly about: their bounds kept, culled against a camera and picked by rays.
#pragma once

#include "../shared/table.h"

struct Culling_round {
	Table work{{"culling", "a tick", "us a tick", "as expected"}};
	bool is_sound = true; // every line of `work` that can be checked is as expected
};

// A hundred ticks. Each moves 4,096 boxes, brings their caches up to date, culls them against a
// camera that turns, and sends 64 rays from its eye at boxes that are in sight. What comes out is
// compared with what corner after corner says.
Culling_round run_culling_round();
