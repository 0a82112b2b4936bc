// What every string can do: comparison, search, numbers and changes in place, on both kinds of
// storage and on none.

#include <morvantis/strings/xylstring_base.h>

#include <morvantis/strings/find_bytes.h>
#include <morvantis/strings/xylconststring.h>
#include <morvantis/strings/xylvarstring.h>

#include "string_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <clocale>
#include <limits>
#include <random>
#include <regex>
#include <vector>

namespace {

// Replaces the entry that forwards to itself, to see a call arrive through the table.
class Catching_string : public xylVarString {
public:
	using xylVarString::operator=;
	void operator=(const unsigned char* source) override { caught = source; }
	const unsigned char* caught = nullptr;
};

// Adds no storage of its own, so it shows what the base's constructors leave.
class Bare_string : public xylString_base {
public:
	Bare_string() = default;
	explicit Bare_string(const xylString_base& source) : xylString_base(source) {}
	using xylString_base::operator=;
	void operator=(const char*) override {}
	void set(const char*, int) override {}
	bool replace(const char*, const char*) override { return false; }
};

TEST(xylString_base, IsMadeWithoutStorageAndCopiedWithThePointerAlone) {
	const Bare_string none;
	EXPECT_TRUE(none.is_buffer_null());
	EXPECT_EQ(none.length(), 0);
	const xylConstString<16> source("abc");
	const Bare_string copy(source);
	EXPECT_EQ(copy.char_p(), source.char_p());
	EXPECT_EQ(copy.length(), 3);
}

TEST(xylString_base, AssignmentOfUnsignedBytesForwardsThroughTheTable) {
	Catching_string text;
	const unsigned char source[] = "abc";
	text.xylString_base::operator=(source);
	EXPECT_EQ(text.caught, source);
}

TEST(xylString_base, AssignmentOfABaseEndsAtTheFirstZeroByte) {
	const xylVarString source("ab\0cd", 5);
	xylConstString<16> target("before");
	xylString_base& base = target;
	EXPECT_EQ(&(base = source), &base);
	EXPECT_EQ(text_of(target), "ab");
}

TEST(xylString_base, HidesAMissingStorageBehindTheEmptyLiteral) {
	const xylVarString text;
	EXPECT_TRUE(text.is_buffer_null());
	EXPECT_TRUE(text.is_empty());
	ASSERT_NE(text.char_p(), nullptr);
	EXPECT_EQ(*text.char_p(), 0);
	EXPECT_EQ(text.char_p(), xylVarString().char_p());
}

TEST(xylString_base, GivesItsCharactersByIndex) {
	xylConstString<16> text("abc");
	text[1] = 'x';
	const xylString_base& constant = text;
	EXPECT_EQ(constant[0], 'a');
	EXPECT_EQ(constant[1], 'x');
	EXPECT_EQ(&constant[2], text.char_p() + 2);
}

TEST(xylString_base, RecalculatesItsLengthFromTheTerminator) {
	xylConstString<16> text("abcdef");
	text[3] = 0;
	EXPECT_EQ(text.length(), 6);
	text.recalculate_length();
	EXPECT_EQ(text.length(), 3);
	xylVarString none;
	none.recalculate_length();
	EXPECT_EQ(none.length(), 0);
}

struct Pair {
	const char* a;
	const char* b;
	int order; // of a beside b
};

TEST(xylString_base, OrdersByUnsignedBytesWithTheEmptyStringFirst) {
	const Pair cases[] = {
		{"", "", 0},      {"", "a", -1},      {"a", "", 1},       {"a", "a", 0},
		{"a", "b", -1},   {"b", "a", 1},      {"a", "ab", -1},    {"ab", "a", 1},
		{"Z", "a", -1},   {"b", "ab", 1},     {"abc", "abd", -1}, {"\x7f", "\x80", -1},
		{"\xff", "a", 1}, {"a\xff", "aa", 1},
	};
	for (const Pair& c : cases) {
		SCOPED_TRACE(std::string(c.a) + " beside " + c.b);
		const xylConstString<16> a(c.a);
		const xylVarString b(c.b);
		EXPECT_EQ(a < b, c.order < 0);
		EXPECT_EQ(a <= b, c.order <= 0);
		EXPECT_EQ(a > b, c.order > 0);
		EXPECT_EQ(a >= b, c.order >= 0);
		EXPECT_EQ(a == b, c.order == 0);
		EXPECT_EQ(a != b, c.order != 0);
		EXPECT_EQ(a == c.b, c.order == 0);
		EXPECT_EQ(a != c.b, c.order != 0);
		EXPECT_EQ(a.same_as(b, true), c.order == 0);
		EXPECT_EQ(a.same_as(c.b, true), c.order == 0);
	}
}

TEST(xylString_base, EmptyStringsAreEqualWithAndWithoutStorage) {
	const xylVarString none;
	xylVarString stored;
	stored.ensure_length(5);
	EXPECT_TRUE(none == stored);
	EXPECT_TRUE(none == "");
	EXPECT_TRUE(none.same_as(stored, true));
	EXPECT_TRUE(none.same_as(stored, false));
	EXPECT_TRUE(none.same_as("", false));
	EXPECT_FALSE(none < stored);
	EXPECT_TRUE(none >= stored);
	// What an emptied one still has in its storage doesn't count.
	xylVarString blank("  ");
	blank.trim();
	ASSERT_EQ(blank.length(), 0);
	ASSERT_STREQ(blank.char_p(), "  ");
	EXPECT_TRUE(blank == "");
	EXPECT_FALSE(blank != "");
	EXPECT_FALSE(blank == "  ");
	EXPECT_TRUE(blank == none);
	EXPECT_TRUE(blank.same_as("", true));
	EXPECT_TRUE(blank.same_as("", false));
	EXPECT_TRUE(blank <= none);
	EXPECT_FALSE(none < blank);
}

TEST(xylString_base, EqualityLooksAtLengthsFirstAndThenToTheTerminator) {
	const xylVarString a("ab\0cd", 5);
	EXPECT_TRUE(a == xylVarString("ab\0xy", 5)) << "both end for the eye behind ab";
	EXPECT_FALSE(a == xylVarString("ab"));
	EXPECT_FALSE(a == "ab");
	EXPECT_TRUE(a.same_as(xylVarString("AB\0xy", 5), false));
	// The old terminator of a text that was cut still counts.
	xylVarString cut("abcdef");
	cut.remove(3, 6);
	EXPECT_EQ(cut.length(), 3);
	EXPECT_FALSE(cut == "abc");
	EXPECT_FALSE(cut == xylVarString("abc"));
}

TEST(xylString_base, IgnoresTheCaseOfAsciiLettersOnly) {
	struct Case {
		const char* a;
		const char* b;
		bool same;
	};
	const Case cases[] = {
		{"AbC", "aBc", true},     {"az", "AZ", true},      {"abc", "abd", false},
		{"abc", "ab", false},     {"@[`{", "`{@[", false}, {"\xe4", "\xc4", false},
		{"\xe4z", "\xe4Z", true}, {"a1_", "A1_", true},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.a);
		const xylConstString<16> a(c.a);
		EXPECT_EQ(a.same_as(c.b, false), c.same);
		EXPECT_EQ(a.same_as(xylVarString(c.b), false), c.same);
		EXPECT_EQ(a.ends_with(c.b, false), c.same || a.ends_with(c.b, true));
	}
	EXPECT_FALSE(xylConstString<16>("Abc").same_as("abc", true));
}

