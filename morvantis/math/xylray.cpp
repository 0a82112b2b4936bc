#include <morvantis/math/xylray.h>

#include <cstddef>

using namespace xyl_lanes;

static_assert(offsetof(xylRay, direction) == 16 && offsetof(xylRay, max_distance) == 32);
static_assert(offsetof(zubQuad_data, normal) == 64 && offsetof(zubQuad_data, flags) == 144);

namespace {

xylVec3 point_at(const xylRay& ray, float distance) {
	return ray.origin + ray.direction * distance;
}

// 1/v. The fourth lane is that of the first, before the division.
__m128 reciprocal(const xylVec3& v) {
	const __m128 xyzx = _mm_shuffle_ps(v.lanes(), v.lanes(), _MM_SHUFFLE(0, 2, 1, 0));
	return _mm_div_ps(_mm_set1_ps(1), xyzx);
}

__m128 greatest_of_three(__m128 v) { return _mm_max_ss(_mm_max_ss(v, splat<1>(v)), splat<2>(v)); }
__m128 least_of_three(__m128 v) { return _mm_min_ss(_mm_min_ss(v, splat<1>(v)), splat<2>(v)); }

// The parameters between which the line is inside a box.
struct Span {
	bool is_ahead() const { return (far >= 0) & !(near > far); } // without a branch

	float near, far;
};

Span slab_span(const xylRay& ray, const xylVec3& min, const xylVec3& max) {
	const __m128 added = _mm_set1_ps(1e-6f);
	const __m128 inverse = reciprocal(ray.direction);
	const __m128 origin = ray.origin.lanes();
	const __m128 a = _mm_mul_ps(_mm_add_ps(_mm_sub_ps(min.lanes(), origin), added), inverse);
	const __m128 b = _mm_mul_ps(_mm_add_ps(_mm_sub_ps(max.lanes(), origin), added), inverse);
	return {first(greatest_of_three(_mm_min_ps(a, b))), first(least_of_three(_mm_max_ps(a, b)))};
}

// Whether the line passes outside of the sphere around a box, given the way to its centre.
bool misses_sphere(const xylRay& ray, __m128 way, __m128 half_extent) {
	const __m128 off = cross(ray.direction.lanes(), way);
	return _mm_comigt_ss(dot(off, off), dot(half_extent, half_extent)) != 0;
}

int corner_count(const zubQuad_data& quad) {
	return quad.flags & zubQuad_data::triangle_flag ? 3 : 4;
}

// Whether `p` is not outside of any edge.
bool is_inside_edges(const zubQuad_data& quad, const xylVec3& p) {
	for (int i = 0; i < corner_count(quad); ++i) {
		if (!((p - quad.corners[i]).dot(quad.edge_normals[i]) >= 0)) return false;
	}
	return true;
}

// A ray in the plane of a face, from outside: the nearest crossing of an edge, in X and Y alone.
bool crosses_edge(const xylRay& ray, const zubQuad_data& quad, xylVec3& out_point) {
	constexpr float lowest = -0.001f; // both parameters may leave [0, 1] by this much
	constexpr float highest = 1.001f;
	const float dx = ray.direction.x * ray.max_distance;
	const float dy = ray.direction.y * ray.max_distance;
	const int count = corner_count(quad);
	bool found = false;
	float nearest = 0;
	float x = 0;
	float y = 0;
	for (int i = 0; i < count; ++i) {
		const xylVec3& a = quad.corners[i];
		const xylVec3& b = quad.corners[(i + 1) % count];
		const float ex = b.x - a.x;
		const float ey = b.y - a.y;
		const float determinant = ey * dx - ex * dy;
		if (determinant == 0) continue;
		const float px = a.x - ray.origin.x;
		const float py = a.y - ray.origin.y;
		const float along_edge = (px * dy - py * dx) / determinant;
		const float along_ray = (px * ey - py * ex) / determinant;
		const float lesser = along_ray < along_edge ? along_ray : along_edge;
		const float greater = along_ray < along_edge ? along_edge : along_ray;
		if (!(lesser >= lowest && greater <= highest)) continue;
		if (lesser > 1 || greater < 0) continue;
		const float hit_x = ray.origin.x + along_ray * dx;
		const float hit_y = ray.origin.y + along_ray * dy;
		const float off_x = hit_x - ray.origin.x;
		const float off_y = hit_y - ray.origin.y;
		const float squared = off_x * off_x + off_y * off_y;
		if (found && !(squared < nearest)) continue;
		found = true;
		nearest = squared;
		x = hit_x;
		y = hit_y;
	}
	if (found) out_point = {x, y, ray.origin.z};
	return found;
}

// Closest approach of two segments.
struct Approach {
	float distance;
	float s, t; // parameters on the first and the second segment
};

// One parameter as a fraction whose division is put off.
struct Fraction {
	float value() const {
		constexpr float as_zero = 0.0001f;
		return numerator > -as_zero && numerator < as_zero ? 0 : numerator / denominator;
	}
	// Puts `wanted`/`length` here, held within [0, 1].
	void clamp(float wanted, float length) {
		if (wanted < 0) {
			numerator = 0;
		} else if (wanted > length) {
			numerator = denominator;
		} else {
			numerator = wanted;
			denominator = length;
		}
	}

