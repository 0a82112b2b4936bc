#include "bit_stream_model.h"

#include <morvantis/memory/xylheap.h>
#include <morvantis/net/read_bit_buffer.h>
#include <morvantis/net/write_bit_buffer.h>

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <type_traits>

namespace {

bool is_zero(const Dynamic_bit_buffer& buffer) {
	const unsigned char* bytes = buffer.get_buffer();
	return std::all_of(bytes, bytes + buffer.capacity_in_bits / 8,
	                   [](unsigned char byte) { return byte == 0; });
}

void fill(Dynamic_bit_buffer& buffer, unsigned char byte) {
	std::memset(buffer.buffer, byte, static_cast<size_t>(buffer.capacity_in_bits) / 8);
}

// A buffer of 11,328 bits on the heap.
void grow(Dynamic_bit_buffer& buffer) { buffer.guarantee_capacity_in_bits(11265); }

TEST(Dynamic_bit_buffer, ConstantsHaveTheirValues) {
	EXPECT_EQ(Dynamic_bit_buffer::static_buffer_size_in_bits, 11264);
	EXPECT_EQ(Dynamic_bit_buffer::static_buffer_size_in_bytes, 1408);
	EXPECT_EQ(Dynamic_bit_buffer::static_buffer_size_adder_in_bytes, 8);
	EXPECT_EQ(Dynamic_bit_buffer::packet_id_mod_limit, 65500u);
	EXPECT_EQ(Dynamic_bit_buffer::packet_id_mod_limit_div_2, 32750u);
}

TEST(Dynamic_bit_buffer, FieldsStandInTheirOrder) {
	using B = Dynamic_bit_buffer;
	const size_t offsets[] = {offsetof(B, static_buffer),  offsetof(B, static_buffer_slack),
	                          offsetof(B, dynamic_buffer), offsetof(B, capacity_in_bits),
	                          offsetof(B, buffer),         offsetof(B, packet_id),
	                          offsetof(B, user_block),     offsetof(B, user_int_a),
	                          offsetof(B, user_int_b),     offsetof(B, user_int_c),
	                          offsetof(B, cursor_in_bits), offsetof(B, size_in_bits)};
	EXPECT_TRUE(std::is_sorted(std::begin(offsets), std::end(offsets)));
	EXPECT_EQ(sizeof(B::static_buffer), 1408u);
	EXPECT_EQ(offsetof(B, static_buffer_slack), 1408u);
	EXPECT_EQ(sizeof(B::user_block), 24u);
	EXPECT_FALSE(std::is_polymorphic_v<B>);
	EXPECT_TRUE(std::is_standard_layout_v<B>);
}

TEST(Dynamic_bit_buffer, NewBufferHasInitialValues) {
	// Built on foreign bytes, so that a field left alone shows.
	alignas(16) unsigned char memory[sizeof(Dynamic_bit_buffer)];
	std::memset(memory, 0xEE, sizeof(memory));
	Dynamic_bit_buffer& buffer = *new (memory) Dynamic_bit_buffer;
	EXPECT_TRUE(is_zero(buffer));
	EXPECT_EQ(buffer.dynamic_buffer, nullptr);
	EXPECT_EQ(buffer.capacity_in_bits, 11264);
	EXPECT_EQ(buffer.buffer, buffer.static_buffer);
	EXPECT_EQ(buffer.get_buffer(), buffer.static_buffer);
	EXPECT_EQ(buffer.packet_id.tick_no, 0);
	EXPECT_EQ(buffer.packet_id.packet_no, 0);
	EXPECT_EQ(hex_of(buffer.user_block, 8), "00 00 00 00 00 00 00 00");
	EXPECT_EQ(buffer.user_int_a, -1);
	EXPECT_EQ(buffer.user_int_b, 0);
	EXPECT_EQ(buffer.user_int_c, 0);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 0);
	EXPECT_EQ(buffer.get_size_in_bits(), 0);
	buffer.~Dynamic_bit_buffer();
}

TEST(Dynamic_bit_buffer, BitsStandLeastSignificantFirst) {
	Dynamic_bit_buffer buffer;
	buffer.append_bits_from_uint32(5, 3);
	buffer.append_bits_from_uint32(0xAB, 8);
	EXPECT_EQ(hex_of(buffer), "5D 05");
	EXPECT_EQ(buffer.get_size_in_bits(), 11);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 11);
	EXPECT_EQ(buffer.size_in_bytes(), 2);
}

TEST(Dynamic_bit_buffer, SizeInBytesRoundsUp) {
	const int cases[][2] = {{0, 0}, {1, 1}, {7, 1}, {8, 1}, {9, 2}, {11264, 1408}};
	for (const auto& [bits, bytes] : cases) {
		SCOPED_TRACE(bits);
		Dynamic_bit_buffer buffer;
		buffer.skip_bits(bits);
		EXPECT_EQ(buffer.size_in_bytes(), bytes);
	}
}

