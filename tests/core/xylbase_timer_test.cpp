// The real-time clock, driven by a counter of this test's own: the program holds the clock's source
// itself, with the system calls below in place of the system's.

#include <morvantis/core/xylbase_timer.h>
#include <morvantis/core/xylreport.h>
#include <morvantis/platform/system/clock.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct Machine {
	xylInt64 counter = 1000;
	xylInt64 frequency = 100;
	bool has_counter = true;
	std::vector<std::string> calls;
};
Machine machine;

} // namespace

xylInt64 os::counter() { return machine.counter; }

bool os::counter_frequency(xylInt64* frequency) {
	if (machine.has_counter) *frequency = machine.frequency;
	return machine.has_counter;
}

void os::begin_timer_period(unsigned int milliseconds) {
	machine.calls.push_back("begin " + std::to_string(milliseconds));
}

void os::end_timer_period(unsigned int milliseconds) {
	machine.calls.push_back("end " + std::to_string(milliseconds));
}

void xyl_error(const char* format, ...) { machine.calls.push_back(format); }

namespace {

class Base_timer_test : public testing::Test {
protected:
	void SetUp() override {
		machine = {};
		xylBase_timer::timer_stopped__ = true;
		xylBase_timer::last_elapsed_time__ = 0;
		xylBase_timer::base_time__ = 0;
		xylBase_timer::stop_time__ = 0;
		xylBase_timer::inv_timer_ticks_per_second__ = 0;
	}
};

TEST(xylBase_timer, StandsStillAtLoad) {
	EXPECT_TRUE(xylBase_timer::timer_stopped__);
	EXPECT_EQ(xylBase_timer::last_elapsed_time__, 0);
	EXPECT_EQ(xylBase_timer::base_time__, 0);
	EXPECT_EQ(xylBase_timer::stop_time__, 0);
	EXPECT_EQ(xylBase_timer::inv_timer_ticks_per_second__, 0);
	EXPECT_TRUE(xylBase_timer::is_initialized());
}

TEST_F(Base_timer_test, SetupLeavesRealTimeRunningFromZero) {
	xylBase_timer::setup();
	EXPECT_EQ(xylBase_timer::inv_timer_ticks_per_second__, 0.01);
	EXPECT_EQ(machine.calls, std::vector<std::string>{"begin 1"});
	EXPECT_EQ(xylBase_timer::get_real_time(), 0);
	EXPECT_FALSE(xylBase_timer::timer_stopped__);
	machine.counter += 250;
	EXPECT_EQ(xylBase_timer::get_real_time(), 2.5);
}

TEST_F(Base_timer_test, CleanupGivesThePeriodBackAndNothingElse) {
	xylBase_timer::setup();
	xylBase_timer::cleanup();
	EXPECT_EQ(machine.calls, (std::vector<std::string>{"begin 1", "end 1"}));
	machine.counter += 100;
	EXPECT_EQ(xylBase_timer::get_real_time(), 1.0);
}

TEST_F(Base_timer_test, AMachineWithoutACounterIsReportedAndSetupGoesOn) {
	machine.has_counter = false;
	xylBase_timer::setup();
	EXPECT_EQ(
		machine.calls,
		(std::vector<std::string>{
			"The hardware does not support high-resolution performance counters!", "begin 1"}));
	EXPECT_FALSE(xylBase_timer::timer_stopped__);
}

TEST_F(Base_timer_test, RealTimeContinuesAfterAPauseAndAbsoluteTimeDoesNotPause) {
	xylBase_timer::setup();
	machine.counter += 100;
	xylBase_timer::stop();
	machine.counter += 500;
	EXPECT_EQ(xylBase_timer::get_real_time(), 1.0);
	EXPECT_EQ(xylBase_timer::get_absolute_time(), 16.0);
	xylBase_timer::start();
	EXPECT_EQ(xylBase_timer::get_real_time(), 1.0);
	EXPECT_EQ(xylBase_timer::base_time__, 1500);
	machine.counter += 25;
	EXPECT_EQ(xylBase_timer::get_real_time(), 1.25);
	EXPECT_EQ(xylBase_timer::get_absolute_time(), 16.25);
}

TEST_F(Base_timer_test, OneStartEndsTwoStops) {
	xylBase_timer::setup();
	machine.counter += 100;
	xylBase_timer::stop();
	machine.counter += 100;
	xylBase_timer::stop();
	EXPECT_EQ(xylBase_timer::stop_time__, 1100);
	machine.counter += 100;
	xylBase_timer::start();
	machine.counter += 100;
	EXPECT_EQ(xylBase_timer::get_real_time(), 2.0);
}

TEST_F(Base_timer_test, StartWhileRunningOnlyRestartsTheElapsedTime) {
	xylBase_timer::setup();
	machine.counter += 300;
	xylBase_timer::start();
	EXPECT_EQ(xylBase_timer::base_time__, 1000);
	EXPECT_EQ(xylBase_timer::get_real_time(), 3.0);
	machine.counter += 50;
	EXPECT_EQ(xylBase_timer::get_elapsed_time(), 0.5);
}

TEST_F(Base_timer_test, ElapsedTimeCountsFromTheLastCall) {
	xylBase_timer::setup();
	machine.counter += 150;
	EXPECT_EQ(xylBase_timer::get_elapsed_time(), 1.5);
	EXPECT_EQ(xylBase_timer::get_elapsed_time(), 0);
	machine.counter += 50;
	EXPECT_EQ(xylBase_timer::get_elapsed_time(), 0.5);
}

TEST_F(Base_timer_test, ElapsedTimeRunsOnFromTheStop) {
	xylBase_timer::setup();
	machine.counter += 100;
	xylBase_timer::stop();
	EXPECT_EQ(xylBase_timer::last_elapsed_time__, 1100);
	machine.counter += 75;
	EXPECT_EQ(xylBase_timer::get_elapsed_time(), 0.75);
}

TEST_F(Base_timer_test, StopWhileStoppedChangesNothing) {
	xylBase_timer::stop();
	EXPECT_EQ(xylBase_timer::stop_time__, 0);
	EXPECT_EQ(xylBase_timer::last_elapsed_time__, 0);
	EXPECT_TRUE(xylBase_timer::timer_stopped__);
}

} // namespace
