#include "samples.h"

#include <numbers>

namespace {

constexpr float pi = std::numbers::pi_v<float>;

bool is_near(const xylVec3& a, const xylVec3& b, float tolerance) {
	return near(a, to_plain<double>(b), tolerance);
}

// The image of `v` under the rotation, by the two cross products of q·v·q*.
plain::Vec<double> rotated(plain::Quat<double> q, plain::Vec<double> v) {
	const plain::Vec<double> axis = {q.x, q.y, q.z};
	const plain::Vec<double> t = plain::cross(axis, v) * 2.0;
	return v + t * q.w + plain::cross(axis, t);
}

double distance(const xylQuaternion& a, const xylQuaternion& b, float sign) {
	return std::abs(a.w - sign * b.w) + std::abs(a.x - sign * b.x) + std::abs(a.y - sign * b.y) +
	       std::abs(a.z - sign * b.z);
}

} // namespace

TEST(xylQuaternion, RowsAreTheImagesOfTheAxes) {
	// A quarter turn about Z: side goes to forward, forward to minus side.
	const float h = std::sqrt(0.5f);
	const xylQuaternion q(h, 0, 0, h);
	const xylMat3 m = q.to_mat3();
	EXPECT_TRUE(is_near(m.s, {0, 1, 0}, 1e-6f));
	EXPECT_TRUE(is_near(m.f, {-1, 0, 0}, 1e-6f));
	EXPECT_TRUE(is_near(m.u, {0, 0, 1}, 1e-6f));
	EXPECT_EQ(xylQuaternion::identity().to_mat3().s, xylVec3(1, 0, 0));
	EXPECT_EQ(xylQuaternion::identity().to_mat3().f, xylVec3(0, 1, 0));
	EXPECT_EQ(xylQuaternion::identity().to_mat3().u, xylVec3(0, 0, 1));
}

TEST(xylQuaternion, FourthFloatsOfRowsFollowTheOperation) {
	const xylQuaternion q(0.5f, 0.5f, 0.5f, 0.5f);
	EXPECT_TRUE(is_vector(q.calculate_s(), 0, 1, 0, marker));
	EXPECT_TRUE(is_vector(q.calculate_f(), 0, 0, 1, marker));
	EXPECT_TRUE(is_vector(q.calculate_u(), 1, 0, 0, marker));
	const xylMat3 m = q.to_mat3();
	EXPECT_TRUE(is_vector(m.s, 0, 1, 0, 0));
	EXPECT_TRUE(is_vector(m.f, 0, 0, 1, 0));
	EXPECT_TRUE(is_vector(m.u, 1, 0, 0, 0));
	xylMat3 kept = {{9, 9, 9, 5}, {9, 9, 9, 6}, {9, 9, 9, not_a_number}};
	xylQuaternion::mat3_from_quaternion(kept, q);
	EXPECT_TRUE(is_vector(kept.s, 0, 1, 0, 5));
	EXPECT_TRUE(is_vector(kept.f, 0, 0, 1, 6));
	EXPECT_TRUE(is_vector(kept.u, 1, 0, 0, not_a_number));
}

TEST(xylQuaternion, MatrixAgreesWithThePlainStepsAndDoubles) {
	Samples samples(11);
	for (int i = 0; i < sample_count; ++i) {
		const xylQuaternion q = samples.rotation();
		const xylMat3 m = q.to_mat3();
		ASSERT_TRUE(same_bits(m, plain::matrix_of(to_plain<float>(q))));
		ASSERT_EQ(q.calculate_s(), m.s);
		ASSERT_EQ(q.calculate_f(), m.f);
		ASSERT_EQ(q.calculate_u(), m.u);
		const auto exact = to_plain<double>(q);
		ASSERT_TRUE(near(m.s, rotated(exact, {1, 0, 0}), 1e-6));
		ASSERT_TRUE(near(m.f, rotated(exact, {0, 1, 0}), 1e-6));
		ASSERT_TRUE(near(m.u, rotated(exact, {0, 0, 1}), 1e-6));
	}
}