TEST(Dynamic_bit_buffer, EveryPositionAndWidthKeepsItsNeighbours) {
	for (const unsigned int background : {0x00u, 0xFFu, 0x5Au}) {
		for (int position = 0; position < 64; ++position) {
			for (int count = 0; count <= 32; ++count) {
				Dynamic_bit_buffer buffer;
				fill(buffer, static_cast<unsigned char>(background));
				const unsigned int value =
					0xA5C3B197u & static_cast<unsigned int>((1ull << count) - 1);
				buffer.skip_bits(position);
				buffer.append_bits_from_uint32(value, count);
				const int bits = buffer.capacity_in_bits;
				for (int i = 0; i < 192 && i < bits; ++i) {
					const bool is_field = i >= position && i < position + count;
					const unsigned int expected =
						is_field ? value >> (i - position) & 1 : background >> i % 8 & 1u;
					ASSERT_EQ(buffer.get_buffer()[i / 8] >> i % 8 & 1u, expected)
						<< i << " at " << position << " with " << count;
				}
			}
		}
	}
}

TEST(Dynamic_bit_buffer, ThirtyTwoBitsAtCursor31KeepTheirNeighbours) {
	Dynamic_bit_buffer buffer;
	fill(buffer, 0xFF);
	buffer.skip_bits(31);
	buffer.append_bits_from_uint32(0, 32);
	EXPECT_EQ(hex_of(buffer.get_buffer(), 9), "FF FF FF 7F 00 00 00 80 FF");
}

TEST(Dynamic_bit_buffer, ValueSpillsUntilTheNextFieldIsWritten) {
	Dynamic_bit_buffer buffer;
	buffer.append_bits_from_uint32(0xFF, 4);
	EXPECT_EQ(buffer.get_buffer()[0], 0xFF);
	EXPECT_EQ(buffer.get_size_in_bits(), 4);
	buffer.append_bits_from_uint32(0, 4);
	EXPECT_EQ(buffer.get_buffer()[0], 0x0F);
}

TEST(Dynamic_bit_buffer, WideValueSpillsAboveItsUpperStep) {
	Dynamic_bit_buffer buffer;
	buffer.append_bits_from_uint64(0xFFFFFFFF00000000u, 33);
	EXPECT_EQ(hex_of(buffer.get_buffer(), 9), "00 00 00 00 FF FF FF FF 00");
	EXPECT_EQ(buffer.get_size_in_bits(), 33);
}

TEST(Dynamic_bit_buffer, WideFieldKeepsItsNeighbours) {
	for (const unsigned int background : {0x00u, 0xFFu, 0x5Au}) {
		for (int position = 0; position < 64; ++position) {
			for (int count = 32; count <= 64; ++count) {
				Dynamic_bit_buffer buffer;
				fill(buffer, static_cast<unsigned char>(background));
				const unsigned long long mask = count == 64 ? ~0ull : (1ull << count) - 1;
				const unsigned long long value = 0xA5C3B197D2E4F687u & mask;
				buffer.skip_bits(position);
				buffer.append_bits_from_uint64(value, count);
				ASSERT_EQ(buffer.get_cursor_in_bits(), position + count);
				for (int i = 0; i < 224; ++i) {
					const bool is_field = i >= position && i < position + count;
					const unsigned int expected =
						is_field ? static_cast<unsigned int>(value >> (i - position) & 1)
								 : background >> i % 8 & 1u;
					ASSERT_EQ(buffer.get_buffer()[i / 8] >> i % 8 & 1u, expected)
						<< i << " at " << position << " with " << count;
				}
				unsigned long long seen = 0;
				buffer.rewind_by(count);
				ASSERT_TRUE(buffer.read_bits_to_uint64(seen, count));
				ASSERT_EQ(seen, value);
			}
		}
	}
}

TEST(Dynamic_bit_buffer, ReadsUpToExactlyTheSize) {
	Dynamic_bit_buffer buffer;
	buffer.append_bits_from_uint32(0x1FF, 9);
	buffer.rewind();
	unsigned int value = 77;
	EXPECT_FALSE(buffer.read_bits_to_uint32(value, 10));
	EXPECT_EQ(value, 77u);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 0);
	EXPECT_TRUE(buffer.read_bits_to_uint32(value, 9));
	EXPECT_EQ(value, 0x1FFu);
	EXPECT_FALSE(buffer.read_bits_to_uint32(value, 1));
	EXPECT_EQ(value, 0x1FFu);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 9);
	EXPECT_TRUE(buffer.read_bits_to_uint32(value, 0));
	EXPECT_EQ(value, 0u);
	EXPECT_EQ(buffer.get_size_in_bits(), 9);
}

