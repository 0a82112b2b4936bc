// The pool over a heap that counts: when it takes memory, and that it gives all of it back.

#include <morvantis/memory/xylheap.h>
#include <morvantis/net/bit_buffer_manager.h>

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

int taken; // blocks since the start of the program
int given; // blocks given back

} // namespace

void* xyl_heap_allocate(size_t size) {
	++taken;
	return std::malloc(size);
}

void* xyl_heap_allocate_aligned(size_t size, size_t) { return xyl_heap_allocate(size); }

void xyl_heap_free(void* memory) {
	if (memory) ++given;
	std::free(memory);
}

namespace {

TEST(Counted_pool, SteadyStateTakesNoMemory) {
	const int before = taken;
	Bit_buffer_manager pool;
	EXPECT_EQ(taken, before); // empty at the start
	Dynamic_bit_buffer* first = pool.get_bit_buffer();
	Dynamic_bit_buffer* second = pool.get_bit_buffer();
	EXPECT_EQ(taken, before + 2);
	pool.return_bit_buffer(first);
	pool.return_bit_buffer(second);
	EXPECT_EQ(taken, before + 4); // the list's storage: for 1 entry, then for 2
	const int settled = taken;
	for (int round = 0; round < 100; ++round) {
		first = pool.get_bit_buffer();
		second = pool.get_bit_buffer();
		first->append_bits_from_uint32(7, 3);
		pool.return_bit_buffer(first);
		pool.return_bit_buffer(second);
	}
	EXPECT_EQ(taken, settled);
}

TEST(Counted_pool, PoolGivesBackWhatItTook) {
	const int live = taken - given;
	{
		Bit_buffer_manager pool;
		Dynamic_bit_buffer* small = pool.get_bit_buffer();
		Dynamic_bit_buffer* grown = pool.get_bit_buffer();
		grown->guarantee_capacity_in_bits(20000);
		grown->guarantee_capacity_in_bits(40000); // frees the first block
		pool.return_bit_buffer(small);
		pool.return_bit_buffer(grown);
		EXPECT_EQ(taken - given, live + 4); // two buffers, one block, one list
		pool.reset();
		EXPECT_EQ(taken - given, live + 1); // the list's storage stays
	}
	EXPECT_EQ(taken - given, live);
}

TEST(Counted_pool, HeapOperationsTakeOneBlockEach) {
	const int live = taken - given;
	Dynamic_bit_buffer* buffer = Bit_buffer_manager::get_bit_buffer_mt();
	EXPECT_EQ(taken - given, live + 1);
	Bit_buffer_manager::return_bit_buffer_mt(buffer);
	Bit_buffer_manager::return_bit_buffer_mt(nullptr);
	EXPECT_EQ(taken - given, live);
}

TEST(Counted_pool, PacketPathTakesNoMemory) {
	const int before = taken;
	Dynamic_bit_buffer buffer;
	buffer.guarantee_capacity_in_bits(11264);
	buffer.skip_bits(11264);
	const Dynamic_bit_buffer copy(buffer);
	buffer = copy;
	EXPECT_EQ(taken, before);
	buffer.guarantee_capacity_in_bits(11265);
	EXPECT_EQ(taken, before + 1);
	const Dynamic_bit_buffer grown_copy(buffer);
	EXPECT_EQ(taken, before + 2);
}

} // namespace
