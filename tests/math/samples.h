// Random and degenerate inputs with fixed seeds, and the ways between the library's types and the
// plain ones.
#pragma once

#include "plain_frustum.h"

#include <morvantis/math/xylfrustum.h>

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

inline constexpr float infinity = std::numeric_limits<float>::infinity();
inline constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();
inline constexpr float marker = std::numeric_limits<float>::max();
inline constexpr int sample_count = 100000; // inputs of every differential test

// splitmix64: the same numbers under every compiler and standard library. Several in one expression
// stand in braces, where their order is fixed.
class Samples {
public:
	explicit Samples(unsigned long long seed) : state_(seed) {}

	unsigned bits() {
		unsigned long long z = state_ += 0x9E3779B97F4A7C15ull;
		z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
		z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
		return static_cast<unsigned>((z ^ (z >> 31)) >> 32);
	}
	unsigned below(unsigned count) { return bits() % count; }
	bool one_in(unsigned count) { return below(count) == 0; }
	// Uniform, 24 bits.
	float between(float low, float high) {
		return low + (high - low) * (static_cast<float>(bits() >> 8) * 0x1p-24f);
	}

	// Uniform in a cube around the origin.
	xylVec3 point(float reach) {
		const float x = between(-reach, reach);
		const float y = between(-reach, reach);
		return {x, y, between(-reach, reach)};
	}
	// Like point(), but one in four on a coarse grid, on an axis, tiny or zero.
	xylVec3 awkward(float reach) {
		switch (below(16)) {
		case 0:
			return {0, 0, 0};
		case 1:
			return {between(-reach, reach), 0, -0.0f};
		case 2:
			return point(1e-4f);
		case 3: {
			const float x = static_cast<float>(below(5)) - 2;
			const float y = static_cast<float>(below(5)) - 2;
			return {x, y, static_cast<float>(below(5)) - 2};
		}
		default:
			return point(reach);
		}
	}
	xylVec3 unit() {
		for (;;) {
			xylVec3 v = point(1);
			if (v.length_squared() > 0.01f && v.length_squared() < 1) return v.normalize(), v;
		}
	}
	xylQuaternion rotation() {
		for (;;) {
			const float w = between(-1, 1);
			const xylVec3 v = point(1);
			const float squared = w * w + v.length_squared();
			if (squared < 0.01f || squared > 1) continue;
			const float k = 1 / std::sqrt(squared);
			return {w * k, v.x * k, v.y * k, v.z * k};
		}
	}
	// Like rotation(), but one in four on an axis, near the ends of the range, not of unit length,
	// or zero.
	xylQuaternion awkward_rotation() {
		const xylQuaternion q = rotation();
		const float k = between(0, 2);
		switch (below(32)) {
		case 0:
			return {0, 0, 0, 0};
		case 1:
			return {one_in(2) ? 1.0f : -1.0f, 0, -0.0f, 0};
		case 2:
			return {0, one_in(2) ? 1.0f : -1.0f, 0, -0.0f};
		case 3:
			return {-0.0f, 0, one_in(2) ? 1.0f : -1.0f, 0};
		case 4:
			return {between(0.9999f, 1.0001f), q.x * 1e-3f, q.y * 1e-3f, q.z * 1e-3f};
		case 5:
			return {between(-1.0001f, -0.9999f), q.x * 1e-20f, q.y * 1e-20f, q.z * 1e-20f};
		case 6: // second Euler angle near ±π/2
			return {0.70710678f, between(-1e-4f, 1e-4f), one_in(2) ? 0.70710678f : -0.70710678f, 0};
		case 7:
			return {q.w * k, q.x * k, q.y * k, q.z * k};
		default:
			return q;
		}
	}
	// Like unit(), but one in four along an axis, near the poles or not of unit length.
	xylVec3 awkward_unit() {
		const xylVec3 v = unit();
		const float zero = one_in(2) ? 0.0f : -0.0f;
		const float one = one_in(2) ? 1.0f : -1.0f;
		switch (below(24)) {
		case 0:
			return {one, zero, -zero};
		case 1:
			return {zero, one, zero};
		case 2:
			return {zero, zero, one};
		case 3:
			return {v.x * 1e-4f, v.y * 1e-4f, one};
		case 4:
			return {v.x * 1e-3f, v.y * 1e-3f, one * 0.9999995f};
		case 5:
			return v * between(0, 1.5f);
		default:
			return v;
		}
	}
	// Turned anywhere, moved up to `reach`; one in four scaled, one in sixteen the identity.
	xylMatrix_frame frame(float reach) {
		xylMatrix_frame frame = xylMatrix_frame::identity();
		if (one_in(16)) return frame;
		static_cast<xylMat3&>(frame) = rotation().to_mat3();
		if (one_in(4)) {
			frame.s *= between(0.1f, 3);
			frame.f *= between(0.1f, 3);
			frame.u *= between(0.1f, 3);
		}
		const xylVec3 origin = point(reach);
		frame.origin = {origin.x, origin.y, origin.z, 1};
		return frame;
	}