TEST(Dynamic_bit_buffer, WideReadPastTheSizeChangesNothing) {
	Dynamic_bit_buffer buffer;
	buffer.append_bits_from_uint64(~0ull, 64);
	buffer.rewind();
	unsigned int skipped;
	ASSERT_TRUE(buffer.read_bits_to_uint32(skipped, 1));
	unsigned long long value = 77;
	EXPECT_FALSE(buffer.read_bits_to_uint64(value, 64));
	EXPECT_EQ(value, 77u);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 1);
	EXPECT_TRUE(buffer.read_bits_to_uint64(value, 63));
	EXPECT_EQ(value, 0x7FFFFFFFFFFFFFFFu);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 64);
}

TEST(Dynamic_bit_buffer, ArrayReadPastTheSizeChangesNothing) {
	for (const int position : {0, 3}) {
		SCOPED_TRACE(position);
		Open_bit_buffer buffer;
		buffer.skip_bits(position + 15);
		buffer.rewind_by(15);
		unsigned char data[2] = {7, 8};
		EXPECT_FALSE(buffer.read_bits_from_array(data, 16));
		EXPECT_EQ(hex_of(data, 2), "07 08");
		EXPECT_EQ(buffer.get_cursor_in_bits(), position);
	}
}

TEST(Dynamic_bit_buffer, SizeTestIsSigned) {
	Dynamic_bit_buffer buffer;
	buffer.cursor_in_bits = -32; // never read through, as the size is below the cursor
	buffer.size_in_bits = -40;
	unsigned int value = 5;
	EXPECT_FALSE(buffer.read_bits_to_uint32(value, 1));
	EXPECT_EQ(value, 5u);
}

TEST(Dynamic_bit_buffer, SixtyThreeBitsComeBackWithoutTheTop) {
	Dynamic_bit_buffer buffer;
	buffer.append_bits_from_uint64(~0ull, 63);
	buffer.append_bits_from_uint32(1, 1);
	buffer.rewind();
	unsigned long long value = 0;
	ASSERT_TRUE(buffer.read_bits_to_uint64(value, 63));
	EXPECT_EQ(value, 0x7FFFFFFFFFFFFFFFu);
}

// kept: below 32 bits the wide pair moves the cursor rightly and takes whole words all the same.
TEST(Dynamic_bit_buffer, WidePairBelow32BitsMovesTheCursorOnly) {
	for (int count = 0; count < 32; ++count) {
		SCOPED_TRACE(count);
		Dynamic_bit_buffer buffer;
		buffer.append_bits_from_uint32(0x89ABCDEF, 32);
		buffer.append_bits_from_uint32(0, 32);
		buffer.rewind();
		unsigned long long value = 0;
		ASSERT_TRUE(buffer.read_bits_to_uint64(value, count));
		EXPECT_EQ(static_cast<unsigned int>(value), 0x89ABCDEFu);
		EXPECT_EQ(buffer.get_cursor_in_bits(), count);

		Dynamic_bit_buffer written;
		written.append_bits_from_uint64(0, count);
		EXPECT_EQ(written.get_cursor_in_bits(), count);
		EXPECT_EQ(written.get_size_in_bits(), count);
	}
}

TEST(Dynamic_bit_buffer, CapacityGrowsOnlyAboveTheStaticSize) {
	Dynamic_bit_buffer buffer;
	buffer.append_bits_from_uint32(0xABCDEF, 24);
	for (const int bits : {-1, 0, 100, 11264}) {
		buffer.guarantee_capacity_in_bits(bits);
		EXPECT_EQ(buffer.capacity_in_bits, 11264);
		EXPECT_EQ(buffer.dynamic_buffer, nullptr);
	}
	buffer.guarantee_capacity_in_bits(11265);
	EXPECT_EQ(buffer.capacity_in_bits, 11328);
	EXPECT_NE(buffer.buffer, buffer.static_buffer);
	EXPECT_EQ(buffer.buffer, buffer.dynamic_buffer);
	EXPECT_EQ(hex_of(buffer), "EF CD AB");
	EXPECT_EQ(buffer.get_size_in_bits(), 24);
}

TEST(Dynamic_bit_buffer, CapacityFollowsTheRequestInStepsOf64) {
	Dynamic_bit_buffer buffer;
	const int cases[][2] = {{11328, 11328}, {11329, 11392}, {11300, 11392}, {11392, 11392},
	                        {20000, 20032}, {20032, 20032}, {20033, 20096}, {11264, 20096}};
	for (const auto& [request, capacity] : cases) {
		SCOPED_TRACE(request);
		buffer.guarantee_capacity_in_bits(request);
		EXPECT_EQ(buffer.capacity_in_bits, capacity);
		EXPECT_EQ(reinterpret_cast<size_t>(buffer.buffer) % 16, 0u);
	}
}

