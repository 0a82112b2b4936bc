// Convex polygons once more, written straight down; plain.h says what that is for.
#pragma once

#include "plain.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace plain {

template <typename T> struct Vec2 {
	T x, y;
	bool operator==(const Vec2&) const = default;
};
template <typename T> using Polygon = std::vector<Vec2<T>>;

template <typename T> bool is_before(Vec2<T> a, Vec2<T> b) {
	return a.x < b.x || (a.x == b.x && a.y < b.y);
}
template <typename T> T turn(Vec2<T> a, Vec2<T> b, Vec2<T> c) {
	return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// Of any points.
template <typename T> Polygon<T> hull(Polygon<T> p) {
	std::sort(p.begin(), p.end(), is_before<T>);
	const size_t n = p.size();
	Polygon<T> h(2 * n);
	size_t k = 0;
	if (n == 0) return h;
	for (size_t i = 0; i < n; ++i) {
		while (k >= 2 && !(turn(h[k - 2], h[k - 1], p[i]) > 0)) --k;
		h[k++] = p[i];
	}
	const size_t t = k + 1;
	for (size_t i = n - 1; i > 0; --i) {
		while (k >= t && !(turn(h[k - 2], h[k - 1], p[i - 1]) > 0)) --k;
		h[k++] = p[i - 1];
	}
	h.resize(k - 1);
	return h;
}

template <typename T> bool interior_check(const Polygon<T>& h, Vec2<T> p) {
	for (size_t i = 0; i < h.size(); ++i) {
		const Vec2<T> a = h[i];
		const Vec2<T> b = h[(i + 1) % h.size()];
		if (!((a.y - b.y) * (p.x - a.x) - (a.x - b.x) * (p.y - a.y) > 0)) return false;
	}
	return true;
}

template <typename T> T area(const Polygon<T>& h) {
	if (h.size() < 3) return 0;
	T sum = 0;
	for (size_t i = 0; i + 1 < h.size(); ++i) sum += h[i].x * h[i + 1].y - h[i].y * h[i + 1].x;
	sum += h.back().x * h[0].y - h.back().y * h[0].x;
	return std::abs(sum * T(0.5));
}

template <typename T> T closest(const Polygon<T>& h, Vec2<T> p, Vec2<T>& out) {
	T best = T(std::numeric_limits<float>::max());
	for (size_t i = 0; i < h.size(); ++i) {
		const Vec2<T> a = h[i];
		const Vec2<T> b = h[(i + 1) % h.size()];
		const Vec2<T> e = {b.x - a.x, b.y - a.y};
		const T squared = e.x * e.x + e.y * e.y;
		Vec2<T> candidate = a;
		if (squared != 0) {
			const T t = ((p.x - a.x) * e.x + (p.y - a.y) * e.y) / squared;
			if (t > 1) {
				candidate = b;
			} else if (t >= 0) {
				candidate = {a.x + e.x * t, a.y + e.y * t};
			}
		}
		const T x = candidate.x - p.x;
		const T y = candidate.y - p.y;
		const T distance = std::sqrt(x * x + y * y);
		if (distance < best) {
			best = distance;
			out = candidate;
		}
	}
	return best;
}

template <typename T>
bool is_axis_separating(Vec2<T> axis, const Polygon<T>& a, const Polygon<T>& b) {
	const T far = T(std::numeric_limits<float>::max());
	T min1 = far, max1 = -far, min2 = far, max2 = -far;
	for (const Vec2<T>& v : a) {
		const T on = v.x * axis.x + v.y * axis.y;
		if (on < min1) min1 = on;
		if (on > max1) max1 = on;
	}
	for (const Vec2<T>& v : b) {
		const T on = v.x * axis.x + v.y * axis.y;
		if (on < min2) min2 = on;
		if (on > max2) max2 = on;
	}
	return min1 > max2 || min2 > max1;
}

template <typename T> bool has_separating_edge(const Polygon<T>& a, const Polygon<T>& b) {
	for (size_t i = 0; i < a.size(); ++i) {
		const Vec2<T> from = a[i];
		const Vec2<T> to = a[(i + 1) % a.size()];
		const Vec2<T> normal = {from.y - to.y, to.x - from.x};
		const T squared = normal.x * normal.x + normal.y * normal.y + T(1.1754944e-38f);
		const T scale = approximate_inverse_root(squared);
		if (is_axis_separating(Vec2<T>{normal.x * scale, normal.y * scale}, a, b)) return true;
	}
	return false;
}
template <typename T> bool collide(const Polygon<T>& a, const Polygon<T>& b) {
	return !has_separating_edge(a, b) && !has_separating_edge(b, a);
}

// Whether two polygons of three corners or more share a point, without any axis: a corner of one
// lies in the other, or two edges cross.
template <typename T> bool share_a_point(const Polygon<T>& a, const Polygon<T>& b) {
	const auto holds = [](const Polygon<T>& h, Vec2<T> p) {
		for (size_t i = 0; i < h.size(); ++i) {
			if (turn(h[i], h[(i + 1) % h.size()], p) < 0) return false;
		}
		return true;
	};
	for (const Vec2<T>& p : a) {
		if (holds(b, p)) return true;
	}
	for (const Vec2<T>& p : b) {
		if (holds(a, p)) return true;
	}
	for (size_t i = 0; i < a.size(); ++i) {
		for (size_t j = 0; j < b.size(); ++j) {
			const Vec2<T> p = a[i], q = a[(i + 1) % a.size()];
			const Vec2<T> r = b[j], s = b[(j + 1) % b.size()];
			if (turn(p, q, r) * turn(p, q, s) < 0 && turn(r, s, p) * turn(r, s, q) < 0) return true;
		}
	}
	return false;
}

} // namespace plain
