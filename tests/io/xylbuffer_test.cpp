#include <morvantis/io/xylbuffer.h>

#include "recording_host.h"

#include <morvantis/memory/xylheap.h>
#include <morvantis/strings/xylvarstring.h>

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

// For the tests of exhausted memory; the sanitizers look these up by name.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }

namespace {

using Bytes = std::vector<unsigned char>;

// What was written: from the start to the cursor.
Bytes written(const xylBuffer& buffer) {
	const xylUInt8* start = buffer.get_buffer_from_start();
	return Bytes(start, start + buffer.get_length());
}

std::vector<std::string> failure_of(const char* number) {
	return {std::string("xylBuffer::allocate(") + number + ") failed!"};
}

std::vector<std::string> told() { return Recording_host::get().take_texts(); }

TEST(xylBuffer, StartsEmpty) {
	const xylBuffer buffer;
	EXPECT_EQ(buffer.data, nullptr);
	EXPECT_EQ(buffer.cursor, nullptr);
	EXPECT_EQ(buffer.get_buffer_size(), 0u);
	EXPECT_EQ(buffer.get_length(), 0u);
	EXPECT_EQ(buffer.get_remaining_length(), 0u);
	EXPECT_FALSE(buffer.uses_external_data);
	EXPECT_FALSE(buffer.allocate_aggresively_flag);
	EXPECT_EQ(buffer.get_allocation_group(), xylMemory_allocator_base::default_group);
}

TEST(xylBuffer, HasNoVirtualOperations) { EXPECT_FALSE(std::is_polymorphic_v<xylBuffer>); }

TEST(xylBuffer, GroupIsOnlyRemembered) {
	xylBuffer buffer;
	buffer.set_allocation_group(xylMemory_allocator_base::flora);
	buffer.write_int(1);
	EXPECT_EQ(buffer.get_allocation_group(), xylMemory_allocator_base::flora);
}

// --- Growth

TEST(xylBuffer, AllocatingNothingOnAnEmptyBufferReports) {
	xylBuffer buffer;
	EXPECT_EQ(buffer.allocate(0), nullptr);
	EXPECT_EQ(buffer.data, nullptr);
	EXPECT_EQ(buffer.capacity, 0u);
	EXPECT_EQ(Recording_host::get().take(),
	          (std::vector<Host_call>{{"error", failure_of("0")[0], {0}}}));
}

TEST(xylBuffer, FirstBlockIsExactAndAligned) {
	xylBuffer buffer;
	EXPECT_EQ(buffer.allocate(100), buffer.data);
	EXPECT_EQ(buffer.cursor, buffer.data);
	EXPECT_EQ(buffer.capacity, 100u);
	EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.data) % 16, 0u);
	EXPECT_GE(xyl_heap_usable_size(buffer.data), 100u);
}

TEST(xylBuffer, WritesThatFillTheBlockGrowIt) {
	xylBuffer buffer;
	buffer.write_int(1);
	EXPECT_EQ(buffer.capacity, 4u);
	buffer.write_int(2);
	EXPECT_EQ(buffer.capacity, 9u); // 8 times 1.2, truncated
	EXPECT_EQ(buffer.get_remaining_length(), 1u);
	buffer.write_uint8(3); // fits exactly
	EXPECT_EQ(buffer.capacity, 10u);
	EXPECT_EQ(written(buffer), (Bytes{1, 0, 0, 0, 2, 0, 0, 0, 3}));
}

TEST(xylBuffer, GrowsByAFifthInSinglePrecision) {
	struct Case {
		const char* name;
		xylUInt64 capacity, size, grown;
	};
	const Case cases[] = {
		{"too small to gain", 1, 4, 4},
		{"truncated", 4, 8, 9},
		{"equal to the capacity", 10, 10, 12},
		{"five is six", 1, 5, 6},
		{"ten thousand", 1, 10000, 12000},
		{"2^24 is the last of its kind", 1, 16777216, 20132660},
		{"2^24 + 1 is rounded to it", 1, 16777217, 20132660},
		{"30,000,001 is rounded down, its product up", 1, 30000001, 36000000},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		xylBuffer buffer;
		buffer.allocate(c.capacity);
		buffer.allocate(c.size);
		EXPECT_EQ(buffer.capacity, c.grown);
		EXPECT_GE(xyl_heap_usable_size(buffer.data), c.grown);
	}
}

