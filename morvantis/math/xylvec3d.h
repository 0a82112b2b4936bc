// The vector of four doubles, for places too far from the origin for float.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API

// Conventions of xylVec3: the fourth component takes no part in arithmetic or comparison, is
// FLT_MAX in a vector built from three numbers, and a compound form leaves it alone.
struct xylVec3d {
	// Leaves the components unset; xylVec3d{} zeroes all four.
	xylVec3d() = default;
	constexpr xylVec3d(double x_value, double y_value, double z_value)
		: x(x_value), y(y_value), z(z_value), w(static_cast<double>(3.4028235e+38f)) {}
	constexpr xylVec3d(double x_value, double y_value, double z_value, double w_value)
		: x(x_value), y(y_value), z(z_value), w(w_value) {}

	xylVec3d& operator+=(const xylVec3d& other) {
		return set_xyz(x + other.x, y + other.y, z + other.z);
	}
	xylVec3d& operator-=(const xylVec3d& other) {
		return set_xyz(x - other.x, y - other.y, z - other.z);
	}
	xylVec3d& operator*=(double scale) { return set_xyz(x * scale, y * scale, z * scale); }
	// Multiplies by the one reciprocal 1/divisor; a divisor of 0 is not tested.
	xylVec3d& operator/=(const double& divisor) { return *this *= 1.0 / divisor; }

	// Exact; the fourth component is not looked at.
	bool operator==(const xylVec3d& other) const {
		return x == other.x && y == other.y && z == other.z;
	}
	bool operator!=(const xylVec3d& other) const { return !(*this == other); }

	double x, y, z;
	double w;

private:
	xylVec3d& set_xyz(double x_value, double y_value, double z_value) {
		x = x_value;
		y = y_value;
		z = z_value;
		return *this;
	}
};
static_assert(sizeof(xylVec3d) == 32);

inline xylVec3d operator+(const xylVec3d& a, const xylVec3d& b) {
	return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline xylVec3d operator-(const xylVec3d& a, const xylVec3d& b) {
	return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline xylVec3d operator-(const xylVec3d& v) { return {-v.x, -v.y, -v.z}; }
inline xylVec3d operator*(const xylVec3d& v, double scale) {
	return {v.x * scale, v.y * scale, v.z * scale};
}
inline xylVec3d operator*(double scale, const xylVec3d& v) { return v * scale; }
inline xylVec3d operator/(const xylVec3d& v, double divisor) { return v * (1.0 / divisor); }
