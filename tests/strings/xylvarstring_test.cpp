// The growing string: its storage and growth, assignments, appends, edits, and what each of them
// does to terminator, capacity and cursor.

#include <morvantis/strings/xylvarstring.h>

#include <morvantis/memory/xylheap.h>
#include <morvantis/strings/xylconststring.h>

#include "string_text.h"
#include "virtual_order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <random>
#include <thread>
#include <vector>

namespace {

constexpr const char* null_text = nullptr;

// A string with everything to lose: text, spare storage and a cursor.
Open_string used_string() {
	Open_string text;
	text = "abcdef";
	text.ensure_length(40);
	text.reset_cursor(2);
	return text;
}

TEST(xylVarString, StartsWithoutStorage) {
	const Open_string text;
	EXPECT_TRUE(text.is_buffer_null());
	EXPECT_EQ(text.length(), 0);
	EXPECT_EQ(text.capacity(), 0);
	EXPECT_EQ(text.get_cursor_position(), 0);
	EXPECT_STREQ(text.char_p(), "");
	EXPECT_TRUE(text.is_valid());
}

TEST(xylVarString, IsMadeFromText) {
	EXPECT_EQ(text_of(xylVarString("abc")), "abc");
	EXPECT_TRUE(xylVarString(null_text).is_buffer_null());
	EXPECT_TRUE(xylVarString("").is_buffer_null());
	EXPECT_EQ(Open_string("abc").capacity(), 16);
	EXPECT_EQ(Open_string("0123456789abcde").capacity(), 16);
	EXPECT_EQ(Open_string("0123456789abcdef").capacity(), 17);
}

TEST(xylVarString, IsMadeFromBytes) {
	const xylVarString text("a\0bc", 3);
	EXPECT_EQ(text_of(text), std::string("a\0b", 3));
	EXPECT_TRUE(is_terminated(text));
	EXPECT_TRUE(xylVarString(null_text, 5).is_buffer_null());
	EXPECT_TRUE(xylVarString("abc", 0).is_buffer_null());
}

TEST(xylVarString, IsMadeFromAStandardString) {
	EXPECT_EQ(text_of(xylVarString(std::string("a\0b", 3))), std::string("a\0b", 3));
	EXPECT_TRUE(xylVarString(std::string()).is_buffer_null());
}

TEST(xylVarString, CopyFromTheBaseStartsAtCursorZero) {
	xylVarString source("a\0bc", 4);
	source.reset_cursor(2);
	const xylVarString copy(static_cast<const xylString_base&>(source));
	EXPECT_EQ(text_of(copy), std::string("a\0bc", 4));
	EXPECT_TRUE(is_terminated(copy));
	EXPECT_EQ(copy.get_cursor_position(), 0);
	EXPECT_EQ(text_of(xylVarString(xylConstString<16>("abc"))), "abc");
	EXPECT_TRUE(xylVarString(xylConstString<16>()).is_buffer_null());
}

TEST(xylVarString, CopyTakesTheCursorUnlessTheSourceIsEmpty) {
	const Open_string source = used_string();
	const xylVarString copy(source);
	EXPECT_EQ(text_of(copy), "abcdef");
	EXPECT_EQ(copy.get_cursor_position(), 2);
	EXPECT_NE(copy.char_p(), source.char_p());
	xylVarString empty("abc");
	empty.clear();
	empty.reset_cursor(2);
	const xylVarString copy_of_empty(empty);
	EXPECT_EQ(copy_of_empty.get_cursor_position(), 0);
	EXPECT_TRUE(copy_of_empty.is_buffer_null());
}

TEST(xylVarString, MovesTakeTheStorageAndLeaveTheDefaultState) {
	Open_string source = used_string();
	const char* storage = source.char_p();
	Open_string target(std::move(source));
	EXPECT_EQ(target.char_p(), storage);
	EXPECT_EQ(target.length(), 6);
	EXPECT_EQ(target.capacity(), 64);
	EXPECT_EQ(target.get_cursor_position(), 2);
	for (const Open_string* left : {&source}) {
		EXPECT_TRUE(left->is_buffer_null());
		EXPECT_EQ(left->length(), 0);
		EXPECT_EQ(left->capacity(), 0);
		EXPECT_EQ(left->get_cursor_position(), 0);
	}
	Open_string assigned("other");
	assigned = std::move(target);
	EXPECT_EQ(assigned.char_p(), storage);
	EXPECT_EQ(assigned.get_cursor_position(), 2);
	EXPECT_TRUE(target.is_buffer_null());
	EXPECT_EQ(target.capacity(), 0);
	EXPECT_EQ(target.get_cursor_position(), 0);
	Open_string& same = assigned;
	assigned = std::move(same);
	EXPECT_EQ(text_of(assigned), "abcdef");
}

// --- Storage

TEST(xylVarString, FirstAppendReservesSixteenBytesAndTheSixteenthCharacterDoublesThem) {
	Open_string text;
	text.append("");
	EXPECT_TRUE(text.is_buffer_null());
	text.append("a");
	EXPECT_EQ(text.capacity(), 16);
	for (int i = 1; i < 15; ++i) text.append('b');
	EXPECT_EQ(text.capacity(), 16);
	EXPECT_EQ(text.length(), 15);
	text.append('c');
	EXPECT_EQ(text.capacity(), 32);
	EXPECT_EQ(text_of(text), "abbbbbbbbbbbbbbc");
}

TEST(xylVarString, FirstReserveIsExactAndTheNextDoublesIt) {
	Open_string text;
	text.ensure_length(0);
	EXPECT_TRUE(text.is_buffer_null());
	text.ensure_length(100);
	EXPECT_EQ(text.capacity(), 101);
	EXPECT_STREQ(text.char_p(), "");
	EXPECT_EQ(text.length(), 0);
	text.ensure_length(100);
	EXPECT_EQ(text.capacity(), 101);
	text.ensure_length(101);
	EXPECT_EQ(text.capacity(), 202);
}

// What it takes beyond the text is never touched, so it costs addresses only.
TEST(xylVarString, GrowthBeyondOneGibEndsAtTheLargestCapacity) {
	Open_string text;
	text = "abcdef";
	text.ensure_length(0x3FFFFFFF);
	EXPECT_EQ(text.capacity(), INT_MAX);
	EXPECT_STREQ(text.char_p(), "abcdef");
	EXPECT_TRUE(text.is_valid());
	text.ensure_length(0x7FFFFFFE);
	EXPECT_EQ(text.capacity(), INT_MAX) << "room enough";
}

TEST(xylVarString, GrowsByDoublingUntilLargerThanWanted) {
	struct Case {
		unsigned int length;
		int capacity;
	};
	// From 16 bytes; `length` and its terminator are wanted.
	const Case cases[] = {{15, 16}, {16, 32},  {30, 32},     {31, 64},
	                      {32, 64}, {63, 128}, {1000, 1024}, {1023, 2048}};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.length);
		Open_string text("abc");
		text.set_capacity(c.length);
		EXPECT_EQ(text.capacity(), c.capacity);
		EXPECT_EQ(text_of(text), "abc");
		EXPECT_TRUE(text.is_valid());
		text.set_capacity(5);
		EXPECT_EQ(text.capacity(), c.capacity) << "it only ever grows";
	}
}

