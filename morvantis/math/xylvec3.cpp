#include <morvantis/math/xylvec3.h>

#include <morvantis/math/xylvec3d.h>

#include <ostream>

xylVec3::xylVec3(const xylVec3d& wide)
	: x(static_cast<float>(wide.x)), y(static_cast<float>(wide.y)), z(static_cast<float>(wide.z)),
	  w(static_cast<float>(wide.w)) {}

void xylVec3::perpendicular_axes_in_cartesian_space(const xylVec3& a, const xylVec3& b,
                                                    xylVec3& dir, xylVec3& axis1, xylVec3& axis2) {
	constexpr float nearly_up = 0.95f; // |z| from which (0, 0, 1) is no reference
	xylVec3 way = b - a;
	way.fast_normalize();
	const bool is_nearly_up = way.z > nearly_up || -way.z > nearly_up;
	const xylVec3 reference = is_nearly_up ? xylVec3(0, 1, 0) : xylVec3(0, 0, 1);
	xylVec3 second = reference.cross(way);
	second.normalize();
	xylVec3 first = way.cross(second);
	first.normalize();
	dir = way;
	axis1 = first;
	axis2 = second;
}

std::basic_ostream<char>& operator<<(std::basic_ostream<char>& stream, const xylVec3& v) {
	return stream << '(' << v.x << ", " << v.y << ", " << v.z << ')';
}
