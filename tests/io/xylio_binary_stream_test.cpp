#include <morvantis/io/xylio_binary_stream.h>

#include <morvantis/io/xylio_text_stream.h>
#include <morvantis/math/xylquaternion.h>
#include <morvantis/strings/xylconststring.h>

#include "recording_host.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

namespace {

std::string bytes_of(const xylIO_Stream& stream) {
	return std::string(stream.buffer.char_p(), static_cast<size_t>(stream.buffer.length()));
}

std::string raw(std::initializer_list<int> bytes) {
	std::string text;
	for (const int byte : bytes) text += static_cast<char>(byte);
	return text;
}

template <typename Value> std::string written(const Value& value) {
	xylIO_binary_stream stream;
	EXPECT_EQ(&(stream << value), &stream);
	EXPECT_EQ(stream.buffer.char_p()[stream.buffer.length()], 0) << "no zero byte behind it";
	return bytes_of(stream);
}

template <typename Value> void comes_back(const Value& value, unsigned int size) {
	xylIO_binary_stream stream;
	stream << value;
	EXPECT_EQ(stream.buffer.length(), static_cast<int>(size));
	Value read{};
	EXPECT_EQ(&(stream >> read), &stream);
	EXPECT_EQ(read, value);
	EXPECT_EQ(stream.get_cursor(), size);
	EXPECT_TRUE(stream.eof());
}

} // namespace

TEST(xylIO_binary_stream, WritesEachValueInItsBytes) {
	EXPECT_EQ(written('a'), "a");
	EXPECT_EQ(written(static_cast<unsigned char>(200)), raw({200}));
	EXPECT_EQ(written(true), raw({1}));
	EXPECT_EQ(written(false), raw({0}));
	EXPECT_EQ(written(static_cast<short>(-2)), raw({0xfe, 0xff}));
	EXPECT_EQ(written(static_cast<unsigned short>(0x1234)), raw({0x34, 0x12}));
	EXPECT_EQ(written(0x01020304), raw({4, 3, 2, 1}));
	EXPECT_EQ(written(0xfffefdfcu), raw({0xfc, 0xfd, 0xfe, 0xff}));
	EXPECT_EQ(written(1.5f), raw({0, 0, 0xc0, 0x3f}));
	EXPECT_EQ(written(xylInt64{-2}), raw({0xfe, 255, 255, 255, 255, 255, 255, 255}));
	EXPECT_EQ(written(xylUInt64{0x0102030405060708}), raw({8, 7, 6, 5, 4, 3, 2, 1}));
	EXPECT_EQ(written(xylQuaternion(1, 2, -2, 0)),
	          raw({0, 0, 0x80, 0x3f, 0, 0, 0, 0x40, 0, 0, 0, 0xc0, 0, 0, 0, 0}));
	EXPECT_EQ(written(static_cast<const char*>("ab")), raw({2, 0, 0, 0, 'a', 'b'}));
	EXPECT_EQ(written(static_cast<const char*>("")), raw({0, 0, 0, 0}));
	EXPECT_EQ(written(static_cast<const char*>(nullptr)), raw({0, 0, 0, 0}));
	EXPECT_EQ(written(xylVarString("a\0b", 3)), raw({3, 0, 0, 0, 'a', 0, 'b'}));
	EXPECT_EQ(written(xylVarString()), raw({0, 0, 0, 0}));
	EXPECT_EQ(written(xylConstString<16>("x")), raw({1, 0, 0, 0, 'x'}));
	EXPECT_EQ(written(xylStream_manip_none), "");
}

TEST(xylIO_binary_stream, ValuesComeBackAndMoveTheCursorBySize) {
	comes_back('a', 1);
	comes_back(static_cast<unsigned char>(200), 1);
	comes_back(true, 1);
	comes_back(static_cast<short>(-2), 2);
	comes_back(static_cast<unsigned short>(65535), 2);
	comes_back(-7, 4);
	comes_back(0xffffffffu, 4);
	comes_back(-0.1f, 4);
	comes_back(xylInt64{-5}, 8);
	comes_back(xylUInt64{1} << 63, 8);
	xylIO_binary_stream stream;
	stream << xylQuaternion(1, 2, 3, 4);
	xylQuaternion q{};
	stream >> q >> xylStream_manip_none;
	EXPECT_EQ(q.w, 1);
	EXPECT_EQ(q.x, 2);
	EXPECT_EQ(q.y, 3);
	EXPECT_EQ(q.z, 4);
	EXPECT_EQ(stream.get_cursor(), 16u);
}

TEST(xylIO_binary_stream, AnyByteButZeroIsTrue) {
	xylIO_binary_stream stream("\x02\x80", 3);
	bool value = false;
	stream >> value;
	EXPECT_TRUE(value);
	stream >> value;
	EXPECT_TRUE(value);
	stream >> value;
	EXPECT_FALSE(value);
}

TEST(xylIO_binary_stream, TextReplacesWhatTheStringHeld) {
	xylIO_binary_stream stream;
	stream << "hello" << xylVarString("x\0y", 3) << "";
	xylVarString text("before");
	text.reset_cursor(3);
	stream >> text;
	EXPECT_TRUE(text == "hello");
	EXPECT_EQ(text.get_cursor_position(), 0);
	EXPECT_EQ(text.char_p()[5], 0);
	stream >> text;
	EXPECT_EQ(text.length(), 3);
	EXPECT_EQ(std::memcmp(text.char_p(), "x\0y", 4), 0);
	text.reset_cursor(2);
	stream >> text;
	EXPECT_TRUE(text.is_empty()) << "count 0 empties the string";
	EXPECT_EQ(text.get_cursor_position(), 0);
	EXPECT_TRUE(stream.eof());
}

