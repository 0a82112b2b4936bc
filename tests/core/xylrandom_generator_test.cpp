#include <morvantis/core/xylrandom.h>
#include <morvantis/core/xylrandom_generator.h>

#include "recording_host.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <set>
#include <utility>

namespace {

// The generator as its author wrote it down, with the state in a 64-bit word that is cut after
// every step.
class Plain_generator {
public:
	explicit Plain_generator(std::uint64_t state) : state_(state) {}
	std::uint32_t next() {
		state_ = (state_ ^ (state_ * 8192)) % 4294967296u;
		state_ = state_ ^ (state_ / 131072);
		state_ = (state_ ^ (state_ * 32)) % 4294967296u;
		return static_cast<std::uint32_t>((state_ + 4294967295u) % 4294967296u);
	}

private:
	std::uint64_t state_;
};

constexpr unsigned int first_state = 0x41C64E6D;

} // namespace

TEST(xylRandom_generator, PublishesItsRanges) {
	EXPECT_EQ(xylRandom_generator::min_possible_value_xorshift_seed, 1u);
	EXPECT_EQ(xylRandom_generator::max_possible_value_xorshift_seed, 0xFFFFFFFFu);
	EXPECT_EQ(xylRandom_generator::min_possible_random_value, 0u);
	EXPECT_EQ(xylRandom_generator::max_possible_random_value, 0xFFFFFFFEu);
}

TEST(xylRandom_generator, StartsWithTheSeedingConstant) {
	EXPECT_EQ(xylRandom_generator().seed, first_state);
}

TEST(xylRandom_generator, SetSeedCombinesWithTheSeedingConstant) {
	xylRandom_generator generator;
	generator.set_seed(45153);
	EXPECT_EQ(generator.seed, 0x41C6FE0Cu);
}

// Four values of ten sequences, computed by an independent program.
TEST(xylRandom_generator, GivesTheSameSequencesForEver) {
	struct Case {
		unsigned int seed;
		std::array<unsigned int, 4> values;
	};
	const Case cases[] = {
		{0x0u, {0x897EE767u, 0xE7EA7980u, 0xB39BB06Bu, 0x775C0646u}},
		{0x1u, {0x897AC748u, 0xE3E27F7Fu, 0x2E5718A8u, 0x65099F07u}},
		{0x2u, {0x8976A729u, 0xEFEAF582u, 0x9A0368EDu, 0x14C4BF40u}},
		{0xB061u, {0x5EE110EEu, 0xE3651CB0u, 0x5E9085C7u, 0x8B1DF95Bu}},
		{0x63u, {0x88FE8BACu, 0x68EBEA67u, 0xA17AF7DAu, 0x0FBCEB7Au}},
		{0x12D687u, {0x8BFF804Du, 0x0539CB14u, 0xB735D237u, 0xA32844A0u}},
		{0x7FFFFFFFu, {0x09754776u, 0x92E500F9u, 0x6DB16966u, 0x53288C08u}},
		{0x80000000u, {0x0976A767u, 0x6EE2FD04u, 0x190AF123u, 0xA2E404D2u}},
		{0xDEADBEEFu, {0xCE03C7DEu, 0x69F7E8C2u, 0x09179433u, 0x89BC567Bu}},
		{0xFFFFFFFFu, {0x897D0776u, 0x1BED847Du, 0xC720282Eu, 0x86908E9Cu}},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.seed);
		xylRandom_generator generator;
		generator.set_seed(c.seed);
		for (const unsigned int value : c.values) EXPECT_EQ(generator.random_int(), value);
	}
}

TEST(xylRandom_generator, FollowsThePlainFormOverAMillionSteps) {
	xylRandom_generator generator;
	Plain_generator plain(first_state);
	for (int i = 0; i < 1000000; ++i) ASSERT_EQ(generator.random_int(), plain.next()) << i;
}

TEST(xylRandom_generator, EveryOperationAdvancesTheStateOnce) {
	Plain_generator plain(first_state);
	xylRandom_generator generator;
	const auto after_one_step = [&] { return plain.next() + 1; };
	generator.random_int();
	EXPECT_EQ(generator.seed, after_one_step());
	generator.random_int(7);
	EXPECT_EQ(generator.seed, after_one_step());
	generator.random_int_ranged(5, 5);
	EXPECT_EQ(generator.seed, after_one_step());
	generator.random_float();
	EXPECT_EQ(generator.seed, after_one_step());
	generator.random_float_ranged(1, 1);
	EXPECT_EQ(generator.seed, after_one_step());
	const unsigned int seed = generator.seed;
	generator.set_current_thread_as_owner();
	EXPECT_EQ(generator.seed, seed);
}

TEST(xylRandom_generator, ModuloIsUnsigned) {
	Plain_generator plain(first_state);
	xylRandom_generator generator;
	EXPECT_EQ(generator.random_int(10), plain.next() % 10);
	EXPECT_EQ(generator.random_int(-5), plain.next() % 4294967291u);
	EXPECT_EQ(generator.random_int(1), 0u);
}

