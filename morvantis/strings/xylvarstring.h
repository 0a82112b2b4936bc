// The growing string, which is also a byte buffer and a small text input.
#pragma once

#include <morvantis/strings/xylstring_base.h>

#include <cstring> // strlen, for the appends
#include <string>

class xylFile;

// Text of any length on the library's heap, with a read cursor.
//
// Growth: the first storage has the bytes asked for and at least 16; from then on a storage that
// is too small is doubled until it is larger than what is asked for. So a run of appends
// allocates a logarithmic number of times. Only empty_and_shrink() ever makes it smaller.
//
// Lengths, not terminators, rule the appends: zero bytes may stand inside the text. Operations
// after which the terminator is not at the length say so.
//
// Aliasing: what is assigned, appended or inserted may be this string or a part of its text.
//
// Failure: a failed allocation isn't tested, nothing is reported, and indices and cursor are not
// tested. Text of 2 GiB and more is outside the design.
//
// Threads: a string belongs to one thread at a time, even for reading with its cursor.
class MORVANTIS_API xylVarString : public xylString_base {
public:
	// Results of the reading operations.
	enum Read_token_result {
		read_token_success = 0,     // a number was read
		read_token_end_of_text = 1, // nothing but separators remained
		read_token_invalid = 2,     // the token holds a character that can't be in a number
	};

	// --- Construction

	// No allocation.
	xylVarString() = default;
	// Null and "" give the default state, without allocation.
	xylVarString(const char* source);
	// Exactly `count` bytes, zero bytes included. Null gives the default state.
	xylVarString(const char* source, int count);
	xylVarString(const std::string& source);
	// The cursor starts at 0.
	xylVarString(const xylString_base& source);
	// The cursor is copied too, if the source isn't empty.
	xylVarString(const xylVarString& source);
	// Takes the storage and leaves the source in the default state.
	xylVarString(xylVarString&& source) noexcept;
	~xylVarString() override;

	// --- Storage

	// Makes room for `length` characters and a terminator. The text stays. 0 does nothing.
	void ensure_length(unsigned int length) {
		if (length != 0 && static_cast<unsigned int>(capacity_) < length + 1) grow(length);
	}
	// The same; it only ever grows.
	void set_capacity(unsigned int length) { ensure_length(length); }
	// Makes room, sets the length and terminates there, for a text that was or will be written
	// through operator[]. With 0, the string must have storage.
	void set_length_externally(unsigned int length);
	// Empties the string, resets the cursor, and replaces the storage by one of `length` + 1 bytes,
	// at least 16.
	void empty_and_shrink(unsigned int length);
	// Exchanges two strings, cursors too. No allocation.
	static void swap_contents(xylVarString& a, xylVarString& b);
	// The text from the cursor on; null without storage and cursor.
	const void* buffer_p() const { return text_ ? text_ + cursor_ : nullptr; }
	// A string in the default state, shared by all. Any thread.
	static const xylVarString& empty_str();

	// --- Assignment

	using xylString_base::operator=;
	// Null makes the string empty and keeps the storage. The cursor goes to 0.
	void operator=(const char* source) override;
	// The cursor is copied.
	xylVarString& operator=(const xylVarString& source);
	// Takes the storage; the source is left in the default state.
	xylVarString& operator=(xylVarString&& source) noexcept;
	// The text ends at its first zero byte, and the cursor goes to 0.
	xylVarString& operator=(const xylString_base& source);
	// `count` bytes; the cursor stays.
	void set(const char* source, int count) override;
	// The virtual assignment under a name of its own.
	virtual void set_content(const char* source);
	// Does what set() does, without the virtual call.
	void copy(const char* source, int count);
	// Empties the string; storage and cursor stay.
	void clear() {
		length_ = 0;
		if (text_) text_[0] = 0;
	}

	// --- Appends. Each leaves the cursor alone.

