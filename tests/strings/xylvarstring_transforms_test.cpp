// Transforms that go beyond plain editing: trimming, tags, replacement, the filter language.

#include <morvantis/strings/xylvarstring.h>

#include "string_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>

namespace {

struct Case {
	const char* text;
	const char* result;
};

TEST(xylVarString, TrimsTabsLineEndsAndSpaces) {
	const Case cases[] = {
		{"abc", "abc"},
		{" \t\r\nabc\n\r\t ", "abc"},
		{" a b ", "a b"},
		{"", ""},
		{"\x01 a", "\x01 a"},
		{"a \v", "a \v"},
		{"a ", "a"},
		{" a", "a"},
		{"\xa0"
	     "a",
	     "\xa0"
	     "a"},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.text);
		xylVarString text(c.text);
		text.reset_cursor(2);
		EXPECT_EQ(text_of(text.trimmed()), c.result);
		EXPECT_EQ(text_of(text), c.text) << "trimmed() is a copy";
		text.trim();
		EXPECT_EQ(text_of(text), c.result);
		EXPECT_TRUE(is_terminated(text));
		EXPECT_EQ(text.get_cursor_position(), 2) << "the cursor isn't adjusted";
	}
	xylVarString zeros(" \0 ", 3);
	zeros.trim();
	EXPECT_EQ(text_of(zeros), std::string("\0", 1));
}

TEST(xylVarString, TrimmingWhiteSpaceAloneKeepsItsBytes) {
	xylVarString text(" \t\n ");
	text.trim();
	EXPECT_EQ(text.length(), 0);
	EXPECT_STREQ(text.char_p(), " \t\n ");
	text.recalculate_length();
	EXPECT_EQ(text.length(), 4);
	EXPECT_EQ(text.trimmed().length(), 0);
	xylVarString none;
	none.trim();
	EXPECT_TRUE(none.is_buffer_null());
	EXPECT_EQ(none.trimmed().length(), 0);
}

TEST(xylVarString, RemovesCappedParts) {
	struct Capped_case {
		const char* text;
		const char* result;
		const char* except_img;
	};
	const Capped_case cases[] = {
		{"", "", ""},
		{"no tags", "no tags", "no tags"},
		{"a<b>c", "ac", "ac"},
		{"<b>a</b>", "a", "a"},
		{"<b><i></i></b>", "", ""},
		{"a<b", "a<b", "a<b"},
		{"a>b", "a>b", "a>b"},
		{"a>b<c>d", "a>bd", "a>bd"},
		{"a<b<c>d", "ad", "ad"},
		{"a<b>c<d", "ac<d", "ac<d"},
		{"<>", "", ""},
		{"<", "<", "<"},
		{">", ">", ">"},
		// the image ends the walk: all behind the last removed part stays
		{"a<b>c<img x>d<e>f", "acdf", "ac<img x>d<e>f"},
		{"<img>a", "a", "<img>a"},
		{"<b>a<imgs>", "a", "a<imgs>"},
		{"a<IMG>b", "ab", "ab"},
		{"a<im>b", "ab", "ab"},
		// fewer than four bytes from the "<" on
		{"a<i>", "a", "a"},
		{"a<im", "a<im", "a<im"},
		{"a<img", "a<img", "a<img"},
	};
	for (const Capped_case& c : cases) {
		SCOPED_TRACE(c.text);
		xylVarString text(c.text);
		text.reset_cursor(1);
		const xylVarString removed = text.remove_capped_parts();
		EXPECT_EQ(text_of(removed), c.result);
		EXPECT_TRUE(is_terminated(removed));
		EXPECT_EQ(removed.get_cursor_position(), 0);
		EXPECT_EQ(text_of(text.remove_capped_parts_except_img()), c.except_img);
		EXPECT_EQ(text_of(text), c.text);
	}
}

