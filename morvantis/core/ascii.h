// Character tests on ASCII values, without locale. Internal.
#pragma once

namespace ascii {

constexpr bool is_upper(char c) { return c >= 'A' && c <= 'Z'; }
constexpr bool is_lower(char c) { return c >= 'a' && c <= 'z'; }
constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }
constexpr bool is_hex_digit(char c) {
	return is_digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
// White space as of the C library.
constexpr bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
constexpr bool is_alphanumeric(char c) { return is_lower(c) || is_upper(c) || is_digit(c); }
constexpr char to_upper(char c) { return is_lower(c) ? static_cast<char>(c - 'a' + 'A') : c; }
constexpr char to_lower(char c) { return is_upper(c) ? static_cast<char>(c - 'A' + 'a') : c; }

// What ends a token: every byte below 33. Bytes of 128 and above belong to tokens.
constexpr bool is_separator(char c) { return static_cast<unsigned char>(c) < 33; }
// What trim() removes, which is less.
constexpr bool is_blank(char c) { return c == '\t' || c == '\n' || c == '\r' || c == ' '; }

// The order of the first bytes, up to the terminator, that differ once A to Z are lower-cased:
// below 0, 0, or above 0 for a before, like or behind b.
constexpr int compare_ignoring_case(const char* a, const char* b) {
	for (;; ++a, ++b) {
		const int difference =
			static_cast<unsigned char>(to_lower(*a)) - static_cast<unsigned char>(to_lower(*b));
		if (difference != 0 || *a == 0) return difference;
	}
}

} // namespace ascii