TEST(xylVarString, GrowthKeepsTheWholeOldStorage) {
	Open_string text("abcdefghij");
	text.clear();
	text[1] = 'x';
	text.ensure_length(16);
	EXPECT_EQ(std::string(text.char_p(), 10), std::string("\0xcdefghij", 10));
	Open_string appended("abcdefghij");
	appended.remove(2, 10);
	appended.append("0123456789abcdef");
	EXPECT_EQ(text_of(appended), "ab0123456789abcdef");
}

TEST(xylVarString, StorageIsAlignedTo16) {
	for (unsigned int length = 1; length < 300; ++length) {
		Open_string text;
		text.ensure_length(length);
		EXPECT_EQ(reinterpret_cast<size_t>(text.char_p()) % 16, 0u) << length;
	}
}

TEST(xylVarString, LengthCanBeSetForATextWrittenFromOutside) {
	Open_string text;
	text.set_length_externally(20);
	EXPECT_EQ(text.length(), 20);
	EXPECT_EQ(text.capacity(), 21);
	EXPECT_TRUE(is_terminated(text));
	for (unsigned int i = 0; i < 20; ++i) text[i] = 'x';
	text.reset_cursor(3);
	text.set_length_externally(5);
	EXPECT_EQ(text_of(text), "xxxxx");
	EXPECT_EQ(text[5], 0);
	EXPECT_EQ(text[6], 'x');
	EXPECT_EQ(text.get_cursor_position(), 3);
	text.set_length_externally(0);
	EXPECT_STREQ(text.char_p(), "");
}

TEST(xylVarString, ShrinksOnDemandOnly) {
	Open_string text = used_string();
	EXPECT_EQ(text.capacity(), 64);
	text.empty_and_shrink(0);
	EXPECT_EQ(text.capacity(), 16);
	EXPECT_FALSE(text.is_buffer_null());
	EXPECT_EQ(text.length(), 0);
	EXPECT_STREQ(text.char_p(), "");
	EXPECT_EQ(text.get_cursor_position(), 0);
	text.empty_and_shrink(15);
	EXPECT_EQ(text.capacity(), 16);
	text.empty_and_shrink(16);
	EXPECT_EQ(text.capacity(), 17);
	EXPECT_TRUE(text.is_valid());
	Open_string none;
	none.empty_and_shrink(0);
	EXPECT_EQ(none.capacity(), 16);
}

