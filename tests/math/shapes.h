// Shapes that several tests of this folder are about.
#pragma once

#include <morvantis/math/xylfrustum.h>
#include <morvantis/math/xylray.h>

// The box from (-10, 0, -10) to (10, 20, 10), looking along +Y; normals exactly of unit length.
inline xylFrustum box_frustum() {
	xylPlane planes[6] = {
		{{0, 0, 0}, {0, 1, 0}},   {{0, 20, 0}, {0, -1, 0}}, {{-10, 0, 0}, {1, 0, 0}},
		{{10, 0, 0}, {-1, 0, 0}}, {{0, 0, 10}, {0, 0, -1}}, {{0, 0, -10}, {0, 0, 1}},
	};
	xylFrustum frustum;
	frustum.set_planes(planes);
	return frustum;
}

// The square from -1 to 1 in Y and Z at x = 5, its front towards the origin.
inline zubQuad_data square(unsigned int flags = 0) {
	return {{{5, -1, -1}, {5, 1, -1}, {5, 1, 1}, {5, -1, 1}},
	        {-1, 0, 0},
	        {{0, 0, 1}, {0, -1, 0}, {0, 0, -1}, {0, 1, 0}},
	        flags};
}

// The square from 4 to 6 in X and -1 to 1 in Y at z = 0: a ray along X runs in its plane.
inline zubQuad_data floor_square() {
	return {{{4, -1, 0}, {6, -1, 0}, {6, 1, 0}, {4, 1, 0}},
	        {0, 0, 1},
	        {{0, 1, 0}, {-1, 0, 0}, {0, -1, 0}, {1, 0, 0}},
	        0};
}
