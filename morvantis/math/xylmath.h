// Distances and closest points of segments, points, triangles and planes.
#pragma once

#include <morvantis/math/xylvec3.h>

// Segments are given by their two ends. Results that are computed have FLT_MAX as fourth float,
// ones that are copied are copied whole. Outputs may be the inputs. NaN in gives NaN out where
// nothing else is said. Threads: any; nothing allocates or reports.
namespace xylMath {

// Distance from `p` to the segment, 0 or more, by the lengths of the triangle's sides.
//
// A segment shorter than 0.01 on each axis counts as its nearer end. On the segment the result is 0
// or, by rounding, up to about a thousandth of its length.
MORVANTIS_API float shortest_dist_between_line_and_point(const xylVec3& a, const xylVec3& b,
                                                         const xylVec3& p);

// Closest points of two segments. One whose squared length is not greater than 1e-5 counts as its
// first point; if both are, the first points are copied.
MORVANTIS_API void shortest_segment_between_lines(const xylVec3& p0, const xylVec3& p1,
                                                  const xylVec3& q0, const xylVec3& q1,
                                                  xylVec3& out_p, xylVec3& out_q);
// The same with products and quotients in double.
MORVANTIS_API void shortest_segment_between_lines_precise(const xylVec3& p0, const xylVec3& p1,
                                                          const xylVec3& q0, const xylVec3& q1,
                                                          xylVec3& out_p, xylVec3& out_q);

// Closest point of the segment into `out_line`; `out_point` is a copy of `p`. One whose squared
// length is not greater than 1e-5 counts as a copy of `a`.
MORVANTIS_API void shortest_segment_between_line_and_point(const xylVec3& a, const xylVec3& b,
                                                           const xylVec3& p, xylVec3& out_line,
                                                           xylVec3& out_point);
// The same without that test: a segment of no length gives `a`.
MORVANTIS_API void shortest_segment_between_line_and_point_no_degenerate_check(
	const xylVec3& a, const xylVec3& b, const xylVec3& p, xylVec3& out_line, xylVec3& out_point);

// Weights of `a`, `b` and `c` (u, v, w, with the sum 1) that make the projection of `p` onto the
// plane of the triangle. A triangle without area gives numbers that are not finite.
MORVANTIS_API void get_barycentric_coords(const xylVec3& p, const xylVec3& a, const xylVec3& b,
                                          const xylVec3& c, float& u, float& v, float& w);

// Where the endless line through `a` and `b` meets the plane; the normal may have any length.
// kept: for a line parallel to the plane `parallel` is true and the result a copy of the normal,
// which is no point.
MORVANTIS_API xylVec3 find_plane_line_intersection_point_with_normal(const xylVec3& plane_point,
                                                                     const xylVec3& plane_normal,
                                                                     const xylVec3& a,
                                                                     const xylVec3& b,
                                                                     bool& parallel);

} // namespace xylMath
