#include <morvantis/memory/xylmemory_allocator_globals.h>
#include <morvantis/memory/xylstatic_hashtable.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <thread>
#include <vector>

namespace {

constexpr size_t small_size = 64;
using Small_table = xylStatic_hashtable<xylUInt64, xylUInt64, small_size>;

// The start index, written down a second time.
size_t start_of(xylUInt64 key, size_t size) {
	xylUInt64 h = key;
	h = (h ^ (h >> 33)) * 0xff51afd7ed558ccdull;
	h = (h ^ (h >> 33)) * 0xc4ceb9fe1a85ec53ull;
	return static_cast<size_t>((h ^ (h >> 33)) & 0xffffffffull) % size;
}

// The first `count` keys whose search starts at `index`.
std::vector<xylUInt64> keys_from(size_t index, size_t count, size_t size = small_size) {
	std::vector<xylUInt64> keys;
	for (xylUInt64 key = 1; keys.size() < count; ++key) {
		if (start_of(key, size) == index) keys.push_back(key);
	}
	return keys;
}

template <typename Table> size_t count_keys(const Table& table) {
	size_t count = 0;
	for (const auto& entry : table.entries_) count += entry.key.load() != 0;
	return count;
}

// The table's rules, straight down: first to the key or an empty entry, or over all entries.
struct Model {
	explicit Model(size_t size) : keys(size), values(size) {}
	void insert(xylUInt64 key, xylUInt64 value) {
		size_t index = start_of(key, keys.size());
		while (keys[index] != 0 && keys[index] != key) index = (index + 1) % keys.size();
		keys[index] = key;
		values[index] = value;
	}
	xylUInt64 remove(xylUInt64 key) {
		const size_t start = start_of(key, keys.size());
		for (size_t probe = 0; probe < keys.size(); ++probe) {
			const size_t index = (start + probe) % keys.size();
			if (keys[index] != key) continue;
			keys[index] = 0;
			return values[index];
		}
		return 0;
	}
	std::vector<xylUInt64> keys, values;
};

} // namespace

TEST(xylStatic_hashtable, EntryIsTwoWords) {
	EXPECT_EQ(sizeof(Small_table), small_size * 16);
	EXPECT_EQ(sizeof(Small_table::Entry), 16u);
}

TEST(xylStatic_hashtable, NewTableIsEmptyAndAllZeroBytes) {
	auto table = std::make_unique<Small_table>();
	const std::vector<unsigned char> zeros(sizeof(Small_table));
	EXPECT_EQ(std::memcmp(table.get(), zeros.data(), zeros.size()), 0);
	EXPECT_EQ(table->remove(1), 0u);
}

TEST(xylStatic_hashtable, HashIsTheMurmurFinaliser) {
	// Known results of the finaliser: fmix64 of 1, 2 and all ones; the low 32 bits are the hash.
	struct Case {
		xylUInt64 key;
		xylUInt64 hash;
	};
	const Case cases[] = {
		{1, 0xb456bcfc34c2cb2cull},
		{2, 0x3abf2a20650683e7ull},
		{0xffffffffffffffffull, 0x64b5720b4b825f21ull},
	};
	auto table = std::make_unique<xylStatic_hashtable<xylUInt64, xylUInt64, 65536>>();
	for (const Case& c : cases) {
		SCOPED_TRACE(c.key);
		table->insert(c.key, 7);
		EXPECT_EQ(table->entries_[c.hash & 0xffff].key.load(), c.key);
		EXPECT_EQ(table->entries_[c.hash & 0xffff].value, 7u);
	}
}

TEST(xylStatic_hashtable, PointersAreKeys) {
	xylStatic_hashtable<void*, xylUInt64, small_size> table;
	int a = 0, b = 0;
	table.insert(&a, 10);
	table.insert(&b, 11);
	EXPECT_EQ(table.remove(&b), 11u);
	EXPECT_EQ(table.remove(&a), 10u);
	EXPECT_EQ(table.remove(&a), 0u);
	const auto address = reinterpret_cast<xylUInt64>(&a);
	table.insert(&a, 12);
	EXPECT_EQ(table.entries_[start_of(address, small_size)].key.load(), &a);
}

