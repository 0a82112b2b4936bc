#include <morvantis/math/xylmat3.h>

xylMat3 xylMat3::create_rotation_matrix_from_two_vector(const xylVec3& a, const xylVec3& b) {
	constexpr float same_within = 0.01f;
	xylMat3 result = identity();
	const __m128 apart = xyl_lanes::absolute(_mm_sub_ps(a.lanes(), b.lanes()));
	if ((_mm_movemask_ps(_mm_cmplt_ps(apart, _mm_set1_ps(same_within))) & 7) == 7) return result;

	xylVec3 from = a;
	xylVec3 to = b;
	from.fast_normalize();
	to.fast_normalize();
	// Rodrigues' formula with w = sin·axis: M = I + [w]× + k·[w]×², where (1 − cos)/sin² = k and
	// [w]×² has the products w_i·w_j beside the diagonal and −(w_j² + w_k²) on it.
	const xylVec3 w = to.cross(from);
	// kept: opposite arguments make this 2/0, which only is_not_nan() notices.
	const float k = (1.0f - from.dot(to)) / w.dot(w);
	const float xy = k * (w.x * w.y);
	const float xz = k * (w.x * w.z);
	const float yz = k * (w.y * w.z);
	result.s = {1.0f + k * (-(w.z * w.z) - w.y * w.y), -w.z + xy, w.y + xz, 0};
	result.f = {w.z + xy, 1.0f + k * (-(w.z * w.z) - w.x * w.x), -w.x + yz, 0};
	result.u = {-w.y + xz, w.x + yz, 1.0f + k * (-(w.y * w.y) - w.x * w.x), 0};
	return result;
}
