#include "samples.h"

#include <morvantis/math/xylvec3d.h>

#include <iomanip>
#include <limits>
#include <sstream>

TEST(xylVec3, ThreeNumbersSetTheMarker) {
	EXPECT_TRUE(is_vector({1, 2, 3}, 1, 2, 3, 3.4028235e+38f));
	EXPECT_TRUE(is_vector({1, 2, 3, 4}, 1, 2, 3, 4));
	unsigned bits;
	const xylVec3 v(1, 2, 3);
	std::memcpy(&bits, &v.w, 4);
	EXPECT_EQ(bits, 0x7F7FFFFFu);
}

TEST(xylVec3, EmptyBracesZeroAllFour) { EXPECT_TRUE(is_vector(xylVec3{}, 0, 0, 0, 0)); }

TEST(xylVec3, OperatorsBuildVectorsWithTheMarker) {
	const xylVec3 a(1, -2, 3, 7);
	const xylVec3 b(0.5f, 4, -8, 9);
	EXPECT_TRUE(is_vector(a + b, 1.5f, 2, -5, marker));
	EXPECT_TRUE(is_vector(a - b, 0.5f, -6, 11, marker));
	EXPECT_TRUE(is_vector(-a, -1, 2, -3, marker));
	EXPECT_TRUE(is_vector(a * 2.0f, 2, -4, 6, marker));
	EXPECT_TRUE(is_vector(2.0f * a, 2, -4, 6, marker));
	EXPECT_TRUE(is_vector(a / 4.0f, 0.25f, -0.5f, 0.75f, marker));
	EXPECT_TRUE(
		is_vector(a.cross(b), -2 * -8 - 3 * 4, 3 * 0.5f - 1 * -8, 1 * 4 - -2 * 0.5f, marker));
}

TEST(xylVec3, CompoundFormsLeaveTheFourthAlone) {
	const xylVec3 b(0.5f, 4, -8, 9);
	xylVec3 v(1, -2, 3, 7);
	v += b;
	EXPECT_TRUE(is_vector(v, 1.5f, 2, -5, 7));
	v -= b;
	EXPECT_TRUE(is_vector(v, 1, -2, 3, 7));
	v *= 2;
	EXPECT_TRUE(is_vector(v, 2, -4, 6, 7));
	v /= 4;
	EXPECT_TRUE(is_vector(v, 0.5f, -1, 1.5f, 7));
	v += v;
	EXPECT_TRUE(is_vector(v, 1, -2, 3, 7));
}

TEST(xylVec3, DivisionMultipliesByTheOneReciprocal) {
	// 5/3 and 5·(1/3) differ in the last bit.
	ASSERT_NE(5.0f / 3.0f, 5.0f * (1.0f / 3.0f));
	xylVec3 v(5, 5, 5, 1);
	v /= 3.0f;
	EXPECT_TRUE(is_vector(v, 5.0f * (1.0f / 3.0f), v.x, v.x, 1));
	EXPECT_EQ((xylVec3(5, 5, 5) / 3.0f), v);
	xylVec3 zero(1, -1, 0, 5);
	zero /= 0.0f;
	EXPECT_TRUE(is_vector(zero, infinity, -infinity, not_a_number, 5));
}

TEST(xylVec3, CompoundFormsKeepEveryBitOfTheFourth) {
	for (const unsigned bits : {1u, 0x807FFFFFu, 0x7F800001u, 0xFFFFFFFFu}) {
		SCOPED_TRACE(bits);
		xylVec3 v(1, 2, 3);
		std::memcpy(&v.w, &bits, sizeof(bits));
		v += xylVec3(1, 1, 1);
		v -= xylVec3(2, 2, 2);
		v *= 3;
		v /= 5;
		unsigned left;
		std::memcpy(&left, &v.w, sizeof(left));
		EXPECT_EQ(left, bits);
	}
}

