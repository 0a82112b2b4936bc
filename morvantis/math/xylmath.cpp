#include <morvantis/math/xylmath.h>

using namespace xyl_lanes;

namespace {

constexpr float shortest_squared =
	1e-5f; // a segment's squared length, above which it has a direction

// What is not at least 0 becomes 0 (NaN too), what is not less than 1 becomes 1.
template <typename T> T held(T v) {
	if (!(v >= 0)) return 0;
	return v < 1 ? v : 1;
}

// The same in each lane.
__m128 held(__m128 v) {
	return _mm_min_ps(_mm_and_ps(v, _mm_cmpge_ps(v, _mm_setzero_ps())), _mm_set1_ps(1));
}

__m128 along(__m128 start, __m128 way, __m128 parameter) {
	return _mm_add_ps(start, _mm_mul_ps(way, splat<0>(parameter)));
}

xylVec3 closest_on_segment(const xylVec3& a, const xylVec3& way, float squared, const xylVec3& p) {
	return a + way * held((p - a).dot(way) / squared);
}

double dot_in_double(const xylVec3& a, const xylVec3& b) {
	return static_cast<double>(a.x) * b.x + static_cast<double>(a.y) * b.y +
	       static_cast<double>(a.z) * b.z;
}

// Parameters of the closest points of two segments.
struct Closest {
	float s, t;
};

// See shortest_segment_between_lines() for the names.
Closest closest_in_double(double a, double b, double c, double e, double f) {
	const double least = static_cast<double>(shortest_squared);
	if (!(a > least)) return {0, static_cast<float>(held(f / e))};
	if (!(e > least)) return {static_cast<float>(held(-c / a)), 0};
	const double determinant = a * e - b * b;
	float s = 0;
	if (determinant > 0) s = static_cast<float>(held((b * f - c * e) / determinant));
	const double g = b * static_cast<double>(s) + f;
	if (!(g >= 0)) return {static_cast<float>(held(-c / a)), 0};
	if (g > e) return {static_cast<float>(held((b - c) / a)), 1};
	return {s, static_cast<float>(g / e)};
}

} // namespace

float xylMath::shortest_dist_between_line_and_point(const xylVec3& a, const xylVec3& b,
                                                    const xylVec3& p) {
	const xylVec3 way = b - a;
	const float from_a_squared = (a - p).length_squared();
	const float from_b_squared = (b - p).length_squared();
	const float from_a = square_root(from_a_squared);
	const float from_b = square_root(from_b_squared);
	const __m128 short_below = _mm_set1_ps(0.01f);
	if ((_mm_movemask_ps(_mm_cmplt_ps(absolute(way.lanes()), short_below)) & 7) == 7) {
		return from_b < from_a ? from_b : from_a;
	}
	const float squared = way.length_squared();
	if (from_b_squared >= squared + from_a_squared) return from_a;
	if (from_a_squared >= squared + from_b_squared) return from_b;
	const float length = square_root(squared);
	if (length >= from_a + from_b) return 0;
	// Heron's formula for the area, which is half of the height on the segment times its length.
	const float s = (from_a + from_b + length) * 0.5f;
	const float area = square_root(s * (s - from_a) * (s - from_b) * (s - length));
	return 2 * area / length;
}

