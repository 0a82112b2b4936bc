#include "bit_stream_model.h"

#include <morvantis/net/read_bit_buffer.h>
#include <morvantis/net/write_bit_buffer.h>

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

namespace {

constexpr int int_min = std::numeric_limits<int>::min();
constexpr int int_max = std::numeric_limits<int>::max();
constexpr long long int64_min = std::numeric_limits<long long>::min();
constexpr long long int64_max = std::numeric_limits<long long>::max();
constexpr unsigned long long uint64_max = std::numeric_limits<unsigned long long>::max();

// A packet that holds `bit_count` bits of `raw` and no bit more.
Read_bit_buffer packet_of(unsigned long long raw, int bit_count) {
	Read_bit_buffer packet;
	if (bit_count <= 32) {
		packet.append_bits_from_uint32(static_cast<unsigned int>(raw), bit_count);
	} else {
		packet.append_bits_from_uint64(raw, bit_count);
	}
	packet.rewind();
	return packet;
}

// Reads one field from a packet of exactly its bits, and then from one with a bit less.
template <typename Value, typename Info> struct Range_case {
	const char* name;
	Info info;
	unsigned long long raw;
	Value value;
	bool is_valid;
};

template <typename Value, typename Info> void expect_read(const Range_case<Value, Info>& c) {
	SCOPED_TRACE(c.name);
	const auto read = [&c](Read_bit_buffer& packet, Value& value) {
		if constexpr (std::is_same_v<Value, float>) {
			return packet.serial_op_float(value, c.info);
		} else {
			return packet.serial_op(value, c.info);
		}
	};
	Read_bit_buffer packet = packet_of(c.raw, c.info.bit_count);
	Value value = 42;
	EXPECT_EQ(read(packet, value), c.is_valid);
	EXPECT_EQ(value, c.value);
	EXPECT_EQ(packet.get_unread_bits(), 0); // consumed, whether valid or not

	if (c.info.bit_count == 0) return;
	Read_bit_buffer cut = packet_of(c.raw, c.info.bit_count);
	cut.size_in_bits -= 1;
	value = 42;
	EXPECT_FALSE(read(cut, value));
	EXPECT_EQ(value, Value{42});
	EXPECT_EQ(cut.get_cursor_in_bits(), 0);
}

TEST(Read_bit_buffer, AddsNothingToTheBuffer) {
	static_assert(std::is_base_of_v<Dynamic_bit_buffer, Read_bit_buffer>);
	static_assert(!std::is_polymorphic_v<Read_bit_buffer>);
	EXPECT_EQ(sizeof(Read_bit_buffer), sizeof(Dynamic_bit_buffer));
}

TEST(Read_bit_buffer, CopiesAndMovesAreCopies) {
	Read_bit_buffer source = packet_of(9, 16);
	source.guarantee_capacity_in_bits(12000);
	Read_bit_buffer copy(source);
	Read_bit_buffer moved(std::move(source));
	Read_bit_buffer assigned, move_assigned;
	Read_bit_buffer& first = (assigned = source);
	Read_bit_buffer& second = (move_assigned = std::move(source));
	EXPECT_EQ(&first, &assigned);
	EXPECT_EQ(&second, &move_assigned);
	for (const Read_bit_buffer* buffer : {&copy, &moved, &assigned, &move_assigned, &source}) {
		EXPECT_EQ(hex_of(*buffer), "09 00");
		EXPECT_EQ(buffer->capacity_in_bits, 12032);
		EXPECT_EQ(buffer->get_buffer(), buffer->dynamic_buffer);
	}
	EXPECT_NE(copy.get_buffer(), source.get_buffer());
	EXPECT_NE(moved.get_buffer(), source.get_buffer());
}

TEST(Read_bit_buffer, Integers) {
	const Range_case<int, Integer_compression_info> cases[] = {
		{"worked example", {-100, 100, 8}, 63, -37, true},
		{"worked example, out of range", {-100, 100, 8}, 250, 150, false},
		{"minimum", {-100, 100, 8}, 0, -100, true},
		{"maximum", {-100, 100, 8}, 200, 100, true},
		{"one above", {-100, 100, 8}, 201, 101, false},
		{"no bits", {7, 7, 0}, 0, 7, true},
		{"no bits, no value fits", {7, 6, 0}, 0, 7, false},
		{"full range, least", {int_min, int_max, 32}, 0x80000000u, int_min, true},
		{"full range, -1", {int_min, int_max, 32}, 0xFFFFFFFFu, -1, true},
		{"full range ignores the maximum", {int_min, 0, 32}, 5, 5, true},
		{"31 bits are not full range", {int_min, -5, 31}, 0x7FFFFFFFu, -1, false},
		{"another minimum is not full range", {int_min + 1, 0, 32}, 0xFFFFFFFFu, int_min, false},
		{"sum wraps around", {int_max, int_max, 1}, 1, int_min, false},
		{"sum wraps around into range", {5, 10, 32}, 0xFFFFFFFFu, 4, false},
	};
	for (const auto& c : cases) expect_read(c);
}

TEST(Read_bit_buffer, UnsignedIntegers) {
	const Range_case<unsigned int, Unsigned_integer_compression_info> cases[] = {
		{"worked example", {10, 1000, 10}, 989, 999, true},
		{"worked example, out of range", {10, 1000, 10}, 1023, 1033, false},
		{"what a 5 became", {10, 1000, 10}, 1019, 1029, false},
		{"minimum", {10, 1000, 10}, 0, 10, true},
		{"maximum", {10, 1000, 10}, 990, 1000, true},
		{"one above", {10, 1000, 10}, 991, 1001, false},
		{"full width", {0, 0xFFFFFFFFu, 32}, 0xFFFFFFFFu, 0xFFFFFFFFu, true},
		{"no full range case", {0x80000000u, 0x80000000u, 32}, 1, 0x80000001u, false},
		{"wraps around below the minimum", {10, 1000, 32}, 0xFFFFFFFBu, 5, false},
		{"above the signed range", {0, 0xFFFFFFF0u, 32}, 0xFFFFFFF0u, 0xFFFFFFF0u, true},
	};
	for (const auto& c : cases) expect_read(c);
}

TEST(Read_bit_buffer, WideIntegers) {
	const Integer64_compression_info example{-1000000000000, 1000000000000, 41};
	const Range_case<long long, Integer64_compression_info> cases[] = {
		{"worked example", example, 999999999999u, -1, true},
		{"maximum", example, 2000000000000u, 1000000000000, true},
		{"one above", example, 2000000000001u, 1000000000001, false},
		{"minimum", example, 0, -1000000000000, true},
		{"full range", {int64_min, int64_max, 64}, 0x7FFFFFFFFFFFFFFFu, int64_max, true},
		{"full range ignores the maximum", {int64_min, 0, 64}, 5, 5, true},
		{"63 bits are not full range", {int64_min, -5, 63}, 0x7FFFFFFFFFFFFFFFu, -1, false},
		{"another minimum", {int64_min + 1, 0, 64}, uint64_max, int64_min, false},
		{"32 bits", {-5, 0xFFFFFFFF, 32}, 0xFFFFFFFFu, 0xFFFFFFFAll, true},
		{"sum wraps around", {int64_max, int64_max, 32}, 1, int64_min, false},
	};
	for (const auto& c : cases) expect_read(c);
}

TEST(Read_bit_buffer, WideUnsignedIntegers) {
	const Range_case<unsigned long long, Unsigned_integer64_compression_info> cases[] = {
		{"full range", {0, uint64_max, 64}, uint64_max, uint64_max, true},
		{"from 10", {10, 1ull << 40, 41}, 5, 15, true},
		{"maximum", {10, 1ull << 40, 41}, (1ull << 40) - 10, 1ull << 40, true},
		{"one above", {10, 1ull << 40, 41}, (1ull << 40) - 9, (1ull << 40) + 1, false},
		{"wraps around", {10, 1000, 64}, uint64_max, 9, false},
		{"no full range case", {1ull << 63, 1ull << 63, 64}, 1, (1ull << 63) + 1, false},
	};
	for (const auto& c : cases) expect_read(c);
}

TEST(Read_bit_buffer, FullRangePassesEvery32BitValue) {
	const Integer_compression_info info{int_min, int_max, 32};
	std::mt19937 random(20);
	for (int i = 0; i < 1000; ++i) {
		const int value = static_cast<int>(random());
		Write_bit_buffer packet;
		packet.serial_op(value, info);
		packet.rewind();
		int seen = 0;
		EXPECT_TRUE(packet.as_read_bit_buffer().serial_op(seen, info));
		EXPECT_EQ(seen, value);
	}
}

// kept: the writer subtracts, the reader does not add.
TEST(Read_bit_buffer, FullRange64BitValueComesBackWithItsSignFlipped) {
	const Integer64_compression_info info{int64_min, int64_max, 64};
	for (const long long value : {-1ll, 0ll, 1ll, int64_min, int64_max, 123456789012345ll}) {
		SCOPED_TRACE(value);
		Write_bit_buffer packet;
		packet.serial_op(value, info);
		packet.rewind();
		long long seen = 0;
		EXPECT_TRUE(packet.as_read_bit_buffer().serial_op(seen, info));
		EXPECT_EQ(static_cast<unsigned long long>(seen),
		          static_cast<unsigned long long>(value) ^ 0x8000000000000000u);
	}
}

TEST(Read_bit_buffer, QuantisedFloats) {
	constexpr float inf = std::numeric_limits<float>::infinity();
	constexpr float nan = std::numeric_limits<float>::quiet_NaN();
	const Float_compression_info example{-1.0f, 1.0f, 0.0009765625f, 12};
	const Range_case<float, Float_compression_info> cases[] = {
		{"worked example", example, 1331, 0.2998046875f, true},
		{"maximum", example, 2048, 1.0f, true},
		{"one above", example, 2049, 1.0009765625f, false},
		{"out of range", example, 3000, 1.9296875f, false},
		{"minimum", example, 0, -1.0f, true},
		{"raw is unsigned", {0.0f, 5e9f, 1.0f, 32}, 0xFFFFFFFFu, 4294967296.0f, true},
		{"raw is rounded to float", {0.0f, 5e9f, 1.0f, 32}, 16777217u, 16777216.0f, true},
		{"negative step", {0.0f, 1.0f, -1.0f, 8}, 1, -1.0f, false},
		{"NaN maximum never refuses", {0.0f, nan, 1.0f, 8}, 200, 200.0f, true},
		{"infinite minimum", {inf, inf, 1.0f, 8}, 0, inf, true},
	};
	for (const auto& c : cases) expect_read(c);
}

TEST(Read_bit_buffer, FloatThatDecodesToNanIsRefused) {
	constexpr float inf = std::numeric_limits<float>::infinity();
	for (const Float_compression_info info : {Float_compression_info{-inf, inf, inf, 8},
	                                          Float_compression_info{std::nanf(""), 1, 1, 8}}) {
		Read_bit_buffer packet = packet_of(1, 8);
		float value = 42;
		EXPECT_FALSE(packet.serial_op_float(value, info));
		EXPECT_NE(value, value);
	}
}

TEST(Read_bit_buffer, RawFloatsPassEveryPattern) {
	const unsigned int patterns[] = {0,           0x80000000u, 0x3F800000u,
	                                 0x7F800000u, 0xFF800000u, 0x7FC00000u,
	                                 0xFFC12345u, 0x00000001u, 0x7F7FFFFFu};
	for (const float precision : {0.0f, -0.0f, std::numeric_limits<float>::quiet_NaN()}) {
		for (const unsigned int pattern : patterns) {
			SCOPED_TRACE(pattern);
			const Float_compression_info info{5.0f, 6.0f, precision, 32};
			Write_bit_buffer packet;
			packet.serial_op_float(std::bit_cast<float>(pattern), info);
			packet.rewind();
			float value = 42;
			EXPECT_TRUE(packet.as_read_bit_buffer().serial_op_float(value, info));
			EXPECT_EQ(std::bit_cast<unsigned int>(value), pattern);
		}
	}
}

// Each code of a 12-bit field whose step is no power of two: a contracted multiply-add would give
// other digits for most of them.
TEST(Read_bit_buffer, FloatArithmeticIsAMultiplyAndThenAnAdd) {
	const Float_compression_info info{-37.3f, 1e9f, 0.1f, 12};
	for (unsigned int raw = 0; raw < 4096; ++raw) {
		Read_bit_buffer packet = packet_of(raw, 12);
		float value = 0;
		ASSERT_TRUE(packet.serial_op_float(value, info));
		volatile float product = static_cast<float>(raw) * info.precision;
		ASSERT_EQ(value, product + info.min_value) << raw;
	}
}

// kept: the arithmetic may put the last step above the bound.
TEST(Read_bit_buffer, MaximumMayBeRefusedWhereTheStepIsNoPowerOfTwo) {
	const Float_compression_info info{0.0f, 3.0f, 0.001f, 12};
	Write_bit_buffer packet;
	packet.serial_op_float(3.0f, info);
	packet.rewind();
	float value = 0;
	EXPECT_FALSE(packet.as_read_bit_buffer().serial_op_float(value, info));
	EXPECT_GT(value, 3.0f);
	EXPECT_LT(value, 3.0001f);
}

TEST(Read_bit_buffer, ByteArraysAtEveryPosition) {
	unsigned char data[130];
	for (size_t i = 0; i < sizeof(data); ++i) data[i] = static_cast<unsigned char>(i * 29 + 3);
	for (int position = 0; position < 16; ++position) {
		for (const int size : {0, 1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 100, 129}) {
			Write_bit_buffer packet;
			packet.skip_bits(position);
			packet.serial_op_byte_array(data, size);
			packet.rewind();
			packet.skip_bits(position);
			unsigned char seen[130];
			std::memset(seen, 0x55, sizeof(seen));
			int seen_size = -1;
			EXPECT_TRUE(packet.as_read_bit_buffer().serial_op_byte_array(seen, 129, seen_size));
			ASSERT_EQ(seen_size, size);
			ASSERT_EQ(std::memcmp(seen, data, static_cast<size_t>(size)), 0)
				<< size << " bytes at " << position;
			ASSERT_EQ(seen[size], 0x55);
			EXPECT_EQ(packet.as_read_bit_buffer().get_unread_bits(), 0);
		}
	}
}

TEST(Read_bit_buffer, LargestByteArrayComesBack) {
	std::vector<unsigned char> data(3000, 0xA7), seen(2048, 0x55);
	Write_bit_buffer packet;
	packet.guarantee_capacity_in_bits(17000);
	packet.serial_op_byte_array(data.data(), 3000);
	packet.rewind();
	int size = 0;
	EXPECT_TRUE(packet.as_read_bit_buffer().serial_op_byte_array(seen.data(), 2047, size));
	EXPECT_EQ(size, 2047);
	EXPECT_EQ(seen[2046], 0xA7);
	EXPECT_EQ(seen[2047], 0x55);
}

TEST(Read_bit_buffer, ByteArrayAboveTheRoomIsRefused) {
	Write_bit_buffer packet;
	const unsigned char data[100] = {};
	packet.serial_op_byte_array(data, 100);
	for (const int max_size : {99, 0, -1}) {
		packet.rewind();
		unsigned char seen[100];
		std::memset(seen, 0x55, sizeof(seen));
		int size = -1;
		EXPECT_FALSE(packet.as_read_bit_buffer().serial_op_byte_array(seen, max_size, size));
		EXPECT_EQ(size, 100);
		EXPECT_EQ(seen[0], 0x55);
		EXPECT_EQ(packet.get_cursor_in_bits(), 11);
	}
}

TEST(Read_bit_buffer, ByteArrayCutOffLeavesZeros) {
	unsigned char data[20];
	std::memset(data, 0xAA, sizeof(data));
	for (const int position : {0, 5}) { // the bytes unaligned, and aligned
		Write_bit_buffer packet;
		packet.skip_bits(position);
		packet.serial_op_byte_array(data, 20);
		packet.rewind();
		packet.skip_bits(position);
		packet.size_in_bits -= 1;
		unsigned char seen[22];
		std::memset(seen, 0x55, sizeof(seen));
		int size = -1;
		EXPECT_FALSE(packet.as_read_bit_buffer().serial_op_byte_array(seen, 22, size));
		EXPECT_EQ(size, 20);
		for (int i = 0; i < 20; ++i) EXPECT_EQ(seen[i], 0);
		EXPECT_EQ(seen[20], 0x55);
		EXPECT_EQ(packet.get_cursor_in_bits(), position + 11);
	}
}

TEST(Read_bit_buffer, ByteArrayWithoutLengthIsEmpty) {
	Read_bit_buffer packet = packet_of(0x3FF, 10);
	unsigned char seen[4] = {1, 2, 3, 4};
	int size = -1;
	EXPECT_FALSE(packet.serial_op_byte_array(seen, 4, size));
	EXPECT_EQ(size, 0);
	EXPECT_EQ(hex_of(seen, 4), "01 02 03 04");
	EXPECT_EQ(packet.get_cursor_in_bits(), 0);
}

TEST(Read_bit_buffer, EmptyByteArrayNeedsNoRoom) {
	Read_bit_buffer packet = packet_of(0, 11);
	int size = -1;
	EXPECT_TRUE(packet.serial_op_byte_array(nullptr, 0, size));
	EXPECT_EQ(size, 0);
}

TEST(Read_bit_buffer, TimesComeBackWithoutTheirSign) {
	const long long cases[][2] = {
		{0, 0}, {123456789012345, 123456789012345}, {int64_max, int64_max}, {-1, int64_max}};
	for (const auto& [time, expected] : cases) {
		SCOPED_TRACE(time);
		Write_bit_buffer packet;
		packet.serial_op_time(time);
		packet.rewind();
		long long seen = -1;
		EXPECT_TRUE(packet.as_read_bit_buffer().serial_op_time(seen));
		EXPECT_EQ(seen, expected);
	}
	Read_bit_buffer cut = packet_of(uint64_max, 62);
	long long seen = -1;
	EXPECT_FALSE(cut.serial_op_time(seen));
	EXPECT_EQ(seen, -1);
	EXPECT_EQ(cut.get_cursor_in_bits(), 0);
}

TEST(Read_bit_buffer, CoarseTimes) {
	const long long cases[][2] = {
		{0, 0},
		{99, 0},
		{100, 100},
		{123456, 123400},
		{419430399, 419430300},
		{419430400, 419430400},
		{int64_max, int64_max},
		{-100, 419430300}, // wrong, as told
	};
	for (const auto& [time, expected] : cases) {
		SCOPED_TRACE(time);
		Write_bit_buffer packet;
		packet.serial_op_time_coarse(time);
		packet.rewind();
		long long seen = -1;
		EXPECT_TRUE(packet.as_read_bit_buffer().serial_op_time_coarse(seen));
		EXPECT_EQ(seen, expected);
		EXPECT_EQ(packet.as_read_bit_buffer().get_unread_bits(), 0);
	}
}

TEST(Read_bit_buffer, CutOffCoarseTimesStopBehindTheFlag) {
	struct Case {
		unsigned long long raw;
		int bit_count;
		int cursor;
	};
	// Without a flag; with flag 0 and 21 bits; with flag 1 and 62 bits.
	const Case cases[] = {{0, 0, 0}, {0, 22, 1}, {1, 63, 1}};
	for (const Case& c : cases) {
		Read_bit_buffer packet = packet_of(c.raw, c.bit_count);
		long long seen = -1;
		EXPECT_FALSE(packet.serial_op_time_coarse(seen));
		EXPECT_EQ(packet.get_cursor_in_bits(), c.cursor);
	}
}

TEST(Read_bit_buffer, TicksAreRebuiltNearTheirReference) {
	const unsigned int cases[][3] = {
		// reference, field, tick
		{0, 100, 65600},
		{0, 40000, 40000},
		{1, 100, 65600},
		{1, 65000, 4294966796u},
		{33000, 32990, 32990},
		{33000, 100, 65600},
		{65500, 1, 65501},
		{65501, 1, 65501},
		{70000, 4510, 70010},
		{70000, 60000, 60000},
		{100000, 34500, 100000},
		{130000, 100, 131100},
		{65000, 5, 65505},
		// No tick, whatever the reference.
		{0, 0, 0},
		{1, 0, 0},
		{70000, 0, 0},
		{0xFFFFFFFFu, 0, 0},
		// The borders of step 6.
		{0, 1, 65501},
		{0, 32749, 98249},
		{0, 32750, 32750},
		{0, 65500, 65500},
		{1, 32749, 98249},
		{1, 32750, 32750},
		// A distance of exactly 32,750 is the same cycle, one more is not.
		{65501 + 65500, 32751, 32751 + 131000},
		{65501 + 65500, 32752, 32752 + 65500},
		{65500 + 32751, 1, 65501},
		{65500 + 32752, 1, 131001},
		// wrapped of exactly 32,750 looks up, below it down.
		{65500 + 32750, 65500, 131000},
		{65500 + 32749, 65500, 65500},
		// Codes that no writer makes are taken as they come.
		{0, 65535, 65535},
		{65501, 65535, 65535},
	};
	for (const auto& [reference, field, expected] : cases) {
		SCOPED_TRACE(testing::Message() << "reference " << reference << ", field " << field);
		Read_bit_buffer packet = packet_of(field, 16);
		unsigned int tick = 42;
		EXPECT_TRUE(packet.read_tick_no(reference, tick));
		EXPECT_EQ(tick, expected);
		EXPECT_EQ(packet.get_unread_bits(), 0);
	}
}

TEST(Read_bit_buffer, TickSurvivesWithinHalfACycleOfItsReference) {
	std::mt19937 random(21);
	for (int i = 0; i < 20000; ++i) {
		const auto below = [&](unsigned int limit) {
			return static_cast<unsigned int>(random() % limit);
		};
		const unsigned int tick = 32750 + 65500 + below(4000000000u);
		const unsigned int reference = tick - 32749 + below(2 * 32749 + 1);
		Write_bit_buffer packet;
		packet.write_packet_id(tick);
		packet.rewind();
		unsigned int seen = 0;
		ASSERT_TRUE(packet.as_read_bit_buffer().read_tick_no(reference, seen));
		ASSERT_EQ(seen, tick) << "from " << reference;
	}
}

TEST(Read_bit_buffer, CutOffTickIsZero) {
	for (const int bits : {0, 15}) {
		Read_bit_buffer packet = packet_of(0x7FFF, bits);
		unsigned int tick = 42;
		EXPECT_FALSE(packet.read_tick_no(70000, tick));
		EXPECT_EQ(tick, 0u);
		EXPECT_EQ(packet.get_cursor_in_bits(), 0);
	}
}

TEST(Read_bit_buffer, PacketIdsComeBack) {
	struct Case {
		udp_packet_id id, expected;
	};
	const Case cases[] = {
		{{70000, 0}, {70000, 0}},   {{70000, 5}, {70000, 5}},
		{{70000, 63}, {70000, 63}}, {{70000, 64}, {70000, 0}}, // six bits are all there is
		{{70000, 65}, {70000, 1}},  {{0, 3}, {0, 3}},
		{{-5, 0}, {0, 0}},          {udp_packet_id::PACKET_ID_UNRELIABLE, {0, 63}},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(testing::Message() << c.id.tick_no << "/" << c.id.packet_no);
		Write_bit_buffer packet;
		packet.write_packet_id(c.id);
		packet.rewind();
		udp_packet_id seen(42, 42);
		EXPECT_TRUE(packet.as_read_bit_buffer().read_packet_id(70000, seen));
		EXPECT_EQ(seen.tick_no, c.expected.tick_no);
		EXPECT_EQ(seen.packet_no, c.expected.packet_no);
		EXPECT_EQ(packet.as_read_bit_buffer().get_unread_bits(), 0);
	}
}

TEST(Read_bit_buffer, CutOffPacketIdsKeepTheirTick) {
	Write_bit_buffer packet;
	packet.write_packet_id(udp_packet_id(70010, 5));
	struct Case {
		int size, tick, cursor;
	};
	const Case cases[] = {{0, 0, 0}, {15, 0, 0}, {16, 70010, 16}, {17, 70010, 17}, {22, 70010, 17}};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.size);
		packet.rewind();
		packet.size_in_bits = c.size;
		udp_packet_id seen(42, 42);
		EXPECT_FALSE(packet.as_read_bit_buffer().read_packet_id(70000, seen));
		EXPECT_EQ(seen.tick_no, c.tick);
		EXPECT_EQ(seen.packet_no, 0);
		EXPECT_EQ(packet.get_cursor_in_bits(), c.cursor);
	}
}

