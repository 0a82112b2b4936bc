// The growing string as a small text input: cursor, tokens, numbers and lines.

#include <morvantis/strings/xylvarstring.h>

#include "string_text.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <vector>

namespace {

using Result = xylVarString::Read_token_result;

constexpr int token_area = 8192;

// What next_token() leaves in an area that was full of other bytes.
struct Read_token {
	explicit Read_token(xylVarString& source) : area(token_area + 1, '#') {
		source.next_token(area.data(), size);
		EXPECT_EQ(area[token_area], '#') << "wrote behind the area";
		text.assign(area.data(), static_cast<size_t>(std::min(size, token_area - 1)));
		EXPECT_EQ(area[text.size()], 0);
	}
	std::vector<char> area;
	int size = -1;
	std::string text;
};

TEST(xylVarString, ResultsOfReadingHaveTheirValues) {
	EXPECT_EQ(xylVarString::read_token_success, 0);
	EXPECT_EQ(xylVarString::read_token_end_of_text, 1);
	EXPECT_EQ(xylVarString::read_token_invalid, 2);
}

TEST(xylVarString, CursorMovesWithoutTests) {
	xylVarString text("abc");
	EXPECT_EQ(text.get_cursor_position(), 0);
	EXPECT_EQ(text.stream_length(), 3);
	text.reset_cursor(2);
	EXPECT_EQ(text.get_cursor_position(), 2);
	EXPECT_FALSE(text.eof());
	text.advance_cursor_by(1);
	EXPECT_TRUE(text.eof());
	EXPECT_EQ(text.stream_length(), 0);
	text.advance_cursor_by(5);
	EXPECT_EQ(text.get_cursor_position(), 8);
	EXPECT_EQ(text.stream_length(), -5);
	EXPECT_TRUE(text.eof());
	text.reset_cursor(-1);
	EXPECT_TRUE(text.eof()) << "as unsigned not below the length";
	text.consume_all();
	EXPECT_EQ(text.get_cursor_position(), 3);
	EXPECT_TRUE(xylVarString().eof());
}

TEST(xylVarString, TcpEndAlsoStandsOnALastSpace) {
	struct Case {
		const char* text;
		int cursor;
		bool end;
	};
	const Case cases[] = {{"ab ", 2, true},  {"ab ", 1, false},  {"ab ", 3, true},
	                      {"abc", 2, false}, {"ab\n", 2, false}, {"a  ", 1, false},
	                      {"", 0, true}};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.text);
		xylVarString text(c.text);
		text.reset_cursor(c.cursor);
		EXPECT_EQ(text.tcp_eof(), c.end);
	}
}

TEST(xylVarString, CursorMovesToACharacter) {
	xylVarString text("a,b,c");
	text.move_cursor_to_next_char(',');
	EXPECT_EQ(text.get_cursor_position(), 1);
	text.move_cursor_to_next_char(',');
	EXPECT_EQ(text.get_cursor_position(), 1) << "at the cursor counts";
	text.advance_cursor_by(1);
	text.move_cursor_to_next_char(',');
	EXPECT_EQ(text.get_cursor_position(), 3);
	text.move_cursor_to_next_char('x');
	EXPECT_EQ(text.get_cursor_position(), 5);
	text.move_cursor_to_next_char('c');
	EXPECT_EQ(text.get_cursor_position(), 5);
}

TEST(xylVarString, EveryByteBelow33SeparatesTokens) {
	for (int i = 0; i < 256; ++i) {
		SCOPED_TRACE(i);
		const char bytes[] = {'a', static_cast<char>(i), 'b'};
		xylVarString text(bytes, 3);
		const Read_token token(text);
		EXPECT_EQ(token.text, i < 33 ? std::string("a") : std::string(bytes, 3));
		EXPECT_EQ(text.get_cursor_position(), i < 33 ? 1 : 3) << "the separator stays";
	}
}

