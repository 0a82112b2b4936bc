#include <morvantis/core/xylrandom_generator.h>

#include <morvantis/core/xylrandom.h>
#include <morvantis/core/zublibrary.h>
#include <morvantis/platform/system/clock.h>

namespace {

// What deterministic runs are seeded with.
constexpr unsigned int deterministic_seed = 45153;

} // namespace

const unsigned int xylRandom_generator::min_possible_value_xorshift_seed;
const unsigned int xylRandom_generator::max_possible_value_xorshift_seed;
const unsigned int xylRandom_generator::min_possible_random_value;
const unsigned int xylRandom_generator::max_possible_random_value;

constinit xylRandom_generator xylRandom::global_random_gen;

void xylRandom_generator::set_random_seed() {
	set_seed(zub_library->get_enable_deterministic_mode() ? deterministic_seed
	                                                      : os::milliseconds());
}
