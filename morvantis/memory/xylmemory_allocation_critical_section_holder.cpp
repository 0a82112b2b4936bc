#include <morvantis/memory/xylmemory_allocation_critical_section_holder.h>

#include <morvantis/memory/xylcritical_section.h>

xylMemory_allocation_critical_section_holder::xylMemory_allocation_critical_section_holder(
	xylCritical_section& lock, bool take_lock)
	: lock_(lock), take_lock_(take_lock) {
	if (take_lock_) lock_.lock();
}

xylMemory_allocation_critical_section_holder::~xylMemory_allocation_critical_section_holder() {
	if (take_lock_) lock_.unlock();
}
