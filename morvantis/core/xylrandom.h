// The one random generator that all parts of a program share.
#pragma once

#include <morvantis/core/xylrandom_generator.h>

// The operations of xylRandom_generator on one global instance. Never instantiated.
//
// Threads: one at a time, as for any generator.
class MORVANTIS_API xylRandom {
public:
	static float random_float() { return global_random_gen.random_float(); }
	static unsigned int random_int() { return global_random_gen.random_int(); }
	static unsigned int random_int(int n) { return global_random_gen.random_int(n); }
	static int random_int_ranged(int low, int high) {
		return global_random_gen.random_int_ranged(low, high);
	}
	static float random_float_ranged(float low, float high) {
		return global_random_gen.random_float_ranged(low, high);
	}
	static void set_seed(unsigned int s) { global_random_gen.set_seed(s); }
	static void set_random_seed() { global_random_gen.set_random_seed(); }

	static xylRandom_generator global_random_gen;

private:
	xylRandom() = default;
};