TEST(xylVarString, HasMoreTokensLeavesTheCursorOnTheToken) {
	xylVarString text(" \t\n\x01 ab ");
	EXPECT_TRUE(text.has_more_tokens());
	EXPECT_EQ(text.get_cursor_position(), 5);
	EXPECT_TRUE(text.has_more_tokens());
	EXPECT_EQ(text.get_cursor_position(), 5);
	text.reset_cursor(7);
	EXPECT_FALSE(text.has_more_tokens());
	EXPECT_EQ(text.get_cursor_position(), 8);
	EXPECT_FALSE(text.has_more_tokens());
	EXPECT_FALSE(xylVarString().has_more_tokens());
	xylVarString high("\x80");
	EXPECT_TRUE(high.has_more_tokens());
}

struct Token_case {
	const char* name;
	const char* text;
	const char* token;
	int cursor;
};

TEST(xylVarString, ReadsTokensAndQuotedTokens) {
	const Token_case cases[] = {
		{"empty text", "", "", 0},
		{"separators only", " \n ", "", 3},
		{"one token", "abc", "abc", 3},
		{"token with space around", "  abc def", "abc", 5},
		{"quoted", "\"a b\" c", "a b", 5},
		{"quoted behind space", " \"a\tb\"c", "a\tb", 6},
		{"empty quoted", "\"\" a", "", 2},
		{"quote inside a token", "a\"b c\"", "a\"b", 3},
		{"closing quote at the end", "\"ab\"", "ab", 4},
		// kept: the cursor ends one past the length
		{"unclosed quote", "\"a b", "a b", 5},
		{"quote alone", "\"", "", 2},
	};
	for (const Token_case& c : cases) {
		SCOPED_TRACE(c.name);
		xylVarString text(c.text);
		const Read_token token(text);
		EXPECT_EQ(token.text, c.token);
		EXPECT_EQ(token.size, static_cast<int>(token.text.size()));
		EXPECT_EQ(text.get_cursor_position(), c.cursor);
		text.reset_cursor(0);
		xylVarString token_string("before");
		token_string.reset_cursor(4);
		text.next_token_str(token_string);
		EXPECT_EQ(text_of(token_string), c.token);
		EXPECT_TRUE(is_terminated(token_string));
		EXPECT_EQ(token_string.get_cursor_position(), 4);
		EXPECT_EQ(text.get_cursor_position(), c.cursor);
	}
}

TEST(xylVarString, ReadsTokensOneAfterTheOther) {
	xylVarString text("one \"two three\"four\r\nfive");
	std::vector<std::string> tokens;
	while (text.has_more_tokens()) tokens.push_back(Read_token(text).text);
	EXPECT_EQ(tokens, (std::vector<std::string>{"one", "two three", "four", "five"}));
	EXPECT_EQ(Read_token(text).size, 0);
}

TEST(xylVarString, CursorBehindTheEndReadsAnEmptyToken) {
	xylVarString text("abc");
	text.reset_cursor(4);
	EXPECT_EQ(Read_token(text).size, 0);
	EXPECT_EQ(text.get_cursor_position(), 4);
	xylVarString token("x");
	text.next_token_str(token);
	EXPECT_EQ(token.length(), 0);
	EXPECT_STREQ(token.char_p(), "");
}

TEST(xylVarString, TokensEndAt8192Bytes) {
	for (const int length : {8190, 8191, 8192, 8193, 9000}) {
		SCOPED_TRACE(length);
		std::string plain(static_cast<size_t>(length), 'x');
		for (size_t i = 0; i < plain.size(); ++i) plain[i] = static_cast<char>('a' + i % 26);
		const int taken = std::min(length, token_area);
		const std::string seen =
			plain.substr(0, static_cast<size_t>(std::min(taken, token_area - 1)));
		xylVarString text(plain + " y");
		const Read_token token(text);
		EXPECT_EQ(token.size, taken);
		EXPECT_EQ(token.text, seen);
		EXPECT_EQ(text.get_cursor_position(), taken);
		xylVarString quoted("\"" + plain + "\" y");
		const Read_token quoted_token(quoted);
		EXPECT_EQ(quoted_token.size, taken);
		EXPECT_EQ(quoted_token.text, seen);
		EXPECT_EQ(quoted.get_cursor_position(), taken + 2) << "one byte is stepped over";
		// Without the limit.
		text.reset_cursor(0);
		xylVarString unlimited;
		text.next_token_str(unlimited);
		EXPECT_EQ(text_of(unlimited), plain);
	}
}

