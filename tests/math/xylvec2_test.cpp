#include "samples.h"

#include <morvantis/math/xylint_vec2.h>
#include <morvantis/math/xylint_vec3.h>
#include <morvantis/math/xylvec2.h>
#include <morvantis/math/xylvec3d.h>

#include <climits>
#include <iomanip>
#include <sstream>

TEST(xylVec2, HasTheOperatorsOfAVector) {
	const xylVec2 a(1, -2);
	const xylVec2 b(4, 0.5f);
	EXPECT_EQ(a + b, xylVec2(5, -1.5f));
	EXPECT_EQ(a - b, xylVec2(-3, -2.5f));
	EXPECT_EQ(-a, xylVec2(-1, 2));
	EXPECT_EQ(a * 3.0f, xylVec2(3, -6));
	EXPECT_EQ(3.0f * a, xylVec2(3, -6));
	EXPECT_EQ(a / 4.0f, xylVec2(0.25f, -0.5f));
	xylVec2 v = a;
	v += b;
	EXPECT_EQ(v, xylVec2(5, -1.5f));
	v -= b;
	EXPECT_EQ(v, a);
	v *= 2;
	EXPECT_EQ(v, xylVec2(2, -4));
	v /= 8;
	EXPECT_EQ(v, xylVec2(0.25f, -0.5f));
	EXPECT_NE(xylVec2(1, 2), xylVec2(1, 3));
	EXPECT_NE(xylVec2(1, 2), xylVec2(0, 2));
	EXPECT_EQ((xylVec2{}), xylVec2(0, 0));
}

TEST(xylVec2, DivisionMultipliesByTheOneReciprocal) {
	ASSERT_NE(5.0f / 3.0f, 5.0f * (1.0f / 3.0f));
	xylVec2 v(5, 5);
	v /= 3;
	EXPECT_EQ(v, xylVec2(5.0f * (1.0f / 3.0f), 5.0f * (1.0f / 3.0f)));
	EXPECT_EQ(xylVec2(5, 5) / 3.0f, v);
	const xylVec2 of_zero = xylVec2(1, 0) / 0.0f;
	EXPECT_EQ(of_zero.x, infinity);
	EXPECT_TRUE(std::isnan(of_zero.y));
}

TEST(xylVec2, PrintsWithTheFormattingOfTheStream) {
	std::ostringstream text;
	text << std::fixed << std::setprecision(3) << xylVec2(1.5f, -0.25f) << '|';
	EXPECT_EQ(text.str(), "(1.500, -0.250)|");
}

TEST(xylVec2, PrintsTwoNumbers) {
	std::ostringstream text;
	text << xylVec2(1.5f, -0.25f);
	EXPECT_EQ(text.str(), "(1.5, -0.25)");
}

TEST(xylVec3d, HasTheOperatorsOfAVector) {
	const xylVec3d a(1, -2, 3, 7);
	const xylVec3d b(4, 0.5, -1, 8);
	EXPECT_EQ(a + b, xylVec3d(5, -1.5, 2));
	EXPECT_EQ(a - b, xylVec3d(-3, -2.5, 4));
	EXPECT_EQ(-a, xylVec3d(-1, 2, -3));
	EXPECT_EQ(a * 3.0, xylVec3d(3, -6, 9));
	EXPECT_EQ(3.0 * a, xylVec3d(3, -6, 9));
	EXPECT_EQ(a / 4.0, xylVec3d(0.25, -0.5, 0.75));
	EXPECT_NE(a, xylVec3d(0, -2, 3));
	EXPECT_NE(a, xylVec3d(1, 0, 3));
	EXPECT_NE(a, xylVec3d(1, -2, 0));
	for (const xylVec3d& built : {a + b, a - b, -a, a * 3.0, 3.0 * a, a / 4.0, xylVec3d(1, 2, 3)}) {
		EXPECT_EQ(built.w, static_cast<double>(marker));
	}
	EXPECT_EQ((xylVec3d{}).w, 0.0);
}

TEST(xylVec3d, CompoundFormsLeaveTheFourthAlone) {
	xylVec3d v(1, -2, 3, 7);
	v += xylVec3d(1, 1, 1);
	v -= xylVec3d(2, 2, 2);
	v *= 6;
	EXPECT_EQ(v, xylVec3d(0, -18, 12));
	v /= 3.0;
	EXPECT_EQ(v, xylVec3d(0, -18 * (1 / 3.0), 12 * (1 / 3.0)));
	EXPECT_EQ(v.w, 7.0);
}