TEST(xylVec3, DividesByItsOwnComponents) {
	for (float xylVec3::* divisor : {&xylVec3::x, &xylVec3::y, &xylVec3::z}) {
		xylVec3 v(4, 2, 8, 5);
		const float k = 1 / (v.*divisor);
		v /= v.*divisor;
		EXPECT_TRUE(is_vector(v, 4 * k, 2 * k, 8 * k, 5));
	}
}

TEST(xylVec3, ComparisonIgnoresTheFourth) {
	EXPECT_TRUE(xylVec3(1, 2, 3, 4) == xylVec3(1, 2, 3, not_a_number));
	EXPECT_FALSE(xylVec3(1, 2, 3, 4) != xylVec3(1, 2, 3, 5));
	EXPECT_TRUE(xylVec3(1, 2, 3) != xylVec3(1, 2, 4));
	EXPECT_TRUE(xylVec3(1, 2, 3) != xylVec3(1, 0, 3));
	EXPECT_TRUE(xylVec3(1, 2, 3) != xylVec3(0, 2, 3));
	EXPECT_TRUE(xylVec3(0, 0, 0) == xylVec3(-0.0f, 0, 0));
	const xylVec3 nan(not_a_number, 0, 0);
	EXPECT_FALSE(nan == nan);
}

TEST(xylVec3, DotSumsFromLeftToRight) {
	// (1e8 + 1) − 1e8 is 0 in float, 1e8 + (1 − 1e8) is 1.
	EXPECT_EQ(xylVec3(1e8f, 1, -1e8f).dot({1, 1, 1}), 0.0f);
	EXPECT_EQ(xylVec3(1e8f, -1e8f, 1).dot({1, 1, 1}), 1.0f);
	EXPECT_EQ(xylVec3(2, 3, 6).length(), 7.0f);
	EXPECT_EQ(xylVec3(2, 3, 6).length_squared(), 49.0f);
}

TEST(xylVec3, NormalizeReturnsTheLength) {
	xylVec3 v(0, 3, 4, 8);
	EXPECT_EQ(v.normalize(), 5.0f);
	EXPECT_TRUE(is_vector(v, 0, 3 * (1 / 5.0f), 4 * (1 / 5.0f), 8));
}

TEST(xylVec3, NormalizeFallsBackToForward) {
	const float border = std::sqrt(1e-7f);
	const xylVec3 cases[] = {{0, 0, 0, 5},
	                         {0.000316f, 0, 0, 5},
	                         {0, 0, -border * 0.9999f, 5},
	                         {not_a_number, 0, 0, 5},
	                         {1, 1, not_a_number, 5}};
	for (xylVec3 v : cases) {
		SCOPED_TRACE(testing::Message() << v);
		EXPECT_EQ(v.normalize(), 0.0f);
		EXPECT_TRUE(is_vector(v, 0, 1, 0, 5));
	}
	xylVec3 above(0.000317f, 0, 0);
	EXPECT_GT(above.normalize(), 0.0f);
	EXPECT_NEAR(above.x, 1, 1e-6f);
}

TEST(xylVec3, NormalizeComparesTheSquareWithItsBorderStrictly) {
	// Of the floats around sqrt(1e-7), the ones whose square in float is the border or less fall
	// back.
	const float border = 1e-7f;
	int below = 0;
	int above = 0;
	for (float x = 0.00031622f; x < 0.00031624f; x = std::nextafter(x, 1.0f)) {
		xylVec3 v(x, 0, 0);
		const bool falls_back = v.normalize() == 0;
		ASSERT_EQ(falls_back, !(x * x > border));
		++(falls_back ? below : above);
	}
	EXPECT_GT(below, 100);
	EXPECT_GT(above, 100);
}

