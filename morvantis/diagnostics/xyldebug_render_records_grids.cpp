// Grids, which may be larger than their list, and the test of an arc.

#include <morvantis/diagnostics/xyldebug_render_records.h>

#include <morvantis/core/xyltypes.h>
#include <morvantis/diagnostics/debug_batch.h>

#include <cmath>
#include <emmintrin.h> // a conversion to int that is defined for every float
#include <numbers>

namespace {

using namespace debug_records;

constexpr float grid_alpha = 191; // in the middle of a grid
constexpr xylUInt32 rgb_mask = 0x00FFFFFF;

// One of the two families of lines: from `start` on by `step`, each of twice `delta`.
void add_grid_lines(Line_batch& batch, xylVec3 start, const xylVec3& delta, const xylVec3& step,
                    int half_count, xylColor color) {
	const xylColor clear = color & rgb_mask;
	for (xylInt64 i = -static_cast<xylInt64>(half_count); i <= half_count && !batch.is_full();
	     ++i) {
		const float away = static_cast<float>(i < 0 ? -i : i);
		const float fade = 1.0f - away * (1.0f / static_cast<float>(half_count));
		const int alpha = _mm_cvttss_si32(_mm_set_ss(fade * grid_alpha));
		const xylColor seen = clear | static_cast<xylUInt32>(alpha) << 24;
		batch.add(start, delta, clear, seen);
		batch.add(start + delta, delta, seen, clear);
		start += step;
	}
}

double within_a_turn(double angle) {
	constexpr double turn = 2 * std::numbers::pi;
	const double rest = std::fmod(angle, turn);
	return rest < 0 ? rest + turn : rest;
}

} // namespace

void xylDebug_render_records::add_object_space_grid(const xylMatrix_frame& frame, float cell,
                                                    int half_count, xylColor color) {
	if (!is_enabled(*this)) return;
	Line_batch batch(*this, true, 0, max_double_color_lines);
	const float n = static_cast<float>(half_count);
	const xylVec3 corner = frame.origin + (frame.s + frame.f) * (-n * cell);
	add_grid_lines(batch, corner, frame.f * cell * n, frame.s * cell, half_count, color);
	add_grid_lines(batch, corner, frame.s * cell * n, frame.f * cell, half_count, color);
}

void xylDebug_render_records::add_ground_grid(float size, unsigned int count, xylColor color) {
	if (!is_enabled(*this)) return;
	Line_batch batch(*this, true, 0);
	const float step = size / static_cast<float>(count - 1);
	const float low = -size * 0.5f;
	float x = low;
	for (unsigned int i = 0; i < count && !batch.is_full(); ++i, x += step) {
		batch.add({x, low, 0}, {0, size, 0}, color);
	}
	float y = low;
	for (unsigned int i = 0; i < count && !batch.is_full(); ++i, y += step) {
		batch.add({low, y, 0}, {size, 0, 0}, color);
	}
}

bool xylDebug_render_records::is_angle_on_arc(double angle, double arc_start, double arc_end) {
	angle = within_a_turn(angle);
	arc_start = within_a_turn(arc_start);
	arc_end = within_a_turn(arc_end);
	if (arc_start >= arc_end) return angle >= arc_start || angle <= arc_end;
	return angle >= arc_start && angle <= arc_end;
}