TEST(xylBuffer, AllocateBelowTheCapacityOnlyRecords) {
	xylBuffer buffer;
	buffer.allocate(100);
	const xylUInt8* block = buffer.data;
	EXPECT_EQ(buffer.allocate(40), block);
	EXPECT_EQ(buffer.capacity, 40u);
	EXPECT_EQ(buffer.allocate(40), buffer.data); // not above: grows
	EXPECT_EQ(buffer.capacity, 48u);
	EXPECT_EQ(buffer.allocate(0), buffer.data); // no failure, since there is a block
	EXPECT_EQ(buffer.capacity, 0u);
}

TEST(xylBuffer, GrowthKeepsTheBytesUpToTheCursorAndItsPlace) {
	xylBuffer buffer;
	for (unsigned char i = 0; i < 100; ++i) buffer.write_uint8(i);
	buffer.allocate(5000);
	EXPECT_EQ(buffer.get_length(), 100u);
	for (unsigned char i = 0; i < 100; ++i) EXPECT_EQ(buffer.data[i], i);
}

TEST(xylBuffer, ExpandsByTwoAndFour) {
	xylBuffer buffer;
	buffer.allocate(100);
	EXPECT_EQ(buffer.expand2x(), buffer.data);
	EXPECT_EQ(buffer.capacity, 240u);
	EXPECT_EQ(buffer.expand4x(), buffer.data);
	EXPECT_EQ(buffer.capacity, 1152u);
}

TEST(xylBuffer, AggressiveGrowthDoublesInStepsOfAHundredMiB) {
	xylBuffer buffer;
	buffer.set_allocate_aggresively(true);
	buffer.allocate(100); // the first block is exact nevertheless
	EXPECT_EQ(buffer.capacity, 100u);
	buffer.allocate(1); // below the capacity, and grows
	EXPECT_EQ(buffer.capacity, 240u);
	buffer.allocate(1000); // above the double
	EXPECT_EQ(buffer.capacity, 1200u);
	buffer.relase();
	buffer.allocate(0x6400000 + 0x1000000);
	buffer.allocate(1);
	EXPECT_EQ(buffer.capacity, static_cast<xylUInt64>((2 * 0x6400000 + 0x1000000) * 1.2f));
}

TEST(xylBuffer, ReportsExhaustedMemory) {
	constexpr xylUInt64 too_much = (1ull << 62) + 5;
	xylBuffer empty;
	EXPECT_EQ(empty.allocate(too_much), nullptr);
	EXPECT_EQ(empty.capacity, too_much);
	EXPECT_EQ(told(), failure_of("5"));
	xylBuffer buffer;
	buffer.write_int(1);
	EXPECT_EQ(buffer.allocate(too_much), nullptr);
	EXPECT_EQ(buffer.get_length(), 0u);
	EXPECT_EQ(buffer.capacity, static_cast<xylUInt64>(4611686018427387904.0f * 1.2f));
	EXPECT_EQ(told().size(), 1u);
	xylBuffer largest;
	largest.write_int(1);
	EXPECT_EQ(largest.allocate(~0ull), nullptr); // 1.2 times of it has no 64 bits
	EXPECT_EQ(told(), failure_of("-1"));
}

TEST(xylBuffer, EnsureCapacityGrowsOnlyWhatIsBelow) {
	xylBuffer other;
	other.allocate(50);
	xylBuffer buffer;
	buffer.ensure_capacity(20);
	EXPECT_EQ(buffer.capacity, 20u);
	buffer.ensure_capacity(20);
	EXPECT_EQ(buffer.capacity, 20u);
	buffer.ensure_capacity(other);
	EXPECT_EQ(buffer.capacity, 60u);
	buffer.ensure_capacity(&other);
	EXPECT_EQ(buffer.capacity, 60u);
	other.ensure_capacity(&buffer);
	EXPECT_EQ(other.capacity, 72u);
}

