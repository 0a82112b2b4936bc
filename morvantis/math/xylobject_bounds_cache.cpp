#include <morvantis/math/xylobject_bounds_cache.h>

#include <morvantis/math/transformed_corners.h>

#include <cstddef>

using namespace xyl_lanes;

static_assert(offsetof(xylObject_bounds_cache, tips) == 48 &&
              offsetof(xylObject_bounds_cache, radius) == 176 &&
              offsetof(xylObject_bounds_cache, radius_of_biggest_child_mesh) == 180);

// How much a frame makes of a radius: its longest axis.
static float scale_of(const xylMatrix_frame& frame) {
	constexpr float unscaled_within = 1e-6f; // of the squared length
	const __m128 s = frame.s.lanes();
	const __m128 f = frame.f.lanes();
	const __m128 u = frame.u.lanes();
	const __m128 squares =
		sums_of_four(_mm_mul_ps(s, s), _mm_mul_ps(f, f), _mm_mul_ps(u, u), _mm_setzero_ps());
	const __m128 largest = _mm_max_ss(_mm_max_ss(squares, splat<1>(squares)), splat<2>(squares));
	const __m128 off = absolute(_mm_sub_ss(largest, _mm_set_ss(1)));
	if (first(off) < unscaled_within) return 1;
	return first(_mm_sqrt_ss(largest));
}

void xylObject_bounds_cache::update(const xylBounding_box& box, const xylMatrix_frame& frame) {
	// The order of `tips` in corners of Transformed_corners.
	constexpr unsigned char order[8] = {3, 2, 7, 0, 1, 6, 5, 4};
	const Transformed_corners corners(box.min.lanes(), box.max.lanes(), frame,
	                                  with_one(frame.origin.lanes()));
	__m128 lowest = corners.at[order[0]];
	__m128 highest = lowest;
	_mm_store_ps(&tips[0].x, lowest);
	for (int i = 1; i < 8; ++i) {
		const __m128 tip = corners.at[order[i]];
		_mm_store_ps(&tips[i].x, tip);
		lowest = _mm_min_ps(tip, lowest);
		highest = _mm_max_ps(tip, highest);
	}
	_mm_store_ps(&min.x, lowest);
	_mm_store_ps(&max.x, highest);
	const __m128 middle = _mm_mul_ps(_mm_add_ps(lowest, highest), _mm_set1_ps(0.5f));
	_mm_store_ps(&center.x, with_marker(middle));
	radius = box.radius * scale_of(frame);
}