// Short ones are copied in blocks of sixteen bytes: in front of a text, and with no byte to spare
// behind them in the storage.
TEST(xylVarString, TokensOfEveryLengthAreWhole) {
	for (size_t length = 1; length <= 40; ++length) {
		SCOPED_TRACE(length);
		std::string plain(length, 'a');
		for (size_t i = 0; i < length; ++i) plain[i] = static_cast<char>('a' + i % 26);
		for (const char* const behind : {"", " ", "\tand a tail of some twenty bytes"}) {
			for (const bool quoted : {false, true}) {
				xylVarString text(quoted ? '"' + plain + '"' + behind : plain + behind);
				EXPECT_EQ(Read_token(text).text, plain);
				EXPECT_EQ(text.get_cursor_position(), static_cast<int>(length) + (quoted ? 2 : 0));
				text.reset_cursor(0);
				Open_string token;
				text.next_token_str(token);
				EXPECT_EQ(text_of(token), plain);
				EXPECT_TRUE(is_terminated(token));
				EXPECT_TRUE(token.is_valid());
			}
		}
	}
}

struct Number_case {
	const char* name;
	std::string text;
	Result result;
	long long value; // on success
	int cursor;
};

const Result success = xylVarString::read_token_success;
const Result at_end = xylVarString::read_token_end_of_text;
const Result invalid = xylVarString::read_token_invalid;

template <typename Number, size_t count>
void expect_reads(Result (xylVarString::*read)(Number&), const Number_case (&cases)[count]) {
	for (const Number_case& c : cases) {
		SCOPED_TRACE(c.name);
		xylVarString text(c.text);
		Number value = 77;
		EXPECT_EQ((text.*read)(value), c.result);
		EXPECT_EQ(value, c.result == success ? c.value : 77);
		EXPECT_EQ(text.get_cursor_position(), c.cursor);
	}
}

TEST(xylVarString, ReadsAnIntegerAndConsumesTheByteBehindIt) {
	const Number_case cases[] = {
		{"nothing", "", at_end, 0, 0},
		{"separators", " \n\t", at_end, 0, 3},
		{"number and separator", "12 ", success, 12, 3},
		{"number between separators", "  12\n34", success, 12, 5},
		{"signs", "-12 ", success, -12, 4},
		{"plus", "+12 ", success, 12, 4},
		{"sign inside", "1-2 ", success, 1, 4},
		{"two signs", "--2 ", success, 0, 4},
		{"sign alone", "- ", success, 0, 2},
		// kept: the last byte of the text isn't stored
		{"two digits at the end", "12", success, 1, 2},
		{"one digit at the end", "7", success, 0, 1},
		{"letter at the very end", "12a", success, 12, 3},
		{"letter and more", "12ab", invalid, 0, 3},
		{"letter, then separator", "12a ", invalid, 0, 3},
		{"letter first", "ab", invalid, 0, 1},
		{"letter first and last", "a", success, 0, 1},
		{"byte of 128 and more", "1\xe4 2", invalid, 0, 2},
		{"32 bits", "2147483647 ", success, INT_MAX, 11},
		{"saturates", "2147483648 ", success, INT_MAX, 11},
		{"saturates below", "-99999999999 ", success, INT_MIN, 13},
		{"19 characters", "1234567890123456789 ", success, INT_MAX, 20},
		{"19 characters, and one not stored", "12345678901234567890", success, INT_MAX, 20},
		{"zero byte separates",
	     std::string("12\0"
	                 "3",
	                 4),
	     success, 12, 3},
	};
	expect_reads(&xylVarString::try_next_token_int, cases);
}