TEST(xylBuffer, EnsureLengthGrowsFromTheUsedLength) {
	xylBuffer buffer;
	buffer.allocate(100);
	buffer.cursor += 90;
	buffer.ensure_length(9);
	EXPECT_EQ(buffer.capacity, 100u);
	buffer.ensure_length(10);
	EXPECT_EQ(buffer.capacity, 120u); // 90 + 10, not above the capacity of 100
	buffer.ensure_length(60);
	EXPECT_EQ(buffer.capacity, 180u);
}

TEST(xylBuffer, EnsureLengthOfAnotherGrowsFromTheCapacity) {
	xylBuffer other;
	other.allocate(1000);
	other.cursor += 10; // what counts is its used length
	xylBuffer buffer;
	buffer.allocate(100);
	buffer.cursor += 90;
	buffer.ensure_length(other);
	EXPECT_EQ(buffer.capacity, 132u);
	buffer.ensure_length(other);
	EXPECT_EQ(buffer.capacity, 132u);
}

// --- Ownership

TEST(xylBuffer, CopyHoldsAllBytesAndHasNoCursor) {
	xylBuffer buffer;
	buffer.allocate(10);
	for (int i = 0; i < 10; ++i) buffer.data[i] = static_cast<xylUInt8>(i);
	buffer.cursor += 3;
	buffer.set_allocate_aggresively(true);
	buffer.set_allocation_group(xylMemory_allocator_base::sound);
	xylBuffer copy(buffer);
	EXPECT_EQ(copy.cursor, nullptr);
	EXPECT_EQ(copy.capacity, 10u);
	EXPECT_NE(copy.data, buffer.data);
	EXPECT_FALSE(copy.uses_external_data);
	EXPECT_TRUE(copy.allocate_aggresively_flag);
	EXPECT_EQ(copy.get_allocation_group(), xylMemory_allocator_base::sound);
	copy.rewind();
	EXPECT_EQ(copy.get_ptr(), copy.data);
	EXPECT_EQ(std::memcmp(copy.data, buffer.data, 10), 0);
}

TEST(xylBuffer, CopyOfAnEmptyOneReports) {
	const xylBuffer buffer;
	const xylBuffer copy(buffer);
	EXPECT_EQ(copy.data, nullptr);
	EXPECT_EQ(told(), failure_of("0"));
}

TEST(xylBuffer, AllocatingWithoutACursorReports) {
	xylBuffer buffer;
	buffer.allocate(10);
	xylBuffer copy(buffer);
	EXPECT_EQ(copy.allocate(5), copy.data) << "the block is there";
	EXPECT_NE(copy.data, nullptr);
	EXPECT_EQ(copy.cursor, nullptr);
	EXPECT_EQ(copy.capacity, 5u);
	EXPECT_EQ(told(), failure_of("5"));
	copy.rewind();
	EXPECT_EQ(copy.allocate(3), copy.data);
	EXPECT_EQ(copy.capacity, 3u);
}

TEST(xylBuffer, MoveTakesTheBlock) {
	xylBuffer buffer;
	buffer.write_int(42);
	buffer.set_allocate_aggresively(true);
	buffer.set_allocation_group(xylMemory_allocator_base::render);
	const xylUInt8* block = buffer.data;
	const xylBuffer moved(std::move(buffer));
	EXPECT_EQ(moved.data, block);
	EXPECT_EQ(moved.get_length(), 4u);
	EXPECT_EQ(moved.capacity, 4u);
	EXPECT_TRUE(moved.allocate_aggresively_flag);
	EXPECT_EQ(moved.get_allocation_group(), xylMemory_allocator_base::render);
	EXPECT_EQ(buffer.data, nullptr); // NOLINT: what a moved buffer holds is stated
	EXPECT_EQ(buffer.cursor, nullptr);
	EXPECT_EQ(buffer.capacity, 0u);
}

TEST(xylBuffer, MovedBlockOfSomeoneElseIsOwned) {
	xylBuffer owner;
	owner.write_int(1);
	xylBuffer view;
	view.use_values_from(owner);
	const xylBuffer moved(std::move(view));
	EXPECT_FALSE(moved.uses_external_data);
	EXPECT_EQ(moved.data, owner.data);
	owner.uses_external_data = true; // so that it is freed once
}