	// Null and "" do nothing.
	void append(const char* source) {
		if (source && *source) append_bytes(source, std::strlen(source));
	}
	// The first `count` bytes of the source; `count` must not exceed its length.
	void append(const char* source, int count);
	void append(const xylString_base& source) {
		if (!source.is_empty()) append_bytes(source.char_p(), static_cast<size_t>(source.length()));
	}
	// Any byte, zero too.
	void append(char c) {
		const int end = length_;
		if (static_cast<unsigned int>(capacity_) < static_cast<unsigned int>(end) + 2) {
			grow(static_cast<unsigned int>(end) + 1);
		}
		text_[end] = c;
		text_[end + 1] = 0;
		length_ = end + 1;
	}
	// Numbers in decimal, the same text on every system.
	void append(int value);
	void append(unsigned int value);
	void append(long long value);
	void append(unsigned long long value);
	// Six digits behind the point, as "%f" writes.
	//
	// kept: a text of more than 32 characters is cut to its first 31.
	void append(float value);
	void append(double value);
	// printf-style. A text of more than 512 bytes is cut there, and a zero byte in it ends it.
	void append_formatted(const char* format, ...);
	// `count` bytes, none if `count` is below 1.
	//
	// kept: writes no terminator. Until the next operation that does, only length() tells where the
	// text ends, and char_p() isn't a terminated text.
	void append_binary(const void* source, int count);
	// `count` bytes and a terminator.
	void push_back(const void* source, unsigned int count);
	// Appends what `write` puts to the address that it is given: the bytes that it returns, 1 to
	// `most`. It writes to the string's own storage where that has room for `most`.
	template <size_t most, typename Write> void append_written(Write write) {
		if (capacity_ - length_ <= static_cast<int>(most)) {
			char text[most];
			push_back(text, static_cast<unsigned int>(write(text)));
			return;
		}
		char* const end = text_ + length_;
		const int count = write(end);
		length_ += count;
		end[count] = 0;
	}
	// push_back() of a value's bytes without a call, while there is room.
	template <typename Value> void push_back_value(Value value) {
		const auto end = static_cast<unsigned int>(length_);
		if (static_cast<unsigned int>(capacity_) <= end + sizeof(Value)) {
			push_back(&value, sizeof(Value));
			return;
		}
		char* const target = text_ + end;
		length_ = static_cast<int>(end + sizeof(Value));
		std::memcpy(target, &value, sizeof(Value));
		target[sizeof(Value)] = 0;
	}

	// A copy of this string, cursor included, with the other appended.
	xylVarString operator+(const xylVarString& other) const;
	xylVarString operator+(int value) const;
	xylVarString operator+(const char* other) const;

	// --- Middle of the string

	// Removes `count` bytes from `start` on, or as many as there are. The string must have storage.
	void delete_range(int start, int count);
	// Inserts in front of `position`, 0 to length(). Allocates a temporary of the tail.
	void insert(int position, const xylVarString& source);
	void insert(int position, char c);
	// Removes the bytes from `start` up to but not including `end`. Allocates a temporary of the
	// tail.
	//
	// kept: if nothing follows `end`, only the length is cut. The old terminator stays where it
	// was: whatever reads up to the terminator still sees the old text, and recalculate_length()
	// brings the old length back.
	void remove(int start, int end);

	// --- Comparison and hashing

	// Whether `a` sorts before `b`, up to the terminators, bytes taken as unsigned; without
	// `case_sensitive` A to Z count as a to z. Equal strings give false. Does not allocate.
	static bool compare_strings(const xylVarString& a, const xylVarString& b, bool case_sensitive);

	// --- Cursor. None of these tests that the cursor stays in range.

	void reset_cursor(int position) { cursor_ = position; }
	int get_cursor_position() const { return cursor_; }
	void advance_cursor_by(int count) { cursor_ += count; }
	// Whether the cursor, taken as unsigned, is not below the length.
	bool eof() const {
		return static_cast<unsigned int>(cursor_) >= static_cast<unsigned int>(length_);
	}
	// eof(), or the cursor stands on the last byte and that is a space.
	bool tcp_eof() const;
	// Bytes from the cursor to the end.
	int stream_length() const { return length_ - cursor_; }
	void consume_all() { cursor_ = length_; }
	// To the first `c` at or behind the cursor, or else to the end.
	void move_cursor_to_next_char(char c);
	// Copies `count` bytes from the cursor on, and advances it; the text isn't shortened.
	void pop_front(void* target, unsigned int count);

	// --- Tokens. A separator is any byte below 33; bytes of 128 and above belong to tokens.

	// Moves the cursor over separators. Whether a token is then under it.
	bool has_more_tokens();
	// Reads the next token, without allocation. A token in double quotes may hold separators.
	//
	// `token`  room for 8192 bytes; terminated, and empty at the end of the text, which an empty
	//          quoted token can't be told from; what stands behind the terminator means nothing
	// `size`   its length, at most 8192
	//
	// kept: a token of 8192 bytes or more ends there, and its last byte gives way to the terminator
	// while `size` is 8192. A quoted token steps over one byte behind the last that it copied,
	// whether that is the closing quote or not: without one the cursor ends behind the length.
	void next_token(char* const token, int& size);
	// The same without the limit. `token` keeps its cursor, and must not be this string.
	void next_token_str(xylVarString& token);
	// Reads a decimal number of digits, "+" and "-" as atoi() does, saturating at 32 bits. A number
	// text of 20 characters or more ends the process. `value` is set on success only.
	//
	// kept: the byte that ends the number is consumed, and at the very end of the text the last
	// digit is not read: "12" gives 1, and "1" gives 0. A separator behind the number avoids that.
	Read_token_result try_next_token_int(int& value);
	// The same in 64 bits as strtoull() does, where a minus sign wraps around. The byte that ends
	// the number stays under the cursor, and a number at the end of the text keeps all its digits.
	Read_token_result try_next_token_int64(long long& value);
	// The values alone; on a failed read the result is unspecified.
	int next_token_int();
	long long next_token_int64();
	// The bytes from the cursor up to the next line feed or the end; a carriage return stays in the
	// line.
	//
	// kept: the cursor stops at the line feed and not behind it, and the caller must step over it.
	xylVarString get_line();
	// Appends `count` bytes from the source's cursor on, and advances that.
	void get_front_str(xylVarString& source, unsigned int count);