	float numerator, denominator;
};

// The minimum of |w + s·u − t·v|² over the unit square: inside where both derivatives vanish, else
// on the side that the unlimited minimum leaves by. See Eberly, "Robust Computation of Distance
// Between Line Segments".
Approach closest_approach(const xylVec3& p0, const xylVec3& p1, const xylVec3& q0,
                          const xylVec3& q1) {
	constexpr float nearly_parallel = 0.0001f;
	const xylVec3 u = p1 - p0;
	const xylVec3 v = q1 - q0;
	const xylVec3 w = p0 - q0;
	const float a = u.dot(u);
	const float b = u.dot(v);
	const float c = v.dot(v);
	const float d = u.dot(w);
	const float e = v.dot(w);
	const float determinant = a * c - b * b;
	Fraction s = {0, 1};
	Fraction t = {e, c};
	if (determinant >= nearly_parallel) {
		s = {b * e - c * d, determinant};
		if (!(s.numerator >= 0)) {
			s.numerator = 0;
		} else if (s.numerator > determinant) {
			s.numerator = determinant;
			t = {e + b, c};
		} else {
			t = {a * e - b * d, determinant};
		}
	}
	if (!(t.numerator >= 0)) {
		t.numerator = 0;
		s.clamp(-d, a);
	} else if (t.numerator > t.denominator) {
		t.numerator = t.denominator;
		s.clamp(b - d, a);
	}
	const float at_s = s.value();
	const float at_t = t.value();
	return {(w + u * at_s - v * at_t).length(), at_s, at_t};
}

void store_hit(const xylRay& ray, float distance, const xylVec3& center, xylVec3& point,
               xylVec3& normal) {
	point = point_at(ray, distance);
	normal = point - center;
	normal.fast_normalize();
}

// Which of the two distances of a sphere an end of the capsule is hit at.
enum class Side { entry, exit };

bool store_sphere_hit(const xylRay& ray, const zubSphere_data& sphere, Side side, xylVec3& point,
                      xylVec3& normal) {
	float t_near, t_far;
	if (!ray.get_sphere_intersection_details(sphere, t_near, t_far)) return false;
	store_hit(ray, side == Side::entry ? t_near : t_far, sphere.center, point, normal);
	return true;
}

} // namespace