TEST(xylBuffer, RelaseLeavesTheCursor) {
	xylBuffer buffer;
	buffer.relase(); // nothing to do
	buffer.write_int(1);
	const auto before = reinterpret_cast<std::uintptr_t>(buffer.cursor);
	buffer.relase();
	EXPECT_EQ(buffer.data, nullptr);
	EXPECT_EQ(buffer.capacity, 0u);
	EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.cursor), before);
	EXPECT_EQ(buffer.get_length(), 0u);
}

TEST(xylBuffer, RelaseFreesAForeignBlock) {
	xylBuffer owner;
	owner.write_int(1);
	xylBuffer view;
	view.use_values_from(owner);
	view.relase();
	EXPECT_EQ(view.data, nullptr);
	owner.data = nullptr; // its block is gone: the destructor would free it once more
}

TEST(xylBuffer, UsesValuesWithoutOwningThem) {
	xylBuffer owner;
	owner.write_int(7);
	owner.write_int(8);
	owner.set_allocate_aggresively(true);
	owner.set_allocation_group(xylMemory_allocator_base::mission);
	{
		xylBuffer view;
		view.use_values_from(owner);
		EXPECT_EQ(view.data, owner.data);
		EXPECT_EQ(view.cursor, owner.cursor);
		EXPECT_EQ(view.capacity, owner.capacity);
		EXPECT_TRUE(view.uses_external_data);
		EXPECT_TRUE(view.allocate_aggresively_flag);
		EXPECT_EQ(view.get_allocation_group(), xylMemory_allocator_base::default_group);
	}
	owner.rewind();
	EXPECT_EQ(static_cast<int>(owner), 7);
}

TEST(xylBuffer, UsingValuesLosesABlockOfItsOwn) {
	xylBuffer owner;
	owner.write_int(7);
	xylBuffer view;
	view.write_int(8);
	xylUInt8* const lost = view.data;
	view.use_values_from(owner);
	EXPECT_EQ(view.data, owner.data);
	EXPECT_EQ(lost[0], 8) << "not freed";
	xyl_heap_free(lost);
}

TEST(xylBuffer, GrowthFreesAForeignBlock) {
	xylBuffer owner;
	owner.write_int(7);
	xylBuffer view;
	view.use_values_from(owner);
	view.write_int(8);
	EXPECT_NE(view.data, nullptr);
	EXPECT_EQ(written(view), (Bytes{7, 0, 0, 0, 8, 0, 0, 0}));
	owner.data = nullptr;            // freed by the growth
	view.uses_external_data = false; // nobody else has the new block
}

TEST(xylBuffer, CopiesItsDataIntoAnother) {
	xylBuffer buffer;
	buffer.allocate(8);
	for (int i = 0; i < 8; ++i) buffer.data[i] = static_cast<xylUInt8>(i + 1);
	buffer.cursor += 5;
	xylBuffer target;
	target.allocate(100);
	target.cursor += 50;
	const xylUInt8* block = target.data;
	buffer.copy_data(target);
	EXPECT_EQ(target.data, block);
	EXPECT_EQ(target.cursor, target.data);
	EXPECT_EQ(target.capacity, 8u);
	EXPECT_EQ(std::memcmp(target.data, buffer.data, 8), 0);
	xylBuffer().copy_data(target);
	EXPECT_EQ(target.capacity, 0u);
	xylBuffer empty;
	xylBuffer().copy_data(empty);
	EXPECT_EQ(told(), failure_of("0"));
}

// --- Cursor

TEST(xylBuffer, RewindsAndZeroes) {
	xylBuffer buffer;
	buffer.allocate(16);
	std::memset(buffer.data, 0xFF, 16);
	buffer.cursor += 5;
	buffer.allocate(12);
	buffer.rewind_and_zero_memory();
	EXPECT_EQ(buffer.cursor, buffer.data);
	EXPECT_EQ(buffer.data[11], 0);
	EXPECT_EQ(buffer.data[12], 0xFF); // behind the capacity as recorded
	xylBuffer().rewind_and_zero_memory();
}

