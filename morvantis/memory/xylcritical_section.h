// A recursive lock in place, and a holder that takes it or not.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API, size_t

// The system's recursive lock and nothing besides: a CRITICAL_SECTION on Windows, a recursive
// pthread mutex on Linux. For the engine's allocators; the library itself has no use for it.
//
// Threads: lock() and unlock() may be called from any thread, unlock() only by the holder; all else
// while nobody uses the lock.
class MORVANTIS_API xylCritical_section {
public:
	// `spin_count` is how often a thread tries again before it sleeps. Linux ignores it.
	explicit xylCritical_section(int spin_count = 4096);
	// No lock can be made from another: two objects would stand for one state and both end it.
	xylCritical_section(const xylCritical_section&) = delete;
	~xylCritical_section();

	// kept: copies the bytes of the system's lock, without ending the one that was here. Both
	// objects then stand for the same state, so neither may be in use, or have been.
	xylCritical_section& operator=(const xylCritical_section& other);

	// Waits for the lock and takes it; the holder may take it again.
	void lock();
	// Gives back one lock() of this thread's.
	void unlock();

private:
	static constexpr size_t lock_size = 40; // of the system's lock, on either system
	alignas(8) unsigned char lock_[lock_size];
};

static_assert(sizeof(xylCritical_section) == 40);
