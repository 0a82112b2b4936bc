#include "samples.h"

#include <morvantis/math/xylmatrix_frame_d.h>

TEST(xylMat3, RotationOfNearlyEqualVectorsIsTheIdentity) {
	// Tested on the arguments as passed: these are no unit vectors and do point apart.
	const xylMat3 m =
		xylMat3::create_rotation_matrix_from_two_vector({0.009f, 0, 0}, {0, 0.009f, -0.0099f});
	EXPECT_TRUE(is_vector(m.s, 1, 0, 0, 0));
	EXPECT_TRUE(is_vector(m.f, 0, 1, 0, 0));
	EXPECT_TRUE(is_vector(m.u, 0, 0, 1, 0));
	for (int axis = 0; axis < 3; ++axis) {
		xylVec3 b(1, 1, 1);
		(axis == 0 ? b.x : axis == 1 ? b.y : b.z) += 0.011f;
		const xylMat3 turned = xylMat3::create_rotation_matrix_from_two_vector({1, 1, 1}, b);
		EXPECT_NE(turned.s, xylVec3(1, 0, 0));
	}
}

TEST(xylMat3, RotationIsNoIdentityAtItsBorder) {
	const float border = 0.01f;
	unsigned bits;
	std::memcpy(&bits, &border, sizeof(bits));
	ASSERT_EQ(bits, 0x3C23D70Au);
	const auto is_identity = [](const xylVec3& a, const xylVec3& b) {
		const xylMat3 m = xylMat3::create_rotation_matrix_from_two_vector(a, b);
		return m.s == xylVec3(1, 0, 0) && m.f == xylVec3(0, 1, 0) && m.u == xylVec3(0, 0, 1);
	};
	const xylVec3 b(0.004f, 0.005f, 0.006f);
	for (float xylVec3::* component : {&xylVec3::x, &xylVec3::y, &xylVec3::z}) {
		xylVec3 a = b, zero = b;
		zero.*component = 0;
		for (const float sign : {1.0f, -1.0f}) {
			a.*component = sign * border;
			EXPECT_FALSE(is_identity(a, zero));
			EXPECT_FALSE(is_identity(zero, a));
			a.*component = sign * std::nextafter(border, 0.0f);
			EXPECT_TRUE(is_identity(a, zero));
			EXPECT_TRUE(is_identity(zero, a));
		}
	}
}

TEST(xylMat3, RotationOfOppositeVectorsIsNotANumber) {
	const xylMat3 m = xylMat3::create_rotation_matrix_from_two_vector({1, 0, 0}, {-1, 0, 0});
	EXPECT_FALSE(m.is_not_nan());
}

TEST(xylMat3, RotationTakesTheFirstToTheSecond) {
	Samples samples(21);
	for (int i = 0; i < sample_count; ++i) {
		const xylVec3 a = samples.awkward(3);
		xylVec3 b = samples.awkward(3);
		if (samples.one_in(8)) b = a * (samples.one_in(2) ? 2.0f : -1.0f);
		const xylMat3 m = xylMat3::create_rotation_matrix_from_two_vector(a, b);
		ASSERT_TRUE(same_bits(m, plain::rotation_between(to_plain<float>(a), to_plain<float>(b))))
			<< a << b;
		ASSERT_EQ(m.s.w, 0.0f);
		ASSERT_EQ(m.f.w, 0.0f);
		ASSERT_EQ(m.u.w, 0.0f);
		const auto na = to_plain<double>(a);
		const auto nb = to_plain<double>(b);
		const double lengths = plain::length(na) * plain::length(nb);
		if (lengths < 1e-3 || plain::dot(na, nb) < -0.98 * lengths) continue;
		if (plain::length(plain::cross(na, nb)) < 0.05 * lengths)
			continue; // k divides by its square
		const plain::Frame<double> frame = {
			to_plain<double>(m.s), to_plain<double>(m.f), to_plain<double>(m.u), {0, 0, 0}};
		const auto turned = plain::transform_direction(frame, na * (1 / plain::length(na)));
		const auto target = nb * (1 / plain::length(nb));
		ASSERT_LT(plain::length(turned - target), 1e-4) << a << b;
	}
}

TEST(xylMat3, TellsNotANumberInAnyRow) {
	xylMat3 m = xylMat3::identity();
	EXPECT_TRUE(m.is_not_nan());
	m.s.w = m.f.w = m.u.w = not_a_number;
	EXPECT_TRUE(m.is_not_nan());
	for (float* number : {&m.s.x, &m.s.y, &m.s.z, &m.f.x, &m.f.y, &m.f.z, &m.u.x, &m.u.y, &m.u.z}) {
		const float kept = *number;
		*number = not_a_number;
		EXPECT_FALSE(m.is_not_nan());
		*number = kept;
	}
}

TEST(xylMatrix_frame, IdentityIsWellFormed) {
	const xylMatrix_frame m = xylMatrix_frame::identity();
	EXPECT_TRUE(is_vector(m.s, 1, 0, 0, 0));
	EXPECT_TRUE(is_vector(m.f, 0, 1, 0, 0));
	EXPECT_TRUE(is_vector(m.u, 0, 0, 1, 0));
	EXPECT_TRUE(is_vector(m.origin, 0, 0, 0, 1));
	EXPECT_EQ(m.s.cross(m.f), m.u); // right-handed
}

