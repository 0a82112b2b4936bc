#include <morvantis/core/number_text.h>

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <random>
#include <string>

namespace {

std::string fixed6(double value) {
	char buffer[number_text::fixed_max];
	return std::string(buffer, static_cast<size_t>(number_text::write_fixed6(buffer, value)));
}

std::string fixed6_bits(xylUInt64 bits) { return fixed6(std::bit_cast<double>(bits)); }

std::string signed_text(xylInt64 value) {
	char buffer[number_text::integer_max];
	return std::string(buffer, static_cast<size_t>(number_text::write_signed(buffer, value)));
}

std::string unsigned_text(xylUInt64 value) {
	char buffer[number_text::integer_max];
	return std::string(buffer, static_cast<size_t>(number_text::write_unsigned(buffer, value)));
}

// The exact value, correctly rounded, by the standard library.
std::string reference(double value) {
	char buffer[512];
	const auto end =
		std::to_chars(buffer, buffer + sizeof(buffer), value, std::chars_format::fixed, 6);
	return std::string(buffer, end.ptr);
}

} // namespace

TEST(number_text, IntegersAreWrittenInDecimal) {
	EXPECT_EQ(signed_text(0), "0");
	EXPECT_EQ(signed_text(-1), "-1");
	EXPECT_EQ(signed_text(9), "9");
	EXPECT_EQ(signed_text(10), "10");
	EXPECT_EQ(signed_text(2147483647), "2147483647");
	EXPECT_EQ(signed_text(-2147483648ll), "-2147483648");
	EXPECT_EQ(signed_text(std::numeric_limits<xylInt64>::max()), "9223372036854775807");
	EXPECT_EQ(signed_text(std::numeric_limits<xylInt64>::min()), "-9223372036854775808");
	EXPECT_EQ(unsigned_text(0), "0");
	EXPECT_EQ(unsigned_text(4294967295u), "4294967295");
	EXPECT_EQ(unsigned_text(std::numeric_limits<xylUInt64>::max()), "18446744073709551615");
}

TEST(number_text, IntegersOfEveryLengthAgreeWithTheStandardLibrary) {
	for (int bits = 0; bits < 64; ++bits) {
		for (xylUInt64 offset = 0; offset < 3; ++offset) {
			const xylUInt64 value = (1ull << bits) + offset - 1;
			EXPECT_EQ(unsigned_text(value), std::to_string(value));
			EXPECT_EQ(signed_text(static_cast<xylInt64>(value)),
			          std::to_string(static_cast<xylInt64>(value)));
			EXPECT_EQ(signed_text(static_cast<xylInt64>(0 - value)),
			          std::to_string(static_cast<xylInt64>(0 - value)));
		}
	}
}

TEST(number_text, FixedHasSixDecimals) {
	struct Case {
		double value;
		const char* text;
	};
	const Case cases[] = {
		{0.0, "0.000000"},
		{-0.0, "-0.000000"},
		{1.0, "1.000000"},
		{-1.5, "-1.500000"},
		{3.14159265358979, "3.141593"},
		{123456.7890625, "123456.789062"},
		{100.0, "100.000000"},
		{1e6, "1000000.000000"},
		// Rounding carries into the whole number, and into a new digit of it.
		{0.9999995, "1.000000"},
		{0.9999994, "0.999999"},
		{9.9999999, "10.000000"},
		{99999.9999999, "100000.000000"},
		// Around half of the last decimal, and far below.
		{0.0000005, "0.000000"}, // the nearest double is below the half
		{0.00000050000001, "0.000001"},
		{0.00000049999999, "0.000000"},
		{4.76837158203125e-07, "0.000000"}, // 2^-21
		{9.5367431640625e-07, "0.000001"},  // 2^-20
		{2.384185791015625e-07, "0.000000"},
		{1e-300, "0.000000"},
		{-1e-300, "-0.000000"},
		{5e-324, "0.000000"},
		{2.2250738585072014e-308, "0.000000"},
		// Whole numbers at the borders of 53 and 64 bits.
		{4503599627370495.5, "4503599627370495.500000"},
		{4503599627370496.0, "4503599627370496.000000"},
		{9007199254740993.0, "9007199254740992.000000"},
		{9223372036854775808.0, "9223372036854775808.000000"},
		{18446744073709549568.0, "18446744073709549568.000000"},
		{18446744073709551616.0, "18446744073709551616.000000"},
		{-36893488147419103232.0, "-36893488147419103232.000000"},
		{1e30, "1000000000000000019884624838656.000000"},
	};
	for (const Case& c : cases) EXPECT_EQ(fixed6(c.value), c.text);
}

