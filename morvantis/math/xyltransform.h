// A rotation and a place: a frame without scale, in half the room.
#pragma once

#include <morvantis/math/xylquaternion.h>

struct xylTransform {
	xylQuaternion rotation;
	xylVec3 origin;
};
static_assert(sizeof(xylTransform) == 32);
