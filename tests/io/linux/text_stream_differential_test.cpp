// Text streams against this system's C library over millions of values: the same bytes as
// snprintf(), the same bits as strtod() and strtoul(). `long` has 64 bits here, so the limits of 32
// are laid on its results by hand.

#include <morvantis/io/xylio_text_stream.h>

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int batch = 1000;
constexpr int batches = 1000; // a million values of each kind

std::mt19937_64 source_of_bits(542);

xylUInt64 random_bits() { return source_of_bits(); }

// Integers of every length, the ends of their range among them.
template <typename Integer> Integer random_integer() {
	const xylUInt64 bits = random_bits();
	switch (bits % 64) {
	case 0:
		return std::numeric_limits<Integer>::min();
	case 1:
		return std::numeric_limits<Integer>::max();
	default:
		return static_cast<Integer>(static_cast<Integer>(bits) >>
		                            (random_bits() % (sizeof(Integer) * CHAR_BIT)));
	}
}

// Any finite bits; numbers of everyday size; ties of the sixth decimal; extremes.
double random_double() {
	const xylUInt64 bits = random_bits();
	switch (random_bits() % 8) {
	case 0: {
		const double any = std::bit_cast<double>(bits);
		return std::isfinite(any) ? any : 0;
	}
	case 1: // odd multiples of 2^-7 end in ...5 behind the sixth decimal
		return static_cast<double>(static_cast<xylInt64>(bits >> 24 | 1)) / 128;
	case 2: {
		const double extremes[] = {0.0,     -0.0,         DBL_MAX, -DBL_MAX,   DBL_MIN,
		                           5e-324,  0x1p63,       0x1p64,  0x1.8p64,   9.999999999,
		                           0.5e-6,  0x1.fffffep0, FLT_MAX, FLT_MIN,    999999.9999995,
		                           1.5e-45, 0x1p53,       1e22,    4999999e-7, 0.9999995};
		return extremes[bits % std::size(extremes)];
	}
	default:
		return (static_cast<double>(bits >> 11) * 0x1p-53 - 0.5) *
		       static_cast<double>(1ull << bits % 48);
	}
}

float random_float() {
	const float narrowed = static_cast<float>(random_double());
	return std::isfinite(narrowed) ? narrowed : FLT_MAX;
}

std::string formatted(double value) {
	char text[400];
	return std::string(text, static_cast<size_t>(std::snprintf(text, sizeof(text), "%f ", value)));
}
std::string formatted(float value) { return formatted(static_cast<double>(value)); }
std::string formatted(int value) {
	char text[40];
	return std::string(text, static_cast<size_t>(std::snprintf(text, sizeof(text), "%d", value)));
}
std::string formatted(unsigned int value) { return formatted(static_cast<int>(value)); }
std::string formatted(xylInt64 value) {
	char text[40];
	return std::string(text, static_cast<size_t>(std::snprintf(text, sizeof(text), "%lld", value)));
}
std::string formatted(xylUInt64 value) {
	char text[40];
	return std::string(text, static_cast<size_t>(std::snprintf(text, sizeof(text), "%llu", value)));
}

template <typename Value, Value (*random)()> void writes_like_snprintf() {
	for (int b = 0; b < batches; ++b) {
		xylIO_text_stream stream;
		std::string expected;
		for (int i = 0; i < batch; ++i) {
			const Value value = random();
			stream << value << "|";
			expected += formatted(value);
			expected += '|';
		}
		ASSERT_EQ(stream.buffer.length(), static_cast<int>(expected.size()));
		ASSERT_EQ(std::string(stream.buffer.char_p()), expected);
	}
}

// Texts of numbers in many spellings, a blank behind each.
std::string random_number_text() {
	char text[500];
	switch (random_bits() % 8) {
	case 0:
		std::snprintf(text, sizeof(text), "%.*g", static_cast<int>(random_bits() % 25),
		              random_double());
		break;
	case 1:
		std::snprintf(text, sizeof(text), "%.*e", static_cast<int>(random_bits() % 25),
		              random_double());
		break;
	case 2:
		std::snprintf(text, sizeof(text), "%.*f", static_cast<int>(random_bits() % 25),
		              static_cast<double>(random_float()));
		break;
	case 3:
		std::snprintf(text, sizeof(text), "%a", random_double());
		break;
	case 4: { // the middle of two doubles, and a digit above or below
		const double low = std::fabs(random_double());
		const long double middle =
			(static_cast<long double>(low) + std::nextafter(low, HUGE_VAL)) / 2;
		std::snprintf(text, sizeof(text), "%.*Lg", static_cast<int>(17 + random_bits() % 30),
		              middle);
		break;
	}
	case 5:
		std::snprintf(text, sizeof(text), "%lld", random_integer<xylInt64>());
		break;
	case 6:
		std::snprintf(text, sizeof(text), "%0*d.%0*d", static_cast<int>(1 + random_bits() % 22),
		              static_cast<int>(random_bits() % 100000),
		              static_cast<int>(1 + random_bits() % 22),
		              static_cast<int>(random_bits() % 100000));
		break;
	default:
		std::snprintf(text, sizeof(text), "%f", random_double());
		break;
	}
	return text;
}

xylUInt32 strtoul_32(const char* text) {
	const bool negative = *text == '-';
	const unsigned long magnitude = std::strtoul(text + (negative ? 1 : 0), nullptr, 10);
	if (magnitude > UINT_MAX) return UINT_MAX;
	const auto value = static_cast<xylUInt32>(magnitude);
	return negative ? 0 - value : value;
}

} // namespace

TEST(xylIO_text_stream, WritesFloatsLikeSnprintf) { writes_like_snprintf<float, random_float>(); }

TEST(xylIO_text_stream, WritesDoublesLikeSnprintf) {
	writes_like_snprintf<double, random_double>();
}

TEST(xylIO_text_stream, WritesIntegersLikeSnprintf) {
	writes_like_snprintf<int, random_integer<int>>();
	writes_like_snprintf<unsigned int, random_integer<unsigned int>>();
	writes_like_snprintf<xylInt64, random_integer<xylInt64>>();
	writes_like_snprintf<xylUInt64, random_integer<xylUInt64>>();
}

TEST(xylIO_text_stream, ReadsNumbersLikeTheCLibrary) {
	for (int b = 0; b < batches; ++b) {
		std::vector<std::string> texts(batch);
		xylIO_text_stream stream;
		for (std::string& text : texts) {
			text = random_number_text();
			stream << text.c_str() << " ";
		}
		for (const std::string& text : texts) {
			float value = 0;
			stream >> value;
			ASSERT_EQ(std::bit_cast<xylUInt32>(value), std::bit_cast<xylUInt32>(static_cast<float>(
														   std::strtod(text.c_str(), nullptr))))
				<< text;
		}
		stream.reset_to_buffer_start();
		for (const std::string& text : texts) {
			double value = 0;
			stream >> value;
			ASSERT_EQ(value, static_cast<double>(static_cast<float>(std::atof(text.c_str()))))
				<< text;
		}
		stream.reset_to_buffer_start();
		for (const std::string& text : texts) {
			unsigned int value = 0;
			stream >> value;
			ASSERT_EQ(value, strtoul_32(text.c_str())) << text;
		}
	}
}
