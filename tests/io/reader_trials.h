// What both readers over a string do alike, for the suites of the two.
#pragma once

#include <morvantis/math/xylint_vec3.h>
#include <morvantis/strings/xylvarstring.h>

#include "recording_host.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>

inline std::string text_of(const xylVarString& text) {
	return std::string(text.char_p(), static_cast<size_t>(text.length()));
}

// A reader over `text`. Constructors take a string of their own kind, const or not.
template <typename Reader> Reader reader_of(const char* text) {
	xylVarString source(text);
	return Reader(source);
}

template <typename Reader> void copies_and_moves_take_the_cursor() {
	xylVarString text("1 2 3 ");
	text.reset_cursor(2);
	Reader reader(text);
	EXPECT_EQ(text.get_cursor_position(), 2);
	EXPECT_EQ(text_of(text), "1 2 3 ");
	EXPECT_EQ(reader.source.get_cursor_position(), 2);

	Reader copy(reader);
	int value = 0;
	EXPECT_TRUE(copy.read(value));
	EXPECT_EQ(value, 2);
	EXPECT_EQ(reader.source.get_cursor_position(), 2);

	Reader moved(std::move(copy));
	EXPECT_TRUE(copy.source.is_empty());
	EXPECT_EQ(copy.source.get_cursor_position(), 0);
	EXPECT_TRUE(moved.read(value));
	EXPECT_EQ(value, 3);

	Reader assigned = reader_of<Reader>("9 ");
	assigned = reader;
	EXPECT_EQ(text_of(assigned.source), "1 2 3 ");
	EXPECT_EQ(assigned.source.get_cursor_position(), 2);
	assigned = std::move(moved);
	EXPECT_TRUE(moved.source.is_empty());
	EXPECT_FALSE(assigned.has_unread_data());
}

template <typename Reader> void unread_data_is_a_byte_above_32() {
	Reader blank = reader_of<Reader>(" \t\r\n ");
	EXPECT_FALSE(blank.has_unread_data());
	EXPECT_EQ(blank.source.get_cursor_position(), 5);
	Reader empty = reader_of<Reader>("");
	EXPECT_FALSE(empty.has_unread_data());
	Reader text = reader_of<Reader>(" \x1f !");
	EXPECT_TRUE(text.has_unread_data());
	EXPECT_EQ(text.source.get_cursor_position(), 3);
	EXPECT_TRUE(text.has_unread_data());
	Reader high = reader_of<Reader>("\xff");
	EXPECT_TRUE(high.has_unread_data());
}

template <typename Reader> void numbers_are_read_in_turn() {
	Reader reader = reader_of<Reader>(" -5 4294967295 -1 ");
	int i = 0;
	EXPECT_TRUE(reader.read(i));
	EXPECT_EQ(i, -5);
	unsigned int u = 0;
	EXPECT_TRUE(reader.read(u));
	EXPECT_EQ(u, static_cast<unsigned int>(INT_MAX)) << "32-bit numbers are signed";
	EXPECT_TRUE(reader.read(u));
	EXPECT_EQ(u, UINT_MAX);
	xylInt64 i64 = 0;
	Reader wide = reader_of<Reader>("-922337203685477580 9223372036854775807 -1 ");
	EXPECT_TRUE(wide.read(i64));
	EXPECT_EQ(i64, -922337203685477580);
	xylUInt64 u64 = 0;
	EXPECT_TRUE(wide.read(u64));
	EXPECT_EQ(u64, 9223372036854775807u);
	EXPECT_TRUE(wide.read(u64));
	EXPECT_EQ(u64, ULLONG_MAX);
	Reader small = reader_of<Reader>("0 7 2.5 1 2 3 ");
	bool flag = true;
	EXPECT_TRUE(small.read(flag));
	EXPECT_FALSE(flag);
	EXPECT_TRUE(small.read(flag));
	EXPECT_TRUE(flag);
	float f = 0;
	EXPECT_TRUE(small.read(f));
	EXPECT_EQ(f, 2.5f);
	xylInt_vec3 v(0, 0, 0);
	EXPECT_TRUE(small.read(v));
	EXPECT_EQ(v, xylInt_vec3(1, 2, 3));
}

template <typename Reader> void floats_are_scanned() {
	struct Case {
		const char* text;
		float value; // 7 where nothing matches
	};
	const Case cases[] = {
		{"0.1", 0.1f},
		{"-1e3x", -1000},
		{"+.5 8", 0.5f},
		{"0x10", 16},
		// no number: the target stays
		{"abc", 7},
		{"", 7},
		{"-", 7},
		{"1e", 7},
		{"\"\"", 7},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.text);
		Reader reader = reader_of<Reader>(c.text);
		float value = 7;
		EXPECT_TRUE(reader.read(value));
		EXPECT_EQ(value, c.value);
	}
	// The whole token is taken, number or not.
	Reader reader = reader_of<Reader>("1.5x 2.5");
	float value = 0;
	reader.read(value);
	reader.read(value);
	EXPECT_EQ(value, 2.5f);
}

struct String_case {
	const char* source;
	const char* value;
	bool is_read;
};

inline constexpr String_case string_cases[] = {
	{"5 hello", "hello", true},
	{"6 he llo", "he llo", true},
	{"  6   he \t\n llo  ", "he llo", true}, // white space becomes one blank
	{"5 he  llo", "he llo", false},          // words are appended whole
	{"5 he llo", "he llo", false},
	{"2 hello", "hello", false},
	{"3 \"a b\"", "a b", true},
	// the blank behind a word doesn't count before the next one is taken
	{"3 ab cd", "ab cd", false},
	{"3 ab \"\" cd", "ab ", true},
	{"3 ab ", "ab ", true},
	// a text that ends early is filled up with blanks
	{"5 ab", "ab   ", true},
	{"3 ", "   ", true},
	// no words are read
	{"0 hello", "", true},
	{"-3 hello", "", false},
};

template <typename Reader> void word_behind_a_full_string_is_taken() {
	Reader reader = reader_of<Reader>("3 ab 7 8 ");
	xylVarString value;
	EXPECT_FALSE(reader.read(value));
	EXPECT_EQ(text_of(value), "ab 7");
	int next = 0;
	EXPECT_TRUE(reader.read(next));
	EXPECT_EQ(next, 8);
}

template <typename Reader> void one_string_is_read_like_the_table(const String_case& c) {
	Reader reader = reader_of<Reader>(c.source);
	xylVarString value("before");
	EXPECT_EQ(reader.read(value), c.is_read);
	EXPECT_EQ(text_of(value), c.value);
	EXPECT_TRUE(value.is_valid());
}

template <typename Reader, typename Value>
void not_implemented_for(Value before, const char* text) {
	for (int i = 0; i < 2; ++i) {
		Reader reader = reader_of<Reader>("1 2 ");
		Value value = before;
		EXPECT_FALSE(reader.read(value));
		EXPECT_EQ(value, before);
		EXPECT_EQ(reader.source.get_cursor_position(), 0);
		EXPECT_EQ(Recording_host::get().take(), (std::vector<Host_call>{{"warning", text, {0}}}));
	}
}