TEST(Dynamic_bit_buffer, GrowthTakesTheBytesUpToTheSizeAlone) {
	Dynamic_bit_buffer buffer;
	fill(buffer, 0xFF);
	buffer.skip_bits(13);
	for (const int request : {11265, 30000}) {
		SCOPED_TRACE(request);
		buffer.guarantee_capacity_in_bits(request);
		EXPECT_EQ(hex_of(buffer.get_buffer(), 3), "FF FF 00"); // the byte in part comes whole
		EXPECT_EQ(buffer.get_buffer()[buffer.capacity_in_bits / 8 - 1], 0);
		fill(buffer, 0xFF);
	}
}

TEST(Dynamic_bit_buffer, ClearKeepsAGrownCapacity) {
	Dynamic_bit_buffer buffer;
	grow(buffer);
	const unsigned char* block = buffer.get_buffer();
	fill(buffer, 0xFF);
	buffer.skip_bits(100);
	buffer.clear();
	EXPECT_EQ(buffer.get_size_in_bits(), 0);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 0);
	EXPECT_EQ(buffer.capacity_in_bits, 11328);
	EXPECT_EQ(buffer.get_buffer(), block);
	EXPECT_TRUE(is_zero(buffer));
}

TEST(Dynamic_bit_buffer, CursorOperations) {
	Dynamic_bit_buffer buffer;
	buffer.initialize_after_read(100);
	EXPECT_EQ(buffer.get_size_in_bits(), 800);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 0);
	buffer.increment_cursor_and_size_in_bits(24);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 24);
	EXPECT_EQ(buffer.get_size_in_bits(), 824);
	buffer.rewind_by(30);
	EXPECT_EQ(buffer.get_cursor_in_bits(), -6);
	buffer.rewind_by(-16);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 10);
	buffer.rewind();
	EXPECT_EQ(buffer.get_cursor_in_bits(), 0);
	EXPECT_EQ(buffer.get_size_in_bits(), 824);
	buffer.skip_bits(5);
	buffer.initialize_after_read(0);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 0);
	EXPECT_EQ(buffer.get_size_in_bits(), 0);
	buffer.assert_capacity_in_bits(1 << 30);
	EXPECT_EQ(buffer.capacity_in_bits, 11264);
}

TEST(Dynamic_bit_buffer, BitsToTheNextByte) {
	const int cases[][2] = {{0, 0}, {1, 7}, {4, 4}, {7, 1}, {8, 0}, {9, 7}, {11264, 0}};
	for (const auto& [position, bits] : cases) {
		SCOPED_TRACE(position);
		EXPECT_EQ(Dynamic_bit_buffer::compute_bit_count_to_skip_to_next_byte(position), bits);
		Dynamic_bit_buffer buffer;
		buffer.skip_bits(position);
		EXPECT_EQ(buffer.compute_bit_count_to_skip_to_next_byte(), bits);
	}
}

TEST(Dynamic_bit_buffer, ShrinkErasesFromTheCursor) {
	Dynamic_bit_buffer buffer;
	fill(buffer, 0xFF);
	buffer.skip_bits(100);
	buffer.rewind_by(90);
	buffer.shrink_size_to(50);
	EXPECT_EQ(buffer.get_size_in_bits(), 50);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 10);
	EXPECT_EQ(hex_of(buffer.get_buffer(), 3), "FF 03 00");
	buffer.rewind();
	buffer.shrink_size_to(50);
	EXPECT_TRUE(is_zero(buffer));
}

TEST(Dynamic_bit_buffer, ShrinkMovesTheCursorBack) {
	Dynamic_bit_buffer buffer;
	fill(buffer, 0xFF);
	buffer.skip_bits(10);
	buffer.shrink_size_to(5);
	EXPECT_EQ(buffer.get_size_in_bits(), 5);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 5);
	EXPECT_EQ(buffer.get_buffer()[0], 0x1F);
	EXPECT_EQ(buffer.get_buffer()[1], 0);
	EXPECT_EQ(buffer.get_buffer()[1407], 0);
}

TEST(Dynamic_bit_buffer, ShrinkOfAFullBufferErasesNothing) {
	Dynamic_bit_buffer buffer;
	fill(buffer, 0xFF);
	buffer.skip_bits(11264);
	buffer.shrink_size_to(11264);
	EXPECT_EQ(buffer.get_buffer()[1407], 0xFF);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 11264);
	buffer.shrink_size_to(11263);
	EXPECT_EQ(buffer.get_buffer()[1407], 0x7F);
}

