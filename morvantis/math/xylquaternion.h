// Rotations as unit quaternions.
#pragma once

#include <morvantis/math/xylmat3.h>

// The rotation w + xi + yj + zk, stored scalar first; its binary and text forms are x, y, z, w.
//
// Nothing here normalises a quaternion or tests that it is one of unit length: other lengths give
// what the formulas give. Angles are in radians. Operations that pass through trigonometric
// functions may differ between systems in the last digit. A NaN component makes the results NaN
// where nothing else is said. Threads: values; nothing allocates or reports.
struct MORVANTIS_API xylQuaternion {
	// Leaves the components unset; xylQuaternion{} zeroes them, which is no rotation.
	xylQuaternion() = default;
	constexpr xylQuaternion(float w_value, float x_value, float y_value, float z_value)
		: w(w_value), x(x_value), y(y_value), z(z_value) {}
	static constexpr xylQuaternion identity() { return {1, 0, 0, 0}; }

	// The images of (1, 0, 0), (0, 1, 0) and (0, 0, 1): the rows of the rotation matrix one by one,
	// with FLT_MAX as the fourth float.
	xylVec3 calculate_s() const;
	xylVec3 calculate_f() const;
	xylVec3 calculate_u() const;

	// The rotation matrix, fourth floats 0.
	xylMat3 to_mat3() const;
	// The same into `out`, whose three fourth floats stay as they were.
	static void mat3_from_quaternion(xylMat3& out, const xylQuaternion& q);
	// The rotation of an orthonormal, right-handed matrix. Other matrices give some quaternion, and
	// NaN or infinities where the chosen divisor is not positive.
	static void quaternion_from_mat3(xylQuaternion& out, const xylMat3& m);

	// Angle of the rotation between two unit quaternions, 0 to π, taken in double.
	// kept: a dot product that is at least 1, at most −1 (q against −q) or NaN gives 0.
	static float angle_between(const xylQuaternion& a, const xylQuaternion& b);

	// Axis by fast_normalize() and angle, 0 to 2π. Where w is at least 1, at most −1 or NaN the
	// axis is (1, 0, 0) and the angle 0.
	static void axis_angle_from_quaternion(xylVec3& axis, float& angle, const xylQuaternion& q);
	// The axis is used as given: one that isn't of unit length gives a quaternion that isn't
	// either.
	static void quaternion_from_axis_angle(xylQuaternion& out, const xylVec3& axis, float angle);

	// Angles about x, y and z into out.x, out.y, out.z.
	// kept: nothing clamps the sine of the second one, so rounding past ±1 makes it NaN.
	static void euler_angle_from_quaternion(xylVec3& out, const xylQuaternion& q);

	// Shortest rotation from the unit vector `a` to the unit vector `b`. Where they are nearly
	// opposite (dot product below −0.99, or NaN) it is a half turn, w = 0, about an axis
	// perpendicular to `a`.
	static xylQuaternion find_shortest_arc_as_quat(const xylVec3& a, const xylVec3& b);
	// The same without the case of opposite vectors and without normalising the arguments: (1 +
	// a·b, a × b), scaled with an approximate root. kept: a and −a give the zero quaternion.
	static xylQuaternion quaternion_from_two_vectors(const xylVec3& a, const xylVec3& b);
	// Rotation, without roll, that takes +Y to the unit direction `dir`. A `dir.z` beyond ±1 makes
	// it NaN.
	static xylQuaternion quaternion_look_at(const xylVec3& dir);

	// x, y, z and w by xylBuffer::next_float(), each from the token behind the one under the
	// cursor.
	void read(xylBuffer& buffer);
	// The stored form: x, y, z, w as four floats, 16 bytes at the buffer's cursor. kept: other than
	// xylBuffer::write_quaternion(). Reading tests nothing.
	void write_data(xylBuffer& buffer) const;
	void read_data(xylBuffer& buffer);

	// kept: does nothing, whatever its name says; the first argument stays as it was.
	static void slerp(xylVec3&, const xylVec3&, const xylVec3&, float) {}

