// Clocks and timers beside plain arrays that a program would keep by itself.

#include <morvantis/core/xyltimer.h>

#include <benchmark/benchmark.h>

namespace {

struct Plain_clocks {
	float delta[2];
	long long ticks[2];
	long long total[2];
};
Plain_clocks plain_clocks;

// A number that the compiler doesn't know.
int clock_number() {
	int number = xylTimer::tactical_timer_no__;
	benchmark::DoNotOptimize(number);
	return number;
}

void tick_ours(benchmark::State& state) {
	for (auto _ : state) {
		xylTimer::tick(clock_number(), 0.02f);
		benchmark::ClobberMemory();
	}
}
void tick_plain(benchmark::State& state) {
	for (auto _ : state) {
		const int number = clock_number();
		const auto ticks = static_cast<long long>(0.02f * 100000.0f);
		plain_clocks.delta[number] = 0.02f;
		plain_clocks.total[number] += ticks;
		plain_clocks.ticks[number] = ticks;
		benchmark::ClobberMemory();
	}
}

void elapsed_ours(benchmark::State& state) {
	const xylTimer timer(clock_number());
	for (auto _ : state) {
		benchmark::ClobberMemory();
		benchmark::DoNotOptimize(timer.elapsed_time_units());
	}
}
void elapsed_plain(benchmark::State& state) {
	const int number = clock_number();
	const long long start = plain_clocks.total[number];
	for (auto _ : state) {
		benchmark::ClobberMemory();
		benchmark::DoNotOptimize(plain_clocks.total[number] - start);
	}
}

void total_ours(benchmark::State& state) {
	for (auto _ : state) {
		benchmark::ClobberMemory();
		benchmark::DoNotOptimize(xylTimer::get_global_time_units(clock_number()));
	}
}
void total_plain(benchmark::State& state) {
	for (auto _ : state) {
		benchmark::ClobberMemory();
		benchmark::DoNotOptimize(plain_clocks.total[clock_number()]);
	}
}

BENCHMARK(tick_ours)->Name("timer_tick/ours");
BENCHMARK(tick_plain)->Name("timer_tick/plain_array");
BENCHMARK(elapsed_ours)->Name("timer_elapsed/ours");
BENCHMARK(elapsed_plain)->Name("timer_elapsed/plain_array");
BENCHMARK(total_ours)->Name("timer_total/ours");
BENCHMARK(total_plain)->Name("timer_total/plain_array");

} // namespace
