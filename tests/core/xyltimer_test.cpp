#include <morvantis/core/xyltimer.h>

#include <morvantis/io/xylio_binary_stream.h>
#include <morvantis/io/xylio_text_stream.h>

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <iterator>
#include <random>

namespace {

constexpr int real = xylTimer::real_timer_no__;
constexpr int tactical = xylTimer::tactical_timer_no__;

// Every test starts with both clocks as they are at load, since the clocks are global.
class Timer_test : public testing::Test {
protected:
	void SetUp() override {
		for (int no = 0; no < xylTimer::num_timers__; ++no) {
			xylTimer::delta_time__[no] = 0.01f;
			xylTimer::delta_ticks__[no] = 0;
			xylTimer::cur_ticks__[no] = 0;
		}
	}
};

// Before any fixture has touched the clocks: this suite's name sorts first in its file.
TEST(xylTimer, ClocksStandAtZeroWithATickOfTenMillisecondsAtLoad) {
	for (int no = 0; no < xylTimer::num_timers__; ++no) {
		EXPECT_EQ(xylTimer::delta_time(no), 0.01f);
		EXPECT_EQ(xylTimer::delta_time_units(no), 0);
		EXPECT_EQ(xylTimer::get_global_time_units(no), 0);
	}
	EXPECT_EQ(std::size(xylTimer::cur_ticks__), 2u);
}

TEST(xylTimer, PublishesItsConstants) {
	EXPECT_EQ(xylTimer::num_timers__, 2);
	EXPECT_EQ(xylTimer::real_timer_no__, 0);
	EXPECT_EQ(xylTimer::tactical_timer_no__, 1);
	EXPECT_EQ(xylTimer::time_scale__, 100000);
	EXPECT_EQ(std::bit_cast<std::uint32_t>(xylTimer::inv_xyl_time_scale__), 0x3727C5ACu);
	EXPECT_EQ(xylTimer::time_scale_conversion_rate_to_msec__, 100);
	EXPECT_EQ(xylTimer::time_units_per_sec(), 100000);
}

TEST_F(Timer_test, TickCutsSecondsToWholeUnits) {
	struct Case {
		const char* name;
		float seconds;
		xylInt64 units;
	};
	const Case cases[] = {
		{"half a second", 0.5f, 50000}, {"one unit", 1e-5f, 1},
		{"below one unit", 1e-6f, 0},   {"backward", -0.25f, -25000},
		{"a frame", 1.0f / 60, 1666},   {"backward below one unit", -1e-6f, 0},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		xylTimer timer(tactical);
		xylTimer::tick(tactical, c.seconds);
		EXPECT_EQ(timer.elapsed_time_units(), c.units);
		EXPECT_EQ(xylTimer::delta_time_units(tactical), c.units);
		EXPECT_EQ(xylTimer::delta_time(tactical), c.seconds);
	}
}

// 0.01f is a little less than a hundredth: only the rounding of the float product makes it 1000.
TEST_F(Timer_test, TickMultipliesInSinglePrecision) {
	xylTimer::tick(real, 0.01f);
	EXPECT_EQ(xylTimer::delta_time_units(real), 1000);
	xylTimer::set_global_time(real, 0.03f);
	EXPECT_EQ(xylTimer::get_global_time_units(real), 3000);
}

TEST_F(Timer_test, ClocksAreIndependent) {
	xylTimer::tick(tactical, 0.5f);
	EXPECT_EQ(xylTimer::get_global_time_units(real), 0);
	EXPECT_EQ(xylTimer::get_global_time_units(tactical), 50000);
	EXPECT_EQ(xylTimer::delta_time(real), 0.01f);
}

TEST_F(Timer_test, ATimerMeasuresItsClockFromWhereItWasMade) {
	xylTimer::tick(tactical, 3.0f);
	xylTimer timer(tactical);
	EXPECT_EQ(timer.timer_no, tactical);
	EXPECT_EQ(timer.elapsed_time_units(), 0);
	xylTimer::tick(tactical, 0.5f);
	EXPECT_EQ(timer.elapsed_time(), 0.5f);
	EXPECT_EQ(timer.elapsed_time_units(), 50000);
	xylTimer::tick(real, 9.0f);
	EXPECT_EQ(timer.elapsed_time_units(), 50000);
}

TEST_F(Timer_test, SettingMakesTheTimerReadThatAndLeavesTheClock) {
	xylTimer::tick(tactical, 1.0f);
	xylTimer timer(tactical);
	timer.set(2.0f);
	EXPECT_EQ(timer.elapsed_time(), 2.0f);
	EXPECT_EQ(xylTimer::get_global_time_units(tactical), 100000);
	timer.set_units(-7);
	EXPECT_EQ(timer.elapsed_time_units(), -7);
	timer.set(0.000019f);
	EXPECT_EQ(timer.elapsed_time_units(), 1);
}

TEST_F(Timer_test, InitAndResetStartAnew) {
	xylTimer timer(tactical);
	xylTimer::tick(tactical, 1.0f);
	timer.init();
	EXPECT_EQ(timer.elapsed_time_units(), 0);
	xylTimer::tick(tactical, 1.0f);
	timer.reset();
	EXPECT_EQ(timer.elapsed_time_units(), 0);
}

TEST_F(Timer_test, ChangingTheClockStartsAnew) {
	xylTimer timer(tactical);
	xylTimer::tick(real, 4.0f);
	timer.set_timer_no(real);
	EXPECT_EQ(timer.timer_no, real);
	EXPECT_EQ(timer.elapsed_time_units(), 0);
	xylTimer::tick(real, 1.0f);
	EXPECT_EQ(timer.elapsed_time_units(), 100000);
}

TEST_F(Timer_test, TheStateRestoresATimer) {
	xylTimer::tick(tactical, 1.0f);
	xylTimer timer(tactical);
	xylTimer::tick(tactical, 1.0f);
	EXPECT_EQ(timer.get_state(), 100000);
	xylTimer other(tactical);
	other.set_state(timer.get_state());
	EXPECT_EQ(other.elapsed_time_units(), 100000);
	const xylTimer copy = timer;
	EXPECT_EQ(copy.state, timer.state);
	EXPECT_EQ(copy.timer_no, timer.timer_no);
}

TEST_F(Timer_test, GlobalTimeIsSetAndReadInEachUnit) {
	xylTimer::set_global_time_units(real, 199);
	EXPECT_EQ(xylTimer::get_global_time_units(real), 199);
	EXPECT_EQ(xylTimer::get_global_time_units_msec(real), 1);
	xylTimer::set_global_time_units(real, -199);
	EXPECT_EQ(xylTimer::get_global_time_units_msec(real), -1);
	xylTimer::set_global_time(real, 2.5f);
	EXPECT_EQ(xylTimer::get_global_time_units(real), 250000);
	EXPECT_EQ(xylTimer::get_global_time(real), 250000.0f * 1e-5f);
	xylTimer::set_global_time(real, 0.000019f);
	EXPECT_EQ(xylTimer::get_global_time_units(real), 1);
	xylTimer::init_global_time(real);
	EXPECT_EQ(xylTimer::get_global_time_units(real), 0);
}

TEST_F(Timer_test, ModTimeWrapsAtTenThousandSeconds) {
	struct Case {
		xylInt64 units;
		float seconds;
	};
	const Case cases[] = {
		{1000000000, 0.0f},
		{999999999, static_cast<float>(999999999) * 1e-5f},
		{1000000001, 1e-5f},
		{-1000000001, -1e-5f},
		{5000000000 + 250000, 250000.0f * 1e-5f},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.units);
		xylTimer::set_global_time_units(real, c.units);
		EXPECT_EQ(xylTimer::get_global_mod_time(real), c.seconds);
	}
}

