// Strings whose storage lies inside the object: what is refused, what is cut short, and the tail
// rule of replace().

#include <morvantis/strings/xylconststring.h>

#include <morvantis/strings/xylvarstring.h>

#include "recording_host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

constexpr char fifteen[] = "abcdefghijklmno";
constexpr char sixteen[] = "abcdefghijklmnop";

template <typename Text> class Const_string_test : public testing::Test {};

using All_sizes = testing::Types<xylConstString<16>, xylConstString<64>, xylConstString<128>,
                                 xylConstString<256>, xylConstString<512>>;
TYPED_TEST_SUITE(Const_string_test, All_sizes);

template <typename Text> constexpr int capacity_of = 0;
template <int N> constexpr int capacity_of<xylConstString<N>> = N;

TYPED_TEST(Const_string_test, HoldsOneCharacterLessThanItsSize) {
	constexpr int size = capacity_of<TypeParam>;
	const std::string longest(size - 1, 'x');
	TypeParam text;
	text = longest.c_str();
	EXPECT_EQ(text.length(), size - 1);
	EXPECT_EQ(text.char_p(), longest);
}

TYPED_TEST(Const_string_test, RefusesALongerTextWithAWarningAndEmptiesItself) {
	constexpr int size = capacity_of<TypeParam>;
	const std::string too_long(size, 'x');
	TypeParam text("before");
	text = too_long.c_str();
	EXPECT_EQ(text.length(), 0);
	EXPECT_STREQ(text.char_p(), "");
	const std::string warning =
		"Could not set fixed-size(" + std::to_string(size) + ") string to: " + too_long;
	const auto calls = Recording_host::get().take();
	ASSERT_EQ(calls.size(), 1u);
	EXPECT_EQ(calls[0].operation, "warning");
	EXPECT_EQ(calls[0].text, warning);
}

TYPED_TEST(Const_string_test, SetTakesTwoLessThanTheSize) {
	constexpr int size = capacity_of<TypeParam>;
	const std::string source(size, 'y');
	TypeParam text("before");
	text.set(source.c_str(), size - 2);
	EXPECT_EQ(text.length(), size - 2);
	EXPECT_EQ(text.char_p(), source.substr(0, size - 2));
	text.set(source.c_str(), size - 1);
	EXPECT_EQ(text.length(), 0);
	EXPECT_STREQ(text.char_p(), "");
}

TYPED_TEST(Const_string_test, StorageLiesInsideTheObject) {
	TypeParam text;
	EXPECT_FALSE(text.is_buffer_null());
	const char* object = reinterpret_cast<const char*>(&text);
	EXPECT_GE(text.char_p(), object);
	EXPECT_LE(text.char_p() + capacity_of<TypeParam>, object + sizeof(text));
}

TEST(xylConstString, StartsEmpty) {
	xylConstString<16> text;
	EXPECT_EQ(text.length(), 0);
	EXPECT_TRUE(text.is_empty());
	EXPECT_STREQ(text.char_p(), "");
}

TEST(xylConstString, IsMadeFromText) {
	EXPECT_STREQ(xylConstString<16>(fifteen).char_p(), fifteen);
	EXPECT_EQ(xylConstString<16>(fifteen).length(), 15);
	EXPECT_EQ(xylConstString<16>("").length(), 0);
	const char* null = nullptr;
	EXPECT_STREQ(xylConstString<16>(null).char_p(), "");
}

TEST(xylConstString, IsMadeFromAnyString) {
	const xylVarString variable(fifteen);
	const xylConstString<16> from_variable(variable);
	EXPECT_STREQ(from_variable.char_p(), fifteen);
	EXPECT_EQ(from_variable.length(), 15);
	const xylConstString<64> from_other_size(from_variable);
	EXPECT_STREQ(from_other_size.char_p(), fifteen);
	const xylVarString no_storage;
	EXPECT_STREQ(xylConstString<16>(no_storage).char_p(), "");
}

TEST(xylConstString, CopyOwnsItsCharacters) {
	xylConstString<16> source("abc");
	xylConstString<16> copy(source);
	source[0] = 'x';
	EXPECT_STREQ(copy.char_p(), "abc");
	EXPECT_EQ(copy.length(), 3);
	EXPECT_NE(copy.char_p(), source.char_p());
}

TEST(xylConstString, ConstructionTakesTheLengthOfTheSourceAndTheTextToItsFirstZero) {
	const xylVarString source("ab\0cd", 5);
	const xylConstString<16> text(source);
	EXPECT_EQ(text.length(), 5);
	EXPECT_STREQ(text.char_p(), "ab");
}

TEST(xylConstStringDeathTest, ConstructionFromATextThatDoesNotFitEndsTheProcess) {
	EXPECT_DEATH(xylConstString<16>{sixteen}, "");
	const xylVarString source(sixteen);
	EXPECT_DEATH(xylConstString<16>{source}, "");
}

