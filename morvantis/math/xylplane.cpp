#include <morvantis/math/xylplane.h>

namespace {

// Whether the first three lanes of `a` and `b` differ by strictly less than `eps`.
bool differ_by_less(const xylVec3& a, const xylVec3& b, __m128 eps) {
	const __m128 apart = xyl_lanes::absolute(_mm_sub_ps(a.lanes(), b.lanes()));
	return (_mm_movemask_ps(_mm_cmplt_ps(apart, eps)) & 7) == 7;
}

} // namespace

xylVec3 xylPlane::project_point(const xylVec3& p) const {
	const xylVec3 way = p - point;
	xylVec3 direction = way;
	direction.fast_normalize();
	const float t = way.length() * direction.dot(normal);
	return p - normal * t;
}

bool xylPlane::nearly_equals(const xylPlane& other, float eps) const {
	const __m128 border = _mm_set1_ps(eps);
	return differ_by_less(point, other.point, border) &&
	       differ_by_less(normal, other.normal, border);
}

xylVec3 xylPoint_projection_on_plane(const xylPlane& plane, const xylVec3& p) {
	return plane.project_point(p);
}

bool xylIs_points_in_same_side_of_line(const xylVec3& p1, const xylVec3& p2, const xylVec3& a,
                                       const xylVec3& b) {
	const xylVec3 line = b - a;
	return line.cross(p1 - a).dot(line.cross(p2 - a)) >= 0;
}

int xylPoint_position_according_to_line(const xylVec3& p, const xylVec3& a, const xylVec3& b,
                                        float eps) {
	const float c = (b.y - a.y) * (p.x - a.x) - (p.y - a.y) * (b.x - a.x);
	if (c > eps) return 1;
	return c < -eps ? -1 : 0;
}

bool xylPoint_inside_triangle(const xylVec3& a, const xylVec3& b, const xylVec3& c,
                              const xylVec3& p) {
	return xylIs_points_in_same_side_of_line(p, a, b, c) &&
	       xylIs_points_in_same_side_of_line(p, b, a, c) &&
	       xylIs_points_in_same_side_of_line(p, c, a, b);
}
