// The bounded formatter behind every reporting function and string append.
#pragma once

#include <morvantis/core/xyltypes.h> // size_t

#include <cstdarg>

// Formats at most `size` bytes into `buffer`. A text of `size` bytes or more gets no terminator.
//
// Result  the number of bytes when the text has at most `size`, else -1 with the first `size`
//         bytes written.
// Any thread; does not allocate.
int format_bounded(char* buffer, size_t size, const char* format, va_list arguments);
