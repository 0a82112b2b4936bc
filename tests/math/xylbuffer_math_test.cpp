// The math values in a byte buffer: records, stored forms and numbers from tokens.

#include <morvantis/core/xylrandom.h>
#include <morvantis/io/xylbuffer.h>
#include <morvantis/math/xylbounding_box.h>
#include <morvantis/math/xylint_vec2.h>
#include <morvantis/math/xylmatrix_frame.h>
#include <morvantis/math/xylpackage_serializer.h>
#include <morvantis/math/xylplane.h>
#include <morvantis/math/xylvec2.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace std::string_literals;

std::vector<float> floats_of(const xylBuffer& buffer) {
	std::vector<float> floats(buffer.get_length() / sizeof(float));
	std::memcpy(floats.data(), buffer.get_buffer_from_start(), buffer.get_length());
	return floats;
}

template <typename Value> std::vector<float> floats_in(const Value& value) {
	std::vector<float> floats(sizeof(value) / sizeof(float));
	std::memcpy(floats.data(), &value, sizeof(value));
	return floats;
}

const xylVec3 vector(1, 2, 3, 0);
const xylQuaternion rotation(4, 5, 6, 7); // w first
const xylPlane plane({1, 2, 3, 0}, {4, 5, 6, 9});

xylMatrix_frame numbered_frame() {
	xylMatrix_frame frame;
	float numbers[16];
	for (int i = 0; i < 16; ++i) numbers[i] = static_cast<float>(i);
	std::memcpy(static_cast<void*>(&frame), numbers, sizeof(numbers));
	return frame;
}

xylBounding_box numbered_box() {
	xylBounding_box box;
	box.min = {1, 2, 3, 0};
	box.max = {4, 5, 6, 0};
	box.center = {7, 8, 9, 0};
	box.radius = 10;
	return box;
}

// The first 52 bytes of a box: what is stored.
std::vector<float> stored_floats_of(const xylBounding_box& box) {
	std::vector<float> floats(13);
	std::memcpy(floats.data(), &box, 52);
	return floats;
}

TEST(xylBuffer_math, VectorsOfTwoAreTwoWords) {
	xylBuffer buffer;
	buffer.write_vec2(xylVec2(1.5f, -2));
	buffer.write_vec2(xylInt_vec2(-3, 4));
	EXPECT_EQ(buffer.get_length(), 16u);
	EXPECT_EQ(buffer.capacity, 19u); // 16 times 1.2
	buffer.rewind();
	xylVec2 real{};
	xylInt_vec2 whole{};
	buffer.read_vec2(&real);
	buffer.read_vec2(static_cast<void*>(&whole));
	EXPECT_EQ(buffer.get_length(), 16u);
	EXPECT_EQ(real, xylVec2(1.5f, -2));
	EXPECT_EQ(whole, xylInt_vec2(-3, 4));
}

TEST(xylBuffer_math, VectorOfThreeReadsBackWithOne) {
	xylBuffer buffer;
	buffer.write_vec3(vector);
	EXPECT_EQ(buffer.capacity, 16u); // asked for at once
	EXPECT_EQ(floats_of(buffer), (std::vector<float>{1, 2, 3, 1}));
	for (const bool typed : {true, false}) {
		buffer.rewind();
		xylVec3 seen{};
		if (typed)
			buffer.read_vec3(&seen);
		else
			buffer.read_vec3(static_cast<void*>(&seen));
		EXPECT_EQ(floats_in(seen), (std::vector<float>{1, 2, 3, 1}));
		EXPECT_EQ(buffer.get_length(), 16u);
	}
}

TEST(xylBuffer_math, VectorOfFourKeepsItsFourth) {
	xylBuffer buffer;
	buffer.write_vec4(vector);
	EXPECT_EQ(floats_of(buffer), (std::vector<float>{1, 2, 3, 0}));
	buffer.rewind();
	xylVec3 seen(9, 9, 9, 9);
	buffer.read_vec4(&seen);
	EXPECT_EQ(floats_in(seen), (std::vector<float>{1, 2, 3, 0}));
}

