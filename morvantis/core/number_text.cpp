#include <morvantis/core/number_text.h>

#include <bit>
#include <charconv>
#include <cstring>

namespace number_text {

namespace {

// IEEE 754 double: 1 sign bit, 11 bits of exponent, 52 of fraction below a hidden 1.
constexpr int fraction_bits = 52;
constexpr int exponent_mask = 0x7ff;
constexpr xylUInt64 hidden_bit = 1ull << fraction_bits;
constexpr xylUInt64 quiet_bit = 1ull << (fraction_bits - 1);
constexpr xylUInt64 sign_bit = 1ull << 63;
// A value is its 53-bit significand / 2^(scale_bias - biased exponent).
constexpr int scale_bias = 1023 + fraction_bits;

constexpr unsigned int decimals_end = 1000000; // six decimals
constexpr unsigned int five_to_6 = 15625;      // 10^6 / 2^6

struct Fixed {
	xylUInt64 whole;
	unsigned int millionths; // < decimals_end
};

// quotient / 2^shift, where the bits of `is_inexact` lie below quotient: rounded, halves to even.
// 1 <= shift <= 63.
xylUInt64 round_shift(xylUInt64 quotient, int shift, bool is_inexact) {
	const xylUInt64 result = quotient >> shift;
	const xylUInt64 rest = quotient & ((1ull << shift) - 1);
	const xylUInt64 half = 1ull << (shift - 1);
	const bool is_above = rest > half || (rest == half && is_inexact);
	const bool is_tie = rest == half && !is_inexact;
	return result + (is_above || (is_tie && (result & 1)));
}

// significand / 2^scale as a whole number and rounded millionths. 1 <= scale, significand < 2^53.
//
// The fraction times 10^6 / 2^scale is the fraction times 5^6 / 2^(scale - 6). Its product has up
// to 67 bits, so where 64 don't hold it, it is made in two halves of which the lower keeps only
// whether anything is left: all that rounding asks for.
Fixed split(xylUInt64 significand, int scale) {
	xylUInt64 whole = 0;
	xylUInt64 fraction = significand;
	if (scale <= fraction_bits) {
		whole = significand >> scale;
		fraction = significand & ((1ull << scale) - 1);
	}
	xylUInt64 millionths;
	if (scale <= 6) {
		millionths = fraction * decimals_end >> scale; // 2^6 divides 10^6: nothing is left over
	} else if (scale <= 50) {
		millionths = round_shift(fraction * five_to_6, scale - 6, false); // < 2^(50 + 14)
	} else if (scale <= 75) {
		const xylUInt64 low = (fraction & 0xffff) * five_to_6;
		const xylUInt64 high = (fraction >> 16) * five_to_6 + (low >> 16);
		millionths = round_shift(high, scale - 22, (low & 0xffff) != 0);
	} else {
		millionths = 0; // below 2^(53 - 76), a quarter of a millionth
	}
	if (millionths == decimals_end) return {whole + 1, 0};
	return {whole, static_cast<unsigned int>(millionths)};
}

constexpr auto digit_pairs = [] {
	struct Pairs {
		char text[200];
	} pairs{};
	for (int i = 0; i < 100; ++i) {
		pairs.text[2 * i] = static_cast<char>('0' + i / 10);
		pairs.text[2 * i + 1] = static_cast<char>('0' + i % 10);
	}
	return pairs;
}();

void write_pair(char* out, unsigned int value) {
	std::memcpy(out, digit_pairs.text + 2 * value, 2);
}

// The point and six digits.
char* write_decimals(char* out, unsigned int millionths) {
	*out = '.';
	write_pair(out + 1, millionths / 10000);
	write_pair(out + 3, millionths / 100 % 100);
	write_pair(out + 5, millionths % 100);
	return out + 7;
}

} // namespace

int write_signed(char* out, xylInt64 value) {
	return static_cast<int>(std::to_chars(out, out + integer_max, value).ptr - out);
}

int write_unsigned(char* out, xylUInt64 value) {
	return static_cast<int>(std::to_chars(out, out + integer_max, value).ptr - out);
}

int write_not_finite(char* out, double value) {
	const auto bits = std::bit_cast<xylUInt64>(value);
	const xylUInt64 fraction = bits & (hidden_bit - 1);
	const char* text = "inf";
	if (fraction != 0) {
		if (!(fraction & quiet_bit))
			text = "nan(snan)";
		else if ((bits & sign_bit) && fraction == quiet_bit)
			text = "nan(ind)";
		else
			text = "nan";
	}
	char* end = out;
	if (bits & sign_bit) *end++ = '-';
	const size_t length = std::strlen(text);
	std::memcpy(end, text, length);
	return static_cast<int>(end + length - out);
}

int write_fixed6(char* out, double value) {
	const auto bits = std::bit_cast<xylUInt64>(value);
	const int exponent = static_cast<int>(bits >> fraction_bits) & exponent_mask;
	if (exponent == exponent_mask) return write_not_finite(out, value);

	const xylUInt64 fraction = bits & (hidden_bit - 1);
	const xylUInt64 significand = exponent ? fraction | hidden_bit : fraction;
	const int scale = scale_bias - (exponent ? exponent : 1);
	// From 2^64 on the whole number outgrows our registers; such values are rare in texts.
	if (scale < -11) {
		const auto end = std::to_chars(out, out + fixed_max, value, std::chars_format::fixed, 6);
		return static_cast<int>(end.ptr - out);
	}
	char* end = out;
	if (bits & sign_bit) *end++ = '-';
	const Fixed parts = scale > 0 ? split(significand, scale) : Fixed{significand << -scale, 0};
	end += write_unsigned(end, parts.whole);
	return static_cast<int>(write_decimals(end, parts.millionths) - out);
}

} // namespace number_text
