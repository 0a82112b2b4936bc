// Spheres, capsules and cones. Cosines and sines of fixed steps are stored, rounded from double, so
// that the shapes come out the same on every system (but for the last digits of what goes through
// fast_normalize()).

#include <morvantis/diagnostics/xyldebug_render_records.h>

#include <morvantis/diagnostics/debug_batch.h>

#include <array>
#include <cmath>

namespace {

using namespace debug_records;
using namespace xyl_lanes;

struct Angle {
	float cosine, sine;
};

// A factor whose product with a direction has 0 in its fourth lane, even where it is infinite:
// added to a point it leaves the point's marker.
__m128 scale(float factor) { return with_zero(_mm_set1_ps(factor)); }

// --- The sphere's table

constexpr size_t sphere_points = 11; // rows and columns

// Of (i − 1)·0.31415927 − π/2 in float, for i from 0 to 11.
constexpr Angle latitudes[sphere_points + 1] = {{-0.309017032f, -0.95105648f},
                                                {-4.37113883e-08f, -1.0f},
                                                {0.309016973f, -0.95105654f},
                                                {0.587785244f, -0.809017003f},
                                                {0.809017003f, -0.587785244f},
                                                {0.95105654f, -0.309017003f},
                                                {1.0f, 0.0f},
                                                {0.95105654f, 0.309017003f},
                                                {0.809017062f, 0.587785184f},
                                                {0.587785244f, 0.809017003f},
                                                {0.309016854f, 0.95105654f},
                                                {-4.37113883e-08f, 1.0f}};
// Of (j − 1)·0.62831855, for j from 0 to 10.
constexpr Angle longitudes[sphere_points] = {
	{0.809017003f, -0.587785244f}, {1.0f, 0.0f},
	{0.809017003f, 0.587785244f},  {0.309016973f, 0.95105654f},
	{-0.309017032f, 0.95105648f},  {-0.809017062f, 0.587785184f},
	{-1.0f, -8.74227766e-08f},     {-0.809016943f, -0.587785363f},
	{-0.309017092f, -0.95105648f}, {0.309017122f, -0.95105648f},
	{0.809017241f, -0.587784946f}};

using Unit_row = std::array<xylVec3, sphere_points>;
struct Sphere_row {
	__m128 at[sphere_points];
};

// Points of the unit sphere, row by row from below the pole.
constexpr std::array<Unit_row, sphere_points + 1> unit_sphere = [] {
	std::array<Unit_row, sphere_points + 1> rows{};
	for (size_t i = 0; i < rows.size(); ++i) {
		for (size_t j = 0; j < rows[i].size(); ++j) {
			rows[i][j] = xylVec3(longitudes[j].cosine * latitudes[i].cosine,
			                     longitudes[j].sine * latitudes[i].cosine, latitudes[i].sine);
		}
	}
	return rows;
}();

void place_row(const Unit_row& unit, __m128 center, __m128 radius, Sphere_row& result) {
	for (size_t j = 0; j < unit.size(); ++j) {
		result.at[j] = _mm_add_ps(center, _mm_mul_ps(unit[j].lanes(), radius));
	}
}

// --- Capsules

constexpr Angle turn_11_25 = {0.98078525f, 0.19509032f}; // degrees
constexpr Angle turn_30 = {0.8660254f, 0.5f};
constexpr Angle turn_36 = {0.809017f, 0.58778524f};
constexpr size_t arc_steps = 3; // of 30 degrees

struct Capsule {
	Capsule(const xylVec3& a_end, const xylVec3& b_end, float a_radius, float b_radius,
	        xylColor line_color)
		: a(with_marker(a_end.lanes())), b(with_marker(b_end.lanes())), radius_a(scale(a_radius)),
		  radius_b(scale(b_radius)), color(line_color) {
		xylVec3 way, axis, unused;
		xylVec3::perpendicular_axes_in_cartesian_space(a_end, b_end, way, axis, unused);
		dir = with_zero(way.lanes());
		spoke = with_zero(axis.lanes());
	}

	// Points at the two ends, along `way` or against it.
	__m128 beyond_a(__m128 way) const { return _mm_sub_ps(a, _mm_mul_ps(way, radius_a)); }
	__m128 beside_a(__m128 way) const { return _mm_add_ps(a, _mm_mul_ps(way, radius_a)); }
	__m128 at_b(__m128 way) const { return _mm_add_ps(b, _mm_mul_ps(way, radius_b)); }