TEST(xylRandom_generator, RangesHoldBothEnds) {
	xylRandom_generator generator;
	std::set<int> seen;
	for (int i = 0; i < 1000; ++i) seen.insert(generator.random_int_ranged(-3, 3));
	EXPECT_EQ(seen, (std::set<int>{-3, -2, -1, 0, 1, 2, 3}));
	for (int i = 0; i < 10; ++i) EXPECT_EQ(generator.random_int_ranged(5, 5), 5);
}

TEST(xylRandom_generator, RangesMayBeWiderThanHalfTheIntegers) {
	constexpr int lowest = -2147483647 - 1;
	xylRandom_generator generator;
	Plain_generator plain(first_state);
	for (int i = 0; i < 1000; ++i) {
		// 2^32 - 1 values: the remainder changes only the topmost value, which never comes.
		const auto expected = static_cast<std::int32_t>(plain.next() + 0x80000000u);
		ASSERT_EQ(generator.random_int_ranged(lowest, 2147483646), expected);
	}
}

TEST(xylRandom_generator, FloatsAreScaledInSinglePrecision) {
	xylRandom_generator generator;
	Plain_generator plain(first_state);
	for (int i = 0; i < 100000; ++i) {
		const float expected = static_cast<float>(plain.next()) / 4294967296.0f;
		ASSERT_EQ(generator.random_float(), expected);
	}
}

TEST(xylRandom_generator, TheLargestValueIsExactlyOne) {
	// The state before 0xFFFFFFFF, found by stepping backward.
	xylRandom_generator generator;
	generator.seed = 0x5E6CFCE7;
	EXPECT_EQ(generator.random_float(), 1.0f);
	EXPECT_EQ(generator.seed, 0xFFFFFFFFu);
}

TEST(xylRandom_generator, FloatRangesScaleAndShift) {
	xylRandom_generator generator;
	xylRandom_generator same;
	for (int i = 0; i < 1000; ++i) {
		const float unit = same.random_float();
		const float scaled = unit * (7.5f - -2.5f);
		ASSERT_EQ(generator.random_float_ranged(-2.5f, 7.5f), scaled + -2.5f);
	}
	EXPECT_EQ(generator.random_float_ranged(3.25f, 3.25f), 3.25f);
}

TEST(xylRandom_generator, TheDegenerateSeedStandsStill) {
	xylRandom_generator generator;
	generator.set_seed(0x41C64E6D);
	EXPECT_EQ(generator.seed, 0u);
	EXPECT_EQ(generator.random_int(), 0xFFFFFFFFu);
	EXPECT_EQ(generator.random_int(), 0xFFFFFFFFu);
}

TEST(xylRandom_generator, CopiesAndMovesCarryTheState) {
	xylRandom_generator source;
	source.random_int();
	const xylRandom_generator copy(source);
	xylRandom_generator assigned;
	assigned = source;
	xylRandom_generator moved(std::move(assigned));
	xylRandom_generator move_assigned;
	move_assigned = std::move(moved);
	EXPECT_EQ(copy.seed, source.seed);
	EXPECT_EQ(move_assigned.seed, source.seed);
}

TEST(xylRandom_generator, DeterministicModeFixesTheRandomSeed) {
	Recording_host::get().deterministic_mode = true;
	xylRandom_generator generator;
	for (int i = 0; i < 2; ++i) {
		generator.random_int();
		generator.set_random_seed();
		EXPECT_EQ(generator.seed, 0x41C6FE0Cu);
	}
}

TEST(xylRandom_generator, WithoutItTheClockSeeds) {
	// Two machines' clocks never read 45153 at every one of these moments.
	xylRandom_generator generator;
	std::set<unsigned int> seeds;
	while (seeds.size() < 2) {
		generator.set_random_seed();
		seeds.insert(generator.seed);
	}
	EXPECT_EQ(seeds.size(), 2u);
}

TEST(xylRandom, SharesOneGeneratorWithTheSameSequence) {
	xylRandom_generator own;
	own.set_seed(99);
	xylRandom::set_seed(99);
	EXPECT_EQ(xylRandom::global_random_gen.seed, own.seed);
	EXPECT_EQ(xylRandom::random_int(), own.random_int());
	EXPECT_EQ(xylRandom::random_int(100), own.random_int(100));
	EXPECT_EQ(xylRandom::random_int_ranged(-9, 9), own.random_int_ranged(-9, 9));
	EXPECT_EQ(xylRandom::random_float(), own.random_float());
	EXPECT_EQ(xylRandom::random_float_ranged(-1, 1), own.random_float_ranged(-1, 1));
	Recording_host::get().deterministic_mode = true;
	xylRandom::set_random_seed();
	EXPECT_EQ(xylRandom::global_random_gen.seed, 0x41C6FE0Cu);
}
