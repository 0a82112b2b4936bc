#include <morvantis/core/number_parse.h>

#include <morvantis/core/ascii.h>

#include <charconv>
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
		digits = *text == '-' || *text == '+' ? text + 1 : text;
	}
	const char* digits;
	bool negative;
};

struct Whole_number {
	xylUInt64 value;
	bool fits; // else the value is the limit
};

// The decimal number at `digits`, as far as it goes up to `limit`.
Whole_number read_digits(const char* digits, xylUInt64 limit) {
	xylUInt64 value = 0;
	for (; ascii::is_digit(*digits); ++digits) {
		const auto digit = static_cast<xylUInt64>(*digits - '0');
		if (value > (limit - digit) / 10) return {limit, false};
		value = value * 10 + digit;
	}
	return {value, true};
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
	const auto exponent = static_cast<xylInt64>(read_digits(digits, beyond_any_text).value);
	return scale + (negative ? -exponent : exponent) > 0;
}

// A number without its sign.
template <typename Number> struct Magnitude {
	std::optional<Number> value; // nothing if there is no number
	const char* end;             // behind the number
};

template <typename Number> Magnitude<Number> parse_magnitude(const char* digits) {
	if (*digits == '-') return {{}, digits}; // a second sign, which from_chars() would take
	const bool hexadecimal = is_hexadecimal(digits);
	if (hexadecimal) digits += 2;
	const auto format = hexadecimal ? std::chars_format::hex : std::chars_format::general;
	Number value = 0;
	const auto [end, error] = std::from_chars(digits, digits + std::strlen(digits), value, format);
	if (error == std::errc::invalid_argument) return {{}, end};
	if (error == std::errc()) return {value, end};
	const bool too_large =
		hexadecimal ? is_too_large(digits, end, 'p', 4) : is_too_large(digits, end, 'e', 1);
	return {too_large ? std::numeric_limits<Number>::infinity() : Number(0), end};
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

} // namespace

xylInt32 parse_int32(const char* text) {
	const Start start(text);
	constexpr xylUInt64 largest = std::numeric_limits<xylInt32>::max();
	const xylUInt64 limit = start.negative ? largest + 1 : largest;
	const auto value = static_cast<xylInt64>(read_digits(start.digits, limit).value);
	return static_cast<xylInt32>(start.negative ? -value : value);
}

xylUInt32 parse_uint32(const char* text) {
	const Start start(text);
	const Whole_number number = read_digits(start.digits, std::numeric_limits<xylUInt32>::max());
	const auto value = static_cast<xylUInt32>(number.value);
	return start.negative && number.fits ? 0 - value : value;
}

xylUInt64 parse_uint64(const char* text) {
	const Start start(text);
	const Whole_number number = read_digits(start.digits, std::numeric_limits<xylUInt64>::max());
	return start.negative && number.fits ? 0 - number.value : number.value;
}

double parse_double(const char* text) {
	const Start start(text);
	const std::optional<double> value = parse_magnitude<double>(start.digits).value;
	if (!value) return 0; // a sign without a number is none of the result's
	return start.negative ? -*value : *value;
}

bool scan_float(const char* text, float* value) {
	const Start start(text);
	const Magnitude<float> number = parse_magnitude<float>(start.digits);
	if (!number.value || is_cut_short(start.digits, number.end)) return false;
	*value = start.negative ? -*number.value : *number.value;
	return true;
}

} // namespace number_parse
