#include "pictures.h"

#include "drawing.h"

#include <morvantis/math/xylfrustum.h>
#include <morvantis/math/xylray.h>

namespace {

const xylVec3 from_the_right_above(-0.42f, 0.83f, -0.37f);

std::string axes() {
	Drawing drawing({2.3f, 1.1f, 0.6f}, from_the_right_above, 105, 640, 330);
	const xylVec3 zero(0, 0, 0);
	const struct {
		xylVec3 end;
		const char* name;
	} world[] = {{{1, 0, 0}, "+X"}, {{0, 1, 0}, "+Y"}, {{0, 0, 1}, "+Z"}};
	for (const auto& axis : world) {
		drawing.arrow(zero, axis.end, plain_stroke);
		drawing.label(axis.end, axis.name, 6, -4);
	}
	drawing.label(zero, "the parent", 4, 36);

	// A frame half way along a segment, and the way to a point of it.
	const xylMatrix_frame frame =
		xylMatrix_frame::center_frame_of_two_points({1.0f, 0.7f, 0.3f}, {2.4f, 0.3f, 0.5f});
	drawing.dot(frame.origin);
	drawing.label(frame.origin, "origin", -8, 4);
	drawing.arrow(frame.origin, frame.transform_point({1, 0, 0}), strong_stroke);
	drawing.label(frame.transform_point({1, 0, 0}), "s side", -4, 22);
	drawing.arrow(frame.origin, frame.transform_point({0, 1, 0}), strong_stroke);
	drawing.label(frame.transform_point({0, 1, 0}), "f forward", 6, -4);
	drawing.arrow(frame.origin, frame.transform_point({0, 0, 1}), strong_stroke);
	drawing.label(frame.transform_point({0, 0, 1}), "u up", -8, 0);

	const xylVec3 p(2.2f, 1.9f, 1.1f);
	const xylVec3 steps[] = {frame.origin, frame.transform_point({p.x, 0, 0}),
	                         frame.transform_point({p.x, p.y, 0}), frame.transform_point(p)};
	const char* const names[] = {"p.x·s", "p.y·f", "p.z·u"};
	for (int i = 0; i < 3; ++i) {
		drawing.line(steps[i], steps[i + 1], hidden_stroke);
		drawing.label(steps[i] * 0.3f + steps[i + 1] * 0.7f, names[i], 8, 16);
	}
	drawing.dot(steps[3]);
	drawing.label(steps[3], "p", 8, 0);
	return drawing.svg();
}

std::string tip_points() {
	xylBounding_box box;
	box.min = {-1.2f, -1, -0.8f};
	box.max = {1.2f, 1, 0.8f};
	xylVec3 tips[8] = {};
	box.get_tip_points(tips);
	Drawing drawing({-0.2f, 0, 0}, from_the_right_above, 105, 640, 400);
	drawing.solid(tips, {{{0, 7, 5, 4}},
	                     {{2, 3, 1, 6}},
	                     {{0, 2, 6, 4}},
	                     {{7, 3, 1, 5}},
	                     {{4, 5, 1, 6}},
	                     {{0, 7, 3, 2}}});
	const char* const notes[8] = {" min", " max", "", "", "", "", "", ""};
	for (int i = 0; i < 8; ++i) {
		drawing.dot(tips[i]);
		const bool is_left = tips[i].x < 0;
		drawing.label(tips[i], std::to_string(i) + notes[i], is_left ? -9.0f : 9.0f,
		              tips[i].z < 0 ? 16.0f : -6.0f);
	}
	const xylVec3 corner = tips[0] + xylVec3(-1.2f, 0, 0.1f);
	const char* const names[3] = {"X", "Y", "Z"};
	for (int i = 0; i < 3; ++i) {
		const xylVec3 end =
			corner + xylVec3(i == 0 ? 0.5f : 0.0f, i == 1 ? 0.5f : 0.0f, i == 2 ? 0.5f : 0.0f);
		drawing.arrow(corner, end, strong_stroke);
		drawing.label(end, names[i], 6, -2);
	}
	return drawing.svg();
}

// A camera that looks along +Y.
xylFrustum camera_frustum() {
	constexpr float wide = 0.62f, high = 0.45f; // tangents of half the angles
	xylPlane planes[6] = {{{0, 1, 0}, {0, 1, 0}},     {{0, 4, 0}, {0, -1, 0}},
	                      {{0, 0, 0}, {1, wide, 0}},  {{0, 0, 0}, {-1, wide, 0}},
	                      {{0, 0, 0}, {0, high, -1}}, {{0, 0, 0}, {0, high, 1}}};
	for (xylPlane& plane : planes) plane.normal.normalize();
	xylFrustum frustum;
	frustum.set_planes(planes);
	return frustum;
}

std::string frustum_corners() {
	const xylFrustum frustum = camera_frustum();
	xylVec3 corners[8], near_face[4];
	frustum.get_global_frustum_box_points(corners);
	frustum.get_global_frustum_near_plane_points(near_face);
	Drawing drawing({0, 2.6f, 0.15f}, {-0.62f, 0.66f, -0.36f}, 78, 640, 470);
	// In the order of the planes: near, far, left, right, top, bottom.
	const std::vector<Drawing::Face> faces = {{{0, 2, 3, 7}}, {{4, 6, 1, 5}}, {{7, 5, 1, 3}},
	                                          {{0, 4, 6, 2}}, {{7, 0, 4, 5}}, {{3, 2, 6, 1}}};
	drawing.solid(corners, faces);
	const char* const names[6] = {"near", "far", "left", "right", "top", "bottom"};
	for (int i = 0; i < 6; ++i) {
		xylVec3 middle(0, 0, 0);
		for (const int corner : faces[static_cast<size_t>(i)].corners)
			middle += corners[corner] * 0.25f;
		const xylVec3 tip = middle + frustum.planes_[i].normal * 0.5f;
		drawing.arrow(middle, tip, strong_stroke);
		drawing.label(tip, names[i], 6, 4);
	}
	for (int i = 0; i < 8; ++i) {
		std::string text = std::to_string(i);
		for (int k = 0; k < 4; ++k) {
			if (near_face[k] == corners[i]) text += " (" + std::to_string(k) + ")";
		}
		drawing.dot(corners[i]);
		drawing.label(corners[i], text, corners[i].x < 0 ? -9.0f : 9.0f,
		              corners[i].z < 0 ? 16.0f : -6.0f);
	}
	return drawing.svg();
}

// Its outline is where rays from above enter and leave.
void draw_outline(Drawing& drawing, const zubCapsule_data& capsule) {
	const float left = capsule.start.x - capsule.radius;
	const float right = capsule.end.x + capsule.radius;
	constexpr int count = 96;
	std::vector<xylVec3> upper, lower;
	for (int i = 0; i <= count; ++i) {
		const float t = static_cast<float>(i) / count;
		const float x = left + (right - left) * t * t * (3 - 2 * t); // dense where it is steep
		const xylRay ray({x, 0, 10}, {0, 0, -1}, 100, true);
		xylVec3 entry, exit, ignored;
		if (!ray.get_capsule_intersection_details(capsule, entry, exit, ignored, ignored)) continue;
		upper.push_back(entry);
		lower.insert(lower.begin(), exit);
	}
	upper.insert(upper.end(), lower.begin(), lower.end());
	upper.push_back(upper.front());
	drawing.path(upper, plain_stroke);
}

std::string capsule() {
	const zubCapsule_data capsule = {{-1.6f, 0, -0.4f}, {1.5f, 0, 0.3f}, 0.9f};
	Drawing drawing({0, 0, 0.2f}, {0, 1, 0}, 100, 640, 360);
	draw_outline(drawing, capsule);
	drawing.line(capsule.start, capsule.end, hidden_stroke);
	drawing.dot(capsule.start);
	drawing.label(capsule.start, "start", -8, 16);
	drawing.dot(capsule.end);
	drawing.label(capsule.end, "end", 8, 16);
	const xylVec3 below = capsule.start + xylVec3(0, 0, -capsule.radius);
	drawing.arrow(capsule.start, below, hidden_stroke);
	drawing.label((capsule.start + below) * 0.5f, "radius", 6, 4);

	const xylRay ray({-2.2f, 0, 1.6f}, {3.3f, 0, -1.9f}, true);
	drawing.arrow(ray.get_origin(), ray.get_end_point() + ray.get_direction() * 1.1f, plain_stroke);
	drawing.label(ray.get_origin(), "the ray", 10, -4);
	xylVec3 entry, exit, entry_normal, exit_normal, closest;
	float length;
	ray.get_capsule_intersection_details(capsule, entry, exit, entry_normal, exit_normal);
	ray.intersects_with_capsule(capsule, closest, length);
	drawing.arrow(entry, entry + entry_normal * 0.6f, strong_stroke);
	drawing.dot(entry);
	drawing.label(entry, "entry", -10, -2);
	drawing.arrow(exit, exit + exit_normal * 0.6f, strong_stroke);
	drawing.dot(exit);
	drawing.label(exit, "exit", -12, 4);
	drawing.dot(closest);
	drawing.label(closest, "closest to the axis", -2, 34);
	return drawing.svg();
}

} // namespace

std::vector<Picture> geometry_pictures() {
	return {{"axes.svg", axes()},
	        {"tip_points.svg", tip_points()},
	        {"frustum_corners.svg", frustum_corners()},
	        {"capsule.svg", capsule()}};
}
