// A frame in doubles, for places too far from the origin for float.
#pragma once

#include <morvantis/math/xylvec3d.h>

// The sixteen numbers of a xylMatrix_frame, in the same order.
struct xylMatrix_frame_d {
	xylVec3d s, f, u, origin;
};
static_assert(sizeof(xylMatrix_frame_d) == 128);