TEST(xylBuffer_math, QuaternionStandsInMemoryOrder) {
	xylBuffer buffer;
	buffer.write_quaternion(rotation);
	EXPECT_EQ(floats_of(buffer), (std::vector<float>{4, 5, 6, 7}));
	buffer.rewind();
	xylQuaternion seen{};
	buffer.read_quaternion(&seen);
	EXPECT_EQ(floats_in(seen), (std::vector<float>{4, 5, 6, 7}));
	EXPECT_EQ(buffer.get_length(), 16u);
}

TEST(xylBuffer_math, FrameIsItsSixteenFloats) {
	const xylMatrix_frame frame = numbered_frame();
	xylBuffer buffer;
	buffer.write_frame(frame);
	EXPECT_EQ(buffer.capacity, 64u);
	EXPECT_EQ(floats_of(buffer), floats_in(frame));
	buffer.rewind();
	xylMatrix_frame seen{};
	buffer.read_frame(&seen);
	EXPECT_EQ(floats_in(seen), floats_in(frame));
	EXPECT_EQ(buffer.get_length(), 64u);
}

TEST(xylBuffer_math, TransformEndsWithOne) {
	xylBuffer buffer;
	buffer.write_transform({rotation, vector});
	EXPECT_EQ(buffer.capacity, 32u);
	const std::vector<float> expected{4, 5, 6, 7, 1, 2, 3, 1};
	EXPECT_EQ(floats_of(buffer), expected);
	buffer.rewind();
	xylTransform seen{};
	buffer.read_transform(&seen);
	EXPECT_EQ(floats_in(seen), expected);
	EXPECT_EQ(buffer.get_length(), 32u);
}

// Words that floating-point arithmetic would change: signalling NaN, subnormal numbers, -0.
constexpr unsigned words[16] = {0x7F800001, 0x80000000, 1, 0xFF812345, 0x80000001, 0x7FFFFFFF};

template <typename Value> Value value_of_words() {
	Value value;
	std::memcpy(static_cast<void*>(&value), words, sizeof(value));
	return value;
}

struct Record {
	const char* name;
	xylUInt64 size;
	xylUInt64 ones_at; // a word that is stored as 1.0f; past the end if there is none
	void (*write)(xylBuffer&);
	void (*read)(xylBuffer&, void* aligned);
	bool is_for_any_place; // reads to any address
};

const Record records[] = {
	{"vec2", 8, 8, [](xylBuffer& b) { b.write_vec2(value_of_words<xylVec2>()); },
     [](xylBuffer& b, void* out) { b.read_vec2(static_cast<xylVec2*>(out)); }, false},
	{"vec2 of integers", 8, 8, [](xylBuffer& b) { b.write_vec2(value_of_words<xylInt_vec2>()); },
     [](xylBuffer& b, void* out) { b.read_vec2(out); }, true},
	{"vec3", 16, 3, [](xylBuffer& b) { b.write_vec3(value_of_words<xylVec3>()); },
     [](xylBuffer& b, void* out) { b.read_vec3(static_cast<xylVec3*>(out)); }, false},
	{"vec3 anywhere", 16, 3, [](xylBuffer& b) { b.write_vec3(value_of_words<xylVec3>()); },
     [](xylBuffer& b, void* out) { b.read_vec3(out); }, true},
	{"vec4", 16, 16, [](xylBuffer& b) { b.write_vec4(value_of_words<xylVec3>()); },
     [](xylBuffer& b, void* out) { b.read_vec4(static_cast<xylVec3*>(out)); }, false},
	{"quaternion", 16, 16,
     [](xylBuffer& b) { b.write_quaternion(value_of_words<xylQuaternion>()); },
     [](xylBuffer& b, void* out) { b.read_quaternion(static_cast<xylQuaternion*>(out)); }, false},
	{"frame", 64, 16, [](xylBuffer& b) { b.write_frame(value_of_words<xylMatrix_frame>()); },
     [](xylBuffer& b, void* out) { b.read_frame(out); }, true},
	{"transform", 32, 7, [](xylBuffer& b) { b.write_transform(value_of_words<xylTransform>()); },
     [](xylBuffer& b, void* out) { b.read_transform(static_cast<xylTransform*>(out)); }, false},
};

