// The 128-bit steps behind the value types: markers, sums in their stated order, approximate roots.
#pragma once

#include <emmintrin.h>

// Everything here works on the four floats of a xylVec3 in one register. The fourth lane holds
// whatever its owner left there, often FLT_MAX, so its products overflow and mean nothing; each
// operation that makes a vector settles the lane at its end. Packed division is not done on it: the
// reciprocal of FLT_MAX is subnormal and costs five times the division.
namespace xyl_lanes {

inline constexpr float marker = 3.4028235e+38f;     // FLT_MAX: the fourth float when nobody uses it
inline constexpr float min_normal = 1.1754944e-38f; // FLT_MIN

inline __m128 xyz_mask() { return _mm_castsi128_ps(_mm_set_epi32(0, -1, -1, -1)); }
// `v` with its fourth lane 0.
inline __m128 with_zero(__m128 v) { return _mm_and_ps(v, xyz_mask()); }
inline __m128 with_one(__m128 v) { return _mm_or_ps(with_zero(v), _mm_set_ps(1, 0, 0, 0)); }
inline __m128 with_marker(__m128 v) { return _mm_or_ps(with_zero(v), _mm_set_ps(marker, 0, 0, 0)); }
// `a` where the mask is set, else `b`.
inline __m128 either(__m128 mask, __m128 a, __m128 b) {
	return _mm_or_ps(_mm_and_ps(mask, a), _mm_andnot_ps(mask, b));
}
// The first three lanes of `v` and the fourth of `other`.
inline __m128 with_fourth_of(__m128 v, __m128 other) { return either(xyz_mask(), v, other); }

// Lane `lane` in all four. Shuffles of one vector are those of integers, which leave it as it is:
// the ones of floats overwrite it, and cost a copy where it is used again.
template <int lane> __m128 splat(__m128 v) {
	return _mm_castsi128_ps(
		_mm_shuffle_epi32(_mm_castps_si128(v), _MM_SHUFFLE(lane, lane, lane, lane)));
}
// (y, z, x, w)
inline __m128 turned(__m128 v) {
	return _mm_castsi128_ps(_mm_shuffle_epi32(_mm_castps_si128(v), _MM_SHUFFLE(3, 0, 2, 1)));
}
inline __m128 absolute(__m128 v) { return _mm_andnot_ps(_mm_set1_ps(-0.0f), v); }
inline __m128 negative(__m128 v) { return _mm_xor_ps(_mm_set1_ps(-0.0f), v); }

// (x + y) + z of the products, in the first lane.
inline __m128 dot(__m128 a, __m128 b) {
	const __m128 p = _mm_mul_ps(a, b);
	return _mm_add_ss(_mm_add_ss(p, splat<1>(p)), splat<2>(p));
}

// a × b; the fourth lane means nothing.
inline __m128 cross(__m128 a, __m128 b) {
	return turned(_mm_sub_ps(_mm_mul_ps(a, turned(b)), _mm_mul_ps(turned(a), b)));
}

// (p.x·s + p.y·f) + p.z·u.
inline __m128 combine(__m128 p, __m128 s, __m128 f, __m128 u) {
	const __m128 x_and_y = _mm_add_ps(_mm_mul_ps(splat<0>(p), s), _mm_mul_ps(splat<1>(p), f));
	return _mm_add_ps(x_and_y, _mm_mul_ps(splat<2>(p), u));
}

// Sums of the first three lanes of each of four vectors, each as (x + y) + z: lane i is of vector
// i.
inline __m128 sums_of_four(__m128 a, __m128 b, __m128 c, __m128 d) {
	const __m128 ab_xz = _mm_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0));
	const __m128 cd_xz = _mm_shuffle_ps(c, d, _MM_SHUFFLE(2, 0, 2, 0));
	const __m128 ab_xy = _mm_add_ps(ab_xz, _mm_shuffle_ps(a, b, _MM_SHUFFLE(1, 1, 1, 1)));
	const __m128 cd_xy = _mm_add_ps(cd_xz, _mm_shuffle_ps(c, d, _MM_SHUFFLE(1, 1, 1, 1)));
	return _mm_add_ps(_mm_shuffle_ps(ab_xy, cd_xy, _MM_SHUFFLE(2, 0, 2, 0)),
	                  _mm_shuffle_ps(ab_xz, cd_xz, _MM_SHUFFLE(3, 1, 3, 1)));
}

// The same of two vectors: of `a` in lanes 0 and 1, of `b` in lanes 2 and 3.
inline __m128 sums_of_two(__m128 a, __m128 b) {
	const __m128 x = _mm_shuffle_ps(a, b, _MM_SHUFFLE(0, 0, 0, 0));
	const __m128 y = _mm_shuffle_ps(a, b, _MM_SHUFFLE(1, 1, 1, 1));
	return _mm_add_ps(_mm_add_ps(x, y), _mm_shuffle_ps(a, b, _MM_SHUFFLE(2, 2, 2, 2)));
}

inline float first(__m128 v) { return _mm_cvtss_f32(v); }
// Spread to all lanes, since a lone one would go by way of an integer register.
inline float square_root(float v) { return first(_mm_sqrt_ss(_mm_set1_ps(v))); }

// 1/sqrt of the first lane, from the processor's approximation and one Newton step
// r' = 0.5·r·(3 − l·r²): relative error below 3.3e-7 for any normal number, whatever the processor;
// the bits differ between processors. l·r is taken first, since r² alone leaves the normal range.
// The second lane is 1.
inline __m128 approximate_inverse_root(__m128 l) {
	const __m128 r = _mm_rsqrt_ss(l);
	const __m128 rest = _mm_sub_ss(_mm_set_ss(3), _mm_mul_ss(_mm_mul_ss(l, r), r));
	return _mm_mul_ss(_mm_mul_ss(_mm_set_ps(0, 0, 1, 0.5f), r), rest);
}

// The same of all four lanes, and the same bits.
inline __m128 approximate_inverse_roots(__m128 l) {
	const __m128 r = _mm_rsqrt_ps(l);
	const __m128 rest = _mm_sub_ps(_mm_set1_ps(3), _mm_mul_ps(_mm_mul_ps(l, r), r));
	return _mm_mul_ps(_mm_mul_ps(_mm_set1_ps(0.5f), r), rest);
}

// `v` scaled to unit length as xylVec3::fast_normalize() does, with the fourth lane of `v`.
// A length that is not a number spreads to all lanes: the maximum takes its second argument then.
inline __m128 fast_normalized(__m128 v) {
	const __m128 l = _mm_max_ss(_mm_set_ss(min_normal), dot(v, v));
	const __m128 k_1 = approximate_inverse_root(l);
	return _mm_mul_ps(v, _mm_shuffle_ps(k_1, k_1, _MM_SHUFFLE(1, 0, 0, 0)));
}

} // namespace xyl_lanes
