// Random numbers beside the bare step of the generator written out in the loop, and beside the
// standard library's usual engine with its distributions.
//
// The chain of three shifts and exclusive ors is the time: each number waits for the one before.

#include <morvantis/core/xylrandom.h>

#include <benchmark/benchmark.h>

#include <random>

namespace {

constexpr int low = -1000, high = 1000;

struct Bare {
	unsigned int state = 0x41C64E6D;
	unsigned int step() {
		unsigned int s = state ^ (state << 13);
		s ^= s >> 17;
		s ^= s << 5;
		state = s;
		return s - 1;
	}
	unsigned int any() { return step(); }
	int ranged() {
		return static_cast<int>(static_cast<unsigned int>(low) +
		                        step() % static_cast<unsigned int>(high - low + 1));
	}
	float unit() { return static_cast<float>(static_cast<long long>(step())) * 2.3283064e-10f; }
};

struct Ours {
	xylRandom_generator generator;
	unsigned int any() { return generator.random_int(); }
	int ranged() { return generator.random_int_ranged(low, high); }
	float unit() { return generator.random_float(); }
};

// The one that all share, in the library's memory.
struct Shared {
	unsigned int any() { return xylRandom::random_int(); }
	int ranged() { return xylRandom::random_int_ranged(low, high); }
	float unit() { return xylRandom::random_float(); }
};

struct Standard {
	std::mt19937 engine;
	std::uniform_int_distribution<int> range{low, high};
	std::uniform_real_distribution<float> one{0, 1};
	unsigned int any() { return static_cast<unsigned int>(engine()); }
	int ranged() { return range(engine); }
	float unit() { return one(engine); }
};

// Many at a time, as a user fills an array with them; the state goes back to memory only between.
template <typename Source, auto draw> void draw_many(benchmark::State& state) {
	Source source;
	for (auto _ : state) {
		benchmark::DoNotOptimize(source);
		for (int i = 0; i < 1000; ++i) {
			auto value = (source.*draw)();
			benchmark::DoNotOptimize(value);
		}
	}
	state.SetItemsProcessed(state.iterations() * 1000);
}

BENCHMARK((draw_many<Ours, &Ours::any>))->Name("random_int/ours");
BENCHMARK((draw_many<Bare, &Bare::any>))->Name("random_int/bare_step");
BENCHMARK((draw_many<Standard, &Standard::any>))->Name("random_int/mt19937");
BENCHMARK((draw_many<Ours, &Ours::ranged>))->Name("random_int_ranged/ours");
BENCHMARK((draw_many<Bare, &Bare::ranged>))->Name("random_int_ranged/bare_step");
BENCHMARK((draw_many<Standard, &Standard::ranged>))->Name("random_int_ranged/mt19937");
BENCHMARK((draw_many<Ours, &Ours::unit>))->Name("random_float/ours");
BENCHMARK((draw_many<Bare, &Bare::unit>))->Name("random_float/bare_step");
BENCHMARK((draw_many<Standard, &Standard::unit>))->Name("random_float/mt19937");
BENCHMARK((draw_many<Shared, &Shared::any>))->Name("random_shared/ours");
BENCHMARK((draw_many<Standard, &Standard::any>))->Name("random_shared/mt19937");

} // namespace
