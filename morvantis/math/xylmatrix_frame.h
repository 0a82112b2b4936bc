// A frame: three axes and an origin, which take points from one space to its parent.
#pragma once

#include <morvantis/math/xyltransform.h>

struct xylMatrix_frame_d;

// A point p of the frame is p.x·s + p.y·f + p.z·u + origin in the parent's space, summed from left
// to right. In a well-formed frame the fourth floats of the axes are 0 and that of the origin is 1;
// the axes need not be orthonormal. Threads: a value; nothing allocates or reports.
struct MORVANTIS_API xylMatrix_frame : xylMat3 {
	// Leaves the sixteen numbers unset; xylMatrix_frame{} zeroes them.
	xylMatrix_frame() = default;
	// Narrows each of the sixteen numbers to float.
	xylMatrix_frame(const xylMatrix_frame_d& wide);

	static xylMatrix_frame identity() {
		xylMatrix_frame result;
		static_cast<xylMat3&>(result) = xylMat3::identity();
		result.origin = {0, 0, 0, 1};
		return result;
	}

	xylVec3 transform_point(const xylVec3& p) const {
		using namespace xyl_lanes;
		const __m128 along_axes = combine(p.lanes(), s.lanes(), f.lanes(), u.lanes());
		return xylVec3::from_lanes(_mm_add_ps(with_zero(along_axes), with_marker(origin.lanes())));
	}
	xylVec3 transform_direction(const xylVec3& d) const {
		using namespace xyl_lanes;
		return xylVec3::from_lanes(
			with_marker(combine(d.lanes(), s.lanes(), f.lanes(), u.lanes())));
	}

	// Keeps the direction of `f` and rebuilds the other axes in place, by fast_normalize(): s = f ×
	// u, then u = s × f; fourth floats 0. The present `s` is not looked at, `u` is only the
	// reference: one that is parallel to `f`, or a zero `f`, leaves s and u zero.
	void orthonormalize() {
		using namespace xyl_lanes;
		const __m128 forward = fast_normalized(f.lanes());
		const __m128 side = fast_normalized(xyl_lanes::cross(forward, u.lanes()));
		f = xylVec3::from_lanes(with_zero(forward));
		s = xylVec3::from_lanes(with_zero(side));
		u = xylVec3::from_lanes(with_zero(xyl_lanes::cross(side, forward)));
	}

	// The rotation of the axes, which must be orthonormal; `origin` whole, with its fourth float.
	xylTransform to_transform() const {
		xylTransform result;
		xylQuaternion::quaternion_from_mat3(result.rotation, *this);
		result.origin = origin;
		return result;
	}

	// A frame half way between two points whose side axis runs from `a` to `b`, with (0, 0, 1) as
	// up.
	static xylMatrix_frame center_frame_of_two_points(const xylVec3& a, const xylVec3& b);
	// The same with an up of the caller's. Where |s·up| is greater than 0.95, up as passed, it is
	// replaced by (0, 1, 0); an up that isn't of unit length shifts that border. With a = b the
	// side axis is (0, 1, 0). Axes go through normalize() with its fallback; u = s × f does not.
	static xylMatrix_frame center_frame_of_two_points(const xylVec3& a, const xylVec3& b,
	                                                  xylVec3 up);

	// s, f, u and origin by xylVec3::read(): twelve numbers; the fourth floats stay as they were.
	void read(xylBuffer& buffer);

	// `frame` moved in X and Y to a random point of the disc with radius `distance` around its
	// origin, every part of which is equally likely. Draws twice from xylRandom::global_random_gen
	// and belongs to the thread that has it; last digits differ between systems.
	static xylMatrix_frame get_random_frame_with_distance(const xylMatrix_frame& frame,
	                                                      float distance);

	xylVec3 origin;
};
static_assert(sizeof(xylMatrix_frame) == 64);

// s, f, u and origin as the stream writes and reads vectors: twelve floats. The fourth floats are
// neither written nor read: they stay as they were.
MORVANTIS_API xylIO_Stream& operator<<(xylIO_Stream& stream, const xylMatrix_frame& frame);
MORVANTIS_API xylIO_Stream& operator>>(xylIO_Stream& stream, xylMatrix_frame& frame);