	__m128 a, b, radius_a, radius_b;
	__m128 dir, spoke; // the first spoke
	xylColor color;
};

// A quarter circle at both ends, from a spoke outwards.
struct Arcs {
	__m128 tangent;
	__m128 way;            // reached so far,
	__m128 from_a, from_b; // and the points there
	Line_writer writer;

	void extend(const Capsule& c) {
		way = rotate_around_axis(way, tangent, turn_30.cosine, turn_30.sine);
		const __m128 to_a = c.beyond_a(way);
		const __m128 to_b = c.at_b(way);
		writer.connect(from_a, to_a);
		writer.connect(from_b, to_b);
		from_a = to_a;
		from_b = to_b;
	}
};

// Arcs of four spokes grow side by side: each rotation waits for the one before it, so a single
// pair of arcs took 1.6 times as long. `has_parallel_sides`: their delta is b − a itself.
void add_capsule(Line_batch& batch, const Capsule& c, int steps, Angle step,
                 bool has_parallel_sides) {
	constexpr int together = 4;
	constexpr size_t lines_of_spoke = 3 + 2 * arc_steps;
	static_assert(together * lines_of_spoke <= Line_batch::capacity);
	const __m128 side = _mm_sub_ps(c.b, c.a);
	__m128 spoke = c.spoke;
	__m128 previous_p = _mm_setzero_ps();
	__m128 previous_q = _mm_setzero_ps();
	for (int first = 0; first <= steps; first += together) {
		const int end = std::min(first + together, steps + 1);
		const size_t missing = (first == 0 ? 2u : 0u) + (end > steps ? 1u : 0u); // rings, a side
		const size_t spokes = static_cast<size_t>(end - first);
		Line_writer writer = batch.take(spokes * lines_of_spoke - missing, c.color);
		Arcs arcs[together];
		for (int k = first; k < end; ++k) {
			// Before its first use, too.
			spoke = rotate_around_axis(spoke, c.dir, step.cosine, step.sine);
			const __m128 p = c.beside_a(spoke);
			const __m128 q = c.at_b(spoke);
			if (k != steps) writer.add(p, has_parallel_sides ? side : _mm_sub_ps(q, p));
			if (k > 0) {
				writer.connect(p, previous_p);
				writer.connect(q, previous_q);
			}
			arcs[k - first] = {cross(spoke, c.dir), spoke, c.beyond_a(spoke), q,
			                   writer.leave(2 * arc_steps)};
			previous_p = p;
			previous_q = q;
		}
		for (size_t i = 0; i < arc_steps; ++i) {
			for (size_t j = 0; j < spokes; ++j) arcs[j].extend(c);
		}
	}
}

// --- Cones

constexpr size_t cone_spokes = 10;
constexpr int rim_points = 12;

// Of k·0.5235988.
constexpr Angle rim_angles[rim_points] = {{1.0f, 0.0f},
                                          {0.866025388f, 0.5f},
                                          {0.49999997f, 0.866025448f},
                                          {-4.37113883e-08f, 1.0f},
                                          {-0.50000006f, 0.866025388f},
                                          {-0.866025388f, 0.50000006f},
                                          {-1.0f, -8.74227766e-08f},
                                          {-0.866025269f, -0.500000179f},
                                          {-0.499999911f, -0.866025448f},
                                          {1.19248806e-08f, -1.0f},
                                          {0.499999911f, -0.866025448f},
                                          {0.866025567f, -0.499999762f}};

// Perpendicular to `dir`, in the XZ plane; not finite where dir.z is 0.
__m128 start_spoke(const xylVec3& dir) {
	const float q = -dir.x / dir.z;
	const __m128 squared = _mm_max_ss(_mm_set_ss(min_normal), _mm_set_ss(q * q + 1.0f));
	const float w = first(approximate_inverse_root(squared));
	return _mm_setr_ps(w, 0, q * w, 0);
}

// A length that isn't a number counts as one ring, one beyond an int as none.
int ring_count(float length) {
	const float rings = length * 0.5f > 1.0f ? length * 0.5f : 1.0f;
	return _mm_cvttss_si32(_mm_set_ss(rings));
}

xylVec3 rim_point(const xylVec3& apex, const xylVec3& base, float length, float radius,
                  const Angle& angle) {
	xylVec3 way(base.x + angle.cosine * radius - apex.x, base.y - apex.y,
	            base.z + angle.sine * radius - apex.z);
	way.fast_normalize();
	return apex + way * length;
}

} // namespace