TEST(xylString_base, FindsPrefixAndSuffix) {
	struct Case {
		const char* text;
		const char* part;
		bool begins;
		bool ends;
		bool ends_in_any_case;
	};
	const Case cases[] = {
		{"abc", "", true, true, true},        {"", "", true, true, true},
		{"", "a", false, false, false},       {"abc", "abc", true, true, true},
		{"abc", "abcd", false, false, false}, {"abc", "xabc", false, false, false},
		{"abab", "ab", true, true, true},     {"abc", "ab", true, false, false},
		{"abc", "bc", false, true, true},     {"abC", "Bc", false, false, true},
		{"Abc", "ab", false, false, false},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(std::string(c.text) + " with " + c.part);
		const xylVarString text(c.text);
		EXPECT_EQ(text.begins_with(c.part), c.begins);
		EXPECT_EQ(text.begins_with(xylConstString<16>(c.part)), c.begins);
		EXPECT_EQ(text.ends_with(c.part, true), c.ends);
		EXPECT_EQ(text.ends_with(c.part, false), c.ends_in_any_case);
	}
	EXPECT_TRUE(xylVarString("abc").begins_with(static_cast<const char*>(nullptr)));
}

TEST(xylString_base, ComparesARangeWithAString) {
	struct Case {
		const char* text;
		int start;
		int end;
		const char* other;
		bool equal;
	};
	const Case cases[] = {
		{"abcdef", 1, 3, "bc", true},  {"abcdef", 1, 3, "bd", false},
		{"abcdef", 1, 3, "b", false},  {"abcdef", 1, 3, "bcd", false},
		{"abcdef", 4, 99, "ef", true}, {"abcdef", 0, 6, "abcdef", true},
		{"abcdef", 3, 3, "", true},    {"abcdef", 3, 3, "d", false},
		{"abcdef", 5, 2, "", true},    {"abcdef", 9, 12, "", true},
		{"abcdef", 9, 12, "a", false}, {"", 0, 5, "", true},
		{"", 0, 5, "a", false},        {"abcdef", 1, 3, "", false},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(std::string(c.text) + " " + std::to_string(c.start) + " " +
		             std::to_string(c.end) + " " + c.other);
		EXPECT_EQ(xylVarString(c.text).substring_equals(c.start, c.end, xylVarString(c.other)),
		          c.equal);
	}
	// Bytes, not text: a zero is compared like any other.
	const xylVarString zeros("a\0b\0c", 5);
	EXPECT_TRUE(zeros.substring_equals(1, 4, xylVarString("\0b\0", 3)));
	EXPECT_FALSE(zeros.substring_equals(1, 4, xylVarString("\0x\0", 3)));
}

