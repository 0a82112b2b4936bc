// Text to numbers: the edges that the C runtimes of the two systems answer differently.

#include <morvantis/core/number_parse.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <random>
#include <string>

namespace {

using namespace number_parse;

TEST(number_parse, ReadsIntegersAndSaturatesAt32Bits) {
	struct Case {
		const char* text;
		xylInt32 value;
	};
	const Case cases[] = {
		{"0", 0},
		{"12", 12},
		{"-12", -12},
		{"+12", 12},
		{" \t\n\v\f\r7", 7},
		{"12abc", 12},
		{"1.9", 1},
		// the ends of the range and one beyond
		{"2147483647", 2147483647},
		{"2147483648", 2147483647},
		{"-2147483648", -2147483647 - 1},
		{"-2147483649", -2147483647 - 1},
		{"4294967296", 2147483647},
		{"99999999999999999999", 2147483647},
		{"-99999999999999999999", -2147483647 - 1},
		// no number
		{"", 0},
		{"-", 0},
		{"abc", 0},
		{"--1", 0},
		{"+-1", 0},
		{"- 1", 0},
		{"0x10", 0},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.text);
		EXPECT_EQ(parse_int32(c.text), c.value);
	}
}

TEST(number_parse, WrapsAMinusSignAndSaturatesAt32Bits) {
	struct Case {
		const char* text;
		xylUInt32 value;
	};
	const Case cases[] = {
		{"0", 0},
		{"4294967295", 4294967295u},
		{"4294967296", 4294967295u},
		{"18446744073709551615", 4294967295u},
		{"-1", 4294967295u},
		{"-4294967295", 1},
		{"-4294967296", 4294967295u},
		{" +2147483648x", 2147483648u},
		{"+-5", 0},
		{"", 0},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.text);
		EXPECT_EQ(parse_uint32(c.text), c.value);
	}
}

TEST(number_parse, WrapsAMinusSignAndSaturatesAt64Bits) {
	struct Case {
		const char* text;
		xylUInt64 value;
	};
	const Case cases[] = {
		{"0", 0},
		{"18446744073709551615", 18446744073709551615u},
		{"18446744073709551616", 18446744073709551615u},
		{"18446744073709551620", 18446744073709551615u},
		{"99999999999999999999999", 18446744073709551615u},
		{"-1", 18446744073709551615u},
		{"-18446744073709551615", 1},
		{"-18446744073709551616", 18446744073709551615u},
		{" +9223372036854775808x", 9223372036854775808u},
		{"+-5", 0},
		{"", 0},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.text);
		EXPECT_EQ(parse_uint64(c.text), c.value);
	}
}

TEST(number_parse, TellsWhereTheNumberEnds) {
	struct Case {
		const char* text;
		int integer_end;
		int decimal_end;
	};
	const Case cases[] = {
		{"", 0, 0},
		{"abc", 0, 0},
		{"-", 0, 0},
		{" +", 0, 0},
		{"7", 1, 1},
		{" -12 ", 4, 4},
		{"12345678", 8, 8},
		{"123456789 1", 9, 9},
		{"99999999999999999999999 1", 23, 23},
		{"-99999999999 1", 12, 12},
		{"1.5\"", 1, 3},
		{"5. ", 1, 2},
		{".5 ", 0, 2},
		{"1e5x", 1, 3},
		{"1e+", 1, 1},
		{"0x1p4,", 1, 5},
		{"nan(ab_1) ", 0, 9},
		{"nan( 1)", 0, 3},
		{"-inf\t", 0, 4},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.text);
		for (const xylInt64 readable : {xylInt64{0}, static_cast<xylInt64>(std::strlen(c.text))}) {
			EXPECT_EQ(read_int32(c.text, readable).end - c.text, c.integer_end);
			EXPECT_EQ(read_uint32(c.text, readable).end - c.text, c.integer_end);
			EXPECT_EQ(read_double(c.text, readable).end - c.text, c.decimal_end);
			EXPECT_EQ(read_float(c.text, readable).end - c.text, c.decimal_end);
		}
	}
}

// Eight digits at a time or one by one, behind a number stands anything that ends it.
TEST(number_parse, ReadsTheSameByChunksOfReadableBytes) {
	std::mt19937_64 random(2026);
	for (int i = 0; i < 100000; ++i) {
		std::string text = random() % 2 ? "-" : "";
		for (auto k = random() % 24; k != 0; --k) text += static_cast<char>('0' + random() % 10);
		if (random() % 2) text += '.';
		for (auto k = random() % 24; k != 0; --k) text += static_cast<char>('0' + random() % 10);
		text += " /:\x7f\xff\"\t,"[random() % 8];
		text += std::to_string(random());
		SCOPED_TRACE(text);
		const char* const bytes = text.c_str();
		const auto all = static_cast<xylInt64>(text.size());
		const xylInt64 some = static_cast<xylInt64>(random()) & 15;
		for (const xylInt64 readable : {some, all}) {
			ASSERT_EQ(read_int32(bytes, readable).value, read_int32(bytes).value);
			ASSERT_EQ(read_int32(bytes, readable).end, read_int32(bytes).end);
			ASSERT_EQ(read_uint32(bytes, readable).value, read_uint32(bytes).value);
			ASSERT_EQ(read_double(bytes, readable).value, read_double(bytes).value);
			ASSERT_EQ(read_double(bytes, readable).end, read_double(bytes).end);
		}
	}
}

