#include <morvantis/core/xylbase_timer.h>

#include <morvantis/core/xylreport.h>
#include <morvantis/platform/system/clock.h>

namespace {

constexpr char no_counter_text[] =
	"The hardware does not support high-resolution performance counters!";
constexpr unsigned int finest_period = 1; // milliseconds

double seconds(xylInt64 ticks) {
	return static_cast<double>(ticks) * xylBase_timer::inv_timer_ticks_per_second__;
}

// The counter at which real time stands: that of the stop, or now.
xylInt64 stop_time_or_now() {
	return xylBase_timer::stop_time__ != 0 ? xylBase_timer::stop_time__ : os::counter();
}

} // namespace

constinit bool xylBase_timer::timer_stopped__ = true;
constinit xylInt64 xylBase_timer::last_elapsed_time__ = 0;
constinit xylInt64 xylBase_timer::base_time__ = 0;
constinit xylInt64 xylBase_timer::stop_time__ = 0;
constinit double xylBase_timer::inv_timer_ticks_per_second__ = 0;

void xylBase_timer::setup() {
	xylInt64 frequency = 0;
	if (!os::counter_frequency(&frequency)) xyl_error(no_counter_text);
	inv_timer_ticks_per_second__ = 1.0 / static_cast<double>(frequency);
	os::begin_timer_period(finest_period);
	start();
}

void xylBase_timer::cleanup() { os::end_timer_period(finest_period); }

void xylBase_timer::start() {
	const xylInt64 now = os::counter();
	if (timer_stopped__) base_time__ += now - stop_time__;
	stop_time__ = 0;
	last_elapsed_time__ = now;
	timer_stopped__ = false;
}

void xylBase_timer::stop() {
	const xylInt64 t = stop_time_or_now();
	if (timer_stopped__) return;
	stop_time__ = t;
	last_elapsed_time__ = t;
	timer_stopped__ = true;
}

double xylBase_timer::get_absolute_time() { return seconds(os::counter()); }

double xylBase_timer::get_real_time() { return seconds(stop_time_or_now() - base_time__); }

double xylBase_timer::get_elapsed_time() {
	const xylInt64 now = os::counter();
	const xylInt64 elapsed = now - last_elapsed_time__;
	last_elapsed_time__ = now;
	return seconds(elapsed);
}
