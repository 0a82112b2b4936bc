// Boxes in the space of their owner, with the sphere around them.
#pragma once

#include <morvantis/math/xylmatrix_frame.h>

// Corners ("tip points") always stand in this order:
//   0 (min.x, min.y, min.z)   1 (max.x, max.y, max.z)
//   2 (min.x, max.y, min.z)   3 (max.x, max.y, min.z)
//   4 (min.x, min.y, max.z)   5 (max.x, min.y, max.z)
//   6 (min.x, max.y, max.z)   7 (max.x, min.y, min.z)
//
// A box as an accumulator starts with begin_relaxation() and takes any number of relax_with_*().
// Those touch `min` and `max` only (not even their fourth floats): `center` and `radius` are the
// owner's to set. A corner that is NaN widens nothing. Threads: a value; nothing allocates or
// reports.
struct MORVANTIS_API xylBounding_box {
	// Every number zero, fourth floats included: a box of no size at the origin, which is not
	// empty.
	xylBounding_box() { init_zero(); }
	void init_zero();

	// The empty box: min.x = 1e8 is greater than max.x = -1e8.
	void begin_relaxation();
	// The union with `other`, which adds nothing where other.min.x is greater than other.max.x.
	void relax_with_bounding_box(const xylBounding_box& other);
	// The union with the get_transformed_tip_points() of `box`, which adds nothing unless
	// box.max.x >= box.min.x.
	void relax_with_transformed_bounding_box(const xylBounding_box& box,
	                                         const xylMatrix_frame& frame);

	// Points on a face are enclosed; NaN is not.
	bool encloses_point(const xylVec3& p) const;

	// The eight corners; the fourth floats of `out` are left alone.
	void get_tip_points(xylVec3* out) const;
	// The eight corners in the frame's parent space, fourth floats 1.
	// kept: a frame within 0.0001 of the identity in each of its twelve numbers gives the corners
	// as they are.
	void get_transformed_tip_points(xylVec3* out, const xylMatrix_frame& frame) const;
	// The same for the box from `min` to `max`, always transformed, with FLT_MAX as fourth floats.
	static void get_transformed_tip_points(xylVec3* out, const xylVec3& min, const xylVec3& max,
	                                       const xylMatrix_frame& frame);

	// Bounds of the get_transformed_tip_points(), starting from 1e8 and -1e8: a box that lies
	// beyond those keeps them on that side.
	void get_global_bounds(const xylMatrix_frame& frame, xylVec3& out_min, xylVec3& out_max) const;
	// Bounds of the transformed box by its centre and extent, without the shortcut for the
	// identity; `center` and `radius` of the result are zero. An inverted box gives its bounds
	// nevertheless.
	xylBounding_box get_transformed_bounding_box(const xylMatrix_frame& frame) const;

	// Whether the boxes overlap; touching counts.
	static bool bounding_boxes_intersect(const xylBounding_box& a, const xylBounding_box& b);
	// Whether box 1 lies within box 2; touching counts.
	static bool box_inside_box(const xylVec3& min1, const xylVec3& max1, const xylVec3& min2,
	                           const xylVec3& max2);
	static bool point_inside_box(const xylVec3& p, const xylVec3& min, const xylVec3& max);
	// Whether the boxes overlap; touching counts. kept: the maximum of each comes first.
	static bool box_overlap_box(const xylVec3& max1, const xylVec3& min1, const xylVec3& max2,
	                            const xylVec3& min2);

	// Whether box `a` under `frame_a` lies fully inside box `b` under `frame_b`, as the frustum
	// made of the corners of b finds by check_bounding_box(): `a.center` and `a.radius` have their
	// say.
	static bool obb_inside_obb(const xylBounding_box& a, const xylMatrix_frame& frame_a,
	                           const xylBounding_box& b, const xylMatrix_frame& frame_b);

	// The stored form, 52 bytes at the buffer's cursor: x, y, z and 1 of the three vectors, then
	// the radius. Reading tests nothing and takes the fourth floats as they stand.
	void write_data(xylBuffer& buffer) const;
	void read_data(xylBuffer& buffer);

	xylVec3 min;    // lowest corner
	xylVec3 max;    // highest corner
	xylVec3 center; // centre of the bounding sphere
	float radius;   // radius of the bounding sphere
};
