// The heap door beside what stands behind it, and beside the C runtime's heap.

#include <morvantis/memory/xylheap.h>

#include <benchmark/benchmark.h>
#include <mimalloc.h>

#include <cstdlib>
#include <random>
#include <vector>

namespace {

struct Heap_door {
	static void* allocate(size_t size) { return xyl_heap_allocate(size); }
	static void free(void* memory) { xyl_heap_free(memory); }
};

// Linked into this program: its calls are direct, and its thread variables at fixed places.
struct Mimalloc {
	static void* allocate(size_t size) { return mi_malloc(size); }
	static void free(void* memory) { mi_free(memory); }
};

struct C_runtime {
	static void* allocate(size_t size) { return std::malloc(size); }
	static void free(void* memory) { std::free(memory); }
};

// Sixteen blocks of one size, taken, written to and given back: the fast path and nothing else.
// What the door adds is a jump and a comparison, beside the host's jump over the library's
// boundary.
template <typename Heap> void one_size(benchmark::State& state) {
	const auto size = static_cast<size_t>(state.range(0));
	void* blocks[16];
	for (auto _ : state) {
		for (void*& block : blocks) {
			block = Heap::allocate(size);
			*static_cast<char*>(block) = 1;
			benchmark::DoNotOptimize(block);
		}
		for (void* block : blocks) Heap::free(block);
	}
	state.SetItemsProcessed(state.iterations() * 16);
}
BENCHMARK(one_size<Heap_door>)->Name("heap_one_size/ours")->RangeMultiplier(4)->Range(16, 4096);
BENCHMARK(one_size<Mimalloc>)->Name("heap_one_size/mimalloc")->RangeMultiplier(4)->Range(16, 4096);

// A thousand living blocks of 1 to 4,096 bytes, small ones more often; each step replaces one.
template <typename Heap> void mixed_sizes(benchmark::State& state) {
	constexpr size_t steps = 4096, living = 1000;
	std::mt19937 random(static_cast<unsigned>(1 + state.thread_index()));
	std::vector<size_t> sizes(steps), places(steps);
	for (size_t& size : sizes) size = 1 + random() % (size_t{16} << random() % 9);
	for (size_t& place : places) place = random() % living;
	std::vector<void*> blocks(living);
	for (void*& block : blocks) block = Heap::allocate(sizes[random() % steps]);
	size_t step = 0;
	for (auto _ : state) {
		void*& block = blocks[places[step]];
		Heap::free(block);
		block = Heap::allocate(sizes[step]);
		*static_cast<char*>(block) = 1;
		benchmark::DoNotOptimize(block);
		step = (step + 1) % steps;
	}
	for (void* block : blocks) Heap::free(block);
	state.SetItemsProcessed(state.iterations());
}
BENCHMARK(mixed_sizes<Heap_door>)->Name("heap_mixed_sizes/ours")->ThreadRange(1, 2);
BENCHMARK(mixed_sizes<Mimalloc>)->Name("heap_mixed_sizes/mimalloc")->ThreadRange(1, 2);
BENCHMARK(mixed_sizes<C_runtime>)->Name("heap_mixed_sizes/c_runtime")->ThreadRange(1, 2);

} // namespace
