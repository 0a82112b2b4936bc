// A convex volume of six planes: what is seen, and what lies inside an oriented box.
#pragma once

#include <morvantis/math/xylobject_bounds_cache.h>
#include <morvantis/math/xylplane.h>

enum xylFrustum_check_result : int {
	frustum_outside = 0,    // fully outside
	frustum_inside = 1,     // fully inside
	frustum_intersects = 2, // partly inside
};

// All normals point inwards: p is on the inner side of plane i where its signed distance
// d(i, p) = (p − point_i)·normal_i is at least 0. Normals are expected to be of unit length, and
// nothing normalises them.
//
// The box checks first hold the bounding sphere against the planes, and hold the corners only
// against planes that the sphere straddles. Both are exact answers about planes, not about volumes:
// a shape beyond an edge of the frustum may be called partly inside.
//
// kept: the operations called encloses_* mean "not found to be outside": partly inside is true.
// A NaN sphere is outside; a NaN corner is on no plane's inner side. Threads: a value; nothing
// allocates or reports.
struct MORVANTIS_API xylFrustum {
	static constexpr int near_plane = 0;   // crosses the forward axis on the observer's side
	static constexpr int far_plane = 1;    // farthest
	static constexpr int left_plane = 2;   // on the negative side axis
	static constexpr int right_plane = 3;  // on the positive side axis
	static constexpr int top_plane = 4;    // on the positive up axis
	static constexpr int bottom_plane = 5; // on the negative up axis

	// Copies six planes, in the order above.
	void set_planes(xylPlane* planes);
	// The frustum of a box, from its eight corners in tip order (xylBounding_box) under a
	// right-handed frame; points 6 and 7 are not looked at. Normals by fast_normalize(): an edge of
	// no length makes those beside it zero. Fourth floats of `point` come with the points, those of
	// `normal` are FLT_MAX.
	void generate_from_bounding_box_points(const xylVec3* points);

	// `box` in the space of `frame`. The sphere's radius is the greatest of |(s + f + u)·radius| by
	// component; corners are made only where the sphere doesn't decide.
	xylFrustum_check_result check_bounding_box(const xylBounding_box& box,
	                                           const xylMatrix_frame& frame) const;
	// `box` in the world already.
	xylFrustum_check_result check_bounding_box_identity_frame(const xylBounding_box& box) const;
	xylFrustum_check_result check_bounds_cache(const xylObject_bounds_cache& cache) const;
	// kept: the first plane that the sphere straddles decides for "partly inside", though a later
	// one may have it outside.
	xylFrustum_check_result check_sphere(const xylVec3& center, float radius) const;
	// Four corners in any order.
	xylFrustum_check_result check_quad(const xylVec3* points) const;

	bool encloses_bounding_box(const xylObject_bounds_cache& cache) const;
	bool encloses_bounding_box_identity_frame(const xylBounding_box& box) const;
	bool encloses_quad(const xylVec3* points) const;
	// Coarse: accepts a box that lies up to its whole diagonal outside.
	bool encloses_check_global_bounds(const xylVec3& min, const xylVec3& max) const;

	// Corners, each the point where three planes meet. False if any three of them don't meet in a
	// point; the others are written all the same, with FLT_MAX as fourth float.
	//   near face: 0 top right, 1 top left, 2 bottom right, 3 bottom left
	//   box:       0 near top right, 1 far bottom left, 2 near bottom right, 3 near bottom left,
	//              4 far top right, 5 far top left, 6 far bottom right, 7 near top left
	// kept: 1 and 7 of the box are swapped against the natural sequence.
	bool get_global_frustum_near_plane_points(xylVec3* out) const;
	bool get_global_frustum_box_points(xylVec3* out) const;
	bool get_global_frustum_box_points_with_custom_near_plane(xylVec3* out,
	                                                          xylPlane near_plane) const;

	// kept: makes the eight corners and drops them; nothing is drawn, the argument is not used.
	void debug_display(float) const;

	xylPlane planes_[6];
};
