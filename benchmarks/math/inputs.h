// Inputs of the geometry's benchmarks: arrays of fixed pseudo-random values that fit the caches,
// and the orders in which to take them.
#pragma once

#include <morvantis/math/xylfrustum.h>
#include <morvantis/math/xylray.h>

#include <vector>

inline constexpr int input_count = 2048; // a power of two, as Any_order needs

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

// As they stand: for calls without branches.
struct Same_order {
	explicit Same_order(std::size_t) {}
	void next_pass() {}
	std::size_t operator[](std::size_t i) const { return i; }
};

// Every pass in an order of its own. Where passes repeat, a branch predictor learns the answers of
// ten thousand inputs by heart; in a game no two frames ask the same questions in the same order.
class Any_order {
public:
	explicit Any_order(std::size_t count) : mask_(count - 1) {}
	void next_pass() {
		state_ = state_ * 6364136223846793005ull + 1442695040888963407ull;
		start_ = state_ >> 48;
		step_ = state_ >> 32 | 1;
	}
	std::size_t operator[](std::size_t i) const { return (start_ + i * step_) & mask_; }

private:
	std::size_t mask_, start_ = 0, step_ = 1;
	unsigned long long state_ = 1;
};
