// The vector that all geometry is made of: three floats and a fourth that fills the register.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API
#include <morvantis/math/lanes.h>

#include <iosfwd>

class xylBuffer;
class xylIO_Stream;
struct xylVec3d;

// A point, a direction or an extent, moved as one 128-bit unit.
//
// The world is right-handed with Z up: side +X, forward +Y, up +Z; points are row vectors. The
// fourth float takes no part in any arithmetic, comparison or test. Where nothing else is said it
// is FLT_MAX in a vector built anew (every operator that returns one included), and a compound form
// leaves it alone.
//
// Threads: a value; nothing here allocates, reports or touches shared state.
struct MORVANTIS_API xylVec3 {
	// Leaves the components unset; xylVec3{} zeroes all four.
	xylVec3() = default;
	constexpr xylVec3(float x_value, float y_value, float z_value)
		: x(x_value), y(y_value), z(z_value), w(xyl_lanes::marker) {}
	constexpr xylVec3(float x_value, float y_value, float z_value, float w_value)
		: x(x_value), y(y_value), z(z_value), w(w_value) {}
	// Narrows all four components to float.
	xylVec3(const xylVec3d& wide);

	// The four floats as one register, and back.
	__m128 lanes() const { return _mm_load_ps(&x); }
	static xylVec3 from_lanes(__m128 lanes) {
		xylVec3 result;
		_mm_store_ps(&result.x, lanes);
		return result;
	}

	xylVec3& operator+=(const xylVec3& other) { return change(_mm_add_ps(lanes(), other.lanes())); }
	xylVec3& operator-=(const xylVec3& other) { return change(_mm_sub_ps(lanes(), other.lanes())); }
	xylVec3& operator*=(float scale) { return change(_mm_mul_ps(lanes(), _mm_set1_ps(scale))); }
	// Multiplies by the one reciprocal 1/divisor, so the last digit may differ from a division. A
	// divisor of 0 is not tested: infinities, and NaN where a component is 0.
	xylVec3& operator/=(const float& divisor) { return *this *= 1.0f / divisor; }

	// Exact; NaN equals nothing, and the fourth float is not looked at.
	bool operator==(const xylVec3& other) const {
		return (_mm_movemask_ps(_mm_cmpeq_ps(lanes(), other.lanes())) & 7) == 7;
	}
	bool operator!=(const xylVec3& other) const { return !(*this == other); }

	// (x·x + y·y) + z·z, in that order of rounding.
	float dot(const xylVec3& other) const {
		return xyl_lanes::first(xyl_lanes::dot(lanes(), other.lanes()));
	}
	xylVec3 cross(const xylVec3& other) const {
		using namespace xyl_lanes;
		return from_lanes(with_marker(xyl_lanes::cross(lanes(), other.lanes())));
	}
	float length_squared() const { return dot(*this); }
	// 0 for the zero vector, infinity above 1.8e19, NaN where a component is.
	float length() const { return xyl_lanes::square_root(length_squared()); }

	// Scales to unit length in full precision, in place, and returns the former length.
	//
	// A squared length not greater than 1e-7 (lengths up to 0.000316, and NaN) makes the vector the
	// unit vector (0, 1, 0), and 0 is returned. An infinite squared length makes finite components
	// 0 and infinite ones NaN.
	float normalize();

	// Scales to unit length with the processor's approximate root and one Newton step, in place:
	// relative error below 4e-7, last digits that differ between processors.
	//
	// No fallback: the zero vector stays zero, and a vector shorter than 1.1e-19 is multiplied by
	// 9.2e18. A squared length that is infinite or NaN makes all three NaN. The fourth float is
	// multiplied by 1, which makes a signalling NaN quiet.
	void fast_normalize() { _mm_store_ps(&x, xyl_lanes::fast_normalized(lanes())); }

	// False if x, y or z is NaN.
	bool is_not_nan() const {
		return (_mm_movemask_ps(_mm_cmpunord_ps(lanes(), lanes())) & 7) == 0;
	}
	// False if x, y or z is infinite or NaN.
	bool is_finite() const {
		const __m128 largest = _mm_set1_ps(xyl_lanes::marker);
		return (_mm_movemask_ps(_mm_cmple_ps(xyl_lanes::absolute(lanes()), largest)) & 7) == 7;
	}

	// Two axes perpendicular to the way from `a` to `b`, and that way itself.
	//
	// `dir`    unit, as fast_normalize() makes it; zero where a equals b.
	// `axis2`  reference × dir, with (0, 0, 1) as the reference, or (0, 1, 0) where |dir.z| is
	//          greater than 0.95.
	// `axis1`  dir × axis2.
	// Both axes go through normalize(), with its fallback. Outputs may be the inputs.
	static void perpendicular_axes_in_cartesian_space(const xylVec3& a, const xylVec3& b,
	                                                  xylVec3& dir, xylVec3& axis1, xylVec3& axis2);

	// x, y and z by xylBuffer::next_float(), each from the token behind the one under the cursor;
	// the fourth float stays as it was.
	void read(xylBuffer& buffer);

	alignas(16) float x; // one aligned unit with the other three
	float y, z;
	float w; // FLT_MAX in vectors of three numbers; 0 or 1 in the rows of a frame

private:
	xylVec3& change(__m128 xyz) {
		_mm_store_ps(&x, xyl_lanes::with_fourth_of(xyz, lanes()));
		return *this;
	}
};
static_assert(sizeof(xylVec3) == 16 && alignof(xylVec3) == 16);

inline xylVec3 operator+(const xylVec3& a, const xylVec3& b) {
	return xylVec3::from_lanes(xyl_lanes::with_marker(_mm_add_ps(a.lanes(), b.lanes())));
}
inline xylVec3 operator-(const xylVec3& a, const xylVec3& b) {
	return xylVec3::from_lanes(xyl_lanes::with_marker(_mm_sub_ps(a.lanes(), b.lanes())));
}
inline xylVec3 operator-(const xylVec3& v) {
	return xylVec3::from_lanes(xyl_lanes::with_marker(xyl_lanes::negative(v.lanes())));
}
inline xylVec3 operator*(const xylVec3& v, float scale) {
	return xylVec3::from_lanes(xyl_lanes::with_marker(_mm_mul_ps(v.lanes(), _mm_set1_ps(scale))));
}
inline xylVec3 operator*(float scale, const xylVec3& v) { return v * scale; }
// By the one reciprocal, as operator/=.
inline xylVec3 operator/(const xylVec3& v, float divisor) { return v * (1.0f / divisor); }

inline float xylVec3::normalize() {
	constexpr float shortest_squared = 1e-7f;
	const float squared = length_squared();
	if (!(squared > shortest_squared)) {
		change(_mm_set_ps(0, 0, 1, 0));
		return 0;
	}
	const float former_length = xyl_lanes::square_root(squared);
	*this *= 1.0f / former_length;
	return former_length;
}

// "(x, y, z)" with the stream's float formatting; the fourth float is left out.
MORVANTIS_API std::basic_ostream<char>& operator<<(std::basic_ostream<char>& stream,
                                                   const xylVec3& v);

// x, y and z as the stream writes and reads floats, for streams of any kind. The fourth float is
// neither written nor read: it stays as it was.
MORVANTIS_API xylIO_Stream& operator<<(xylIO_Stream& stream, const xylVec3& v);
MORVANTIS_API xylIO_Stream& operator>>(xylIO_Stream& stream, xylVec3& v);