// Without a branch, since what a ray meets is hard to foresee: all cases are computed, then chosen.
bool xylRay::intersect_with_sphere(const xylVec3& center, float radius, xylVec3& out_point) const {
	const __m128 zero = _mm_setzero_ps();
	const __m128 start = origin.lanes();
	const __m128 along = direction.lanes();
	const __m128 way = _mm_sub_ps(center.lanes(), start);
	const __m128 squared_radius = _mm_set1_ps(radius * radius);
	const __m128 t = xyl_lanes::dot(way, along);
	const __m128 is_ahead = _mm_cmpgt_ps(t, zero);
	const __m128 foot = _mm_add_ps(start, _mm_mul_ps(along, splat<0>(t)));
	const __m128 off = _mm_sub_ps(foot, center.lanes());
	const __m128 h = _mm_sub_ss(squared_radius, xyl_lanes::dot(off, off));
	const __m128 entry = _mm_sub_ss(t, _mm_sqrt_ss(h));
	const __m128 is_inside = _mm_cmpnge_ps(entry, zero);
	const __m128 is_near = _mm_cmpngt_ps(entry, _mm_load_ss(&max_distance));
	const __m128 hits_ahead = _mm_and_ps(_mm_cmpge_ps(h, zero), _mm_or_ps(is_inside, is_near));
	const __m128 surrounds = _mm_cmplt_ps(xyl_lanes::dot(way, way), squared_radius);
	const __m128 hit = either(is_ahead, hits_ahead, surrounds);

	const __m128 entered = with_marker(_mm_add_ps(start, _mm_mul_ps(along, splat<0>(entry))));
	const __m128 has_entry = splat<0>(_mm_andnot_ps(is_inside, is_ahead));
	const bool is_hit = _mm_movemask_ps(hit) & 1;
	xylVec3 dropped;
	xylVec3& out = is_hit ? out_point : dropped;
	out = xylVec3::from_lanes(either(has_entry, entered, start));
	return is_hit;
}

bool xylRay::get_sphere_intersection_details(const zubSphere_data& sphere, float& t_near,
                                             float& t_far) const {
	const xylVec3 m = origin - sphere.center;
	const float a = direction.dot(direction);
	const float b = 2 * m.dot(direction);
	const float c = m.dot(m) - sphere.radius * sphere.radius;
	const float discriminant = b * b - 4 * a * c;
	if (!(discriminant >= 0)) return false;
	const float root = square_root(discriminant);
	const float lower = (-b - root) * 0.5f / a;
	const float upper = (root - b) * 0.5f / a;
	t_near = upper < lower ? upper : lower;
	t_far = upper < lower ? lower : upper;
	return !(t_near > max_distance) && t_far >= 0;
}

bool xylRay::intersects_with_bounding_box_simple(const xylVec3& min, const xylVec3& max) const {
	return slab_span(*this, min, max).is_ahead();
}

bool xylRay::intersect_ray_bounding_box(const xylVec3& min, const xylVec3& max, xylVec3* out_near,
                                        xylVec3* out_far, bool skip_sphere_test) const {
	if (!skip_sphere_test) {
		const __m128 center = _mm_mul_ps(_mm_add_ps(min.lanes(), max.lanes()), _mm_set1_ps(0.5f));
		const __m128 way = _mm_sub_ps(center, origin.lanes());
		if (misses_sphere(*this, way, _mm_sub_ps(max.lanes(), center))) return false;
	}
	const Span span = slab_span(*this, min, max);
	if (!span.is_ahead()) return false;
	if (!out_near) return true;
	*out_near = point_at(*this, span.near);
	if (out_far) *out_far = point_at(*this, span.far);
	return true;
}

bool xylRay::intersects_with_bounding_box(const xylObject_bounds_cache& cache,
                                          xylVec3* out_point) const {
	const __m128 way = _mm_sub_ps(cache.center.lanes(), origin.lanes());
	if (misses_sphere(*this, way, _mm_sub_ps(cache.max.lanes(), cache.center.lanes()))) {
		return false;
	}
	// kept: no 1e-6, reciprocals of zero are zero, and near and far are the widest, not the
	// narrowest.
	const __m128 moves = _mm_cmpneq_ps(direction.lanes(), _mm_setzero_ps());
	const __m128 inverse = _mm_and_ps(reciprocal(direction), moves);
	const __m128 a = _mm_mul_ps(_mm_sub_ps(cache.min.lanes(), origin.lanes()), inverse);
	const __m128 b = _mm_mul_ps(_mm_sub_ps(cache.max.lanes(), origin.lanes()), inverse);
	const Span span = {first(least_of_three(_mm_min_ps(a, b))),
	                   first(greatest_of_three(_mm_max_ps(a, b)))};
	if (!span.is_ahead()) return false;
	if (out_point) *out_point = point_at(*this, span.near);
	return true;
}

