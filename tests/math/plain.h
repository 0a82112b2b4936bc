// The geometry once more, written straight down, one number after the other.
//
// In float these are the very steps of the library, so results must agree bit by bit; in double
// they are what the library approximates. Nothing here is fast, and nothing here calls the library.
#pragma once

#include <emmintrin.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace plain {

template <typename T> struct Vec {
	T x, y, z;
};
template <typename T> Vec<T> operator+(Vec<T> a, Vec<T> b) {
	return {a.x + b.x, a.y + b.y, a.z + b.z};
}
template <typename T> Vec<T> operator-(Vec<T> a, Vec<T> b) {
	return {a.x - b.x, a.y - b.y, a.z - b.z};
}
template <typename T> Vec<T> operator*(Vec<T> v, T k) { return {v.x * k, v.y * k, v.z * k}; }
template <typename T> T dot(Vec<T> a, Vec<T> b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
template <typename T> Vec<T> cross(Vec<T> a, Vec<T> b) {
	return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
template <typename T> T length(Vec<T> v) { return std::sqrt(dot(v, v)); }

// min and max as the processor has them: the second one where the comparison fails.
template <typename T> T least(T a, T b) { return a < b ? a : b; }
template <typename T> T greatest(T a, T b) { return a > b ? a : b; }
template <typename T> Vec<T> least(Vec<T> a, Vec<T> b) {
	return {least(a.x, b.x), least(a.y, b.y), least(a.z, b.z)};
}
template <typename T> Vec<T> greatest(Vec<T> a, Vec<T> b) {
	return {greatest(a.x, b.x), greatest(a.y, b.y), greatest(a.z, b.z)};
}

inline float approximate_inverse_root(float l) {
	const float r = _mm_cvtss_f32(_mm_rsqrt_ss(_mm_set_ss(l)));
	return 0.5f * r * (3.0f - l * r * r);
}
inline double approximate_inverse_root(double l) { return 1 / std::sqrt(l); }

template <typename T> Vec<T> fast_normalized(Vec<T> v) {
	const T l = dot(v, v);
	return v * approximate_inverse_root(l < T(1.1754944e-38f) ? T(1.1754944e-38f) : l);
}

template <typename T> T normalize(Vec<T>& v) {
	const T squared = dot(v, v);
	if (!(squared > T(1e-7f))) {
		v = {0, 1, 0};
		return 0;
	}
	const T former = std::sqrt(squared);
	v = v * (T(1) / former);
	return former;
}

// Quaternions, matrices, frames.

template <typename T> struct Quat {
	T w, x, y, z;
};
template <typename T> struct Mat {
	Vec<T> s, f, u;
};
template <typename T> struct Frame {
	Vec<T> s, f, u, origin;
};

template <typename T> Vec<T> transform_direction(Frame<T> m, Vec<T> p) {
	return m.s * p.x + m.f * p.y + m.u * p.z;
}
template <typename T> Vec<T> transform_point(Frame<T> m, Vec<T> p) {
	return transform_direction(m, p) + m.origin;
}

template <typename T> Mat<T> matrix_of(Quat<T> q) {
	const T x2 = q.x + q.x, y2 = q.y + q.y, z2 = q.z + q.z;
	return {{T(1) - q.y * y2 - q.z * z2, q.x * y2 + q.w * z2, q.z * x2 - q.w * y2},
	        {q.x * y2 - q.w * z2, T(1) - q.x * x2 - q.z * z2, q.y * z2 + q.w * x2},
	        {q.z * x2 + q.w * y2, q.y * z2 - q.w * x2, T(1) - q.x * x2 - q.y * y2}};
}

template <typename T> Quat<T> quaternion_of(Mat<T> m) {
	const T m00 = m.s.x, m01 = m.s.y, m02 = m.s.z;
	const T m10 = m.f.x, m11 = m.f.y, m12 = m.f.z;
	const T m20 = m.u.x, m21 = m.u.y, m22 = m.u.z;
	T x, y, z, w, t;
	if (m22 >= 0) {
		if (m00 >= -m11) {
			t = T(1) + m00 + m11 + m22;
			x = m12 - m21, y = m20 - m02, z = m01 - m10, w = t;
		} else {
			t = T(1) - m00 - m11 + m22;
			x = m20 + m02, y = m21 + m12, z = t, w = m01 - m10;
		}
	} else if (m00 > m11) {
		t = T(1) + m00 - m11 - m22;
		x = t, y = m10 + m01, z = m20 + m02, w = m12 - m21;
	} else {
		t = T(1) - m00 + m11 - m22;
		x = m10 + m01, y = t, z = m21 + m12, w = m20 - m02;
	}
	const T k = T(0.5f) / std::sqrt(t);
	return {w * k, x * k, y * k, z * k};
}

template <typename T>
void perpendicular_axes(Vec<T> a, Vec<T> b, Vec<T>& dir, Vec<T>& axis1, Vec<T>& axis2) {
	dir = fast_normalized(b - a);
	const Vec<T> reference = std::abs(dir.z) > T(0.95f) ? Vec<T>{0, 1, 0} : Vec<T>{0, 0, 1};
	axis2 = cross(reference, dir);
	normalize(axis2);
	axis1 = cross(dir, axis2);
	normalize(axis1);
}

template <typename T> Frame<T> center_frame(Vec<T> a, Vec<T> b, Vec<T> up) {
	Frame<T> m;
	m.origin = (a + b) * T(0.5f);
	m.s = b - a;
	normalize(m.s);
	if (std::abs(dot(m.s, up)) > T(0.95f)) up = {0, 1, 0};
	m.f = cross(up, m.s);
	normalize(m.f);
	m.u = cross(m.s, m.f);
	return m;
}

template <typename T> Mat<T> rotation_between(Vec<T> a, Vec<T> b) {
	if (std::abs(a.x - b.x) < T(0.01f) && std::abs(a.y - b.y) < T(0.01f) &&
	    std::abs(a.z - b.z) < T(0.01f)) {
		return {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
	}
	a = fast_normalized(a);
	b = fast_normalized(b);
	const Vec<T> w = cross(b, a);
	const T k = (T(1) - dot(a, b)) / dot(w, w);
	const T c[3][3] = {{0, -w.z, w.y}, {w.z, 0, -w.x}, {-w.y, w.x, 0}};
	T m[3][3];
	for (int i = 0; i < 3; ++i) {
		for (int j = 0; j < 3; ++j) {
			const T square = c[i][0] * c[0][j] + c[i][1] * c[1][j] + c[i][2] * c[2][j];
			m[i][j] = (i == j ? T(1) : c[i][j]) + k * square; // the zeros of I and [w]× add nothing
		}
	}
	return {{m[0][0], m[0][1], m[0][2]}, {m[1][0], m[1][1], m[1][2]}, {m[2][0], m[2][1], m[2][2]}};
}

template <typename T> Quat<T> shortest_arc(Vec<T> a, Vec<T> b) {
	const T d = dot(a, b);
	if (d >= T(-0.99f)) {
		const T s = std::sqrt(T(2) * d + T(2));
		const Vec<T> c = cross(a, b);
		return {s * T(0.5f), c.x / s, c.y / s, c.z / s};
	}
	const Vec<T> axis =
		fast_normalized(std::abs(a.z) >= T(0.8f) ? Vec<T>{0, a.z, -a.y} : Vec<T>{a.y, -a.x, 0});
	return {0, axis.x, axis.y, axis.z};
}

template <typename T> Quat<T> from_two_vectors(Vec<T> a, Vec<T> b) {
	const T w = dot(a, b) + T(1);
	const Vec<T> c = cross(a, b);
	const T k =
		approximate_inverse_root(w * w + c.x * c.x + c.y * c.y + c.z * c.z + T(1.1754944e-38f));
	return {w * k, c.x * k, c.y * k, c.z * k};
}

template <typename T> void axis_angle_of(Quat<T> q, Vec<T>& axis, T& angle) {
	if (q.w >= 1 || !(q.w > -1)) {
		axis = {1, 0, 0};
		angle = 0;
		return;
	}
	axis = fast_normalized(Vec<T>{q.x, q.y, q.z});
	angle = T(2) * std::acos(q.w);
}

template <typename T> Quat<T> from_axis_angle(Vec<T> axis, T angle) {
	const T sine = std::sin(angle * T(0.5f));
	return {std::cos(angle * T(0.5f)), axis.x * sine, axis.y * sine, axis.z * sine};
}

template <typename T> Vec<T> euler_angles(Quat<T> q) {
	const T ww = q.w * q.w, xx = q.x * q.x, yy = q.y * q.y, zz = q.z * q.z;
	return {std::atan2(T(2) * (q.w * q.x + q.y * q.z), ww - xx - yy + zz),
	        std::asin(T(-2) * (q.x * q.z - q.w * q.y)),
	        std::atan2(T(2) * (q.w * q.z + q.x * q.y), ww + xx - yy - zz)};
}

template <typename T> Quat<T> look_at(Vec<T> dir) {
	const T yaw = std::atan2(-dir.x, dir.y);
	const T p = std::atan2(-std::sqrt(T(1) - dir.z * dir.z), dir.z);
	const T pitch = p > T(1.5707964f) ? p - T(4.712389f) : p + T(1.5707964f);
	const T sy = std::sin(yaw * T(0.5f)), cy = std::cos(yaw * T(0.5f));
	const T sp = std::sin(pitch * T(0.5f)), cp = std::cos(pitch * T(0.5f));
	return {cp * cy, sp * cy, sp * sy, cp * sy};
}

// Planes, lines and boxes.

template <typename T> struct Plane {
	Vec<T> point, normal;
};

template <typename T> Vec<T> project(Plane<T> plane, Vec<T> p) {
	const Vec<T> v = p - plane.point;
	const T t = length(v) * dot(fast_normalized(v), plane.normal);
	return p - plane.normal * t;
}

template <typename T> bool same_side(Vec<T> p1, Vec<T> p2, Vec<T> a, Vec<T> b) {
	const Vec<T> r = b - a;
	return dot(cross(r, p1 - a), cross(r, p2 - a)) >= 0;
}

template <typename T> int position_according_to_line(Vec<T> p, Vec<T> a, Vec<T> b, T eps) {
	const T c = (b.y - a.y) * (p.x - a.x) - (p.y - a.y) * (b.x - a.x);
	return c > eps ? 1 : c < -eps ? -1 : 0;
}

template <typename T> bool inside_triangle(Vec<T> a, Vec<T> b, Vec<T> c, Vec<T> p) {
	return same_side(p, a, b, c) && same_side(p, b, a, c) && same_side(p, c, a, b);
}

template <typename T> struct Box {
	Vec<T> min, max, center;
	T radius;
};

template <typename T> struct Cache {
	Vec<T> min, max, center, tips[8];
	T radius;
};

template <typename T> void tips_of(Vec<T> min, Vec<T> max, Vec<T>* out) {
	const Vec<T> tips[8] = {min,
	                        max,
	                        {min.x, max.y, min.z},
	                        {max.x, max.y, min.z},
	                        {min.x, min.y, max.z},
	                        {max.x, min.y, max.z},
	                        {min.x, max.y, max.z},
	                        {max.x, min.y, min.z}};
	std::copy(tips, tips + 8, out);
}

template <typename T> bool nearly_identity(Frame<T> m) {
	const T off[] = {m.s.x - 1, m.s.y, m.s.z,     m.f.x,      m.f.y - 1,  m.f.z,
	                 m.u.x,     m.u.y, m.u.z - 1, m.origin.x, m.origin.y, m.origin.z};
	return std::all_of(off, off + 12, [](T v) { return std::abs(v) < T(0.0001f); });
}

template <typename T> void transformed_tips(Box<T> box, Frame<T> m, Vec<T>* out) {
	tips_of(box.min, box.max, out);
	if (nearly_identity(m)) return;
	for (int i = 0; i < 8; ++i) out[i] = transform_point(m, out[i]);
}

template <typename T> void global_bounds(Box<T> box, Frame<T> m, Vec<T>& min, Vec<T>& max) {
	Vec<T> tips[8];
	transformed_tips(box, m, tips);
	min = {T(1e8), T(1e8), T(1e8)};
	max = {T(-1e8), T(-1e8), T(-1e8)};
	for (const Vec<T>& tip : tips) {
		min = least(tip, min);
		max = greatest(tip, max);
	}
}

template <typename T> Box<T> transformed_box(Box<T> box, Frame<T> m) {
	const Vec<T> c = (box.min + box.max) * T(0.5f);
	const Vec<T> h = box.max - c;
	const Vec<T> moved = transform_point(m, c);
	const Vec<T> e = {std::abs(h.x * m.s.x) + std::abs(h.y * m.f.x) + std::abs(h.z * m.u.x),
	                  std::abs(h.x * m.s.y) + std::abs(h.y * m.f.y) + std::abs(h.z * m.u.y),
	                  std::abs(h.x * m.s.z) + std::abs(h.y * m.f.z) + std::abs(h.z * m.u.z)};
	return {moved - e, moved + e, {0, 0, 0}, 0};
}

template <typename T> Cache<T> cache_of(Box<T> box, Frame<T> m) {
	const Vec<T> a = box.min, b = box.max;
	Cache<T> cache = {{},
	                  {},
	                  {},
	                  {{b.x, b.y, a.z},
	                   {a.x, b.y, a.z},
	                   b,
	                   a,
	                   {b.x, a.y, a.z},
	                   {a.x, b.y, b.z},
	                   {b.x, a.y, b.z},
	                   {a.x, a.y, b.z}},
	                  0};
	for (Vec<T>& tip : cache.tips) tip = transform_point(m, tip);
	cache.min = cache.max = cache.tips[0];
	for (int i = 1; i < 8; ++i) {
		cache.min = least(cache.tips[i], cache.min);
		cache.max = greatest(cache.tips[i], cache.max);
	}
	cache.center = (cache.min + cache.max) * T(0.5f);
	const T largest = greatest(greatest(dot(m.s, m.s), dot(m.f, m.f)), dot(m.u, m.u));
	const T scale = std::abs(largest - T(1)) < T(1e-6f) ? T(1) : std::sqrt(largest);
	cache.radius = box.radius * scale;
	return cache;
}

} // namespace plain