TEST(Dynamic_bit_buffer, SkipRaisesTheSizeWhereThePassedCursorIs) {
	Dynamic_bit_buffer buffer;
	buffer.append_bits_from_uint32(0xFFFFFFFF, 20);
	buffer.rewind();
	buffer.skip_bits(5);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 5);
	EXPECT_EQ(buffer.get_size_in_bits(), 20);
	buffer.skip_to_next_byte();
	EXPECT_EQ(buffer.get_cursor_in_bits(), 8);
	EXPECT_EQ(buffer.get_size_in_bits(), 20);
	buffer.skip_bits(13);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 21);
	EXPECT_EQ(buffer.get_size_in_bits(), 21);
	buffer.skip_to_next_byte();
	EXPECT_EQ(buffer.get_cursor_in_bits(), 24);
	EXPECT_EQ(buffer.get_size_in_bits(), 24);
	buffer.skip_to_next_byte();
	EXPECT_EQ(buffer.get_cursor_in_bits(), 24);
	EXPECT_EQ(buffer.get_size_in_bits(), 24);
	EXPECT_EQ(hex_of(buffer), "FF FF FF"); // the bits in between stay as they were
}

TEST(Dynamic_bit_buffer, SkipGrowsTheStorage) {
	Dynamic_bit_buffer buffer;
	buffer.skip_bits(11264);
	EXPECT_EQ(buffer.capacity_in_bits, 11264);
	buffer.skip_bits(1);
	EXPECT_EQ(buffer.capacity_in_bits, 11328);
	buffer.skip_bits(62);
	buffer.skip_to_next_byte();
	EXPECT_EQ(buffer.capacity_in_bits, 11328);
	buffer.skip_bits(1);
	EXPECT_EQ(buffer.capacity_in_bits, 11392);
}

TEST(Dynamic_bit_buffer, SetupPutsEveryFieldBack) {
	Dynamic_bit_buffer buffer;
	buffer.skip_bits(40);
	buffer.packet_id = {5, 6};
	buffer.user_int_a = buffer.user_int_b = buffer.user_int_c = 9;
	std::memset(buffer.user_block, 0xCC, sizeof(buffer.user_block));
	fill(buffer, 0xFF);
	buffer.setup(nullptr, 100);
	EXPECT_TRUE(is_zero(buffer));
	EXPECT_EQ(buffer.get_size_in_bits(), 0);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 0);
	EXPECT_EQ(buffer.packet_id.tick_no, 0);
	EXPECT_EQ(buffer.packet_id.packet_no, 0);
	EXPECT_EQ(hex_of(buffer.user_block, 10), "00 00 00 00 00 00 00 00 CC CC");
	EXPECT_EQ(buffer.user_int_a, -1);
	EXPECT_EQ(buffer.user_int_b, 0);
	EXPECT_EQ(buffer.user_int_c, 0);
}

TEST(Dynamic_bit_buffer, SetupLoadsData) {
	unsigned char data[1409];
	for (size_t i = 0; i < sizeof(data); ++i) data[i] = static_cast<unsigned char>(i * 7 + 1);
	const int cases[][2] = {{0, 11264}, {1, 11264}, {1408, 11264}, {1409, 11328}};
	for (const auto& [byte_count, capacity] : cases) {
		SCOPED_TRACE(byte_count);
		const Dynamic_bit_buffer buffer(data, byte_count);
		EXPECT_EQ(buffer.get_size_in_bits(), byte_count * 8);
		EXPECT_EQ(buffer.get_cursor_in_bits(), 0);
		EXPECT_EQ(buffer.capacity_in_bits, capacity);
		EXPECT_EQ(std::memcmp(buffer.get_buffer(), data, static_cast<size_t>(byte_count)), 0);
		EXPECT_EQ(buffer.user_int_a, -1);
	}
}

// kept: the block is the caller's to save, or lost.
TEST(Dynamic_bit_buffer, SetupForgetsAGrownBlock) {
	Dynamic_bit_buffer buffer;
	grow(buffer);
	unsigned char* const block = buffer.dynamic_buffer;
	block[0] = 0x77;
	buffer.setup(nullptr, 0);
	EXPECT_EQ(buffer.dynamic_buffer, nullptr);
	EXPECT_EQ(buffer.buffer, buffer.static_buffer);
	EXPECT_EQ(buffer.capacity_in_bits, 11264);
	EXPECT_EQ(block[0], 0x77);
	xyl_heap_free(block); // would be freed twice if setup() had freed it
}