TEST(xylVec3d, DivisionMultipliesByTheOneReciprocal) {
	// In double too 5/3 and 5·(1/3) differ in the last bit.
	ASSERT_NE(5.0 / 3.0, 5.0 * (1.0 / 3.0));
	xylVec3d v(5, -5, 3, 1);
	v /= 3.0;
	EXPECT_EQ(v, xylVec3d(5.0 * (1.0 / 3.0), -5.0 * (1.0 / 3.0), 3 * (1.0 / 3.0)));
	EXPECT_EQ(xylVec3d(5, -5, 3) / 3.0, v);
	v = xylVec3d(1, -1, 0, 5);
	v /= 0.0;
	EXPECT_EQ(v.x, static_cast<double>(infinity));
	EXPECT_EQ(v.y, static_cast<double>(-infinity));
	EXPECT_TRUE(std::isnan(v.z));
	EXPECT_EQ(v.w, 5.0);
}

TEST(xylVec3d, DividesByItsOwnComponents) {
	for (double xylVec3d::* divisor : {&xylVec3d::x, &xylVec3d::y, &xylVec3d::z}) {
		xylVec3d v(4, 2, 8, 5);
		const double k = 1 / (v.*divisor);
		v /= v.*divisor;
		EXPECT_EQ(v, xylVec3d(4 * k, 2 * k, 8 * k));
	}
}

TEST(xylInt_vec2, HasTheOperatorsOfAVector) {
	const xylInt_vec2 a(1, -7);
	const xylInt_vec2 b(4, 2);
	EXPECT_EQ(a + b, xylInt_vec2(5, -5));
	EXPECT_EQ(a - b, xylInt_vec2(-3, -9));
	EXPECT_EQ(-a, xylInt_vec2(-1, 7));
	EXPECT_EQ(a * 3, xylInt_vec2(3, -21));
	EXPECT_EQ(3 * a, xylInt_vec2(3, -21));
	EXPECT_EQ(a / 2, xylInt_vec2(0, -3));
	xylInt_vec2 v = a;
	v += b;
	v -= xylInt_vec2(1, 1);
	v *= 5;
	v /= 2;
	EXPECT_EQ(v, xylInt_vec2(10, -15));
	EXPECT_NE(a, xylInt_vec2(1, 7));
	EXPECT_NE(a, xylInt_vec2(2, -7));
	EXPECT_EQ((xylInt_vec2{}), xylInt_vec2(0, 0));
}

TEST(xylInt_vec3, HasTheOperatorsOfAVector) {
	const xylInt_vec3 a(1, -7, 9);
	const xylInt_vec3 b(4, 2, -1);
	EXPECT_EQ(a + b, xylInt_vec3(5, -5, 8));
	EXPECT_EQ(a - b, xylInt_vec3(-3, -9, 10));
	EXPECT_EQ(-a, xylInt_vec3(-1, 7, -9));
	EXPECT_EQ(a * 3, xylInt_vec3(3, -21, 27));
	EXPECT_EQ(3 * a, xylInt_vec3(3, -21, 27));
	EXPECT_EQ(a / 2, xylInt_vec3(0, -3, 4));
	xylInt_vec3 v = a;
	v += b;
	v -= xylInt_vec3(1, 1, 1);
	v *= 5;
	v /= 2;
	EXPECT_EQ(v, xylInt_vec3(10, -15, 17));
	EXPECT_NE(a, xylInt_vec3(0, -7, 9));
	EXPECT_NE(a, xylInt_vec3(1, 0, 9));
	EXPECT_NE(a, xylInt_vec3(1, -7, 0));
}

TEST(xylInt_vec3, WrapsAroundAndSurvivesZeroDivisors) {
	const xylInt_vec3 edges(INT_MAX, INT_MIN, 1);
	EXPECT_EQ(edges + xylInt_vec3(1, -1, 0), xylInt_vec3(INT_MIN, INT_MAX, 1));
	EXPECT_EQ(-edges, xylInt_vec3(-INT_MAX, INT_MIN, -1));
	EXPECT_EQ(edges * 2, xylInt_vec3(-2, 0, 2));
	EXPECT_EQ(edges / -1, xylInt_vec3(-INT_MAX, INT_MIN, -1));
	EXPECT_EQ(edges / 0, xylInt_vec3(0, 0, 0));
	EXPECT_EQ(xylInt_vec2(INT_MAX, INT_MIN) + xylInt_vec2(1, -1), xylInt_vec2(INT_MIN, INT_MAX));
	EXPECT_EQ(xylInt_vec2(INT_MIN, INT_MAX) - xylInt_vec2(1, -1), xylInt_vec2(INT_MAX, INT_MIN));
	EXPECT_EQ(-xylInt_vec2(INT_MIN, INT_MAX), xylInt_vec2(INT_MIN, -INT_MAX));
	EXPECT_EQ(xylInt_vec2(INT_MAX, INT_MIN) * INT_MAX, xylInt_vec2(1, INT_MIN));
	EXPECT_EQ(xylInt_vec2(INT_MIN, 5) / -1, xylInt_vec2(INT_MIN, -5));
	EXPECT_EQ(xylInt_vec2(INT_MIN, 5) / 0, xylInt_vec2(0, 0));
}
