// Convex outlines on the ground: hulls of points, tests against points, each other and the shadows
// of boxes.
#pragma once

#include <morvantis/math/xylbounding_box.h>
#include <morvantis/math/xylvec2.h>
#include <morvantis/memory/xylarray.h>

struct xylColor;

// A convex hull in the XY plane; z is ignored throughout.
//
// The corners run counter-clockwise seen from +Z, without repeated or collinear ones. Fewer than
// three of them are no polygon (is_valid() is false), but every operation takes such ones too:
//   input without points       -> no corners, both rectangle corners (0, 0)
//   one point                  -> no corners, rectangular_min FLT_MAX, rectangular_max -FLT_MAX
//   one point, several times   -> the point twice (kept)
//   points on one line         -> its two ends
// Results are single precision steps in a fixed order; docs/geometry.md has what comes of numbers
// that are not finite.
//
// A hull is built once and kept long: its memory is exact. Threads: a value; only debug_render()
// touches anything else. Only initialize() and copying allocate.
class MORVANTIS_API xylConvex_polygon {
public:
	// Empty, both rectangle corners (0, 0).
	xylConvex_polygon() = default;
	xylConvex_polygon(const xylConvex_polygon& other) = default;
	xylConvex_polygon& operator=(const xylConvex_polygon& other) = default;

	// The hull of all points of `input`, which are left sorted by x, then y. `input` may be
	// `points` of this polygon. A count of 0 or less gives an empty polygon. O(n log n).
	void initialize(xylArray<xylVec2>& input);
	void initialize(xylVec2* input, int count);

	// Whether there are at least three corners.
	bool is_valid() const { return points.size() >= 3; }

	// Whether `p` lies inside; not on the border. An empty polygon holds every point.
	bool interior_check(const xylVec2& p) const;
	// Whether every corner of `other` passes interior_check(): true for an empty `other`.
	bool convex_poly_inclusion_check(const xylConvex_polygon& other) const;

	// 0 for fewer than three corners.
	float get_area() const;
	// The mean of the corners, not the centroid of the area: many corners on one side pull it
	// there. Not a number for an empty polygon.
	xylVec2 get_center_pos() const;
	const xylVec2& get_rectangular_min() const { return rectangular_min; }
	const xylVec2& get_rectangular_max() const { return rectangular_max; }

	// Stores the point of the border nearest to `p`, inside or outside, and returns its distance.
	// The earlier edge wins a tie. FLT_MAX, with `out` left alone, where no distance is less than
	// that: for an empty polygon and for points too far away.
	float get_closest_boundary_position(const xylVec2& p, xylVec2& out) const;

	// Whether the polygons overlap; touching counts. The separating axes tried are the normals of
	// the edges, and of degenerate polygons there are no others: two points collide anywhere, as
	// do two segments on one line. Of empty polygons two collide, and one and another shape don't.
	// An edge too long to be squared in float separates everything.
	bool check_collision_with_convex_poligon(const xylConvex_polygon& other) const;
	// The same against the shadow on the ground of a box under `frame`. Allocates nothing.
	bool check_collision_with_transformed_bounding_box_2d(const xylBounding_box& box,
	                                                      const xylMatrix_frame& frame) const;

	// Adds the edges to the debug records of the current frame, 0.5 above the ground, as
	// add_debug_line() does. The library must be initialised: there are no records otherwise.
	// Needs xylcolor.h.
	void debug_render(xylColor color, bool selector, float duration) const;

	// --- Data, written by initialize()

	xylArray<xylVec2> points; // the corners
	xylVec2 rectangular_min{0, 0};
	xylVec2 rectangular_max{0, 0};

private:
	// The order of sort(): by x, then by y.
	static bool xy_comparator(const xylVec2& a, const xylVec2& b);
	// Not-a-numbers go to both ends.
	static void sort(xylArray<xylVec2>& input);
	static void sort(xylVec2* input, int count);

	// Whether the projections of `a` and `b` onto `axis` lie apart; touching ones do not.
	bool is_axis_seperating(const xylVec2& axis, const xylConvex_polygon& a,
	                        const xylConvex_polygon& b) const;
};