TEST(xylString_base, ContainsLooksUpToTheTerminators) {
	const xylVarString text("abcabd");
	const xylVarString none;
	EXPECT_TRUE(text.contains("abd"));
	EXPECT_TRUE(text.contains(xylConstString<16>("cab")));
	EXPECT_FALSE(text.contains("abe"));
	EXPECT_FALSE(text.contains("Abc"));
	EXPECT_TRUE(text.contains(""));
	EXPECT_TRUE(text.contains(none));
	EXPECT_TRUE(none.contains(none));
	EXPECT_TRUE(none.contains(""));
	EXPECT_FALSE(none.contains("a"));
	const xylVarString zeros("ab\0cd", 5);
	EXPECT_FALSE(zeros.contains("cd"));
	EXPECT_TRUE(text.contains(xylVarString("ab\0xx", 5)));
}

TEST(xylString_base, RegexMatchesTheWholeText) {
	const xylVarString text("agent_042");
	EXPECT_TRUE(text.regex_match(xylVarString("[a-z]+_\\d{3}")));
	EXPECT_FALSE(text.regex_match(xylVarString("[a-z]+")));
	EXPECT_FALSE(text.regex_match(xylVarString("AGENT_042")));
	EXPECT_TRUE(text.regex_match(xylConstString<64>("(a|b)(?=g)\\w*")));
	const xylVarString none;
	EXPECT_TRUE(none.regex_match(none));
	EXPECT_TRUE(none.regex_match(xylVarString("x*")));
	EXPECT_FALSE(text.regex_match(none));
}

TEST(xylString_base, ABadPatternThrowsOutToTheCaller) {
	EXPECT_THROW(static_cast<void>(xylVarString("a").regex_match(xylVarString("(a"))),
	             std::regex_error);
}

TEST(xylString_base, SearchesACharacterForward) {
	const xylVarString text("abcabc");
	EXPECT_EQ(text.search_char('a', 0), 0);
	EXPECT_EQ(text.search_char('a', 1), 3);
	EXPECT_EQ(text.search_char('c', 5), 5);
	EXPECT_EQ(text.search_char('x', 0), -1);
	EXPECT_EQ(text.search_char('c', 6), -1) << "the start is the length";
	EXPECT_EQ(text.search_char('\0', 0), -1) << "the terminator is no character";
	EXPECT_EQ(text.search_char('a', -1), -1) << "as unsigned not below the length";
	EXPECT_EQ(xylVarString().search_char('a', 0), -1);
	EXPECT_EQ(xylVarString("a\0b", 3).search_char('b', 0), 2);
}

