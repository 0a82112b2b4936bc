// The vector of two floats: a place on a screen, in a texture, on the ground.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API

#include <iosfwd>

class xylIO_Stream;

struct xylVec2 {
	// Leaves the components unset; xylVec2{} zeroes them.
	xylVec2() = default;
	constexpr xylVec2(float x_value, float y_value) : x(x_value), y(y_value) {}

	xylVec2& operator+=(const xylVec2& other) { return *this = {x + other.x, y + other.y}; }
	xylVec2& operator-=(const xylVec2& other) { return *this = {x - other.x, y - other.y}; }
	xylVec2& operator*=(float scale) { return *this = {x * scale, y * scale}; }
	// Multiplies by the one reciprocal 1/divisor; a divisor of 0 is not tested.
	xylVec2& operator/=(float divisor) { return *this *= 1.0f / divisor; }

	// Exact; NaN equals nothing.
	bool operator==(const xylVec2& other) const { return x == other.x && y == other.y; }
	bool operator!=(const xylVec2& other) const { return !(*this == other); }

	float x, y;
};
static_assert(sizeof(xylVec2) == 8);

inline xylVec2 operator+(const xylVec2& a, const xylVec2& b) { return {a.x + b.x, a.y + b.y}; }
inline xylVec2 operator-(const xylVec2& a, const xylVec2& b) { return {a.x - b.x, a.y - b.y}; }
inline xylVec2 operator-(const xylVec2& v) { return {-v.x, -v.y}; }
inline xylVec2 operator*(const xylVec2& v, float scale) { return {v.x * scale, v.y * scale}; }
inline xylVec2 operator*(float scale, const xylVec2& v) { return v * scale; }
inline xylVec2 operator/(const xylVec2& v, float divisor) { return v * (1.0f / divisor); }

// "(x, y)" with the stream's float formatting.
MORVANTIS_API std::basic_ostream<char>& operator<<(std::basic_ostream<char>& stream,
                                                   const xylVec2& v);

// x and y as the stream writes and reads floats, for streams of any kind.
MORVANTIS_API xylIO_Stream& operator<<(xylIO_Stream& stream, const xylVec2& v);
MORVANTIS_API xylIO_Stream& operator>>(xylIO_Stream& stream, xylVec2& v);