TEST(xylQuaternion, EachBranchOfTheWayBack) {
	// Half turns and near-identity: the largest component is w, z, x, y.
	struct Case {
		const char* name;
		xylMat3 m;
		xylQuaternion expected;
	};
	const Case cases[] = {
		{"identity", xylMat3::identity(), {1, 0, 0, 0}},
		{"half turn about z", {{-1, 0, 0}, {0, -1, 0}, {0, 0, 1}}, {0, 0, 0, 1}},
		{"half turn about x", {{1, 0, 0}, {0, -1, 0}, {0, 0, -1}}, {0, 1, 0, 0}},
		{"half turn about y", {{-1, 0, 0}, {0, 1, 0}, {0, 0, -1}}, {0, 0, 1, 0}},
		{"cyclic", {{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}, {0.5f, 0.5f, 0.5f, 0.5f}},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		xylQuaternion q;
		xylQuaternion::quaternion_from_mat3(q, c.m);
		EXPECT_EQ(distance(q, c.expected, 1), 0);
	}
}

TEST(xylQuaternion, ComesBackFromItsMatrix) {
	Samples samples(12);
	for (int i = 0; i < sample_count; ++i) {
		const xylQuaternion q = samples.rotation();
		const xylMat3 m = q.to_mat3();
		xylQuaternion back;
		xylQuaternion::quaternion_from_mat3(back, m);
		ASSERT_TRUE(same_bits(back, plain::quaternion_of(to_plain<float>(m))));
		ASSERT_TRUE(near(back, plain::quaternion_of(to_plain<double>(m)), 2e-6));
		ASSERT_LT(std::min(distance(q, back, 1), distance(q, back, -1)), 4e-6);
	}
}

TEST(xylQuaternion, MatricesThatAreNoRotationFollowTheSameSteps) {
	Samples samples(13);
	for (int i = 0; i < sample_count; ++i) {
		const xylMat3 m = {samples.awkward(2), samples.awkward(2), samples.awkward(2)};
		xylQuaternion q;
		xylQuaternion::quaternion_from_mat3(q, m);
		ASSERT_TRUE(same_bits(q, plain::quaternion_of(to_plain<float>(m))));
	}
}

TEST(xylQuaternion, AngleBetween) {
	const xylQuaternion q(0.5f, 0.5f, 0.5f, 0.5f);
	const xylQuaternion minus_q(-0.5f, -0.5f, -0.5f, -0.5f);
	EXPECT_EQ(xylQuaternion::angle_between(q, q), 0.0f);
	EXPECT_EQ(xylQuaternion::angle_between(q, minus_q), 0.0f); // the dot is exactly -1
	const float h = std::sqrt(0.5f);
	EXPECT_NEAR(xylQuaternion::angle_between({1, 0, 0, 0}, {h, 0, 0, h}), pi / 2, 1e-6);
	EXPECT_NEAR(xylQuaternion::angle_between({1, 0, 0, 0}, {-h, 0, 0, h}), pi / 2, 1e-6);
	EXPECT_NEAR(xylQuaternion::angle_between({1, 0, 0, 0}, {0, 0, 0, 1}), pi, 1e-6);
	// A dot just above -1 goes through 2π − θ.
	const float w = -std::cos(0.001f);
	const float angle = xylQuaternion::angle_between({1, 0, 0, 0}, {w, std::sin(0.001f), 0, 0});
	EXPECT_GT(angle, 0.0f);
	EXPECT_NEAR(angle, 0.002f, 2e-4);
	EXPECT_EQ(xylQuaternion::angle_between({2, 0, 0, 0}, {2, 0, 0, 0}), 0.0f);
	EXPECT_EQ(xylQuaternion::angle_between({not_a_number, 0, 0, 0}, q), 0.0f);
}

TEST(xylQuaternion, AngleBetweenTakesTheDotInDouble) {
	// (1 - 2^-24) + (2^-24 - 2^-50), of which the last product rounds to 2^-24 in float, and the
	// sum to 1.
	const xylQuaternion a(1, 1 - 0x1p-13f, 0, 0);
	const xylQuaternion b(1 - 0x1p-24f, 0x1p-24f * (1 + 0x1p-13f), 0, 0);
	ASSERT_EQ(a.w * b.w + a.x * b.x, 1.0f);
	const double expected = 2 * std::acos(1 - 0x1p-50); // 8.4e-8
	EXPECT_NEAR(xylQuaternion::angle_between(a, b), expected, 1e-12);
	EXPECT_NEAR(xylQuaternion::angle_between(a, {-b.w, -b.x, 0, 0}), expected, 1e-12);
}

TEST(xylQuaternion, AxisAndAngle) {
	xylVec3 axis;
	float angle = 5;
	xylQuaternion::axis_angle_from_quaternion(axis, angle, xylQuaternion::identity());
	EXPECT_TRUE(is_vector(axis, 1, 0, 0, marker));
	EXPECT_EQ(angle, 0.0f);
	for (const float w : {1.5f, -1.0f, -2.0f, not_a_number}) {
		axis = {9, 9, 9};
		angle = 5;
		xylQuaternion::axis_angle_from_quaternion(axis, angle, {w, 0, 1, 0});
		EXPECT_TRUE(is_vector(axis, 1, 0, 0, marker));
		EXPECT_EQ(angle, 0.0f);
	}
	const float h = std::sqrt(0.5f);
	xylQuaternion::axis_angle_from_quaternion(axis, angle, {h, 0, -h, 0});
	EXPECT_TRUE(is_near(axis, {0, -1, 0}, 1e-6f));
	EXPECT_EQ(axis.w, marker);
	EXPECT_NEAR(angle, pi / 2, 1e-6);
}

TEST(xylQuaternion, AngleMayReplaceAComponentOfTheQuaternion) {
	const xylQuaternion q(0.5f, 0.1f, -0.7f, 0.5f);
	xylVec3 expected_axis, axis;
	float expected_angle;
	xylQuaternion::axis_angle_from_quaternion(expected_axis, expected_angle, q);
	for (float xylQuaternion::* component :
	     {&xylQuaternion::w, &xylQuaternion::x, &xylQuaternion::y, &xylQuaternion::z}) {
		xylQuaternion same = q;
		xylQuaternion::axis_angle_from_quaternion(axis, same.*component, same);
		EXPECT_EQ(axis, expected_axis);
		EXPECT_EQ(same.*component, expected_angle);
	}
}

TEST(xylQuaternion, FromAxisAndAngleTakesTheAxisAsGiven) {
	xylQuaternion q;
	xylQuaternion::quaternion_from_axis_angle(q, {0, 0, 2}, pi);
	EXPECT_NEAR(q.w, 0, 1e-7);
	EXPECT_NEAR(q.z, 2, 1e-6);
	EXPECT_EQ(q.x, 0.0f);
	EXPECT_EQ(q.y, 0.0f);
}

TEST(xylQuaternion, AxisAndAngleComeBack) {
	Samples samples(14);
	for (int i = 0; i < sample_count; ++i) {
		const xylVec3 axis = samples.unit();
		const float angle = samples.between(0.05f, 6.2f);
		xylQuaternion q;
		xylQuaternion::quaternion_from_axis_angle(q, axis, angle);
		xylVec3 back;
		float back_angle;
		xylQuaternion::axis_angle_from_quaternion(back, back_angle, q);
		ASSERT_NEAR(back_angle, angle, 1e-4);
		ASSERT_TRUE(is_near(back, axis, 1e-5f));
	}
}

TEST(xylQuaternion, EulerAnglesFollowTheFormula) {
	Samples samples(15);
	for (int i = 0; i < sample_count; ++i) {
		const xylQuaternion q = samples.rotation();
		xylVec3 angles(0, 0, 0, 5);
		xylQuaternion::euler_angle_from_quaternion(angles, q);
		const auto e = to_plain<double>(q);
		const double sine = -2 * (e.x * e.z - e.w * e.y);
		if (std::abs(sine) > 0.999) continue; // the poles magnify rounding, or make it NaN
		ASSERT_NEAR(angles.y, std::asin(sine), 2e-5);
		const double x =
			std::atan2(2 * (e.w * e.x + e.y * e.z), e.w * e.w - e.x * e.x - e.y * e.y + e.z * e.z);
		const double z =
			std::atan2(2 * (e.w * e.z + e.x * e.y), e.w * e.w + e.x * e.x - e.y * e.y - e.z * e.z);
		ASSERT_NEAR(std::remainder(angles.x - x, 2 * std::numbers::pi), 0, 2e-5);
		ASSERT_NEAR(std::remainder(angles.z - z, 2 * std::numbers::pi), 0, 2e-5);
		ASSERT_EQ(angles.w, marker);
	}
}

TEST(xylQuaternion, EulerSineIsNotClamped) {
	xylVec3 angles;
	xylQuaternion::euler_angle_from_quaternion(angles, {0.75f, 0, 0.75f, 0});
	EXPECT_TRUE(std::isnan(angles.y));
}

TEST(xylQuaternion, ShortestArcOfOppositeVectorsIsAHalfTurn) {
	const xylVec3 cases[] = {{1, 0, 0},       {0, 1, 0},        {0, 0, 1},      {0, 0, -1},
	                         {0, 0.6f, 0.8f}, {0.6f, 0, -0.8f}, {0.8f, 0.6f, 0}};
	for (const xylVec3& a : cases) {
		SCOPED_TRACE(testing::Message() << a);
		const xylQuaternion q = xylQuaternion::find_shortest_arc_as_quat(a, -a);
		EXPECT_EQ(q.w, 0.0f);
		const xylVec3 axis(q.x, q.y, q.z);
		EXPECT_NEAR(axis.dot(a), 0, 1e-6);
		EXPECT_NEAR(axis.length(), 1, 1e-6);
	}
	// |a.z| of 0.8 and more takes (0, a.z, -a.y), less takes (a.y, -a.x, 0).
	EXPECT_EQ(xylQuaternion::find_shortest_arc_as_quat({0, 0.6f, 0.8f}, {0, -0.6f, -0.8f}).x, 0.0f);
	EXPECT_GT(xylQuaternion::find_shortest_arc_as_quat({0, 0.61f, 0.79f}, {0, -0.61f, -0.79f}).x,
	          0.9f);
	EXPECT_LT(xylQuaternion::find_shortest_arc_as_quat({0, 0.6f, -0.8f}, {0, -0.6f, 0.8f}).y, 0.0f);
}

TEST(xylQuaternion, ShortestArcIsNoHalfTurnAtItsBorder) {
	const float border = -0.99f;
	const float side = std::sqrt(1 - border * border);
	const xylVec3 a(1, 0, 0);
	const xylQuaternion at = xylQuaternion::find_shortest_arc_as_quat(a, {border, side, 0});
	EXPECT_EQ(at.w, std::sqrt(2 * border + 2) * 0.5f);
	EXPECT_GT(at.z, 0.99f);
	const xylQuaternion below =
		xylQuaternion::find_shortest_arc_as_quat(a, {std::nextafter(border, -1.0f), side, 0});
	EXPECT_EQ(below.w, 0.0f);
	EXPECT_NEAR(below.y, -1, 1e-6); // (a.y, -a.x, 0)
	const xylQuaternion lost = xylQuaternion::find_shortest_arc_as_quat(a, {not_a_number, 0, 0});
	EXPECT_EQ(lost.w, 0.0f);
	EXPECT_NEAR(lost.y, -1, 1e-6);
}

TEST(xylQuaternion, ArcsTakeOneVectorToTheOther) {
	Samples samples(16);
	for (int i = 0; i < sample_count; ++i) {
		const xylVec3 a = samples.unit();
		xylVec3 b = samples.unit();
		if (samples.one_in(8)) b = samples.one_in(2) ? a : -a;
		if (samples.one_in(8)) (b = -a + samples.point(0.2f)).normalize();
		const auto pa = to_plain<float>(a);
		const auto pb = to_plain<float>(b);
		const xylQuaternion arc = xylQuaternion::find_shortest_arc_as_quat(a, b);
		ASSERT_TRUE(same_bits(arc, plain::shortest_arc(pa, pb)));
		const xylQuaternion two = xylQuaternion::quaternion_from_two_vectors(a, b);
		ASSERT_TRUE(same_bits(two, plain::from_two_vectors(pa, pb)));
		const auto da = to_plain<double>(a);
		const double d = plain::dot(da, to_plain<double>(b));
		if (d > -0.98) {
			// The root of 2d + 2 has lost two digits at d = -0.98.
			ASSERT_TRUE(near(b, rotated(to_plain<double>(arc), da), 4e-5));
			ASSERT_TRUE(near(b, rotated(to_plain<double>(two), da), 4e-5));
		} else if (d < -0.991) {
			ASSERT_EQ(arc.w, 0.0f);
			ASSERT_TRUE(near(-a, rotated(to_plain<double>(arc), da), 4e-6));
		}
	}
}

TEST(xylQuaternion, TwoVectorsOppositeGiveZero) {
	const xylQuaternion q = xylQuaternion::quaternion_from_two_vectors({0, 0, 1}, {0, 0, -1});
	EXPECT_EQ(distance(q, {0, 0, 0, 0}, 1), 0);
	// The arguments are not normalised: (1 + 4, 0) scales to w = 1.
	EXPECT_NEAR(xylQuaternion::quaternion_from_two_vectors({2, 0, 0}, {2, 0, 0}).w, 1, 1e-6);
	// And (1 + 0, (0, 0, 4)) is no rotation of 90 degrees.
	EXPECT_NEAR(xylQuaternion::quaternion_from_two_vectors({2, 0, 0}, {0, 2, 0}).z,
	            4 / std::sqrt(17.0), 1e-6);
}

TEST(xylQuaternion, TwoVectorsAddTheSmallestNormalNumber) {
	// The squared length is 1e-38, to which 1.18e-38 is added.
	const xylQuaternion q = xylQuaternion::quaternion_from_two_vectors({1, 0, 0}, {-1, 1e-19f, 0});
	EXPECT_EQ(q.w, 0.0f);
	EXPECT_NEAR(q.z, 1e-19 / std::sqrt(1e-38 + 1.1754944e-38), 1e-6);
}

TEST(xylQuaternion, LookAtTakesForwardToTheDirection) {
	Samples samples(17);
	for (int i = 0; i < sample_count; ++i) {
		const xylVec3 dir = samples.unit();
		const xylQuaternion q = xylQuaternion::quaternion_look_at(dir);
		if (std::isnan(q.w)) continue;
		const auto turned = rotated(to_plain<double>(q), {0, 1, 0});
		// Near the poles the root of 1 − z² has few digits left.
		const double tolerance = std::abs(dir.z) > 0.999f ? 2e-3 : 2e-5;
		ASSERT_TRUE(near(dir, turned, tolerance)) << dir;
		// No roll: the side axis stays horizontal.
		ASSERT_NEAR(rotated(to_plain<double>(q), {1, 0, 0}).z, 0, 2e-6) << dir;
	}
	EXPECT_NEAR(xylQuaternion::quaternion_look_at({0, 1, 0}).w, 1, 1e-6);
	EXPECT_NEAR(xylQuaternion::quaternion_look_at({0, 0, 1}).x, std::sqrt(0.5), 1e-6);
	EXPECT_NEAR(xylQuaternion::quaternion_look_at({0, 0, -1}).x, -std::sqrt(0.5), 1e-6);
	EXPECT_NEAR(xylQuaternion::quaternion_look_at({-1, 0, 0}).z, std::sqrt(0.5), 1e-6);
	EXPECT_TRUE(std::isnan(xylQuaternion::quaternion_look_at({0, 0, 1.5f}).w));
}

TEST(xylQuaternion, SlerpChangesNothing) {
	xylVec3 out(1, 2, 3, 4);
	xylQuaternion::slerp(out, {5, 5, 5}, {6, 6, 6}, 0.5f);
	EXPECT_TRUE(is_vector(out, 1, 2, 3, 4));
}
