// Doubles in the scientific, general and hexadecimal forms and with any precision: what "%f" alone
// doesn't need. The plain form is number_text's.
#pragma once

#include <morvantis/core/xyltypes.h>

constexpr int no_precision = -1; // the directive names none

// A finite double has no more decimals than this that are not 0, in any form.
constexpr int most_decimals = 1074;

// The text of a finite double. The exponent is the last `tail` bytes of it; `zeros` more digits 0
// belong before the exponent, for precisions beyond most_decimals.
struct Float_text {
	char text[1 + 309 + 1 + most_decimals + 8]; // carry, digits, point, decimals, exponent
	int length = 0;
	int tail = 0;
	int zeros = 0;
};

// Writes `magnitude`, finite and not negative, as the directive with `conversion` 'f', 'e', 'g' or
// 'a' and the flag '#' (`alternate`) says: exact and rounded to the even neighbour. The form 'a'
// has no "0x". Any thread; does not allocate or look at the locale.
void write_float_text(Float_text* out, double magnitude, char conversion, int precision,
                      bool alternate);