TEST(xylVarString, ReplacesTheFirstOccurrence) {
	struct Replace_case {
		const char* text;
		const char* search;
		const char* replacement;
		bool found;
		const char* result;
	};
	const Replace_case cases[] = {
		{"abab", "ab", "x", true, "xab"},   {"xaby", "ab", "cde", true, "xcdey"},
		{"xabyz", "ab", "c", true, "xcyz"}, {"xaby", "ab", "", true, "xy"},
		{"ab", "ab", "", true, ""},         {"ab", "ab", "abab", true, "abab"},
		{"abc", "x", "y", false, "abc"},    {"abc", "", "y", false, "abc"},
		{"", "a", "y", false, ""},          {"", "", "y", false, ""},
		{"xab", "ab", "y", true, "xy"},
	};
	for (const Replace_case& c : cases) {
		SCOPED_TRACE(std::string(c.text) + ": " + c.search + " by " + c.replacement);
		xylVarString text(c.text);
		EXPECT_EQ(text.replace(xylVarString(c.search), xylVarString(c.replacement)), c.found);
		EXPECT_EQ(text_of(text), c.result);
		EXPECT_EQ(text.char_p()[text.length()], 0);
		xylVarString through_base(c.text);
		EXPECT_EQ(static_cast<xylString_base&>(through_base).replace(c.search, c.replacement),
		          c.found);
		EXPECT_EQ(text_of(through_base), c.result);
	}
	xylVarString text("abc");
	EXPECT_FALSE(text.replace(static_cast<const char*>(nullptr), "x"));
	EXPECT_TRUE(text.replace("b", static_cast<const char*>(nullptr)));
	EXPECT_EQ(text_of(text), "ac");
	xylVarString zeros("a\0b", 3);
	EXPECT_FALSE(zeros.replace("b", "c")) << "found up to the terminator only";
}

TEST(xylVarString, ReplacesByItsOwnText) {
	xylVarString text("abc");
	EXPECT_TRUE(text.replace(xylVarString("b"), text));
	EXPECT_EQ(text_of(text), "aabcc");
	EXPECT_TRUE(text.replace(text, xylVarString("x")));
	EXPECT_EQ(text_of(text), "x");
	EXPECT_TRUE(text.replace(text, text));
	EXPECT_EQ(text_of(text), "x");
	text = "abc";
	EXPECT_TRUE(text.replace("b", text.char_p()));
	EXPECT_EQ(text_of(text), "aabcc");
	EXPECT_EQ(text_of(text.replace('c', text.char_p())), "aabaabccaabcc");
}

TEST(xylVarString, ReplacesEachCharacterInACopy) {
	const xylVarString text("a-b-");
	EXPECT_EQ(text_of(text.replace('-', "=>")), "a=>b=>");
	EXPECT_EQ(text_of(text.replace('-', "")), "ab");
	EXPECT_EQ(text_of(text.replace('-', nullptr)), "ab");
	EXPECT_EQ(text_of(text.replace('x', "y")), "a-b-");
	EXPECT_EQ(text_of(text), "a-b-");
	EXPECT_EQ(xylVarString().replace('a', "b").length(), 0);
	EXPECT_EQ(text_of(xylVarString("a\0b", 3).replace('\0', "x")), "axb");
}

TEST(xylVarString, ReplacesCharactersUpToTheTerminator) {
	xylVarString text("abcab\0a", 7);
	text.replace_char_with('a', 'x');
	EXPECT_EQ(text_of(text), std::string("xbcxb\0a", 7));
	text.replace_all_with("bx", '.');
	EXPECT_EQ(text_of(text), std::string("..c..\0a", 7));
	text.replace_all_with("", '!');
	EXPECT_EQ(text_of(text), std::string("..c..\0a", 7));
	text.replace_char_with('c', '\0');
	EXPECT_EQ(text_of(text), std::string("..\0..\0a", 7)) << "the length stays";
}

TEST(xylVarString, RemovesWhiteSpaceAndAllBytesOf128AndAbove) {
	std::string bytes, kept;
	for (int i = 1; i < 256; ++i) {
		bytes += static_cast<char>(i);
		if (i > 32 && i < 128) kept += static_cast<char>(i);
	}
	xylVarString text(bytes);
	text.remove_white_spaces();
	EXPECT_EQ(text_of(text), kept);
	EXPECT_TRUE(is_terminated(text));
	xylVarString zeros("a b\0c d", 7);
	zeros.remove_white_spaces();
	EXPECT_EQ(text_of(zeros), "ab") << "works up to the terminator";
	xylVarString blank(" \t ");
	blank.remove_white_spaces();
	EXPECT_EQ(blank.length(), 0);
	EXPECT_STREQ(blank.char_p(), "");
	xylVarString none;
	none.remove_white_spaces();
	EXPECT_TRUE(none.is_buffer_null());
}

TEST(xylVarString, KeepsLettersDigitsAndUnderscores) {
	std::string bytes, kept;
	for (int i = 1; i < 256; ++i) {
		const char c = static_cast<char>(i);
		bytes += c;
		if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
		    c == '_') {
			kept += c;
		}
	}
	xylVarString text(bytes);
	text.remove_non_alphanumeric();
	EXPECT_EQ(text_of(text), kept);
	EXPECT_TRUE(is_terminated(text));
	xylVarString nothing("-+*");
	nothing.remove_non_alphanumeric();
	EXPECT_EQ(nothing.length(), 0);
}

