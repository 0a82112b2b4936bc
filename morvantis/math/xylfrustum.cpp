#include <morvantis/math/xylfrustum.h>

#include <bit>
#include <limits>

using namespace xyl_lanes;

static_assert(sizeof(xylFrustum) == 6 * sizeof(xylPlane));

namespace {

constexpr int plane_count = 6;

__m128 towards(const xylPlane& plane, __m128 point) {
	return _mm_sub_ps(point, plane.point.lanes());
}

// Signed distances of a point from the six planes.
class Distances {
public:
	Distances(const xylPlane* planes, __m128 point) {
		const auto product = [&](int i) {
			return _mm_mul_ps(towards(planes[i], point), planes[i].normal.lanes());
		};
		first_four_ = sums_of_four(product(0), product(1), product(2), product(3));
		last_two_ = sums_of_two(product(4), product(5));
	}

	// A mask of eight 16-bit lanes: planes 0, 1, 2, 3, 4, 4, 5, 5. Not at least `border`, which NaN
	// never is.
	__m128i below(float border) const {
		const __m128 wide = _mm_set1_ps(border);
		return mask(_mm_cmpnge_ps(first_four_, wide), _mm_cmpnge_ps(last_two_, wide));
	}
	__m128i less_than(float border) const {
		const __m128 wide = _mm_set1_ps(border);
		return mask(_mm_cmplt_ps(first_four_, wide), _mm_cmplt_ps(last_two_, wide));
	}
	// Negative (or NaN), and its square greater than `border`.
	__m128i outside_by_square(float border) const {
		const auto is_outside = [wide = _mm_set1_ps(border)](__m128 lanes) {
			return _mm_and_ps(_mm_cmpnge_ps(lanes, _mm_setzero_ps()),
			                  _mm_cmpgt_ps(_mm_mul_ps(lanes, lanes), wide));
		};
		return mask(is_outside(first_four_), is_outside(last_two_));
	}

private:
	static __m128i mask(__m128 first_four, __m128 last_two) {
		return _mm_packs_epi32(_mm_castps_si128(first_four), _mm_castps_si128(last_two));
	}

	__m128 first_four_;
	__m128 last_two_; // planes 4, 4, 5, 5
};

// Two masks as bits: the low one in the low byte, the high one in the byte above.
unsigned bits_of(__m128i low, __m128i high) {
	return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(low, high)));
}

// The sphere phase. The two answers that need no corners share a way: in a scene no two objects
// answer alike, and a branch between them would go wrong too often.
class Sphere_phase {
public:
	Sphere_phase(const xylPlane* planes, __m128 center, float radius) {
		const Distances distances(planes, center);
		bits_ = bits_of(distances.less_than(radius), distances.below(-radius));
	}

	// Whether the sphere is outside of no plane and straddles at least one.
	bool leaves_it_to_corners() const { return bits_ - 1 < 0xFF; }
	// The answer otherwise.
	xylFrustum_check_result decided() const {
		return bits_ == 0 ? frustum_inside : frustum_outside;
	}
	// Bit i: plane i is straddled.
	unsigned straddled() const { return (bits_ & 31) | (bits_ >> 1 & 32); }

private:
	unsigned bits_; // low byte: straddled, high byte: outside
};

// Whether the point is farther outside of some plane than the root of `squared`.
bool is_outside_by_square(const xylPlane* planes, const xylVec3& point, float squared) {
	const __m128i outside = Distances(planes, point.lanes()).outside_by_square(squared);
	return _mm_movemask_epi8(outside) != 0;
}

// Four points with their components side by side.
struct Four_points {
	explicit Four_points(const xylVec3* points) {
		const __m128 ab_xy = _mm_unpacklo_ps(points[0].lanes(), points[1].lanes());
		const __m128 cd_xy = _mm_unpacklo_ps(points[2].lanes(), points[3].lanes());
		x = _mm_movelh_ps(ab_xy, cd_xy);
		y = _mm_movehl_ps(cd_xy, ab_xy);
		z = _mm_movelh_ps(_mm_unpackhi_ps(points[0].lanes(), points[1].lanes()),
		                  _mm_unpackhi_ps(points[2].lanes(), points[3].lanes()));
	}

	__m128 x, y, z;
};

