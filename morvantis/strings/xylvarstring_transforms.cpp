// Transforms of the variable string that go beyond plain editing.

#include <morvantis/strings/xylvarstring.h>

#include <morvantis/core/ascii.h>

namespace {

constexpr char image_tag[] = "<img";
constexpr int image_tag_length = sizeof(image_tag) - 1;

// What remove_white_spaces() takes for white space.
//
// kept: as a signed byte, so that bytes of 128 and above count too.
bool is_white_space(char c) { return static_cast<signed char>(c) <= 32; }

// One word of a filter, without its white space.
bool matches_word(const xylVarString& text, xylVarString& word) {
	const int length = word.length();
	if (length < 2) return text.contains(word);
	if (word[0] == '-') return !text.contains(word.char_p() + 1);
	if (word[0] == '.') return text.begins_with(word.char_p() + 1);
	if (word[static_cast<unsigned int>(length) - 1] == '.') {
		word.delete_range(length - 1, 1);
		return text.ends_with(word.char_p(), true);
	}
	return text.contains(word);
}

} // namespace

void xylVarString::trim() {
	int start = 0;
	while (start < length_ && ascii::is_blank(text_[start])) ++start;
	int end = length_;
	while (end > start && ascii::is_blank(text_[end - 1])) --end;
	length_ = end - start;
	if (length_ == 0) return; // kept: bytes and terminator stay.
	std::memmove(text_, text_ + start, static_cast<size_t>(length_));
	text_[length_] = 0;
}

xylVarString xylVarString::trimmed() const {
	xylVarString result(*this);
	result.trim();
	return result;
}

xylVarString xylVarString::without_capped_parts(bool stop_at_image) const {
	xylVarString result;
	int position = 0;
	do {
		const int open = search_char('<', position);
		const int close = open < 0 ? -1 : search_char('>', open);
		if (close < 0) break;
		if (stop_at_image && length_ - open >= image_tag_length &&
		    std::memcmp(text_ + open, image_tag, image_tag_length) == 0) {
			break;
		}
		if (open > position) {
			result.append_bytes(text_ + position, static_cast<size_t>(open - position));
		}
		position = close + 1;
	} while (position < length_);
	if (position < length_) {
		result.append_bytes(text_ + position, static_cast<size_t>(length_ - position));
	}
	return result;
}

xylVarString xylVarString::remove_capped_parts() const { return without_capped_parts(false); }

xylVarString xylVarString::remove_capped_parts_except_img() const {
	return without_capped_parts(true);
}

bool xylVarString::replace(const xylVarString& search, const xylVarString& replacement) {
	if (is_empty() || search.is_empty()) return false;
	const char* match = std::strstr(text_, search.text_);
	if (!match) return false;
	if (&search == this || &replacement == this) {
		return replace(xylVarString(search), xylVarString(replacement));
	}
	const int position = static_cast<int>(match - text_);
	delete_range(position, search.length_);
	if (!replacement.is_empty()) insert(position, replacement);
	return true;
}

bool xylVarString::replace(const char* search, const char* replacement) {
	return replace(xylVarString(search), xylVarString(replacement));
}

xylVarString xylVarString::replace(char c, const char* replacement) const {
	xylVarString result;
	const size_t count = replacement ? std::strlen(replacement) : 0;
	for (int i = 0; i < length_; ++i) {
		if (text_[i] != c) {
			result.append(text_[i]);
		} else if (count > 0) {
			result.append_bytes(replacement, count);
		}
	}
	return result;
}

void xylVarString::replace_char_with(char from, char to) {
	for (char* at = text_; *at != 0; ++at) {
		if (*at == from) *at = to;
	}
}

void xylVarString::replace_all_with(const char* set, char to) {
	for (char* at = text_; *at != 0; ++at) {
		if (std::strchr(set, *at)) *at = to;
	}
}

void xylVarString::remove_white_spaces() {
	if (text_) keep_only([](char c) { return !is_white_space(c); });
}

void xylVarString::remove_non_alphanumeric() {
	keep_only([](char c) { return ascii::is_alphanumeric(c) || c == '_'; });
}

void xylVarString::keep_only(bool (*wanted)(char)) {
	char* target = text_;
	for (const char* at = text_; *at != 0; ++at) {
		if (wanted(*at)) *target++ = *at;
	}
	*target = 0;
	length_ = static_cast<int>(target - text_);
}

void xylVarString::replace_new_line_codes_with_new_lines() {
	if (length_ == 0) return;
	int read = 0;
	int write = 0;
	for (; write < length_ - 1; ++read, ++write) {
		const char next = text_[read + 1];
		if (text_[read] == '\\' && (next == 'n' || next == 'r')) {
			text_[write] = next == 'n' ? '\n' : '\r';
			--length_;
			++read;
		} else {
			text_[write] = text_[read];
		}
	}
	text_[write] = text_[read];
	text_[write + 1] = 0;
}

bool xylVarString::matches_filter(const xylVarString& text, const xylVarString& filter) {
	if (filter.is_empty()) return true;
	bool matches = true;
	xylVarString word;
	for (int start = 0; start <= filter.length_;) {
		int end = filter.search_char(' ', start);
		if (end < 0) end = filter.length_;
		word.copy(filter.text_ + start, end - start);
		word.remove_white_spaces();
		matches = matches_word(text, word) && matches;
		start = end + 1;
	}
	return matches;
}
