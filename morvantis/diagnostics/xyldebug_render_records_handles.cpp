// Arrows, axes and the handles of an editor.

#include <morvantis/diagnostics/xyldebug_render_records.h>

#include <morvantis/diagnostics/debug_batch.h>
#include <morvantis/math/xylbounding_box.h>

namespace {

using namespace debug_records;
using Lock = std::lock_guard<xylRecursive_mutex>;

constexpr xylUInt32 highlight_color = 0xFFD8D8D8;
constexpr xylUInt32 plane_mask = 0x40FFFFFF; // of a colour with full alpha

// Colours of the three axes, or the highlight where `highlights`, if any, says so.
struct Axis_colors {
	explicit Axis_colors(const int* highlights)
		: at{xylDebug_render_records::axis_color_x, xylDebug_render_records::axis_color_y,
	         xylDebug_render_records::axis_color_z} {
		for (int i = 0; highlights && i < 3; ++i) {
			if (highlights[i]) at[i] = highlight_color;
		}
	}

	xylColor at[3];
};

// --- Handles for moving

// The frame with two of its axes turned by a right angle, as a cosine in float has it.
constexpr float right_angle_cosine = -4.371139e-08f;

xylMatrix_frame with_forward_on_side(const xylMatrix_frame& frame) {
	xylMatrix_frame result = frame;
	result.s = frame.s * right_angle_cosine - frame.f;
	result.f = frame.f * right_angle_cosine + frame.s;
	return result;
}

xylMatrix_frame with_forward_on_up(const xylMatrix_frame& frame) {
	xylMatrix_frame result = frame;
	result.f = frame.f * right_angle_cosine + frame.u;
	result.u = frame.u * right_angle_cosine - frame.f;
	return result;
}

void add_tip(xylDebug_render_records& records, xylMatrix_frame frame, const xylVec3& tip,
             float scale, xylColor color) {
	constexpr float half_angle = 0.3f; // radians
	frame.origin = tip;
	records.add_debug_cone_solid({0, 0.2f * scale, 0}, {0, -0.05f * scale, 0}, half_angle, frame,
	                             color, false, 0);
}

void add_plane_handle(xylDebug_render_records& records, const xylVec3& origin, const xylVec3& a,
                      const xylVec3& b, float size, xylColor color) {
	const xylVec3 at_a = origin + a * size;
	const xylVec3 at_b = origin + b * size;
	const xylVec3 corners[4] = {origin, at_a, origin + (a + b) * size, at_b};
	records.add_debug_quad(corners, color & plane_mask, false, false);
	records.add_debug_line(at_a, b * size, color, false, 0);
	records.add_debug_line(at_b, a * size, color, false, 0);
}

// --- Handles for scaling

struct Axis_lengths {
	float s, f, u;
};

Axis_lengths scaled_lengths(float scale, float factor, const int* axes, int uniform) {
	const float m = scale * factor;
	if (uniform) return {m, m, m};
	if (axes[0]) return {m, scale, scale};
	if (axes[1]) return {scale, m, scale};
	if (axes[2]) return {scale, scale, m};
	if (axes[3]) return {m, scale, m};
	if (axes[4]) return {m, m, scale};
	if (axes[5]) return {scale, m, m};
	return {scale, scale, scale};
}

// Three lines between the axes, at `part` of their lengths.
void add_joints(xylDebug_render_records& records, const xylMatrix_frame& frame,
                const Axis_lengths& length, float part, const xylColor* colors) {
	const xylVec3 on_s = frame.origin + frame.s * (part * length.s);
	const xylVec3 on_f = frame.origin + frame.f * (part * length.f);
	const xylVec3 on_u = frame.origin + frame.u * (part * length.u);
	records.add_debug_line(on_s, on_u - on_s, colors[0], false, 0);
	records.add_debug_line(on_f, on_s - on_f, colors[1], false, 0);
	records.add_debug_line(on_u, on_f - on_u, colors[2], false, 0);
}

// --- The rotation area

constexpr float sweep_cosine = 0.999687493f; // of 0.025 radian
constexpr float sweep_sine = 0.0249973964f;
constexpr int full_turn = 252; // steps, the last not whole

bool is_left_of(const xylVec3& a, const xylVec3& b, const xylVec3& axis) {
	return axis.dot(a.cross(b)) > 0;
}

// The fan from `from` until it passes `to`.
void add_sweep(xylArray<Debug_quad_record>& quads, const xylVec3& origin, const xylVec3& axis,
               const xylVec3& from, const xylVec3& to, xylColor color) {
	const bool is_left = is_left_of(from, to, axis);
	const float sine = is_left ? sweep_sine : -sweep_sine;
	xylVec3 current = from;
	xylVec3 next = rotate_around_axis(from, axis, sweep_cosine, sine);
	for (int i = 0; i < full_turn && is_left_of(current, to, axis) == is_left; ++i) {
		quads.push_back({{origin + current, origin, origin, origin + next}, color});
		current = rotate_around_axis(current, axis, sweep_cosine, sine);
		next = rotate_around_axis(next, axis, sweep_cosine, sine);
	}
}

} // namespace