TEST(xylVec3, NormalizeFallsBackForASquareThatIsTheBorder) {
	const float border = 1e-7f;
	unsigned bits;
	std::memcpy(&bits, &border, sizeof(bits));
	ASSERT_EQ(bits, 0x33D6BF95u);
	int exact = 0;
	for (float x = 0.0002f; x < 0.00020001f; x = std::nextafter(x, 1.0f)) {
		const float y = std::sqrt(border - x * x);
		if (x * x + y * y != border) continue;
		++exact;
		xylVec3 v(x, y, 0, 5);
		ASSERT_EQ(v.normalize(), 0.0f);
		ASSERT_TRUE(is_vector(v, 0, 1, 0, 5));
	}
	EXPECT_GT(exact, 0);
}

TEST(xylVec3, NormalizeOfWhatIsTooLongLosesTheDirection) {
	xylVec3 v(3e19f, infinity, -1, 5);
	EXPECT_EQ(v.normalize(), infinity);
	EXPECT_TRUE(is_vector(v, 0, not_a_number, 0, 5));
}

TEST(xylVec3, FastNormalizeLeavesZeroAlone) {
	xylVec3 zero(0, 0, 0, 5);
	zero.fast_normalize();
	EXPECT_TRUE(is_vector(zero, 0, 0, 0, 5));
	xylVec3 tiny(1e-20f, 0, 0, 5);
	tiny.fast_normalize();
	EXPECT_NEAR(tiny.x, 1e-20 / std::sqrt(1.1754944e-38), 1e-6);
	EXPECT_EQ(tiny.w, 5.0f);
}

TEST(xylVec3, FastNormalizeIsWithinFourTenMillionths) {
	Samples samples(1);
	for (int i = 0; i < sample_count; ++i) {
		const float scale = std::ldexp(1.0f, static_cast<int>(samples.below(120)) - 60);
		xylVec3 v = samples.point(1) * scale;
		const plain::Vec<double> exact = to_plain<double>(v);
		const double length = plain::length(exact);
		if (length * length < 1.2e-38) continue;
		v.w = 3;
		v.fast_normalize();
		ASSERT_NEAR(plain::length(to_plain<double>(v)), 1, 4e-7);
		ASSERT_TRUE(near(v, exact * (1 / length), 4e-7));
		ASSERT_EQ(v.w, 3.0f);
	}
}

TEST(xylVec3, FastNormalizeHoldsOverTheWholeNormalRange) {
	for (float l = std::numeric_limits<float>::min(); l < infinity; l *= 1.0009f) {
		const double root = xyl_lanes::first(xyl_lanes::approximate_inverse_root(_mm_set_ss(l)));
		ASSERT_NEAR(root * std::sqrt(static_cast<double>(l)), 1, 4e-7) << l;
	}
}

TEST(xylVec3, TellsNumbersFromTheRest) {
	struct Case {
		xylVec3 v;
		bool not_nan, finite;
	};
	const Case cases[] = {
		{{1, 2, 3}, true, true},
		{{marker, -marker, 1e-45f}, true, true},
		{{infinity, 0, 0}, true, false},
		{{0, -infinity, 0}, true, false},
		{{0, 0, infinity}, true, false},
		{{not_a_number, 0, 0}, false, false},
		{{0, -not_a_number, 0}, false, false},
		{{0, 0, not_a_number}, false, false},
		{{0, 0, 0, not_a_number}, true, true}, // the fourth is not looked at
		{{0, 0, 0, infinity}, true, true},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(testing::Message() << c.v << ' ' << c.v.w);
		EXPECT_EQ(c.v.is_not_nan(), c.not_nan);
		EXPECT_EQ(c.v.is_finite(), c.finite);
	}
}

TEST(xylVec3, NarrowsAllFourDoubles) {
	EXPECT_TRUE(is_vector(xylVec3(xylVec3d(0.1, 1e30, -3, 5)), 0.1f, 1e30f, -3, 5));
	EXPECT_TRUE(is_vector(xylVec3(xylVec3d(1, 2, 3)), 1, 2, 3, marker));
}

