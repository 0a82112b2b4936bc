// Real time from the system's finest counter, which can be stopped and started.
#pragma once

#include <morvantis/core/xyltypes.h> // xylInt64, MORVANTIS_API

// One real-time clock for the process, all static. It stands still until setup(), and between
// stop() and start(). Results are seconds as double.
//
// Threads: nothing here is guarded; one thread starts and stops, and readers on others may see the
// state half-way. No operation allocates.
class MORVANTIS_API xylBase_timer {
public:
	// Learns the counter's frequency, asks the system for its finest timer period and starts the
	// clock. A system without a counter is reported with xyl_error, and the clock then has no
	// meaning. Once per process, paired with cleanup().
	static void setup();
	// Gives the timer period back. The clock goes on.
	static void cleanup();

	// Lets real time run on from where it was stopped; the very first start makes it 0. While
	// running it only restarts get_elapsed_time().
	static void start();
	// Freezes real time. While stopped it does nothing.
	static void stop();

	// Seconds of the counter itself, never stopped; its zero has no meaning.
	static double get_absolute_time();
	// Seconds of real time since the first start, without the time it stood still.
	static double get_real_time();
	// Seconds since the last call, start or stop. It runs on while the clock is stopped.
	static double get_elapsed_time();
	// Always true.
	static bool is_initialized() { return true; }

	static bool timer_stopped__;                // real time stands still; true at load
	static xylInt64 last_elapsed_time__;        // counter at the last start, stop or elapsed time
	static xylInt64 base_time__;                // counter at which real time is 0
	static xylInt64 stop_time__;                // counter at the stop; 0 means not stopped
	static double inv_timer_ticks_per_second__; // seconds per unit of the counter; 0 before setup()
};
