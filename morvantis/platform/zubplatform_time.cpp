// Clocks and waiting.
#include <morvantis/platform/zubplatform.h>

#include <morvantis/core/xylreport.h>
#include <morvantis/platform/system/clock.h>

void zubPlatform::sleep(unsigned long ms) { os::sleep(ms); }

xylInt64 zubPlatform::get_timestamp_counter() { return os::counter(); }

xylInt64 zubPlatform::get_timestamp_counter_frequency() {
	static constexpr char no_counter_text[] =
		"The hardware does not support high-resolution performance counters!";
	xylInt64 frequency = 0;
	if (!os::counter_frequency(&frequency)) xyl_error(no_counter_text);
	return frequency;
}

xylInt64 zubPlatform::get_system_time() { return os::milliseconds(); }