TEST(xylBuffer, MovesForwardAsAWriteWould) {
	xylBuffer buffer;
	buffer.move_pointer(4);
	EXPECT_EQ(buffer.capacity, 4u);
	EXPECT_EQ(buffer.get_length(), 4u);
	buffer.move_pointer(4);
	EXPECT_EQ(buffer.capacity, 9u);
	buffer.rewind();
	buffer.move_pointer(8);
	EXPECT_EQ(buffer.capacity, 9u);
	EXPECT_EQ(buffer.get_length(), 8u);
}

TEST(xylBuffer, MovingBackReducesTheCapacity) {
	xylBuffer buffer;
	buffer.allocate(100);
	std::memset(buffer.data, 7, 100);
	buffer.cursor += 50;
	const xylUInt8* block = buffer.data;
	buffer.move_pointer(-20);
	EXPECT_EQ(buffer.data, block);
	EXPECT_EQ(buffer.get_length(), 30u);
	EXPECT_EQ(buffer.capacity, 30u);
	buffer.write_int(1);
	EXPECT_EQ(buffer.capacity, 40u); // 34 times 1.2
	EXPECT_EQ(buffer.get_length(), 34u);
	EXPECT_EQ(buffer.data[29], 7);
}

TEST(xylBuffer, MovingBackAggressivelyGrows) {
	xylBuffer buffer;
	buffer.allocate(100);
	buffer.set_allocate_aggresively(true);
	buffer.cursor += 50;
	buffer.move_pointer(-20);
	EXPECT_EQ(buffer.get_length(), 30u);
	EXPECT_EQ(buffer.capacity, 240u);
}

TEST(xylBuffer, ShrinksToExactlyWhatIsAsked) {
	xylBuffer buffer;
	buffer.shrink(10); // nothing to shrink
	EXPECT_EQ(buffer.data, nullptr);
	EXPECT_EQ(buffer.capacity, 0u);
	for (const xylUInt64 used : {0u, 5u, 9u, 10u, 64u, 100u}) {
		SCOPED_TRACE(used);
		buffer.relase();
		buffer.allocate(100);
		buffer.cursor += used;
		const auto before = reinterpret_cast<std::uintptr_t>(buffer.cursor);
		buffer.shrink(10);
		EXPECT_EQ(buffer.capacity, 10u);
		const auto start = reinterpret_cast<std::uintptr_t>(buffer.data);
		const auto cursor = reinterpret_cast<std::uintptr_t>(buffer.cursor);
		EXPECT_EQ(cursor, before - start < 10 ? before : start + 9);
	}
	buffer.shrink(0);
	EXPECT_EQ(buffer.data, nullptr);
	EXPECT_EQ(buffer.cursor, nullptr);
	EXPECT_EQ(buffer.capacity, 0u);
}

TEST(xylBuffer, ConvertsToWhatIsAtTheCursor) {
	xylBuffer buffer;
	buffer.write_uint(0xFFFFFFFE);
	buffer.write_string("x");
	buffer.rewind();
	EXPECT_EQ(static_cast<int>(buffer), -2);
	EXPECT_EQ(static_cast<unsigned int>(buffer), 0xFFFFFFFEu);
	const xylBuffer& constant = buffer;
	const xylUInt8* at = buffer.cursor;
	EXPECT_EQ(static_cast<char*>(buffer), reinterpret_cast<const char*>(at));
	EXPECT_EQ(static_cast<unsigned char*>(buffer), at);
	EXPECT_EQ(static_cast<void*>(buffer), at);
	EXPECT_EQ(static_cast<const char*>(constant), reinterpret_cast<const char*>(at));
	EXPECT_EQ(static_cast<const unsigned char*>(constant), at);
	EXPECT_EQ(static_cast<const void*>(constant), at);
	EXPECT_EQ(constant.get_ptr(), at);
	EXPECT_EQ(constant.get_buffer_from_start(), at);
}

