#include "scene.h"

#include <morvantis/core/xylreport.h>
#include <morvantis/diagnostics/xyldebug_render_records.h>
#include <morvantis/math/xylconvex_polygon.h>

namespace {

// Of an agent by its culling result: outside, inside, partly inside.
constexpr xylColor result_colors[] = {0xFF7486A8, 0xFF3DDC97, 0xFFFFB84D};
constexpr xylColor frustum_color = 0xFF7FD4FF, pick_color = 0xFFFF4D8D;
constexpr xylColor hull_color = 0xFFC9F299;
constexpr xylColor grid_color = 0xFF86A2D0, paper_color = 0xFFE8EEF8, dim_color = 0xFF93A1BA;

xylColor with_alpha(xylColor color, unsigned int alpha) {
	return (color & 0xFFFFFFu) | alpha << 24;
}

// A dark patch under an agent, which makes it stand on the ground.
void draw_shadow(const Agent& agent, xylDebug_render_records& records) {
	const xylMatrix_frame frame = agent.frame();
	const xylBounding_box box = agent.box();
	const float x = box.max.x * 1.15f, y = box.max.y * 1.15f;
	const xylVec3 corners[] = {frame.transform_point({-x, -y, 0}),
	                           frame.transform_point({x, -y, 0}), frame.transform_point({x, y, 0}),
	                           frame.transform_point({-x, y, 0})};
	records.add_debug_quad(corners, 0x70000008, false, true);
}

void draw_box(const Agent& agent, xylFrustum_check_result check, xylDebug_render_records& records) {
	const xylBounding_box box = agent.box();
	xylVec3 corners[8];
	box.get_transformed_tip_points(corners, agent.frame());
	const xylColor color = result_colors[check];
	if (check == frustum_outside) {
		records.add_debug_cube_box_object_from_bb_dithered(corners, color);
	} else {
		records.add_debug_cube_box_object_from_bb(corners, color);
	}
	records.add_debug_box_object_with_points(corners, color, false, 0);
	// A thing with wheels has a front.
	const xylMatrix_frame frame = agent.frame();
	const xylVec3 roof = frame.transform_point({0, 0, box.max.z});
	records.add_debug_line(roof, agent.heading * box.max.y, paper_color, false, 0);
}

void draw_capsule(const Agent& agent, xylFrustum_check_result check,
                  xylDebug_render_records& records) {
	const xylBounding_box box = agent.box();
	const float radius = box.max.x;
	const xylVec3 low = agent.position + xylVec3(0, 0, radius);
	const xylVec3 high = agent.position + xylVec3(0, 0, box.max.z - radius);
	const xylColor color = result_colors[check];
	if (check == frustum_outside) {
		records.add_debug_capsule_with_two_radius(low, high, radius, radius,
		                                          with_alpha(color, 0xA0), false, 0);
	} else {
		records.add_debug_capsule(low, high, radius, with_alpha(color, 0xB0), false, 0);
	}
	records.add_debug_direction_arrow(agent.position + xylVec3(0, 0, box.max.z * 0.5f),
	                                  agent.heading * 1.4f, color, false);
}

// The name above an agent, and its health as a row of strokes.
void draw_label(const Agent& agent, bool is_picked, xylDebug_render_records& records) {
	const xylInt_vec2 above(0, is_picked ? -22 : -8);
	char text[48];
	xyl_snprintf(text, sizeof(text), is_picked ? "%s - %d %%" : "%s", agent.name, agent.health);
	records.add_debug_text(agent.position + xylVec3(0, 0, agent.box().max.z), text,
	                       is_picked ? pick_color : paper_color, &above, 0);
}

// Faces and edges, near face first.
void draw_frustum(const xylFrustum& frustum, xylDebug_render_records& records) {
	xylVec3 p[8];
	if (!frustum.get_global_frustum_box_points(p)) return;
	constexpr int faces[6][4] = {{0, 7, 3, 2}, {4, 5, 1, 6}, {7, 5, 1, 3},
	                             {0, 4, 6, 2}, {0, 7, 5, 4}, {2, 3, 1, 6}};
	for (const auto& face : faces) {
		const xylVec3 corners[] = {p[face[0]], p[face[1]], p[face[2]], p[face[3]]};
		records.add_debug_quad(corners, with_alpha(frustum_color, 0x12), false, false);
	}
	constexpr int edges[12][2] = {{0, 7}, {7, 3}, {3, 2}, {2, 0}, {4, 5}, {5, 1},
	                              {1, 6}, {6, 4}, {0, 4}, {7, 5}, {3, 1}, {2, 6}};
	for (const auto& [from, to] : edges)
		records.add_debug_line(p[from], p[to] - p[from], frustum_color, false, 0);
}

// The watcher's look, and what it hits.
void draw_pick(const World& world, const Sight& sight, xylDebug_render_records& records) {
	const xylVec3& from = sight.ray.origin;
	const bool is_hit = sight.picked >= 0;
	const float length = is_hit ? sight.distance : sight.ray.max_distance;
	records.add_debug_line_double_color(from, sight.ray.direction * length,
	                                    with_alpha(pick_color, 0x30), pick_color, false, 0);
	if (!is_hit) return;
	const Agent& agent = world.agents()[static_cast<size_t>(sight.picked)];
	const xylBounding_box box = agent.box();
	const xylVec3 room(0.3f, 0.3f, 0.3f);
	records.add_debug_box_object(box.min - room, box.max + room, agent.frame(), pick_color, false,
	                             0);
}

// Round the agents that are seen, in part at least: their outline half a metre above the ground,
// filled beneath them.
void draw_hull(const World& world, const Sight& sight, xylDebug_render_records& records) {
	xylArray<xylVec2> points;
	for (const Agent& agent : world.agents()) {
		if (sight.checks[static_cast<size_t>(agent.id)] == frustum_outside) continue;
		xylVec3 corners[8];
		agent.box().get_transformed_tip_points(corners, agent.frame());
		for (const xylVec3& corner : corners) points.push_back({corner.x, corner.y});
	}
	xylConvex_polygon hull;
	hull.initialize(points);
	if (!hull.is_valid()) return;
	hull.debug_render(hull_color, false, 0);
	const auto on_ground = [](const xylVec2& point) { return xylVec3(point.x, point.y, 0); };
	for (size_t i = 2; i < hull.points.size(); ++i) {
		const xylVec3 corners[] = {on_ground(hull.points[0]), on_ground(hull.points[i - 1]),
		                           on_ground(hull.points[i])};
		records.add_debug_tri(corners, with_alpha(hull_color, 0x20), false, true);
	}
}

} // namespace