TEST(xylVarString, TurnsNewLineCodesIntoNewLines) {
	const Case cases[] = {
		{"a\\nb", "a\nb"},       {"a\\rb", "a\rb"},  {"\\n", "\n"},  {"a\\n", "a\n"},
		{"\\n\\r\\n", "\n\r\n"}, {"a\\tb", "a\\tb"}, {"a\\", "a\\"}, {"\\", "\\"},
		{"\\\\n", "\\\n"},       {"a", "a"},         {"abc", "abc"}, {"nr", "nr"},
		{"a\\n\\", "a\n\\"},     {"\\na", "\na"},    {"\\N", "\\N"}, {"", ""},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.text);
		xylVarString text(c.text);
		text.replace_new_line_codes_with_new_lines();
		EXPECT_EQ(text_of(text), c.result);
		EXPECT_TRUE(is_terminated(text));
	}
	xylVarString one("abc");
	one.set_length_externally(1);
	one[1] = 'x';
	one.replace_new_line_codes_with_new_lines();
	EXPECT_STREQ(one.char_p(), "a") << "a length of 1 rewrites the terminator";
}

TEST(xylVarString, FiltersTextsByWords) {
	struct Filter_case {
		const char* text;
		const char* filter;
		bool matches;
	};
	const Filter_case cases[] = {
		// words that are contained
		{"red apple", "", true},
		{"", "", true},
		{"red apple", "app", true},
		{"red apple", "App", false},
		{"red apple", "apple red", true},
		{"red apple", "apple green", false},
		{"red apple", "green apple", false},
		{"", "a", false},
		// of one character, whatever it is
		{"red apple", "-", false},
		{"red-apple", "-", true},
		{"red apple", ".", false},
		{"red.apple", ".", true},
		{"red apple", "p", true},
		// none at all
		{"red apple", " ", true},
		{"red apple", "red ", true},
		{"red apple", "  red   apple  ", true},
		// excluded
		{"red apple", "-green", true},
		{"red apple", "-red", false},
		{"red apple", "-ppl", false},
		{"red apple", "red -green", true},
		{"red-apple", "--", false},
		{"red apple", "-r.", true},
		// at the start
		{"red apple", ".red", true},
		{"red apple", ".apple", false},
		{"red. apple", ".red.", true},
		{"red apple", ".red.", false},
		{"red", ".redd", false},
		{"-red", ".-red", true},
		// at the end
		{"red apple", "apple.", true},
		{"red apple", "red.", false},
		{"red apple", "Apple.", false},
		{"le", "apple.", false},
		{"red apple", ".red apple. -green pp", true},
		// white space and bytes of 128 and above go from the words
		{"red apple", "a\tp\np", true},
		{"red apple",
	     "\xe4"
	     "app",
	     true},
		{"red apple", "-\xe4", false},
		{"red-apple", "-\xe4", true},
	};
	for (const Filter_case& c : cases) {
		SCOPED_TRACE(std::string(c.text) + " through " + c.filter);
		EXPECT_EQ(xylVarString::matches_filter(c.text, c.filter), c.matches);
	}
}

// The filter in terms of standard strings.
bool plain_filter(const std::string& text, const std::string& filter) {
	std::istringstream words(filter);
	bool matches = true;
	for (std::string word; std::getline(words, word, ' ');) {
		std::erase_if(word, [](char c) { return static_cast<signed char>(c) <= 32; });
		const bool is_long = word.size() >= 2;
		if (is_long && word.front() == '-') {
			matches &= text.find(word.substr(1)) == std::string::npos;
		} else if (is_long && word.front() == '.') {
			matches &= text.starts_with(word.substr(1));
		} else if (is_long && word.back() == '.') {
			matches &= text.ends_with(word.substr(0, word.size() - 1));
		} else {
			matches &= text.find(word) != std::string::npos;
		}
	}
	return matches;
}

TEST(xylVarString, RandomFiltersAgreeWithAPlainOne) {
	std::mt19937_64 random(34);
	const auto random_text = [&random](const std::string& letters, size_t limit) {
		std::string text(random() % limit, ' ');
		for (char& c : text) c = letters[random() % letters.size()];
		return text;
	};
	int matched = 0;
	for (int round = 0; round < 20000; ++round) {
		const std::string text = random_text("aab.-", 12);
		const std::string filter = random_text("aab.- \t", 10);
		SCOPED_TRACE(text + " through " + filter);
		const bool matches = xylVarString::matches_filter(text, filter);
		ASSERT_EQ(matches, plain_filter(text, filter));
		matched += matches ? 1 : 0;
	}
	EXPECT_GT(matched, 2000);
	EXPECT_LT(matched, 18000);
}

} // namespace