TEST(xylStatic_hashtable, CollidingKeysTakeTheNextEntries) {
	Small_table table;
	const auto keys = keys_from(5, 3);
	for (size_t i = 0; i < 3; ++i) table.insert(keys[i], 100 + i);
	for (size_t i = 0; i < 3; ++i) {
		EXPECT_EQ(table.entries_[5 + i].key.load(), keys[i]);
		EXPECT_EQ(table.entries_[5 + i].value, 100 + i);
	}
}

TEST(xylStatic_hashtable, ProbingWrapsAround) {
	Small_table table;
	const auto keys = keys_from(small_size - 1, 3);
	for (size_t i = 0; i < 3; ++i) table.insert(keys[i], 100 + i);
	EXPECT_EQ(table.entries_[small_size - 1].key.load(), keys[0]);
	EXPECT_EQ(table.entries_[0].key.load(), keys[1]);
	EXPECT_EQ(table.entries_[1].key.load(), keys[2]);
	for (size_t i = 0; i < 3; ++i) EXPECT_EQ(table.remove(keys[i]), 100 + i);
}

TEST(xylStatic_hashtable, InsertOfAPresentKeyOverwritesWithoutASecondEntry) {
	Small_table table;
	const auto keys = keys_from(9, 2);
	table.insert(keys[0], 1);
	table.insert(keys[1], 2);
	table.insert(keys[1], 3);
	EXPECT_EQ(count_keys(table), 2u);
	EXPECT_EQ(table.remove(keys[1]), 3u);
	EXPECT_EQ(table.remove(keys[1]), 0u);
	EXPECT_EQ(count_keys(table), 1u);
}

TEST(xylStatic_hashtable, RemoveLeavesAHoleAndKeysBehindItAreFound) {
	Small_table table;
	const auto keys = keys_from(20, 3);
	for (size_t i = 0; i < 3; ++i) table.insert(keys[i], 100 + i);
	EXPECT_EQ(table.remove(keys[1]), 101u);
	EXPECT_EQ(table.entries_[21].key.load(), 0u);
	EXPECT_EQ(table.entries_[22].key.load(), keys[2]) << "nothing moves up";
	EXPECT_EQ(table.remove(keys[2]), 102u);
}

TEST(xylStatic_hashtable, InsertOfAKeyBehindAHoleStoresItTwice) {
	Small_table table;
	const auto keys = keys_from(30, 2);
	table.insert(keys[0], 1);
	table.insert(keys[1], 2);
	table.remove(keys[0]);
	table.insert(keys[1], 3); // kept: claims the hole at 30
	EXPECT_EQ(table.entries_[30].key.load(), keys[1]);
	EXPECT_EQ(table.entries_[31].key.load(), keys[1]);
	EXPECT_EQ(table.remove(keys[1]), 3u) << "the nearer and newer one first";
	EXPECT_EQ(table.remove(keys[1]), 2u) << "then the older one";
	EXPECT_EQ(table.remove(keys[1]), 0u);
}

TEST(xylStatic_hashtable, AFullTableCanBeEmptiedAndOverwritten) {
	Small_table table;
	for (xylUInt64 key = 1; key <= small_size; ++key) table.insert(key, key * 2);
	EXPECT_EQ(count_keys(table), small_size);
	for (xylUInt64 key = 1; key <= small_size; ++key) table.insert(key, key * 3);
	for (xylUInt64 key = 1; key <= small_size; ++key) EXPECT_EQ(table.remove(key), key * 3);
	EXPECT_EQ(count_keys(table), 0u);
}

// Wherever the search starts, the one key is found at each place: nothing but a look at every entry
// finds it, past holes on both sides.
TEST(xylStatic_hashtable, RemoveExaminesEveryEntry) {
	Small_table table;
	for (size_t start = 0; start < small_size; ++start) {
		const xylUInt64 key = keys_from(start, 1)[0];
		for (size_t place = 0; place < small_size; ++place) {
			SCOPED_TRACE(testing::Message() << "from " << start << " at " << place);
			table.entries_[place].key = key;
			table.entries_[place].value = place + 1;
			EXPECT_EQ(table.remove(key), place + 1);
			EXPECT_EQ(table.entries_[place].key.load(), 0u);
		}
		EXPECT_EQ(table.remove(key), 0u);
	}
}