TEST(xylMatrix_frame, TransformsPointsAndDirections) {
	xylMatrix_frame m;
	m.s = {0, 2, 0, 0};
	m.f = {-3, 0, 0, 0};
	m.u = {0, 0, 4, 0};
	m.origin = {10, 20, 30, 1};
	EXPECT_TRUE(is_vector(m.transform_point({1, 1, 1, 5}), 7, 22, 34, marker));
	EXPECT_TRUE(is_vector(m.transform_direction({1, 1, 1, 5}), -3, 2, 4, marker));
}

TEST(xylMatrix_frame, TransformsLikeThePlainStepsAndDoubles) {
	Samples samples(22);
	for (int i = 0; i < sample_count; ++i) {
		const xylMatrix_frame m = samples.frame(100);
		const xylVec3 p = samples.awkward(100);
		const xylVec3 moved = m.transform_point(p);
		const xylVec3 turned = m.transform_direction(p);
		ASSERT_TRUE(
			same_bits(moved, plain::transform_point(to_plain<float>(m), to_plain<float>(p))));
		ASSERT_TRUE(
			same_bits(turned, plain::transform_direction(to_plain<float>(m), to_plain<float>(p))));
		ASSERT_TRUE(
			near(moved, plain::transform_point(to_plain<double>(m), to_plain<double>(p)), 2e-4));
		ASSERT_TRUE(near(
			turned, plain::transform_direction(to_plain<double>(m), to_plain<double>(p)), 2e-4));
	}
}

TEST(xylMatrix_frame, NarrowsFromDoubles) {
	xylMatrix_frame_d wide;
	double number = 0.1;
	for (xylVec3d* row : {&wide.s, &wide.f, &wide.u, &wide.origin}) {
		for (double* component : {&row->x, &row->y, &row->z, &row->w}) *component = number += 1;
	}
	const xylMatrix_frame m = wide;
	number = 0.1;
	for (const xylVec3* row : {&m.s, &m.f, &m.u, &m.origin}) {
		for (const float component : {row->x, row->y, row->z, row->w}) {
			EXPECT_EQ(component, static_cast<float>(number += 1));
		}
	}
}

TEST(xylMatrix_frame, ToTransformKeepsTheOriginWhole) {
	xylMatrix_frame m = xylMatrix_frame::identity();
	m.origin = {1, 2, 3, 77};
	const xylTransform t = m.to_transform();
	EXPECT_TRUE(is_vector(t.origin, 1, 2, 3, 77));
	EXPECT_EQ(t.rotation.w, 1.0f);
	Samples samples(23);
	for (int i = 0; i < 1000; ++i) {
		static_cast<xylMat3&>(m) = samples.rotation().to_mat3();
		ASSERT_TRUE(same_bits(m.to_transform().rotation,
		                      plain::quaternion_of(to_plain<float>(static_cast<xylMat3&>(m)))));
	}
}

TEST(xylMatrix_frame, OrthonormalizeKeepsForward) {
	xylMatrix_frame m;
	m.s = {not_a_number, 5, 5, 5}; // not looked at
	m.f = {0, 3, 0, 5};
	m.u = {0, 1, 2, 5};
	m.origin = {1, 2, 3, 4};
	m.orthonormalize();
	EXPECT_NEAR(m.f.y, 1, 4e-7);
	EXPECT_NEAR(m.s.x, 1, 8e-7);
	EXPECT_NEAR(m.u.z, 1, 1e-6);
	EXPECT_TRUE(is_vector(m.origin, 1, 2, 3, 4));
	EXPECT_EQ(m.s.w, 0.0f);
	EXPECT_EQ(m.f.w, 0.0f);
	EXPECT_EQ(m.u.w, 0.0f);
	// An up parallel to forward leaves nothing to stand on.
	m.u = m.f * 2.0f;
	m.orthonormalize();
	EXPECT_TRUE(is_vector(m.s, 0, 0, 0, 0));
	EXPECT_TRUE(is_vector(m.u, 0, 0, 0, 0));
}

TEST(xylMatrix_frame, OrthonormalizeLikeThePlainSteps) {
	Samples samples(24);
	for (int i = 0; i < sample_count; ++i) {
		xylMatrix_frame m;
		m.s = samples.awkward(5);
		m.f = samples.awkward(5);
		m.u = samples.awkward(5);
		m.origin = samples.point(5);
		const auto f = plain::fast_normalized(to_plain<float>(m.f));
		const auto s = plain::fast_normalized(plain::cross(f, to_plain<float>(m.u)));
		m.orthonormalize();
		ASSERT_TRUE(same_bits(m.f, f));
		ASSERT_TRUE(same_bits(m.s, s));
		ASSERT_TRUE(same_bits(m.u, plain::cross(s, f)));
	}
}

