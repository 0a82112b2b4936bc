#include <morvantis/core/xyltimer.h>

#include <morvantis/io/xylio_stream.h>

const int xylTimer::num_timers__;
const int xylTimer::real_timer_no__;
const int xylTimer::tactical_timer_no__;
const int xylTimer::time_scale__;
const float xylTimer::inv_xyl_time_scale__ = seconds_per_unit;
const int xylTimer::time_scale_conversion_rate_to_msec__;

constinit float xylTimer::delta_time__[num_timers__] = {0.01f, 0.01f};
constinit xylInt64 xylTimer::delta_ticks__[num_timers__] = {};
constinit xylInt64 xylTimer::cur_ticks__[num_timers__] = {};

void xylTimer::save_state(xylIO_Stream& s) const { s << state; }

void xylTimer::load_state(xylIO_Stream& s) { s >> state; }