TEST(xylVarString, ReadsA64BitIntegerAndLeavesTheByteBehindIt) {
	const Number_case cases[] = {
		{"nothing", "", at_end, 0, 0},
		{"separators", " \n\t", at_end, 0, 3},
		{"number and separator", "12 ", success, 12, 2},
		{"number between separators", "  12\n34", success, 12, 4},
		{"a minus sign wraps", "-12 ", success, -12, 3},
		{"plus", "+12 ", success, 12, 3},
		{"two digits at the end", "12", success, 12, 2},
		{"one digit at the end", "7", success, 7, 1},
		{"letter at the very end", "12a", invalid, 0, 2},
		{"letter and more", "12ab", invalid, 0, 2},
		{"letter first", "a", invalid, 0, 0},
		{"byte of 128 and more", "1\xe4 2", invalid, 0, 1},
		{"above 32 bits", "4294967296 ", success, 4294967296, 10},
		{"19 characters", "9223372036854775807", success, LLONG_MAX, 19},
		{"beyond the signed range", "9999999999999999999", success,
	     static_cast<long long>(9999999999999999999u), 19},
	};
	expect_reads(&xylVarString::try_next_token_int64, cases);
}

TEST(xylVarString, NextTokenNumbersGiveTheValueAlone) {
	xylVarString text("12 -34 56 78");
	EXPECT_EQ(text.next_token_int(), 12);
	EXPECT_EQ(text.next_token_int(), -34);
	EXPECT_EQ(text.next_token_int64(), 56);
	EXPECT_EQ(text.next_token_int64(), 78);
	EXPECT_TRUE(text.eof());
}

TEST(xylVarStringDeathTest, TwentyCharactersOfANumberEndTheProcess) {
	int value = 0;
	long long value64 = 0;
	EXPECT_DEATH(xylVarString("12345678901234567890 ").try_next_token_int(value), "");
	EXPECT_DEATH(xylVarString("12345678901234567890 ").try_next_token_int64(value64), "");
	EXPECT_DEATH(xylVarString("12345678901234567890").try_next_token_int64(value64), "");
	EXPECT_DEATH(xylVarString("++++++++++++++++++++++++++++++ ").try_next_token_int(value), "");
}

TEST(xylVarString, LinesEndInFrontOfTheLineFeed) {
	xylVarString text("one\r\n\ntwo");
	EXPECT_EQ(text_of(text.get_line()), "one\r");
	EXPECT_EQ(text.get_cursor_position(), 4);
	const xylVarString again = text.get_line();
	EXPECT_EQ(again.length(), 0);
	EXPECT_STREQ(again.char_p(), "");
	EXPECT_EQ(text.get_cursor_position(), 4) << "the caller steps over the line feed";
	text.advance_cursor_by(1);
	EXPECT_EQ(text.get_line().length(), 0);
	text.advance_cursor_by(1);
	const xylVarString last = text.get_line();
	EXPECT_EQ(text_of(last), "two");
	EXPECT_EQ(last.get_cursor_position(), 0);
	EXPECT_TRUE(text.eof());
	EXPECT_EQ(text.get_line().length(), 0);
	EXPECT_EQ(xylVarString().get_line().length(), 0);
	xylVarString zeros("a\0b\nc", 5);
	EXPECT_EQ(text_of(zeros.get_line()), std::string("a\0b", 3));
}

TEST(xylVarString, TakesBytesFromAnotherCursor) {
	xylVarString source("abcdef");
	source.reset_cursor(1);
	xylVarString target("x");
	target.get_front_str(source, 3);
	EXPECT_EQ(text_of(target), "xbcd");
	EXPECT_TRUE(is_terminated(target));
	EXPECT_EQ(source.get_cursor_position(), 4);
	EXPECT_EQ(target.get_cursor_position(), 0);
	xylVarString none;
	none.get_front_str(source, 0);
	EXPECT_TRUE(none.is_buffer_null());
	EXPECT_EQ(source.get_cursor_position(), 4);
}

