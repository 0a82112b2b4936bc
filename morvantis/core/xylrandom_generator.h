// A 32-bit random generator in one word, small enough for any object that needs its own sequence.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API

// Xorshift with the shifts 13, 17, 5 (G. Marsaglia, "Xorshift RNGs", 2003). The state runs through
// every value from 1 to 2^32 - 1, and each result is the state minus 1. It repeats for equal seeds
// on every system and is no source of secrets.
//
// Every operation that draws advances the state exactly once, whatever its range. None allocates.
// Threads: a generator belongs to one thread at a time; two that share one may lose steps.
class MORVANTIS_API xylRandom_generator {
public:
	static const unsigned int min_possible_value_xorshift_seed = 1;
	static const unsigned int max_possible_value_xorshift_seed = 0xFFFFFFFF;
	static const unsigned int min_possible_random_value = 0;
	static const unsigned int max_possible_random_value = 0xFFFFFFFE;

	// Every generator starts with the same sequence.
	constexpr xylRandom_generator() = default;
	constexpr xylRandom_generator(const xylRandom_generator&) = default;
	constexpr xylRandom_generator(xylRandom_generator&&) = default;
	constexpr xylRandom_generator& operator=(const xylRandom_generator&) = default;
	constexpr xylRandom_generator& operator=(xylRandom_generator&&) = default;

	// Starts the sequence that belongs to `s`. One value is degenerate: 0x41C64E6D makes the state
	// 0, from which every result is 0xFFFFFFFF.
	constexpr void set_seed(unsigned int s) { seed = s ^ seed_mask; }

	// Seeds from the millisecond clock, or with a fixed value when the host runs in deterministic
	// mode. Needs a library that was initialised.
	void set_random_seed();

	// The next value, 0 to 0xFFFFFFFE.
	constexpr unsigned int random_int() { return next(); }
	// The next value modulo `n`; `n` counts as unsigned and must not be 0.
	constexpr unsigned int random_int(int n) { return next() % static_cast<unsigned int>(n); }
	// A value from `low` to `high`, both included. The range must not hold all 2^32 values.
	constexpr int random_int_ranged(int low, int high) {
		const unsigned int first = static_cast<unsigned int>(low);
		const unsigned int count = static_cast<unsigned int>(high) - first + 1;
		return static_cast<int>(first + next() % count);
	}
	// From 0 to 1, both included: values near 2^32 round up to it.
	constexpr float random_float() {
		return static_cast<float>(static_cast<xylInt64>(next())) * 2.3283064e-10f; // 2^-32
	}
	// From `low` to `high`; rounding may reach both ends.
	constexpr float random_float_ranged(float low, float high) {
		return random_float() * (high - low) + low;
	}

	// Does nothing; kept: hosts call it.
	void set_current_thread_as_owner() {}

	// The state of a fresh generator, and what seeds are combined with.
	static constexpr unsigned int seed_mask = 0x41C64E6D;

	unsigned int seed = seed_mask; // the state; 0 is a dead end

private:
	constexpr unsigned int next() {
		unsigned int s = seed ^ (seed << 13);
		s ^= s >> 17;
		s ^= s << 5;
		seed = s;
		return s - 1;
	}
};

static_assert(sizeof(xylRandom_generator) == 4);
