// Three axes of a frame as the rows of a matrix.
#pragma once

#include <morvantis/math/xylvec3.h>

// Each row is one axis in the parent's space: `s` side (+X at identity), `f` forward (+Y), `u` up
// (+Z), with s × f = u in a right-handed frame. Vectors are row vectors: v' = v·M. The rows need
// not be orthonormal; they may carry scale.
struct MORVANTIS_API xylMat3 {
	// Fourth floats 0.
	static constexpr xylMat3 identity() { return {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}; }

	// False if any of the nine numbers is NaN.
	bool is_not_nan() const { return s.is_not_nan() && f.is_not_nan() && u.is_not_nan(); }

	// The rotation that takes the direction of `a` to the direction of `b`, row convention a·M = b;
	// fourth floats 0.
	//
	// Arguments of any length above 0; they go through fast_normalize(). Where they differ by less
	// than 0.01 in each component, as passed, the result is the identity. Exactly opposite ones
	// divide by zero: the result holds NaN, and is_not_nan() is the caller's test. A zero vector
	// against one farther away than that gives NaN as well.
	static xylMat3 create_rotation_matrix_from_two_vector(const xylVec3& a, const xylVec3& b);

	xylVec3 s, f, u;
};
static_assert(sizeof(xylMat3) == 48);
