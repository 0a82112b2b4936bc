#include <morvantis/math/xylquaternion.h>

#include <cmath>

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr float half_pi_float = 1.5707964f;            // π/2
constexpr float three_quarters_turn_float = 4.712389f; // 3π/2

} // namespace

float xylQuaternion::angle_between(const xylQuaternion& a, const xylQuaternion& b) {
	const double dot = static_cast<double>(a.w) * b.w + static_cast<double>(a.x) * b.x +
	                   static_cast<double>(a.y) * b.y + static_cast<double>(a.z) * b.z;
	if (dot >= 1 || !(dot > -1)) return 0;
	const double angle = 2 * std::acos(dot);
	return static_cast<float>(angle > pi ? 2 * pi - angle : angle);
}

void xylQuaternion::axis_angle_from_quaternion(xylVec3& axis, float& angle,
                                               const xylQuaternion& q) {
	if (q.w >= 1 || !(q.w > -1)) {
		axis = {1, 0, 0};
		angle = 0;
		return;
	}
	axis = {q.x, q.y, q.z};
	axis.fast_normalize();
	angle = 2 * std::acos(q.w);
}

void xylQuaternion::quaternion_from_axis_angle(xylQuaternion& out, const xylVec3& axis,
                                               float angle) {
	const float half = angle * 0.5f;
	const float sine = std::sin(half);
	out = {std::cos(half), axis.x * sine, axis.y * sine, axis.z * sine};
}

void xylQuaternion::euler_angle_from_quaternion(xylVec3& out, const xylQuaternion& q) {
	const float ww = q.w * q.w;
	const float xx = q.x * q.x;
	const float yy = q.y * q.y;
	const float zz = q.z * q.z;
	out = {std::atan2(2 * (q.w * q.x + q.y * q.z), ww - xx - yy + zz),
	       std::asin(-2 * (q.x * q.z - q.w * q.y)),
	       std::atan2(2 * (q.w * q.z + q.x * q.y), ww + xx - yy - zz)};
}

xylQuaternion xylQuaternion::find_shortest_arc_as_quat(const xylVec3& a, const xylVec3& b) {
	constexpr float nearly_opposite = -0.99f;
	constexpr float steep = 0.8f; // |a.z| from which (0, a.z, -a.y) is the longer perpendicular
	const float d = a.dot(b);
	if (d >= nearly_opposite) {
		const float s = xyl_lanes::square_root(2 * d + 2);
		const xylVec3 axis = a.cross(b);
		return {s * 0.5f, axis.x / s, axis.y / s, axis.z / s};
	}
	const bool is_steep = a.z >= steep || -a.z >= steep;
	xylVec3 axis = is_steep ? xylVec3(0, a.z, -a.y) : xylVec3(a.y, -a.x, 0);
	axis.fast_normalize();
	return {0, axis.x, axis.y, axis.z};
}

xylQuaternion xylQuaternion::quaternion_from_two_vectors(const xylVec3& a, const xylVec3& b) {
	const float w = a.dot(b) + 1;
	const xylVec3 v = a.cross(b);
	// kept: the smallest normal number is added here, not a floor as in xylVec3::fast_normalize().
	const float squared = w * w + v.x * v.x + v.y * v.y + v.z * v.z + xyl_lanes::min_normal;
	const float scale = xyl_lanes::first(xyl_lanes::approximate_inverse_root(_mm_set1_ps(squared)));
	return {w * scale, v.x * scale, v.y * scale, v.z * scale};
}

xylQuaternion xylQuaternion::quaternion_look_at(const xylVec3& dir) {
	const float yaw = std::atan2(-dir.x, dir.y);
	const float horizontal = xyl_lanes::square_root(1.0f - dir.z * dir.z);
	const float p = std::atan2(-horizontal, dir.z);
	// kept: p is at most 0, so that the way with three quarters of a turn is never taken.
	const float pitch = p > half_pi_float ? p - three_quarters_turn_float : p + half_pi_float;
	const float sin_yaw = std::sin(yaw * 0.5f);
	const float cos_yaw = std::cos(yaw * 0.5f);
	const float sin_pitch = std::sin(pitch * 0.5f);
	const float cos_pitch = std::cos(pitch * 0.5f);
	return {cos_pitch * cos_yaw, sin_pitch * cos_yaw, sin_pitch * sin_yaw, cos_pitch * sin_yaw};
}
