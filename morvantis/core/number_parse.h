// Text to numbers, the same values on every system: the one place where the library does it.
#pragma once

#include <morvantis/core/xyltypes.h> // xylInt32, xylUInt64

// Each operation reads the number at the start of a text: white space, a sign, and then as much as
// belongs to it; what follows is ignored. Without a number the result is 0. The text ends at its
// first byte that is no letter, no digit and none of "+-.()_", such as the terminator, so a token
// can be read where it stands. `readable` is how many bytes are there in any case, whatever they
// are: digits are then taken eight at a time.
// Any thread; none allocates, or looks at the locale.
namespace number_parse {

// A number, and the byte behind its last one; where there is no number, that is the text itself.
template <typename Value> struct Number {
	Value value;
	const char* end;
};

// atoi() where `long` has 32 bits: decimal, and values out of range become the nearest in range.
Number<xylInt32> read_int32(const char* text, xylInt64 readable = 0);
inline xylInt32 parse_int32(const char* text) { return read_int32(text).value; }

// strtoul() in base 10 where `long` has 32 bits: a '-' negates in 32 bits, so "-1" is the greatest
// value. Digits that don't fit give the greatest value, whatever the sign.
Number<xylUInt32> read_uint32(const char* text, xylInt64 readable = 0);
inline xylUInt32 parse_uint32(const char* text) { return read_uint32(text).value; }

// strtoull() in base 10: a '-' negates in 64 bits, so "-1" is the greatest value. Digits that don't
// fit give the greatest value, whatever the sign.
xylUInt64 parse_uint64(const char* text);

// atof() in the "C" locale: decimal, hexadecimal with "0x", "inf", "infinity", "nan" and
// "nan(...)" in any case; rounded to the nearest, infinite where too large, 0 where too small.
// The sign is kept, of 0 and NaNs too; the text inside "nan(...)" is ignored.
Number<double> read_double(const char* text, xylInt64 readable = 0);
inline double parse_double(const char* text) { return read_double(text).value; }

// The double narrowed, which rounds twice: as callers of atof() do it, and not always the float
// nearest to the text.
inline Number<float> read_float(const char* text, xylInt64 readable = 0) {
	const Number<double> number = read_double(text, readable);
	return {static_cast<float>(number.value), number.end};
}
inline float parse_float(const char* text) { return read_float(text).value; }

// sscanf() with "%f" in the "C" locale: the forms that parse_double() reads, rounded once to the
// nearest float. False, with `*value` untouched, if there is no number, or one that is cut short
// ("1e", "0x", "infi"), whose beginning a scan has already consumed.
bool scan_float(const char* text, float* value);

} // namespace number_parse