	alignas(16) float w; // one aligned unit with the other three
	float x, y, z;

private:
	struct Rows {
		__m128 s, f, u; // fourth lanes mean nothing
	};
	Rows rows() const;
};
static_assert(sizeof(xylQuaternion) == 16 && alignof(xylQuaternion) == 16);

// s = (1 − 2y² − 2z², 2xy + 2wz, 2xz − 2wy)
// f = (2xy − 2wz, 1 − 2x² − 2z², 2yz + 2wx)
// u = (2xz + 2wy, 2yz − 2wx, 1 − 2x² − 2y²)
// from left to right, each product as one component times the double of the other.
inline xylQuaternion::Rows xylQuaternion::rows() const {
	const __m128 wxyz = _mm_load_ps(&w);
	const __m128 xyz = _mm_shuffle_ps(wxyz, wxyz, _MM_SHUFFLE(0, 3, 2, 1));
	const __m128 doubled = _mm_add_ps(xyz, xyz);
	const __m128 squares = _mm_mul_ps(xyz, doubled);
	const __m128 yy_xx_xx = _mm_shuffle_ps(squares, squares, _MM_SHUFFLE(3, 0, 0, 1));
	const __m128 zz_zz_yy = _mm_shuffle_ps(squares, squares, _MM_SHUFFLE(3, 1, 2, 2));
	const __m128 diagonal = _mm_sub_ps(_mm_sub_ps(_mm_set1_ps(1), yy_xx_xx), zz_zz_yy);
	const __m128 xy_yz_zx =
		_mm_mul_ps(xyz, _mm_shuffle_ps(doubled, doubled, _MM_SHUFFLE(3, 0, 2, 1)));
	const __m128 wz_wx_wy = _mm_mul_ps(xyl_lanes::splat<0>(wxyz),
	                                   _mm_shuffle_ps(doubled, doubled, _MM_SHUFFLE(3, 1, 0, 2)));
	const __m128 sums = _mm_add_ps(xy_yz_zx, wz_wx_wy);        // s.y, f.z, u.x
	const __m128 differences = _mm_sub_ps(xy_yz_zx, wz_wx_wy); // f.x, u.y, s.z

	const __m128 sx_sy_fy_fz = _mm_unpacklo_ps(diagonal, sums);
	const __m128 fz_fy_fz = _mm_shuffle_ps(sx_sy_fy_fz, sx_sy_fy_fz, _MM_SHUFFLE(3, 3, 2, 3));
	const __m128 ux_uy = _mm_shuffle_ps(sums, differences, _MM_SHUFFLE(1, 1, 2, 2));
	return {_mm_shuffle_ps(sx_sy_fy_fz, differences, _MM_SHUFFLE(2, 2, 1, 0)),
	        _mm_move_ss(fz_fy_fz, differences),
	        _mm_shuffle_ps(ux_uy, diagonal, _MM_SHUFFLE(3, 2, 2, 0))};
}

inline xylVec3 xylQuaternion::calculate_s() const {
	return xylVec3::from_lanes(xyl_lanes::with_marker(rows().s));
}
inline xylVec3 xylQuaternion::calculate_f() const {
	return xylVec3::from_lanes(xyl_lanes::with_marker(rows().f));
}
inline xylVec3 xylQuaternion::calculate_u() const {
	return xylVec3::from_lanes(xyl_lanes::with_marker(rows().u));
}

inline void xylQuaternion::mat3_from_quaternion(xylMat3& out, const xylQuaternion& q) {
	const Rows rows = q.rows();
	_mm_store_ps(&out.s.x, xyl_lanes::with_fourth_of(rows.s, out.s.lanes()));
	_mm_store_ps(&out.f.x, xyl_lanes::with_fourth_of(rows.f, out.f.lanes()));
	_mm_store_ps(&out.u.x, xyl_lanes::with_fourth_of(rows.u, out.u.lanes()));
}

inline xylMat3 xylQuaternion::to_mat3() const {
	xylMat3 result = xylMat3::identity(); // for its fourth floats
	mat3_from_quaternion(result, *this);
	return result;
}

