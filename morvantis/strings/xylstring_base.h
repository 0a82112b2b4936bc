// What every 8-bit string of the library can do without knowing where its characters live.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API

#include <cstring> // strcmp, for the comparison

class xylVarString;

// A pointer to zero-terminated 8-bit text and its length; xylConstString<N> adds storage inside
// the object, xylVarString storage on the heap.
//
// Characters are bytes and their tests are plain ASCII: no locale, no multi-byte awareness, except
// in copy_to_wchar(). The length usually agrees with the position of the terminator, but not
// after every operation: xylVarString names those where it does not. Where a comment says "up to
// the terminator", it is the terminator that counts, and the length where it says nothing.
//
// Preconditions of all operations: indices are not tested, and a null `const char*` is not
// accepted, unless the comment says so. A string without storage (null text, length 0) may be
// compared and searched, but not written to at an index.
//
// Threads: a string belongs to one thread at a time.
class MORVANTIS_API xylString_base {
public:
	// A string without storage.
	xylString_base() = default;
	// Copies pointer and length, not the characters: for the constructors of the classes behind it,
	// which aim the pointer anew.
	xylString_base(const xylString_base& source) = default;
	virtual ~xylString_base() = default;

	// kept: forwards to itself through the same entry of the virtual table, so a call does not
	// return unless a derived class replaces it. The operations behind it depend on its place.
	virtual void operator=(const unsigned char* source);
	// Takes over the text of `source` up to its terminator.
	virtual void operator=(const char* source) = 0;
	// Takes over `count` bytes of `source`, zero bytes included.
	virtual void set(const char* source, int count) = 0;
	// Replaces the first occurrence of `search`. False, with nothing changed, if there is none.
	virtual bool replace(const char* search, const char* replacement) = 0;

	// The virtual assignment of the source's char_p(): the text ends at its first zero byte.
	xylString_base& operator=(const xylString_base& source);

	// --- Access

	char& operator[](unsigned int index) { return text_[index]; }
	const char& operator[](unsigned int index) const { return text_[index]; }
	int length() const { return length_; }
	bool is_empty() const { return length_ == 0; }
	// Whether there is no storage yet. An empty string may or may not have storage.
	bool is_buffer_null() const { return text_ == nullptr; }
	// The text; never null, since a string without storage answers with a shared empty literal.
	const char* char_p() const { return text_ ? text_ : empty_literal_; }
	// Sets the length to the distance to the first zero byte: the way back after the text was
	// written from outside.
	void recalculate_length();

	// --- Comparison. Bytes compare as unsigned values.

	// Lengths first, then byte by byte up to the terminator. Two empty strings are equal.
	bool operator==(const char* other) const;
	bool operator==(const xylString_base& other) const {
		return length_ == other.length_ && (length_ == 0 || std::strcmp(text_, other.text_) == 0);
	}
	bool operator!=(const char* other) const { return !(*this == other); }
	bool operator!=(const xylString_base& other) const { return !(*this == other); }

	// Byte by byte up to the terminator. A string of length 0 sorts before any other.
	bool operator<(const xylString_base& other) const;
	bool operator<=(const xylString_base& other) const;
	bool operator>(const xylString_base& other) const;
	bool operator>=(const xylString_base& other) const;

	// Equal lengths and equal text up to the terminator; without `case_sensitive`, A to Z and
	// a to z are the same.
	bool same_as(const char* other, bool case_sensitive) const;
	bool same_as(const xylString_base& other, bool case_sensitive) const;

	// Exact. An empty prefix is in front of every string; a null `const char*` counts as empty.
	// Neither form allocates.
	bool begins_with(const char* prefix) const;
	bool begins_with(const xylString_base& prefix) const;
	// Compares the tail up to the terminator. An empty suffix is behind every string.
	bool ends_with(const char* suffix, bool case_sensitive) const;
	// Whether the bytes from `start` up to but not including min(end, length()) are exactly those
	// of `other`. An empty range equals an empty `other` only.
	bool substring_equals(int start, int end, const xylString_base& other) const;