void xylDebug_render_records::add_debug_direction_arrow(const xylVec3& start, const xylVec3& delta,
                                                        xylColor color, bool selector) {
	constexpr float nearly_up = 0.99f; // |f.z| above which Z is no reference
	if (!is_enabled(*this)) return;
	const Lock lock(mutex);
	xylMatrix_frame frame;
	frame.origin = start;
	frame.s = {1, 0, 0, 0};
	frame.f = delta;
	frame.f.normalize();
	const bool is_nearly_up = frame.f.z > nearly_up || -frame.f.z > nearly_up;
	frame.u = is_nearly_up ? xylVec3(0, 1, 0, 0) : xylVec3(0, 0, 1, 0);
	frame.orthonormalize();
	const float length = delta.length();
	add_debug_line(start, delta, color, selector, 0);
	const xylVec3 tip = start + delta + frame.f * (0.2f * length);
	const xylVec3 middle = start + delta - frame.f * (0.05f * length);
	const xylVec3 s = frame.s * (0.05f * length);
	const xylVec3 u = frame.u * (0.05f * length);
	const xylVec3 corners[8] = {tip, middle + s + u, middle - s + u, tip, tip,
	                            tip, middle - s - u, middle + s - u};
	add_debug_cube_box_object(corners, color);
}

void xylDebug_render_records::add_debug_frame(const xylMatrix_frame& frame, float length,
                                              float duration) {
	if (!is_enabled(*this)) return;
	Line_batch batch(*this, false, duration);
	batch.add(frame.origin, frame.s * length, axis_color_x);
	batch.add(frame.origin, frame.f * length, axis_color_y);
	batch.add(frame.origin, frame.u * length, axis_color_z);
}

void xylDebug_render_records::add_debug_coordinate_space(const xylMatrix_frame& frame, float scale,
                                                         int* highlight_axes,
                                                         int* highlight_planes) {
	if (!is_enabled(*this)) return;
	const Lock lock(mutex);
	const xylVec3& origin = frame.origin;
	const Axis_colors axes(highlight_axes);
	add_tip(*this, frame, origin + frame.f * scale, scale, axes.at[1]);
	add_tip(*this, with_forward_on_side(frame), origin + frame.s * scale, scale, axes.at[0]);
	add_tip(*this, with_forward_on_up(frame), origin + frame.u * scale, scale, axes.at[2]);
	add_debug_line(origin, frame.s * scale, axes.at[0], false, 0);
	add_debug_line(origin, frame.f * scale, axes.at[1], false, 0);
	add_debug_line(origin, frame.u * scale, axes.at[2], false, 0);

	const auto plane_color = [&](int entry, xylColor color) {
		return highlight_planes && highlight_planes[entry] ? xylColor(highlight_color) : color;
	};
	const float size = 0.475f * scale;
	add_plane_handle(*this, origin, frame.s, frame.u, size, plane_color(0, axis_color_y));
	add_plane_handle(*this, origin, frame.s, frame.f, size, plane_color(1, axis_color_z));
	add_plane_handle(*this, origin, frame.f, frame.u, size, plane_color(2, axis_color_x));
}

void xylDebug_render_records::add_debug_coordinate_space_scale(
	const xylMatrix_frame& frame, float scale, int* highlight_axes, int* highlight_planes,
	int highlight_all, int* scale_axes, int scale_uniform, float scale_factor) {
	constexpr float inner = 0.175f; // parts of an axis
	constexpr float outer = 0.7f;
	if (!is_enabled(*this)) return;
	const Lock lock(mutex);
	const Axis_lengths lengths = scaled_lengths(scale, scale_factor, scale_axes, scale_uniform);
	const float length_of[3] = {lengths.s, lengths.f, lengths.u};
	const xylVec3* const rows[3] = {&frame.s, &frame.f, &frame.u};
	for (int i = 0; i < 3; ++i) {
		const xylColor color = Axis_colors(highlight_axes).at[i];
		const xylVec3 start = frame.origin + *rows[i] * (inner * length_of[i]);
		const xylVec3 end = frame.origin + *rows[i] * length_of[i];
		add_debug_line(start, end - start, color, false, 0);
		xylMatrix_frame at_tip = frame;
		at_tip.origin = end;
		const float half = 0.05f * scale;
		xylVec3 corners[8];
		xylBounding_box::get_transformed_tip_points(corners, {-half, -half, -half},
		                                            {half, half, half}, at_tip);
		add_debug_cube_box_object_from_bb(corners, color);
	}
	const Axis_colors planes(highlight_planes);
	const xylColor all[3] = {highlight_color, highlight_color, highlight_color};
	add_joints(*this, frame, lengths, inner, highlight_all ? all : planes.at);
	add_joints(*this, frame, lengths, outer, planes.at);
}

void xylDebug_render_records::add_debug_rotation_area(const xylMatrix_frame&,
                                                      const xylMatrix_frame& frame, xylVec3 from,
                                                      xylVec3 to, float scale, xylColor color,
                                                      int mode) {
	constexpr int ends_alone = 4;
	if (!is_enabled(*this)) return;
	const Lock lock(mutex);
	from = from / from.length() * scale;
	to = to / to.length() * scale;
	if (mode == ends_alone) {
		add_debug_line(frame.origin, from, color, false, 0);
		add_debug_line(frame.origin, to, color, false, 0);
	} else if (mode >= 1 && mode <= 3) {
		const xylVec3* const axes[3] = {&frame.s, &frame.f, &frame.u};
		add_sweep(quads, frame.origin, *axes[mode - 1], from, to, color);
	}
}
