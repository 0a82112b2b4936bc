// The bounded formatter behind every reporting function and string append.
#pragma once

#include <morvantis/core/xyltypes.h> // size_t

#include <cstdarg>

// Formats at most `size` bytes into `buffer`.
//
// The legacy form: a terminator follows only where there is room for it, so a text of exactly
// `size` bytes has none, and a longer one is cut at `size` and has none either. The bytes are the
// same on every system and in every locale.
//
// `buffer`  room for `size` bytes; nothing behind them is touched. May be null if `size` is 0.
// `format`  text with directives "%[flags][width][.precision][length]conversion":
//           flags       any of "-+ #0"
//           width, precision  a number or '*', an int argument; a negative width is a '-' flag
//                       and the width without its sign, a negative precision counts as none
//           length      hh, h, l (the system's long), ll, I64, I32, z, I (size_t), j, t, L
//           conversion  d i u o x X   integers
//                       f F e E g G a A   double, with L long double cut to double; exact at any
//                                  precision; infinities and NaNs as number_text has them
//                       c s        a byte, a text; a null text is "(null)"
//                       p          16 upper-case hexadecimal digits
//                       n          takes its argument; writes and stores nothing
//                       %          a percent sign
//           A directive that is none of these, wide texts ("%ls") and one that the end of the
//           format cuts short included, is copied as it stands and takes no argument but for '*'.
// Result    the number of bytes when the text has at most `size`, else -1.
//
// A directive without an argument reads whatever stands there; a "%s" then may read anywhere. Any
// thread; does not allocate.
int format_bounded(char* buffer, size_t size, const char* format, va_list arguments);
