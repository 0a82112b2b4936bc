#include <morvantis/math/xylconvex_polygon.h>

#include <morvantis/math/lanes.h>
#include <morvantis/math/point_sort.h>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace xyl_lanes;

namespace {

constexpr float float_max = std::numeric_limits<float>::max();

// Corners of a polygon, wherever they are.
struct Outline {
	const xylVec2* corners;
	std::size_t count;

	const xylVec2& operator[](std::size_t i) const { return corners[i]; }
	const xylVec2& after(std::size_t i) const { return corners[i + 1 < count ? i + 1 : 0]; }
};

Outline outline(const xylConvex_polygon& polygon) {
	return {polygon.points.data(), polygon.points.size()};
}

// --- The hull

// Greater than 0 where a, b, c turn left.
float cross(const xylVec2& a, const xylVec2& b, const xylVec2& c) {
	return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// Appends `p` to the chain of `k` corners, without those that it leaves on its right or on the
// way, but never shorter than `shortest`.
std::size_t extend(xylVec2* chain, std::size_t k, std::size_t shortest, const xylVec2& p) {
	while (k >= shortest && !(cross(chain[k - 2], chain[k - 1], p) > 0)) --k;
	chain[k] = p;
	return k + 1;
}

// Andrew's monotone chain (A. M. Andrew, "Another efficient algorithm for convex hulls in two
// dimensions", 1979) over at least one point in order. `chain` has room for twice as many points.
// Returns how many of them are the hull.
std::size_t build_hull(const xylVec2* sorted, std::size_t count, xylVec2* chain) {
	std::size_t k = 0;
	for (std::size_t i = 0; i < count; ++i) k = extend(chain, k, 2, sorted[i]);
	const std::size_t shortest = k + 1;
	for (std::size_t i = count - 1; i-- > 0;) k = extend(chain, k, shortest, sorted[i]);
	return k - 1; // the last repeats the first
}

void take_corners(xylConvex_polygon& polygon, const xylVec2* corners, std::size_t count) {
	xylArray<xylVec2>(corners, corners + count).swap(polygon.points);
	xylVec2 low(float_max, float_max);
	xylVec2 high(-float_max, -float_max);
	for (const xylVec2& p : polygon.points) {
		low = {std::min(low.x, p.x), std::min(low.y, p.y)};
		high = {std::max(high.x, p.x), std::max(high.y, p.y)};
	}
	polygon.rectangular_min = low;
	polygon.rectangular_max = high;
}

// --- Separating axes, four at a time

struct Axes {
	__m128 x, y;
};

struct Span {
	__m128 low = _mm_set1_ps(float_max);
	__m128 high = _mm_set1_ps(-float_max);

	// What isn't a number widens nothing: minimum and maximum then take their second argument.
	void widen(__m128 value) {
		low = _mm_min_ps(value, low);
		high = _mm_max_ps(value, high);
	}
	void widen(const Span& other) {
		low = _mm_min_ps(other.low, low);
		high = _mm_max_ps(other.high, high);
	}
};

__m128 projection(const Axes& axes, __m128 x, __m128 y) {
	return _mm_add_ps(_mm_mul_ps(x, axes.x), _mm_mul_ps(y, axes.y));
}

// Two corners at a time, each with a span of its own: a single one would wait for itself.
Span project(const Axes& axes, const Outline& polygon) {
	Span even, odd;
	std::size_t i = 0;
	for (; i + 2 <= polygon.count; i += 2) {
		const __m128 two = _mm_loadu_ps(&polygon[i].x);
		even.widen(projection(axes, splat<0>(two), splat<1>(two)));
		odd.widen(projection(axes, splat<2>(two), splat<3>(two)));
	}
	if (i < polygon.count) {
		even.widen(projection(axes, _mm_set1_ps(polygon[i].x), _mm_set1_ps(polygon[i].y)));
	}
	even.widen(odd);
	return even;
}

bool separates_any(const Axes& axes, const Outline& a, const Outline& b) {
	const Span on_a = project(axes, a);
	const Span on_b = project(axes, b);
	const __m128 apart =
		_mm_or_ps(_mm_cmpgt_ps(on_a.low, on_b.high), _mm_cmpgt_ps(on_b.low, on_a.high));
	return _mm_movemask_ps(apart) != 0;
}

// The way to the left of the four edges from corner i on.
Axes across_four_edges(const Outline& polygon, std::size_t i) {
	const __m128 p_01 = _mm_loadu_ps(&polygon[i].x);
	const __m128 p_23 = _mm_loadu_ps(&polygon[i + 2].x);
	const xylVec2& after = polygon.after(i + 3);
	const __m128 p_12 = _mm_shuffle_ps(p_01, p_23, _MM_SHUFFLE(1, 0, 3, 2));
	const __m128 p_4 = _mm_setr_ps(after.x, after.y, 0, 0);
	const __m128 p_34 = _mm_shuffle_ps(p_23, p_4, _MM_SHUFFLE(1, 0, 3, 2));
	const auto x_of = [](__m128 a, __m128 b) {
		return _mm_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0));
	};
	const auto y_of = [](__m128 a, __m128 b) {
		return _mm_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1));
	};
	return {_mm_sub_ps(y_of(p_01, p_23), y_of(p_12, p_34)),
	        _mm_sub_ps(x_of(p_12, p_34), x_of(p_01, p_23))};
}
// The same where fewer than four follow: the last one is repeated.
Axes across_last_edges(const Outline& polygon, std::size_t i) {
	alignas(16) float x[4], y[4];
	for (std::size_t k = 0; k < 4; ++k) {
		const std::size_t edge = std::min(i + k, polygon.count - 1);
		const xylVec2& a = polygon[edge];
		const xylVec2& b = polygon.after(edge);
		x[k] = a.y - b.y;
		y[k] = b.x - a.x;
	}
	return {_mm_load_ps(x), _mm_load_ps(y)};
}

