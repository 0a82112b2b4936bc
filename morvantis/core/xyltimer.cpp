#include <morvantis/core/xyltimer.h>

constinit float xylTimer::delta_time__[num_timers__] = {0.01f, 0.01f};
constinit xylInt64 xylTimer::delta_ticks__[num_timers__] = {};
constinit xylInt64 xylTimer::cur_ticks__[num_timers__] = {};