// Counts calls of the virtual assignment.
class Counting_string : public xylVarString {
public:
	using xylVarString::operator=;
	void operator=(const char* source) override {
		++assignments;
		xylVarString::operator=(source);
	}
	int assignments = 0;
};

TEST(xylVarString, SetContentAndShrinkingCallTheVirtualAssignment) {
	Counting_string text;
	text.set_content("abc");
	EXPECT_EQ(text.assignments, 1);
	EXPECT_EQ(text_of(text), "abc");
	text.empty_and_shrink(0);
	EXPECT_EQ(text.assignments, 2);
	static_cast<xylVarString&>(text) = static_cast<const xylString_base&>(xylConstString<16>("x"));
	EXPECT_EQ(text.assignments, 3);
}

// The destructor stands in front of them, with two entries.
TEST(xylVarString, VirtualOperationsKeepTheirOrder) {
	using Base = xylString_base;
	using Bytes_assignment = void (Base::*)(const unsigned char*);
	using Text_assignment = void (Base::*)(const char*);
	EXPECT_EQ(virtual_index(static_cast<Bytes_assignment>(&Base::operator=)), 2u);
	EXPECT_EQ(virtual_index(static_cast<Text_assignment>(&Base::operator=)), 3u);
	EXPECT_EQ(virtual_index(&Base::set), 4u);
	EXPECT_EQ(virtual_index(&Base::replace), 5u);
	using Text_replace = bool (xylVarString::*)(const char*, const char*);
	EXPECT_EQ(virtual_index(static_cast<Text_replace>(&xylVarString::replace)), 5u);
	EXPECT_EQ(virtual_index(&xylVarString::set_content), 6u);
}

TEST(xylVarString, IsCalledThroughTheBase) {
	xylVarString text;
	xylString_base& base = text;
	base = "abc";
	EXPECT_EQ(text_of(text), "abc");
	base.set("defg", 2);
	EXPECT_EQ(text_of(text), "de");
	EXPECT_TRUE(base.replace("e", "fgh"));
	EXPECT_EQ(text_of(text), "dfgh");
	base = xylConstString<16>("base");
	EXPECT_EQ(text_of(text), "base");
}

TEST(xylVarString, SwapsAllFields) {
	Open_string a = used_string();
	Open_string b;
	const char* storage = a.char_p();
	xylVarString::swap_contents(a, b);
	EXPECT_TRUE(a.is_buffer_null());
	EXPECT_EQ(a.length(), 0);
	EXPECT_EQ(a.capacity(), 0);
	EXPECT_EQ(a.get_cursor_position(), 0);
	EXPECT_EQ(b.char_p(), storage);
	EXPECT_EQ(b.length(), 6);
	EXPECT_EQ(b.capacity(), 64);
	EXPECT_EQ(b.get_cursor_position(), 2);
	xylVarString::swap_contents(b, b);
	EXPECT_EQ(text_of(b), "abcdef");
}

TEST(xylVarString, BufferPointerIsAtTheCursor) {
	Open_string text = used_string();
	EXPECT_EQ(text.buffer_p(), text.char_p() + 2);
	EXPECT_EQ(xylVarString().buffer_p(), nullptr);
}

TEST(xylVarString, EmptyStringIsSharedAndWithoutStorage) {
	const xylVarString& empty = xylVarString::empty_str();
	EXPECT_TRUE(empty.is_buffer_null());
	EXPECT_EQ(&empty, &xylVarString::empty_str());
	const xylVarString* seen = nullptr;
	std::thread other([&seen] { seen = &xylVarString::empty_str(); });
	other.join();
	EXPECT_EQ(seen, &empty);
}

TEST(xylVarString, InitPutsTheFieldsBackWithoutFreeing) {
	Open_string text = used_string();
	char* storage = text.text_;
	text.str_init();
	EXPECT_TRUE(text.is_buffer_null());
	EXPECT_EQ(text.length(), 0);
	EXPECT_EQ(text.capacity(), 0);
	EXPECT_EQ(text.get_cursor_position(), 0);
	EXPECT_STREQ(storage, "abcdef");
	xyl_heap_free(storage);
}

// --- Assignment

TEST(xylVarString, AssignmentOfATextResetsTheCursor) {
	Open_string text = used_string();
	text = "xyz";
	EXPECT_EQ(text_of(text), "xyz");
	EXPECT_TRUE(is_terminated(text));
	EXPECT_EQ(text.get_cursor_position(), 0);
	EXPECT_EQ(text.capacity(), 64);
}

TEST(xylVarString, AssignmentOfNullEmptiesAndKeepsTheStorage) {
	Open_string text = used_string();
	text = null_text;
	EXPECT_EQ(text.length(), 0);
	EXPECT_STREQ(text.char_p(), "");
	EXPECT_EQ(text.get_cursor_position(), 0);
	EXPECT_EQ(text.capacity(), 64);
	xylVarString none;
	none = null_text;
	EXPECT_TRUE(none.is_buffer_null());
	none = "";
	EXPECT_TRUE(none.is_buffer_null());
}

