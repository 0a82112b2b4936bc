// What goes out on the wire. That it comes back is tested with Read_bit_buffer.

#include "bit_stream_model.h"

#include <morvantis/net/write_bit_buffer.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

namespace {

constexpr int int_min = std::numeric_limits<int>::min();
constexpr int int_max = std::numeric_limits<int>::max();
constexpr long long int64_min = std::numeric_limits<long long>::min();
constexpr long long int64_max = std::numeric_limits<long long>::max();

// The next `count` bits of a buffer that a writer has left, from `position` on.
unsigned long long bits_at(const Dynamic_bit_buffer& buffer, int position, int count) {
	unsigned long long value = 0;
	for (int i = 0; i < count; ++i) {
		const int bit = position + i;
		value |= static_cast<unsigned long long>(buffer.get_buffer()[bit / 8] >> bit % 8 & 1) << i;
	}
	return value;
}

// One field, written into a packet of its own.
template <typename Value, typename Info> struct Field_case {
	const char* name;
	Value value;
	Info info;
	unsigned long long raw;
};
using Unsigned64_case = Field_case<unsigned long long, Unsigned_integer64_compression_info>;

template <typename Value, typename Info> void expect_written(const Field_case<Value, Info>& c) {
	SCOPED_TRACE(c.name);
	Write_bit_buffer buffer;
	if constexpr (std::is_same_v<Value, float>) {
		EXPECT_TRUE(buffer.serial_op_float(c.value, c.info));
	} else {
		EXPECT_TRUE(buffer.serial_op(c.value, c.info));
	}
	EXPECT_EQ(buffer.get_size_in_bits(), c.info.bit_count);
	EXPECT_EQ(buffer.get_cursor_in_bits(), c.info.bit_count);
	EXPECT_EQ(bits_at(buffer, 0, 64), c.raw);
}

TEST(Write_bit_buffer, AddsNothingToTheBuffer) {
	static_assert(std::is_base_of_v<Dynamic_bit_buffer, Write_bit_buffer>);
	static_assert(!std::is_polymorphic_v<Write_bit_buffer>);
	EXPECT_EQ(sizeof(Write_bit_buffer), sizeof(Dynamic_bit_buffer));
}

TEST(Write_bit_buffer, CopiesAndMovesAreCopies) {
	Write_bit_buffer source;
	source.guarantee_capacity_in_bits(12000);
	source.write_packet_id(9u);
	Write_bit_buffer copy(source);
	Write_bit_buffer moved(std::move(source));
	Write_bit_buffer assigned, move_assigned;
	Write_bit_buffer& first = (assigned = source);
	Write_bit_buffer& second = (move_assigned = std::move(source));
	EXPECT_EQ(&first, &assigned);
	EXPECT_EQ(&second, &move_assigned);
	for (const Write_bit_buffer* buffer : {&copy, &moved, &assigned, &move_assigned, &source}) {
		EXPECT_EQ(hex_of(*buffer), "09 00");
		EXPECT_EQ(buffer->capacity_in_bits, 12032);
		EXPECT_EQ(buffer->get_buffer(), buffer->dynamic_buffer);
	}
	EXPECT_NE(copy.get_buffer(), source.get_buffer());
	EXPECT_NE(moved.get_buffer(), source.get_buffer());
}

TEST(Write_bit_buffer, IntegersGoAsDistanceFromTheMinimum) {
	const Field_case<int, Integer_compression_info> cases[] = {
		{"worked example", -37, {-100, 100, 8}, 63},
		{"minimum", -100, {-100, 100, 8}, 0},
		{"maximum", 100, {-100, 100, 8}, 200},
		{"no bits", 7, {7, 7, 0}, 0},
		{"one bit", 8, {7, 8, 1}, 1},
		// Full range: the value itself.
		{"full range, least", int_min, {int_min, int_max, 32}, 0x80000000u},
		{"full range, -1", -1, {int_min, int_max, 32}, 0xFFFFFFFFu},
		{"full range by width and minimum alone", 5, {int_min, 0, 32}, 5},
		// Not full range: one of the two is missing.
		{"least minimum in 31 bits", int_min + 5, {int_min, -1, 31}, 5},
		{"32 bits from -2^31 + 1", int_max, {int_min + 1, int_max, 32}, 0xFFFFFFFEu},
		{"distance that wraps around", int_max, {-10, int_max, 32}, 0x80000009u},
	};
	for (const auto& c : cases) expect_written(c);
}

TEST(Write_bit_buffer, UnsignedIntegersHaveNoFullRangeCase) {
	const Field_case<unsigned int, Unsigned_integer_compression_info> cases[] = {
		{"worked example", 999, {10, 1000, 10}, 989},
		{"from zero", 0xFFFFFFFFu, {0, 0xFFFFFFFFu, 32}, 0xFFFFFFFFu},
		{"least signed minimum", 0x80000001u, {0x80000000u, 0xFFFFFFFFu, 32}, 1},
		{"below the minimum, unmasked", 5, {10, 1000, 10}, 0xFFFFFFFBu},
	};
	for (const auto& c : cases) expect_written(c);
}

TEST(Write_bit_buffer, WideIntegersAlwaysSubtract) {
	const Field_case<long long, Integer64_compression_info> cases[] = {
		{"worked example", -1, {-1000000000000, 1000000000000, 41}, 999999999999u},
		// kept: no full range case, so the sign bit flips.
		{"full range, -1", -1, {int64_min, int64_max, 64}, 0x7FFFFFFFFFFFFFFFu},
		{"full range, 0", 0, {int64_min, int64_max, 64}, 0x8000000000000000u},
		{"32 bits", 0xFFFFFFFF, {0, 0xFFFFFFFF, 32}, 0xFFFFFFFFu},
		{"wraps around", int64_max, {-10, int64_max, 64}, 0x8000000000000009u},
	};
	for (const auto& c : cases) {
		expect_written(c);
		// The unsigned form is the same, bit for bit.
		expect_written(
			Unsigned64_case{c.name,
		                    static_cast<unsigned long long>(c.value),
		                    {static_cast<unsigned long long>(c.info.min_value),
		                     static_cast<unsigned long long>(c.info.max_value), c.info.bit_count},
		                    c.raw});
	}
}

TEST(Write_bit_buffer, FloatsGoAsTheNearestStep) {
	constexpr float inf = std::numeric_limits<float>::infinity();
	constexpr float nan = std::numeric_limits<float>::quiet_NaN();
	const Float_compression_info example{-1.0f, 1.0f, 0.0009765625f, 12};
	const Float_compression_info wide{0.0f, 1.0f, 1.0f, 32};
	const Field_case<float, Float_compression_info> cases[] = {
		{"worked example", 0.3f, example, 1331},
		{"minimum", -1.0f, example, 0},
		{"maximum", 1.0f, example, 2048},
		{"just below half a step", 0.49f, wide, 0},
		{"half a step", 0.5f, wide, 1},
		// Truncation is towards zero, so less than one and a half steps below the minimum is step
	    // 0.
		{"a step below", -1.0f, wide, 0},
		{"more than half a step below", -1.6f, wide, 0xFFFFFFFFu},
		{"far below", -1000.0f, wide, static_cast<unsigned int>(-999)},
		{"largest below 2^31", 2147483520.0f, wide, 2147483520u},
		{"2^31", 2147483648.0f, wide, 0x80000000u},
		{"above", 1e20f, wide, 0x80000000u},
		{"far below every int", -1e20f, wide, 0x80000000u},
		{"infinity", inf, wide, 0x80000000u},
		{"NaN", nan, wide, 0x80000000u},
		{"negative precision", 3.0f, {0.0f, 1.0f, -1.0f, 32}, static_cast<unsigned int>(-2)},
		// Raw: the bits of the float.
		{"precision 0", 1.0f, {5.0f, 6.0f, 0.0f, 32}, 0x3F800000u},
		{"precision -0", 1.0f, {5.0f, 6.0f, -0.0f, 32}, 0x3F800000u},
		{"precision NaN", 1.0f, {5.0f, 6.0f, nan, 32}, 0x3F800000u},
		{"raw infinity", inf, {0.0f, 1.0f, 0.0f, 32}, 0x7F800000u},
		{"smallest precision is one", 0.0f, {0.0f, 1.0f, 1e-45f, 32}, 0},
	};
	for (const auto& c : cases) expect_written(c);
}

TEST(Write_bit_buffer, RawFloatOfFewerBitsSpills) {
	Write_bit_buffer buffer;
	EXPECT_TRUE(buffer.serial_op_float(1.0f, {0.0f, 1.0f, 0.0f, 8}));
	EXPECT_EQ(buffer.get_size_in_bits(), 8);
	EXPECT_EQ(hex_of(buffer.get_buffer(), 4), "00 00 80 3F");
}

TEST(Write_bit_buffer, ByteArraysGoBehindTheirLength) {
	const unsigned char data[] = {0x11, 0x22, 0x33};
	Write_bit_buffer buffer;
	EXPECT_TRUE(buffer.serial_op_byte_array(data, 3));
	EXPECT_EQ(buffer.get_size_in_bits(), 11 + 24);
	EXPECT_EQ(bits_at(buffer, 0, 11), 3u);
	EXPECT_EQ(bits_at(buffer, 11, 24), 0x332211u);
}

TEST(Write_bit_buffer, ByteArrayStartsAlignedBehindFiveBits) {
	const unsigned char data[] = {0x11, 0x22};
	Write_bit_buffer buffer;
	buffer.append_bits_from_uint32(0x1F, 5);
	EXPECT_TRUE(buffer.serial_op_byte_array(data, 2));
	EXPECT_EQ(hex_of(buffer), "5F 00 11 22");
	EXPECT_EQ(buffer.get_size_in_bits(), 32);
}

TEST(Write_bit_buffer, LongByteArraysAreCut) {
	std::vector<unsigned char> data(3000);
	for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<unsigned char>(i % 251);
	for (const int size : {2046, 2047, 2048, 3000}) {
		SCOPED_TRACE(size);
		Write_bit_buffer buffer;
		buffer.guarantee_capacity_in_bits(20000);
		EXPECT_TRUE(buffer.serial_op_byte_array(data.data(), size));
		const int sent = std::min(size, 2047);
		EXPECT_EQ(buffer.get_size_in_bits(), 11 + sent * 8);
		EXPECT_EQ(bits_at(buffer, 0, 11), static_cast<unsigned int>(sent));
		EXPECT_EQ(bits_at(buffer, 11 + (sent - 1) * 8, 8),
		          (static_cast<unsigned int>(sent) - 1) % 251);
	}
}

TEST(Write_bit_buffer, EmptyByteArraysAreALengthAlone) {
	const unsigned char data[] = {0x11};
	for (const int size : {0, 1, 3000}) {
		Write_bit_buffer buffer;
		EXPECT_TRUE(buffer.serial_op_byte_array(nullptr, size));
		EXPECT_EQ(buffer.get_size_in_bits(), 11);
		EXPECT_EQ(hex_of(buffer), "00 00");
	}
	Write_bit_buffer buffer;
	EXPECT_TRUE(buffer.serial_op_byte_array(data, 0));
	EXPECT_EQ(buffer.get_size_in_bits(), 11);
	EXPECT_EQ(hex_of(buffer), "00 00");
}

TEST(Write_bit_buffer, TimesTake63Bits) {
	for (const long long time : {0ll, 1ll, 123456789012345ll, int64_max, -1ll}) {
		SCOPED_TRACE(time);
		Write_bit_buffer buffer;
		EXPECT_TRUE(buffer.serial_op_time(time));
		EXPECT_EQ(buffer.get_size_in_bits(), 63);
		EXPECT_EQ(bits_at(buffer, 0, 63), static_cast<unsigned long long>(time) & int64_max);
	}
}

TEST(Write_bit_buffer, CoarseTimesAreExactOnlyWhenLarge) {
	struct Case {
		long long time;
		int size;
		unsigned int flag;
		unsigned long long value;
	};
	const Case cases[] = {
		{0, 23, 0, 0},
		{99, 23, 0, 0},
		{100, 23, 0, 1},
		{123456, 23, 0, 1234},
		{419430399, 23, 0, 4194303},
		{419430400, 64, 1, 419430400},
		{int64_max, 64, 1, int64_max},
		// Signed test, so negative ones take the short way, and only low bits reach the reader.
		{-99, 23, 0, 0},
		{-100, 23, 0, 0x3FFFFF},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.time);
		Write_bit_buffer buffer;
		EXPECT_TRUE(buffer.serial_op_time_coarse(c.time));
		EXPECT_EQ(buffer.get_size_in_bits(), c.size);
		EXPECT_EQ(bits_at(buffer, 0, 1), c.flag);
		EXPECT_EQ(bits_at(buffer, 1, c.size - 1), c.value);
	}
}