// Seven binary decimals that end in 5 give a tie exactly at the seventh decimal.
TEST(number_text, TiesGoToTheEvenNeighbour) {
	struct Case {
		double value;
		const char* text;
	};
	const Case cases[] = {
		{377.9140625, "377.914062"}, // ...0625: 2 is even
		{0.0078125, "0.007812"},     // 2^-7
		{0.0234375, "0.023438"},     // 3 * 2^-7: 7 is odd
		{-0.0234375, "-0.023438"},   //
		{0.9921875, "0.992188"},     // 127 / 128
		{1.0078125, "1.007812"},     //
		{2251799813685.0078125, "2251799813685.007812"},
		{281474976710655.9921875, "281474976710656.000000"}, // no double: already whole
	};
	for (const Case& c : cases) EXPECT_EQ(fixed6(c.value), c.text);
	for (int numerator = 1; numerator < 128 * 64; numerator += 2) {
		const double value = numerator / 128.0;
		ASSERT_EQ(fixed6(value), reference(value));
	}
}

TEST(number_text, LongestFixedFits) {
	const std::string text = fixed6(-std::numeric_limits<double>::max());
	EXPECT_EQ(text.size(), 317u);
	EXPECT_LE(text.size(), static_cast<size_t>(number_text::fixed_max));
	EXPECT_EQ(text, reference(-std::numeric_limits<double>::max()));
}

TEST(number_text, NotFiniteFollowsTheBits) {
	struct Case {
		xylUInt64 bits;
		const char* text;
	};
	const Case cases[] = {
		{0x7ff0000000000000, "inf"},       {0xfff0000000000000, "-inf"},
		{0x7ff8000000000000, "nan"},       {0xfff8000000000000, "-nan(ind)"},
		{0x7ff8000000000001, "nan"},       {0xfff8000000000001, "-nan"},
		{0x7fffffffffffffff, "nan"},       {0xffffffffffffffff, "-nan"},
		{0x7ff0000000000001, "nan(snan)"}, {0xfff0000000000001, "-nan(snan)"},
		{0x7ff7ffffffffffff, "nan(snan)"}, {0xfff7ffffffffffff, "-nan(snan)"},
	};
	for (const Case& c : cases) EXPECT_EQ(fixed6_bits(c.bits), c.text);
}

TEST(number_text, SignallingFloatsBecomeQuiet) {
	const auto widened = [](xylUInt32 bits) {
		volatile float value = std::bit_cast<float>(bits); // widened when the program runs
		return fixed6(value);
	};
	EXPECT_EQ(widened(0x7fc00000), "nan");
	EXPECT_EQ(widened(0xffc00000), "-nan(ind)");
	EXPECT_EQ(widened(0x7f800001), "nan");
	EXPECT_EQ(widened(0xff800001), "-nan");
	EXPECT_EQ(widened(0x7f800000), "inf");
}

TEST(number_text, EveryExponentAgreesWithTheStandardLibrary) {
	std::mt19937_64 random(1);
	for (xylUInt64 exponent = 0; exponent < 0x7ff; ++exponent) {
		const xylUInt64 fractions[] = {0,
		                               1,
		                               (1ull << 52) - 1,
		                               1ull << 51,
		                               random() >> 12,
		                               random() >> 12,
		                               (random() >> 12) & ~0x1fffffffull};
		for (const xylUInt64 fraction : fractions) {
			const double value = std::bit_cast<double>(exponent << 52 | fraction);
			ASSERT_EQ(fixed6(value), reference(value));
			ASSERT_EQ(fixed6(-value), reference(-value));
		}
	}
}

TEST(number_text, RandomDoublesAgreeWithTheStandardLibrary) {
	std::mt19937_64 random(2);
	// Most exponents are at the ends of the range; half of the trials stay where numbers live.
	for (int i = 0; i < 100000; ++i) {
		xylUInt64 bits = random();
		if (i & 1) bits = (bits & ~(0x7ffull << 52)) | (980 + random() % 120) << 52;
		const double value = std::bit_cast<double>(bits);
		if (!std::isfinite(value)) continue;
		ASSERT_EQ(fixed6(value), reference(value));
	}
}

TEST(number_text, RandomFloatsAgreeWithTheStandardLibrary) {
	std::mt19937 random(3);
	for (int i = 0; i < 100000; ++i) {
		const float value = std::bit_cast<float>(static_cast<xylUInt32>(random()));
		if (!std::isfinite(value)) continue;
		ASSERT_EQ(fixed6(value), reference(value));
	}
}

// Decimal numbers with seven digits behind the point lie next to a tie.
TEST(number_text, NearTiesAgreeWithTheStandardLibrary) {
	std::mt19937_64 random(4);
	for (int i = 0; i < 100000; ++i) {
		const double tie = static_cast<double>(random() % 2000000000 * 10 + 5) / 1e7;
		for (const double value : {tie, std::nextafter(tie, 0.0), std::nextafter(tie, 1e300)}) {
			ASSERT_EQ(fixed6(value), reference(value));
		}
	}
}
