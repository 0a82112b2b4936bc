#include <morvantis/memory/xylcritical_section.h>

#include <morvantis/platform/system/lock.h>

#include <cstring>

static_assert(sizeof(xylCritical_section) == os::lock_size);
static_assert(alignof(xylCritical_section) == os::lock_alignment);

xylCritical_section::xylCritical_section(int spin_count) { os::create_lock(lock_, spin_count); }

xylCritical_section::~xylCritical_section() { os::destroy_lock(lock_); }

xylCritical_section& xylCritical_section::operator=(const xylCritical_section& other) {
	std::memmove(lock_, other.lock_, lock_size);
	return *this;
}

void xylCritical_section::lock() { os::enter_lock(lock_); }

void xylCritical_section::unlock() { os::leave_lock(lock_); }