	// Up to `reach` in each half extent, with the sphere around it; one in sixteen flat or a point.
	xylBounding_box box(float place, float reach) {
		const xylVec3 middle = point(place);
		xylVec3 half = {between(0, reach), between(0, reach), between(0, reach)};
		if (one_in(16)) half = one_in(2) ? xylVec3(0, 0, 0) : xylVec3(half.x, half.y, 0);
		xylBounding_box box;
		box.min = middle - half;
		box.max = middle + half;
		box.center = middle;
		box.radius = half.length();
		return box;
	}
	// The volume of a camera anywhere, or of a box; one in eight with planes from anywhere.
	xylFrustum frustum() {
		xylFrustum result;
		if (one_in(8)) {
			for (xylPlane& plane : result.planes_) plane = {point(10), unit()};
			return result;
		}
		xylVec3 tips[8];
		const xylVec3 half = {between(1, 10), between(1, 10), between(1, 10)};
		xylBounding_box::get_transformed_tip_points(tips, -half, half, frame(5));
		result.generate_from_bounding_box_points(tips);
		if (one_in(2)) return result;
		// The sides lean outwards, as those of a camera.
		for (int i = xylFrustum::left_plane; i <= xylFrustum::bottom_plane; ++i) {
			const float lean = between(0, 1);
			xylVec3& normal = result.planes_[i].normal;
			normal = normal + result.planes_[xylFrustum::near_plane].normal * lean;
			normal.normalize();
		}
		return result;
	}

private:
	unsigned long long state_;
};

template <typename T> plain::Vec<T> to_plain(const xylVec3& v) { return {T(v.x), T(v.y), T(v.z)}; }
template <typename T> plain::Quat<T> to_plain(const xylQuaternion& q) {
	return {T(q.w), T(q.x), T(q.y), T(q.z)};
}
template <typename T> plain::Mat<T> to_plain(const xylMat3& m) {
	return {to_plain<T>(m.s), to_plain<T>(m.f), to_plain<T>(m.u)};
}
template <typename T> plain::Frame<T> to_plain(const xylMatrix_frame& m) {
	return {to_plain<T>(m.s), to_plain<T>(m.f), to_plain<T>(m.u), to_plain<T>(m.origin)};
}

template <typename T> plain::Box<T> to_plain(const xylBounding_box& box) {
	return {to_plain<T>(box.min), to_plain<T>(box.max), to_plain<T>(box.center), T(box.radius)};
}
template <typename T> plain::Plane<T> to_plain(const xylPlane& plane) {
	return {to_plain<T>(plane.point), to_plain<T>(plane.normal)};
}
template <typename T> plain::Cache<T> to_plain(const xylObject_bounds_cache& cache) {
	plain::Cache<T> result = {to_plain<T>(cache.min),
	                          to_plain<T>(cache.max),
	                          to_plain<T>(cache.center),
	                          {},
	                          T(cache.radius)};
	for (int i = 0; i < 8; ++i) result.tips[i] = to_plain<T>(cache.tips[i]);
	return result;
}
template <typename T> plain::Frustum<T> to_plain(const xylFrustum& frustum) {
	plain::Frustum<T> result;
	for (int i = 0; i < 6; ++i) result.planes[i] = to_plain<T>(frustum.planes_[i]);
	return result;
}