TEST(xylString_base, SearchesACharacterBackward) {
	const xylVarString text("abcabc");
	EXPECT_EQ(text.search_char_reverse('a', 0, -1), 3);
	EXPECT_EQ(text.search_char_reverse('a', 0, 3), 0);
	EXPECT_EQ(text.search_char_reverse('a', 1, 3), -1);
	EXPECT_EQ(text.search_char_reverse('b', 1, 3), 1) << "low is included";
	EXPECT_EQ(text.search_char_reverse('c', 0, 5), 2) << "end is not";
	EXPECT_EQ(text.search_char_reverse('x', 0, -1), -1);
	EXPECT_EQ(xylVarString().search_char_reverse('a', 0, -1), -1);
	EXPECT_EQ(xylConstString<16>().search_char_reverse('a', 0, -1), -1);
}

TEST(xylString_base, SearchesAText) {
	const xylVarString text("abcabcd");
	EXPECT_EQ(text.search_string("abc", 0), 0);
	EXPECT_EQ(text.search_string("abc", 1), 3);
	EXPECT_EQ(text.search_string("abc", 4), -1);
	EXPECT_EQ(text.search_string("d", 0), 6) << "the last position is looked at";
	EXPECT_EQ(text.search_string("abcabcd", 0), 0);
	EXPECT_EQ(text.search_string("abcabcde", 0), -1);
	EXPECT_EQ(text.search_string(xylConstString<16>("cd"), 2), 5);
	for (int start = 0; start <= 7; ++start) EXPECT_EQ(text.search_string("", start), start);
	EXPECT_EQ(text.search_string("", 8), -1);
	EXPECT_EQ(text.search_string("a", 8), -1);
	EXPECT_EQ(text.search_string(static_cast<const char*>(nullptr), 2), 2);
	EXPECT_EQ(xylVarString().search_string("", 0), 0);
	EXPECT_EQ(xylVarString().search_string("a", 0), -1);
	EXPECT_EQ(xylVarString("a\0b", 3).search_string(xylVarString("\0b", 2), 0), 1);
}

TEST(xylString_base, SearchesATextBackward) {
	const xylVarString text("abcabcd");
	EXPECT_EQ(text.search_string_reverse("abc", 0, -1), 3);
	EXPECT_EQ(text.search_string_reverse("abc", 0, 6), 3) << "ends exactly at the end";
	EXPECT_EQ(text.search_string_reverse("abc", 0, 5), 0);
	EXPECT_EQ(text.search_string_reverse("abc", 1, 5), -1);
	EXPECT_EQ(text.search_string_reverse("bc", 1, 5), 1) << "low is included";
	EXPECT_EQ(text.search_string_reverse("", 0, -1), 7);
	EXPECT_EQ(text.search_string_reverse("", 2, 5), 5);
	EXPECT_EQ(text.search_string_reverse("a", 5, 4), -1);
	EXPECT_EQ(text.search_string_reverse(xylConstString<16>("abcabcde"), 0, -1), -1);
	EXPECT_EQ(text.search_string_reverse(static_cast<const char*>(nullptr), 0, 3), 3);
	EXPECT_EQ(xylVarString().search_string_reverse("", 0, -1), 0);
	EXPECT_EQ(xylVarString().search_string_reverse("a", 0, -1), -1);
}

