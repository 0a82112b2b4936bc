// The link-list allocator: what an allocation costs by the number of free ranges that it passes by,
// what their history does to that, and a release beside the append that it comes down to.

#include <morvantis/memory/xylheap.h>
#include <morvantis/memory/xylheap_allocator_link_list.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <new>
#include <random>
#include <utility>
#include <vector>

namespace {

using Allocator = xylHeap_allocator_link_list;
constexpr auto group = xylMemory_allocator_base::default_group;
constexpr size_t hole = 16, block = 32, long_range = 1 << 20; // bytes

// Gives addresses with nothing behind them: the allocator writes nothing there.
class Address_parent : public xylMemory_allocator_base {
public:
	Address_parent() { default_alignment_ = 16; }
	void* allocate_aligned_mem(size_t size, size_t, Allocation_group) override {
		return reinterpret_cast<void*>(std::exchange(next_, next_ + size));
	}
	void* reallocate_aligned_mem(void*, size_t, size_t, Allocation_group) override {
		return nullptr;
	}
	bool deallocate_mem(void*, size_t) override { return false; }
	size_t get_total_allocation_size() const override { return 0; }
	size_t page_size() const override { return 4096; }

private:
	std::uintptr_t next_ = std::uintptr_t{1} << 44;
};

// In which order the free ranges came to be. Each later one is below the ranges that are there, or
// anywhere between them, in cycles of the host.
enum Order { falling, scattered };

std::vector<size_t> places(size_t count, Order order) {
	std::vector<size_t> all(count);
	for (size_t i = 0; i < count; ++i) all[i] = count - 1 - i;
	if (order == scattered) std::shuffle(all.begin(), all.end(), std::mt19937(2026));
	return all;
}

// `count` free ranges of 16 bytes, every other one of as many in use, and a long one at the end.
class Ours {
public:
	Ours(size_t count, Order order)
		: allocator_(*new(xyl_heap_allocate(sizeof(Allocator))) Allocator(&parent_)) {
		std::vector<void*> holes;
		for (size_t i = 0; i < count; ++i) {
			holes.push_back(allocator_.allocate_mem(hole, group));
			allocator_.allocate_mem(hole, group);
		}
		size_t noted = 0;
		for (const size_t place : places(count, order)) {
			allocator_.deallocate_mem(holes[place], hole);
			if (++noted % 500 == 0) allocator_.clear_ptrs();
		}
		allocator_.clear_ptrs();
		for (last_ = allocator_.free_list_; last_->next;) last_ = last_->next;
	}
	~Ours() {
		allocator_.Allocator::~Allocator();
		xyl_heap_free(&allocator_);
	}
	Ours(const Ours&) = delete;

	// Takes a block that no hole holds, and puts it back by hand, which passes no range.
	void* take_and_restore() {
		void* const memory = allocator_.allocate_mem(block, group);
		allocator_.allocation_sizes_.remove(memory);
		last_->address = memory;
		last_->size += block;
		return memory;
	}

private:
	Address_parent parent_;
	Allocator& allocator_;
	Allocator::List_record* last_;
};

// The walk at its barest: records of the same shape, one behind the other in memory.
class Bare_list {
public:
	Bare_list(size_t count, Order) : records_(count + 1) {
		for (size_t i = 0; i < count; ++i) records_[i] = {nullptr, hole, &records_[i + 1], nullptr};
		records_[count] = {nullptr, long_range, nullptr, nullptr};
	}
	void* take_and_restore() {
		Allocator::List_record* record = records_.data();
		while (record->size < block) record = record->next;
		return record;
	}

private:
	std::vector<Allocator::List_record> records_;
};

// A first fit over the standard library's list, whose nodes lie where they came to be.
class Std_list {
public:
	struct Range {
		size_t address, size;
	};
	Std_list(size_t count, Order order) {
		std::vector<std::list<Range>> nodes(count);
		for (const size_t place : places(count, order)) nodes[place].push_back({place, hole});
		for (auto& node : nodes) ranges_.splice(ranges_.end(), node);
		ranges_.push_back({count, long_range});
	}
	void* take_and_restore() {
		return &*std::find_if(ranges_.begin(), ranges_.end(),
		                      [](const Range& range) { return range.size >= block; });
	}

private:
	std::list<Range> ranges_;
};

// Kept between repetitions: some take long to make.
template <typename T> T& made(size_t count, Order order) {
	static std::map<std::pair<size_t, Order>, std::unique_ptr<T>> all;
	auto& one = all[{count, order}];
	if (!one) one = std::make_unique<T>(count, order);
	return *one;
}

template <typename T, Order order = falling> void allocate(benchmark::State& state) {
	T& ranges = made<T>(static_cast<size_t>(state.range(0)), order);
	for (auto _ : state) benchmark::DoNotOptimize(ranges.take_and_restore());
	// The inverse of the rate is the time for one range; the goal is 1.2 ns up to 1,000 of them.
	state.SetItemsProcessed(state.iterations() * state.range(0));
}

#define COUNTS RangeMultiplier(10)->Range(1, 100000)
BENCHMARK(allocate<Ours>)->Name("link_list_allocate/ours")->COUNTS;
BENCHMARK(allocate<Bare_list>)->Name("link_list_allocate/bare_list")->COUNTS;
BENCHMARK(allocate<Std_list>)->Name("link_list_allocate/std_list")->COUNTS;

// The same ranges, released in any order: records have been copied into that of the list.
#define SCATTERED Arg(1000)->Arg(10000)
BENCHMARK(allocate<Ours, scattered>)->Name("link_list_allocate_scattered/ours")->SCATTERED;
BENCHMARK(allocate<Ours>)->Name("link_list_allocate_scattered/in_order")->SCATTERED;
BENCHMARK(allocate<Std_list, scattered>)->Name("link_list_allocate_scattered/std_list")->SCATTERED;

constexpr size_t releases = 1000; // a cycle's

void release_ours(benchmark::State& state) {
	Address_parent parent;
	auto& allocator = *new (xyl_heap_allocate(sizeof(Allocator))) Allocator(&parent);
	xylMemory_allocator_base* base = &allocator;
	benchmark::DoNotOptimize(base); // as a host calls it
	for (auto _ : state) {
		for (size_t i = 1; i <= releases; ++i) {
			base->deallocate_mem(reinterpret_cast<void*>(i * 16), 16);
		}
		allocator.deferred_frees_[0].clear();
	}
	allocator.Allocator::~Allocator();
	xyl_heap_free(&allocator);
}
BENCHMARK(release_ours)->Name("link_list_release/ours");

void release_vector(benchmark::State& state) {
	std::vector<void*> vector;
	std::vector<void*>* noted = &vector;
	benchmark::DoNotOptimize(noted); // it lives in memory, as ours does
	for (auto _ : state) {
		for (size_t i = 1; i <= releases; ++i) {
			noted->push_back(reinterpret_cast<void*>(i * 16));
			benchmark::ClobberMemory();
		}
		noted->clear();
	}
}
BENCHMARK(release_vector)->Name("link_list_release/vector");

} // namespace