// Möller and Trumbore, "Fast, Minimum Storage Ray/Triangle Intersection" (1997), with back faces
// rejected and the division put off. Two stages, each with one branch for all of its conditions:
// where triangles are hit at random, a branch that goes wrong costs more than the arithmetic.
float xylRay::intersect_with_triangle(const xylVec3& a, const xylVec3& b, const xylVec3& c,
                                      xylVec3& out_point) const {
	constexpr float smallest = 1e-6f; // of det, and of g in units of det
	const __m128 d = direction.lanes();
	const __m128 e1 = _mm_sub_ps(b.lanes(), a.lanes());
	const __m128 e2 = _mm_sub_ps(c.lanes(), a.lanes());
	const __m128 from_a = _mm_sub_ps(origin.lanes(), a.lanes());
	const __m128 p = xyl_lanes::cross(d, e2);
	const __m128 det_u = sums_of_two(_mm_mul_ps(p, e1), _mm_mul_ps(from_a, p));
	const __m128 det = splat<0>(det_u);
	// det >= 1e-6, u >= 0, u <= det.
	const __m128 lowest = _mm_set_ps(0, 0, smallest, smallest);
	const __m128 may_hit = _mm_and_ps(_mm_cmpge_ps(det_u, lowest), _mm_cmple_ps(det_u, det));
	if (_mm_movemask_ps(may_hit) == 15) {
		const __m128 q = xyl_lanes::cross(from_a, e1);
		const __m128 v_g = sums_of_two(_mm_mul_ps(q, d), _mm_mul_ps(q, e2));
		const __m128 u = splat<2>(det_u);
		const __m128 g = splat<2>(v_g);
		// v >= 0, u + v <= det, g > det·1e-6.
		const __m128 inside =
			_mm_and_ps(_mm_cmpge_ss(v_g, _mm_setzero_ps()), _mm_cmple_ss(_mm_add_ss(u, v_g), det));
		const __m128 ahead = _mm_cmpgt_ss(g, _mm_mul_ss(det, _mm_set_ss(smallest)));
		if (_mm_movemask_ps(_mm_and_ps(inside, ahead)) & 1) {
			const __m128 distance = _mm_div_ps(g, det);
			out_point = xylVec3::from_lanes(
				with_marker(_mm_add_ps(origin.lanes(), _mm_mul_ps(d, distance))));
			return first(distance);
		}
	}
	out_point = {0, 0, 0};
	return -1;
}

float xylRay::intersect_with_quad(const xylVec3& a, const xylVec3& b, const xylVec3& c,
                                  const xylVec3& d, xylVec3& out_point) const {
	xylVec3 point; // out_point may be a corner
	float distance = intersect_with_triangle(a, b, c, point);
	if (!(distance > 0)) distance = intersect_with_triangle(c, d, a, point);
	out_point = point;
	return distance;
}

bool xylRay::intersects_with_quad(const zubQuad_data& quad, xylVec3& out_point) const {
	constexpr float parallel = 0.001f;      // |cosine| below which the ray runs in the plane
	constexpr float off_plane = 0.01f;      // distance at which it no longer does
	constexpr float outside_edge = -0.006f; // how far outside an edge still counts as inside
	const float along_normal = quad.normal.dot(direction);
	const bool is_two_sided = (quad.flags & zubQuad_data::two_sided_flag) != 0;
	if (!is_two_sided && along_normal > parallel) return false;
	const float above = quad.normal.dot(origin - quad.corners[0]);

	if (along_normal > -parallel && along_normal < parallel) {
		if (!(above > -off_plane && above < off_plane)) return false;
		if (!is_inside_edges(quad, origin)) return crosses_edge(*this, quad, out_point);
		out_point = origin;
		return true;
	}
	const float t = -above / along_normal;
	if (!(t >= 0)) return false;
	const xylVec3 hit = point_at(*this, t);
	for (int i = 0; i < corner_count(quad); ++i) {
		if (quad.edge_normals[i] == xylVec3(0, 0, 0)) return false;
		if ((hit - quad.corners[i]).dot(quad.edge_normals[i]) < outside_edge) return false;
	}
	if (t * t > max_distance * max_distance) return false;
	out_point = hit;
	return true;
}

bool xylRay::intersects_with_capsule(const zubCapsule_data& capsule) const {
	xylVec3 point;
	float length;
	return intersects_with_capsule(capsule, point, length);
}

