// A pair of relative dimensions, one per axis.
#pragma once

#include <morvantis/math/xyludim.h>
#include <morvantis/math/xylvec2.h>

// Operators work axis by axis as those of xylUDim; a single xylUDim is applied to both axes.
// kept: / by a xylUVec2 divides and / by a xylUDim multiplies by reciprocals, neither tests for
// zero;
// /= makes a part 0 whose divisor is 0.
struct MORVANTIS_API xylUVec2 {
	xylUVec2() = default;
	// Zero offsets.
	xylUVec2(float x_scale, float y_scale) : x(x_scale, 0), y(y_scale, 0) {}
	xylUVec2(const xylUDim& x_value, const xylUDim& y_value) : x(x_value), y(y_value) {}

	xylVec2 asAbsolute(const xylVec2& base) const {
		return {x.asAbsolute(base.x), y.asAbsolute(base.y)};
	}
	xylVec2 asRelative(const xylVec2& base) const {
		return {x.asRelative(base.x), y.asRelative(base.y)};
	}

	xylUVec2 operator+(const xylUVec2& other) const { return {x + other.x, y + other.y}; }
	xylUVec2 operator-(const xylUVec2& other) const { return {x - other.x, y - other.y}; }
	xylUVec2 operator*(const xylUVec2& other) const { return {x * other.x, y * other.y}; }
	xylUVec2 operator/(const xylUVec2& other) const { return {x / other.x, y / other.y}; }

	xylUVec2 operator+(const xylUDim& dim) const { return {x + dim, y + dim}; }
	xylUVec2 operator-(const xylUDim& dim) const { return {x - dim, y - dim}; }
	xylUVec2 operator*(const xylUDim& dim) const { return {x * dim, y * dim}; }
	xylUVec2 operator/(const xylUDim& dim) const {
		return *this * xylUDim(1.0f / dim.scale, 1.0f / dim.offset);
	}
	xylUVec2 operator*(float factor) const { return {x * factor, y * factor}; }

	xylUVec2& operator+=(const xylUVec2& other) { return *this = *this + other; }
	xylUVec2& operator-=(const xylUVec2& other) { return *this = *this - other; }
	xylUVec2& operator*=(const xylUVec2& other) { return *this = *this * other; }
	xylUVec2& operator/=(const xylUVec2& other) {
		x /= other.x;
		y /= other.y;
		return *this;
	}

	xylUVec2& operator+=(const xylUDim& dim) { return *this = *this + dim; }
	xylUVec2& operator-=(const xylUDim& dim) { return *this = *this - dim; }
	xylUVec2& operator*=(const xylUDim& dim) { return *this = *this * dim; }
	xylUVec2& operator/=(const xylUDim& dim) { return *this /= xylUVec2(dim, dim); }

	// kept: a part that is NaN equals anything.
	bool operator==(const xylUVec2& other) const { return x == other.x && y == other.y; }
	bool operator!=(const xylUVec2& other) const { return !(*this == other); }

	xylUDim x, y;
};
static_assert(sizeof(xylUVec2) == 16);
