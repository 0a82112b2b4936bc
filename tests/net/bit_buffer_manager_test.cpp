#include "bit_stream_model.h"

#include <morvantis/memory/xylheap.h>
#include <morvantis/net/bit_buffer_manager.h>

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <thread>

namespace {

bool is_zero(const Dynamic_bit_buffer& buffer) {
	const unsigned char* bytes = buffer.get_buffer();
	return std::all_of(bytes, bytes + buffer.capacity_in_bits / 8,
	                   [](unsigned char byte) { return byte == 0; });
}

TEST(Bit_buffer_manager, EmptyPoolMakesNewBuffers) {
	Bit_buffer_manager pool;
	Dynamic_bit_buffer* first = pool.get_bit_buffer();
	Dynamic_bit_buffer* second = pool.get_bit_buffer();
	ASSERT_NE(first, nullptr);
	ASSERT_NE(second, nullptr);
	EXPECT_NE(first, second);
	EXPECT_EQ(first->capacity_in_bits, 11264);
	EXPECT_EQ(first->user_int_a, -1);
	EXPECT_EQ(first->buffer, first->static_buffer);
	EXPECT_TRUE(is_zero(*first));
	pool.return_bit_buffer(first);
	pool.return_bit_buffer(second);
}

TEST(Bit_buffer_manager, LastInIsFirstOut) {
	Bit_buffer_manager pool;
	Dynamic_bit_buffer* a = pool.get_bit_buffer();
	Dynamic_bit_buffer* b = pool.get_bit_buffer();
	pool.return_bit_buffer(a);
	pool.return_bit_buffer(b);
	EXPECT_EQ(pool.get_bit_buffer(), b);
	EXPECT_EQ(pool.get_bit_buffer(), a);
	pool.return_bit_buffer(a);
	pool.return_bit_buffer(b);
}

TEST(Bit_buffer_manager, ReturnedBufferIsClearedAndKeepsTheCallersFields) {
	Bit_buffer_manager pool;
	Dynamic_bit_buffer* buffer = pool.get_bit_buffer();
	buffer->guarantee_capacity_in_bits(20000);
	const unsigned char* block = buffer->get_buffer();
	std::memset(buffer->buffer, 0xEE, static_cast<size_t>(buffer->capacity_in_bits) / 8);
	buffer->skip_bits(700);
	buffer->packet_id = {3, 4};
	buffer->user_block[5] = 6;
	buffer->user_int_a = 7;
	buffer->user_int_b = 8;
	buffer->user_int_c = 9;
	pool.return_bit_buffer(buffer);
	ASSERT_EQ(pool.get_bit_buffer(), buffer);
	EXPECT_EQ(buffer->get_size_in_bits(), 0);
	EXPECT_EQ(buffer->get_cursor_in_bits(), 0);
	EXPECT_TRUE(is_zero(*buffer));
	EXPECT_EQ(buffer->capacity_in_bits, 20032);
	EXPECT_EQ(buffer->get_buffer(), block);
	// kept: these stay.
	EXPECT_EQ(buffer->packet_id.tick_no, 3);
	EXPECT_EQ(buffer->packet_id.packet_no, 4);
	EXPECT_EQ(buffer->user_block[5], 6);
	EXPECT_EQ(buffer->user_int_a, 7);
	EXPECT_EQ(buffer->user_int_b, 8);
	EXPECT_EQ(buffer->user_int_c, 9);
	pool.return_bit_buffer(buffer);
}

TEST(Bit_buffer_manager, ContainsWhatHasComeBack) {
	Bit_buffer_manager pool;
	EXPECT_FALSE(pool.contains_bit_buffer(nullptr));
	Dynamic_bit_buffer* a = pool.get_bit_buffer();
	Dynamic_bit_buffer* b = pool.get_bit_buffer();
	EXPECT_FALSE(pool.contains_bit_buffer(a));
	pool.return_bit_buffer(a);
	pool.return_bit_buffer(b);
	EXPECT_TRUE(pool.contains_bit_buffer(a));
	EXPECT_TRUE(pool.contains_bit_buffer(b));
	EXPECT_EQ(pool.get_bit_buffer(), b);
	EXPECT_TRUE(pool.contains_bit_buffer(a));
	EXPECT_FALSE(pool.contains_bit_buffer(b));
	pool.return_bit_buffer(b);
}

// Grown blocks and all: under the address sanitizer one forgotten is a leak.
TEST(Bit_buffer_manager, ResetFreesEverything) {
	Bit_buffer_manager pool;
	Dynamic_bit_buffer* small = pool.get_bit_buffer();
	Dynamic_bit_buffer* grown = pool.get_bit_buffer();
	grown->guarantee_capacity_in_bits(50000);
	pool.return_bit_buffer(small);
	pool.return_bit_buffer(grown);
	pool.reset();
	EXPECT_FALSE(pool.contains_bit_buffer(small));
	EXPECT_FALSE(pool.contains_bit_buffer(grown));
	pool.reset();
	Dynamic_bit_buffer* fresh = pool.get_bit_buffer();
	EXPECT_EQ(fresh->capacity_in_bits, 11264);
	EXPECT_EQ(fresh->user_int_a, -1);
	pool.return_bit_buffer(fresh); // and the destructor does the same for this one
}

TEST(Bit_buffer_manager, DestructorLeavesHandedOutBuffersAlone) {
	Dynamic_bit_buffer* buffer = nullptr;
	{
		Bit_buffer_manager pool;
		buffer = pool.get_bit_buffer();
	}
	buffer->append_bits_from_uint32(0xAB, 8);
	EXPECT_EQ(hex_of(*buffer), "AB");
	Bit_buffer_manager::return_bit_buffer_mt(buffer);
}

// kept: nothing stops it.
TEST(Bit_buffer_manager, BufferReturnedTwiceIsHandedOutTwice) {
	Bit_buffer_manager pool;
	Dynamic_bit_buffer* buffer = pool.get_bit_buffer();
	pool.return_bit_buffer(buffer);
	pool.return_bit_buffer(buffer);
	EXPECT_EQ(pool.get_bit_buffer(), buffer);
	EXPECT_EQ(pool.get_bit_buffer(), buffer);
	pool.return_bit_buffer(buffer);
}

// kept: a copy lists the same buffers. Both are emptied by hand here, since each would free them.
TEST(Bit_buffer_manager, CopiesListTheSameBuffers) {
	Bit_buffer_manager pool;
	Dynamic_bit_buffer* buffer = pool.get_bit_buffer();
	pool.return_bit_buffer(buffer);
	Bit_buffer_manager copy(pool), assigned;
	assigned = pool;
	EXPECT_TRUE(copy.contains_bit_buffer(buffer));
	EXPECT_TRUE(assigned.contains_bit_buffer(buffer));
	EXPECT_TRUE(pool.contains_bit_buffer(buffer));
	EXPECT_EQ(copy.get_bit_buffer(), buffer);
	EXPECT_EQ(assigned.get_bit_buffer(), buffer);
	EXPECT_TRUE(pool.contains_bit_buffer(buffer));
}

TEST(Bit_buffer_manager, SteadyStateKeepsTheSameBuffers) {
	Bit_buffer_manager pool;
	std::set<Dynamic_bit_buffer*> made;
	std::vector<Dynamic_bit_buffer*> out;
	for (int round = 0; round < 100; ++round) {
		for (int i = 0; i < 5; ++i) out.push_back(pool.get_bit_buffer());
		made.insert(out.begin(), out.end());
		for (; !out.empty(); out.pop_back()) pool.return_bit_buffer(out.back());
	}
	EXPECT_EQ(made.size(), 5u);
}

TEST(Bit_buffer_manager, OtherThreadsGoToTheHeap) {
	Dynamic_bit_buffer* pooled = bit_buffer_manager.get_bit_buffer();
	bit_buffer_manager.return_bit_buffer(pooled);
	Dynamic_bit_buffer* made = nullptr;
	std::thread([&] { made = Bit_buffer_manager::get_bit_buffer_mt(); }).join();
	EXPECT_NE(made, pooled); // the pool had one, and was not asked
	EXPECT_EQ(made->user_int_a, -1);
	EXPECT_TRUE(is_zero(*made));
	Bit_buffer_manager::return_bit_buffer_mt(made); // on another thread than it came from
	EXPECT_FALSE(bit_buffer_manager.contains_bit_buffer(made));
	EXPECT_TRUE(bit_buffer_manager.contains_bit_buffer(pooled));
	Bit_buffer_manager::return_bit_buffer_mt(nullptr);
	bit_buffer_manager.reset();
}

// kept: the object's memory alone, so the block is the caller's to save.
TEST(Bit_buffer_manager, ReturnToTheHeapRunsNoDestructor) {
	Dynamic_bit_buffer* buffer = Bit_buffer_manager::get_bit_buffer_mt();
	buffer->guarantee_capacity_in_bits(20000);
	unsigned char* const block = buffer->dynamic_buffer;
	block[0] = 0x77;
	Bit_buffer_manager::return_bit_buffer_mt(buffer);
	EXPECT_EQ(block[0], 0x77);
	xyl_heap_free(block); // would be freed twice if the destructor had run
}

} // namespace