TEST(xylVarString, FindsTheFirstOccurrence) {
	struct Case {
		const char* text;
		const char* searched;
		int index;
	};
	const Case cases[] = {
		{"abcabc", "bc", 1}, {"abcabc", "abcabc", 0}, {"abcabc", "abcabd", -1},
		{"abc", "abcd", -1}, {"abc", "", 0},          {"", "", 0},
		{"", "a", -1},       {"abc", "c", 2},         {"abc", "x", -1},
		{"aab", "ab", 1},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(std::string(c.searched) + " in " + c.text);
		EXPECT_EQ(xylVarString(c.text).find_first_occurence(c.searched), c.index);
	}
	const xylVarString zeros("a\0b", 3);
	EXPECT_EQ(zeros.find_first_occurence(xylVarString("a\0c", 3)), 0)
		<< "equal lengths are compared up to the terminator";
	EXPECT_EQ(zeros.find_first_occurence(xylVarString("\0b", 2)), 1) << "others are bytes";
	EXPECT_EQ(zeros.find_first_occurence(xylVarString("\0c", 2)), -1);
}

TEST(xylVarString, CountsACharacterUpToTheTerminator) {
	EXPECT_EQ(xylVarString("abcabca").get_count('a'), 3);
	EXPECT_EQ(xylVarString("abc").get_count('x'), 0);
	EXPECT_EQ(xylVarString("a\0a", 3).get_count('a'), 1);
	EXPECT_EQ(xylVarString("abc").get_count('\0'), 0);
	EXPECT_EQ(xylVarString().get_count('a'), 0);
}

TEST(xylVarString, ConvertsToNumbers) {
	EXPECT_EQ(xylVarString(" -12abc").to_int(), -12);
	EXPECT_EQ(xylVarString("abc").to_int(), 0);
	EXPECT_EQ(xylVarString("3000000000").to_int(), INT_MAX);
	EXPECT_EQ(xylVarString("-3000000000").to_int(), INT_MIN);
	EXPECT_EQ(xylVarString(" -1.5e2x").to_float(), -150.0f);
	EXPECT_EQ(xylVarString("0.1").to_float(), 0.1f);
	EXPECT_EQ(xylVarString("abc").to_float(), 0.0f);
	EXPECT_EQ(xylVarString("1.00000005960464477550").to_float(), 1.0f) << "by way of a double";
	xylVarString empty("x");
	empty.clear();
	EXPECT_EQ(empty.to_int(), 0);
	EXPECT_EQ(empty.to_float(), 0.0f);
}

// The steps of a token reader on a plain string.
std::string plain_token(const std::string& text, size_t& cursor) {
	while (cursor < text.size() && static_cast<unsigned char>(text[cursor]) < 33) ++cursor;
	if (cursor >= text.size()) return "";
	std::string token;
	if (text[cursor] == '"') {
		for (++cursor; cursor < text.size() && text[cursor] != '"'; ++cursor) token += text[cursor];
		++cursor;
		return token;
	}
	for (; cursor < text.size() && static_cast<unsigned char>(text[cursor]) >= 33; ++cursor) {
		token += text[cursor];
	}
	return token;
}

TEST(xylVarString, RandomTextsAreReadAsByAPlainReader) {
	std::mt19937_64 random(33);
	const std::string letters = std::string("ab\"\" \n\x01\x7f\xff-", 10) + '\0';
	for (int round = 0; round < 5000; ++round) {
		std::string plain(random() % 40, ' ');
		for (char& c : plain) c = letters[random() % letters.size()];
		SCOPED_TRACE(plain);
		xylVarString by_area(plain);
		xylVarString by_string(plain);
		xylVarString token;
		for (size_t cursor = 0; cursor < plain.size();) {
			const std::string expected = plain_token(plain, cursor);
			ASSERT_EQ(Read_token(by_area).text, expected);
			by_string.next_token_str(token);
			ASSERT_EQ(text_of(token), expected);
			ASSERT_EQ(by_area.get_cursor_position(), static_cast<int>(cursor));
			ASSERT_EQ(by_string.get_cursor_position(), static_cast<int>(cursor));
		}
	}
}

} // namespace
