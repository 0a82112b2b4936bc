#include <morvantis/core/number_parse.h>

#include <morvantis/core/ascii.h>

#include <bit>
#include <charconv>
#include <climits>
#include <cstddef>
#include <cstring>
#include <limits>
#include <optional>

namespace number_parse {

namespace {

// Where the digits start, and the sign in front of them.
struct Start {
	explicit Start(const char* text) {
		while (ascii::is_space(*text)) ++text;
		negative = *text == '-';
		digits = text + (*text == '-' || *text == '+' ? 1 : 0);
	}
	const char* digits;
	bool negative;
};

struct Whole_number {
	xylUInt64 value;
	const char* end; // behind the digits
	bool fits;       // else the value is the limit
};

constexpr int chunk = 8; // bytes looked at by one step

constexpr xylUInt64 powers_of_ten[chunk + 1] = {1,      10,      100,      1000,     10000,
                                                100000, 1000000, 10000000, 100000000};

// The number that eight bytes of 0 to 9 make, the first one lowest: pairs, fours and then all are
// put together side by side in one register.
xylUInt64 join_digits(xylUInt64 digits) {
	digits = digits * (10 * 256 + 1) >> 8 & 0x00ff00ff00ff00ff;
	digits = digits * (100 * 65536 + 1) >> 16 & 0x0000ffff0000ffff;
	return digits * (10000 * 4294967296 + 1) >> 32;
}

// Adds the decimal digits at `at` to `value`, wrapping around; what comes back is their end.
//
// By chunks, since the count of digits can't be predicted, and a wrong guess costs more than all
// the rest.
inline const char* add_digits(const char* at, const char* readable_end, xylUInt64& value) {
	while (readable_end - at >= chunk) {
		constexpr xylUInt64 ones = 0x0101010101010101;
		xylUInt64 bytes;
		std::memcpy(&bytes, at, chunk);
		bytes ^= ones * '0'; // digits are 0 to 9 now
		const xylUInt64 others =
			(((bytes & ones * 0x7f) + ones * (0x7f - 9)) | bytes) & ones * 0x80;
		const int count = std::countr_zero(others) / CHAR_BIT; // 8 if there are no others
		// In two steps, since a register can't be shifted by all of its bits.
		const int half_of_shift = (chunk - count) * CHAR_BIT / 2;
		const xylUInt64 digits = bytes << half_of_shift << half_of_shift;
		value = value * powers_of_ten[count] + join_digits(digits);
		at += count;
		if (count < chunk) return at;
	}
	for (; ascii::is_digit(*at); ++at) value = value * 10 + static_cast<xylUInt64>(*at - '0');
	return at;
}

constexpr std::ptrdiff_t safe_digits = std::numeric_limits<xylUInt64>::digits10; // never wrap

// read_digits() for more digits than are safe.
Whole_number read_many_digits(const char* digits, xylUInt64 limit) {
	xylUInt64 value = 0;
	for (; ascii::is_digit(*digits); ++digits) {
		const auto digit = static_cast<xylUInt64>(*digits - '0');
		if (value > (limit - digit) / 10) {
			while (ascii::is_digit(*digits)) ++digits;
			return {limit, digits, false};
		}
		value = value * 10 + digit;
	}
	return {value, digits, true};
}

// The decimal number at `digits`, as far as it goes up to `limit`.
inline Whole_number read_digits(const char* digits, const char* readable_end, xylUInt64 limit) {
	xylUInt64 value = 0;
	const char* const end = add_digits(digits, readable_end, value);
	if (end - digits > safe_digits) return read_many_digits(digits, limit);
	return value > limit ? Whole_number{limit, end, false} : Whole_number{value, end, true};
}

// Whether "0x" and a digit are there: "0x" alone is the number 0 in front of an x.
bool is_hexadecimal(const char* digits) {
	if (digits[0] != '0' || (digits[1] != 'x' && digits[1] != 'X')) return false;
	return ascii::is_hex_digit(digits[2]) || (digits[2] == '.' && ascii::is_hex_digit(digits[3]));
}

// Whether a number that no double can hold is too large, and not too small. Its first digit other
// than 0 and its exponent tell: the limits of a double are far from 1.
//
// `end`     behind the number
// `marker`  what the exponent starts with, in lower case
// `weight`  how much one digit is worth in the exponent: 1 decimal, 4 hexadecimal
bool is_too_large(const char* digits, const char* end, char marker, xylInt64 weight) {
	const auto is_marker = [marker](char c) { return (c | 0x20) == marker; };
	while (digits != end && *digits == '0') ++digits;
	xylInt64 scale = 0; // exponent of the first digit other than 0, roughly
	for (; digits != end && *digits != '.' && !is_marker(*digits); ++digits) scale += weight;
	if (digits != end && *digits == '.') {
		++digits;
		if (scale == 0) {
			for (; digits != end && *digits == '0'; ++digits) scale -= weight;
		}
		while (digits != end && !is_marker(*digits)) ++digits;
	}
	if (digits == end) return scale > 0;
	++digits;
	const bool negative = *digits == '-';
	if (*digits == '-' || *digits == '+') ++digits;
	constexpr xylUInt64 beyond_any_text = 1ull << 62;
	const auto exponent = static_cast<xylInt64>(read_digits(digits, digits, beyond_any_text).value);
	return scale + (negative ? -exponent : exponent) > 0;
}

// A number without its sign.
template <typename Value> struct Magnitude {
	std::optional<Value> value; // nothing if there is no number
	const char* end;            // behind the number
};

bool can_be_in_number(char c) {
	return ascii::is_alphanumeric(c) || c == '.' || c == '-' || c == '+' || c == '_' || c == '(' ||
	       c == ')';
}

template <typename Value> Magnitude<Value> parse_magnitude(const char* digits) {
	if (*digits == '-') return {{}, digits}; // a second sign, which from_chars() would take
	const bool hexadecimal = is_hexadecimal(digits);
	if (hexadecimal) digits += 2;
	const auto format = hexadecimal ? std::chars_format::hex : std::chars_format::general;
	const char* text_end = digits;
	while (can_be_in_number(*text_end)) ++text_end;
	Value value = 0;
	const auto [end, error] = std::from_chars(digits, text_end, value, format);
	if (error == std::errc::invalid_argument) return {{}, end};
	if (error == std::errc()) return {value, end};
	const bool too_large =
		hexadecimal ? is_too_large(digits, end, 'p', 4) : is_too_large(digits, end, 'e', 1);
	return {too_large ? std::numeric_limits<Value>::infinity() : Value(0), end};
}

// Whether what follows the number at `digits` begins a longer form of it that never comes: an
// exponent without digits, "0x" alone, "infi", "nan(".
bool is_cut_short(const char* digits, const char* end) {
	switch (*end | 0x20) {
	case 'e':
		return !is_hexadecimal(digits) && (ascii::is_digit(*digits) || *digits == '.');
	case 'p':
		return is_hexadecimal(digits);
	case 'x':
		return *digits == '0' && end == digits + 1;
	case 'i':
		return (*digits | 0x20) == 'i';
	default:
		return *end == '(' && (*digits | 0x20) == 'n';
	}
}

constexpr double exact_powers_of_ten[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,
                                          1e7,  1e8,  1e9,  1e10, 1e11, 1e12, 1e13,
                                          1e14, 1e15, 1e16, 1e17, 1e18, 1e19};

// A plain decimal number of few digits, as most are. They make an integer and a power of ten that a
// double holds exactly, so that their quotient is rounded once, to what is nearest to the text
// (W. D. Clinger, "How to read floating point numbers accurately", 1990). Nothing for any other.
Magnitude<double> parse_short_decimal(const char* digits, const char* readable_end) {
	constexpr xylUInt64 exact_limit = 1ull << std::numeric_limits<double>::digits;
	xylUInt64 significand = 0;
	const char* end = add_digits(digits, readable_end, significand);
	std::ptrdiff_t count = end - digits;
	std::ptrdiff_t decimals = 0;
	if (*end == '.') {
		const char* const first = end + 1;
		end = add_digits(first, readable_end, significand);
		decimals = end - first;
		count += decimals;
	}
	const char marker = ascii::to_lower(*end); // of an exponent, or of a hexadecimal number
	if (count == 0 || count > safe_digits || significand > exact_limit || marker == 'e' ||
	    marker == 'x') {
		return {{}, digits};
	}
	return {static_cast<double>(significand) / exact_powers_of_ten[decimals], end};
}

// `value` or -`value`, without the branch that a compiler would make of it: half of the guesses
// would be wrong.
xylUInt64 with_sign(xylUInt64 value, bool negative) {
	const xylUInt64 all_bits_if_negative = 0 - xylUInt64{negative};
	return (value ^ all_bits_if_negative) - all_bits_if_negative;
}
double with_sign(double value, bool negative) {
	return std::bit_cast<double>(std::bit_cast<xylUInt64>(value) ^ xylUInt64{negative} << 63);
}

} // namespace

Number<xylInt32> read_int32(const char* text, xylInt64 readable) {
	const Start start(text);
	constexpr xylUInt64 largest = std::numeric_limits<xylInt32>::max();
	const Whole_number number =
		read_digits(start.digits, text + readable, start.negative ? largest + 1 : largest);
	const char* const end = number.end == start.digits ? text : number.end;
	return {static_cast<xylInt32>(with_sign(number.value, start.negative)), end};
}

Number<xylUInt32> read_uint32(const char* text, xylInt64 readable) {
	const Start start(text);
	const Whole_number number =
		read_digits(start.digits, text + readable, std::numeric_limits<xylUInt32>::max());
	const char* const end = number.end == start.digits ? text : number.end;
	return {static_cast<xylUInt32>(with_sign(number.value, start.negative & number.fits)), end};
}

xylUInt64 parse_uint64(const char* text) {
	const Start start(text);
	const Whole_number number =
		read_digits(start.digits, text, std::numeric_limits<xylUInt64>::max());
	return with_sign(number.value, start.negative & number.fits);
}

Number<double> read_double(const char* text, xylInt64 readable) {
	const Start start(text);
	Magnitude<double> number = parse_short_decimal(start.digits, text + readable);
	if (!number.value) number = parse_magnitude<double>(start.digits);
	if (!number.value) return {0, text}; // a sign without a number is none of the result's
	return {with_sign(*number.value, start.negative), number.end};
}

bool scan_float(const char* text, float* value) {
	const Start start(text);
	const Magnitude<float> number = parse_magnitude<float>(start.digits);
	if (!number.value || is_cut_short(start.digits, number.end)) return false;
	*value = start.negative ? -*number.value : *number.value;
	return true;
}

} // namespace number_parse
