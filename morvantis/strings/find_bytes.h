// Search of one byte sequence in another. Internal.
#pragma once

#include <cstddef>

// The first occurrence of `needle` in the bytes of `text`, or null. An empty needle is found at the
// start. Zero bytes are bytes like any other. Reads nothing outside the two ranges.
const char* find_bytes(const char* text, size_t text_size, const char* needle, size_t needle_size);

// The last occurrence; an empty needle is found at the end.
const char* find_last_bytes(const char* text, size_t text_size, const char* needle,
                            size_t needle_size);
