// Inputs of the geometry's benchmarks: arrays of fixed pseudo-random values, larger than what a
// branch predictor remembers and small enough for the caches.
#pragma once

#include <morvantis/math/xylfrustum.h>
#include <morvantis/math/xylray.h>

#include <vector>

inline constexpr int input_count = 16384;

class Inputs {
public:
	float between(float low, float high) {
		state_ = state_ * 6364136223846793005ull + 1442695040888963407ull;
		return low + (high - low) * (static_cast<float>(state_ >> 40) * 0x1p-24f);
	}
	xylVec3 point(float reach) {
		const float x = between(-reach, reach);
		const float y = between(-reach, reach);
		return {x, y, between(-reach, reach)};
	}
	xylQuaternion rotation() {
		for (;;) {
			const xylVec3 v = point(1);
			const float w = between(-1, 1);
			const float squared = w * w + v.length_squared();
			if (squared < 0.01f || squared > 1) continue;
			const float k = 1 / xyl_lanes::square_root(squared);
			return {w * k, v.x * k, v.y * k, v.z * k};
		}
	}
	xylMatrix_frame frame(float reach) {
		xylMatrix_frame frame = xylMatrix_frame::identity();
		static_cast<xylMat3&>(frame) = rotation().to_mat3();
		frame.origin = point(reach);
		frame.origin.w = 1;
		return frame;
	}
	xylBounding_box box(float reach) {
		const xylVec3 half = {between(0.1f, reach), between(0.1f, reach), between(0.1f, reach)};
		xylBounding_box box;
		box.min = -half;
		box.max = half;
		box.radius = half.length();
		return box;
	}

	template <typename Make> auto array(int count, Make make) {
		std::vector<decltype(make())> result;
		for (int i = 0; i < count; ++i) result.push_back(make());
		return result;
	}

private:
	unsigned long long state_ = 1;
};
