// Rays and the queries of lines and triangles once more, written straight down; see plain.h.
#pragma once

#include "plain.h"

namespace plain {

template <typename T> struct Ray {
	Vec<T> origin, direction;
	T max;
};

template <typename T> Vec<T> at(const Ray<T>& ray, T t) { return ray.origin + ray.direction * t; }

template <typename T> bool hit_sphere(const Ray<T>& ray, Vec<T> center, T radius, Vec<T>& out) {
	const T t = dot(center - ray.origin, ray.direction);
	if (!(t > 0)) {
		if (!(dot(ray.origin - center, ray.origin - center) < radius * radius)) return false;
		out = ray.origin;
		return true;
	}
	const Vec<T> off = at(ray, t) - center;
	const T h = radius * radius - dot(off, off);
	if (!(h >= 0)) return false;
	const T t1 = t - std::sqrt(h);
	if (!(t1 >= 0)) {
		out = ray.origin;
		return true;
	}
	if (t1 > ray.max) return false;
	out = at(ray, t1);
	return true;
}

template <typename T>
bool sphere_details(const Ray<T>& ray, Vec<T> center, T radius, T& t_near, T& t_far) {
	const Vec<T> m = ray.origin - center;
	const T a = dot(ray.direction, ray.direction);
	const T b = T(2) * dot(m, ray.direction);
	const T c = dot(m, m) - radius * radius;
	const T d = b * b - T(4) * a * c;
	if (!(d >= 0)) return false;
	const T one = (-b - std::sqrt(d)) * T(0.5f) / a;
	const T two = (std::sqrt(d) - b) * T(0.5f) / a;
	t_near = two < one ? two : one;
	t_far = two < one ? one : two;
	return !(t_near > ray.max) && t_far >= 0;
}

template <typename T> bool slabs(const Ray<T>& ray, Vec<T> min, Vec<T> max, T& near, T& far) {
	const T add = T(1e-6f);
	const Vec<T> inv = {T(1) / ray.direction.x, T(1) / ray.direction.y, T(1) / ray.direction.z};
	const Vec<T> o = ray.origin;
	const Vec<T> a = {(min.x - o.x + add) * inv.x, (min.y - o.y + add) * inv.y,
	                  (min.z - o.z + add) * inv.z};
	const Vec<T> b = {(max.x - o.x + add) * inv.x, (max.y - o.y + add) * inv.y,
	                  (max.z - o.z + add) * inv.z};
	const Vec<T> low = least(a, b), high = greatest(a, b);
	near = greatest(greatest(low.x, low.y), low.z);
	far = least(least(high.x, high.y), high.z);
	return far >= 0 && !(near > far);
}

template <typename T> bool misses_sphere(const Ray<T>& ray, Vec<T> c, Vec<T> e) {
	const Vec<T> off = cross(ray.direction, c - ray.origin);
	return dot(off, off) > dot(e, e);
}

template <typename T>
bool hit_box(const Ray<T>& ray, Vec<T> min, Vec<T> max, bool skip, T& near, T& far) {
	const Vec<T> c = (min + max) * T(0.5f);
	if (!skip && misses_sphere(ray, c, max - c)) return false;
	return slabs(ray, min, max, near, far);
}

template <typename T>
bool hit_cache(const Ray<T>& ray, Vec<T> min, Vec<T> max, Vec<T> center, T& near) {
	if (misses_sphere(ray, center, max - center)) return false;
	const auto inverse = [](T d) { return d != 0 ? T(1) / d : T(0); };
	const Vec<T> inv = {inverse(ray.direction.x), inverse(ray.direction.y),
	                    inverse(ray.direction.z)};
	const Vec<T> o = ray.origin;
	const Vec<T> a = {(min.x - o.x) * inv.x, (min.y - o.y) * inv.y, (min.z - o.z) * inv.z};
	const Vec<T> b = {(max.x - o.x) * inv.x, (max.y - o.y) * inv.y, (max.z - o.z) * inv.z};
	const Vec<T> low = least(a, b), high = greatest(a, b);
	near = least(least(low.x, low.y), low.z);
	const T far = greatest(greatest(high.x, high.y), high.z);
	return far >= 0 && !(near > far);
}

template <typename T> T hit_triangle(const Ray<T>& ray, Vec<T> a, Vec<T> b, Vec<T> c, Vec<T>& out) {
	out = {0, 0, 0};
	const Vec<T> e1 = b - a, e2 = c - a;
	const Vec<T> p = cross(ray.direction, e2);
	const T det = dot(p, e1);
	if (det < T(1e-6f)) return -1;
	const Vec<T> t0 = ray.origin - a;
	const T u = dot(t0, p);
	if (!(u >= 0 && u <= det)) return -1;
	const Vec<T> q = cross(t0, e1);
	const T v = dot(q, ray.direction);
	if (!(v >= 0 && u + v <= det)) return -1;
	const T g = dot(q, e2);
	if (!(g > det * T(1e-6f))) return -1;
	out = at(ray, g / det);
	return g / det;
}

template <typename T>
T hit_quad(const Ray<T>& ray, Vec<T> a, Vec<T> b, Vec<T> c, Vec<T> d, Vec<T>& out) {
	T t = hit_triangle(ray, a, b, c, out);
	if (t > 0) return t;
	t = hit_triangle(ray, c, d, a, out);
	return t > 0 ? t : T(-1);
}

template <typename T> struct Quad {
	Vec<T> corners[4], normal, edge_normals[4];
	unsigned flags;
};

template <typename T> bool hit_face(const Ray<T>& ray, const Quad<T>& quad, Vec<T>& out) {
	const int count = quad.flags & 1 ? 3 : 4;
	const Vec<T> o = ray.origin, d = ray.direction, n = quad.normal;
	const T dn = dot(n, d);
	if (!(quad.flags & 2) && dn > T(0.001f)) return false;
	if (!(dn > T(-0.001f) && dn < T(0.001f))) {
		const T t = -dot(n, o - quad.corners[0]) / dn;
		if (!(t >= 0)) return false;
		const Vec<T> hit = o + d * t;
		for (int i = 0; i < count; ++i) {
			const Vec<T> e = quad.edge_normals[i];
			if (e.x == 0 && e.y == 0 && e.z == 0) return false;
			if (dot(hit - quad.corners[i], e) < T(-0.006f)) return false;
		}
		if (t * t > ray.max * ray.max) return false;
		out = hit;
		return true;
	}
	bool inside = true;
	for (int i = 0; i < count; ++i) {
		inside = inside && dot(o - quad.corners[i], quad.edge_normals[i]) >= 0;
	}
	const T above = dot(n, o - quad.corners[0]);
	if (!(above > T(-0.01f) && above < T(0.01f))) return false;
	if (inside) {
		out = o;
		return true;
	}
	const T dx = d.x * ray.max, dy = d.y * ray.max;
	bool found = false;
	T best = 0;
	for (int i = 0; i < count; ++i) {
		const Vec<T> a = quad.corners[i], b = quad.corners[(i + 1) % count];
		const Vec<T> e = b - a;
		const T det = e.y * dx - e.x * dy;
		if (det == 0) continue;
		const T px = a.x - o.x, py = a.y - o.y;
		const T k = (px * dy - py * dx) / det;
		const T m = (px * e.y - py * e.x) / det;
		if (!(m >= T(-0.001f) && m <= T(1.001f) && k >= T(-0.001f) && k <= T(1.001f))) continue;
		if (std::min(m, k) > 1 || std::max(m, k) < 0) continue;
		const T x = o.x + m * dx, y = o.y + m * dy;
		const T squared = (x - o.x) * (x - o.x) + (y - o.y) * (y - o.y);
		if (found && !(squared < best)) continue;
		found = true;
		best = squared;
		out = {x, y, o.z};
	}
	return found;
}

template <typename T> T approach(Vec<T> p0, Vec<T> p1, Vec<T> q0, Vec<T> q1, T& s, T& t) {
	const Vec<T> u = p1 - p0, v = q1 - q0, w = p0 - q0;
	const T a = dot(u, u), b = dot(u, v), c = dot(v, v), d = dot(u, w), e = dot(v, w);
	const T D = a * c - b * b;
	T sN, sD, tN, tD;
	if (D >= T(0.0001f)) {
		sN = b * e - c * d, tN = a * e - b * d, sD = tD = D;
		if (!(sN >= 0)) {
			sN = 0, tN = e, tD = c;
		} else if (sN > D) {
			sN = D, tN = e + b, tD = c;
		}
	} else {
		sN = 0, sD = 1, tN = e, tD = c;
	}
	const auto clamp = [&](T wanted) {
		if (wanted < 0) {
			sN = 0;
		} else if (wanted > a) {
			sN = sD;
		} else {
			sN = wanted, sD = a;
		}
	};
	if (!(tN >= 0)) {
		tN = 0;
		clamp(-d);
	} else if (tN > tD) {
		tN = tD;
		clamp(b - d);
	}
	s = std::abs(sN) < T(0.0001f) ? T(0) : sN / sD;
	t = std::abs(tN) < T(0.0001f) ? T(0) : tN / tD;
	return length(w + u * s - v * t);
}

template <typename T> struct Capsule {
	Vec<T> start, end;
	T radius;
};

template <typename T>
bool near_capsule(const Ray<T>& ray, const Capsule<T>& capsule, Vec<T>& out, T& out_length) {
	T s, t;
	const T distance = approach(capsule.start, capsule.end, ray.origin, at(ray, ray.max), s, t);
	out = {0, 0, 0};
	out_length = 0;
	if (distance > capsule.radius) return false;
	out = at(ray, ray.max * t);
	Vec<T> delta = out - (capsule.start + (capsule.end - capsule.start) * s);
	const T l = normalize(delta);
	const T g = l < capsule.radius ? l : capsule.radius;
	const T B = T(-2) * g * dot(delta, ray.direction);
	const T R = std::sqrt(B * B - (T(4) * g * g - T(4) * capsule.radius * capsule.radius));
	out_length = R >= B ? R * T(0.5f) - B * T(0.5f) : (-B - R) * T(0.5f);
	return true;
}

template <typename T> struct Capsule_hit {
	Vec<T> entry, exit, entry_normal, exit_normal;
};

template <typename T>
bool capsule_details(const Ray<T>& ray, const Capsule<T>& capsule, Capsule_hit<T>& hit) {
	Vec<T> A = capsule.end - capsule.start;
	if (A.x == 0 && A.y == 0 && A.z == 0) A = {T(0.001f), T(0.001f), T(0.001f)};
	const T k = T(1) / dot(A, A);
	const Vec<T> from = ray.origin - capsule.start;
	const T m = dot(ray.direction, A) * k, n = dot(from, A) * k;
	const Vec<T> Dp = ray.direction - A * m, Op = from - A * n;
	const T a = dot(Dp, Dp), b = T(2) * dot(Op, Dp),
			c = dot(Op, Op) - capsule.radius * capsule.radius;
	const auto place = [&](T t, Vec<T> center, Vec<T>& point, Vec<T>& normal) {
		point = at(ray, t);
		normal = fast_normalized(point - center);
	};
	T near_a, far_a, near_b, far_b;
	if (a == 0) {
		if (!sphere_details(ray, capsule.start, capsule.radius, near_a, far_a)) return false;
		if (!sphere_details(ray, capsule.end, capsule.radius, near_b, far_b)) return false;
		if (near_a >= near_b) {
			place(near_b, capsule.end, hit.entry, hit.entry_normal);
		} else {
			place(near_a, capsule.start, hit.entry, hit.entry_normal);
		}
		if (far_a > far_b) {
			place(far_a, capsule.start, hit.exit, hit.exit_normal);
		} else {
			place(far_b, capsule.end, hit.exit, hit.exit_normal);
		}
		return true;
	}
	const T D = b * b - T(4) * a * c;
	if (!(D >= 0)) return false;
	const T t1 = (-b - std::sqrt(D)) * T(0.5f) / a, t2 = (std::sqrt(D) - b) * T(0.5f) / a;
	if (!(t2 >= 0) || t1 > ray.max) return false;
	const T h1 = t1 * m + n, h2 = t2 * m + n;
	if (!(h1 >= 0)) {
		if (!sphere_details(ray, capsule.start, capsule.radius, near_a, far_a)) return false;
		place(near_a, capsule.start, hit.entry, hit.entry_normal);
	} else if (h1 > 1) {
		if (!sphere_details(ray, capsule.end, capsule.radius, near_a, far_a)) return false;
		place(near_a, capsule.end, hit.entry, hit.entry_normal);
	} else {
		place(t1, capsule.start + A * h1, hit.entry, hit.entry_normal);
	}
	if (h2 >= 0 && h2 <= 1) {
		place(t2, capsule.start + A * h2, hit.exit, hit.exit_normal);
		return true;
	}
	const Vec<T> center = h2 > 1 ? capsule.end : capsule.start;
	if (!sphere_details(ray, center, capsule.radius, near_b, far_b)) return false;
	place(far_b, center, hit.exit, hit.exit_normal);
	return true;
}

// Queries of lines and triangles.

template <typename T> T distance_to_segment(Vec<T> a, Vec<T> b, Vec<T> p) {
	const Vec<T> d = b - a;
	const T A2 = dot(a - p, a - p), B2 = dot(b - p, b - p), L2 = dot(d, d);
	const T A = std::sqrt(A2), B = std::sqrt(B2), L = std::sqrt(L2);
	const T small = T(0.01f);
	if (std::abs(d.x) < small && std::abs(d.y) < small && std::abs(d.z) < small) {
		return B < A ? B : A;
	}
	if (B2 >= L2 + A2) return A;
	if (A2 >= L2 + B2) return B;
	if (L >= A + B) return 0;
	const T s = (A + B + L) * T(0.5f);
	return T(2) * std::sqrt(s * (s - A) * (s - B) * (s - L)) / L;
}

template <typename T> T held(T v) { return !(v >= 0) ? T(0) : !(v < 1) ? T(1) : v; }

template <typename T>
void closest_of_segments(Vec<T> p0, Vec<T> p1, Vec<T> q0, Vec<T> q1, Vec<T>& out_p, Vec<T>& out_q) {
	const Vec<T> u = p1 - p0, v = q1 - q0, r = p0 - q0;
	const T a = dot(u, u), e = dot(v, v), f = dot(r, v), c = dot(r, u);
	const T small = T(1e-5f);
	T s = 0, t = 0;
	if (!(a > small) && !(e > small)) {
		out_p = p0;
		out_q = q0;
		return;
	}
	if (!(a > small)) {
		t = held(f / e);
	} else if (!(e > small)) {
		s = held(-c / a);
	} else {
		const T b = dot(u, v);
		const T D = a * e - b * b;
		if (D > 0) s = held((b * f - c * e) / D);
		const T g = b * s + f;
		if (!(g >= 0)) {
			t = 0;
			s = held(-c / a);
		} else if (g > e) {
			t = 1;
			s = held((b - c) / a);
		} else {
			t = g / e;
		}
	}
	out_p = p0 + u * s;
	out_q = q0 + v * t;
}

// The same with a, b, e and what is made of them in double; parameters are narrowed as they come.
inline void closest_of_segments_precise(Vec<float> p0, Vec<float> p1, Vec<float> q0, Vec<float> q1,
                                        Vec<float>& out_p, Vec<float>& out_q) {
	const auto wide = [](Vec<float> v) { return Vec<double>{v.x, v.y, v.z}; };
	const Vec<float> u = p1 - p0, v = q1 - q0, r = p0 - q0;
	const double a = dot(wide(u), wide(u)), e = dot(wide(v), wide(v)), b = dot(wide(u), wide(v));
	const double f = dot(r, v), c = dot(r, u), small = 1e-5f;
	float s = 0, t = 0;
	if (!(a > small) && !(e > small)) {
		out_p = p0;
		out_q = q0;
		return;
	}
	if (!(a > small)) {
		t = static_cast<float>(held(f / e));
	} else if (!(e > small)) {
		s = static_cast<float>(held(-c / a));
	} else {
		const double D = a * e - b * b;
		if (D > 0) s = static_cast<float>(held((b * f - c * e) / D));
		const double g = b * static_cast<double>(s) + f;
		if (!(g >= 0)) {
			s = static_cast<float>(held(-c / a));
		} else if (g > e) {
			t = 1;
			s = static_cast<float>(held((b - c) / a));
		} else {
			t = static_cast<float>(g / e);
		}
	}
	out_p = p0 + u * s;
	out_q = q0 + v * t;
}

template <typename T> Vec<T> closest_on_segment(Vec<T> a, Vec<T> b, Vec<T> p, bool check) {
	const Vec<T> d = b - a;
	if (check && !(dot(d, d) > T(1e-5f))) return a;
	return a + d * held(dot(p - a, d) / dot(d, d));
}

template <typename T> void barycentric(Vec<T> p, Vec<T> a, Vec<T> b, Vec<T> c, T& u, T& v, T& w) {
	const Vec<T> e0 = b - a, e1 = c - a, e2 = p - a;
	const T d00 = dot(e0, e0), d01 = dot(e0, e1), d11 = dot(e1, e1), d20 = dot(e2, e0),
			d21 = dot(e2, e1);
	const T i = T(1) / (d00 * d11 - d01 * d01);
	v = (d11 * d20 - d01 * d21) * i;
	w = (d00 * d21 - d01 * d20) * i;
	u = T(1) - v - w;
}

template <typename T>
Vec<T> plane_and_line(Vec<T> point, Vec<T> n, Vec<T> a, Vec<T> b, bool& parallel) {
	const T D = dot(n, b) - dot(n, a);
	parallel = D == 0;
	if (parallel) return n;
	return a + (b - a) * (dot(n, point - a) / D);
}

} // namespace plain