// Moves inputs of a computation in double a little. An answer that twelve such moves don't change
// is away from its boundary, and the library's in float has to be the same.
class Jitter {
public:
	Jitter(Samples& samples, float size) : samples_(samples), size_(size) {}

	double operator()(double v) const { return v + samples_.between(-size_, size_); }
	plain::Vec<double> operator()(plain::Vec<double> v) const {
		return {(*this)(v.x), (*this)(v.y), (*this)(v.z)};
	}
	plain::Plane<double> operator()(plain::Plane<double> p) const {
		return {(*this)(p.point), p.normal};
	}
	plain::Frustum<double> operator()(plain::Frustum<double> f) const {
		for (plain::Plane<double>& plane : f.planes) plane = (*this)(plane);
		return f;
	}

	// Whether `ask`, which moves its inputs by this, keeps answering what it answers unmoved.
	template <typename Ask> bool is_settled(Ask ask) const {
		const auto answer = ask(Jitter(samples_, 0));
		for (int i = 0; i < 12; ++i) {
			if (ask(*this) != answer) return false;
		}
		return true;
	}

private:
	Samples& samples_;
	float size_;
};

// Equal bits; any NaN equals any other, since which one survives an operation is the compiler's
// choice.
inline bool same_bits(float a, float b) {
	return std::memcmp(&a, &b, sizeof(a)) == 0 || (a != a && b != b);
}
inline bool same_bits(const xylVec3& a, plain::Vec<float> b) {
	return same_bits(a.x, b.x) && same_bits(a.y, b.y) && same_bits(a.z, b.z);
}
inline bool same_bits(const xylQuaternion& a, plain::Quat<float> b) {
	return same_bits(a.w, b.w) && same_bits(a.x, b.x) && same_bits(a.y, b.y) && same_bits(a.z, b.z);
}
inline bool same_bits(const xylMat3& a, plain::Mat<float> b) {
	return same_bits(a.s, b.s) && same_bits(a.f, b.f) && same_bits(a.u, b.u);
}

inline bool near(double a, double b, double tolerance) { return std::abs(a - b) <= tolerance; }
inline bool near(const xylVec3& a, plain::Vec<double> b, double tolerance) {
	return near(a.x, b.x, tolerance) && near(a.y, b.y, tolerance) && near(a.z, b.z, tolerance);
}
inline bool near(const xylQuaternion& a, plain::Quat<double> b, double tolerance) {
	return near(a.w, b.w, tolerance) && near(a.x, b.x, tolerance) && near(a.y, b.y, tolerance) &&
	       near(a.z, b.z, tolerance);
}
inline bool near(const xylMat3& a, plain::Mat<double> b, double tolerance) {
	return near(a.s, b.s, tolerance) && near(a.f, b.f, tolerance) && near(a.u, b.u, tolerance);
}

// For what passes through the runtime's trigonometry: NaN and infinities alike, numbers nearly.
inline bool nearly_same(float a, float b) {
	return same_bits(a, b) || std::abs(a - b) <= 1e-6f * std::max(1.0f, std::abs(b));
}
inline bool nearly_same(const xylVec3& a, plain::Vec<float> b) {
	return nearly_same(a.x, b.x) && nearly_same(a.y, b.y) && nearly_same(a.z, b.z);
}
inline bool nearly_same(const xylQuaternion& a, plain::Quat<float> b) {
	return nearly_same(a.w, b.w) && nearly_same(a.x, b.x) && nearly_same(a.y, b.y) &&
	       nearly_same(a.z, b.z);
}

// Equal numbers, NaN to any NaN; the sign of a zero is left to the bit-exact comparisons.
inline bool same_number(float a, float b) { return a == b || (a != a && b != b); }
inline testing::AssertionResult is_vector(const xylVec3& v, float x, float y, float z, float w) {
	if (same_number(v.x, x) && same_number(v.y, y) && same_number(v.z, z) && same_number(v.w, w)) {
		return testing::AssertionSuccess();
	}
	return testing::AssertionFailure()
	       << "(" << v.x << ", " << v.y << ", " << v.z << ", " << v.w << ")";
}
