// Axes, angles and directions: the operations that pass through the runtime's trigonometry, against
// the same steps in float and against the meaning in double.

#include "samples.h"

#include <numbers>

namespace {

// Whether `angle` is the direction of (cosine, sine), which need not be of unit length: an error of
// `tolerance` in those is let pass, whatever the length.
bool points_along(double angle, double sine, double cosine, double tolerance) {
	return std::abs(std::sin(angle) * cosine - std::cos(angle) * sine) <= tolerance &&
	       std::cos(angle) * cosine + std::sin(angle) * sine >= -tolerance;
}

double length_of(plain::Quat<double> q) {
	return std::sqrt(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z);
}

} // namespace

TEST(xylQuaternion, AxisAngleAgreesWithThePlainStepsAndDoubles) {
	Samples samples(101);
	int fallbacks = 0;
	for (int i = 0; i < sample_count; ++i) {
		const xylQuaternion q = samples.awkward_rotation();
		SCOPED_TRACE(testing::Message() << q.w << " " << q.x << " " << q.y << " " << q.z);
		xylVec3 axis;
		float angle;
		xylQuaternion::axis_angle_from_quaternion(axis, angle, q);
		plain::Vec<float> plain_axis;
		float plain_angle;
		plain::axis_angle_of(to_plain<float>(q), plain_axis, plain_angle);
		ASSERT_TRUE(same_bits(axis, plain_axis));
		ASSERT_TRUE(nearly_same(angle, plain_angle));
		ASSERT_EQ(axis.w, marker);
		if (std::abs(q.w) >= 1) {
			++fallbacks;
			ASSERT_TRUE(is_vector(axis, 1, 0, 0, marker));
			ASSERT_EQ(angle, 0.0f);
			continue;
		}
		ASSERT_NEAR(angle, 2 * std::acos(static_cast<double>(q.w)), 1e-6);
		const plain::Vec<double> v = {q.x, q.y, q.z};
		const double length = plain::length(v);
		if (length < 2e-19) {
			ASSERT_LT(axis.length(), 2.0f); // the zero vector stays zero
			continue;
		}
		ASSERT_TRUE(near(axis, v * (1 / length), 1e-6));
	}
	EXPECT_GT(fallbacks, sample_count / 32);
}

TEST(xylQuaternion, FromAxisAngleAgreesWithThePlainStepsAndDoubles) {
	Samples samples(102);
	for (int i = 0; i < sample_count; ++i) {
		const xylVec3 axis = samples.one_in(2) ? samples.unit() : samples.awkward(3);
		const float angle = samples.one_in(8)   ? samples.between(-1000, 1000)
		                    : samples.one_in(8) ? static_cast<float>(samples.below(9)) * 0.78539819f
		                                        : samples.between(-7, 7);
		xylQuaternion q;
		xylQuaternion::quaternion_from_axis_angle(q, axis, angle);
		ASSERT_TRUE(nearly_same(q, plain::from_axis_angle(to_plain<float>(axis), angle)));
		const auto exact = plain::from_axis_angle<double>(to_plain<double>(axis), angle);
		ASSERT_TRUE(near(q, exact, 1e-6)) << axis << angle;
	}
}

TEST(xylQuaternion, EulerAnglesAgreeWithThePlainStepsAndDoubles) {
	Samples samples(103);
	int beyond = 0;
	for (int i = 0; i < sample_count; ++i) {
		const xylQuaternion q = samples.awkward_rotation();
		SCOPED_TRACE(testing::Message() << q.w << " " << q.x << " " << q.y << " " << q.z);
		xylVec3 angles;
		xylQuaternion::euler_angle_from_quaternion(angles, q);
		ASSERT_TRUE(nearly_same(angles, plain::euler_angles(to_plain<float>(q))));
		ASSERT_EQ(angles.w, marker);

		const auto e = to_plain<double>(q);
		const double ww = e.w * e.w, xx = e.x * e.x, yy = e.y * e.y, zz = e.z * e.z;
		const double tolerance = 2e-6 * length_of(e) * length_of(e);
		ASSERT_TRUE(
			points_along(angles.x, 2 * (e.w * e.x + e.y * e.z), ww - xx - yy + zz, tolerance));
		ASSERT_TRUE(
			points_along(angles.z, 2 * (e.w * e.z + e.x * e.y), ww + xx - yy - zz, tolerance));
		const double sine = -2 * (e.x * e.z - e.w * e.y);
		if (std::abs(sine) < 1 - 1e-6) {
			ASSERT_NEAR(std::sin(static_cast<double>(angles.y)), sine, 1e-6);
			ASSERT_LE(std::abs(angles.y), std::numbers::pi_v<float> / 2);
		} else if (std::abs(sine) > 1 + 1e-6) { // nothing clamps it
			++beyond;
			ASSERT_TRUE(std::isnan(angles.y));
		}
	}
	EXPECT_GT(beyond, 100);
}

TEST(xylQuaternion, LookAtAgreesWithThePlainStepsAndDoubles) {
	Samples samples(104);
	int beyond = 0;
	for (int i = 0; i < sample_count; ++i) {
		const xylVec3 dir = samples.awkward_unit();
		SCOPED_TRACE(testing::Message() << dir);
		const xylQuaternion q = xylQuaternion::quaternion_look_at(dir);
		ASSERT_TRUE(nearly_same(q, plain::look_at(to_plain<float>(dir))));
		const double z = dir.z;
		const double rest = 1 - z * z;
		if (std::abs(rest) < 1.2e-7) continue; // no digit is left of it in float
		if (rest < 0) {
			++beyond;
			ASSERT_TRUE(std::isnan(q.w) && std::isnan(q.x) && std::isnan(q.y) && std::isnan(q.z));
			continue;
		}
		// What rounding takes from 1 - z² grows by the slope of the root.
		const double tolerance = 1e-6 + 1.2e-7 / std::sqrt(rest);
		ASSERT_TRUE(near(q, plain::look_at(to_plain<double>(dir)), tolerance));
	}
	EXPECT_GT(beyond, 100);
}

TEST(xylQuaternion, AngleBetweenAgreesWithDoubles) {
	Samples samples(105);
	for (int i = 0; i < sample_count; ++i) {
		const xylQuaternion a = samples.awkward_rotation();
		xylQuaternion b = samples.awkward_rotation();
		if (samples.one_in(8)) b = a;
		if (samples.one_in(16)) b = {-a.w, -a.x, -a.y, -a.z};
		const auto x = to_plain<double>(a), y = to_plain<double>(b);
		const double dot = x.w * y.w + x.x * y.x + x.y * y.y + x.z * y.z;
		const float angle = xylQuaternion::angle_between(a, b);
		// The shorter way round, but for what lies at the ends or beyond.
		const double expected = std::abs(dot) < 1 ? 2 * std::acos(std::abs(dot)) : 0;
		ASSERT_NEAR(angle, expected, 1e-6) << dot;
	}
}
