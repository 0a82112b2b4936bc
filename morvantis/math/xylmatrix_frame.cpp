#include <morvantis/math/xylmatrix_frame.h>

#include <morvantis/core/xylrandom.h>
#include <morvantis/math/xylmatrix_frame_d.h>

#include <cmath>

// |cosine| from which a reference counts as parallel to the direction in question.
static constexpr float nearly_parallel = 0.95f;

xylMatrix_frame::xylMatrix_frame(const xylMatrix_frame_d& wide)
	: xylMat3{wide.s, wide.f, wide.u}, origin(wide.origin) {}

xylMatrix_frame xylMatrix_frame::center_frame_of_two_points(const xylVec3& a, const xylVec3& b) {
	return center_frame_of_two_points(a, b, {0, 0, 1});
}

xylMatrix_frame xylMatrix_frame::center_frame_of_two_points(const xylVec3& a, const xylVec3& b,
                                                            xylVec3 up) {
	xylMatrix_frame result;
	result.origin = (a + b) * 0.5f;
	result.s = b - a;
	result.s.normalize();
	const float along_up = result.s.dot(up);
	if (along_up > nearly_parallel || along_up < -nearly_parallel) up = {0, 1, 0};
	result.f = up.cross(result.s);
	result.f.normalize();
	result.u = result.s.cross(result.f);
	result.s.w = result.f.w = result.u.w = 0;
	result.origin.w = 1;
	return result;
}

xylMatrix_frame xylMatrix_frame::get_random_frame_with_distance(const xylMatrix_frame& frame,
                                                                float distance) {
	constexpr float per_draw = 2.3283064e-10f;        // 2^-32
	constexpr float radians_per_draw = 1.4629181e-9f; // 2π · 2^-32
	const auto draw = [] { return static_cast<float>(xylRandom::random_int()); };
	const float squared_part = draw() * per_draw; // of the radius: areas grow with its square
	const float radius = std::sqrt(squared_part * (distance * distance));
	const float angle = draw() * radians_per_draw;
	xylMatrix_frame result = frame;
	result.origin.x += std::cos(angle) * radius;
	result.origin.y += std::sin(angle) * radius;
	return result;
}
