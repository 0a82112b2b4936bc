// Transforms of the variable string that go beyond plain editing.

#include <morvantis/strings/xylvarstring.h>

#include <morvantis/core/ascii.h>
#include <morvantis/strings/find_bytes.h>

#include <algorithm>

namespace {

constexpr char image_tag[] = "<img";
constexpr int image_tag_length = sizeof(image_tag) - 1;

// What remove_white_spaces() takes for white space.
//
// kept: as a signed byte, so that bytes of 128 and above count too.
bool is_white_space(char c) { return static_cast<signed char>(c) <= 32; }

// One word of a filter, without white space and so without zero bytes.
struct Word {
	const char* text;
	size_t size;
};

bool contains(const xylVarString& text, Word word) {
	const char* const bytes = text.char_p();
	return find_bytes(bytes, std::strlen(bytes), word.text, word.size) != nullptr;
}

bool begins_with(const xylVarString& text, Word word) {
	return word.size <= static_cast<size_t>(text.length()) &&
	       std::memcmp(text.char_p(), word.text, word.size) == 0;
}

bool ends_with(const xylVarString& text, Word word) {
	const auto length = static_cast<size_t>(text.length());
	if (word.size > length) return false;
	const char* const tail = text.char_p() + (length - word.size);
	return std::memcmp(tail, word.text, word.size) == 0 && tail[word.size] == 0;
}

bool matches_word(const xylVarString& text, Word word) {
	if (word.size < 2) return contains(text, word);
	const Word rest{word.text + 1, word.size - 1};
	if (word.text[0] == '-') return !contains(text, rest);
	if (word.text[0] == '.') return begins_with(text, rest);
	if (word.text[word.size - 1] == '.') return ends_with(text, {word.text, word.size - 1});
	return contains(text, word);
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
	const char* const begin = text_;
	const char* const end = begin + length_;
	const auto found = static_cast<size_t>(std::count(begin, end, c));
	const size_t length = static_cast<size_t>(length_) - found + found * count;
	if (length == 0) return result;
	result.set_length_externally(static_cast<unsigned int>(length));
	char* target = result.text_;
	for (const char* at = begin; at != end; ++at) {
		if (*at != c) {
			*target++ = *at;
		} else if (count > 0) {
			std::memcpy(target, replacement, count);
			target += count;
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
	xylVarString cleaned;
	for (int start = 0; start <= filter.length_;) {
		int end = filter.search_char(' ', start);
		if (end < 0) end = filter.length_;
		Word word{filter.text_ + start, static_cast<size_t>(end - start)};
		if (std::any_of(word.text, word.text + word.size, is_white_space)) {
			cleaned.copy(word.text, end - start);
			cleaned.remove_white_spaces();
			word = {cleaned.text_, static_cast<size_t>(cleaned.length_)};
		}
		matches = matches_word(text, word) && matches;
		start = end + 1;
	}
	return matches;
}