TEST(xylConstString, AssignmentOfNullMakesEmpty) {
	xylConstString<16> text("abc");
	text = static_cast<const char*>(nullptr);
	EXPECT_EQ(text.length(), 0);
	EXPECT_STREQ(text.char_p(), "");
}

TEST(xylConstString, AssignsItselfItsOwnTailAndOtherStrings) {
	xylConstString<16> text("abcdef");
	const xylConstString<16>& same = text;
	text = same;
	EXPECT_STREQ(text.char_p(), "abcdef");
	text = text.char_p() + 2;
	EXPECT_STREQ(text.char_p(), "cdef");
	EXPECT_EQ(text.length(), 4);
	text.set(text.char_p() + 1, 2);
	EXPECT_STREQ(text.char_p(), "de");
	text = xylVarString("other");
	EXPECT_STREQ(text.char_p(), "other");
	xylString_base& base = text;
	base = xylConstString<64>("base");
	EXPECT_STREQ(text.char_p(), "base");
}

TEST(xylConstString, SetTakesZeroBytesAndNone) {
	xylConstString<16> text("abc");
	text.set("x\0y", 3);
	EXPECT_EQ(text.length(), 3);
	EXPECT_EQ(std::string(text.char_p(), 4), std::string("x\0y\0", 4));
	text.set("x", 0);
	EXPECT_EQ(text.length(), 0);
	EXPECT_STREQ(text.char_p(), "");
}

struct Replacement {
	const char* name;
	const char* text;
	const char* search;
	const char* replacement;
	bool found;
	const char* result;
	int length;
};

TEST(xylConstString, ReplaceCountsTheTailWithTheLengthOfTheReplacement) {
	const Replacement cases[] = {
		{"tail as long as the replacement", "xaby", "ab", "c", true, "xcy", 3},
		{"two bytes for two, tail of two", "xabyz", "ab", "cd", true, "xcdyz", 5},
		{"tail is cut", "xabyz", "ab", "c", true, "xcy", 3},
		{"nothing behind the match", "xab", "ab", "cde", true, "xcde", 4},
		{"whole text", "ab", "ab", "", true, "", 0},
		{"empty replacement loses the tail", "xaby", "ab", "", true, "x", 1},
		{"only the first occurrence", "abab", "ab", "cd", true, "cdab", 4},
		{"not there", "xyz", "ab", "c", false, "xyz", 3},
		{"in the empty string", "", "ab", "c", false, "", 0},
	};
	for (const Replacement& c : cases) {
		SCOPED_TRACE(c.name);
		xylConstString<16> text(c.text);
		EXPECT_EQ(text.replace(c.search, c.replacement), c.found);
		EXPECT_STREQ(text.char_p(), c.result);
		EXPECT_EQ(text.length(), c.length);
	}
}

TEST(xylConstString, ReplaceByALongerTextLeavesALengthBehindTheText) {
	xylConstString<16> text("xaby");
	EXPECT_TRUE(text.replace("ab", "cde"));
	EXPECT_EQ(text.length(), 7);
	EXPECT_EQ(std::string(text.char_p(), 5), "xcdey");
	// Two bytes more than replacement and tail together: they were never written.
	xylConstString<16> short_tail("xaby");
	EXPECT_TRUE(short_tail.replace("ab", "cd"));
	EXPECT_EQ(short_tail.length(), 5);
	EXPECT_EQ(std::string(short_tail.char_p(), 4), "xcdy");
}

TEST(xylConstString, ReplaceTakesItsOwnTextAsReplacement) {
	xylConstString<16> text("abc");
	EXPECT_TRUE(text.replace("c", text.char_p()));
	EXPECT_STREQ(text.char_p(), "ababc");
}

TEST(xylConstStringDeathTest, ReplaceEndsTheProcessRatherThanOverflow) {
	xylConstString<16> fits("aaaaaaaaaaaaab");
	EXPECT_TRUE(fits.replace("b", "cd"));
	EXPECT_EQ(fits.length(), 15);
	xylConstString<16> text(fifteen);
	EXPECT_DEATH(text.replace("o", "pq"), "");
	// Text and terminator would fit, but not the position where the terminator goes.
	xylConstString<16> counted("ab");
	EXPECT_DEATH(counted.replace("a", "12345678"), "");
}

TEST(xylConstString, IsCalledThroughTheBase) {
	xylConstString<16> text;
	xylString_base& base = text;
	base = "abc";
	EXPECT_STREQ(text.char_p(), "abc");
	base.set("defg", 2);
	EXPECT_STREQ(text.char_p(), "de");
	EXPECT_TRUE(base.replace("e", "f"));
	EXPECT_STREQ(text.char_p(), "df");
}

static_assert(!std::is_convertible_v<xylConstString<16>, const char*>);
static_assert(sizeof(xylConstString<512>) - sizeof(xylConstString<256>) == 256);

} // namespace