	// --- Search and conversion

	// The index of the first occurrence, or -1. An empty text is found at 0.
	int find_first_occurence(const xylVarString& text) const;
	// How many `c` stand in front of the terminator.
	int get_count(char c) const;
	// The number at the start of the text, 0 if there is none, as atoi() and atof() read it in the
	// "C" locale; integers saturate at 32 bits. The string must have storage.
	int to_int() const;
	float to_float() const;

	// --- Transforms

	// Removes leading and trailing tabs, line feeds, carriage returns and spaces. The cursor stays.
	//
	// kept: of a string of nothing else only the length becomes 0; bytes and terminator stay.
	void trim();
	xylVarString trimmed() const;
	// A new string without the parts from "<" to ">". A "<" without a ">" stays, with all that
	// follows it.
	xylVarString remove_capped_parts() const;
	// The same, but the first "<img" ends it: from the part removed last on all stays, other parts
	// behind the image included.
	xylVarString remove_capped_parts_except_img() const;
	// Replaces the first occurrence, found up to the terminator. False, with nothing changed, if
	// there is none or one of the two is empty; null counts as empty.
	bool replace(const xylVarString& search, const xylVarString& replacement);
	bool replace(const char* search, const char* replacement) override;
	// A new string in which each `c` is replaced; null and "" drop it.
	xylVarString replace(char c, const char* replacement) const;
	// Each `from` up to the terminator. The string must have storage.
	void replace_char_with(char from, char to);
	// Each byte that is in `set`, up to the terminator. The string must have storage.
	void replace_all_with(const char* set, char to);
	// Removes white space, up to the terminator.
	//
	// kept: every byte that is 32 or less as a signed value goes, so those of 128 and above, too.
	void remove_white_spaces();
	// Keeps letters, digits and "_", up to the terminator. The string must have storage.
	void remove_non_alphanumeric();
	// Turns backslash-n and backslash-r into line feed and carriage return.
	void replace_new_line_codes_with_new_lines();

	// Whether `text` passes `filter`, a list of words separated by spaces which all must hold;
	// an empty filter passes everything. Case-sensitive.
	//
	//   -word   the text doesn't contain the word
	//   .word   the text begins with it
	//   word.   the text ends with it
	//   word    the text contains it, as for every word of one character
	//
	// The tests come in this order: ".word." is a beginning of "word.".
	static bool matches_filter(const xylVarString& text, const xylVarString& filter);

	// --- Files, which must be open

	// Replaces the text by at most `count` bytes from the file's position on; fewer where the file
	// ends. 0 means as many as the whole file has; what has no size, such as a pipe, counts as
	// empty. For no bytes, and for more than a text can have (2 GiB less two), the string stays as
	// it is. The cursor stays.
	//
	// kept: the whole file's size, too, when part of it was read before: the read then just ends
	// early, in storage that is larger than needed.
	void read_file(xylFile* file, unsigned int count);
	// Writes length() bytes, zero bytes included. A failure is not noticed.
	void write_file(xylFile* file) const;

	// --- For tests

	// Whether the fields agree with each other: no storage and all numbers 0, or a length below the
	// capacity, which the heap block has.
	bool is_valid() const;

protected:
	// Puts all fields back without freeing anything.
	void str_init();

	// While text_ is null, length_ and capacity_ are 0; else length_ < capacity_.
	int capacity_ = 0; // bytes of storage, terminator included
	int cursor_ = 0;   // where the cursor operations read next

private:
	// Where a token stands in the text, without its quotes.
	struct Token_range {
		const char* start;
		int size; // 0: an empty quoted token, or none
	};
	// Moves the cursor over the next token, of which at most `limit` bytes are taken.
	Token_range take_token(int limit);
	void copy_token(char* target, Token_range range) const;
	xylVarString without_capped_parts(bool stop_at_image) const;
	// Removes all else up to the terminator.
	void keep_only(bool (*wanted)(char));

	char* move_to_larger(unsigned int length);
	void grow(unsigned int length);
	void append_growing(const char* source, size_t count, unsigned int end);
	void append_bytes(const char* source, size_t count);
	void assign_bytes(const char* source, size_t count);
	void terminate() {
		if (text_) text_[length_] = 0;
	}
};
static_assert(sizeof(xylVarString) == 32); // the two numbers begin right behind the base's

// FNV-1a in 64 bits over length() bytes.
class MORVANTIS_API xylVarStringHashFunction {
public:
	size_t operator()(const xylVarString& text) const;
};

// Equality as of operator==.
class MORVANTIS_API xylVarStringSetEqual {
public:
	bool operator()(const xylVarString& a, const xylVarString& b) const;
};
