// Numbers to text, the same bytes on every system: the one place where the library does it.
#pragma once

#include <morvantis/core/xyltypes.h> // xylInt64, xylUInt64

// Each operation writes its characters from `out` on, without a terminator, and returns how many.
// Any thread; none allocates or looks at the locale.
namespace number_text {

// The longest integer: 20 characters for the most negative or the greatest 64-bit value.
constexpr int integer_max = 20;
// The longest fixed form: a sign, 309 digits, the point and 6 decimals; the rest is rounded up.
constexpr int fixed_max = 320;

// Decimal digits behind a '-' if negative. Room for integer_max characters is needed.
int write_signed(char* out, xylInt64 value);
int write_unsigned(char* out, xylUInt64 value);

// What "%f" stands for: the exact value rounded to six decimals, halves to the even neighbour, a
// '-' if the sign bit is set (for -0 as well). Room for fixed_max characters is needed.
//
// Infinities and NaNs are written as write_not_finite() does. A signalling float becomes quiet on
// its way to a double, so "snan" is seen of doubles only.
int write_fixed6(char* out, double value);

// The text of an infinity or a NaN: "inf", "nan", "-inf", "-nan"; "-nan(ind)" for the NaN that
// arithmetic makes (the sign and the quiet bit alone), "nan(snan)" and "-nan(snan)" for a
// signalling one. `value` is not finite. At most 10 characters.
int write_not_finite(char* out, double value);

} // namespace number_text
