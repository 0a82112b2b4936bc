// The world form of one object's box, so that tests made each frame need no transform.
#pragma once

#include <morvantis/math/xylbounding_box.h>

// Threads: a value, written by update() on the owner's thread; nothing allocates or reports.
struct MORVANTIS_API xylObject_bounds_cache {
	// Leaves the numbers unset; xylObject_bounds_cache{} zeroes them.
	xylObject_bounds_cache() = default;

	// Takes the box of an object that stands at `frame`, always transformed: all fields but
	// radius_of_biggest_child_mesh, which is left alone.
	//
	// `box.radius` is scaled by the longest axis of the frame, and by exactly 1 where that is
	// within 1e-6 of it in its square. Corners of one axis that are NaN are passed over in `min`
	// and `max` unless the first of `tips` is.
	void update(const xylBounding_box& box, const xylMatrix_frame& frame);

	// radius_of_biggest_child_mesh where it was set (greater than 0), else `radius`.
	float get_valid_radius_of_biggest_child_mesh() const {
		return radius_of_biggest_child_mesh > 0 ? radius_of_biggest_child_mesh : radius;
	}

	xylVec3 min;    // over the tips, fourth float 1
	xylVec3 max;    // over the tips, fourth float 1
	xylVec3 center; // of the world box, not of the transformed sphere
	// World corners, fourth floats 1. kept: not in the order of xylBounding_box, but (max.x, max.y,
	// min.z), (min.x, max.y, min.z), max, min, (max.x, min.y, min.z), (min.x, max.y, max.z),
	// (max.x, min.y, max.z), (min.x, min.y, max.z).
	xylVec3 tips[8];
	float radius;                       // world bounding radius
	float radius_of_biggest_child_mesh; // the owner's; 0 or less means unset
};