TEST(Read_bit_buffer, EmptyPacketFailsEveryRead) {
	Read_bit_buffer packet;
	int i = 42, size = 42;
	unsigned int u = 42, tick = 42;
	long long l = 42;
	unsigned long long w = 42;
	float f = 42;
	unsigned char bytes[1] = {42};
	udp_packet_id id(42, 42);
	EXPECT_EQ(packet.get_unread_bits(), 0);
	EXPECT_FALSE(packet.serial_op(i, Integer_compression_info{0, 9, 4}));
	EXPECT_FALSE(packet.serial_op(u, Unsigned_integer_compression_info{0, 9, 4}));
	EXPECT_FALSE(packet.serial_op(l, Integer64_compression_info{0, 9, 33}));
	EXPECT_FALSE(packet.serial_op(w, Unsigned_integer64_compression_info{0, 9, 33}));
	EXPECT_FALSE(packet.serial_op_float(f, Float_compression_info{0, 1, 0.5f, 2}));
	EXPECT_FALSE(packet.serial_op_float(f, Float_compression_info{0, 1, 0, 32}));
	EXPECT_FALSE(packet.serial_op_byte_array(bytes, 1, size));
	EXPECT_FALSE(packet.serial_op_time(l));
	EXPECT_EQ(i, 42);
	EXPECT_EQ(u, 42u);
	EXPECT_EQ(l, 42);
	EXPECT_EQ(w, 42u);
	EXPECT_EQ(f, 42.0f);
	EXPECT_EQ(bytes[0], 42);
	EXPECT_FALSE(packet.serial_op_time_coarse(l));
	EXPECT_FALSE(packet.read_tick_no(5, tick));
	EXPECT_FALSE(packet.read_packet_id(5, id));
	EXPECT_EQ(packet.get_cursor_in_bits(), 0);
	EXPECT_EQ(packet.get_unread_bits(), 0);
}

