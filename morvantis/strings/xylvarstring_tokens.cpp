// The variable string as a small text input: cursor, tokens, numbers, lines.

#include <morvantis/strings/xylvarstring.h>

#include <morvantis/core/ascii.h>
#include <morvantis/core/number_parse.h>

#include <bit>
#include <cstdlib>
#include <emmintrin.h>

namespace {

constexpr int token_limit = 8192; // bytes of the caller's area
constexpr int number_area = 20;   // bytes for the text of a number, terminator included
constexpr int block = 16;         // bytes looked at, or copied, by one step

bool can_be_in_number(char c) { return ascii::is_digit(c) || c == '+' || c == '-'; }

// What ends a token: for one byte, and for sixteen, as a mask of bytes.
struct Separator {
	static bool is_at(char c) { return ascii::is_separator(c); }
	static __m128i among(__m128i bytes) {
		return _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(32)), bytes);
	}
};
struct Quote {
	static bool is_at(char c) { return c == '"'; }
	static __m128i among(__m128i bytes) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8('"')); }
};

const char* skip_separators(const char* at, const char* end) {
	while (at != end && ascii::is_separator(*at)) ++at;
	return at;
}

// The first such byte at or behind `at`, or `end`. Sixteen bytes at a time while there are as many.
template <typename Stop> const char* find_first(const char* at, const char* end) {
	for (; end - at >= block; at += block) {
		const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
		const auto mask = static_cast<unsigned int>(_mm_movemask_epi8(Stop::among(bytes)));
		if (mask != 0) return at + std::countr_zero(mask);
	}
	while (at != end && !Stop::is_at(*at)) ++at;
	return at;
}

// The characters of a number token as they are collected.
class Number_text {
public:
	void add(char c) {
		// Ends the process before the area overflows, as there is no value to go on with.
		if (size_ == number_area - 1) std::abort();
		text_[size_++] = c;
	}
	const char* terminated() {
		text_[size_] = 0;
		return text_;
	}

private:
	char text_[number_area];
	int size_ = 0;
};

} // namespace

bool xylVarString::tcp_eof() const {
	return eof() || (cursor_ == length_ - 1 && text_[cursor_] == ' ');
}

void xylVarString::move_cursor_to_next_char(char c) {
	const int found = search_char(c, cursor_);
	cursor_ = found < 0 ? length_ : found;
}

void xylVarString::pop_front(void* target, unsigned int count) {
	if (count > 0) std::memcpy(target, text_ + cursor_, count);
	cursor_ += static_cast<int>(count);
}

bool xylVarString::has_more_tokens() {
	if (eof()) return false;
	const char* const end = text_ + length_;
	const char* const at = skip_separators(text_ + cursor_, end);
	cursor_ = static_cast<int>(at - text_);
	return at != end;
}

xylVarString::Token_range xylVarString::take_token(int limit) {
	if (eof()) return {nullptr, 0};
	const char* end = text_ + length_;
	// Not by way of has_more_tokens(): waiting for the cursor to come back from memory would take
	// as long as half of the rest.
	const char* start = skip_separators(text_ + cursor_, end);
	const bool quoted = start != end && *start == '"';
	start += quoted ? 1 : 0;
	if (end - start > limit) end = start + limit;
	const char* const at =
		quoted ? find_first<Quote>(start, end) : find_first<Separator>(start, end);
	// kept: behind a quoted token the cursor steps over a byte, the closing quote or not.
	cursor_ = static_cast<int>(at - text_) + (quoted ? 1 : 0);
	return {start, static_cast<int>(at - start)};
}

// The length of a word can't be predicted, and a branch on it costs more than the copy: a short one
// goes as a whole block, of which the bytes behind the word mean nothing. `target` has room for
// one.
void xylVarString::copy_token(char* target, Token_range range) const {
	if (range.size <= block && text_ + capacity_ - range.start >= block) {
		std::memcpy(target, range.start, block);
	} else {
		std::memcpy(target, range.start, static_cast<size_t>(range.size));
	}
}

void xylVarString::next_token(char* const token, int& size) {
	const Token_range range = take_token(token_limit);
	size = range.size;
	if (size > 0) copy_token(token, range);
	// kept: a token that fills the area loses its last byte to the terminator.
	token[size < token_limit ? size : token_limit - 1] = 0;
}

void xylVarString::next_token_str(xylVarString& token) {
	token.clear();
	const Token_range range = take_token(length_);
	if (range.size == 0) return;
	token.ensure_length(static_cast<unsigned int>(range.size));
	copy_token(token.text_, range); // no storage has less than a block
	token.length_ = range.size;
	token.text_[range.size] = 0;
}

xylVarString::Read_token_result xylVarString::try_next_token_int(int& value) {
	if (!has_more_tokens()) return read_token_end_of_text;
	Number_text number;
	char last;
	for (;;) {
		// kept: the cursor passes the byte before it is tested, and the last byte of the text is
		// never stored.
		last = text_[cursor_++];
		if (!can_be_in_number(last) || cursor_ == length_) break;
		number.add(last);
	}
	if (!ascii::is_separator(last) && cursor_ < length_) return read_token_invalid;
	value = number_parse::parse_int32(number.terminated());
	return read_token_success;
}

xylVarString::Read_token_result xylVarString::try_next_token_int64(long long& value) {
	if (!has_more_tokens()) return read_token_end_of_text;
	Number_text number;
	for (; cursor_ < length_ && can_be_in_number(text_[cursor_]); ++cursor_) {
		number.add(text_[cursor_]);
	}
	if (cursor_ < length_ && !ascii::is_separator(text_[cursor_])) return read_token_invalid;
	value = static_cast<long long>(number_parse::parse_uint64(number.terminated()));
	return read_token_success;
}

int xylVarString::next_token_int() {
	int value = 0;
	try_next_token_int(value);
	return value;
}

long long xylVarString::next_token_int64() {
	long long value = 0;
	try_next_token_int64(value);
	return value;
}

xylVarString xylVarString::get_line() {
	const int start = cursor_;
	move_cursor_to_next_char('\n');
	if (start >= cursor_) return xylVarString();
	return xylVarString(text_ + start, cursor_ - start);
}

void xylVarString::get_front_str(xylVarString& source, unsigned int count) {
	if (count == 0) return;
	append_bytes(source.text_ + source.cursor_, count);
	source.cursor_ += static_cast<int>(count);
}

int xylVarString::find_first_occurence(const xylVarString& text) const {
	if (text.length_ == length_) return *this == text ? 0 : -1;
	return search_string(text, 0);
}

int xylVarString::get_count(char c) const {
	int count = 0;
	for (const char* at = char_p(); *at != 0; ++at) count += *at == c ? 1 : 0;
	return count;
}

int xylVarString::to_int() const { return number_parse::parse_int32(text_); }

float xylVarString::to_float() const { return number_parse::parse_float(text_); }
