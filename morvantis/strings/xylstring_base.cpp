#include <morvantis/strings/xylstring_base.h>

#include <morvantis/core/ascii.h>
#include <morvantis/strings/find_bytes.h>
#include <morvantis/strings/xylvarstring.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

constexpr size_t size_of(int count) { return static_cast<size_t>(count); }

// The length of a text that may be null, which counts as empty.
size_t length_of(const char* text) { return text ? std::strlen(text) : 0; }

int index_in(const char* text, const char* found) {
	return found ? static_cast<int>(found - text) : -1;
}

int search(const xylString_base& text, const char* s, size_t count, int start) {
	if (start > text.length()) return -1;
	const char* from = text.char_p() + start;
	return index_in(text.char_p(), find_bytes(from, size_of(text.length() - start), s, count));
}

int search_reverse(const xylString_base& text, const char* s, size_t count, int low, int end) {
	if (end == -1) end = text.length();
	if (low > end) return -1;
	const char* from = text.char_p() + low;
	return index_in(text.char_p(), find_last_bytes(from, size_of(end - low), s, count));
}

} // namespace

const char xylString_base::empty_literal_[1] = {0};

void xylString_base::operator=(const unsigned char* source) {
	// Through a pointer, which always goes by the table; a plain call is taken for an error by
	// compilers that look for endless recursion.
	void (xylString_base::* const assign)(const unsigned char*) = &xylString_base::operator=;
	(this->*assign)(source);
}

xylString_base& xylString_base::operator=(const xylString_base& source) {
	*this = source.char_p();
	return *this;
}

void xylString_base::recalculate_length() { length_ = static_cast<int>(std::strlen(char_p())); }

bool xylString_base::operator==(const char* other) const {
	const size_t length = std::strlen(other);
	if (size_of(length_) != length) return false;
	// The terminator takes part: the length may have been cut in front of it.
	return length == 0 || std::memcmp(text_, other, length + 1) == 0;
}

bool xylString_base::operator<(const xylString_base& other) const {
	if (other.is_empty()) return false;
	return is_empty() || std::strcmp(text_, other.text_) < 0;
}

bool xylString_base::operator<=(const xylString_base& other) const {
	if (is_empty()) return true;
	return !other.is_empty() && std::strcmp(text_, other.text_) <= 0;
}

bool xylString_base::operator>(const xylString_base& other) const { return other < *this; }

bool xylString_base::operator>=(const xylString_base& other) const { return other <= *this; }

bool xylString_base::same_as(const char* other, bool case_sensitive) const {
	if (size_of(length_) != std::strlen(other)) return false;
	if (length_ == 0) return true;
	return (case_sensitive ? std::strcmp(text_, other)
	                       : ascii::compare_ignoring_case(text_, other)) == 0;
}

bool xylString_base::same_as(const xylString_base& other, bool case_sensitive) const {
	if (length_ != other.length_) return false;
	if (length_ == 0) return true;
	return (case_sensitive ? std::strcmp(text_, other.text_)
	                       : ascii::compare_ignoring_case(text_, other.text_)) == 0;
}

bool xylString_base::begins_with(const char* prefix) const {
	const size_t count = length_of(prefix);
	return count == 0 || (count <= size_of(length_) && std::memcmp(text_, prefix, count) == 0);
}

bool xylString_base::begins_with(const xylString_base& prefix) const {
	if (prefix.is_empty()) return true;
	return prefix.length_ <= length_ &&
	       std::memcmp(text_, prefix.text_, size_of(prefix.length_)) == 0;
}

bool xylString_base::ends_with(const char* suffix, bool case_sensitive) const {
	const size_t count = std::strlen(suffix);
	if (count > size_of(length_)) return false;
	const char* tail = char_p() + (size_of(length_) - count);
	return (case_sensitive ? std::strcmp(tail, suffix)
	                       : ascii::compare_ignoring_case(tail, suffix)) == 0;
}

bool xylString_base::substring_equals(int start, int end, const xylString_base& other) const {
	const int count = std::min(end, length_) - start;
	if (length_ == 0 || count <= 0) return other.is_empty();
	return other.length_ == count && std::memcmp(text_ + start, other.text_, size_of(count)) == 0;
}

bool xylString_base::contains(const xylString_base& other) const {
	return contains(other.char_p());
}

bool xylString_base::contains(const char* other) const {
	return std::strstr(char_p(), other) != nullptr;
}

int xylString_base::search_char(char c, int start) const {
	if (static_cast<unsigned int>(start) >= static_cast<unsigned int>(length_)) return -1;
	const void* found = std::memchr(text_ + start, c, size_of(length_ - start));
	return index_in(text_, static_cast<const char*>(found));
}

int xylString_base::search_char_reverse(char c, int low, int end) const {
	for (int i = (end == -1 ? length_ : end) - 1; i >= low; --i) {
		if (text_[i] == c) return i;
	}
	return -1;
}

int xylString_base::search_string(const char* s, int start) const {
	return search(*this, s, length_of(s), start);
}

