// Points for hulls: anywhere, on circles, grids and lines, repeated, of both zeros.
#pragma once

#include "plain_polygon.h"
#include "samples.h"

#include <morvantis/math/xylconvex_polygon.h>

using Points = xylArray<xylVec2>;

enum Scatter { anywhere, on_a_circle, on_a_grid, on_a_line, clustered, at_zeros, scatter_count };

inline xylVec2 scattered(Samples& samples, unsigned scatter) {
	const auto on_grid = [&] { return static_cast<float>(samples.below(7)) - 3; };
	switch (scatter) {
	case on_a_circle: {
		const float angle = samples.between(0, 6.2831853f);
		return {10 * std::cos(angle), 10 * std::sin(angle)};
	}
	case on_a_grid: {
		const float x = on_grid();
		return {x, on_grid()};
	}
	case on_a_line: {
		const float t = on_grid();
		return {1 + 2 * t, 4 - t};
	}
	case clustered: {
		const float x = on_grid();
		const float y = on_grid() * 1e-3f;
		return {x + samples.between(0, 1e-4f), y};
	}
	case at_zeros: {
		const float x = samples.one_in(2) ? 0.0f : -0.0f;
		if (samples.one_in(4)) return {on_grid(), x};
		return {x, samples.one_in(4) ? -0.0f : on_grid()};
	}
	default: {
		const float x = samples.between(-10, 10);
		return {x, samples.between(-10, 10)};
	}
	}
}

inline Points scattered_points(Samples& samples, unsigned count, unsigned scatter) {
	Points points;
	for (unsigned i = 0; i < count; ++i) points.push_back(scattered(samples, scatter));
	return points;
}
// Of 1 to 24 points, now and then of up to several hundred.
inline Points scattered_points(Samples& samples) {
	const unsigned count = samples.one_in(64) ? 25 + samples.below(300) : 1 + samples.below(24);
	const unsigned scatter = samples.below(scatter_count);
	return scattered_points(samples, count, scatter);
}

inline xylConvex_polygon hull_of(Points points) {
	xylConvex_polygon polygon;
	polygon.initialize(points);
	return polygon;
}

template <typename T> plain::Vec2<T> to_plain(const xylVec2& v) { return {T(v.x), T(v.y)}; }
template <typename T> plain::Polygon<T> to_plain(const Points& points) {
	plain::Polygon<T> result;
	for (const xylVec2& p : points) result.push_back(to_plain<T>(p));
	return result;
}
