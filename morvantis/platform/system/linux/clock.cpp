#include <morvantis/platform/system/clock.h>

#include <cerrno>
#include <ctime>

#include <sched.h>

namespace {

constexpr xylInt64 nanoseconds_per_second = 1'000'000'000;
constexpr xylInt64 nanoseconds_per_millisecond = 1'000'000;

} // namespace

xylInt64 os::counter() {
	timespec now{};
	clock_gettime(CLOCK_MONOTONIC, &now);
	return now.tv_sec * nanoseconds_per_second + now.tv_nsec;
}

bool os::counter_frequency(xylInt64* frequency) {
	*frequency = nanoseconds_per_second;
	return true;
}

xylUInt32 os::milliseconds() {
	return static_cast<xylUInt32>(counter() / nanoseconds_per_millisecond);
}

void os::begin_timer_period(unsigned int) {}

void os::end_timer_period(unsigned int) {}

void os::sleep(unsigned long milliseconds) {
	if (milliseconds == 0) {
		sched_yield();
		return;
	}
	timespec rest{};
	rest.tv_sec = static_cast<time_t>(milliseconds / 1000);
	rest.tv_nsec = static_cast<long>(milliseconds % 1000 * nanoseconds_per_millisecond);
	// A signal ends the wait early and leaves the rest of it in `rest`.
	while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
	}
}
