// Half-lines with a length limit, and what they hit.
#pragma once

#include <morvantis/math/xylobject_bounds_cache.h>

struct zubSphere_data {
	xylVec3 center;
	float radius;
};

// Everything within `radius` of the segment: a cylinder that ends in half spheres.
struct zubCapsule_data {
	xylVec3 start; // centre of one end's sphere
	xylVec3 end;   // centre of the other's
	float radius;
};

// A flat, convex face of three or four corners.
struct zubQuad_data {
	static constexpr unsigned int triangle_flag = 1;  // three corners; the fourth is ignored
	static constexpr unsigned int two_sided_flag = 2; // the back is hit too

	xylVec3 corners[4]; // in order around the face
	xylVec3 normal;
	xylVec3 edge_normals[4]; // from corner i to the next: the normal in the face that points inside
	unsigned int flags;
};

// kept: the tests follow no common convention; each says whether `max_distance` limits it and what
// it yields when the ray starts inside. Points that are computed have FLT_MAX as fourth float,
// "the origin" is a whole copy. Where nothing else is said, a false answer leaves the outputs
// alone, and NaN in an argument that matters gives false. Outputs may be arguments, but not the
// vectors of the ray itself. Threads: a value; nothing allocates or reports.
struct MORVANTIS_API xylRay {
	static constexpr float default_max_distance = 100000.0f;

	// From the origin along +X.
	xylRay() : origin(0, 0, 0, 0), direction(1, 0, 0), max_distance(default_max_distance) {}
	// The direction goes through normalize() unless it is said to be of unit length.
	xylRay(const xylVec3& origin_value, const xylVec3& direction_value, float max_distance_value,
	       bool direction_is_normalized)
		: origin(origin_value), direction(direction_value), max_distance(max_distance_value) {
		if (!direction_is_normalized) direction.normalize();
	}
	// The direction goes through normalize(). `max_distance` is the length that returns, which is 0
	// for a direction too short to have one, or the default.
	xylRay(const xylVec3& origin_value, const xylVec3& direction_value,
	       bool use_length_as_max_distance)
		: origin(origin_value), direction(direction_value), max_distance(default_max_distance) {
		const float length = direction.normalize();
		if (use_length_as_max_distance) max_distance = length;
	}

	const xylVec3& get_origin() const { return origin; }
	const xylVec3& get_direction() const { return direction; }
	float get_max_distance() const { return max_distance; }
	xylVec3 get_end_point() const { return origin + direction * max_distance; }

	// Point of entry, or the origin where that is inside. Limited by max_distance. An origin on the
	// surface with the centre behind it, or beside it, is no hit.
	bool intersect_with_sphere(const xylVec3& center, float radius, xylVec3& out_point) const;

	// Both distances, the lower first; negative behind the origin. The direction may have any
	// length, in which distances are then counted. Limited by max_distance, but the distances are
	// written whenever the line meets the sphere.
	bool get_sphere_intersection_details(const zubSphere_data& sphere, float& t_near,
	                                     float& t_far) const;

	// The slab test. Not limited by max_distance; true from inside.
	// kept: 1e-6 is added to the way to every face; a zero component of the direction makes that
	// axis's parameters infinite.
	bool intersects_with_bounding_box_simple(const xylVec3& min, const xylVec3& max) const;

	// The slab test behind a test against the box's bounding sphere, which a caller that has made
	// its own may skip. Not limited by max_distance. From inside, the entry lies behind the origin.
	// `out_near` may be null. kept: `out_far` (may be null) is written only together with it.
	bool intersect_ray_bounding_box(const xylVec3& min, const xylVec3& max, xylVec3* out_near,
	                                xylVec3* out_far, bool skip_sphere_test) const;

	// Whether the ray passes the bounding sphere of the cache's box with any of the box ahead. Not
	// limited by max_distance; `out_point` may be null.
	// kept: looser than the slab test, with the least of the entries and the greatest of the exits;
	// parameters of an axis along which the direction is zero are 0.
	bool intersects_with_bounding_box(const xylObject_bounds_cache& cache,
	                                  xylVec3* out_point) const;

	// Distance to the point of the triangle that is hit, or -1 with `out_point` (0, 0, 0). Hit only
	// from the side where (b - a) × (c - a) points towards the origin, and farther away than 1e-6.
	// Not limited by max_distance.
	float intersect_with_triangle(const xylVec3& a, const xylVec3& b, const xylVec3& c,
	                              xylVec3& out_point) const;
	// Triangle (a, b, c), and if that isn't hit (c, d, a). A result greater than 0 is a hit.
	float intersect_with_quad(const xylVec3& a, const xylVec3& b, const xylVec3& c,
	                          const xylVec3& d, xylVec3& out_point) const;

	// Limited by max_distance. Not hit from the back unless two-sided, nor when an edge normal is
	// zero. A ray in the plane of the face hits at the origin, if that is inside, or else where it
	// crosses the nearest edge in X and Y, at the height of the origin.
	bool intersects_with_quad(const zubQuad_data& quad, xylVec3& out_point) const;

	// Whether the ray comes within the radius of the capsule's axis. Limited by max_distance. A NaN
	// distance counts as within.
	bool intersects_with_capsule(const zubCapsule_data& capsule) const;
	// kept: `out_point` is the point of the ray closest to the axis, not the point of entry, and
	// `out_length` the way to it from the surface. Both are zero where the answer is false.
	bool intersects_with_capsule(const zubCapsule_data& capsule, xylVec3& out_point,
	                             float& out_length) const;

	// Where the ray enters and leaves, with normals by fast_normalize(). Limited by max_distance;
	// the entry lies behind an origin that is inside. Start and end at the same place stand for an
	// axis of (0.001, 0.001, 0.001). Outputs found before a test fails stay written.
	bool get_capsule_intersection_details(const zubCapsule_data& capsule, xylVec3& entry_point,
	                                      xylVec3& exit_point, xylVec3& entry_normal,
	                                      xylVec3& exit_normal) const;

	xylVec3 origin;
	xylVec3 direction;  // expected to be of unit length
	float max_distance; // length of the ray in world units

private:
	bool get_parallel_capsule_details(const zubSphere_data& start, const zubSphere_data& end,
	                                  xylVec3& entry_point, xylVec3& exit_point,
	                                  xylVec3& entry_normal, xylVec3& exit_normal) const;
};
