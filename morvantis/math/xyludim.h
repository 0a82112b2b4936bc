// A dimension that mixes a share of a base size with a fixed amount.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API

// The size is base·scale + offset. Operators work part by part: scale with scale, offset with
// offset. kept: / is a plain division, by zero too, while /= makes a part 0 whose divisor is 0.
// Threads: a value; nothing allocates or reports.
struct MORVANTIS_API xylUDim {
	xylUDim() : scale(0), offset(0) {}
	xylUDim(float scale_value, float offset_value) : scale(scale_value), offset(offset_value) {}

	float asAbsolute(float base) const { return base * scale + offset; }
	// The whole as a share of the base; 0 for a base of 0.
	float asRelative(float base) const { return base == 0 ? 0 : offset / base + scale; }

	xylUDim operator+(const xylUDim& other) const {
		return {scale + other.scale, offset + other.offset};
	}
	xylUDim operator-(const xylUDim& other) const {
		return {scale - other.scale, offset - other.offset};
	}
	xylUDim operator*(const xylUDim& other) const {
		return {scale * other.scale, offset * other.offset};
	}
	xylUDim operator/(const xylUDim& other) const {
		return {scale / other.scale, offset / other.offset};
	}
	xylUDim operator*(float factor) const { return {scale * factor, offset * factor}; }
	// By the one reciprocal; a divisor of 0 is not tested.
	xylUDim operator/(const float& divisor) const { return *this * (1.0f / divisor); }

	xylUDim& operator+=(const xylUDim& other) { return *this = *this + other; }
	xylUDim& operator-=(const xylUDim& other) { return *this = *this - other; }
	xylUDim& operator*=(const xylUDim& other) { return *this = *this * other; }
	xylUDim& operator*=(float factor) { return *this = *this * factor; }
	xylUDim& operator/=(const xylUDim& other) {
		return *this = {guarded_quotient(scale, other.scale),
		                guarded_quotient(offset, other.offset)};
	}

	// kept: a part that is NaN equals anything, since only less and greater are tested.
	bool operator==(const xylUDim& other) const {
		return !(scale < other.scale) && !(scale > other.scale) && !(offset < other.offset) &&
		       !(offset > other.offset);
	}
	bool operator!=(const xylUDim& other) const { return !(*this == other); }

	float scale;  // share of the base
	float offset; // fixed amount

private:
	static float guarded_quotient(float a, float b) { return b == 0 ? 0 : a / b; }
};
static_assert(sizeof(xylUDim) == 8);
