// Token readers, number readers, filters and tag removal of the growing string on texts of any
// bytes: nothing may be read outside, the readers must agree with each other, and each must come to
// an end.

#include "input.h"

#include <morvantis/strings/xylvarstring.h>

#include <cstdint>
#include <cstring>

namespace {

// A number token of twenty characters ends the process: that is told, not found.
bool has_long_number(const xylVarString& text) {
	int run = 0;
	for (int i = 0; i < text.length(); ++i) {
		const char c = text.char_p()[i];
		run = (c >= '0' && c <= '9') || c == '+' || c == '-' ? run + 1 : 0;
		if (run == 20) return true;
	}
	return false;
}

void read_tokens(const xylVarString& source) {
	xylVarString by_area(source);
	xylVarString by_string(source);
	xylVarString token;
	static char area[8192];
	while (by_area.has_more_tokens()) {
		require(by_string.has_more_tokens());
		const int before = by_area.get_cursor_position();
		int size = -1;
		by_area.next_token(area, size);
		by_string.next_token_str(token);
		require(size >= 0 && size <= 8192 && by_area.get_cursor_position() > before);
		require(token.is_valid());
		if (token.length() < 8192) {
			require(token.length() == size);
			require(std::memcmp(token.char_p(), area, static_cast<std::size_t>(size)) == 0);
			require(by_area.get_cursor_position() == by_string.get_cursor_position());
		}
		by_string.reset_cursor(by_area.get_cursor_position());
	}
}

void read_numbers(const xylVarString& source) {
	if (has_long_number(source)) return;
	xylVarString text(source);
	for (int value = 0; text.try_next_token_int(value) != xylVarString::read_token_end_of_text;) {
	}
	text.reset_cursor(0);
	long long value64 = 0;
	for (;;) {
		const int before = text.get_cursor_position();
		const auto result = text.try_next_token_int64(value64);
		if (result == xylVarString::read_token_end_of_text) break;
		// It stands on the byte that is in no number.
		if (result == xylVarString::read_token_invalid) text.advance_cursor_by(1);
		require(text.get_cursor_position() > before);
	}
	if (!source.is_buffer_null()) {
		static_cast<void>(source.to_int());
		static_cast<void>(source.to_float());
	}
}

void read_lines(const xylVarString& source) {
	xylVarString text(source);
	int length = 0;
	while (!text.eof()) {
		length += text.get_line().length();
		if (text.eof()) break;
		text.advance_cursor_by(1);
		++length;
	}
	require(length == source.length());
}

void transform(const xylVarString& source) {
	const xylVarString trimmed = source.trimmed();
	require(trimmed.is_valid() && trimmed.length() <= source.length());
	require(trimmed.trimmed() == trimmed);
	const xylVarString removed = source.remove_capped_parts();
	const xylVarString with_images = source.remove_capped_parts_except_img();
	require(removed.is_valid() && removed.length() <= source.length());
	require(with_images.is_valid() && with_images.length() >= removed.length());
	xylVarString lines(source);
	lines.replace_new_line_codes_with_new_lines();
	require(lines.is_valid() && lines.length() <= source.length());
	xylVarString spaces(source);
	spaces.remove_extra_spaces();
	require(spaces.is_valid());
}

void filter(const xylVarString& text, const xylVarString& words) {
	const bool matches = xylVarString::matches_filter(text, words);
	// A further word can only narrow the choice.
	const bool narrowed = xylVarString::matches_filter(text, words + " -e");
	require(words.is_empty() || matches || !narrowed);
	const int found = text.find_first_occurence(words);
	require(found >= -1 &&
	        found + words.length() <= text.length() + (found < 0 ? words.length() : 0));
}

} // namespace

// The choices are the filter, the rest is the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
	const Parted_input input(data, size);
	const xylVarString words(reinterpret_cast<const char*>(input.choices.data()),
	                         static_cast<int>(input.choices.size()));
	const xylVarString text(input.rest, input.rest_size);
	read_tokens(text);
	read_numbers(text);
	read_lines(text);
	transform(text);
	filter(text, words);
	return 0;
}
