// The eight corners of a box under a frame, with the products that they share made once.
#pragma once

#include <morvantis/math/xylmatrix_frame.h>

namespace xyl_lanes {

// Corner i has the greater x, y or z where bit 0, 1 or 2 of i is set. Each is
// ((p.x·s + p.y·f) + p.z·u) + origin, and all have the fourth lane of `origin`.
struct Transformed_corners {
	Transformed_corners(__m128 min, __m128 max, const xylMatrix_frame& frame, __m128 origin) {
		const __m128 s = frame.s.lanes();
		const __m128 f = frame.f.lanes();
		const __m128 u = frame.u.lanes();
		// Cleaned after the product: an infinite corner times a fourth float of 0 is no number.
		const __m128 x[2] = {with_zero(_mm_mul_ps(splat<0>(min), s)),
		                     with_zero(_mm_mul_ps(splat<0>(max), s))};
		const __m128 y[2] = {with_zero(_mm_mul_ps(splat<1>(min), f)),
		                     with_zero(_mm_mul_ps(splat<1>(max), f))};
		const __m128 z[2] = {with_zero(_mm_mul_ps(splat<2>(min), u)),
		                     with_zero(_mm_mul_ps(splat<2>(max), u))};
		const __m128 xy[4] = {_mm_add_ps(x[0], y[0]), _mm_add_ps(x[1], y[0]),
		                      _mm_add_ps(x[0], y[1]), _mm_add_ps(x[1], y[1])};
		at[0] = _mm_add_ps(_mm_add_ps(xy[0], z[0]), origin);
		at[1] = _mm_add_ps(_mm_add_ps(xy[1], z[0]), origin);
		at[2] = _mm_add_ps(_mm_add_ps(xy[2], z[0]), origin);
		at[3] = _mm_add_ps(_mm_add_ps(xy[3], z[0]), origin);
		at[4] = _mm_add_ps(_mm_add_ps(xy[0], z[1]), origin);
		at[5] = _mm_add_ps(_mm_add_ps(xy[1], z[1]), origin);
		at[6] = _mm_add_ps(_mm_add_ps(xy[2], z[1]), origin);
		at[7] = _mm_add_ps(_mm_add_ps(xy[3], z[1]), origin);
	}

	__m128 at[8];
};

} // namespace xyl_lanes