TEST(xylVec3, PrintsThreeNumbers) {
	std::ostringstream text;
	text << xylVec3(1.5f, -2, 1e10f, 7);
	EXPECT_EQ(text.str(), "(1.5, -2, 1e+10)");
}

TEST(xylVec3, PrintsWithTheFormattingOfTheStream) {
	std::ostringstream text;
	text << std::fixed << std::setprecision(2) << xylVec3(1.5f, -2, 1000, 7) << '|';
	EXPECT_EQ(text.str(), "(1.50, -2.00, 1000.00)|");
}

TEST(xylVec3, PerpendicularAxesStandOnTheWay) {
	xylVec3 dir, axis1, axis2;
	xylVec3::perpendicular_axes_in_cartesian_space({1, 0, 0}, {1, 4, 0}, dir, axis1, axis2);
	EXPECT_NEAR(dir.y, 1, 4e-7);
	EXPECT_TRUE(is_vector(axis2, -1, 0, 0, marker)); // (0, 0, 1) × (0, 1, 0)
	EXPECT_TRUE(is_vector(axis1, 0, 0, 1, marker));  // (0, 1, 0) × (-1, 0, 0)
	EXPECT_EQ(dir.w, marker);
	// Along Z the reference is (0, 1, 0).
	xylVec3::perpendicular_axes_in_cartesian_space({0, 0, 0}, {0, 0, 2}, dir, axis1, axis2);
	EXPECT_TRUE(is_vector(axis2, 1, 0, 0, marker));
	EXPECT_TRUE(is_vector(axis1, 0, 1, 0, marker));
	// With a = b the way is zero, and both axes take the fallback of normalize().
	xylVec3::perpendicular_axes_in_cartesian_space({5, 5, 5}, {5, 5, 5}, dir, axis1, axis2);
	EXPECT_TRUE(is_vector(dir, 0, 0, 0, marker));
	EXPECT_TRUE(is_vector(axis2, 0, 1, 0, marker));
	EXPECT_TRUE(is_vector(axis1, 0, 1, 0, marker));
}

TEST(xylVec3, PerpendicularAxesChangeReferenceAboveThreshold) {
	for (const float sign : {1.0f, -1.0f}) {
		xylVec3 dir, axis1, axis2;
		const float flat = std::sqrt(1 - 0.949f * 0.949f);
		xylVec3::perpendicular_axes_in_cartesian_space({0, 0, 0}, {flat, 0, sign * 0.949f}, dir,
		                                               axis1, axis2);
		EXPECT_NEAR(axis2.y, 1, 1e-6); // (0, 0, 1) × dir
		const float steep = std::sqrt(1 - 0.951f * 0.951f);
		xylVec3::perpendicular_axes_in_cartesian_space({0, 0, 0}, {steep, 0, sign * 0.951f}, dir,
		                                               axis1, axis2);
		EXPECT_NEAR(axis2.y, 0, 1e-6); // (0, 1, 0) × dir
		EXPECT_NEAR(axis2.x, sign * 0.951f, 1e-6);
	}
}

// The processor decides which ways end at the threshold itself: some of many neighbours do.
TEST(xylVec3, PerpendicularAxesKeepReferenceAtTheThreshold) {
	const float threshold = 0.95f;
	const float above = std::nextafter(threshold, 1.0f);
	for (const float z : {threshold, above, -threshold, -above}) {
		SCOPED_TRACE(z);
		int found = 0;
		for (float x = 0.3122f; x < 0.31229f; x = std::nextafter(x, 1.0f)) {
			xylVec3 dir, axis1, axis2;
			xylVec3::perpendicular_axes_in_cartesian_space({0, 0, 0}, {x, 0, z}, dir, axis1, axis2);
			if (dir.z != z) continue;
			++found;
			const bool is_kept = axis2.x == 0; // (0, 0, 1) × dir is along Y
			ASSERT_EQ(is_kept, std::abs(z) == threshold);
		}
		EXPECT_GT(found, 0);
	}
}

