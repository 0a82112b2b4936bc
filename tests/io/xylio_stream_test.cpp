// The abstract stream: the order of its operations, its fields and what it does itself.

#include <morvantis/io/xylio_binary_stream.h>

#include <morvantis/strings/xylconststring.h>

#include "virtual_order.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

namespace {

template <typename Value> size_t place_of_output() {
	return virtual_index<xylIO_Stream& (xylIO_Stream::*)(Value)>(&xylIO_Stream::operator<<);
}

template <typename Value> size_t place_of_input() {
	return virtual_index<xylIO_Stream& (xylIO_Stream::*)(Value)>(&xylIO_Stream::operator>>);
}

} // namespace

// The destructor is the first operation and takes two places in this table, so each index here is
// one more than the operation's number.
TEST(xylIO_Stream, OperationsStandInTheirOrder) {
	using Stream = xylIO_Stream;
	EXPECT_EQ(virtual_index(&Stream::clear), 2u);
	EXPECT_EQ(virtual_index(&Stream::reset_to_buffer_start), 3u);
	EXPECT_EQ(place_of_output<const xylQuaternion&>(), 4u);
	EXPECT_EQ(place_of_output<const xylIO_Stream&>(), 5u);
	EXPECT_EQ(place_of_output<float>(), 6u);
	EXPECT_EQ(place_of_output<bool>(), 7u);
	EXPECT_EQ(place_of_output<xylUInt64>(), 8u);
	EXPECT_EQ(place_of_output<xylInt64>(), 9u);
	EXPECT_EQ(place_of_output<int>(), 10u);
	EXPECT_EQ(place_of_output<unsigned int>(), 11u);
	EXPECT_EQ(place_of_output<short>(), 12u);
	EXPECT_EQ(place_of_output<unsigned char>(), 13u);
	EXPECT_EQ(place_of_output<unsigned short>(), 14u);
	EXPECT_EQ(place_of_output<const char*>(), 15u);
	EXPECT_EQ(place_of_output<const xylString_base&>(), 16u);
	EXPECT_EQ(place_of_output<const xylStream_manip&>(), 17u);
	EXPECT_EQ(place_of_input<char&>(), 18u);
	EXPECT_EQ(place_of_input<xylIO_Stream&>(), 19u);
	EXPECT_EQ(place_of_input<xylQuaternion&>(), 20u);
	EXPECT_EQ(place_of_input<float&>(), 21u);
	EXPECT_EQ(place_of_input<bool&>(), 22u);
	EXPECT_EQ(place_of_input<xylUInt64&>(), 23u);
	EXPECT_EQ(place_of_input<xylInt64&>(), 24u);
	EXPECT_EQ(place_of_input<int&>(), 25u);
	EXPECT_EQ(place_of_input<unsigned int&>(), 26u);
	EXPECT_EQ(place_of_input<short&>(), 27u);
	EXPECT_EQ(place_of_input<unsigned char&>(), 28u);
	EXPECT_EQ(place_of_input<unsigned short&>(), 29u);
	EXPECT_EQ(place_of_input<xylConstString<64>&>(), 30u);
	EXPECT_EQ(place_of_input<xylVarString&>(), 31u);
	EXPECT_EQ(place_of_input<const xylStream_manip&>(), 32u);
	EXPECT_EQ(virtual_index(&Stream::eof), 33u);
	EXPECT_EQ(virtual_index(&Stream::set_auto_flush), 34u);
	EXPECT_EQ(virtual_index(&Stream::get_auto_flush), 35u);
	EXPECT_EQ(virtual_index(&Stream::flush), 36u);
}

TEST(xylIO_Stream, FieldsStandInTheirOrder) {
	const xylIO_binary_stream stream;
	const void* const fields[] = {&stream.name,       &stream.format_check_pending,
	                              &stream.auto_flush, &stream.flushed_length,
	                              &stream.is_binary,  &stream.buffer};
	for (size_t i = 1; i < std::size(fields); ++i) EXPECT_LT(fields[i - 1], fields[i]) << i;
	EXPECT_EQ(sizeof(stream), sizeof(void*) + 2 * sizeof(xylVarString) + 16);
}

