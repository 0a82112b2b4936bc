// The vector of two integers: a cell of a grid, a size in pixels.
#pragma once

#include <morvantis/math/wrapping.h>

// Sums and products wrap around; division is towards zero and gives 0 for a divisor of 0.
struct xylInt_vec2 {
	// Leaves the components unset; xylInt_vec2{} zeroes them.
	xylInt_vec2() = default;
	constexpr xylInt_vec2(int x_value, int y_value) : x(x_value), y(y_value) {}

	inline xylInt_vec2& operator+=(const xylInt_vec2& other);
	inline xylInt_vec2& operator-=(const xylInt_vec2& other);
	inline xylInt_vec2& operator*=(int scale);
	inline xylInt_vec2& operator/=(int divisor);

	bool operator==(const xylInt_vec2& other) const { return x == other.x && y == other.y; }
	bool operator!=(const xylInt_vec2& other) const { return !(*this == other); }

	xylInt32 x, y;
};
static_assert(sizeof(xylInt_vec2) == 8);

inline xylInt_vec2 operator+(const xylInt_vec2& a, const xylInt_vec2& b) {
	return {xyl_wrapping::sum(a.x, b.x), xyl_wrapping::sum(a.y, b.y)};
}
inline xylInt_vec2 operator-(const xylInt_vec2& a, const xylInt_vec2& b) {
	return {xyl_wrapping::difference(a.x, b.x), xyl_wrapping::difference(a.y, b.y)};
}
inline xylInt_vec2 operator-(const xylInt_vec2& v) { return xylInt_vec2(0, 0) - v; }
inline xylInt_vec2 operator*(const xylInt_vec2& v, int scale) {
	return {xyl_wrapping::product(v.x, scale), xyl_wrapping::product(v.y, scale)};
}
inline xylInt_vec2 operator*(int scale, const xylInt_vec2& v) { return v * scale; }
inline xylInt_vec2 operator/(const xylInt_vec2& v, int divisor) {
	return {xyl_wrapping::quotient(v.x, divisor), xyl_wrapping::quotient(v.y, divisor)};
}

xylInt_vec2& xylInt_vec2::operator+=(const xylInt_vec2& other) { return *this = *this + other; }
xylInt_vec2& xylInt_vec2::operator-=(const xylInt_vec2& other) { return *this = *this - other; }
xylInt_vec2& xylInt_vec2::operator*=(int scale) { return *this = *this * scale; }
xylInt_vec2& xylInt_vec2::operator/=(int divisor) { return *this = *this / divisor; }
