#include <morvantis/core/number_text.h>

#include <bit>
#include <charconv>
#include <climits>
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

constexpr unsigned int part_end = 100000000; // eight digits
constexpr int part_digits = 8;
constexpr xylUInt64 ascii_zeros = 0x3030303030303030;

// The eight decimal digits of `value`, < part_end, a byte each with the first one lowest: it is
// divided into halves, quarters and single digits side by side in one register (P. Khuong, "How to
// print integers really fast", 2017). The factors are reciprocals, exact for what they divide.
inline xylUInt64 split_digits(unsigned int value) {
	const xylUInt64 halves = value / 10000 | static_cast<xylUInt64>(value % 10000) << 32;
	const xylUInt64 hundreds = (halves * 10486 >> 20) & 0x0000007f0000007f;
	const xylUInt64 quarters = hundreds | (halves - hundreds * 100) << 16;
	const xylUInt64 tens = (quarters * 103 >> 10) & 0x000f000f000f000f;
	return tens | (quarters - tens * 10) << 8;
}

inline char* write_part(char* out, unsigned int value) {
	const xylUInt64 digits = split_digits(value) | ascii_zeros;
	std::memcpy(out, &digits, part_digits);
	return out + part_digits;
}

// Without leading zeros. Eight bytes are written in any case.
inline char* write_first_part(char* out, unsigned int value) {
	constexpr xylUInt64 last_digit = 1ull << 56; // stands also where it is 0
	const xylUInt64 digits = split_digits(value);
	const int zeros = std::countr_zero(digits | last_digit) / CHAR_BIT;
	const xylUInt64 text = (digits | ascii_zeros) >> zeros * CHAR_BIT;
	std::memcpy(out, &text, part_digits);
	return out + (part_digits - zeros);
}

// Room for integer_max characters is enough: what is written too much is overwritten or within it.
inline char* write_digits(char* out, xylUInt64 value) {
	if (value < part_end) return write_first_part(out, static_cast<unsigned int>(value));
	const xylUInt64 front = value / part_end;
	char* end;
	if (front < part_end) {
		end = write_first_part(out, static_cast<unsigned int>(front));
	} else {
		end = write_first_part(out, static_cast<unsigned int>(front / part_end));
		end = write_part(end, static_cast<unsigned int>(front % part_end));
	}
	return write_part(end, static_cast<unsigned int>(value % part_end));
}

// The point and six digits.
char* write_decimals(char* out, unsigned int millionths) {
	const xylUInt64 digits = (split_digits(millionths) | ascii_zeros) >> 2 * CHAR_BIT;
	*out = '.';
	std::memcpy(out + 1, &digits, 6);
	return out + 7;
}

} // namespace

int write_signed(char* out, xylInt64 value) {
	*out = '-'; // overwritten if the value has none
	const auto bits = static_cast<xylUInt64>(value);
	char* const digits = out + (value < 0 ? 1 : 0);
	return static_cast<int>(write_digits(digits, value < 0 ? 0 - bits : bits) - out);
}

int write_unsigned(char* out, xylUInt64 value) {
	return static_cast<int>(write_digits(out, value) - out);
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
	end = write_digits(end, parts.whole);
	return static_cast<int>(write_decimals(end, parts.millionths) - out);
}

} // namespace number_text