TEST(xylBuffer, ComparesTheTextAtTheCursor) {
	xylBuffer buffer;
	buffer.write_void("abc\0def", 8);
	buffer.rewind();
	EXPECT_TRUE(buffer == "abc");
	EXPECT_FALSE(buffer == "ab");
	EXPECT_TRUE(buffer != "abcd");
	EXPECT_FALSE(buffer != "abc");
	buffer.move_pointer(4);
	EXPECT_TRUE(buffer == "def");
}

// --- Binary values

TEST(xylBuffer, EveryPrimitiveGoesThereAndBack) {
	const xylGuid_type guid{0x01020304, 0x0506, 0x0708, {9, 10, 11, 12, 13, 14, 15, 16}};
	xylBuffer buffer;
	buffer.write_bool(true);
	buffer.write_int8(-128);
	buffer.write_uint8(255);
	buffer.write_uint16(65535);
	buffer.write_int(std::numeric_limits<int>::min());
	buffer.write_uint(0xFFFFFFFF);
	buffer.write_int64(std::numeric_limits<xylInt64>::min());
	buffer.write_uint64(~0ull);
	buffer.write_size_t(12);
	buffer.write_float(std::bit_cast<float>(0x7FC00001));
	buffer.write_double(-0.0);
	buffer.write_guid(guid);
	EXPECT_EQ(buffer.get_length(), 1u + 1 + 1 + 2 + 4 + 4 + 8 + 8 + 8 + 4 + 8 + 16);
	buffer.rewind();
	bool flag = false;
	xylInt8 small = 0;
	xylUInt8 byte = 0;
	xylUInt16 word = 0;
	int number = 0;
	unsigned int positive = 0;
	xylInt64 wide = 0;
	xylUInt64 wide_positive = 0;
	size_t size = 0;
	float single = 0;
	double precise = 1;
	xylGuid_type seen{};
	buffer.read_bool(&flag);
	buffer.read_int8(&small);
	buffer.read_uint8(&byte);
	buffer.read_uint16(&word);
	buffer.read_int(&number);
	buffer.read_uint(&positive);
	buffer.read_int64(&wide);
	buffer.read_uint64(&wide_positive);
	buffer.read_size_t(&size);
	buffer.read_float(&single);
	buffer.read_double(&precise);
	buffer.read_guid(&seen);
	EXPECT_EQ(buffer.get_length(), 65u);
	EXPECT_TRUE(flag);
	EXPECT_EQ(small, -128);
	EXPECT_EQ(byte, 255);
	EXPECT_EQ(word, 65535);
	EXPECT_EQ(number, std::numeric_limits<int>::min());
	EXPECT_EQ(positive, 0xFFFFFFFFu);
	EXPECT_EQ(wide, std::numeric_limits<xylInt64>::min());
	EXPECT_EQ(wide_positive, ~0ull);
	EXPECT_EQ(size, 12u);
	EXPECT_EQ(std::bit_cast<xylUInt32>(single), 0x7FC00001u);
	EXPECT_EQ(std::bit_cast<xylUInt64>(precise), 1ull << 63);
	EXPECT_EQ(seen, guid);
}

TEST(xylBuffer, WritesAndReadsRawBytes) {
	xylBuffer source;
	source.write_void("hello", 5);
	source.allocate(50);
	xylBuffer buffer;
	buffer.write_void("", 0); // makes room for nothing, which an empty buffer reports
	EXPECT_EQ(told(), failure_of("0"));
	buffer.write_void("ab", 2);
	buffer.write_buffer(source); // its five bytes and not its capacity
	EXPECT_EQ(written(buffer), (Bytes{'a', 'b', 'h', 'e', 'l', 'l', 'o'}));
	buffer.write_buffer(buffer);
	EXPECT_EQ(buffer.get_length(), 14u);
	EXPECT_EQ(std::memcmp(buffer.data + 7, "abhello", 7), 0);
	buffer.rewind();
	char text[8] = "";
	buffer.read(text, 7);
	EXPECT_STREQ(text, "abhello");
	EXPECT_EQ(buffer.get_length(), 7u);
}