TEST(xylIO_binary_stream, FixedTextRefuses64Characters) {
	xylIO_binary_stream stream;
	stream << std::string(63, 'a').c_str() << std::string(64, 'b').c_str() << "c";
	xylConstString<64> text("before");
	stream >> text;
	EXPECT_EQ(text.length(), 63);
	stream >> text;
	EXPECT_TRUE(text.is_empty());
	EXPECT_EQ(Recording_host::get().take().size(), 1u) << "the fixed string's own warning";
	stream >> text;
	EXPECT_TRUE(text == "c");
}

TEST(xylIO_binary_stream, StreamSendsItsUnreadPart) {
	xylIO_binary_stream source("abcdef", 6);
	source.set_cursor(2);
	xylIO_binary_stream stream;
	stream << source;
	EXPECT_EQ(bytes_of(stream), raw({4, 0, 0, 0}) + "cdef");
	EXPECT_EQ(source.get_cursor(), 2u);
	source.set_cursor(9);
	stream.clear();
	stream << source << xylIO_binary_stream();
	EXPECT_EQ(bytes_of(stream), raw({0, 0, 0, 0, 0, 0, 0, 0})) << "nothing is behind the end";
}

TEST(xylIO_binary_stream, StreamReplacesItsTargetByWayOfClear) {
	struct Counting_stream : xylIO_binary_stream {
		void clear() override {
			++calls;
			xylIO_binary_stream::clear();
		}
		int calls = 0;
	};
	xylIO_binary_stream stream;
	stream << xylIO_binary_stream("abc", 3) << 7 << xylIO_binary_stream();
	Counting_stream target;
	target << "before";
	target.set_cursor(3);
	stream >> target;
	EXPECT_EQ(target.calls, 1);
	EXPECT_EQ(bytes_of(target), "abc");
	EXPECT_EQ(target.get_cursor(), 0u);
	EXPECT_EQ(target.buffer.char_p()[3], 0);
	int value = 0;
	stream >> value;
	EXPECT_EQ(value, 7);
	xylIO_text_stream text;
	text << "before";
	stream >> text;
	EXPECT_EQ(bytes_of(text), "");
	EXPECT_EQ(text.buffer.char_p()[0], 0);
}

TEST(xylIO_binary_stream, RawBytesHaveNoTerminator) {
	xylIO_binary_stream stream;
	stream << "0123456789";
	stream.clear();
	char bytes[] = {'a', 'b', 'c'};
	stream.write_void(bytes, 3);
	EXPECT_EQ(bytes_of(stream), "abc");
	EXPECT_EQ(stream.buffer.char_p()[3], 0) << "of the length that was there";
	EXPECT_EQ(stream.buffer.char_p()[4], '0') << "kept: not written";
	stream.write_void(bytes, 0);
	stream.write_void(bytes, 0x80000000u);
	EXPECT_EQ(stream.buffer.length(), 3);
}

TEST(xylIO_binary_stream, ReadsAnotherStreamWithAndWithoutConsumingIt) {
	xylIO_binary_stream source("abcdef", 6);
	source.set_cursor(4);
	xylIO_binary_stream stream;
	stream << 'x';
	stream.read_no_consume(source);
	EXPECT_EQ(bytes_of(stream), "xef");
	EXPECT_EQ(source.get_cursor(), 4u);
	stream.read_consume(source);
	EXPECT_EQ(bytes_of(stream), "xefef");
	EXPECT_EQ(source.get_cursor(), 6u);
	stream.read_consume(source);
	EXPECT_EQ(bytes_of(stream), "xefef");
}

TEST(xylIO_binary_stream, CursorPointerLooksAtTheNextByte) {
	xylIO_binary_stream stream("abcdef", 6);
	int value = 0;
	stream >> value;
	EXPECT_EQ(stream.get_cursor(), 4u);
	EXPECT_EQ(*stream.get_cursor_pointer(), 'e');
	stream.set_cursor(1);
	EXPECT_EQ(*stream.get_cursor_pointer(), 'b');
}

// Against a plain list of bytes.
TEST(xylIO_binary_stream, AnyOrderOfValuesComesBack) {
	std::mt19937_64 random(53);
	for (int round = 0; round < 50; ++round) {
		xylIO_binary_stream stream;
		std::string model;
		std::vector<std::pair<int, xylUInt64>> values;
		for (int i = 0; i < 100; ++i) {
			const int kind = static_cast<int>(random() % 4);
			const xylUInt64 value = random() >> (64 - (8 << kind));
			values.emplace_back(kind, value);
			if (kind == 0) stream << static_cast<unsigned char>(value);
			if (kind == 1) stream << static_cast<unsigned short>(value);
			if (kind == 2) stream << static_cast<unsigned int>(value);
			if (kind == 3) stream << value;
			for (int byte = 0; byte < 1 << kind; ++byte) {
				model += static_cast<char>(value >> (8 * byte));
			}
		}
		ASSERT_EQ(bytes_of(stream), model);
		for (const auto& [kind, value] : values) {
			xylUInt64 u64 = 0;
			unsigned int u32 = 0;
			unsigned short u16 = 0;
			unsigned char u8 = 0;
			if (kind == 0) stream >> u8;
			if (kind == 1) stream >> u16;
			if (kind == 2) stream >> u32;
			if (kind == 3) stream >> u64;
			ASSERT_EQ(u64 | u32 | u16 | u8, value);
		}
		EXPECT_TRUE(stream.eof());
	}
}