// The kernel reads sixteen bytes at a time: exact blocks let the sanitizer see a byte too many.
TEST(xylString_base, SearchAgreesWithAPlainOneAndStaysInside) {
	std::mt19937_64 random(31);
	const auto below = [&random](size_t limit) { return static_cast<size_t>(random() % limit); };
	for (int round = 0; round < 20000; ++round) {
		const size_t letters = 1 + below(3);
		std::vector<char> text(below(90));
		for (char& c : text)
			c = static_cast<char>('a' + below(letters) - (below(50) == 0 ? 'a' : 0));
		std::vector<char> needle(below(8) == 0 ? below(40) : below(5));
		if (!text.empty() && below(2) == 0 && needle.size() <= text.size()) {
			const size_t from = below(text.size() - needle.size() + 1);
			std::copy_n(text.begin() + static_cast<std::ptrdiff_t>(from), needle.size(),
			            needle.begin());
		} else {
			for (char& c : needle) c = static_cast<char>('a' + below(letters));
		}
		text.shrink_to_fit();
		needle.shrink_to_fit();
		const std::string plain(text.begin(), text.end());
		const std::string part(needle.begin(), needle.end());
		SCOPED_TRACE(plain + " in search of " + part);
		const auto index = [&text](const char* found) {
			return found ? static_cast<size_t>(found - text.data()) : std::string::npos;
		};
		ASSERT_EQ(index(find_bytes(text.data(), text.size(), needle.data(), needle.size())),
		          text.empty() && part.empty() && !text.data() ? std::string::npos
		                                                       : plain.find(part));
		const xylVarString ours(plain);
		const xylVarString searched(part);
		const int start = static_cast<int>(below(plain.size() + 1));
		const size_t expected = plain.find(part, static_cast<size_t>(start));
		ASSERT_EQ(ours.search_string(searched, start),
		          expected == std::string::npos ? -1 : static_cast<int>(expected));
		const size_t last = plain.rfind(part);
		ASSERT_EQ(ours.search_string_reverse(searched, 0, -1),
		          last == std::string::npos ? -1 : static_cast<int>(last));
	}
}

TEST(xylString_base, GetIntValueTakesEveryByteAsADigit) {
	struct Case {
		const char* text;
		int value;
	};
	const Case cases[] = {
		{"", 0},
		{"0", 0},
		{"123", 123},
		{"-123", -123},
		{"-", 0},
		{"1a", 10 + 'a' - '0'},
		{"+1", ('+' - '0') * 10 + 1},
		{"--1", -(('-' - '0') * 10 + 1)},
		{"\xff", -1 - '0'},
		// wraps at 32 bits
		{"2147483648", INT_MIN},
		{"-2147483648", INT_MIN},
		{"4294967297", 1},
		{"99999999999", 1215752191},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.text);
		EXPECT_EQ(xylConstString<16>(c.text).get_int_value(), c.value);
	}
	EXPECT_EQ(xylVarString().get_int_value(), 0);
}

TEST(xylString_base, CheckIntValueTestsTheDigits) {
	struct Case {
		const char* text;
		bool valid;
		int value;
	};
	const Case cases[] = {
		{"", true, 0},        {"12", true, 12},         {"-12\r\n", true, -12},
		{"-12\n", true, -12}, {"\r\n1\r2\n", true, 12}, {"-", true, 0},
		{"12a", false, 12},   {"-12a", false, 12}, // not negated
		{"a", false, 0},      {"+1", false, 0},         {"1-", false, 1},
		{"\n-1", false, 0}, // no longer the first character
		{" 1", false, 0},     {"4294967297", true, 1},  {"-2147483648", true, INT_MIN},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.text);
		int value = 77;
		EXPECT_EQ(xylConstString<16>(c.text).check_int_value(value), c.valid);
		EXPECT_EQ(value, c.value);
	}
}

using Change = void (*)(xylString_base&);

struct Change_case {
	const char* name;
	Change change;
	const char* text;
	const char* result;
};

