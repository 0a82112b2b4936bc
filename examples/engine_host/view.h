// A camera: from the world to the canvas, cut off at the canvas's borders.
#pragma once

#include "canvas.h"

#include <morvantis/math/xylvec3.h>

#include <array>

class View {
public:
	// `tangent` of half the angle that the height of the picture spans.
	View(const xylVec3& eye, const xylVec3& target, double tangent, int width, int height);

	// A line or a convex polygon that lies in sight, in part at least; false where nothing of it
	// does, or where it has a number that isn't finite.
	bool project_line(const xylVec3& from, const xylVec3& to, Canvas_point* out) const;
	struct Polygon {
		std::array<Canvas_point, 9> points; // each of the five borders adds one at most
		size_t count = 0;
	};
	bool project_quad(const xylVec3* corners, Polygon* out) const;

	double distance(const xylVec3& point) const { return to_camera(point).depth; }

private:
	struct Camera_point {
		double x, y, depth; // in sight where |x| and |y| are at most depth
	};
	static constexpr int border_count = 5;
	static double inside(int border, const Camera_point& point);
	static Camera_point between(const Camera_point& a, const Camera_point& b, double share);
	Camera_point to_camera(const xylVec3& point) const;
	Canvas_point to_canvas(const Camera_point& point) const;

	struct Axis {
		double x, y, z;
	};
	xylVec3 eye_;
	Axis right_, up_, forward_; // the first two scaled so that the borders lie at 1
	int width_, height_;
};