TEST(number_parse, ReadsDecimalAndHexadecimalFractions) {
	struct Case {
		const char* text;
		double value;
	};
	const double infinity = HUGE_VAL;
	const Case cases[] = {
		{"0", 0},
		{"1.5", 1.5},
		{" \t\n\v\f\r-1.5e2", -150},
		{"+.5", 0.5},
		{"5.", 5},
		{"1.5e", 1.5},
		{"1.5e+", 1.5},
		{"1.5exp", 1.5},
		{"2,5", 2},
		{"0.1", 0x1.999999999999ap-4},
		// hexadecimal
		{"0x10", 16},
		{"-0X1.8p1", -3},
		{"0x.8", 0.5},
		{"0x1p-1074", 0x1p-1074},
		{"0x", 0},
		{"0xg", 0},
		{"0x.", 0},
		{"0x-1", 0},
		// no number
		{"", 0},
		{".", 0},
		{"e5", 0},
		{"--1", 0},
		{"+-1", 0},
		{"abc", 0},
		// infinities
		{"inf", infinity},
		{"-INFINITY", -infinity},
		{"infinit", infinity},
		// the ends of the range
		{"1.7976931348623157e308", 0x1.fffffffffffffp1023},
		{"1.7976931348623159e308", infinity},
		{"-1e309", -infinity},
		{"1e99999999999999999999", infinity},
		{"0x1p1024", infinity},
		{"0x1p99999999999999999999", infinity},
		{"5e-324", 0x1p-1074},
		{"3e-324", 0x1p-1074},
		{"2e-324", 0},
		{"1e-400", 0},
		{"1e-99999999999999999999", 0},
		{"0x1p-2000", 0},
		{"0e400", 0},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.text);
		EXPECT_EQ(parse_double(c.text), c.value);
	}
}

TEST(number_parse, TellsTooLargeFromTooSmallByTheFirstDigit) {
	const std::string zeros(400, '0');
	EXPECT_EQ(parse_double(("1" + zeros).c_str()), HUGE_VAL);
	EXPECT_EQ(parse_double(("1" + zeros + "e-400").c_str()), 1);
	EXPECT_EQ(parse_double(("1" + zeros + "e-800").c_str()), 0);
	EXPECT_EQ(parse_double(("0." + zeros + "1").c_str()), 0);
	EXPECT_EQ(parse_double(("0." + zeros + "1e401").c_str()), 1);
	EXPECT_EQ(parse_double(("0." + zeros + "1e801").c_str()), HUGE_VAL);
	EXPECT_EQ(parse_double(("0x1" + zeros + "p9").c_str()), HUGE_VAL);
	EXPECT_EQ(parse_double(("0x." + zeros + "1").c_str()), 0);
}

TEST(number_parse, KeepsTheSignOfZeroAndNan) {
	EXPECT_TRUE(std::signbit(parse_double("-0")));
	EXPECT_FALSE(std::signbit(parse_double("0")));
	EXPECT_TRUE(std::signbit(parse_double("-1e-400")));
	EXPECT_FALSE(std::signbit(parse_double("-")));
	EXPECT_FALSE(std::signbit(parse_double("--0")));
	EXPECT_TRUE(std::isnan(parse_double("nan")));
	EXPECT_TRUE(std::isnan(parse_double("NaN(123)")));
	EXPECT_FALSE(std::signbit(parse_double("nan")));
	EXPECT_TRUE(std::isnan(parse_double("-nan")));
	EXPECT_TRUE(std::signbit(parse_double("-nan")));
}

TEST(number_parse, NarrowsTheDoubleAndSoRoundsTwice) {
	// Just above the middle of two floats: the nearest double is the middle itself, which then goes
	// to the even float below, while the nearest float is the one above.
	const char* text = "1.00000005960464477550";
	EXPECT_EQ(parse_float(text), 1.0f);
	EXPECT_EQ(parse_float("0.1"), 0.1f);
	EXPECT_EQ(parse_float("1e39"), HUGE_VALF);
}

TEST(number_parse, ScansFloatsRoundedOnce) {
	struct Case {
		const char* text;
		float value;
	};
	const Case cases[] = {
		{"0.1", 0.1f},
		{" \t-2.5e3x", -2500},
		{"+.5", 0.5f},
		{"1.", 1},
		{"0x1.8p1", 3},
		{"-inf", -INFINITY},
		{"InfinityX", INFINITY},
		{"1e99", INFINITY},
		{"1e-99", 0},
		{"0x1p999", INFINITY},
		{"1f", 1},
		// Just above the middle between two floats: rounding to double first makes it a tie.
		{"1.00000005960464477540", 1.00000012f},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.text);
		float value = 7;
		EXPECT_TRUE(scan_float(c.text, &value));
		EXPECT_EQ(value, c.value);
	}
	EXPECT_EQ(parse_float("1.00000005960464477540"), 1.0f) << "the other operation rounds twice";
	float value = 7;
	EXPECT_TRUE(scan_float("-nan", &value));
	EXPECT_TRUE(std::isnan(value) && std::signbit(value));
}

TEST(number_parse, ScanRefusesNoNumberAndOneCutShort) {
	for (const char* text : {"",   " ",   "abc", "-",    "+",       ".",    "--1",     "-+1",
	                         "e5", "in",  "na",  "1e",   "1.5E",    "1e+",  "1e-x",    ".5e",
	                         "0x", "-0X", "0xg", "0x1p", "0x1.8P-", "infi", "infinit", "nan("}) {
		SCOPED_TRACE(text);
		float value = 7;
		EXPECT_FALSE(scan_float(text, &value));
		EXPECT_EQ(value, 7);
	}
}

} // namespace