TEST(Read_bit_buffer, RangeFailureConsumesTheField) {
	Read_bit_buffer packet = packet_of(250 | 7 << 8, 20);
	int value = 0;
	EXPECT_EQ(packet.get_unread_bits(), 20);
	EXPECT_FALSE(packet.serial_op(value, Integer_compression_info{-100, 100, 8}));
	EXPECT_EQ(packet.get_unread_bits(), 12);
	EXPECT_TRUE(packet.serial_op(value, Integer_compression_info{0, 4095, 12}));
	EXPECT_EQ(value, 7);
	packet.debug_check_out_of_bounds();
	EXPECT_EQ(packet.get_unread_bits(), 0);
}

// Writes random fields and keeps, for each, what reading it has to give.
class Read_bit_buffer_test : public testing::Test {
protected:
	using Check = std::function<void(Read_bit_buffer&)>;

	unsigned long long below(unsigned long long limit) { return random_() % limit; }

	template <typename Value, typename Info> Check write_integer(Value value, const Info& info) {
		packet_.serial_op(value, info);
		return [=](Read_bit_buffer& reader) {
			Value seen = 0;
			ASSERT_TRUE(reader.serial_op(seen, info));
			ASSERT_EQ(seen, value);
		};
	}
	Check write_int() {
		const int count = static_cast<int>(1 + below(30));
		const int least = static_cast<int>(below(1u << 30)) - (1 << 29);
		const int span = (1 << count) - 1;
		const int value = least + static_cast<int>(below(1ull << count));
		return write_integer(value, Integer_compression_info{least, least + span, count});
	}
	Check write_unsigned_int() {
		return write_integer(static_cast<unsigned int>(17 + below(0xFFFFFFEFu)),
		                     Unsigned_integer_compression_info{17, 0xFFFFFFFFu, 32});
	}
	Check write_long_long() {
		const int count = static_cast<int>(32 + below(31));
		const long long value = static_cast<long long>(below(1ull << count)) - 5;
		return write_integer(value, Integer64_compression_info{-5, (1ll << count) - 6, count});
	}
	Check write_float() {
		const Float_compression_info info{-8.0f, 8.0f, 0.03125f, 10};
		const float value = static_cast<float>(below(513)) * 0.03125f - 8.0f;
		packet_.serial_op_float(value, info);
		return [=](Read_bit_buffer& reader) {
			float seen = 0;
			ASSERT_TRUE(reader.serial_op_float(seen, info));
			ASSERT_EQ(seen, value);
		};
	}
	Check write_byte_array() {
		std::vector<unsigned char> data(below(40));
		for (unsigned char& byte : data) byte = static_cast<unsigned char>(random_());
		packet_.serial_op_byte_array(data.data(), static_cast<int>(data.size()));
		return [=](Read_bit_buffer& reader) {
			std::vector<unsigned char> seen(40);
			int size = 0;
			ASSERT_TRUE(reader.serial_op_byte_array(seen.data(), 40, size));
			seen.resize(static_cast<size_t>(size));
			ASSERT_EQ(seen, data);
		};
	}
	Check write_time() {
		const long long time = static_cast<long long>(random_() >> (1 + below(63)));
		packet_.serial_op_time_coarse(time);
		return [=](Read_bit_buffer& reader) {
			long long seen = 0;
			ASSERT_TRUE(reader.serial_op_time_coarse(seen));
			ASSERT_EQ(seen, time >= 419430400 ? time : time / 100 * 100);
		};
	}
	Check write_id() {
		const udp_packet_id id(static_cast<int>(80000 + below(1000)), static_cast<int>(below(64)));
		packet_.write_packet_id(id);
		return [=](Read_bit_buffer& reader) {
			udp_packet_id seen;
			ASSERT_TRUE(reader.read_packet_id(80500, seen));
			ASSERT_EQ(seen.tick_no, id.tick_no);
			ASSERT_EQ(seen.packet_no, id.packet_no);
		};
	}

	Check write_any() {
		using Fixture = Read_bit_buffer_test;
		static constexpr Check (Fixture::* writers[])() = {
			&Fixture::write_int,   &Fixture::write_unsigned_int, &Fixture::write_long_long,
			&Fixture::write_float, &Fixture::write_byte_array,   &Fixture::write_time,
			&Fixture::write_id};
		return (this->*writers[below(std::size(writers))])();
	}

	std::mt19937_64 random_{22};
	Write_bit_buffer packet_;
};

TEST_F(Read_bit_buffer_test, ReadsBackWhatWasWritten) {
	for (int round = 0; round < 300; ++round) {
		packet_.clear();
		std::vector<Check> checks;
		while (packet_.get_size_in_bits() < 10000) {
			checks.push_back(write_any());
		}
		// Over a wire go the bytes alone.
		Read_bit_buffer reader;
		reader.setup(packet_.get_buffer(), packet_.size_in_bytes());
		for (const Check& check : checks) {
			check(reader);
			if (HasFatalFailure()) return;
		}
		EXPECT_LT(reader.get_unread_bits(), 8);
	}
}

} // namespace