// With mij for row i and column j, and the divisor t the largest that its signs can make it:
//
//   m22 >= 0, m00 >= -m11  (t, m12 - m21, m20 - m02, m01 - m10),  t = 1 + m00 + m11 + m22
//   m22 <  0, m00 >  m11   (m12 - m21, t, m10 + m01, m20 + m02),  t = 1 + m00 - m11 - m22
//   m22 <  0 otherwise     (m20 - m02, m10 + m01, t, m21 + m12),  t = 1 - m00 + m11 - m22
//   m22 >= 0 otherwise     (m01 - m10, m20 + m02, m21 + m12, t),  t = 1 - m00 - m11 + m22
//
// as (w, x, y, z), each times 0.5/sqrt(t). All four are made and one is picked, so that no branch
// depends on the rotation.
inline void xylQuaternion::quaternion_from_mat3(xylQuaternion& out, const xylMat3& m) {
	using namespace xyl_lanes;
	const __m128 s = m.s.lanes();
	const __m128 f = m.f.lanes();
	const __m128 u = m.u.lanes();
	// In lanes 1 to 3: `upper` is m12, m20, m01, `lower` is m21, m02, m10.
	const __m128 m20_m01 = _mm_shuffle_ps(u, s, _MM_SHUFFLE(1, 1, 0, 0));
	const __m128 m02_m10 = _mm_shuffle_ps(s, f, _MM_SHUFFLE(0, 0, 2, 2));
	const __m128 upper = _mm_shuffle_ps(f, m20_m01, _MM_SHUFFLE(2, 0, 2, 2));
	const __m128 lower = _mm_shuffle_ps(u, m02_m10, _MM_SHUFFLE(2, 0, 1, 2));
	const __m128 less = _mm_sub_ps(upper, lower);
	const __m128 more = _mm_add_ps(upper, lower);
	__m128 t = _mm_set1_ps(1);
	t = _mm_add_ps(t, _mm_xor_ps(splat<0>(s), _mm_set_ps(-0.0f, -0.0f, 0, 0)));
	t = _mm_add_ps(t, _mm_xor_ps(splat<1>(f), _mm_set_ps(-0.0f, 0, -0.0f, 0)));
	t = _mm_add_ps(t, _mm_xor_ps(splat<2>(u), _mm_set_ps(0, -0.0f, -0.0f, 0)));

	const __m128 less_1_t_1 = _mm_shuffle_ps(less, t, _MM_SHUFFLE(1, 1, 1, 1));
	const __m128 less_2_more_3 = _mm_shuffle_ps(less, more, _MM_SHUFFLE(3, 3, 2, 2));
	const __m128 t_2_more_1 = _mm_shuffle_ps(t, more, _MM_SHUFFLE(1, 1, 2, 2));
	const __m128 less_3_more_2 = _mm_shuffle_ps(less, more, _MM_SHUFFLE(2, 2, 3, 3));
	const __m128 more_1_t_3 = _mm_shuffle_ps(more, t, _MM_SHUFFLE(3, 3, 1, 1));
	const __m128 candidates[4] = {
		_mm_move_ss(less, t),
		_mm_shuffle_ps(less_1_t_1, more, _MM_SHUFFLE(2, 3, 2, 0)),
		_mm_shuffle_ps(less_2_more_3, t_2_more_1, _MM_SHUFFLE(2, 0, 2, 0)),
		_mm_shuffle_ps(less_3_more_2, more_1_t_3, _MM_SHUFFLE(2, 0, 2, 0)),
	};
	alignas(16) float divisors[4];
	_mm_store_ps(divisors, t);

	// By m22 >= 0, m00 >= -m11, m00 > m11 as bits 0, 1, 2.
	static constexpr unsigned char picks[8] = {2, 3, 2, 0, 1, 3, 1, 0};
	const unsigned is_upright = m.u.z >= 0;
	const unsigned sum_is_positive = m.s.x >= -m.f.y;
	const unsigned first_is_greater = m.s.x > m.f.y;
	const unsigned pick = picks[is_upright | sum_is_positive << 1 | first_is_greater << 2];
	const __m128 root = _mm_sqrt_ss(_mm_load_ss(&divisors[pick]));
	const __m128 scale = _mm_div_ss(_mm_set_ss(0.5f), root);
	_mm_store_ps(&out.w, _mm_mul_ps(candidates[pick], splat<0>(scale)));
}