TEST(xylVarString, AssignmentOfAVariableStringCopiesBytesAndCursor) {
	xylVarString source("a\0bc", 4);
	source.reset_cursor(3);
	Open_string text = used_string();
	static_cast<xylVarString&>(text) = source;
	EXPECT_EQ(text_of(text), std::string("a\0bc", 4));
	EXPECT_TRUE(is_terminated(text));
	EXPECT_EQ(text.get_cursor_position(), 3);
	static_cast<xylVarString&>(text) = xylVarString::empty_str();
	EXPECT_EQ(text.length(), 0);
	EXPECT_STREQ(text.char_p(), "");
	EXPECT_EQ(text.get_cursor_position(), 0);
	EXPECT_EQ(text.capacity(), 64);
	xylVarString stored("x");
	stored.clear();
	xylVarString none;
	none = stored;
	EXPECT_TRUE(none.is_buffer_null()) << "nothing is reserved for no characters";
}

TEST(xylVarString, AssignmentOfABaseEndsAtTheFirstZeroByteAndResetsTheCursor) {
	const xylVarString source("ab\0cd", 5);
	xylVarString text("before");
	text.reset_cursor(2);
	EXPECT_EQ(&(text = static_cast<const xylString_base&>(source)), &text);
	EXPECT_EQ(text_of(text), "ab");
	EXPECT_EQ(text.get_cursor_position(), 0);
}

TEST(xylVarString, SetAndCopyTakeBytesAndKeepTheCursor) {
	for (const bool virtual_form : {true, false}) {
		SCOPED_TRACE(virtual_form);
		const auto assign = [virtual_form](Open_string& text, const char* source, int count) {
			virtual_form ? text.set(source, count) : text.copy(source, count);
		};
		Open_string text = used_string();
		assign(text, "a\0bc", 3);
		EXPECT_EQ(text_of(text), std::string("a\0b", 3));
		EXPECT_TRUE(is_terminated(text));
		EXPECT_EQ(text.get_cursor_position(), 2);
		assign(text, "xyz", 0);
		EXPECT_EQ(text.length(), 0);
		EXPECT_STREQ(text.char_p(), "");
		Open_string fresh;
		assign(fresh, "0123456789abcdefghij", 20);
		EXPECT_EQ(fresh.capacity(), 21);
	}
}

TEST(xylVarString, ClearKeepsStorageAndCursor) {
	Open_string text = used_string();
	text.clear();
	EXPECT_EQ(text.length(), 0);
	EXPECT_STREQ(text.char_p(), "");
	EXPECT_EQ(text.capacity(), 64);
	EXPECT_EQ(text.get_cursor_position(), 2);
	xylVarString none;
	none.clear();
	EXPECT_TRUE(none.is_buffer_null());
}

// --- Appends

TEST(xylVarString, AppendsTextAndStringsAndLeavesTheCursor) {
	Open_string text = used_string();
	text.append("gh");
	text.append(null_text);
	text.append("");
	text.append("ijkl", 2);
	text.append("xyz", 0);
	text.append(xylConstString<16>("kl"));
	text.append(xylVarString("m\0n", 3));
	text.append(xylVarString());
	EXPECT_EQ(text_of(text), std::string("abcdefghijklm\0n", 15));
	EXPECT_TRUE(is_terminated(text));
	EXPECT_EQ(text.get_cursor_position(), 2);
	EXPECT_TRUE(text.is_valid());
}

TEST(xylVarString, AppendsAnyByte) {
	xylVarString text;
	for (int i = 0; i < 256; ++i) {
		text.append(static_cast<char>(i));
		ASSERT_EQ(text.length(), i + 1);
		ASSERT_TRUE(is_terminated(text));
	}
	for (unsigned int i = 0; i < 256; ++i) EXPECT_EQ(text[i], static_cast<char>(i));
}

template <typename Number> std::string appended(Number value) {
	xylVarString text("=");
	text.append(value);
	EXPECT_TRUE(is_terminated(text));
	return text_of(text).substr(1);
}

TEST(xylVarString, AppendsIntegers) {
	EXPECT_EQ(appended(0), "0");
	EXPECT_EQ(appended(INT_MAX), "2147483647");
	EXPECT_EQ(appended(INT_MIN), "-2147483648");
	EXPECT_EQ(appended(4294967295u), "4294967295") << "widened without sign";
	EXPECT_EQ(appended(0u), "0");
	EXPECT_EQ(appended(LLONG_MAX), "9223372036854775807");
	EXPECT_EQ(appended(LLONG_MIN), "-9223372036854775808");
	EXPECT_EQ(appended(ULLONG_MAX), "18446744073709551615");
}