TEST(xylIO_Stream, StartsEmptyWithAllFieldsZero) {
	xylIO_binary_stream stream;
	EXPECT_TRUE(stream.get_name().is_empty());
	EXPECT_TRUE(stream.buffer.is_buffer_null());
	EXPECT_EQ(stream.format_check_pending, 0);
	EXPECT_FALSE(stream.get_auto_flush());
	EXPECT_EQ(stream.flushed_length, 0u);
	EXPECT_TRUE(stream.eof());
	EXPECT_EQ(stream.xylIO_Stream::flush(), 0);
}

TEST(xylIO_Stream, StandsOverACopyOfBytes) {
	char bytes[] = {'a', 0, 'c', 'd'};
	xylIO_binary_stream stream(bytes, 3);
	bytes[0] = 'x';
	EXPECT_EQ(std::string(stream.buffer.char_p(), 3), std::string("a\0c", 3));
	EXPECT_EQ(stream.buffer.length(), 3);
	EXPECT_TRUE(stream.get_name().is_empty());
	EXPECT_FALSE(stream.is_binary_file()) << "kept";
	EXPECT_TRUE(xylIO_binary_stream().is_binary_file());
}

TEST(xylIO_Stream, CopiesKeepTheCursorAndAllFields) {
	xylIO_binary_stream stream("abcd", 4);
	stream.name = "name";
	stream.format_check_pending = 1;
	stream.auto_flush = true;
	stream.flushed_length = 3;
	stream.set_cursor(2);
	const auto is_like_it = [&stream](const xylIO_binary_stream& copy) {
		EXPECT_TRUE(copy.get_name() == "name");
		EXPECT_EQ(copy.format_check_pending, 1);
		EXPECT_TRUE(copy.auto_flush);
		EXPECT_EQ(copy.flushed_length, 3u);
		EXPECT_EQ(copy.is_binary, stream.is_binary);
		EXPECT_TRUE(copy.buffer == "abcd");
		EXPECT_EQ(copy.get_cursor(), 2u);
		EXPECT_NE(copy.buffer.char_p(), stream.buffer.char_p());
	};
	is_like_it(xylIO_binary_stream(stream));
	xylIO_binary_stream assigned;
	assigned << 7;
	assigned = stream;
	is_like_it(assigned);
}

TEST(xylIO_Stream, ClearDropsDataAndCursor) {
	xylIO_binary_stream stream("abcd", 4);
	stream.set_cursor(2);
	stream.clear();
	EXPECT_EQ(stream.buffer.length(), 0);
	EXPECT_EQ(stream.buffer.char_p()[0], 0);
	EXPECT_EQ(stream.get_cursor(), 0u);
	xylIO_binary_stream empty;
	empty.clear();
	EXPECT_TRUE(empty.buffer.is_buffer_null());
}

TEST(xylIO_Stream, CursorTellsTheEnd) {
	xylIO_binary_stream stream("abcd", 4);
	EXPECT_FALSE(stream.eof());
	stream.set_cursor(3);
	EXPECT_FALSE(stream.eof());
	for (const unsigned int end : {4u, 5u, 0x80000000u, 0xffffffffu}) {
		stream.set_cursor(end);
		EXPECT_TRUE(stream.eof()) << end;
		EXPECT_EQ(stream.get_cursor(), end);
	}
	stream.reset_to_buffer_start();
	EXPECT_EQ(stream.get_cursor(), 0u);
	EXPECT_FALSE(stream.eof());
}

TEST(xylIO_Stream, AutoFlushIsAField) {
	xylIO_binary_stream stream;
	stream.set_auto_flush(true);
	EXPECT_TRUE(stream.get_auto_flush());
	EXPECT_TRUE(stream.auto_flush);
	stream.set_auto_flush(false);
	EXPECT_FALSE(stream.get_auto_flush());
}