bool xylRay::intersects_with_capsule(const zubCapsule_data& capsule, xylVec3& out_point,
                                     float& out_length) const {
	const Approach approach = closest_approach(capsule.start, capsule.end, origin, get_end_point());
	if (approach.distance > capsule.radius) {
		out_point = {0, 0, 0};
		out_length = 0;
		return false;
	}
	const xylVec3 point = point_at(*this, max_distance * approach.t);
	xylVec3 from_axis = point - (capsule.start + (capsule.end - capsule.start) * approach.s);
	const float off_axis = from_axis.normalize();
	const float g = off_axis < capsule.radius ? off_axis : capsule.radius;
	const float b = -2 * g * from_axis.dot(direction);
	const float root = square_root(b * b - (4 * g * g - 4 * capsule.radius * capsule.radius));
	out_point = point;
	out_length = root >= b ? root * 0.5f - b * 0.5f : (-b - root) * 0.5f;
	return true;
}

bool xylRay::get_capsule_intersection_details(const zubCapsule_data& capsule, xylVec3& entry_point,
                                              xylVec3& exit_point, xylVec3& entry_normal,
                                              xylVec3& exit_normal) const {
	xylVec3 axis = capsule.end - capsule.start;
	if (axis == xylVec3(0, 0, 0)) axis = {0.001f, 0.001f, 0.001f};
	const zubSphere_data start = {capsule.start, capsule.radius};
	const zubSphere_data end = {capsule.end, capsule.radius};

	// At distance t the point of the ray is h(t) = t·m + n along the axis, and t·across + aside off
	// it.
	const float k = 1.0f / axis.dot(axis);
	const xylVec3 from_start = origin - capsule.start;
	const float m = direction.dot(axis) * k;
	const float n = from_start.dot(axis) * k;
	const xylVec3 across = direction - axis * m;
	const xylVec3 aside = from_start - axis * n;
	const float a = across.dot(across);
	if (a == 0) {
		return get_parallel_capsule_details(start, end, entry_point, exit_point, entry_normal,
		                                    exit_normal);
	}
	const float b = 2 * aside.dot(across);
	const float c = aside.dot(aside) - capsule.radius * capsule.radius;
	const float discriminant = b * b - 4 * a * c;
	if (!(discriminant >= 0)) return false;
	const float root = square_root(discriminant);
	const float t1 = (-b - root) * 0.5f / a;
	const float t2 = (root - b) * 0.5f / a;
	if (!(t2 >= 0) || t1 > max_distance) return false;

	const float h1 = t1 * m + n;
	if (!(h1 >= 0)) {
		if (!store_sphere_hit(*this, start, Side::entry, entry_point, entry_normal)) return false;
	} else if (h1 > 1) {
		if (!store_sphere_hit(*this, end, Side::entry, entry_point, entry_normal)) return false;
	} else {
		store_hit(*this, t1, start.center + axis * h1, entry_point, entry_normal);
	}
	const float h2 = t2 * m + n;
	if (h2 >= 0 && h2 <= 1) {
		store_hit(*this, t2, start.center + axis * h2, exit_point, exit_normal);
		return true;
	}
	return store_sphere_hit(*this, h2 > 1 ? end : start, Side::exit, exit_point, exit_normal);
}

bool xylRay::get_parallel_capsule_details(const zubSphere_data& start, const zubSphere_data& end,
                                          xylVec3& entry_point, xylVec3& exit_point,
                                          xylVec3& entry_normal, xylVec3& exit_normal) const {
	float near_start, far_start, near_end, far_end;
	if (!get_sphere_intersection_details(start, near_start, far_start) ||
	    !get_sphere_intersection_details(end, near_end, far_end)) {
		return false;
	}
	if (near_start >= near_end) {
		store_hit(*this, near_end, end.center, entry_point, entry_normal);
	} else {
		store_hit(*this, near_start, start.center, entry_point, entry_normal);
	}
	if (far_start > far_end) {
		store_hit(*this, far_start, start.center, exit_point, exit_normal);
	} else {
		store_hit(*this, far_end, end.center, exit_point, exit_normal);
	}
	return true;
}
