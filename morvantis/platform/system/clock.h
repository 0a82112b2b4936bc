// The system's clocks, and giving up the processor for a while.
#pragma once

#include <morvantis/core/xyltypes.h>

namespace os {

// Any thread may call all of these; none allocates.

// The finest steadily running counter, in units of counter_frequency(); its zero has no meaning.
xylInt64 counter();

// Units of counter() in a second. False, with `*frequency` untouched, on a machine without one.
bool counter_frequency(xylInt64* frequency);

// Milliseconds of a steadily running clock, which wraps around after 49.7 days.
xylUInt32 milliseconds();

// Asks for timers as fine as `milliseconds`, until end_timer_period() with the same number. A
// system whose timers are always fine does nothing.
void begin_timer_period(unsigned int milliseconds);
void end_timer_period(unsigned int milliseconds);

// Gives the processor up for at least `milliseconds`; 0 only lets other ready threads run.
void sleep(unsigned long milliseconds);

} // namespace os
