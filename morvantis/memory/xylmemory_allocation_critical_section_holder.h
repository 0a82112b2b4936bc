// Locks a stretch of code, or doesn't, by a flag.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API

class xylCritical_section;

// Holds the lock for its own lifetime if it was told to. Ends on the thread it began on.
class MORVANTIS_API xylMemory_allocation_critical_section_holder {
public:
	// Takes `lock` if `take_lock` is true; else the lock is never touched.
	xylMemory_allocation_critical_section_holder(xylCritical_section& lock, bool take_lock);
	xylMemory_allocation_critical_section_holder(
		const xylMemory_allocation_critical_section_holder&) = delete;
	~xylMemory_allocation_critical_section_holder();
	xylMemory_allocation_critical_section_holder&
	operator=(const xylMemory_allocation_critical_section_holder&) = delete;

private:
	xylCritical_section& lock_; // not owned
	bool take_lock_;            // whether the lock is held
};