int xylString_base::search_string(const xylString_base& s, int start) const {
	return search(*this, s.char_p(), size_of(s.length_), start);
}

int xylString_base::search_string_reverse(const char* s, int low, int end) const {
	return search_reverse(*this, s, length_of(s), low, end);
}

int xylString_base::search_string_reverse(const xylString_base& s, int low, int end) const {
	return search_reverse(*this, s.char_p(), size_of(s.length_), low, end);
}

int xylString_base::get_int_value() const {
	if (length_ < 1) return 0;
	const bool negative = text_[0] == '-';
	unsigned int value = 0;
	for (int i = negative ? 1 : 0; i < length_; ++i) {
		const int digit = static_cast<signed char>(text_[i]) - '0';
		value = value * 10 + static_cast<unsigned int>(digit);
	}
	return static_cast<int>(negative ? 0 - value : value);
}

bool xylString_base::check_int_value(int& value) const {
	value = 0;
	if (length_ < 1) return true;
	const bool negative = text_[0] == '-';
	unsigned int magnitude = 0;
	for (int i = negative ? 1 : 0; i < length_; ++i) {
		const char c = text_[i];
		if (c == '\r' || c == '\n') continue;
		if (!ascii::is_digit(c)) {
			value = static_cast<int>(magnitude);
			return false;
		}
		magnitude = magnitude * 10 + static_cast<unsigned int>(c - '0');
	}
	value = static_cast<int>(negative ? 0 - magnitude : magnitude);
	return true;
}

void xylString_base::replace_underscores_with_spaces() {
	std::replace(text_, text_ + length_, '_', ' ');
}

void xylString_base::replace_spaces_with_underscores() {
	std::replace(text_, text_ + length_, ' ', '_');
}

void xylString_base::replace_backslashes() { std::replace(text_, text_ + length_, '\\', '/'); }

void xylString_base::convert_to_uppercase() {
	std::transform(text_, text_ + length_, text_, ascii::to_upper);
}

void xylString_base::convert_to_lowercase() {
	std::transform(text_, text_ + length_, text_, ascii::to_lower);
}

bool xylString_base::has_uppercase_characters() const {
	return std::any_of(text_, text_ + length_, ascii::is_upper);
}

void xylString_base::capitalize_initial() {
	if (length_ > 0) text_[0] = ascii::to_upper(text_[0]);
}

bool xylString_base::is_alphanumeric_or_underscore() const {
	return std::all_of(text_, text_ + length_,
	                   [](char c) { return ascii::is_alphanumeric(c) || c == '_'; });
}

void xylString_base::replace_nonalphanumerics_with_spaces() {
	std::replace_if(text_, text_ + length_, [](char c) { return !ascii::is_alphanumeric(c); }, ' ');
}

void xylString_base::remove_after_character(char c) {
	const int found = search_char(c, 0);
	if (found < 0) return;
	text_[found] = 0;
	length_ = found;
}

void xylString_base::remove_characters(char c) {
	char* const end = text_ + length_;
	char* const kept = std::remove(text_, end, c);
	if (kept == end) return;
	*kept = 0;
	length_ = static_cast<int>(kept - text_);
}

void xylString_base::trim_characters_from_start(char c) {
	int count = 0;
	// kept: the last byte always stays.
	while (count < length_ - 1 && text_[count] == c) ++count;
	if (count == 0) return;
	length_ -= count;
	std::memmove(text_, text_ + count, size_of(length_));
	text_[length_] = 0;
}

void xylString_base::trim_characters_from_end(char c) {
	int end = length_;
	// kept: the first byte always stays.
	while (end > 1 && text_[end - 1] == c) --end;
	if (end == length_) return;
	text_[end] = 0;
	length_ = end;
}

void xylString_base::remove_extra_spaces() {
	int first = 0; // where the open run starts
	int extra = 0; // spaces too many in the open run; 0: no run is open
	for (int i = 0; i < length_ - 1; ++i) {
		if (text_[i] == ' ' && text_[i + 1] == ' ') {
			if (extra++ == 0) first = i;
		} else if (extra > 0) {
			// kept: i stays, so `extra` bytes behind the run go unexamined.
			char* const target = text_ + first + 1;
			std::memmove(target, target + extra, size_of(length_ - (first + 1 + extra)));
			length_ -= extra;
			text_[length_] = 0;
			extra = 0;
		}
	}
}

void xylString_base::copy_to_wchar(wchar_t* target, int count) const {
	// Its result tells of bytes that the locale doesn't know; `target` then ends in front of them.
	[[maybe_unused]] const size_t written = std::mbstowcs(target, char_p(), size_of(count));
}

xylVarString xylString_base::get_substring(int start, int end) {
	if (end < 0) end = length_;
	xylVarString result;
	result.ensure_length(static_cast<unsigned int>(std::min(end - start, length_ - start) + 1));
	const int count = std::min(end, length_) - start;
	if (count > 0) result.set(text_ + start, count);
	return result;
}
