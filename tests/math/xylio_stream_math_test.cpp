#include "samples.h"

#include <morvantis/io/xylio_binary_stream.h>
#include <morvantis/io/xylio_text_stream.h>
#include <morvantis/math/xylmatrix_frame.h>
#include <morvantis/math/xylvec2.h>

#include <string>

namespace {

// Twelve numbers from 1 on, with fourth floats of 90 and on.
xylMatrix_frame numbered_frame() {
	xylMatrix_frame frame;
	float number = 1, fourth = 90;
	for (xylVec3* row : {&frame.s, &frame.f, &frame.u, &frame.origin}) {
		*row = {number, number + 1, number + 2, fourth};
		number += 3;
		fourth += 1;
	}
	return frame;
}

std::string bytes_of(const xylIO_Stream& stream) {
	return {stream.buffer.char_p(), static_cast<std::size_t>(stream.buffer.length())};
}

std::string floats(std::initializer_list<float> numbers) {
	std::string bytes;
	for (const float number : numbers) {
		char raw[sizeof(number)];
		std::memcpy(raw, &number, sizeof(number));
		bytes.append(raw, sizeof(number));
	}
	return bytes;
}

template <typename Stream> class Any_stream : public testing::Test {};
using Streams = testing::Types<xylIO_binary_stream, xylIO_text_stream>;
TYPED_TEST_SUITE(Any_stream, Streams);

} // namespace

TEST(xylIO_Stream_math, BinaryStreamsHoldTheFloatsAlone) {
	xylIO_binary_stream stream;
	stream << xylVec2(1.5f, -2) << xylVec3(3, 4, 5, 99);
	EXPECT_EQ(bytes_of(stream), floats({1.5f, -2, 3, 4, 5}));
	stream.clear();
	stream << numbered_frame();
	EXPECT_EQ(bytes_of(stream), floats({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
}

TEST(xylIO_Stream_math, TextStreamsHoldTheirOwnFormOfFloats) {
	xylIO_text_stream stream;
	stream << xylVec2(1.5f, -2) << xylVec3(3, 4, 5, 99);
	EXPECT_EQ(bytes_of(stream), "1.500000 -2.000000 3.000000 4.000000 5.000000 ");
	stream.clear();
	stream << numbered_frame();
	EXPECT_EQ(bytes_of(stream),
	          "1.000000 2.000000 3.000000 4.000000 5.000000 6.000000 7.000000 8.000000 9.000000 "
	          "10.000000 11.000000 12.000000 ");
}

TYPED_TEST(Any_stream, ValuesComeBackWithTheirFourthFloatsUntouched) {
	TypeParam stream;
	xylIO_Stream& base = stream; // what the operators take
	base << xylVec2(1.5f, -2) << xylVec3(3, 4, 5, 99) << numbered_frame() << xylVec2(7, 8);
	base.reset_to_buffer_start();
	xylVec2 first(0, 0), last(0, 0);
	xylVec3 v(0, 0, 0, 42);
	xylMatrix_frame frame;
	for (xylVec3* row : {&frame.s, &frame.f, &frame.u, &frame.origin}) *row = {0, 0, 0, 43};
	base >> first >> v >> frame >> last;
	EXPECT_EQ(first, xylVec2(1.5f, -2));
	EXPECT_TRUE(is_vector(v, 3, 4, 5, 42));
	EXPECT_TRUE(is_vector(frame.s, 1, 2, 3, 43));
	EXPECT_TRUE(is_vector(frame.f, 4, 5, 6, 43));
	EXPECT_TRUE(is_vector(frame.u, 7, 8, 9, 43));
	EXPECT_TRUE(is_vector(frame.origin, 10, 11, 12, 43));
	EXPECT_EQ(last, xylVec2(7, 8));
}

TEST(xylIO_Stream_math, AnyNumbersComeBackBitByBitFromBinary) {
	Samples samples(111);
	xylIO_binary_stream stream;
	for (int i = 0; i < 1000; ++i) {
		const xylVec3 v = samples.awkward(1e6f);
		stream.clear();
		stream << v;
		stream.reset_to_buffer_start();
		xylVec3 back(0, 0, 0);
		stream >> back;
		ASSERT_TRUE(same_bits(back, to_plain<float>(v)));
	}
}
