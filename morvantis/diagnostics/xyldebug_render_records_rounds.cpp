// Spheres, capsules and cones. Cosines and sines of fixed steps are stored, rounded from double, so
// that the shapes come out the same on every system (but for the last digits of what goes through
// fast_normalize()).

#include <morvantis/diagnostics/xyldebug_render_records.h>

#include <morvantis/diagnostics/debug_batch.h>

#include <array>
#include <cmath>

namespace {

using namespace debug_records;

struct Angle {
	float cosine, sine;
};

// --- The sphere's table

constexpr int sphere_points = 11; // rows and columns

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

using Sphere_row = std::array<xylVec3, sphere_points>;

// Points of the unit sphere, row by row from below the pole.
constexpr std::array<Sphere_row, sphere_points + 1> unit_sphere = [] {
	std::array<Sphere_row, sphere_points + 1> rows{};
	for (size_t i = 0; i < rows.size(); ++i) {
		for (size_t j = 0; j < rows[i].size(); ++j) {
			rows[i][j] = xylVec3(longitudes[j].cosine * latitudes[i].cosine,
			                     longitudes[j].sine * latitudes[i].cosine, latitudes[i].sine);
		}
	}
	return rows;
}();

Sphere_row place_row(const Sphere_row& unit, const xylVec3& center, float radius) {
	Sphere_row result;
	for (size_t j = 0; j < unit.size(); ++j) result[j] = center + unit[j] * radius;
	return result;
}

// --- Capsules

constexpr Angle turn_11_25 = {0.98078525f, 0.19509032f}; // degrees
constexpr Angle turn_30 = {0.8660254f, 0.5f};
constexpr Angle turn_36 = {0.809017f, 0.58778524f};
constexpr int arc_steps = 3; // of 30 degrees

struct Capsule {
	const xylVec3& a;
	const xylVec3& b;
	float radius_a, radius_b;
	xylColor color;
	int steps;
	Angle step;
	bool has_parallel_sides; // whose delta is b − a itself
};

// A quarter circle at both ends, from the spoke outwards.
void add_arcs(Line_batch& batch, const Capsule& c, const xylVec3& spoke, const xylVec3& dir) {
	const xylVec3 tangent = spoke.cross(dir);
	xylVec3 way = spoke;
	xylVec3 from_a = c.a - way * c.radius_a;
	xylVec3 from_b = c.b + way * c.radius_b;
	for (int i = 0; i < arc_steps; ++i) {
		way = rotate_around_axis(way, tangent, turn_30.cosine, turn_30.sine);
		const xylVec3 to_a = c.a - way * c.radius_a;
		const xylVec3 to_b = c.b + way * c.radius_b;
		batch.connect(from_a, to_a, c.color);
		batch.connect(from_b, to_b, c.color);
		from_a = to_a;
		from_b = to_b;
	}
}

void add_capsule(Line_batch& batch, const Capsule& c) {
	xylVec3 dir, spoke, unused;
	xylVec3::perpendicular_axes_in_cartesian_space(c.a, c.b, dir, spoke, unused);
	const xylVec3 side = c.b - c.a;
	xylVec3 previous_p, previous_q;
	for (int k = 0; k <= c.steps; ++k) {
		// Before its first use, too.
		spoke = rotate_around_axis(spoke, dir, c.step.cosine, c.step.sine);
		const xylVec3 p = c.a + spoke * c.radius_a;
		const xylVec3 q = c.b + spoke * c.radius_b;
		if (k != c.steps) batch.add(p, c.has_parallel_sides ? side : q - p, c.color);
		if (k > 0) {
			batch.connect(p, previous_p, c.color);
			batch.connect(q, previous_q, c.color);
		}
		add_arcs(batch, c, spoke, dir);
		previous_p = p;
		previous_q = q;
	}
}

// --- Cones

constexpr int cone_spokes = 10;
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
xylVec3 start_spoke(const xylVec3& dir) {
	const float q = -dir.x / dir.z;
	const __m128 squared = _mm_max_ss(_mm_set_ss(xyl_lanes::min_normal), _mm_set_ss(q * q + 1.0f));
	const float w = xyl_lanes::first(xyl_lanes::approximate_inverse_root(squared));
	return {w, 0, q * w};
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
	Sphere_row lower = place_row(unit_sphere[0], center, radius);
	for (size_t i = 0; i < sphere_points; ++i) {
		const Sphere_row upper = place_row(unit_sphere[i + 1], center, radius);
		for (size_t j = 0; j < sphere_points; ++j) {
			batch.connect(lower[j], upper[j], color);
			if (j > 0) batch.connect(lower[j - 1], lower[j], color);
		}
		lower = upper;
	}
}

void xylDebug_render_records::add_debug_capsule(const xylVec3& a, const xylVec3& b,
                                                const float& radius, xylColor color, bool selector,
                                                float duration) {
	if (!is_enabled(*this)) return;
	Line_batch batch(*this, selector, duration);
	add_capsule(batch, {a, b, radius, radius, color, 32, turn_11_25, true});
}

void xylDebug_render_records::add_debug_capsule_with_two_radius(const xylVec3& a, const xylVec3& b,
                                                                const float& radius_a,
                                                                const float& radius_b,
                                                                xylColor color, bool selector,
                                                                float duration) {
	if (!is_enabled(*this)) return;
	Line_batch batch(*this, selector, duration);
	add_capsule(batch, {a, b, radius_a, radius_b, color, 10, turn_36, false});
}

void xylDebug_render_records::add_debug_cone(const xylVec3& apex, const xylVec3& base, float radius,
                                             xylColor color, bool selector, float duration) {
	if (!is_enabled(*this)) return;
	Line_batch batch(*this, selector, duration);
	xylVec3 dir = base - apex;
	const float length = dir.length();
	dir.fast_normalize();
	xylVec3 spokes[cone_spokes + 1]; // the last is the first again, but for rounding
	spokes[0] = start_spoke(dir);
	for (int j = 0; j < cone_spokes; ++j) {
		spokes[j + 1] = rotate_around_axis(spokes[j], dir, turn_36.cosine, turn_36.sine);
	}
	const int rings = ring_count(length);
	for (int i = 1; i <= rings && !batch.is_full(); ++i) {
		const float step = static_cast<float>(i);
		const float all = static_cast<float>(rings);
		const xylVec3 center = apex + dir * length * (step / all);
		const float ring_radius = step * radius / all;
		xylVec3 from = center + spokes[0] * ring_radius;
		for (int j = 1; j <= cone_spokes; ++j) {
			const xylVec3 to = center + spokes[j] * ring_radius;
			batch.connect(from, to, color);
			from = to;
		}
	}
	for (int j = 0; j < cone_spokes; ++j) batch.connect(apex, base + spokes[j] * radius, color);
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
