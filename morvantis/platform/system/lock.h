// The system's recursive lock in storage of the caller's.
#pragma once

#include <morvantis/core/xyltypes.h> // size_t

namespace os {

// Room and alignment of a lock on every system.
constexpr size_t lock_size = 40;
constexpr size_t lock_alignment = 8;

// Makes a lock in `storage`, which has lock_size bytes. `spin_count` is how often a thread tries
// again before it sleeps, where the system's lock knows such a thing; elsewhere it is ignored.
// Each lock is ended by destroy_lock(), unlocked. None of these functions can fail.
void create_lock(void* storage, int spin_count);
void destroy_lock(void* storage);

// Waits for the lock and takes it; its holder may take it again.
void enter_lock(void* storage);
// Gives back one enter_lock() of this thread's.
void leave_lock(void* storage);

} // namespace os