// One plane, each number in all lanes.
struct Wide_plane {
	explicit Wide_plane(const xylPlane& plane) {
		const __m128 p = plane.point.lanes();
		const __m128 n = plane.normal.lanes();
		px = splat<0>(p), py = splat<1>(p), pz = splat<2>(p);
		nx = splat<0>(n), ny = splat<1>(n), nz = splat<2>(n);
	}

	__m128 px, py, pz, nx, ny, nz;
};

// fast_normalize(corner − point)·normal >= 0, one corner after the other: bit i is of corner i.
int inner_corners_one_by_one(const xylPlane& plane, const xylVec3* corners, int count) {
	int inner = 0;
	for (int i = 0; i < count; ++i) {
		const __m128 direction = fast_normalized(towards(plane, corners[i].lanes()));
		if (first(dot(direction, plane.normal.lanes())) >= 0) inner |= 1 << i;
	}
	return inner;
}

// The sign of fast_normalize(v)·normal for four corners, without normalising.
//
// Scaling v by a positive factor changes a sum of three products by rounding alone: both sums are
// within 4·2^-24·|v||n| of the exact one up to that factor. So where |v·n| exceeds 1e-6·|v||n| the
// signs agree. Everything else is in doubt: sums near zero, and whatever overflows, vanishes or is
// no number, for the comparison then fails.
struct Corner_signs {
	int inner;   // bit i: v·n >= 0
	int certain; // bit i: the sign is that of the normalised product
};

inline Corner_signs corner_signs(const Wide_plane& plane, __m128 doubt,
                                 const Four_points& corners) {
	const __m128 x = _mm_sub_ps(corners.x, plane.px);
	const __m128 y = _mm_sub_ps(corners.y, plane.py);
	const __m128 z = _mm_sub_ps(corners.z, plane.pz);
	const __m128 distance = _mm_add_ps(_mm_add_ps(_mm_mul_ps(x, plane.nx), _mm_mul_ps(y, plane.ny)),
	                                   _mm_mul_ps(z, plane.nz));
	const __m128 squared =
		_mm_add_ps(_mm_add_ps(_mm_mul_ps(x, x), _mm_mul_ps(y, y)), _mm_mul_ps(z, z));
	return {
		_mm_movemask_ps(_mm_cmpge_ps(distance, _mm_setzero_ps())),
		_mm_movemask_ps(_mm_cmpgt_ps(_mm_mul_ps(distance, distance), _mm_mul_ps(squared, doubt)))};
}

// The factor that makes |v|² the greatest square of a doubtful v·n: (1e-6·|n|)². Infinite, so that
// all is in doubt, for a normal too short for its square to be exact.
__m128 doubt_of(const xylPlane& plane) {
	constexpr float shortest_squared = 1e-20f;
	const float squared = plane.normal.length_squared();
	return _mm_set1_ps(squared > shortest_squared ? squared * 1e-12f
	                                              : std::numeric_limits<float>::infinity());
}

// Which of eight corners are on the inner side of a plane by their normalised directions.
int inner_corners(const xylPlane& plane, const xylVec3* corners, const Four_points* fours) {
	const Wide_plane wide(plane);
	const __m128 doubt = doubt_of(plane);
	const Corner_signs low = corner_signs(wide, doubt, fours[0]);
	const Corner_signs high = corner_signs(wide, doubt, fours[1]);
	if ((low.certain & high.certain) != 15) [[unlikely]] {
		return inner_corners_one_by_one(plane, corners, 8);
	}
	return low.inner | high.inner << 4;
}

// The corner phase: `straddled` has a bit for each plane that is to be tested.
xylFrustum_check_result check_corners(const xylPlane* planes, unsigned straddled,
                                      const xylVec3* corners) {
	const Four_points fours[2] = {Four_points(corners), Four_points(corners + 4)};
	bool is_out = false;
	bool is_cut = false;
	for (unsigned rest = straddled; rest != 0; rest &= rest - 1) {
		const int inner = inner_corners(planes[std::countr_zero(rest)], corners, fours);
		is_out |= inner == 0;
		is_cut |= inner != 255;
	}
	if (is_out) return frustum_outside;
	return is_cut ? frustum_intersects : frustum_inside;
}

// Whether each of the straddled planes has a corner on its inner side, without normalising.
bool all_have_inner_corner(const xylPlane* planes, unsigned straddled, const xylVec3* corners) {
	const Four_points fours[2] = {Four_points(corners), Four_points(corners + 4)};
	const __m128 any = _mm_setzero_ps();
	for (unsigned rest = straddled; rest != 0; rest &= rest - 1) {
		const Wide_plane wide(planes[std::countr_zero(rest)]);
		if ((corner_signs(wide, any, fours[0]).inner | corner_signs(wide, any, fours[1]).inner) ==
		    0) {
			return false;
		}
	}
	return true;
}

