#include "view.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr double nearest = 0.1; // metres
} // namespace

View::View(const xylVec3& eye, const xylVec3& target, double tangent, int width, int height)
	: eye_(eye), width_(width), height_(height) {
	xylVec3 f = target - eye;
	f.normalize();
	xylVec3 s = f.cross(xylVec3(0, 0, 1));
	s.normalize();
	const xylVec3 u = s.cross(f);
	const auto scaled = [](const xylVec3& v, double scale) {
		return Axis{v.x * scale, v.y * scale, v.z * scale};
	};
	forward_ = scaled(f, 1);
	right_ = scaled(s, height / (tangent * width));
	up_ = scaled(u, 1 / tangent);
}

View::Camera_point View::to_camera(const xylVec3& point) const {
	const double x = static_cast<double>(point.x) - eye_.x;
	const double y = static_cast<double>(point.y) - eye_.y;
	const double z = static_cast<double>(point.z) - eye_.z;
	const auto along = [&](const Axis& axis) { return x * axis.x + y * axis.y + z * axis.z; };
	return {along(right_), along(up_), along(forward_)};
}

// Numbers near the end of their range miss the border that they were cut off at by rounding.
Canvas_point View::to_canvas(const Camera_point& point) const {
	const auto bounded = [](double value, double limit) {
		return value > 0 ? std::min(value, limit) : 0; // NaN is 0
	};
	return {bounded((point.x / point.depth + 1) / 2 * width_, width_),
	        bounded((1 - point.y / point.depth) / 2 * height_, height_),
	        bounded(1 / point.depth, 1 / nearest)};
}

// At least 0 on the inner side.
double View::inside(int border, const Camera_point& point) {
	switch (border) {
	case 0:
		return point.depth - nearest;
	case 1:
		return point.depth - point.x;
	case 2:
		return point.depth + point.x;
	case 3:
		return point.depth - point.y;
	default:
		return point.depth + point.y;
	}
}

View::Camera_point View::between(const Camera_point& a, const Camera_point& b, double share) {
	return {a.x + share * (b.x - a.x), a.y + share * (b.y - a.y),
	        a.depth + share * (b.depth - a.depth)};
}

// Liang and Barsky's way: each border cuts the stretch that is left.
bool View::project_line(const xylVec3& from, const xylVec3& to, Canvas_point* out) const {
	if (!from.is_finite() || !to.is_finite()) return false;
	const Camera_point a = to_camera(from), b = to_camera(to);
	double first = 0, last = 1;
	for (int border = 0; border < border_count; ++border) {
		const double at_a = inside(border, a), at_b = inside(border, b);
		if (at_a < 0 && at_b < 0) return false;
		const double share = at_a / (at_a - at_b);
		if (at_a < 0) first = std::max(first, share);
		if (at_b < 0) last = std::min(last, share);
	}
	if (first > last) return false;
	out[0] = to_canvas(between(a, b, first));
	out[1] = to_canvas(between(a, b, last));
	return true;
}

// Sutherland and Hodgman's way: border by border, the corners inside and the points on it.
bool View::project_quad(const xylVec3* corners, Polygon* out) const {
	std::array<Camera_point, 9> now{}, next{};
	size_t count = 4;
	for (size_t i = 0; i < count; ++i) {
		if (!corners[i].is_finite()) return false;
		now[i] = to_camera(corners[i]);
	}
	for (int border = 0; border < border_count; ++border) {
		size_t kept = 0;
		for (size_t i = 0; i < count; ++i) {
			const Camera_point &a = now[i], &b = now[(i + 1) % count];
			const double at_a = inside(border, a), at_b = inside(border, b);
			// A convex polygon crosses a border twice; one that is not may do so more often.
			if (kept + 2 > next.size()) return false;
			if (at_a >= 0) next[kept++] = a;
			if ((at_a < 0) != (at_b < 0)) next[kept++] = between(a, b, at_a / (at_a - at_b));
		}
		count = kept;
		std::swap(now, next);
	}
	out->count = count;
	std::transform(now.begin(), now.begin() + static_cast<std::ptrdiff_t>(count),
	               out->points.begin(), [&](const Camera_point& p) { return to_canvas(p); });
	return count >= 3;
}