TEST(Write_bit_buffer, CoarseTimeIsNotMasked) {
	Write_bit_buffer buffer;
	EXPECT_TRUE(buffer.serial_op_time_coarse(-100));
	EXPECT_EQ(bits_at(buffer, 23, 41), 0x3FFu); // the ten upper bits of a 32-bit -1
}

TEST(Write_bit_buffer, TicksWrapInto1To65500) {
	const unsigned int cases[][2] = {
		{0, 0},          {1, 1},         {2, 2},
		{65499, 65499},  {65500, 65500}, {65501, 1},
		{131000, 65500}, {131001, 1},    {0xFFFFFFFFu, (0xFFFFFFFEu % 65500u) + 1}};
	for (const auto& [tick, field] : cases) {
		SCOPED_TRACE(tick);
		Write_bit_buffer buffer;
		EXPECT_TRUE(buffer.write_packet_id(tick));
		EXPECT_EQ(buffer.get_size_in_bits(), 16);
		EXPECT_EQ(bits_at(buffer, 0, 64), field);
	}
}

TEST(Write_bit_buffer, PacketIdsSpareTheNumberWhenItIsZero) {
	struct Case {
		udp_packet_id id;
		int size;
		unsigned int bits;
	};
	const Case cases[] = {
		{{1, 0}, 17, 0x10001},
		{{65501, 0}, 17, 0x10001},
		{{1, 5}, 23, 1 | 5 << 17},
		{{1, 63}, 23, 1 | 63 << 17},
		{{0, 0}, 17, 0x10000},
		{{-1, 0}, 17, 0x10000},
		{{int_min, 1}, 23, 1 << 17},
		{{int_max, 1}, 23, static_cast<unsigned int>((int_max - 1) % 65500 + 1) | 1 << 17},
		{udp_packet_id::PACKET_ID_UNRELIABLE, 23, 63 << 17},
		{{1, 64}, 23, 1},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(testing::Message() << c.id.tick_no << "/" << c.id.packet_no);
		Write_bit_buffer buffer;
		EXPECT_TRUE(buffer.write_packet_id(c.id));
		EXPECT_EQ(buffer.get_size_in_bits(), c.size);
		EXPECT_EQ(bits_at(buffer, 0, c.size), c.bits);
	}
}

TEST(Write_bit_buffer, PacketNumberIsNotMasked) {
	Write_bit_buffer buffer;
	buffer.write_packet_id(udp_packet_id(1, 64));
	EXPECT_EQ(bits_at(buffer, 17, 7), 64u); // the next field clears it
}

TEST(Write_bit_buffer, SpillIsClearedByTheNextField) {
	Write_bit_buffer buffer;
	buffer.serial_op(5u, Unsigned_integer_compression_info{10, 1000, 10});
	buffer.serial_op(0, Integer_compression_info{0, 100, 32});
	EXPECT_EQ(bits_at(buffer, 0, 10), 1019u);
	EXPECT_EQ(bits_at(buffer, 10, 64), 0u);
}

} // namespace