// The normals of the four edges from corner i on, at approximately unit length.
Axes normals_of_edges(const Outline& polygon, std::size_t i) {
	const bool are_four = i + 4 <= polygon.count;
	const Axes normals = are_four ? across_four_edges(polygon, i) : across_last_edges(polygon, i);
	const __m128 squared =
		_mm_add_ps(_mm_mul_ps(normals.x, normals.x), _mm_mul_ps(normals.y, normals.y));
	const __m128 scale = approximate_inverse_roots(_mm_add_ps(squared, _mm_set1_ps(min_normal)));
	return {_mm_mul_ps(normals.x, scale), _mm_mul_ps(normals.y, scale)};
}

xylVec2 twice_the_middle(const Outline& polygon) { return polygon[0] + polygon[polygon.count / 2]; }

// The first of the four edges that most likely separate polygons that lie apart: a hull runs round
// from its leftmost corner, so the direction to the other one tells how far round. A guess only:
// the order of the axes changes no answer.
std::size_t first_edges(const Outline& polygon, const Outline& other) {
	if (polygon.count < 16 || other.count == 0) return 0; // dearer than what it saves
	const xylVec2 way = twice_the_middle(other) - twice_the_middle(polygon);
	const float cosine = way.x / (std::abs(way.x) + std::abs(way.y)); // along a square
	const float quarters = way.y < 0 ? 1 + cosine : 3 - cosine;       // 0 to 4
	if (!(quarters >= 0 && quarters < 4)) return 0;
	const float edge = quarters * 0.25f * static_cast<float>(polygon.count);
	return std::min(static_cast<std::size_t>(edge), polygon.count - 1) / 4 * 4;
}

bool edges_separate(const Outline& polygon, const Outline& other) {
	std::size_t i = first_edges(polygon, other);
	for (std::size_t left = polygon.count; left > 0; left -= std::min<std::size_t>(left, 4)) {
		if (separates_any(normals_of_edges(polygon, i), polygon, other)) return true;
		i = i + 4 < polygon.count ? i + 4 : 0;
	}
	return false;
}

bool collide(const Outline& a, const Outline& b) {
	return !edges_separate(a, b) && !edges_separate(b, a);
}

// --- The border

// The point of the edge from a to b nearest to p.
xylVec2 nearest_on_edge(const xylVec2& a, const xylVec2& b, const xylVec2& p) {
	const xylVec2 e = b - a;
	const float squared = e.x * e.x + e.y * e.y;
	if (squared == 0) return a;
	const float t = ((p.x - a.x) * e.x + (p.y - a.y) * e.y) / squared;
	if (!(t >= 0)) return a;
	if (t > 1) return b;
	return a + e * t;
}

} // namespace

