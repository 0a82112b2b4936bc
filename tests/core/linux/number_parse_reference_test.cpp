// Text to numbers against this system's C library, which rounds exactly. Where `long` has 64 bits,
// atoi() narrows instead of saturating, so strtol() stands for it.

#include <morvantis/core/number_parse.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

namespace {

xylUInt64 bits_of(double value) {
	return std::isnan(value) ? (std::signbit(value) ? 1 : 2) : std::bit_cast<xylUInt64>(value);
}

void expect_like_the_c_library(const std::string& text) {
	SCOPED_TRACE(text);
	const long integer = std::strtol(text.c_str(), nullptr, 10);
	EXPECT_EQ(number_parse::parse_int32(text.c_str()), std::clamp<long>(integer, INT_MIN, INT_MAX));
	EXPECT_EQ(number_parse::parse_uint64(text.c_str()), std::strtoull(text.c_str(), nullptr, 10));
	EXPECT_EQ(bits_of(number_parse::parse_double(text.c_str())), bits_of(std::atof(text.c_str())));
}

TEST(number_parse, AgreesWithTheCLibraryOnRandomBits) {
	std::mt19937_64 random(20261);
	char text[512];
	for (int i = 0; i < 20000; ++i) {
		const double value = std::bit_cast<double>(random());
		std::snprintf(text, sizeof(text), "%.17g", value);
		expect_like_the_c_library(text);
		std::snprintf(text, sizeof(text), "%.6g", value);
		expect_like_the_c_library(text);
		std::snprintf(text, sizeof(text), "%a", value);
		expect_like_the_c_library(text);
		if (testing::Test::HasFailure()) return;
	}
}

TEST(number_parse, AgreesWithTheCLibraryOnRandomTexts) {
	const std::string pieces[] = {"0",  "1",   "9",  "5",  "00000000", "99999999", ".", "-",
	                              "+",  "e",   "E",  "p",  "0x",       "0X",       "f", " ",
	                              "\t", "inf", "IN", "na", "n",        "a",        "(", ")",
	                              "7",  "32",  "30", "8",  "x",        "infinity", "_", "_1"};
	std::mt19937 random(20262);
	for (int i = 0; i < 200000; ++i) {
		std::string text;
		const auto count = random() % 10;
		for (auto k = count; k != 0; --k) text += pieces[random() % std::size(pieces)];
		expect_like_the_c_library(text);
		if (testing::Test::HasFailure()) return;
	}
}

// Decimals without an exponent, of as many digits as an integer of 64 bits holds and of more, with
// the point anywhere: what is read by one division, and what no longer can be.
TEST(number_parse, AgreesWithTheCLibraryOnPlainDecimals) {
	std::mt19937_64 random(20264);
	for (int i = 0; i < 300000; ++i) {
		std::string text = std::to_string(random() >> random() % 64);
		if (random() % 4 == 0) text += std::to_string(random() % 1000);
		if (random() % 4 == 0) text.insert(0, std::string(random() % 12, '0'));
		text.insert(random() % (text.size() + 1), ".");
		if (random() % 2) text.insert(0, "-");
		const double expected = std::strtod(text.c_str(), nullptr);
		for (const xylInt64 readable : {xylInt64{0}, static_cast<xylInt64>(text.size())}) {
			ASSERT_EQ(bits_of(number_parse::read_double(text.c_str(), readable).value),
			          bits_of(expected))
				<< text;
		}
	}
}

TEST(number_parse, AgreesWithTheCLibraryAroundFloatMidpoints) {
	std::mt19937 random(20263);
	char text[512];
	for (int i = 0; i < 20000; ++i) {
		const float low = std::bit_cast<float>(static_cast<unsigned int>(random()) & 0x7f7fffff);
		const double middle = (static_cast<double>(low) + std::nextafterf(low, HUGE_VALF)) / 2;
		std::snprintf(text, sizeof(text), "%.40e", middle);
		expect_like_the_c_library(text);
		const std::string above = std::string(text).replace(30, 1, "9");
		expect_like_the_c_library(above);
		EXPECT_EQ(number_parse::parse_float(above.c_str()),
		          static_cast<float>(std::atof(above.c_str())));
		if (testing::Test::HasFailure()) return;
	}
}

} // namespace