TEST(Dynamic_bit_buffer, CopyOfAGrownBufferOwnsItsStorage) {
	Dynamic_bit_buffer source;
	grow(source);
	source.append_bits_from_uint32(0x1234, 16);
	source.rewind_by(8);
	source.packet_id = {3, 4};
	std::memset(source.user_block, 0xAB, sizeof(source.user_block));
	source.user_int_a = 1;
	source.user_int_b = 2;
	source.user_int_c = 3;
	source.buffer[1415] = 0x99; // past the size, and copied: the whole capacity is
	const Dynamic_bit_buffer copy(source);
	EXPECT_EQ(copy.capacity_in_bits, 11328);
	EXPECT_NE(copy.get_buffer(), source.get_buffer());
	EXPECT_EQ(copy.get_buffer(), copy.dynamic_buffer);
	EXPECT_EQ(std::memcmp(copy.get_buffer(), source.get_buffer(), 1416), 0);
	EXPECT_EQ(copy.get_cursor_in_bits(), 8);
	EXPECT_EQ(copy.get_size_in_bits(), 16);
	EXPECT_EQ(copy.packet_id.tick_no, 3);
	EXPECT_EQ(copy.packet_id.packet_no, 4);
	EXPECT_EQ(std::memcmp(copy.user_block, source.user_block, 24), 0);
	EXPECT_EQ(copy.user_int_a, 1);
	EXPECT_EQ(copy.user_int_b, 2);
	EXPECT_EQ(copy.user_int_c, 3);
	source.buffer[0] = 0;
	EXPECT_EQ(copy.get_buffer()[0], 0x34);
}

TEST(Dynamic_bit_buffer, SmallCopyStaysInsideTheObject) {
	Dynamic_bit_buffer source;
	source.append_bits_from_uint32(0x1234, 16);
	const Dynamic_bit_buffer copy(source);
	EXPECT_EQ(copy.get_buffer(), copy.static_buffer);
	EXPECT_EQ(hex_of(copy), "34 12");
}

TEST(Dynamic_bit_buffer, AssignmentKeepsALargerStorageWithItsTail) {
	Dynamic_bit_buffer target, source;
	grow(target);
	fill(target, 0xEE);
	const unsigned char* block = target.get_buffer();
	source.append_bits_from_uint32(0x12, 8);
	target = source;
	EXPECT_EQ(target.capacity_in_bits, 11328);
	EXPECT_EQ(target.get_buffer(), block);
	EXPECT_EQ(target.get_buffer()[0], 0x12);
	EXPECT_EQ(target.get_buffer()[1407], 0);
	EXPECT_EQ(target.get_buffer()[1408], 0xEE);
	EXPECT_EQ(target.get_size_in_bits(), 8);
	static_assert(std::is_void_v<decltype(target = source)>);
}

TEST(Dynamic_bit_buffer, AssignmentToItselfChangesNothing) {
	Dynamic_bit_buffer buffer;
	grow(buffer);
	buffer.append_bits_from_uint32(0x1234, 16);
	Dynamic_bit_buffer& same = buffer;
	buffer = same;
	EXPECT_EQ(hex_of(buffer), "34 12");
	EXPECT_EQ(buffer.capacity_in_bits, 11328);
}

TEST(Dynamic_bit_buffer, ViewsAreTheSameObject) {
	Dynamic_bit_buffer buffer;
	const Dynamic_bit_buffer& constant = buffer;
	EXPECT_EQ(static_cast<void*>(&buffer.as_read_bit_buffer()), &buffer);
	EXPECT_EQ(static_cast<void*>(&buffer.as_write_bit_buffer()), &buffer);
	EXPECT_EQ(static_cast<const void*>(&constant.as_read_bit_buffer()), &buffer);
	EXPECT_EQ(static_cast<const void*>(&constant.as_write_bit_buffer()), &buffer);
	EXPECT_EQ(static_cast<void*>(buffer.as_raw_buffer()), &buffer.capacity_in_bits);
}

TEST(Dynamic_bit_buffer, AppendOfAlignedBitsCopiesWholeBytes) {
	Dynamic_bit_buffer source, target;
	source.append_bits_from_uint32(0xFFFFFFFF, 32);
	source.rewind();
	target.append_bits_const(&source, 12);
	EXPECT_EQ(target.get_cursor_in_bits(), 12);
	EXPECT_EQ(target.get_size_in_bits(), 12);
	EXPECT_EQ(source.get_cursor_in_bits(), 0);
	EXPECT_EQ(hex_of(target.get_buffer(), 3), "FF FF 00"); // four bits too many
	target.append_bits_from_uint32(0, 4);
	EXPECT_EQ(hex_of(target.get_buffer(), 3), "FF 0F 00"); // which the next field clears

	target.append_bits(&source, 12);
	EXPECT_EQ(target.get_cursor_in_bits(), 28);
	EXPECT_EQ(source.get_cursor_in_bits(), 12);
}

