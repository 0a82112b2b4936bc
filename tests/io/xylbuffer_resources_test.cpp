// The tokens of text resources: how a text becomes tokens, and the walk over them.

#include "resource_text_model.h"

#include <morvantis/io/xylbuffer.h>

#include <gtest/gtest.h>

#include <bit>
#include <random>
#include <string>

namespace {

using namespace std::string_literals;

struct Prepared {
	std::string text;
	Resource_text_flaws flaws;

	bool operator==(const Prepared&) const = default;
};

Prepared prepare(std::string text) {
	const Resource_text_flaws flaws =
		prepare_resource_text(reinterpret_cast<xylUInt8*>(text.data()), text.size());
	return {text, flaws};
}

TEST(resource_text, EveryByteIsClassified) {
	for (int c = 0; c < 256; ++c) {
		for (const std::size_t place : {0u, 7u, 15u, 16u, 31u, 32u, 39u}) {
			SCOPED_TRACE(c);
			std::string text(40, 'x');
			text[place] = static_cast<char>(c);
			Prepared expected{text, {}};
			const bool is_white = c == 0 || c == 9 || c == 10 || c == 13 || c == 32;
			if (c < 33 || c > 127) {
				expected.text[place] = 0;
				if (!is_white) expected.flaws.last_bad_byte = static_cast<xylUInt8>(c);
			} else if (c == ',') {
				expected.text[place] = '.';
				expected.flaws.has_comma = true;
			}
			EXPECT_EQ(prepare(text), expected) << "at " << place;
		}
	}
}

TEST(resource_text, LastBadByteIsTheOneKept) {
	for (std::size_t first = 0; first < 50; ++first) {
		for (std::size_t second = first + 1; second < 50; ++second) {
			std::string text(50, 'x');
			text[first] = '\x01';
			text[second] = '\xE9';
			EXPECT_EQ(prepare(text).flaws.last_bad_byte, 0xE9) << first << ' ' << second;
		}
	}
}

TEST(resource_text, NothingOutsideIsTouched) {
	for (std::size_t size = 0; size < 70; ++size) {
		std::string text(80, ',');
		prepare_resource_text(reinterpret_cast<xylUInt8*>(text.data()) + 5, size);
		EXPECT_EQ(text, std::string(5, ',') + std::string(size, '.') + std::string(75 - size, ','));
	}
}

TEST(resource_text, RandomTextsComeOutAsByteByByte) {
	std::mt19937 random(22);
	for (int run = 0; run < 20000; ++run) {
		const std::string text = random_resource_text(random);
		std::string plain = text;
		const Resource_text_flaws flaws = prepare_plainly(plain);
		ASSERT_EQ(prepare(text), (Prepared{plain, flaws})) << run;
	}
}

// A buffer with the text, rewound, and enough zero bytes behind it.
xylBuffer buffer_of(const std::string& text) {
	xylBuffer buffer;
	buffer.allocate(text.size() + 16);
	buffer.rewind_and_zero_memory();
	buffer.write_void(text.data(), text.size());
	buffer.rewind();
	return buffer;
}

TEST(xylBuffer, WalkSkipsATokenAtTheVeryStart) {
	xylBuffer buffer = buffer_of("one\0two\0\0\0three"s);
	EXPECT_TRUE(buffer == "one");
	EXPECT_STREQ(buffer.next_string(), "two");
	EXPECT_TRUE(buffer == "two");
	EXPECT_STREQ(buffer.next_string(), "three");
	EXPECT_TRUE(buffer != "two");
}

TEST(xylBuffer, WalkAfterWhiteSpaceStartsWithTheFirstToken) {
	xylBuffer buffer = buffer_of("\0\0one\0two"s);
	EXPECT_STREQ(buffer.next_string(), "one");
	EXPECT_STREQ(buffer.next_string(), "two");
}

TEST(xylBuffer, WalkStopsAtAControlByte) {
	xylBuffer buffer = buffer_of("one\x1Ftwo\0three"s);
	EXPECT_STREQ(buffer.next_string(), "\x1Ftwo");
	EXPECT_STREQ(buffer.next_string(), "\x1Ftwo"); // and does not leave it
}

TEST(xylBuffer, WalkTakesHighBytesForPartsOfTokens) {
	xylBuffer buffer = buffer_of("on\xE9\0two"s);
	EXPECT_STREQ(buffer.next_string(), "two");
}

TEST(xylBuffer, NumbersAreReadFromTokens) {
	xylBuffer buffer = buffer_of("\0"
	                             "12abc\0-7\0"
	                             "4294967295\0-1\0"
	                             "99999999999\0"
	                             "1.5\0"
	                             "0.1\0abc"s);
	EXPECT_EQ(buffer.next_int(), 12);
	EXPECT_EQ(buffer.next_int(), -7);
	EXPECT_EQ(buffer.next_uint(), 4294967295u);
	EXPECT_EQ(buffer.next_uint(), 4294967295u);
	EXPECT_EQ(buffer.next_uint(), 4294967295u);
	EXPECT_EQ(buffer.next_float(), 1.5f);
	EXPECT_EQ(buffer.next_double(), 0.1);
	EXPECT_EQ(buffer.next_int(), 0);
	buffer.rewind();
	for (int i = 0; i < 7; ++i) buffer.next_string();
	buffer.cursor -= 1;
	EXPECT_EQ(buffer.next_float(), 0.1f);
}

// Just above the middle of two floats: its nearest double is the middle itself.
TEST(xylBuffer, FloatsAreNarrowedDoubles) {
	xylBuffer buffer = buffer_of("\0"
	                             "1.000000059604644775390625000000001"s);
	EXPECT_EQ(buffer.next_float(), 1.0f);
}

TEST(xylBuffer, SkipsOneTokenWhateverTheCount) {
	for (const int count : {5, 1, 0, -3}) {
		SCOPED_TRACE(count);
		xylBuffer buffer = buffer_of("one\0two"s);
		const char* end = buffer.skip_string(count);
		EXPECT_EQ(end, static_cast<char*>(buffer));
		EXPECT_EQ(buffer.get_length(), 3u);
		buffer.skip_string(count);
		EXPECT_EQ(buffer.get_length(), 3u);
	}
}

} // namespace
