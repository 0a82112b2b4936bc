// The vector of three integers: a cell of a grid in space.
#pragma once

#include <morvantis/math/wrapping.h>

// Sums and products wrap around; division is towards zero and gives 0 for a divisor of 0.
struct xylInt_vec3 {
	// Leaves the components unset; xylInt_vec3{} zeroes them.
	xylInt_vec3() = default;
	constexpr xylInt_vec3(int x_value, int y_value, int z_value)
		: x(x_value), y(y_value), z(z_value) {}

	inline xylInt_vec3& operator+=(const xylInt_vec3& other);
	inline xylInt_vec3& operator-=(const xylInt_vec3& other);
	inline xylInt_vec3& operator*=(int scale);
	inline xylInt_vec3& operator/=(int divisor);

	bool operator==(const xylInt_vec3& other) const {
		return x == other.x && y == other.y && z == other.z;
	}
	bool operator!=(const xylInt_vec3& other) const { return !(*this == other); }

	xylInt32 x, y, z;
};
static_assert(sizeof(xylInt_vec3) == 12);

inline xylInt_vec3 operator+(const xylInt_vec3& a, const xylInt_vec3& b) {
	using namespace xyl_wrapping;
	return {sum(a.x, b.x), sum(a.y, b.y), sum(a.z, b.z)};
}
inline xylInt_vec3 operator-(const xylInt_vec3& a, const xylInt_vec3& b) {
	using namespace xyl_wrapping;
	return {difference(a.x, b.x), difference(a.y, b.y), difference(a.z, b.z)};
}
inline xylInt_vec3 operator-(const xylInt_vec3& v) { return xylInt_vec3(0, 0, 0) - v; }
inline xylInt_vec3 operator*(const xylInt_vec3& v, int scale) {
	using namespace xyl_wrapping;
	return {product(v.x, scale), product(v.y, scale), product(v.z, scale)};
}
inline xylInt_vec3 operator*(int scale, const xylInt_vec3& v) { return v * scale; }
inline xylInt_vec3 operator/(const xylInt_vec3& v, int divisor) {
	using namespace xyl_wrapping;
	return {quotient(v.x, divisor), quotient(v.y, divisor), quotient(v.z, divisor)};
}

xylInt_vec3& xylInt_vec3::operator+=(const xylInt_vec3& other) { return *this = *this + other; }
xylInt_vec3& xylInt_vec3::operator-=(const xylInt_vec3& other) { return *this = *this - other; }
xylInt_vec3& xylInt_vec3::operator*=(int scale) { return *this = *this * scale; }
xylInt_vec3& xylInt_vec3::operator/=(int divisor) { return *this = *this / divisor; }