TEST(xylVarString, AppendsNumbersWithSixDecimals) {
	EXPECT_EQ(appended(0.0f), "0.000000");
	EXPECT_EQ(appended(-0.0), "-0.000000");
	EXPECT_EQ(appended(1.5f), "1.500000");
	EXPECT_EQ(appended(0.1f), "0.100000");
	EXPECT_EQ(appended(16777216.0f), "16777216.000000");
	EXPECT_EQ(appended(-123456.7890625), "-123456.789062") << "halves to the even neighbour";
	EXPECT_EQ(appended(377.9140625f), "377.914062");
	EXPECT_EQ(appended(HUGE_VALF), "inf");
	EXPECT_EQ(appended(-HUGE_VAL), "-inf");
	EXPECT_EQ(appended(std::bit_cast<double>(0x7ff8000000000000)), "nan");
	EXPECT_EQ(appended(std::bit_cast<double>(0xfff8000000000000)), "-nan(ind)");
}

TEST(xylVarString, CutsANumberOfMoreThan32CharactersTo31) {
	EXPECT_EQ(appended(1e30f), "1000000015047466219876688855040");
	EXPECT_EQ(appended(1e30), "1000000000000000019884624838656");
	EXPECT_EQ(appended(-1e300).size(), 31u);
	// 31 and 32 characters fit into the 32 bytes, the latter without a terminator.
	EXPECT_EQ(appended(1e23), "99999999999999991611392.000000");
	EXPECT_EQ(appended(-1e23), "-99999999999999991611392.000000");
	EXPECT_EQ(appended(1e24), "999999999999999983222784.000000");
	EXPECT_EQ(appended(-1e24), "-999999999999999983222784.000000");
	EXPECT_EQ(appended(1e24f), "1000000013848427855085568.000000");
	// 33 do not.
	EXPECT_EQ(appended(-1e24f), "-1000000013848427855085568.0000");
	EXPECT_EQ(appended(1e25), "10000000000000000905969664.0000");
}

TEST(xylVarString, AppendsFormattedText) {
	Open_string text = used_string();
	text.append_formatted("%s=%d;", "x", 5);
	text.append_formatted("%s", "");
	EXPECT_EQ(text_of(text), "abcdefx=5;");
	EXPECT_EQ(text.get_cursor_position(), 2);
	xylVarString none;
	none.append_formatted("%s", "");
	EXPECT_TRUE(none.is_buffer_null());
	none.append_formatted("a%cb", 0);
	EXPECT_EQ(text_of(none), "a") << "measured to the first zero byte";
}

TEST(xylVarString, CutsFormattedTextAt512Bytes) {
	for (const int length : {510, 511, 512, 513, 600}) {
		SCOPED_TRACE(length);
		const std::string source(static_cast<size_t>(length), 'x');
		xylVarString text("a");
		text.append_formatted("%s", source.c_str());
		EXPECT_EQ(text_of(text), "a" + source.substr(0, 512));
		EXPECT_TRUE(is_terminated(text));
	}
}

TEST(xylVarString, BinaryAppendsDoNotTerminate) {
	Open_string text;
	text = "abcdefgh";
	text.set_length_externally(2);
	text[2] = '#';
	text[4] = '!';
	text.append_binary("xy", 2);
	EXPECT_EQ(text_of(text), "abxy");
	EXPECT_EQ(text[4], '!') << "no terminator";
	text.append('z');
	EXPECT_EQ(text_of(text), "abxyz");
	EXPECT_TRUE(is_terminated(text));
	text.append_binary("q", 0);
	text.append_binary(nullptr, 0);
	text.append_binary(nullptr, -1);
	EXPECT_EQ(text_of(text), "abxyz");
	Open_string fresh;
	fresh.append_binary("a\0b", 3);
	EXPECT_EQ(text_of(fresh), std::string("a\0b", 3));
	EXPECT_EQ(fresh.capacity(), 16);
}

TEST(xylVarString, PushBackAppendsBytesAndTerminates) {
	Open_string text = used_string();
	text.push_back("x\0y", 3);
	text.push_back("ignored", 0);
	EXPECT_EQ(text_of(text), std::string("abcdefx\0y", 9));
	EXPECT_TRUE(is_terminated(text));
	EXPECT_EQ(text.get_cursor_position(), 2);
	Open_string none;
	none.push_back(nullptr, 0);
	EXPECT_TRUE(none.is_buffer_null());
}