TEST(xylBuffer_math, RecordsKeepEveryBitOfTheirWords) {
	for (const Record& record : records) {
		SCOPED_TRACE(record.name);
		unsigned expected[17];
		std::memcpy(expected, words, sizeof(words));
		if (record.ones_at < 16) expected[record.ones_at] = 0x3F800000;
		xylBuffer buffer;
		record.write(buffer);
		ASSERT_EQ(buffer.get_length(), record.size);
		EXPECT_EQ(std::memcmp(buffer.data, expected, record.size), 0);
		buffer.rewind();
		alignas(16) unsigned char seen[80] = {};
		record.read(buffer, seen);
		EXPECT_EQ(std::memcmp(seen, expected, record.size), 0);
		EXPECT_EQ(seen[record.size], 0);
		EXPECT_EQ(buffer.get_length(), record.size);
		if (!record.is_for_any_place) continue;
		buffer.rewind();
		record.read(buffer, seen + 1);
		EXPECT_EQ(std::memcmp(seen + 1, expected, record.size), 0);
	}
}

TEST(xylBuffer_math, RecordsAskForTheirRoomAtOnce) {
	for (const Record& record : records) {
		SCOPED_TRACE(record.name);
		xylBuffer buffer;
		record.write(buffer);
		EXPECT_EQ(buffer.capacity, record.size); // in pieces it would be a fifth more
	}
}

TEST(xylPlane, StoresOneAsFourthFloats) {
	xylBuffer buffer;
	plane.write_data(buffer);
	const std::vector<float> expected{1, 2, 3, 1, 4, 5, 6, 1};
	EXPECT_EQ(floats_of(buffer), expected);
	buffer.data[12] = 0xFF; // read as it stands
	buffer.rewind();
	xylPlane seen{};
	seen.read_data(buffer);
	EXPECT_EQ(buffer.get_length(), 32u);
	EXPECT_EQ(std::memcmp(&seen, buffer.data, 32), 0);
}

TEST(xylBounding_box, StoresThreeVectorsAndTheRadius) {
	xylBuffer buffer;
	numbered_box().write_data(buffer);
	const std::vector<float> expected{1, 2, 3, 1, 4, 5, 6, 1, 7, 8, 9, 1, 10};
	EXPECT_EQ(floats_of(buffer), expected);
	buffer.rewind();
	xylBounding_box seen;
	seen.read_data(buffer);
	EXPECT_EQ(buffer.get_length(), 52u);
	EXPECT_EQ(stored_floats_of(seen), expected);
}

TEST(xylPackage_serializer, BoxHasALeadingWordOfZero) {
	xylBuffer buffer;
	xylPackage_serializer::Primitives::write(numbered_box(), &buffer);
	const std::vector<float> expected{0, 1, 2, 3, 1, 4, 5, 6, 1, 7, 8, 9, 1, 10};
	EXPECT_EQ(floats_of(buffer), expected);
	buffer.data[0] = 77; // skipped unread
	buffer.rewind();
	xylBounding_box seen;
	xylPackage_serializer::Primitives::read(seen, &buffer);
	EXPECT_EQ(buffer.get_length(), 56u);
	EXPECT_EQ(stored_floats_of(seen), std::vector<float>(expected.begin() + 1, expected.end()));
}

TEST(xylQuaternion, StoresItsScalarLast) {
	xylBuffer buffer;
	rotation.write_data(buffer);
	EXPECT_EQ(floats_of(buffer), (std::vector<float>{5, 6, 7, 4}));
	EXPECT_EQ(buffer.capacity, 19u); // float by float: 4, 9, 14, 19
	buffer.rewind();
	xylQuaternion seen{};
	seen.read_data(buffer);
	EXPECT_EQ(floats_in(seen), floats_in(rotation));
	EXPECT_EQ(buffer.get_length(), 16u);
}

xylBuffer tokens(const std::string& text) {
	xylBuffer buffer;
	buffer.allocate(text.size() + 1);
	buffer.rewind_and_zero_memory();
	std::memcpy(buffer.data, text.data(), text.size());
	return buffer;
}

// The number at the very start is not read: a token there counts as left over.
TEST(xylVec3, ReadsThreeNumbersBehindTheCurrentToken) {
	xylBuffer buffer = tokens("9\0"
	                          "1.5\0\0"
	                          "2\0"
	                          "3\0"s);
	xylVec3 seen(0, 0, 0, 42);
	seen.read(buffer);
	EXPECT_EQ(floats_in(seen), (std::vector<float>{1.5f, 2, 3, 42}));
	EXPECT_TRUE(buffer == "3");
}