// The sphere around a quad: its centre, and the square of the distance to the first corner.
struct Quad_sphere {
	explicit Quad_sphere(const xylVec3* points)
		: center((points[0] + points[1] + points[2] + points[3]) * 0.25f),
		  radius_squared((points[0] - center).length_squared()) {}

	xylVec3 center;
	float radius_squared;
};

// Where three planes meet; false, with `*out` untouched, if not in a point.
bool intersect_planes(const xylPlane& a, const xylPlane& b, const xylPlane& c, xylVec3* out) {
	const xylVec3 bc = b.normal.cross(c.normal);
	const float determinant = a.normal.dot(bc);
	if (determinant == 0) return false;
	const xylVec3 sum = a.normal.dot(a.point) * bc +
	                    b.normal.dot(b.point) * c.normal.cross(a.normal) +
	                    c.normal.dot(c.point) * a.normal.cross(b.normal);
	*out = sum * (1.0f / determinant);
	return true;
}

// The planes that meet in a corner, in the order of the computation.
struct Corner_planes {
	int depth, height, side;
};

bool get_corners(const xylFrustum& frustum, const Corner_planes* corners, int count,
                 const xylPlane& near_plane, xylVec3* out) {
	const auto plane = [&](int i) -> const xylPlane& {
		return i == xylFrustum::near_plane ? near_plane : frustum.planes_[i];
	};
	bool all_met = true;
	for (int i = 0; i < count; ++i) {
		const Corner_planes& c = corners[i];
		all_met &= intersect_planes(plane(c.depth), plane(c.height), plane(c.side), &out[i]);
	}
	return all_met;
}

} // namespace

void xylFrustum::set_planes(xylPlane* planes) {
	for (int i = 0; i < plane_count; ++i) planes_[i] = planes[i];
}

void xylFrustum::generate_from_bounding_box_points(const xylVec3* points) {
	// The plane's point, and the two points whose ways to it span the plane.
	static constexpr struct {
		unsigned char point, a, b;
	} sources[plane_count] = {{0, 4, 5}, {1, 2, 3}, {0, 2, 4}, {1, 3, 5}, {1, 5, 4}, {0, 3, 2}};
	for (int i = 0; i < plane_count; ++i) {
		const xylVec3& point = points[sources[i].point];
		planes_[i].point = point;
		planes_[i].normal = (point - points[sources[i].a]).cross(point - points[sources[i].b]);
		planes_[i].normal.fast_normalize();
	}
}

xylFrustum_check_result xylFrustum::check_bounding_box(const xylBounding_box& box,
                                                       const xylMatrix_frame& frame) const {
	const __m128 axes = _mm_add_ps(_mm_add_ps(frame.s.lanes(), frame.f.lanes()), frame.u.lanes());
	const __m128 reach = absolute(_mm_mul_ps(axes, _mm_set1_ps(box.radius)));
	const float radius = first(_mm_max_ss(_mm_max_ss(reach, splat<1>(reach)), splat<2>(reach)));
	const Sphere_phase sphere(planes_, frame.transform_point(box.center).lanes(), radius);
	if (!sphere.leaves_it_to_corners()) return sphere.decided();
	xylVec3 corners[8];
	box.get_transformed_tip_points(corners, frame);
	return check_corners(planes_, sphere.straddled(), corners);
}

xylFrustum_check_result
xylFrustum::check_bounding_box_identity_frame(const xylBounding_box& box) const {
	const Sphere_phase sphere(planes_, box.center.lanes(), box.radius);
	if (!sphere.leaves_it_to_corners()) return sphere.decided();
	xylVec3 corners[8] = {};
	box.get_tip_points(corners);
	return check_corners(planes_, sphere.straddled(), corners);
}

xylFrustum_check_result xylFrustum::check_bounds_cache(const xylObject_bounds_cache& cache) const {
	const Sphere_phase sphere(planes_, cache.center.lanes(), cache.radius);
	if (!sphere.leaves_it_to_corners()) return sphere.decided();
	return check_corners(planes_, sphere.straddled(), cache.tips);
}