void draw_trails(const World& world, xylDebug_render_records& records) {
	constexpr float seconds = 1.6f;
	for (const Agent& agent : world.agents()) {
		const xylVec3 way = agent.velocity * World::tick_seconds;
		const xylVec3 lifted = agent.position + xylVec3(0, 0, 0.05f);
		records.add_debug_line(lifted - way, way, with_alpha(paper_color, 0x90), true, seconds);
	}
}

void draw_scene(const World& world, const Watcher& watcher, const Sight& sight,
                xylDebug_render_records& exact, xylDebug_render_records& rounded) {
	exact.add_object_space_grid(xylMatrix_frame::identity(), 4, 12, grid_color);
	exact.add_debug_frame(xylMatrix_frame::identity(), 4, 0);
	draw_frustum(watcher.frustum(), exact);
	rounded.add_debug_coordinate_space(watcher.frame(), 4, nullptr, nullptr);
	const xylInt_vec2 below(0, 22);
	exact.add_debug_text(watcher.frame().origin, "watcher", frustum_color, &below, 0);
	draw_hull(world, sight, exact);
	draw_pick(world, sight, exact);
	for (const Agent& agent : world.agents()) {
		const xylFrustum_check_result check = sight.checks[static_cast<size_t>(agent.id)];
		draw_shadow(agent, exact);
		if (agent.shape == Agent_shape::box) {
			draw_box(agent, check, exact);
		} else {
			draw_capsule(agent, check, rounded);
		}
		const bool is_picked = agent.id == sight.picked;
		if (check != frustum_outside || is_picked) draw_label(agent, is_picked, exact);
	}
}

void draw_screen(const World& world, const Sight& sight, int packets,
                 xylDebug_render_records& records) {
	constexpr float left = 24, top = 24, width = 300, line = 22;
	records.add_debug_2d_object(left, top, width, 5.6f * line, 0xB00A0F1C);
	float y = top + 4;
	const auto print = [&](xylColor color, int number, const char* what) {
		xylVarString text;
		text.append(number);
		text.append(what);
		y += line;
		records.show_framerate(left + 14, y, color, text, 0);
	};
	const int agents = static_cast<int>(world.agents().size());
	print(paper_color, agents, " agents");
	// The bar: a share of the width for each result.
	float x = left;
	for (const int result : {frustum_inside, frustum_intersects, frustum_outside}) {
		const float share =
			width * static_cast<float>(sight.counts[result]) / static_cast<float>(agents);
		records.add_debug_2d_object(x, top, share, 4, result_colors[result]);
		x += share;
	}
	print(result_colors[frustum_inside], sight.counts[frustum_inside], " inside");
	print(result_colors[frustum_intersects], sight.counts[frustum_intersects], " partly inside");
	print(dim_color, sight.counts[frustum_outside], " outside");
	print(pick_color, packets, " snapshots sent");
}
