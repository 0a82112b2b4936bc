// The lock-free table beside a locked map of the standard library and the concurrent one of oneTBB.

#include <morvantis/memory/xylstatic_hashtable.h>

#include <benchmark/benchmark.h>
#include <tbb/concurrent_hash_map.h>

#include <memory>
#include <mutex>
#include <random>
#include <unordered_map>
#include <vector>

namespace {

constexpr size_t table_size = 1048576;

struct Ours {
	using Table = xylStatic_hashtable<void*, xylUInt64, table_size>;
	void insert(void* key, xylUInt64 value) { table->insert(key, value); }
	xylUInt64 remove(void* key) { return table->remove(key); }
	std::unique_ptr<Table> table = std::make_unique<Table>();
};

struct Locked_map {
	Locked_map() { map.reserve(table_size); }
	void insert(void* key, xylUInt64 value) {
		const std::lock_guard lock(mutex);
		map[key] = value;
	}
	xylUInt64 remove(void* key) {
		const std::lock_guard lock(mutex);
		const auto found = map.find(key);
		if (found == map.end()) return 0;
		const xylUInt64 value = found->second;
		map.erase(found);
		return value;
	}
	std::mutex mutex;
	std::unordered_map<void*, xylUInt64> map;
};

struct One_tbb {
	using Map = tbb::concurrent_hash_map<void*, xylUInt64>;
	One_tbb() : map(table_size) {}
	void insert(void* key, xylUInt64 value) {
		Map::accessor entry;
		map.insert(entry, key);
		entry->second = value;
	}
	xylUInt64 remove(void* key) {
		Map::accessor entry;
		if (!map.find(entry, key)) return 0;
		const xylUInt64 value = entry->second;
		map.erase(entry);
		return value;
	}
	Map map;
};

// Keys as blocks of a heap have them.
void* key_of(xylUInt64 number) { return reinterpret_cast<void*>(number * 16); }

// A table filled to `percent` of ours, and the numbers of its keys; kept between repetitions.
template <typename Table> struct Filled {
	explicit Filled(size_t percent) : keys(table_size * percent / 100) {
		for (xylUInt64& key : keys) {
			key = random() >> 8;
			table.insert(key_of(key), key);
		}
	}
	std::mt19937_64 random{2026};
	std::vector<xylUInt64> keys;
	Table table;
};

template <typename Table> Filled<Table>& filled(size_t percent) {
	static std::unordered_map<size_t, std::unique_ptr<Filled<Table>>> all;
	auto& one = all[percent];
	if (!one) one = std::make_unique<Filled<Table>>(percent);
	return *one;
}

// One present key out, one new key in: the load stays. Each touches memory at random, and that is
// the greater part of the time; the peers touch more of it, and allocate.
template <typename Table> void replace(benchmark::State& state) {
	Filled<Table>& full = filled<Table>(static_cast<size_t>(state.range(0)));
	size_t place = 0;
	for (auto _ : state) {
		xylUInt64& key = full.keys[place];
		benchmark::DoNotOptimize(full.table.remove(key_of(key)));
		key = full.random() >> 8;
		full.table.insert(key_of(key), key);
		if (++place == full.keys.size()) place = 0;
	}
	state.SetItemsProcessed(state.iterations());
}
BENCHMARK(replace<Ours>)->Name("hashtable_replace/ours")->Arg(10)->Arg(50)->Arg(80);
BENCHMARK(replace<Locked_map>)->Name("hashtable_replace/locked_map")->Arg(10)->Arg(50)->Arg(80);
BENCHMARK(replace<One_tbb>)->Name("hashtable_replace/onetbb")->Arg(10)->Arg(50)->Arg(80);

// A key that isn't there: every entry is looked at.
void absent_ours(benchmark::State& state) {
	Ours& table = filled<Ours>(50).table;
	for (auto _ : state) benchmark::DoNotOptimize(table.remove(key_of(2)));
}
BENCHMARK(absent_ours)->Name("hashtable_remove_absent/ours");

using Entries = decltype(Ours::Table::entries_);

// One comparison and branch for each entry, from index to index as the rules are told: each index
// waits for the one before it.
size_t index_by_index(const Entries& entries, void* key, size_t start) {
	size_t index = start;
	for (size_t probe = 0; probe < table_size; ++probe, index = (index + 1) & (table_size - 1)) {
		if (entries[index].key.load(std::memory_order_relaxed) == key) return index;
	}
	return table_size;
}

// The same with each index made from the count of probes, so that nothing waits.
size_t by_count(const Entries& entries, void* key, size_t start) {
	for (size_t probe = 0; probe < table_size; ++probe) {
		const size_t index = (start + probe) & (table_size - 1);
		if (entries[index].key.load(std::memory_order_relaxed) == key) return index;
	}
	return table_size;
}

template <size_t (*Scan)(const Entries&, void*, size_t)>
void absent_scalar(benchmark::State& state) {
	const Entries& entries = filled<Ours>(50).table.table->entries_;
	for (auto _ : state) {
		size_t start = table_size / 2;
		benchmark::DoNotOptimize(start);
		benchmark::DoNotOptimize(Scan(entries, key_of(2), start));
	}
}
BENCHMARK(absent_scalar<index_by_index>)->Name("hashtable_remove_absent/scalar_loop");
BENCHMARK(absent_scalar<by_count>)->Name("hashtable_remove_absent/scalar_loop_by_count");

} // namespace