// The scan compares low halves first.
TEST(xylStatic_hashtable, KeysThatDifferInOneHalfAreDifferent) {
	Small_table table;
	const xylUInt64 key = 0x0000000500000007ull;
	for (size_t i = 0; i < small_size; ++i) {
		table.entries_[i].key = i % 2 ? 0x0000000600000007ull : 0x0000000500000008ull;
	}
	EXPECT_EQ(table.remove(key), 0u);
	const size_t place = (start_of(key, small_size) + small_size - 1) % small_size;
	table.entries_[place].key = key;
	table.entries_[place].value = 44;
	EXPECT_EQ(table.remove(key), 44u);
}

TEST(xylStatic_hashtable, SmallTablesWork) {
	xylStatic_hashtable<xylUInt64, xylUInt64, 1> one;
	one.insert(77, 5);
	EXPECT_EQ(one.remove(78), 0u);
	EXPECT_EQ(one.remove(77), 5u);
	xylStatic_hashtable<xylUInt64, xylUInt64, 8> eight;
	for (xylUInt64 key = 1; key <= 8; ++key) eight.insert(key, key);
	EXPECT_EQ(eight.remove(9), 0u);
	for (xylUInt64 key = 8; key >= 1; --key) EXPECT_EQ(eight.remove(key), key);
}

TEST(xylStatic_hashtable, FollowsItsRulesInARandomWalk) {
	constexpr size_t size = 256;
	xylStatic_hashtable<xylUInt64, xylUInt64, size> table;
	Model model(size);
	std::mt19937_64 random(2026);
	for (int step = 0; step < 20000; ++step) {
		const xylUInt64 key = 1 + random() % 300;
		// A full table never returns from insert.
		if (random() % 2 && count_keys(table) < size - 1) {
			const xylUInt64 value = random();
			table.insert(key, value);
			model.insert(key, value);
		} else {
			ASSERT_EQ(table.remove(key), model.remove(key)) << "step " << step;
		}
	}
	for (size_t i = 0; i < size; ++i) ASSERT_EQ(table.entries_[i].key.load(), model.keys[i]);
}

// Each thread has keys of its own, which collide with those of the others.
TEST(xylStatic_hashtable, DifferentKeysOnSeveralThreads) {
	constexpr xylUInt64 threads = 4, keys = 200;
	auto table = std::make_unique<xylStatic_hashtable<xylUInt64, xylUInt64, 1024>>();
	std::vector<int> wrong(threads);
	std::vector<std::thread> workers;
	for (xylUInt64 t = 0; t < threads; ++t) {
		workers.emplace_back([&, t] {
			for (xylUInt64 round = 1; round <= 20; ++round) {
				for (xylUInt64 k = 0; k < keys; ++k) table->insert(1 + k * threads + t, round + k);
				for (xylUInt64 k = 0; k < keys; ++k) {
					wrong[t] += table->remove(1 + k * threads + t) != round + k;
				}
			}
			wrong[t] += table->remove(100000 + t) != 0;
		});
	}
	for (std::thread& worker : workers) worker.join();
	EXPECT_EQ(wrong, std::vector<int>(threads));
	EXPECT_EQ(count_keys(*table), 0u);
}

TEST(xylMemory_allocator_globals, AddressTableIsEmptyAfterLoad) {
	auto& table = xylMemory_allocator_globals::array_allocation_data_;
	static_assert(sizeof(table.entries_) == size_t{16} << 20);
	for (const auto& entry : table.entries_) {
		ASSERT_EQ(entry.key.load(std::memory_order_relaxed), nullptr);
		ASSERT_EQ(entry.value, 0u);
	}
}

TEST(xylMemory_allocator_globals, AddressTableIsTheHostsToUseAndFinalizeLeavesIt) {
	auto& table = xylMemory_allocator_globals::array_allocation_data_;
	int thing = 0;
	table.insert(&thing, 9);
	xylMemory_allocator_globals::finalize_global_allocators();
	EXPECT_EQ(table.remove(&thing), 9u);
	EXPECT_EQ(table.remove(&thing), 0u);
}