// Against a plain model: the arithmetic of Growth and the bytes written, over random runs.
TEST(xylBuffer, RandomWritesFollowTheModel) {
	std::mt19937 random(20);
	for (int run = 0; run < 200; ++run) {
		SCOPED_TRACE(run);
		xylBuffer buffer;
		const bool aggressive = run % 4 == 0;
		buffer.set_allocate_aggresively(aggressive);
		Bytes model;
		xylUInt64 capacity = 0;
		for (int step = 0; step < 60; ++step) {
			Bytes bytes(1 + random() % 40);
			for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
			const xylUInt64 need = model.size() + bytes.size();
			if (capacity == 0) {
				capacity = need;
			} else if (need >= capacity) {
				const xylUInt64 size = aggressive ? std::max(need, 2 * capacity) : need;
				capacity = static_cast<xylUInt64>(static_cast<float>(size) * 1.2f);
			}
			buffer.write_void(bytes.data(), bytes.size());
			model.insert(model.end(), bytes.begin(), bytes.end());
			ASSERT_EQ(buffer.capacity, capacity);
		}
		EXPECT_EQ(written(buffer), model);
	}
}

// --- Strings

TEST(xylBuffer, StringsAreLengthAndCharacters) {
	const Bytes expected{3, 0, 0, 0, 'a', 'b', 'c'};
	xylBuffer buffer;
	buffer.write_string("abc");
	EXPECT_EQ(buffer.capacity, 7u); // the room was asked for at once
	EXPECT_EQ(written(buffer), expected);
	buffer.rewind();
	buffer.write_string(xylVarString("abc"));
	EXPECT_EQ(written(buffer), expected);
	buffer.rewind();
	buffer.write_string("abcdef", 3);
	EXPECT_EQ(written(buffer), expected);
	buffer.rewind();
	xylVarString seen("before");
	buffer.read_string(seen);
	EXPECT_TRUE(seen == "abc");
	EXPECT_EQ(buffer.get_length(), 7u);
}

TEST(xylBuffer, StringWithoutStorageIsLengthZero) {
	xylBuffer buffer;
	buffer.write_string(xylVarString());
	buffer.write_string("");
	EXPECT_EQ(written(buffer), Bytes(8));
}

TEST(xylBuffer, ReadingAnEmptyStringKeepsTheOldText) {
	xylBuffer buffer;
	buffer.write_string("");
	buffer.rewind();
	xylVarString seen("before");
	buffer.read_string(seen);
	EXPECT_TRUE(seen == "before");
	EXPECT_EQ(buffer.get_length(), 4u);
}

TEST(xylBuffer, StringOfAGivenLengthAsksForFourBytesLess) {
	xylBuffer buffer;
	buffer.allocate(32); // room for the overrun behind the capacity
	buffer.allocate(10);
	const xylUInt8* block = buffer.data;
	buffer.write_string("123456789", 9);
	EXPECT_EQ(buffer.data, block);
	EXPECT_EQ(buffer.capacity, 10u);
	EXPECT_EQ(buffer.get_length(), 13u);
	EXPECT_EQ(std::memcmp(buffer.data + 4, "123456789", 9), 0);
}

TEST(xylBuffer, FieldsHaveAFixedWidth) {
	xylBuffer buffer;
	buffer.allocate(32);
	buffer.rewind_and_zero_memory();
	std::memset(buffer.data, '#', 32);
	buffer.write_string_advance_cursor(xylVarString("ab"), 8);
	EXPECT_EQ(buffer.get_length(), 8u);
	EXPECT_EQ(std::memcmp(buffer.data, "ab\0#####", 8), 0);
	// kept: a longer one runs on, and what follows overwrites it.
	buffer.write_string_advance_cursor(xylVarString("abcdef"), 4);
	EXPECT_EQ(buffer.get_length(), 12u);
	EXPECT_EQ(std::memcmp(buffer.data + 8, "abcdef\0#", 8), 0);
	buffer.write_string_advance_cursor(xylVarString(), 4);
	EXPECT_EQ(std::memcmp(buffer.data + 8, "abcd\0f\0#", 8), 0);
	xylBuffer small;
	small.write_string_advance_cursor(xylVarString("a"), 4);
	EXPECT_EQ(small.capacity, 4u);
}

} // namespace
