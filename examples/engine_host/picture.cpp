#include "picture.h"

#include <morvantis/core/xylreport.h> // xyl_snprintf

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr Rgb sky = {9, 13, 26}, ground = {27, 38, 64};
constexpr double line_width = 1.25, ground_line_width = 1.1; // pixels of the finished picture

// The overview: from the south, high above the square.
View overview(int width, int height) {
	return {xylVec3(-34, -84, 52), xylVec3(0, -2, 0), 0.25, width, height};
}

// Faces that look up are brightest, so that a box is seen as a solid.
float light_on(const Debug_quad_record& quad) {
	xylVec3 normal = (quad.corners[1] - quad.corners[0]).cross(quad.corners[2] - quad.corners[0]);
	const float length = normal.length();
	if (!(length > 0) || !normal.is_finite()) return 1;
	normal = normal / length;
	return 0.42f + 0.45f * std::fabs(normal.z) + 0.2f * std::fabs(normal.x);
}

// NaN and infinities are on no canvas.
bool is_near_canvas(double x, double y) {
	return x > -Painter::width && x < 2 * Painter::width && y > -Painter::height &&
	       y < 2 * Painter::height;
}

} // namespace

std::string picture_path(const std::string& folder, int number) {
	char name[32];
	xyl_snprintf(name, sizeof(name), "/frame_%03d.png", number);
	return folder + name;
}

float Painter::freshness(float time, float time_stamp, float duration) {
	if (!(duration > 0)) return 1;
	return std::clamp(1 - (time - time_stamp) / duration, 0.0f, 1.0f);
}

// Drops what was drawn long enough, and adds what is new.
void Painter::keep_what_stays(const Frame& frame) {
	const auto is_over = [&](const auto& record) {
		return !(record.duration > 0) ||
		       !(freshness(frame.time, record.time_stamp, record.duration) > 0);
	};
	const auto replace = [&](auto& kept, const auto& added) {
		std::erase_if(kept, is_over);
		kept.insert(kept.end(), added.begin(), added.end());
	};
	replace(lines_, frame.records.lines);
	replace(ground_lines_, frame.records.lines_alternate);
	replace(texts_, frame.records.texts);
}

Canvas Painter::paint(const Frame& frame) {
	const View view = overview(canvas_.width(), canvas_.height());
	keep_what_stays(frame);
	canvas_.clear(sky, ground);
	for (const Debug_quad_record& quad : frame.records.quads_alternate)
		paint_quad(view, quad, false, true);
	paint_lines(view, ground_lines_, frame.time, true);
	paint_quads(view, frame);
	was_cut_short_ = was_cut_short_ || canvas_.is_exhausted();

	Canvas picture = canvas_.shrunk(oversampling);
	for (const Debug_2d_object_record& object : frame.records.objects_2d) {
		picture.rectangle(object.a, object.b, object.a + object.c, object.b + object.d,
		                  Ink(object.color));
	}
	paint_texts(overview(width, height), frame, picture);
	return picture;
}

// Solid faces first, then lines, then what is seen through, the farthest first.
void Painter::paint_quads(const View& view, const Frame& frame) {
	const auto& quads = frame.records.quads;
	const auto distance = [&](const Debug_quad_record& quad) {
		double sum = 0;
		for (const xylVec3& corner : quad.corners) sum += view.distance(corner);
		return std::isfinite(sum) ? sum : 0;
	};
	std::vector<std::pair<double, size_t>> clear; // nearness, and place in the list
	for (size_t i = 0; i < quads.size(); ++i) {
		if (quads[i].color >> 24 == 255) {
			paint_quad(view, quads[i], false, false);
		} else {
			clear.emplace_back(-distance(quads[i]), i);
		}
	}
	for (const Debug_quad_record& quad : frame.records.quads_dithered)
		paint_quad(view, quad, true, false);
	paint_lines(view, lines_, frame.time, false);
	std::sort(clear.begin(), clear.end());
	for (const auto& [nearness, i] : clear) paint_quad(view, quads[i], false, false);
}

void Painter::paint_quad(const View& view, const Debug_quad_record& quad, bool dithered,
                         bool on_ground) {
	View::Polygon polygon;
	if (!view.project_quad(quad.corners, &polygon)) return;
	Ink ink(quad.color);
	if (ink.alpha == 1 || dithered) {
		const float light = light_on(quad);
		ink.red = std::min(255.0f, ink.red * light);
		ink.green = std::min(255.0f, ink.green * light);
		ink.blue = std::min(255.0f, ink.blue * light);
	}
	const Paint_mode mode{!on_ground, !on_ground && ink.alpha == 1, dithered};
	for (size_t i = 2; i < polygon.count; ++i)
		canvas_.triangle(polygon.points[0], polygon.points[i - 1], polygon.points[i], ink, mode);
}

void Painter::paint_lines(const View& view, const std::vector<Debug_line_record>& lines, float time,
                          bool on_ground) {
	constexpr double in_front = 1.004; // of the face that it is the edge of
	const double pixels = (on_ground ? ground_line_width : line_width) * oversampling;
	for (const Debug_line_record& line : lines) {
		Canvas_point ends[2];
		if (!view.project_line(line.start, line.start + line.delta, ends)) continue;
		Ink from(line.color_start), to(line.color_end);
		const float fresh = freshness(time, line.time_stamp, line.duration);
		from.alpha *= fresh;
		to.alpha *= fresh;
		for (Canvas_point& end : ends) end.nearness *= in_front;
		canvas_.line(ends[0], ends[1], pixels, from, to, !on_ground);
	}
}

// Names that would stand on each other are moved up, the ones farther down the list.
void Painter::paint_texts(const View& view, const Frame& frame, Canvas& canvas) const {
	constexpr double line = 16;
	struct Place {
		double left, right, base;
	};
	std::vector<Place> taken;
	const auto is_taken = [&](const Place& wanted) {
		return std::any_of(taken.begin(), taken.end(), [&](const Place& other) {
			return wanted.left < other.right && other.left < wanted.right &&
			       std::fabs(wanted.base - other.base) < line;
		});
	};
	for (const Debug_text_record& text : texts_) {
		const std::string letters = text.text.char_p();
		double x = text.position.x, y = text.position.y;
		if (!text.screen_space) {
			Canvas_point ends[2];
			if (!view.project_line(text.position, text.position, ends)) continue;
			x = ends[0].x - font_.width(letters) / 2;
			y = ends[0].y;
		}
		x += text.pixel_offset.x;
		y += text.pixel_offset.y;
		if (!is_near_canvas(x, y)) continue;
		Place place{x, x + font_.width(letters), y};
		for (int tries = 0; !text.screen_space && tries < 4 && is_taken(place); ++tries)
			place.base -= line;
		taken.push_back(place);
		Ink ink(text.color);
		ink.alpha *= freshness(frame.time, text.time_stamp, text.duration);
		font_.draw(canvas, x, place.base, letters, ink);
	}
}