TEST(Dynamic_bit_buffer, AppendOfUnalignedBitsIsExact) {
	Dynamic_bit_buffer source, target;
	source.append_bits_from_uint64(~0ull, 64);
	source.rewind();
	target.skip_bits(3);
	target.append_bits_const(&source, 12);
	EXPECT_EQ(hex_of(target.get_buffer(), 3), "F8 7F 00");
	EXPECT_EQ(target.get_size_in_bits(), 15);
	EXPECT_EQ(source.get_cursor_in_bits(), 0);
	target.append_bits(&source, 0);
	target.append_bits(&source, -5);
	target.append_bits_const(&source, 0);
	EXPECT_EQ(target.get_cursor_in_bits(), 15);
	EXPECT_EQ(source.get_cursor_in_bits(), 0);
	target.append_bits(&source, 1);
	EXPECT_EQ(hex_of(target), "F8 FF");
	EXPECT_EQ(source.get_cursor_in_bits(), 1);
	EXPECT_EQ(source.get_size_in_bits(), 64);
}

TEST(Dynamic_bit_buffer, AppendJoinsEveryPairOfPositions) {
	Dynamic_bit_buffer source;
	Bit_stream_model source_model;
	for (unsigned int i = 0; i < 20; ++i) {
		source.append_bits_from_uint32(i * 0x9E3779B9u + 77, 32);
		source_model.append_32(i * 0x9E3779B9u + 77, 32);
	}
	for (int from = 0; from < 40; ++from) {
		for (int to = 0; to < 40; ++to) {
			for (const int count : {0, 1, 7, 8, 31, 32, 33, 63, 64, 65, 127, 200, 300}) {
				source.rewind_by(source.get_cursor_in_bits() - from);
				source_model.cursor = from;
				Dynamic_bit_buffer target;
				fill(target, 0xFF);
				Bit_stream_model model;
				for (int i = 0; i < model.capacity; ++i) model.set_bit(i, true);
				target.skip_bits(to);
				model.skip(to);
				target.append_bits_const(&source, static_cast<unsigned int>(count));
				model.append_from(source_model, count);
				ASSERT_EQ(hex_of(target.get_buffer(), 60).size(), 179u);
				for (int i = 0; i < 480; ++i) {
					ASSERT_EQ(target.get_buffer()[i / 8] >> i % 8 & 1, model.bit(i))
						<< "bit " << i << ", " << count << " bits from " << from << " to " << to;
				}
			}
		}
	}
}

TEST(Dynamic_bit_buffer, ArraysAtWholeBytesCountWholeBytes) {
	const unsigned char data[] = {0xFF, 0xFF};
	Open_bit_buffer buffer;
	buffer.append_bits_from_array(data, 12);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 16); // kept: and not 12
	EXPECT_EQ(buffer.get_size_in_bits(), 16);
	EXPECT_EQ(hex_of(buffer), "FF FF");
	buffer.rewind();
	unsigned char seen[2] = {};
	EXPECT_TRUE(buffer.read_bits_from_array(seen, 12));
	EXPECT_EQ(buffer.get_cursor_in_bits(), 12);
	EXPECT_EQ(hex_of(seen, 2), "FF FF");
}

TEST(Dynamic_bit_buffer, ArraysElsewhereCountBits) {
	const unsigned char data[] = {0xFF, 0xFF};
	Open_bit_buffer buffer;
	buffer.skip_bits(4);
	buffer.append_bits_from_array(data, 12);
	EXPECT_EQ(buffer.get_cursor_in_bits(), 16);
	EXPECT_EQ(buffer.get_size_in_bits(), 16);
	EXPECT_EQ(hex_of(buffer.get_buffer(), 3), "F0 FF 0F"); // kept: the last byte is not masked
	buffer.rewind_by(12);
	unsigned char seen[2] = {};
	EXPECT_TRUE(buffer.read_bits_from_array(seen, 12));
	EXPECT_EQ(buffer.get_cursor_in_bits(), 16);
	EXPECT_EQ(hex_of(seen, 2), "FF 0F"); // while a read masks it
}