void xylDebug_render_records::add_debug_sphere(const xylVec3& center, const float& radius,
                                               xylColor color, bool selector, float duration) {
	if (!is_enabled(*this)) return;
	Line_batch batch(*this, selector, duration);
	const __m128 middle = with_marker(center.lanes());
	const __m128 factor = scale(radius);
	Sphere_row rows[2]; // lower and upper, in turn
	place_row(unit_sphere[0], middle, factor, rows[0]);
	for (size_t i = 0; i < sphere_points; ++i) {
		const Sphere_row& lower = rows[i % 2];
		Sphere_row& upper = rows[1 - i % 2];
		place_row(unit_sphere[i + 1], middle, factor, upper);
		Line_writer writer = batch.take(2 * sphere_points - 1, color);
		writer.connect(lower.at[0], upper.at[0]);
		for (size_t j = 1; j < sphere_points; ++j) {
			writer.connect(lower.at[j], upper.at[j]);
			writer.connect(lower.at[j - 1], lower.at[j]);
		}
	}
}

void xylDebug_render_records::add_debug_capsule(const xylVec3& a, const xylVec3& b,
                                                const float& radius, xylColor color, bool selector,
                                                float duration) {
	if (!is_enabled(*this)) return;
	Line_batch batch(*this, selector, duration);
	add_capsule(batch, {a, b, radius, radius, color}, 32, turn_11_25, true);
}

void xylDebug_render_records::add_debug_capsule_with_two_radius(const xylVec3& a, const xylVec3& b,
                                                                const float& radius_a,
                                                                const float& radius_b,
                                                                xylColor color, bool selector,
                                                                float duration) {
	if (!is_enabled(*this)) return;
	Line_batch batch(*this, selector, duration);
	add_capsule(batch, {a, b, radius_a, radius_b, color}, 10, turn_36, false);
}

void xylDebug_render_records::add_debug_cone(const xylVec3& apex, const xylVec3& base, float radius,
                                             xylColor color, bool selector, float duration) {
	if (!is_enabled(*this)) return;
	Line_batch batch(*this, selector, duration);
	xylVec3 dir = base - apex;
	const float length = dir.length();
	dir.fast_normalize();
	const __m128 tip = with_marker(apex.lanes());
	const __m128 axis = with_zero(dir.lanes());
	__m128 spokes[cone_spokes + 1]; // the last is the first again, but for rounding
	spokes[0] = start_spoke(dir);
	for (size_t j = 0; j < cone_spokes; ++j) {
		spokes[j + 1] = rotate_around_axis(spokes[j], axis, turn_36.cosine, turn_36.sine);
	}
	const __m128 whole = _mm_mul_ps(axis, scale(length));
	const int rings = ring_count(length);
	for (int i = 1; i <= rings && !batch.is_full(); ++i) {
		const float step = static_cast<float>(i);
		const float all = static_cast<float>(rings);
		const __m128 center = _mm_add_ps(tip, _mm_mul_ps(whole, scale(step / all)));
		const __m128 ring_radius = scale(step * radius / all);
		__m128 from = _mm_add_ps(center, _mm_mul_ps(spokes[0], ring_radius));
		Line_writer writer = batch.take(cone_spokes, color);
		for (size_t j = 1; j <= cone_spokes; ++j) {
			const __m128 to = _mm_add_ps(center, _mm_mul_ps(spokes[j], ring_radius));
			writer.connect(from, to);
			from = to;
		}
	}
	const __m128 end = with_marker(base.lanes());
	const __m128 whole_radius = scale(radius);
	Line_writer writer = batch.take(cone_spokes, color);
	for (size_t j = 0; j < cone_spokes; ++j) {
		writer.connect(tip, _mm_add_ps(end, _mm_mul_ps(spokes[j], whole_radius)));
	}
}

void xylDebug_render_records::add_debug_cone_solid(const xylVec3& apex, const xylVec3& base,
                                                   float half_angle, xylMatrix_frame frame,
                                                   xylColor color, bool, float) {
	if (!is_enabled(*this)) return;
	const std::lock_guard<xylRecursive_mutex> lock(mutex);
	const float length = (base - apex).length();
	// The tangent in double: the same float on every system.
	const float radius = static_cast<float>(std::tan(static_cast<double>(half_angle))) * length;
	const xylVec3 tip = frame.transform_point(apex);
	xylVec3 rim[rim_points + 1];
	for (int k = 0; k < rim_points; ++k) {
		rim[k] = frame.transform_point(rim_point(apex, base, length, radius, rim_angles[k]));
	}
	rim[rim_points] = rim[0];
	make_room(quads, rim_points);
	for (int k = 0; k < rim_points; ++k) {
		quads.push_back({{tip, rim[k], rim[k + 1], rim[k + 1]}, color});
	}
}
