// What the string tests share: the bytes of a string by its length, and its hidden numbers.
#pragma once

#include <morvantis/strings/xylvarstring.h>

#include <string>

// The characters that length() tells of, zero bytes included.
inline std::string text_of(const xylString_base& text) {
	return std::string(text.char_p(), static_cast<size_t>(text.length()));
}

// Whether the terminator stands at the length.
inline bool is_terminated(const xylString_base& text) { return text.char_p()[text.length()] == 0; }

// A variable string whose capacity and storage can be looked at.
class Open_string : public xylVarString {
public:
	using xylVarString::xylVarString;
	using xylVarString::operator=;
	using xylVarString::str_init;
	using xylVarString::text_;
	int capacity() const { return capacity_; }
};
