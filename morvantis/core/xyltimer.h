// Numbered clocks that the host advances, and cheap objects that measure elapsed time on them.
#pragma once

#include <morvantis/core/xyltypes.h> // xylInt64, MORVANTIS_API

class xylIO_Stream;

// Measures how much of one of the host's clocks has gone by.
//
// The clocks never run by themselves: each moves only by what the host passes to tick(), so a
// paused game pauses every timer that follows its clock. All arithmetic is in integer time units
// of 1/100,000 s; seconds as float exist only at the edges, where their rounding can't add up.
//
// A clock number is 0 or 1 and is never range-checked. No operation allocates or reads hardware.
// Threads: clocks are plain memory. One thread ticks, and readers on other threads may see the
// delta and the total of different ticks.
class MORVANTIS_API xylTimer {
public:
	static const int num_timers__ = 2;
	static const int real_timer_no__ = 0;                        // the host's real time
	static const int tactical_timer_no__ = 1;                    // the host's tactical time
	static const int time_scale__ = 100000;                      // units per second
	static const float inv_xyl_time_scale__;                     // seconds per unit
	static const int time_scale_conversion_rate_to_msec__ = 100; // units per millisecond

	// Starts measuring on clock `no`, so elapsed_time() is 0 until the next tick.
	explicit xylTimer(int no) : state(cur_ticks__[no]), timer_no(no) {}

	// Moves clock `no` by `dt` seconds, cut to whole units: less than 10 us adds nothing, though
	// delta_time() still tells it. A negative `dt` runs the clock backward. The product has to fit
	// 64 bits.
	static void tick(int no, float dt) {
		delta_time__[no] = dt;
		const xylInt64 ticks = units(dt);
		// Unsigned, so that a clock wraps around at the end of its range.
		cur_ticks__[no] = wrapped_sum(cur_ticks__[no], ticks);
		delta_ticks__[no] = ticks;
	}

	// The last tick of clock `no`: in seconds as passed (0.01 before the first), and in units.
	static float delta_time(int no) { return delta_time__[no]; }
	static xylInt64 delta_time_units(int no) { return delta_ticks__[no]; }

	// The total of clock `no`: in units, in whole milliseconds (cut toward zero), and in seconds,
	// exact to one unit up to 167 s.
	static xylInt64 get_global_time_units(int no) { return cur_ticks__[no]; }
	static xylInt64 get_global_time_units_msec(int no) {
		return cur_ticks__[no] / time_scale_conversion_rate_to_msec__;
	}
	static float get_global_time(int no) { return convert_time_units_to_sec(cur_ticks__[no]); }
	// The total in seconds, wrapped at 10,000 s so that float keeps its digits; a negative total
	// gives a negative result.
	static float get_global_mod_time(int no) {
		return convert_time_units_to_sec(cur_ticks__[no] % mod_time_units);
	}

	static void set_global_time_units(int no, xylInt64 t) { cur_ticks__[no] = t; }
	// Sets the total to `t` seconds, cut to whole units.
	static void set_global_time(int no, float t) { cur_ticks__[no] = units(t); }
	static void init_global_time(int no) { cur_ticks__[no] = 0; }

	static float convert_time_units_to_sec(xylInt64 t) {
		return static_cast<float>(t) * seconds_per_unit;
	}
	static int time_units_per_sec() { return time_scale__; }

	// Starts measuring anew from the clock's present total; two names for one operation.
	void init() { state = cur_ticks__[timer_no]; }
	void reset() { init(); }
	// Follows clock `no` from now on and starts anew.
	void set_timer_no(int no) {
		timer_no = no;
		init();
	}
	// Makes the timer read `t` seconds, or `t` units; the clock is not touched.
	void set(float t) { set_units(units(t)); }
	void set_units(xylInt64 t) { state = wrapped_difference(cur_ticks__[timer_no], t); }

	// What has gone by since the timer was set, in seconds and in units. Use units for anything
	// longer than 167 s, where float drops some.
	float elapsed_time() const { return convert_time_units_to_sec(elapsed_time_units()); }
	xylInt64 elapsed_time_units() const { return wrapped_difference(cur_ticks__[timer_no], state); }

	// The total at which the timer reads 0; with it a timer can be stored and restored.
	xylInt64 get_state() const { return state; }
	void set_state(xylInt64 s) { state = s; }
	// The same by way of a stream's operators for 64 bits with a sign; the clock's number isn't
	// stored.
	void save_state(xylIO_Stream& s) const;
	void load_state(xylIO_Stream& s);

	static float delta_time__[num_timers__];     // seconds of each clock's last tick, as passed
	static xylInt64 delta_ticks__[num_timers__]; // units of each clock's last tick
	static xylInt64 cur_ticks__[num_timers__];   // total of each clock, in units

	xylInt64 state; // the clock's total at which this timer reads 0, in units
	int timer_no;   // the clock this timer follows

private:
	static constexpr float seconds_per_unit = 1e-5f;
	static constexpr xylInt64 mod_time_units = 1000000000; // 10,000 s

	// The product in single precision, cut toward zero.
	static xylInt64 units(float seconds) {
		return static_cast<xylInt64>(seconds * static_cast<float>(time_scale__));
	}
	static xylInt64 wrapped_sum(xylInt64 a, xylInt64 b) {
		return static_cast<xylInt64>(static_cast<xylUInt64>(a) + static_cast<xylUInt64>(b));
	}
	static xylInt64 wrapped_difference(xylInt64 a, xylInt64 b) {
		return static_cast<xylInt64>(static_cast<xylUInt64>(a) - static_cast<xylUInt64>(b));
	}
};

static_assert(sizeof(xylTimer) == 16, "stored by hosts as it stands");