	// Whether the text up to the terminator holds that of `other`; an empty one is in every text.
	bool contains(const xylString_base& other) const;
	bool contains(const char* other) const;

	// Whether the whole text up to the terminator matches `pattern`, an ECMAScript regular
	// expression, which is compiled on each call.
	//
	// A bad pattern throws std::regex_error. Allocates from the C++ runtime.
	bool regex_match(const xylString_base& pattern) const;

	// --- Search. The result is the index of the match, or -1. None of these allocates.

	// Forward from `start`; -1 also if `start`, taken as unsigned, is not below the length.
	int search_char(char c, int start) const;
	// Backward from `end` - 1 down to and including `low`; an `end` of -1 means the length.
	int search_char_reverse(char c, int low, int end) const;
	// Forward from `start` (0 or more). An empty `s` is found at `start`, unless that is behind the
	// end; a null `const char*` counts as empty.
	int search_string(const char* s, int start) const;
	int search_string(const xylString_base& s, int start) const;
	// Backward: the last match that lies in the bytes from `low` (0 or more) up to but not
	// including `end`; an `end` of -1 means the length. A null `const char*` counts as empty.
	int search_string_reverse(const char* s, int low, int end) const;
	int search_string_reverse(const xylString_base& s, int low, int end) const;

	// --- Numbers

	// The text as a decimal number, wrapping at 32 bits; a "-" as first character negates. 0 for
	// the empty string.
	//
	// kept: no byte is tested for being a digit: "1a" is 10 + 'a' - '0'. check_int_value() tests.
	int get_int_value() const;
	// The same with a test: false, with the value so far and not negated, at the first character
	// that is no digit. Carriage returns and line feeds are skipped wherever they stand.
	// An empty string is 0 and true.
	bool check_int_value(int& value) const;

	// --- Changes in place, over length() bytes

	void replace_underscores_with_spaces();
	void replace_spaces_with_underscores();
	void replace_backslashes(); // by slashes
	void convert_to_uppercase();
	void convert_to_lowercase();
	bool has_uppercase_characters() const;
	void capitalize_initial();
	// Whether every byte is a letter, a digit or "_"; true for the empty string.
	bool is_alphanumeric_or_underscore() const;
	// "_" becomes a space, too.
	void replace_nonalphanumerics_with_spaces();
	// The string must not be empty.
	void replace_last_char_with(char c) { text_[length_ - 1] = c; }
	// Cuts the string at the first `c`, which goes too; without one nothing happens.
	void remove_after_character(char c);
	// Removes every `c`.
	void remove_characters(char c);
	// Removes leading `c`.
	//
	// kept: the last byte is not looked at, so a string of nothing but `c` keeps one.
	void trim_characters_from_start(char c);
	// Removes trailing `c`.
	//
	// kept: the first byte is not looked at, so a string of nothing but `c` keeps one.
	void trim_characters_from_end(char c);
	// Collapses each run of spaces to one.
	//
	// kept: a run at the end of the string stays as it is, and behind a collapsed run as many bytes
	// go unexamined as were removed, so that a second run within them survives.
	void remove_extra_spaces();
	// The runtime's mbstowcs() into `target`, at most `count` characters: its current locale
	// decides, and a text that fills `target` is not terminated.
	void copy_to_wchar(wchar_t* target, int count) const;

	// The bytes from `start` up to but not including min(end, length()); a negative `end` means the
	// length. An empty range gives an empty string. Allocates the result, even an empty one.
	//
	// kept: not const.
	xylVarString get_substring(int start, int end);

protected:
	// One zero byte that stands for the text of every string without storage; never written.
	static const char empty_literal_[1];

	char* text_ = nullptr; // the characters; null: no storage yet
	int length_ = 0;       // number of characters
};
static_assert(sizeof(xylString_base) == 24);
