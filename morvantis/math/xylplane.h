// Planes, and tests of points against lines and triangles.
#pragma once

#include <morvantis/math/xylvec3.h>

// A point on the plane and its unit normal; the positive side is the inside for xylFrustum. Nothing
// normalises the normal or tests it. Threads: a value; nothing here allocates or reports.
struct MORVANTIS_API xylPlane {
	// Leaves both vectors unset; xylPlane{} zeroes them.
	xylPlane() = default;
	xylPlane(const xylVec3& point_value, const xylVec3& normal_value)
		: point(point_value), normal(normal_value) {}

	// `p` moved along the normal onto the plane.
	// kept: by way of the normalised direction from `point` to `p` instead of one dot product, so
	// the result carries the error of fast_normalize(), and a `p` farther than 1.8e19 gives NaN.
	xylVec3 project_point(const xylVec3& p) const;

	// All six components differ by strictly less than `eps`; NaN is near nothing.
	bool nearly_equals(const xylPlane& other, float eps) const;

	// The stored form, 32 bytes at the buffer's cursor: x, y, z and 1 of both vectors. Reading
	// tests nothing and takes the fourth floats as they stand.
	void write_data(xylBuffer& buffer) const;
	void read_data(xylBuffer& buffer);

	xylVec3 point, normal;
};
static_assert(sizeof(xylPlane) == 32);

// plane.project_point(p).
MORVANTIS_API xylVec3 xylPoint_projection_on_plane(const xylPlane& plane, const xylVec3& p);

// Whether `p1` and `p2` lie on the same side of the line through `a` and `b`, as seen in the plane
// of the three first ones. A point on the line is on the same side as any other, and with a = b all
// are.
MORVANTIS_API bool xylIs_points_in_same_side_of_line(const xylVec3& p1, const xylVec3& p2,
                                                     const xylVec3& a, const xylVec3& b);

// Seen from above, in X and Y only: 1 if `p` is to the right of the way from `a` to `b`, -1 to the
// left, 0 within `eps` of the line. `eps` is measured as distance times |b - a|; NaN gives 0.
MORVANTIS_API int xylPoint_position_according_to_line(const xylVec3& p, const xylVec3& a,
                                                      const xylVec3& b, float eps);

// Whether `p`, which need not lie in the plane of the triangle, is over it; edges belong to it.
MORVANTIS_API bool xylPoint_inside_triangle(const xylVec3& a, const xylVec3& b, const xylVec3& c,
                                            const xylVec3& p);
