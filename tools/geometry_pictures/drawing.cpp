#include "drawing.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace {

constexpr const char* style =
	"<style>\n"
	"line, polyline, path { fill: none; stroke: #345; stroke-width: 1.5; stroke-linecap: round; }\n"
	".hidden { stroke: #9ab; stroke-dasharray: 5 5; }\n"
	".strong { stroke: #c30; stroke-width: 2.5; }\n"
	"circle { fill: #345; }\n"
	"text { font: 14px sans-serif; fill: #123; }\n"
	"</style>\n";

// With one digit behind the point: what rounding and the approximate root leave open is far below.
std::string in_tenths(float number) {
	const long tenths = std::lround(static_cast<double>(number) * 10);
	const long positive = tenths < 0 ? -tenths : tenths;
	return (tenths < 0 ? "-" : "") + std::to_string(positive / 10) + "." +
	       std::to_string(positive % 10);
}

std::string attribute(const char* name, const std::string& value) {
	return std::string(" ") + name + "=\"" + value + "\"";
}
std::string attribute(const char* name, float value) { return attribute(name, in_tenths(value)); }

} // namespace

Drawing::Drawing(const xylVec3& middle, const xylVec3& direction, float scale, int width,
                 int height)
	: camera_(xylMatrix_frame::identity()), scale_(scale), width_(width), height_(height) {
	camera_.f = direction;
	camera_.orthonormalize();
	camera_.origin = middle;
}

Drawing::Pixel Drawing::pixel(const xylVec3& point) const {
	const xylVec3 off = point - camera_.origin;
	return {static_cast<float>(width_) / 2 + scale_ * off.dot(camera_.s),
	        static_cast<float>(height_) / 2 - scale_ * off.dot(camera_.u)};
}

void Drawing::line(const xylVec3& from, const xylVec3& to, const char* stroke) {
	const Pixel a = pixel(from), b = pixel(to);
	body_ += "<line" + attribute("class", stroke) + attribute("x1", a.x) + attribute("y1", a.y) +
	         attribute("x2", b.x) + attribute("y2", b.y) + "/>\n";
}

void Drawing::path(const std::vector<xylVec3>& points, const char* stroke) {
	std::string list;
	for (const xylVec3& point : points) {
		const Pixel p = pixel(point);
		list += (list.empty() ? "" : " ") + in_tenths(p.x) + "," + in_tenths(p.y);
	}
	body_ += "<polyline" + attribute("class", stroke) + attribute("points", list) + "/>\n";
}

void Drawing::arrow(const xylVec3& from, const xylVec3& to, const char* stroke) {
	constexpr float length = 9, half_width = 4; // of the head, pixels
	line(from, to, stroke);
	const Pixel a = pixel(from), b = pixel(to);
	const float x = b.x - a.x, y = b.y - a.y, reach = std::sqrt(x * x + y * y);
	if (!(reach > 0)) return;
	const float dx = x / reach, dy = y / reach;
	const auto barb = [&](float side) {
		return in_tenths(b.x - dx * length - dy * side) + "," +
		       in_tenths(b.y - dy * length + dx * side);
	};
	body_ += "<polyline" + attribute("class", stroke) +
	         attribute("points", barb(half_width) + " " + in_tenths(b.x) + "," + in_tenths(b.y) +
	                                 " " + barb(-half_width)) +
	         "/>\n";
}

void Drawing::dot(const xylVec3& at) {
	const Pixel p = pixel(at);
	body_ +=
		"<circle" + attribute("cx", p.x) + attribute("cy", p.y) + attribute("r", 3.5f) + "/>\n";
}

void Drawing::label(const xylVec3& at, const std::string& text, float right, float down) {
	const Pixel p = pixel(at);
	body_ += "<text" + attribute("x", p.x + right) + attribute("y", p.y + down) +
	         (right < 0 ? attribute("text-anchor", "end") : "") + ">" + text + "</text>\n";
}

void Drawing::solid(const xylVec3* corners, const std::vector<Face>& faces) {
	xylVec3 middle(0, 0, 0);
	for (int i = 0; i < 8; ++i) middle += corners[i] * 0.125f;
	std::map<std::pair<int, int>, int> edges; // how many of its two faces look at the camera
	for (const auto& face : faces) {
		const int* c = face.corners;
		xylVec3 normal = (corners[c[1]] - corners[c[0]]).cross(corners[c[2]] - corners[c[0]]);
		if (normal.dot(corners[c[0]] - middle) < 0) normal = -normal;
		const bool is_visible = normal.dot(camera_.f) < 0;
		for (int i = 0; i < 4; ++i) edges[std::minmax(c[i], c[(i + 1) % 4])] += is_visible;
	}
	for (const auto& [ends, visible_faces] : edges) {
		line(corners[ends.first], corners[ends.second],
		     visible_faces > 0 ? plain_stroke : hidden_stroke);
	}
}

std::string Drawing::svg() const {
	const std::string width = std::to_string(width_), height = std::to_string(height_);
	return "<svg xmlns=\"http://www.w3.org/2000/svg\"" + attribute("width", width) +
	       attribute("height", height) + ">\n" + style + body_ + "</svg>\n";
}