TEST(xylVec3, ReadsFromTheStartBehindAZero) {
	xylBuffer buffer = tokens("\0"
	                          "1.5\0"
	                          "2\0"
	                          "3\0"s);
	xylVec3 seen(0, 0, 0, 42);
	seen.read(buffer);
	EXPECT_EQ(seen, xylVec3(1.5f, 2, 3));
}

TEST(xylVec3, ReadingStopsAtAControlByte) {
	xylBuffer buffer = tokens("9\x01"
	                          "5\0"
	                          "6\0"s);
	xylVec3 seen{};
	seen.read(buffer); // atof() takes no byte 1, and the cursor can't leave it
	EXPECT_EQ(seen, xylVec3(0, 0, 0));
}

// What atof() takes, narrowed: the last but one is just above the middle of two floats, and its
// nearest double is the middle itself.
TEST(xylVec3, ReadsNumbersInAnyForm) {
	xylBuffer buffer = tokens("\0"
	                          "-2.5e-1\0"
	                          "12abc\0"
	                          "\xE9\0"
	                          "1.000000059604644775390625000000001\0"
	                          "0x10\0"
	                          "-inf\0"s);
	xylVec3 seen{};
	seen.read(buffer);
	EXPECT_EQ(seen, xylVec3(-0.25f, 12, 0));
	seen.read(buffer);
	EXPECT_EQ(seen, xylVec3(1, 16, -std::numeric_limits<float>::infinity()));
}

// A line feed ends the token under the cursor and is white space to atof().
TEST(xylVec3, ReadsTheSameNumberBehindALineFeedAgainAndAgain) {
	xylBuffer buffer = tokens("9\n5\0"
	                          "6\0"s);
	xylVec3 seen{};
	seen.read(buffer);
	EXPECT_EQ(seen, xylVec3(5, 5, 5));
}

TEST(xylQuaternion, ReadsItsScalarLast) {
	xylBuffer buffer = tokens("\0"
	                          "1\0"
	                          "2\0"
	                          "3\0"
	                          "4\0"s);
	xylQuaternion seen{};
	seen.read(buffer);
	EXPECT_EQ(floats_in(seen), (std::vector<float>{4, 1, 2, 3}));
}

TEST(xylMatrix_frame, ReadsTwelveNumbers) {
	std::string text(1, '\0');
	for (int i = 1; i <= 12; ++i) text += std::to_string(i) + '\0';
	xylBuffer buffer = tokens(text);
	xylMatrix_frame seen = numbered_frame();
	seen.read(buffer);
	EXPECT_EQ(floats_in(seen),
	          (std::vector<float>{1, 2, 3, 3, 4, 5, 6, 7, 7, 8, 9, 11, 10, 11, 12, 15}));
}

TEST(xylMatrix_frame, RandomFrameLiesInADiscAroundTheOrigin) {
	const xylMatrix_frame frame = numbered_frame();
	xylRandom::set_seed(7);
	xylRandom_generator expected;
	expected.set_seed(7);
	double sum_of_squares = 0;
	constexpr int count = 10000;
	for (int i = 0; i < count; ++i) {
		const xylMatrix_frame moved = xylMatrix_frame::get_random_frame_with_distance(frame, 10);
		const double area = expected.random_int() * 2.3283064e-10;
		const double angle = expected.random_int() * 1.4629181e-9;
		const double radius = 10 * std::sqrt(area);
		ASSERT_NEAR(moved.origin.x, frame.origin.x + std::cos(angle) * radius, 1e-4);
		ASSERT_NEAR(moved.origin.y, frame.origin.y + std::sin(angle) * radius, 1e-4);
		xylMatrix_frame back = moved;
		back.origin.x = frame.origin.x;
		back.origin.y = frame.origin.y;
		ASSERT_EQ(floats_in(back), floats_in(frame));
		sum_of_squares += radius * radius;
	}
	EXPECT_NEAR(sum_of_squares / count, 50, 1); // uniform over the disc
}

} // namespace