TEST(xylVec3, PerpendicularAxesMayReplaceTheirInputs) {
	xylVec3 a(1, 2, 3);
	xylVec3 b(4, -5, 6);
	xylVec3 dir, axis1, axis2, other;
	xylVec3::perpendicular_axes_in_cartesian_space(a, b, dir, axis1, axis2);
	xylVec3::perpendicular_axes_in_cartesian_space(a, b, a, b, other);
	EXPECT_EQ(a, dir);
	EXPECT_EQ(b, axis1);
	EXPECT_EQ(other, axis2);
}

TEST(xylVec3, AgreesWithThePlainSteps) {
	Samples samples(2);
	for (int i = 0; i < sample_count; ++i) {
		const xylVec3 a = samples.awkward(100);
		const xylVec3 b = samples.one_in(8) ? a : samples.awkward(100);
		const float k = samples.between(-3, 3);
		const auto pa = to_plain<float>(a);
		const auto pb = to_plain<float>(b);
		ASSERT_TRUE(same_bits(a + b, pa + pb));
		ASSERT_TRUE(same_bits(a - b, pa - pb));
		ASSERT_TRUE(same_bits(a * k, pa * k));
		ASSERT_TRUE(same_bits(a / k, pa * (1 / k)));
		ASSERT_TRUE(same_bits(a.cross(b), plain::cross(pa, pb)));
		ASSERT_TRUE(same_bits(a.dot(b), plain::dot(pa, pb)));
		ASSERT_TRUE(same_bits(a.length(), plain::length(pa)));
		xylVec3 n = a;
		auto pn = pa;
		ASSERT_TRUE(same_bits(n.normalize(), plain::normalize(pn)));
		ASSERT_TRUE(same_bits(n, pn));
		xylVec3 fast = a;
		fast.fast_normalize();
		ASSERT_TRUE(same_bits(fast, plain::fast_normalized(pa)));
		xylVec3 dir, axis1, axis2;
		plain::Vec<float> pdir, paxis1, paxis2;
		xylVec3::perpendicular_axes_in_cartesian_space(a, b, dir, axis1, axis2);
		plain::perpendicular_axes(pa, pb, pdir, paxis1, paxis2);
		ASSERT_TRUE(same_bits(dir, pdir) && same_bits(axis1, paxis1) && same_bits(axis2, paxis2));
	}
}

TEST(xylVec3, AgreesWithDoubles) {
	Samples samples(3);
	int far_from_fallbacks = 0;
	for (int i = 0; i < sample_count; ++i) {
		const xylVec3 a = samples.awkward(10);
		const xylVec3 b = samples.awkward(10);
		const auto da = to_plain<double>(a);
		const auto db = to_plain<double>(b);
		ASSERT_TRUE(near(a.cross(b), plain::cross(da, db), 4e-5));
		ASSERT_NEAR(a.dot(b), plain::dot(da, db), 6e-5);
		xylVec3 dir, axis1, axis2;
		plain::Vec<double> ddir, daxis1, daxis2;
		xylVec3::perpendicular_axes_in_cartesian_space(a, b, dir, axis1, axis2);
		plain::perpendicular_axes(da, db, ddir, daxis1, daxis2);
		if (plain::length(db - da) < 1e-3 || std::abs(std::abs(ddir.z) - 0.95) < 1e-5) continue;
		++far_from_fallbacks;
		ASSERT_TRUE(near(dir, ddir, 1e-6)) << a << b;
		ASSERT_TRUE(near(axis2, daxis2, 4e-6)) << a << b;
		ASSERT_TRUE(near(axis1, daxis1, 4e-6)) << a << b;
	}
	EXPECT_GT(far_from_fallbacks, sample_count * 9 / 10);
}
