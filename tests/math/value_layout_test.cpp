// How the value types lie in memory, which records, streams and hosts rely on.

#include <morvantis/math/xylint_vec2.h>
#include <morvantis/math/xylint_vec3.h>
#include <morvantis/math/xylmatrix_frame.h>
#include <morvantis/math/xylmatrix_frame_d.h>
#include <morvantis/math/xyltransform.h>
#include <morvantis/math/xylvec2.h>
#include <morvantis/math/xylvec3d.h>

#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>

namespace {

template <typename... Values>
constexpr bool are_plain_values =
	(... && (std::is_trivially_copyable_v<Values> && std::is_trivially_destructible_v<Values> &&
             !std::is_polymorphic_v<Values>));
static_assert(are_plain_values<xylVec2, xylVec3, xylVec3d, xylInt_vec2, xylInt_vec3, xylQuaternion,
                               xylMat3, xylMatrix_frame, xylMatrix_frame_d, xylTransform>);
static_assert(alignof(xylVec3) == 16 && alignof(xylQuaternion) == 16 && alignof(xylMat3) == 16 &&
              alignof(xylMatrix_frame) == 16 && alignof(xylTransform) == 16);

// Sets the named components of `value` to 1, 2, 3 and so on, and then looks at its memory.
template <typename Number, typename Value, typename... Components>
testing::AssertionResult stand_in_order(const Value& value, Components&... components) {
	static_assert(sizeof(value) == sizeof...(components) * sizeof(Number));
	int count = 0;
	(..., (components = static_cast<Number>(++count)));
	Number numbers[sizeof...(components)];
	std::memcpy(numbers, &value, sizeof(value));
	for (int i = 0; i < count; ++i) {
		if (numbers[i] != static_cast<Number>(i + 1)) {
			return testing::AssertionFailure() << "number " << i << " is " << numbers[i];
		}
	}
	return testing::AssertionSuccess();
}

TEST(Value_layout, VectorsStandInTheOrderOfTheirNames) {
	xylVec2 two;
	EXPECT_TRUE(stand_in_order<float>(two, two.x, two.y));
	xylVec3 three;
	EXPECT_TRUE(stand_in_order<float>(three, three.x, three.y, three.z, three.w));
	xylVec3d wide;
	EXPECT_TRUE(stand_in_order<double>(wide, wide.x, wide.y, wide.z, wide.w));
	xylInt_vec2 cell;
	EXPECT_TRUE(stand_in_order<int>(cell, cell.x, cell.y));
	xylInt_vec3 block;
	EXPECT_TRUE(stand_in_order<int>(block, block.x, block.y, block.z));
}

TEST(Value_layout, QuaternionsStandScalarFirst) {
	xylQuaternion q;
	EXPECT_TRUE(stand_in_order<float>(q, q.w, q.x, q.y, q.z));
	const xylQuaternion built(1, 2, 3, 4);
	EXPECT_TRUE(built.w == 1 && built.x == 2 && built.y == 3 && built.z == 4);
}

TEST(Value_layout, FramesStandRowByRow) {
	xylMatrix_frame m;
	EXPECT_TRUE(stand_in_order<float>(m, m.s.x, m.s.y, m.s.z, m.s.w, m.f.x, m.f.y, m.f.z, m.f.w,
	                                  m.u.x, m.u.y, m.u.z, m.u.w, m.origin.x, m.origin.y,
	                                  m.origin.z, m.origin.w));
	xylMatrix_frame_d d;
	EXPECT_TRUE(stand_in_order<double>(d, d.s.x, d.s.y, d.s.z, d.s.w, d.f.x, d.f.y, d.f.z, d.f.w,
	                                   d.u.x, d.u.y, d.u.z, d.u.w, d.origin.x, d.origin.y,
	                                   d.origin.z, d.origin.w));
}

TEST(Value_layout, TransformsStandRotationFirst) {
	xylTransform t;
	EXPECT_TRUE(stand_in_order<float>(t, t.rotation.w, t.rotation.x, t.rotation.y, t.rotation.z,
	                                  t.origin.x, t.origin.y, t.origin.z, t.origin.w));
}

} // namespace