TEST(xylString_base, ChangesItsTextInPlace) {
	const Change underscores = [](xylString_base& s) { s.replace_underscores_with_spaces(); };
	const Change spaces = [](xylString_base& s) { s.replace_spaces_with_underscores(); };
	const Change backslashes = [](xylString_base& s) { s.replace_backslashes(); };
	const Change upper = [](xylString_base& s) { s.convert_to_uppercase(); };
	const Change lower = [](xylString_base& s) { s.convert_to_lowercase(); };
	const Change initial = [](xylString_base& s) { s.capitalize_initial(); };
	const Change plain = [](xylString_base& s) { s.replace_nonalphanumerics_with_spaces(); };
	const Change last = [](xylString_base& s) { s.replace_last_char_with('x'); };
	const Change cut = [](xylString_base& s) { s.remove_after_character('='); };
	const Change drop = [](xylString_base& s) { s.remove_characters('-'); };
	const Change start = [](xylString_base& s) { s.trim_characters_from_start('x'); };
	const Change end = [](xylString_base& s) { s.trim_characters_from_end('x'); };
	const Change extra = [](xylString_base& s) { s.remove_extra_spaces(); };
	const Change_case cases[] = {
		{"underscores", underscores, "_a_b c_", " a b c "},
		{"spaces", spaces, " a b_c ", "_a_b_c_"},
		{"backslashes", backslashes, "\\a\\b/c", "/a/b/c"},
		{"upper", upper, "azAZ09`{@[\xe4", "AZAZ09`{@[\xe4"},
		{"lower", lower, "azAZ09`{@[\xc4", "azaz09`{@[\xc4"},
		{"initial", initial, "abc", "Abc"},
		{"initial of none", initial, "", ""},
		{"initial that is no letter", initial, "_bc", "_bc"},
		{"initial that is upper", initial, "Zbc", "Zbc"},
		{"nonalphanumerics", plain, "a_Z-0\xe4 9", "a Z 0  9"},
		{"last", last, "abc", "abx"},
		{"cut at the first", cut, "a=b=c", "a"},
		{"cut at the start", cut, "=b", ""},
		{"nothing to cut", cut, "abc", "abc"},
		{"drop", drop, "-a--b-", "ab"},
		{"drop all", drop, "---", ""},
		{"nothing to drop", drop, "abc", "abc"},
		// kept: one always stays
		{"start", start, "xxaxx", "axx"},
		{"start of nothing else", start, "xxx", "x"},
		{"start, one byte", start, "x", "x"},
		{"start, empty", start, "", ""},
		{"start, nothing", start, "axx", "axx"},
		{"start, all but the last", start, "xxxa", "a"},
		{"end", end, "xxaxx", "xxa"},
		{"end of nothing else", end, "xxx", "x"},
		{"end, one byte", end, "x", "x"},
		{"end, empty", end, "", ""},
		{"end, nothing", end, "xxa", "xxa"},
		// runs of spaces
		{"one run", extra, "a   b", "a b"},
		{"run at the start", extra, "  ab", " ab"},
		{"single spaces", extra, " a b ", " a b "},
		{"one byte", extra, " ", " "},
		{"run at the end keeps its spaces", extra, "ab   ", "ab   "},
		{"nothing but spaces", extra, "   ", "   "},
		{"a second run behind the bytes that are skipped", extra, "a  bc  d", "a bc d"},
		{"a second run within the bytes that are skipped", extra, "a    b  cdef", "a b  cdef"},
		{"a second run right behind one skipped byte", extra, "a  b  c", "a b c"},
	};
	for (const Change_case& c : cases) {
		SCOPED_TRACE(c.name);
		xylConstString<16> fixed(c.text);
		c.change(fixed);
		EXPECT_EQ(text_of(fixed), c.result);
		EXPECT_TRUE(is_terminated(fixed));
		xylVarString variable(c.text);
		if (variable.is_buffer_null()) variable.ensure_length(1);
		c.change(variable);
		EXPECT_EQ(text_of(variable), c.result);
		EXPECT_TRUE(is_terminated(variable));
	}
}

TEST(xylString_base, ChangesOfAMissingStorageDoNothing) {
	xylVarString text;
	text.replace_underscores_with_spaces();
	text.replace_spaces_with_underscores();
	text.replace_backslashes();
	text.convert_to_uppercase();
	text.convert_to_lowercase();
	text.capitalize_initial();
	text.replace_nonalphanumerics_with_spaces();
	text.remove_after_character('a');
	text.remove_characters('a');
	text.trim_characters_from_start('a');
	text.trim_characters_from_end('a');
	EXPECT_TRUE(text.is_buffer_null());
	EXPECT_EQ(text.length(), 0);
	EXPECT_FALSE(text.has_uppercase_characters());
	EXPECT_TRUE(text.is_alphanumeric_or_underscore());
}

TEST(xylString_base, ChangesGoByTheLengthAndNotByTheTerminator) {
	xylVarString text("a_\0a_b", 6);
	text.replace_underscores_with_spaces();
	text.convert_to_uppercase();
	EXPECT_EQ(text_of(text), std::string("A \0A B", 6));
	text.remove_characters(' ');
	EXPECT_EQ(text_of(text), std::string("A\0AB", 4));
	text.remove_after_character('B');
	EXPECT_EQ(text_of(text), std::string("A\0A", 3));
}

