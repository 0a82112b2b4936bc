// The round shapes as they are told: every angle asked of the runtime, every line added on its own.
#pragma once

#include <morvantis/diagnostics/xyldebug_render_records.h>

#include <cmath>

namespace step_by_step {

inline float cosine(float angle) {
	return static_cast<float>(std::cos(static_cast<double>(angle)));
}
inline float sine(float angle) { return static_cast<float>(std::sin(static_cast<double>(angle))); }

inline xylVec3 rotate(const xylVec3& v, const xylVec3& k, float c, float s) {
	const float along = ((k.x * v.x + k.y * v.y) + k.z * v.z) * (1.0f - c);
	return {(v.x * c + (k.y * v.z - k.z * v.y) * s) + k.x * along,
	        (v.y * c + (k.z * v.x - k.x * v.z) * s) + k.y * along,
	        (v.z * c + (k.x * v.y - k.y * v.x) * s) + k.z * along};
}

inline void add_sphere(xylDebug_render_records& records, const xylVec3& center, float radius,
                       xylColor color) {
	for (int i = 0; i <= 10; ++i) {
		const float lower = static_cast<float>(i - 1) * 0.31415927f - 1.5707964f;
		const float upper = static_cast<float>(i) * 0.31415927f - 1.5707964f;
		xylVec3 previous{};
		for (int j = 0; j <= 10; ++j) {
			const float theta = static_cast<float>(j - 1) * 0.62831855f;
			const auto point = [&](float phi) {
				return xylVec3(center.x + cosine(theta) * cosine(phi) * radius,
				               center.y + sine(theta) * cosine(phi) * radius,
				               center.z + sine(phi) * radius);
			};
			const xylVec3 a = point(lower);
			records.add_debug_line(a, point(upper) - a, color, false, 1);
			if (j > 0) records.add_debug_line(previous, a - previous, color, false, 1);
			previous = a;
		}
	}
}

// `steps` is 32 for the capsule of one radius and 10 for that of two.
inline void add_capsule(xylDebug_render_records& records, const xylVec3& a, const xylVec3& b,
                        float radius_a, float radius_b, int steps, xylColor color) {
	const float c = steps == 32 ? 0.98078525f : 0.809017f;
	const float s = steps == 32 ? 0.19509032f : 0.58778524f;
	xylVec3 dir, r, unused;
	xylVec3::perpendicular_axes_in_cartesian_space(a, b, dir, r, unused);
	xylVec3 last_p{}, last_q{};
	for (int k = 0; k <= steps; ++k) {
		r = rotate(r, dir, c, s);
		const xylVec3 p = a + r * radius_a;
		const xylVec3 q = b + r * radius_b;
		if (k != steps) records.add_debug_line(p, steps == 32 ? b - a : q - p, color, false, 1);
		if (k > 0) {
			records.add_debug_line(p, last_p - p, color, false, 1);
			records.add_debug_line(q, last_q - q, color, false, 1);
		}
		const xylVec3 t = r.cross(dir);
		xylVec3 way = r;
		for (int i = 0; i < 3; ++i) {
			const xylVec3 next = rotate(way, t, 0.8660254f, 0.5f);
			const xylVec3 from_a = a - way * radius_a;
			const xylVec3 from_b = b + way * radius_b;
			records.add_debug_line(from_a, a - next * radius_a - from_a, color, false, 1);
			records.add_debug_line(from_b, b + next * radius_b - from_b, color, false, 1);
			way = next;
		}
		last_p = p;
		last_q = q;
	}
}

inline void add_cone(xylDebug_render_records& records, const xylVec3& apex, const xylVec3& base,
                     float radius, xylColor color) {
	xylVec3 d = base - apex;
	const float length = d.length();
	d.fast_normalize();
	const float q = -d.x / d.z;
	const float w = xyl_lanes::first(xyl_lanes::approximate_inverse_root(_mm_set_ss(q * q + 1)));
	const xylVec3 first(w, 0, q * w);
	const int n = static_cast<int>(length * 0.5f > 1 ? length * 0.5f : 1);
	for (int i = 1; i <= n; ++i) {
		const xylVec3 center = apex + d * length * (static_cast<float>(i) / static_cast<float>(n));
		const float ring = static_cast<float>(i) * radius / static_cast<float>(n);
		xylVec3 spoke = first;
		for (int j = 0; j < 10; ++j) {
			const xylVec3 next = rotate(spoke, d, 0.809017f, 0.58778524f);
			const xylVec3 from = center + spoke * ring;
			records.add_debug_line(from, center + next * ring - from, color, false, 1);
			spoke = next;
		}
	}
	xylVec3 spoke = first;
	for (int j = 0; j < 10; ++j) {
		records.add_debug_line(apex, base + spoke * radius - apex, color, false, 1);
		spoke = rotate(spoke, d, 0.809017f, 0.58778524f);
	}
}

} // namespace step_by_step