TEST(xylVarString, PlusCopiesTheCursorAndAppends) {
	const Open_string text = used_string();
	const xylVarString with_string = text + xylVarString("gh");
	const xylVarString with_number = text + -42;
	const xylVarString with_text = text + "xy";
	EXPECT_EQ(text_of(with_string), "abcdefgh");
	EXPECT_EQ(text_of(with_number), "abcdef-42");
	EXPECT_EQ(text_of(with_text), "abcdefxy");
	EXPECT_EQ(text_of(text + 'a'), "abcdef97") << "a character is an int";
	EXPECT_EQ(with_string.get_cursor_position(), 2);
	EXPECT_EQ(with_number.get_cursor_position(), 2);
	EXPECT_EQ(with_text.get_cursor_position(), 2);
	EXPECT_EQ(text_of(text), "abcdef");
	EXPECT_EQ(text_of(text + text), "abcdefabcdef");
}

// --- Middle of the string

TEST(xylVarString, DeletesARange) {
	struct Case {
		int start;
		int count;
		const char* result;
	};
	const Case cases[] = {
		{0, 2, "cde"},   {1, 3, "ae"},    {3, 100, "abc"}, {3, 2, "abc"},    {0, 5, ""},
		{2, 0, "abcde"}, {5, 0, "abcde"}, {5, 3, "abcde"}, {0, INT_MAX, ""}, {4, INT_MAX, "abcd"},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(std::to_string(c.start) + " " + std::to_string(c.count));
		xylVarString text("abcde");
		text.reset_cursor(4);
		text.delete_range(c.start, c.count);
		EXPECT_EQ(text_of(text), c.result);
		EXPECT_TRUE(is_terminated(text));
		EXPECT_EQ(text.get_cursor_position(), 4);
	}
}

TEST(xylVarString, InsertsTextAndCharacters) {
	for (int position = 0; position <= 5; ++position) {
		SCOPED_TRACE(position);
		xylVarString text("abcde");
		text.insert(position, xylVarString("XYZ"));
		EXPECT_EQ(text_of(text), std::string("abcde").insert(static_cast<size_t>(position), "XYZ"));
		EXPECT_TRUE(is_terminated(text));
		xylVarString one("abcde");
		one.reset_cursor(3);
		one.insert(position, '-');
		EXPECT_EQ(text_of(one), std::string("abcde").insert(static_cast<size_t>(position), "-"));
		EXPECT_EQ(one.get_cursor_position(), 3);
	}
	xylVarString text("abc");
	text.insert(1, xylVarString());
	EXPECT_EQ(text_of(text), "abc");
	xylVarString none;
	none.insert(0, xylVarString());
	EXPECT_EQ(none.length(), 0);
	none.insert(0, 'a');
	EXPECT_EQ(text_of(none), "a");
	none.insert(1, '\0');
	EXPECT_EQ(text_of(none), std::string("a\0", 2));
}

TEST(xylVarString, RemovesARange) {
	xylVarString text("abcdef");
	text.reset_cursor(4);
	text.remove(1, 3);
	EXPECT_EQ(text_of(text), "adef");
	EXPECT_TRUE(is_terminated(text));
	EXPECT_EQ(text.get_cursor_position(), 4);
	text.remove(2, 2);
	EXPECT_EQ(text_of(text), "adef");
}

TEST(xylVarString, RemovingTheTailLeavesTheOldTerminator) {
	xylVarString text("abcdef");
	text.remove(2, 6);
	EXPECT_EQ(text.length(), 2);
	EXPECT_EQ(text_of(text), "ab");
	EXPECT_STREQ(text.char_p(), "abcdef");
	text.recalculate_length();
	EXPECT_EQ(text.length(), 6);
	text.remove(2, 99);
	EXPECT_EQ(text.length(), 2);
	// A copy takes the length, and its own terminator.
	EXPECT_STREQ(xylVarString(text).char_p(), "ab");
	xylVarString appended;
	appended.append(text);
	EXPECT_STREQ(appended.char_p(), "ab");
}

TEST(xylVarString, PopFrontReadsAtTheCursorAndKeepsTheText) {
	xylVarString text("abcdef");
	text.reset_cursor(1);
	char target[4] = {};
	text.pop_front(target, 3);
	EXPECT_STREQ(target, "bcd");
	EXPECT_EQ(text.get_cursor_position(), 4);
	text.pop_front(target, 0);
	EXPECT_EQ(text.get_cursor_position(), 4);
	EXPECT_EQ(text_of(text), "abcdef");
}

// --- Sources that are part of the string itself

