// Taking and releasing a reference, beside a bare atomic count that goes up and down.
//
// The two atomic operations are the time; the calls through the object's table hide behind them.
#include <morvantis/core/xylreference_counted_object.h>

#include <atomic>

#include <benchmark/benchmark.h>

namespace {

// As a host has it: a class of its own, held by a pointer to the root.
class Shared_object : public xylReference_counted_object {};

void reference_ours(benchmark::State& state) {
	Shared_object object;
	object.add_reference();
	xylReference_counted_object* pointer = &object;
	for (auto _ : state) {
		benchmark::DoNotOptimize(pointer); // or the compiler knows the class
		pointer->add_reference();
		benchmark::DoNotOptimize(pointer->release_reference());
	}
}

void reference_bare(benchmark::State& state) {
	std::atomic<unsigned int> count = 1;
	std::atomic<unsigned int>* pointer = &count;
	for (auto _ : state) {
		benchmark::DoNotOptimize(pointer);
		pointer->fetch_add(1);
		benchmark::DoNotOptimize(pointer->fetch_sub(1) - 1);
	}
}

BENCHMARK(reference_ours)->Name("reference_pair/ours");
BENCHMARK(reference_bare)->Name("reference_pair/bare_atomic");

} // namespace