TEST(Dynamic_bit_buffer, ArraysOfEveryLengthAtEveryPosition) {
	unsigned char data[48];
	for (size_t i = 0; i < sizeof(data); ++i) data[i] = static_cast<unsigned char>(i * 37 + 11);
	for (int position = 0; position < 16; ++position) {
		for (int count = 0; count <= 8 * 40; ++count) {
			Open_bit_buffer buffer;
			Bit_stream_model model;
			fill(buffer, 0xFF);
			for (int i = 0; i < model.capacity; ++i) model.set_bit(i, true);
			buffer.skip_bits(position);
			model.skip(position);
			buffer.append_bits_from_array(data, count);
			model.append_array(data, count);
			ASSERT_EQ(model.cursor, buffer.get_cursor_in_bits()) << position << ", " << count;
			for (int i = 0; i < 440; ++i) {
				ASSERT_EQ(buffer.get_buffer()[i / 8] >> i % 8 & 1, model.bit(i))
					<< "bit " << i << ", " << count << " bits at " << position;
			}
			buffer.cursor_in_bits = model.cursor = position;
			unsigned char seen[48], expected[48];
			std::memset(seen, 0x55, sizeof(seen));
			std::memset(expected, 0x55, sizeof(expected));
			ASSERT_TRUE(buffer.read_bits_from_array(seen, count));
			ASSERT_TRUE(model.read_array(expected, count));
			ASSERT_EQ(hex_of(seen, 48), hex_of(expected, 48)) << position << ", " << count;
		}
	}
}

// A buffer with marked bytes behind the object, and a writer that stands `gap` bits before the end.
struct Guarded_bit_buffer {
	Guarded_bit_buffer(bool is_grown, int gap) {
		std::memset(canary, 0xC5, sizeof(canary));
		if (is_grown) grow(buffer);
		block = buffer.dynamic_buffer;
		end = buffer.capacity_in_bits;
		start = end - gap;
		buffer.skip_bits(end);
		buffer.cursor_in_bits = start;
	}
	// Back to where the transfer began, for the next one.
	void go_back() { buffer.cursor_in_bits = start; }
	// What stands behind the storage is as it was, whichever the storage is.
	void expect_untouched() const {
		EXPECT_EQ(buffer.dynamic_buffer, block);
		EXPECT_EQ(buffer.capacity_in_bits, end);
		EXPECT_EQ(buffer.buffer, block ? block : buffer.static_buffer);
		EXPECT_EQ(buffer.packet_id.tick_no, 0);
		for (const unsigned char byte : canary) EXPECT_EQ(byte, 0xC5);
		if (block) {
			const unsigned char* bytes = buffer.static_buffer;
			EXPECT_TRUE(std::all_of(bytes, bytes + 1408, [](unsigned char b) { return b == 0; }));
		}
	}

	Open_bit_buffer buffer;
	unsigned char canary[16];
	const unsigned char* block;
	int end;
	int start;
};

TEST(Dynamic_bit_buffer, FieldsAtTheEndStayWithinTheSlack) {
	for (const bool is_grown : {false, true}) {
		for (int gap = 0; gap <= 64; ++gap) {
			SCOPED_TRACE(gap);
			Guarded_bit_buffer guarded(is_grown, gap);
			Open_bit_buffer& buffer = guarded.buffer;
			const unsigned long long expected = gap == 64 ? ~0ull : (1ull << gap) - 1;
			if (gap <= 32) {
				unsigned int value = 0;
				buffer.append_bits_from_uint32(0xFFFFFFFFu, gap); // spills into the slack
				guarded.go_back();
				EXPECT_TRUE(buffer.read_bits_to_uint32(value, gap));
				EXPECT_EQ(value, expected);
				guarded.go_back();
			}
			if (gap >= 32) {
				unsigned long long value = 0;
				buffer.append_bits_from_uint64(~0ull, gap);
				guarded.go_back();
				EXPECT_TRUE(buffer.read_bits_to_uint64(value, gap));
				EXPECT_EQ(value, expected);
			}
			guarded.expect_untouched();
		}
	}
}

TEST(Dynamic_bit_buffer, BlocksAtTheEndStayWithinTheSlack) {
	for (const bool is_grown : {false, true}) {
		for (int gap = 0; gap <= 200; ++gap) {
			SCOPED_TRACE(gap);
			Guarded_bit_buffer guarded(is_grown, gap);
			Open_bit_buffer& buffer = guarded.buffer;
			Dynamic_bit_buffer source; // read up to the end of its storage, from the same gap
			source.skip_bits(11264);
			fill(source, 0xFF);
			source.rewind_by(gap);
			buffer.append_bits(&source, gap);
			EXPECT_EQ(buffer.get_cursor_in_bits(), guarded.end);
			guarded.go_back();
			unsigned char bytes[25] = {};
			EXPECT_TRUE(buffer.read_bits_from_array(bytes, gap));
			EXPECT_EQ(buffer.get_cursor_in_bits(), guarded.end);
			for (int i = 0; i < gap / 8; ++i) EXPECT_EQ(bytes[i], 0xFF);
			guarded.go_back();
			buffer.append_bits_from_array(bytes, gap / 8 * 8);
			EXPECT_EQ(buffer.get_cursor_in_bits(), guarded.start + gap / 8 * 8);
			guarded.expect_untouched();
		}
	}
}

} // namespace