TEST(xylMatrix_frame, CenterFrameOfEqualPoints) {
	const xylMatrix_frame m = xylMatrix_frame::center_frame_of_two_points({3, 4, 5}, {3, 4, 5});
	EXPECT_TRUE(is_vector(m.s, 0, 1, 0, 0));
	EXPECT_TRUE(is_vector(m.f, -1, 0, 0, 0));
	EXPECT_TRUE(is_vector(m.u, 0, 0, 1, 0));
	EXPECT_TRUE(is_vector(m.origin, 3, 4, 5, 1));
}

TEST(xylMatrix_frame, CenterFrameAlongUpTakesTheOtherReference) {
	const xylMatrix_frame m = xylMatrix_frame::center_frame_of_two_points({0, 0, 1}, {0, 0, 5});
	EXPECT_TRUE(is_vector(m.s, 0, 0, 1, 0));
	EXPECT_TRUE(is_vector(m.f, 1, 0, 0, 0)); // (0, 1, 0) × (0, 0, 1)
	EXPECT_TRUE(is_vector(m.u, 0, 1, 0, 0));
	EXPECT_TRUE(is_vector(m.origin, 0, 0, 3, 1));
}

TEST(xylMatrix_frame, CenterFrameTestsUpAsPassed) {
	// s·up = 0.5·10 is above 0.95 though the angle is not small: up is replaced.
	const xylVec3 a(0, 0, 0);
	const xylVec3 b(std::sqrt(3.0f) / 2, 0, 0.5f);
	const xylMatrix_frame replaced = xylMatrix_frame::center_frame_of_two_points(a, b, {0, 0, 10});
	EXPECT_NEAR(replaced.f.y, 0, 1e-6);
	const xylMatrix_frame kept = xylMatrix_frame::center_frame_of_two_points(a, b, {0, 0, 1});
	EXPECT_NEAR(kept.f.y, 1, 1e-6);
	const xylMatrix_frame negative = xylMatrix_frame::center_frame_of_two_points(a, b, {0, 0, -10});
	EXPECT_NEAR(negative.f.y, 0, 1e-6);
}

TEST(xylMatrix_frame, CenterFrameKeepsUpAtTheThreshold) {
	const float threshold = 0.95f;
	for (const float sign : {1.0f, -1.0f}) {
		SCOPED_TRACE(sign);
		const auto frame_with = [sign](float along) {
			return xylMatrix_frame::center_frame_of_two_points({0, 0, 0}, {1, 0, 0},
			                                                   {sign * along, 0, 1});
		};
		const xylMatrix_frame at = frame_with(threshold);
		EXPECT_TRUE(is_vector(at.f, 0, 1, 0, 0)); // (±0.95, 0, 1) × (1, 0, 0)
		const xylMatrix_frame above = frame_with(std::nextafter(threshold, 1.0f));
		EXPECT_TRUE(is_vector(above.f, 0, 0, -1, 0)); // (0, 1, 0) × (1, 0, 0)
	}
}

TEST(xylMatrix_frame, CenterFrameAddsBeforeItHalves) {
	const xylMatrix_frame m =
		xylMatrix_frame::center_frame_of_two_points({3e38f, -3e38f, 1}, {2e38f, -2e38f, 2});
	EXPECT_TRUE(is_vector(m.origin, infinity, -infinity, 1.5f, 1));
}

TEST(xylMatrix_frame, CenterFrameAgreesWithThePlainStepsAndDoubles) {
	Samples samples(25);
	int compared = 0;
	for (int i = 0; i < sample_count; ++i) {
		const xylVec3 a = samples.awkward(10);
		const xylVec3 b = samples.one_in(8) ? a : samples.awkward(10);
		const xylVec3 up = samples.one_in(2) ? xylVec3(0, 0, 1) : samples.unit();
		const xylMatrix_frame m = xylMatrix_frame::center_frame_of_two_points(a, b, up);
		const auto p =
			plain::center_frame(to_plain<float>(a), to_plain<float>(b), to_plain<float>(up));
		ASSERT_TRUE(same_bits(m.s, p.s) && same_bits(m.f, p.f) && same_bits(m.u, p.u) &&
		            same_bits(m.origin, p.origin));
		const auto d =
			plain::center_frame(to_plain<double>(a), to_plain<double>(b), to_plain<double>(up));
		const double along = plain::dot(d.s, to_plain<double>(up));
		const auto other =
			std::abs(along) > 0.95 ? plain::Vec<double>{0, 1, 0} : to_plain<double>(up);
		if (plain::length(to_plain<double>(b) - to_plain<double>(a)) < 1e-3 ||
		    std::abs(std::abs(along) - 0.95) < 1e-5 ||
		    plain::length(plain::cross(other, d.s)) < 0.01) {
			continue;
		}
		++compared;
		ASSERT_TRUE(near(m.s, d.s, 1e-6) && near(m.f, d.f, 3e-5) && near(m.u, d.u, 3e-5));
		ASSERT_TRUE(near(m.origin, d.origin, 2e-6));
	}
	EXPECT_GT(compared, sample_count / 2);
}
