#include <morvantis/platform/system/lock.h>

#include <morvantis/platform/system/windows/include_windows.h>

static_assert(sizeof(CRITICAL_SECTION) == os::lock_size);
static_assert(alignof(CRITICAL_SECTION) == os::lock_alignment);

void os::create_lock(void* storage, int spin_count) {
	InitializeCriticalSectionAndSpinCount(static_cast<CRITICAL_SECTION*>(storage),
	                                      static_cast<DWORD>(spin_count));
}

void os::destroy_lock(void* storage) {
	DeleteCriticalSection(static_cast<CRITICAL_SECTION*>(storage));
}

void os::enter_lock(void* storage) {
	EnterCriticalSection(static_cast<CRITICAL_SECTION*>(storage));
}

void os::leave_lock(void* storage) {
	LeaveCriticalSection(static_cast<CRITICAL_SECTION*>(storage));
}