TEST(xylString_base, KnowsUppercaseAndIdentifierCharacters) {
	for (int i = 1; i < 256; ++i) {
		SCOPED_TRACE(i);
		const char c[] = {'1', static_cast<char>(i), 0};
		const xylConstString<16> text(c);
		const bool upper = i >= 'A' && i <= 'Z';
		const bool other = (i >= 'a' && i <= 'z') || (i >= '0' && i <= '9') || i == '_';
		EXPECT_EQ(text.has_uppercase_characters(), upper);
		EXPECT_EQ(text.is_alphanumeric_or_underscore(), upper || other);
	}
}

// The collapse as it is told, on a list: what is found is removed behind the run's first space, and
// the index goes on by one all the same.
std::string collapsed(std::string text) {
	size_t first = 0, count = 0;
	for (size_t i = 0; i + 1 < text.size(); ++i) {
		if (text[i] == ' ' && text[i + 1] == ' ') {
			if (count == 0) first = i;
			++count;
		} else if (count > 0) {
			text.erase(first + 1, count);
			count = 0;
		}
	}
	return text;
}

TEST(xylString_base, RandomRunsOfSpacesCollapseAsTold) {
	std::mt19937_64 random(32);
	for (int round = 0; round < 5000; ++round) {
		std::string plain(1 + random() % 30, ' ');
		for (char& c : plain) c = random() % 5 < 3 ? ' ' : 'a';
		SCOPED_TRACE(plain);
		xylVarString text(plain);
		text.remove_extra_spaces();
		ASSERT_EQ(text_of(text), collapsed(plain));
		ASSERT_TRUE(is_terminated(text));
	}
}

TEST(xylString_base, CopiesToWideCharactersUpToTheCount) {
	ASSERT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C");
	wchar_t target[8] = {L'x', L'x', L'x', L'x', L'x', L'x', L'x', 0};
	const xylConstString<16> text("abc");
	text.copy_to_wchar(target, 2);
	EXPECT_EQ(std::wstring(target), L"abxxxxx") << "not terminated";
	text.copy_to_wchar(target, 8);
	EXPECT_EQ(std::wstring(target), L"abc");
}

struct Range_case {
	int start;
	int end;
	const char* result;
};

TEST(xylString_base, GivesASubstring) {
	const Range_case cases[] = {
		{0, 6, "abcdef"}, {1, 3, "bc"}, {4, 99, "ef"}, {2, -1, "cdef"},   {0, -5, "abcdef"},
		{3, 3, ""},       {6, 6, ""},   {6, -1, ""},   {4, 2, ""},        {9, -1, ""},
		{7, 12, ""},      {5, 6, "f"},  {0, 0, ""},    {5, INT_MAX, "f"},
	};
	xylConstString<16> text("abcdef");
	for (const Range_case& c : cases) {
		SCOPED_TRACE(std::to_string(c.start) + " " + std::to_string(c.end));
		const xylVarString part = text.get_substring(c.start, c.end);
		EXPECT_EQ(text_of(part), c.result);
		EXPECT_TRUE(is_terminated(part));
		EXPECT_TRUE(part.is_valid());
		EXPECT_EQ(part.get_cursor_position(), 0);
	}
	EXPECT_EQ(text_of(xylVarString("a\0b\0c", 5).get_substring(1, 4)), std::string("\0b\0", 3));
}

TEST(xylString_base, SubstringReservesOneMoreThanItHolds) {
	Open_string text(std::string(40, 'x').c_str());
	Open_string part;
	static_cast<xylVarString&>(part) = text.get_substring(0, 20);
	EXPECT_EQ(part.capacity(), 22);
	static_cast<xylVarString&>(part) = text.get_substring(30, 99);
	EXPECT_EQ(part.capacity(), 16);
	static_cast<xylVarString&>(part) = text.get_substring(5, 5);
	EXPECT_EQ(part.capacity(), 16) << "an empty range reserves one character";
	EXPECT_FALSE(part.is_buffer_null());
}

} // namespace