bool xylConvex_polygon::xy_comparator(const xylVec2& a, const xylVec2& b) {
	return a.x < b.x || (a.x == b.x && a.y < b.y);
}

void xylConvex_polygon::sort(xylArray<xylVec2>& input) { sort_points(input.data(), input.size()); }

void xylConvex_polygon::sort(xylVec2* input, int count) {
	if (count > 0) sort_points(input, static_cast<std::size_t>(count));
}

void xylConvex_polygon::initialize(xylArray<xylVec2>& input) {
	initialize(input.data(), static_cast<int>(input.size()));
}

void xylConvex_polygon::initialize(xylVec2* input, int count) {
	if (count <= 0) {
		*this = xylConvex_polygon();
		points.set_capacity(0);
		return;
	}
	sort(input, count);
	const std::size_t size = static_cast<std::size_t>(count);
	constexpr std::size_t few = 128; // need no memory from the heap on the way
	if (size <= few) {
		xylVec2 chain[2 * few];
		take_corners(*this, chain, build_hull(input, size, chain));
	} else {
		xylArray<xylVec2> chain(static_cast<eastl_size_t>(2 * size));
		take_corners(*this, chain.data(), build_hull(input, size, chain.data()));
	}
}

bool xylConvex_polygon::interior_check(const xylVec2& p) const {
	const Outline polygon = outline(*this);
	for (std::size_t i = 0; i < polygon.count; ++i) {
		const xylVec2& a = polygon[i];
		const xylVec2& b = polygon.after(i);
		if (!((a.y - b.y) * (p.x - a.x) - (a.x - b.x) * (p.y - a.y) > 0)) return false;
	}
	return true;
}

bool xylConvex_polygon::convex_poly_inclusion_check(const xylConvex_polygon& other) const {
	return std::all_of(other.points.begin(), other.points.end(),
	                   [this](const xylVec2& p) { return interior_check(p); });
}

float xylConvex_polygon::get_area() const {
	const Outline polygon = outline(*this);
	if (polygon.count < 3) return 0;
	float sum = 0;
	for (std::size_t i = 0; i < polygon.count; ++i) {
		const xylVec2& a = polygon[i];
		const xylVec2& b = polygon.after(i);
		sum += a.x * b.y - a.y * b.x;
	}
	return std::abs(sum * 0.5f);
}

xylVec2 xylConvex_polygon::get_center_pos() const {
	xylVec2 sum(0, 0);
	for (const xylVec2& p : points) sum += p;
	return sum / static_cast<float>(points.size());
}

float xylConvex_polygon::get_closest_boundary_position(const xylVec2& p, xylVec2& out) const {
	const Outline polygon = outline(*this);
	float best = float_max;
	for (std::size_t i = 0; i < polygon.count; ++i) {
		const xylVec2 candidate = nearest_on_edge(polygon[i], polygon.after(i), p);
		const xylVec2 way = candidate - p;
		const float distance = square_root(way.x * way.x + way.y * way.y);
		if (!(distance < best)) continue;
		best = distance;
		out = candidate;
	}
	return best;
}

bool xylConvex_polygon::check_collision_with_convex_poligon(const xylConvex_polygon& other) const {
	return collide(outline(*this), outline(other));
}

bool xylConvex_polygon::is_axis_seperating(const xylVec2& axis, const xylConvex_polygon& a,
                                           const xylConvex_polygon& b) const {
	return separates_any({_mm_set1_ps(axis.x), _mm_set1_ps(axis.y)}, outline(a), outline(b));
}

bool xylConvex_polygon::check_collision_with_transformed_bounding_box_2d(
	const xylBounding_box& box, const xylMatrix_frame& frame) const {
	constexpr std::size_t tip_count = 8;
	xylVec3 tips[tip_count];
	xylBounding_box::get_transformed_tip_points(tips, box.min, box.max, frame);
	xylVec2 shadow[tip_count];
	for (std::size_t i = 0; i < tip_count; ++i) shadow[i] = {tips[i].x, tips[i].y};
	sort(shadow, tip_count);
	xylVec2 chain[2 * tip_count];
	const std::size_t corners = build_hull(shadow, tip_count, chain);
	return collide(outline(*this), {chain, corners});
}