TEST(xylVarString, TakesItsOwnTextAsSource) {
	// Storage that must grow, and storage that need not.
	for (const unsigned int spare : {0u, 100u}) {
		SCOPED_TRACE(spare);
		const auto fresh = [spare] {
			Open_string text("0123456789abcde");
			text.ensure_length(spare);
			return text;
		};
		const std::string plain = "0123456789abcde";
		Open_string text = fresh();
		text.append(text.char_p());
		EXPECT_EQ(text_of(text), plain + plain);
		text = fresh();
		text.append(text);
		EXPECT_EQ(text_of(text), plain + plain);
		text = fresh();
		text.append(text.char_p() + 5, 7);
		EXPECT_EQ(text_of(text), plain + "56789ab");
		text = fresh();
		text.append_binary(text.char_p() + 5, 7);
		EXPECT_EQ(text_of(text), plain + "56789ab");
		text = fresh();
		text.push_back(text.char_p() + 5, 7);
		EXPECT_EQ(text_of(text), plain + "56789ab");
		text = fresh();
		text.append_formatted("<%s>", text.char_p());
		EXPECT_EQ(text_of(text), plain + "<" + plain + ">");
		text = fresh();
		text.insert(5, text);
		EXPECT_EQ(text_of(text), "01234" + plain + "56789abcde");
		text = fresh();
		text = text.char_p();
		EXPECT_EQ(text_of(text), plain);
		text = text.char_p() + 5;
		EXPECT_EQ(text_of(text), "56789abcde");
		text.set(text.char_p() + 2, 4);
		EXPECT_EQ(text_of(text), "789a");
		xylVarString& same = text;
		static_cast<xylVarString&>(text) = same;
		EXPECT_EQ(text_of(text), "789a");
		static_cast<xylVarString&>(text) = static_cast<const xylString_base&>(same);
		EXPECT_EQ(text_of(text), "789a");
		text = fresh();
		text.reset_cursor(3);
		text.get_front_str(text, 4);
		EXPECT_EQ(text_of(text), plain + "3456");
		EXPECT_EQ(text.get_cursor_position(), 7);
		EXPECT_TRUE(text.is_valid());
	}
}

// --- Comparison and hashing

TEST(xylVarString, OrdersWithAndWithoutCase) {
	struct Case {
		const char* a;
		const char* b;
		bool sensitive;
		bool insensitive;
	};
	const Case cases[] = {
		{"a", "B", false, true},      {"B", "a", true, false},     {"a", "a", false, false},
		{"A", "a", true, false},      {"a", "A", false, false},    {"", "a", true, true},
		{"a", "", false, false},      {"", "", false, false},      {"ab", "abc", true, true},
		{"\x7f", "\x80", true, true}, {"\xff", "a", false, false}, {"[", "a", true, true},
		{"_", "A", false, true}, // lower-cased, so that A to Z are behind the underscore
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(std::string(c.a) + " before " + c.b);
		EXPECT_EQ(xylVarString::compare_strings(c.a, c.b, true), c.sensitive);
		EXPECT_EQ(xylVarString::compare_strings(c.a, c.b, false), c.insensitive);
	}
	const xylVarString a("a\0b", 3);
	EXPECT_FALSE(xylVarString::compare_strings("a", a, true)) << "equal up to the terminators";
}

TEST(xylVarString, HashesWithFnv1aOverItsLength) {
	const xylVarStringHashFunction hash;
	EXPECT_EQ(hash(xylVarString()), 0xcbf29ce484222325u);
	EXPECT_EQ(hash(xylVarString("a")), 0xaf63dc4c8601ec8cu);
	EXPECT_EQ(hash(xylVarString("foobar")), 0x85944171f73967e8u);
	EXPECT_EQ(hash(xylVarString("\xff", 1)), 0xaf64724c8602eb6eu);
	EXPECT_EQ(hash(xylVarString("\0", 1)), 0xaf63bd4c8601b7dfu);
	EXPECT_NE(hash(xylVarString("a\0b", 3)), hash(xylVarString("a\0c", 3)));
}

TEST(xylVarString, SetEqualityComparesLengthsAndTextUpToTheTerminator) {
	const xylVarStringSetEqual equal;
	EXPECT_TRUE(equal(xylVarString("abc"), xylVarString("abc")));
	EXPECT_FALSE(equal(xylVarString("abc"), xylVarString("abd")));
	EXPECT_FALSE(equal(xylVarString("abc"), xylVarString("ab")));
	EXPECT_TRUE(equal(xylVarString("a\0b", 3), xylVarString("a\0c", 3)));
	xylVarString stored("x");
	stored.clear();
	EXPECT_TRUE(equal(xylVarString(), stored));
}

// --- Random runs against a plain string

// What the growth policy makes of a capacity.
int grown(int capacity, int length) {
	if (length == 0) return capacity;
	if (capacity == 0) return std::max(16, length + 1);
	if (capacity >= length + 1) return capacity;
	long long doubled = capacity;
	do doubled *= 2;
	while (doubled <= length + 1);
	return static_cast<int>(doubled);
}

// A string beside a model of its bytes, capacity and cursor.
struct Modelled {
	Open_string text;
	std::string bytes;
	int capacity = 0;
	int cursor = 0;

	void reserve(size_t length) { capacity = grown(capacity, static_cast<int>(length)); }
	void expect_agreement() const {
		ASSERT_EQ(text_of(text), bytes);
		ASSERT_EQ(text.capacity(), capacity);
		ASSERT_EQ(text.get_cursor_position(), cursor);
		ASSERT_TRUE(text.is_valid());
	}
};

