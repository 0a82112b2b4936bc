// The frustum's tests once more, written straight down; see plain.h.
#pragma once

#include "plain.h"

namespace plain {

enum Check { outside, inside, intersects };

template <typename T> struct Frustum {
	Plane<T> planes[6];
};

template <typename T> T distance(const Plane<T>& plane, Vec<T> p) {
	return dot(p - plane.point, plane.normal);
}

template <typename T> Frustum<T> frustum_of(const Vec<T>* p) {
	const int table[6][3] = {{0, 4, 5}, {1, 2, 3}, {0, 2, 4}, {1, 3, 5}, {1, 5, 4}, {0, 3, 2}};
	Frustum<T> frustum;
	for (int i = 0; i < 6; ++i) {
		const Vec<T> at = p[table[i][0]];
		const Vec<T> a = at - p[table[i][1]];
		const Vec<T> b = at - p[table[i][2]];
		frustum.planes[i] = {at, fast_normalized(cross(a, b))};
	}
	return frustum;
}

// `corners()` is asked only if the second phase runs.
template <typename T, typename Corners>
Check check(const Frustum<T>& frustum, Vec<T> c, T radius, Corners corners) {
	bool marked[6] = {};
	bool any = false;
	for (int i = 0; i < 6; ++i) {
		const T d = distance(frustum.planes[i], c);
		if (!(d >= -radius)) return outside;
		if (d < radius) any = marked[i] = true;
	}
	if (!any) return inside;
	Vec<T> tips[8];
	corners(tips);
	int passed = 0;
	for (int i = 0; i < 6; ++i) {
		int count = 0;
		for (const Vec<T>& tip : tips) {
			const Vec<T> way = fast_normalized(tip - frustum.planes[i].point);
			if (dot(way, frustum.planes[i].normal) >= 0) ++count;
		}
		if (marked[i] && count == 0) return outside;
		if (!marked[i] || count == 8) ++passed;
	}
	return passed == 6 ? inside : intersects;
}

template <typename T> Check check_cache(const Frustum<T>& frustum, const Cache<T>& cache) {
	return check(frustum, cache.center, cache.radius,
	             [&](Vec<T>* tips) { std::copy(cache.tips, cache.tips + 8, tips); });
}
template <typename T> Check check_world_box(const Frustum<T>& frustum, const Box<T>& box) {
	return check(frustum, box.center, box.radius,
	             [&](Vec<T>* tips) { tips_of(box.min, box.max, tips); });
}
template <typename T>
Check check_box(const Frustum<T>& frustum, const Box<T>& box, const Frame<T>& m) {
	const T r = box.radius;
	const T x = std::abs((m.s.x + m.f.x + m.u.x) * r);
	const T y = std::abs((m.s.y + m.f.y + m.u.y) * r);
	const T z = std::abs((m.s.z + m.f.z + m.u.z) * r);
	return check(frustum, transform_point(m, box.center), greatest(greatest(x, y), z),
	             [&](Vec<T>* tips) { transformed_tips(box, m, tips); });
}

template <typename T> Check check_sphere(const Frustum<T>& frustum, Vec<T> center, T radius) {
	for (const Plane<T>& plane : frustum.planes) {
		const T d = distance(plane, center);
		if (!(d >= -radius)) return outside;
		if (!(d >= radius)) return intersects;
	}
	return inside;
}

template <typename T> Check check_quad(const Frustum<T>& frustum, const Vec<T>* p) {
	const Vec<T> c = (p[0] + p[1] + p[2] + p[3]) * T(0.25f);
	const T squared = dot(p[0] - c, p[0] - c);
	for (const Plane<T>& plane : frustum.planes) {
		const T d = distance(plane, c);
		if (!(d >= 0 || !(d * d > squared))) return outside;
	}
	int passed = 0;
	for (const Plane<T>& plane : frustum.planes) {
		int count = 0;
		for (int i = 0; i < 4; ++i) {
			if (dot(fast_normalized(p[i] - plane.point), plane.normal) >= 0) ++count;
		}
		if (count == 0) return outside;
		if (count == 4) ++passed;
	}
	return passed == 6 ? inside : intersects;
}

// For the sphere and corners of a cache or a box in the world.
template <typename T>
bool encloses(const Frustum<T>& frustum, Vec<T> c, T radius, const Vec<T>* tips) {
	bool marked[6];
	for (int i = 0; i < 6; ++i) {
		const T d = distance(frustum.planes[i], c);
		if (!(d >= -radius)) return false;
		marked[i] = d < radius;
	}
	for (int i = 0; i < 6; ++i) {
		bool any = !marked[i];
		for (int k = 0; k < 8; ++k) any = any || distance(frustum.planes[i], tips[k]) >= 0;
		if (!any) return false;
	}
	return true;
}

template <typename T>
bool encloses_global_bounds(const Frustum<T>& frustum, Vec<T> min, Vec<T> max) {
	const Vec<T> c = (min + max) * T(0.5f);
	const T squared = dot(max - min, max - min);
	for (const Plane<T>& plane : frustum.planes) {
		const T d = distance(plane, c);
		if (!(d >= 0 || !(d * d > squared))) return false;
	}
	return true;
}

template <typename T>
bool meet(const Plane<T>& a, const Plane<T>& b, const Plane<T>& c, Vec<T>& out) {
	const T det = dot(a.normal, cross(b.normal, c.normal));
	if (det == 0) return false;
	const T ea = dot(a.normal, a.point), eb = dot(b.normal, b.point), ec = dot(c.normal, c.point);
	out = (cross(b.normal, c.normal) * ea + cross(c.normal, a.normal) * eb +
	       cross(a.normal, b.normal) * ec) *
	      (T(1) / det);
	return true;
}

// Corners as their planes: near 0, far 1, left 2, right 3, top 4, bottom 5.
inline constexpr int box_corners[8][3] = {{0, 4, 3}, {1, 5, 2}, {0, 5, 3}, {0, 5, 2},
                                          {1, 4, 3}, {1, 4, 2}, {1, 5, 3}, {0, 4, 2}};

} // namespace plain