TEST_F(Timer_test, UnitsBecomeSecondsByAFloatProduct) {
	std::mt19937_64 random(17);
	for (int i = 0; i < 100000; ++i) {
		const auto units = static_cast<xylInt64>(random() >> (i % 60));
		ASSERT_EQ(xylTimer::convert_time_units_to_sec(units), static_cast<float>(units) * 1e-5f);
	}
}

TEST_F(Timer_test, ManySmallTicksAddUpExactly) {
	for (int i = 0; i < 100000; ++i) xylTimer::tick(tactical, 1e-5f);
	EXPECT_EQ(xylTimer::get_global_time_units(tactical), 100000);
}

TEST_F(Timer_test, StateGoesThroughStreamsAs64Bits) {
	xylTimer timer(real);
	timer.set_state(-0x123456789);
	xylIO_binary_stream binary;
	timer.save_state(binary);
	EXPECT_EQ(binary.buffer.length(), 8);
	xylIO_text_stream text;
	timer.save_state(text);
	EXPECT_TRUE(text.buffer == "-4886718345");
	xylTimer other(tactical);
	other.load_state(binary);
	EXPECT_EQ(other.get_state(), -0x123456789);
	EXPECT_EQ(other.timer_no, tactical);
	other.set_state(0);
	other.load_state(text);
	EXPECT_EQ(other.get_state(), -0x123456789);
}

} // namespace