class Random_edits {
public:
	explicit Random_edits(unsigned int seed) : random_(seed) {}

	void step(Modelled& m, Modelled& other) {
		const int kind = below(17);
		const std::string some = random_bytes();
		const int count = static_cast<int>(some.size());
		const int length = static_cast<int>(m.bytes.size());
		SCOPED_TRACE(kind);
		const auto append = [&m](const std::string& bytes) {
			if (bytes.empty()) return;
			m.reserve(m.bytes.size() + bytes.size());
			m.bytes += bytes;
		};
		switch (kind) {
		case 0:
			m.text.append(some.empty() ? 'x' : some[0]);
			append(some.empty() ? "x" : some.substr(0, 1));
			break;
		case 1:
			m.text.append(some.c_str());
			append(some.c_str());
			break;
		case 2:
			m.text.push_back(some.data(), static_cast<unsigned int>(count));
			append(some);
			break;
		case 3:
			m.text.append_binary(some.data(), count);
			append(some);
			break;
		case 4:
			m.text.append(other.text);
			append(other.bytes);
			break;
		case 5: {
			if (m.capacity == 0) break;
			const int start = below(length + 1);
			const int removed = below(length + 3);
			m.text.delete_range(start, removed);
			m.bytes.erase(static_cast<size_t>(start), static_cast<size_t>(removed));
			break;
		}
		case 6: {
			const int position = below(length + 1);
			const xylVarString source(some.data(), count);
			m.text.insert(position, source);
			m.bytes.resize(static_cast<size_t>(length));
			if (count > 0) m.reserve(static_cast<size_t>(position + count));
			m.bytes.insert(static_cast<size_t>(position), some);
			if (position < length) m.reserve(m.bytes.size());
			break;
		}
		case 7: {
			const int start = below(length + 1);
			const int end = start + below(length - start + 1);
			m.text.remove(start, end);
			m.bytes.erase(static_cast<size_t>(start), static_cast<size_t>(end - start));
			break;
		}
		case 8:
			m.text.set(some.data(), count);
			m.bytes = some;
			m.reserve(some.size());
			break;
		case 9:
			m.text = some.c_str();
			m.bytes = some.c_str();
			m.reserve(m.bytes.size());
			m.cursor = 0;
			break;
		case 10:
			static_cast<xylVarString&>(m.text) = other.text;
			m.bytes = other.bytes;
			m.reserve(m.bytes.size());
			m.cursor = other.cursor;
			break;
		case 11:
			m.cursor = below(length + 1);
			m.text.reset_cursor(m.cursor);
			break;
		case 12: {
			const auto room = static_cast<unsigned int>(below(200));
			m.text.ensure_length(room);
			m.reserve(room);
			break;
		}
		case 13: {
			const long long magnitude = static_cast<long long>(random_()) << below(32);
			const long long number = below(2) ? magnitude : -magnitude;
			m.text.append(number);
			append(std::to_string(number));
			break;
		}
		case 14: {
			m.text.push_back_value(count + (1ll << 40));
			std::string stored(8, '\0');
			stored[0] = static_cast<char>(count);
			stored[5] = 1;
			append(stored);
			break;
		}
		case 15: {
			const std::string written = some + "w";
			m.text.append_written<41>([&written](char* out) {
				std::memset(out, '?', 41); // all that was asked for may be written
				std::memcpy(out, written.data(), written.size());
				return static_cast<int>(written.size());
			});
			append(written);
			EXPECT_EQ(m.text.char_p()[m.text.length()], 0);
			break;
		}
		default:
			if (below(4) == 0) {
				const int room = below(64);
				m.text.empty_and_shrink(static_cast<unsigned int>(room));
				m.capacity = std::max(16, room + 1);
				m.cursor = 0;
			} else {
				m.text.clear();
			}
			m.bytes.clear();
		}
		m.expect_agreement();
	}

	int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned int>(limit)); }

private:
	std::string random_bytes() {
		std::string bytes(static_cast<size_t>(below(below(4) == 0 ? 40 : 6)), 'a');
		for (char& c : bytes) c = below(12) == 0 ? '\0' : static_cast<char>('a' + below(26));
		return bytes;
	}
	std::mt19937 random_;
};

TEST(xylVarString, RandomEditsAgreeWithAPlainString) {
	for (unsigned int seed = 1; seed <= 20; ++seed) {
		SCOPED_TRACE(seed);
		Random_edits edits(seed);
		Modelled strings[3];
		for (int i = 0; i < 1000; ++i) {
			edits.step(strings[edits.below(3)], strings[edits.below(3)]);
			if (HasFatalFailure()) return;
		}
	}
}

} // namespace
