#include <morvantis/math/xylbounding_box.h>

#include <morvantis/math/transformed_corners.h>

#include <cstddef>

using namespace xyl_lanes;

// Buffers hold the first 52 bytes as they stand.
static_assert(offsetof(xylBounding_box, max) == 16 && offsetof(xylBounding_box, center) == 32 &&
              offsetof(xylBounding_box, radius) == 48);

namespace {

constexpr float empty_bound = 1e8f; // bounds start here, inside out

// Which corner of Transformed_corners each tip point is.
constexpr unsigned char tip_corners[8] = {0, 7, 2, 3, 4, 5, 6, 1};

bool all_three(__m128 mask) { return (_mm_movemask_ps(mask) & 7) == 7; }

void store(xylVec3& out, __m128 lanes) { _mm_store_ps(&out.x, lanes); }

void store_tips(xylVec3* out, const Transformed_corners& corners) {
	for (int i = 0; i < 8; ++i) store(out[i], corners.at[tip_corners[i]]);
}

// Corner i of the box as it stands; the fourth lane means nothing.
__m128 tip_point(const xylBounding_box& box, int i) {
	const int greater = tip_corners[i];
	const __m128 mask = _mm_castsi128_ps(
		_mm_set_epi32(0, -(greater >> 2 & 1), -(greater >> 1 & 1), -(greater & 1)));
	return either(mask, box.max.lanes(), box.min.lanes());
}

bool is_nearly_identity(const xylMatrix_frame& frame) {
	const xylMatrix_frame identity = xylMatrix_frame::identity();
	const __m128 within = _mm_set1_ps(0.0001f);
	const auto near = [within](const xylVec3& a, const xylVec3& b) {
		return _mm_cmplt_ps(absolute(_mm_sub_ps(a.lanes(), b.lanes())), within);
	};
	return all_three(
		_mm_and_ps(_mm_and_ps(near(frame.s, identity.s), near(frame.f, identity.f)),
	               _mm_and_ps(near(frame.u, identity.u), near(frame.origin, identity.origin))));
}

// Widens in place; the fourth floats stay, and what is NaN in `low` or `high` widens nothing.
void widen(xylVec3& min, xylVec3& max, __m128 low, __m128 high) {
	store(min, with_fourth_of(_mm_min_ps(low, min.lanes()), min.lanes()));
	store(max, with_fourth_of(_mm_max_ps(high, max.lanes()), max.lanes()));
}

} // namespace

void xylBounding_box::init_zero() {
	min = max = center = {0, 0, 0, 0};
	radius = 0;
}

void xylBounding_box::begin_relaxation() {
	min = {empty_bound, empty_bound, empty_bound};
	max = {-empty_bound, -empty_bound, -empty_bound};
	center = {0, 0, 0};
	radius = 0;
}

void xylBounding_box::relax_with_bounding_box(const xylBounding_box& other) {
	if (other.min.x > other.max.x) return;
	widen(min, max, other.min.lanes(), other.max.lanes());
}

void xylBounding_box::relax_with_transformed_bounding_box(const xylBounding_box& box,
                                                          const xylMatrix_frame& frame) {
	if (!(box.max.x >= box.min.x)) return;
	xylVec3 tips[8];
	box.get_transformed_tip_points(tips, frame);
	for (const xylVec3& tip : tips) widen(min, max, tip.lanes(), tip.lanes());
}

bool xylBounding_box::encloses_point(const xylVec3& p) const {
	return point_inside_box(p, min, max);
}

void xylBounding_box::get_tip_points(xylVec3* out) const {
	for (int i = 0; i < 8; ++i) store(out[i], with_fourth_of(tip_point(*this, i), out[i].lanes()));
}

void xylBounding_box::get_transformed_tip_points(xylVec3* out, const xylMatrix_frame& frame) const {
	if (is_nearly_identity(frame)) {
		for (int i = 0; i < 8; ++i) store(out[i], with_one(tip_point(*this, i)));
		return;
	}
	store_tips(
		out, Transformed_corners(min.lanes(), max.lanes(), frame, with_one(frame.origin.lanes())));
}

void xylBounding_box::get_transformed_tip_points(xylVec3* out, const xylVec3& min,
                                                 const xylVec3& max, const xylMatrix_frame& frame) {
	store_tips(out, Transformed_corners(min.lanes(), max.lanes(), frame,
	                                    with_marker(frame.origin.lanes())));
}

void xylBounding_box::get_global_bounds(const xylMatrix_frame& frame, xylVec3& out_min,
                                        xylVec3& out_max) const {
	xylVec3 tips[8];
	get_transformed_tip_points(tips, frame);
	xylBounding_box bounds;
	bounds.begin_relaxation();
	for (const xylVec3& tip : tips) widen(bounds.min, bounds.max, tip.lanes(), tip.lanes());
	out_min = bounds.min;
	out_max = bounds.max;
}

xylBounding_box xylBounding_box::get_transformed_bounding_box(const xylMatrix_frame& frame) const {
	const __m128 middle = _mm_mul_ps(_mm_add_ps(min.lanes(), max.lanes()), _mm_set1_ps(0.5f));
	const __m128 half = _mm_sub_ps(max.lanes(), middle);
	const __m128 s = frame.s.lanes();
	const __m128 f = frame.f.lanes();
	const __m128 u = frame.u.lanes();
	const __m128 moved = _mm_add_ps(combine(middle, s, f, u), frame.origin.lanes());
	const __m128 extent = _mm_add_ps(_mm_add_ps(absolute(_mm_mul_ps(splat<0>(half), s)),
	                                            absolute(_mm_mul_ps(splat<1>(half), f))),
	                                 absolute(_mm_mul_ps(splat<2>(half), u)));
	xylBounding_box result;
	store(result.min, with_marker(_mm_sub_ps(moved, extent)));
	store(result.max, with_marker(_mm_add_ps(moved, extent)));
	return result;
}

bool xylBounding_box::bounding_boxes_intersect(const xylBounding_box& a, const xylBounding_box& b) {
	return box_overlap_box(a.max, a.min, b.max, b.min);
}

bool xylBounding_box::box_inside_box(const xylVec3& min1, const xylVec3& max1, const xylVec3& min2,
                                     const xylVec3& max2) {
	return all_three(_mm_and_ps(_mm_cmpge_ps(min1.lanes(), min2.lanes()),
	                            _mm_cmple_ps(max1.lanes(), max2.lanes())));
}

bool xylBounding_box::point_inside_box(const xylVec3& p, const xylVec3& min, const xylVec3& max) {
	return box_inside_box(p, p, min, max);
}

bool xylBounding_box::box_overlap_box(const xylVec3& max1, const xylVec3& min1, const xylVec3& max2,
                                      const xylVec3& min2) {
	return all_three(_mm_and_ps(_mm_cmple_ps(min1.lanes(), max2.lanes()),
	                            _mm_cmpge_ps(max1.lanes(), min2.lanes())));
}
