#include <morvantis/platform/system/clock.h>

#include <morvantis/platform/system/windows/include_windows.h>

xylInt64 os::counter() {
	LARGE_INTEGER count{};
	QueryPerformanceCounter(&count);
	return count.QuadPart;
}

bool os::counter_frequency(xylInt64* frequency) {
	LARGE_INTEGER answer{};
	if (!QueryPerformanceFrequency(&answer)) return false;
	*frequency = answer.QuadPart;
	return true;
}

xylUInt32 os::milliseconds() { return timeGetTime(); }

void os::begin_timer_period(unsigned int milliseconds) { timeBeginPeriod(milliseconds); }

void os::end_timer_period(unsigned int milliseconds) { timeEndPeriod(milliseconds); }

void os::sleep(unsigned long milliseconds) { Sleep(milliseconds); }