xylFrustum_check_result xylFrustum::check_sphere(const xylVec3& center, float radius) const {
	const Distances distances(planes_, center.lanes());
	// The first plane that the sphere is not fully inside of decides. A negative radius can make
	// one that it is outside of and does not straddle.
	const unsigned bits = bits_of(distances.below(radius), distances.below(-radius));
	const unsigned outside = bits >> 8;
	const unsigned decided = (bits | outside) & 0xFF;
	const unsigned deciding = decided & (0u - decided);
	const int is_seen = (outside & deciding) == 0;
	return static_cast<xylFrustum_check_result>(is_seen << (decided != 0)); // 0, 1 or 1 << 1
}

xylFrustum_check_result xylFrustum::check_quad(const xylVec3* points) const {
	const Quad_sphere sphere(points);
	if (is_outside_by_square(planes_, sphere.center, sphere.radius_squared)) return frustum_outside;
	xylFrustum_check_result result = frustum_inside;
	for (const xylPlane& plane : planes_) {
		const int inner = inner_corners_one_by_one(plane, points, 4);
		if (inner == 0) return frustum_outside;
		if (inner != 15) result = frustum_intersects;
	}
	return result;
}

bool xylFrustum::encloses_bounding_box(const xylObject_bounds_cache& cache) const {
	const Sphere_phase sphere(planes_, cache.center.lanes(), cache.radius);
	if (!sphere.leaves_it_to_corners()) return sphere.decided() != frustum_outside;
	return all_have_inner_corner(planes_, sphere.straddled(), cache.tips);
}

bool xylFrustum::encloses_bounding_box_identity_frame(const xylBounding_box& box) const {
	const Sphere_phase sphere(planes_, box.center.lanes(), box.radius);
	if (!sphere.leaves_it_to_corners()) return sphere.decided() != frustum_outside;
	xylVec3 corners[8] = {};
	box.get_tip_points(corners);
	return all_have_inner_corner(planes_, sphere.straddled(), corners);
}

bool xylFrustum::encloses_quad(const xylVec3* points) const {
	const Quad_sphere sphere(points);
	if (is_outside_by_square(planes_, sphere.center, sphere.radius_squared)) return false;
	for (const xylPlane& plane : planes_) {
		if (inner_corners_one_by_one(plane, points, 4) == 0) return false;
	}
	return true;
}

bool xylFrustum::encloses_check_global_bounds(const xylVec3& min, const xylVec3& max) const {
	const xylVec3 center = (min + max) * 0.5f;
	return !is_outside_by_square(planes_, center, (max - min).length_squared());
}

bool xylFrustum::get_global_frustum_near_plane_points(xylVec3* out) const {
	static constexpr Corner_planes corners[4] = {{near_plane, top_plane, right_plane},
	                                             {near_plane, top_plane, left_plane},
	                                             {near_plane, bottom_plane, right_plane},
	                                             {near_plane, bottom_plane, left_plane}};
	return get_corners(*this, corners, 4, planes_[near_plane], out);
}

bool xylFrustum::get_global_frustum_box_points(xylVec3* out) const {
	return get_global_frustum_box_points_with_custom_near_plane(out, planes_[near_plane]);
}

bool xylFrustum::get_global_frustum_box_points_with_custom_near_plane(
	xylVec3* out, xylPlane custom_near_plane) const {
	static constexpr Corner_planes corners[8] = {
		{near_plane, top_plane, right_plane},    {far_plane, bottom_plane, left_plane},
		{near_plane, bottom_plane, right_plane}, {near_plane, bottom_plane, left_plane},
		{far_plane, top_plane, right_plane},     {far_plane, top_plane, left_plane},
		{far_plane, bottom_plane, right_plane},  {near_plane, top_plane, left_plane}};
	return get_corners(*this, corners, 8, custom_near_plane, out);
}

void xylFrustum::debug_display(float) const {
	xylVec3 scratch[8];
	get_global_frustum_box_points(scratch);
}

bool xylBounding_box::obb_inside_obb(const xylBounding_box& a, const xylMatrix_frame& frame_a,
                                     const xylBounding_box& b, const xylMatrix_frame& frame_b) {
	xylVec3 corners[8];
	get_transformed_tip_points(corners, b.min, b.max, frame_b);
	xylFrustum frustum;
	frustum.generate_from_bounding_box_points(corners);
	return frustum.check_bounding_box(a, frame_a) == frustum_inside;
}