// Ericson, "Real-Time Collision Detection", 5.1.9, with its names: u and v are the ways along the
// segments, r the way from q0 to p0; a = u·u, b = u·v, c = u·r, e = v·v, f = v·r. Of the three
// quotients the ones that aren't needed are made too: cheaper than branches that go wrong.
void xylMath::shortest_segment_between_lines(const xylVec3& p0, const xylVec3& p1,
                                             const xylVec3& q0, const xylVec3& q1, xylVec3& out_p,
                                             xylVec3& out_q) {
	const __m128 u = _mm_sub_ps(p1.lanes(), p0.lanes());
	const __m128 v = _mm_sub_ps(q1.lanes(), q0.lanes());
	const __m128 r = _mm_sub_ps(p0.lanes(), q0.lanes());
	const __m128 a_e_f_c =
		sums_of_four(_mm_mul_ps(u, u), _mm_mul_ps(v, v), _mm_mul_ps(r, v), _mm_mul_ps(r, u));
	const __m128 a = a_e_f_c;
	const __m128 e = splat<1>(a_e_f_c);
	const __m128 f = splat<2>(a_e_f_c);
	const __m128 c = splat<3>(a_e_f_c);
	const __m128 least = _mm_set_ss(shortest_squared);
	const bool has_p = _mm_comigt_ss(a, least) != 0;
	const bool has_q = _mm_comigt_ss(e, least) != 0;
	__m128 s = _mm_setzero_ps();
	__m128 t = _mm_setzero_ps();
	if (has_p && has_q) {
		const __m128 b = dot(u, v);
		const __m128 determinant = _mm_sub_ss(_mm_mul_ss(a, e), _mm_mul_ss(b, b));
		const __m128 numerator = _mm_sub_ss(_mm_mul_ss(b, f), _mm_mul_ss(c, e));
		const __m128 not_parallel = _mm_cmpgt_ss(determinant, _mm_setzero_ps());
		const __m128 inner_s = _mm_and_ps(held(_mm_div_ss(numerator, determinant)), not_parallel);
		const __m128 g = _mm_add_ss(_mm_mul_ss(b, inner_s), f);
		// t leaves through 0 or through 1; s is then the point of P closest to that end of Q.
		const __m128 below = _mm_cmpnge_ss(g, _mm_setzero_ps());
		const __m128 above = _mm_cmpgt_ss(g, e);
		const __m128 outer = _mm_or_ps(below, above);
		const __m128 end = either(below, negative(c), _mm_sub_ss(b, c));
		const __m128 outer_s = held(_mm_div_ss(end, a));
		const __m128 inner_t = _mm_div_ss(g, e);
		const __m128 outer_t = _mm_and_ps(above, _mm_set_ss(1));
		s = either(outer, outer_s, inner_s);
		t = either(outer, outer_t, inner_t);
	} else if (has_q) {
		t = held(_mm_div_ss(f, e));
	} else if (has_p) {
		s = held(_mm_div_ss(negative(c), a));
	} else {
		const xylVec3 q = q0; // out_p may be q0
		out_p = p0;
		out_q = q;
		return;
	}
	const __m128 on_p = along(p0.lanes(), u, s);
	const __m128 on_q = along(q0.lanes(), v, t);
	out_p = xylVec3::from_lanes(with_marker(on_p));
	out_q = xylVec3::from_lanes(with_marker(on_q));
}

void xylMath::shortest_segment_between_lines_precise(const xylVec3& p0, const xylVec3& p1,
                                                     const xylVec3& q0, const xylVec3& q1,
                                                     xylVec3& out_p, xylVec3& out_q) {
	const xylVec3 u = p1 - p0;
	const xylVec3 v = q1 - q0;
	const xylVec3 r = p0 - q0;
	const double a = dot_in_double(u, u);
	const double e = dot_in_double(v, v);
	const double least = static_cast<double>(shortest_squared);
	if (!(a > least) && !(e > least)) {
		const xylVec3 q = q0; // out_p may be q0
		out_p = p0;
		out_q = q;
		return;
	}
	const Closest closest = closest_in_double(a, dot_in_double(u, v), static_cast<double>(r.dot(u)),
	                                          e, static_cast<double>(r.dot(v)));
	const xylVec3 on_q = q0 + v * closest.t;
	out_p = p0 + u * closest.s;
	out_q = on_q;
}

void xylMath::shortest_segment_between_line_and_point(const xylVec3& a, const xylVec3& b,
                                                      const xylVec3& p, xylVec3& out_line,
                                                      xylVec3& out_point) {
	const xylVec3 way = b - a;
	const float squared = way.length_squared();
	const xylVec3 closest = squared > shortest_squared ? closest_on_segment(a, way, squared, p) : a;
	out_point = p;
	out_line = closest;
}

void xylMath::shortest_segment_between_line_and_point_no_degenerate_check(
	const xylVec3& a, const xylVec3& b, const xylVec3& p, xylVec3& out_line, xylVec3& out_point) {
	const xylVec3 way = b - a;
	const xylVec3 closest = closest_on_segment(a, way, way.length_squared(), p);
	out_point = p;
	out_line = closest;
}

// Ericson, "Real-Time Collision Detection", 3.4: Cramer's rule for p - a in the edges.
void xylMath::get_barycentric_coords(const xylVec3& p, const xylVec3& a, const xylVec3& b,
                                     const xylVec3& c, float& u, float& v, float& w) {
	const xylVec3 e0 = b - a;
	const xylVec3 e1 = c - a;
	const xylVec3 e2 = p - a;
	const float d00 = e0.dot(e0);
	const float d01 = e0.dot(e1);
	const float d11 = e1.dot(e1);
	const float d20 = e2.dot(e0);
	const float d21 = e2.dot(e1);
	const float inverse = 1.0f / (d00 * d11 - d01 * d01);
	v = (d11 * d20 - d01 * d21) * inverse;
	w = (d00 * d21 - d01 * d20) * inverse;
	u = 1.0f - v - w;
}

xylVec3 xylMath::find_plane_line_intersection_point_with_normal(const xylVec3& plane_point,
                                                                const xylVec3& plane_normal,
                                                                const xylVec3& a, const xylVec3& b,
                                                                bool& parallel) {
	const float rise = plane_normal.dot(b) - plane_normal.dot(a);
	parallel = rise == 0;
	if (parallel) return plane_normal;
	return a + (b - a) * (plane_normal.dot(plane_point - a) / rise);
}
