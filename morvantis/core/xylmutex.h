// The library's two locks, in the shape that std::lock_guard takes.
#pragma once

#include <mutex>

// A plain lock: the thread that holds it must not take it again.
//
// Threads: all operations may be called from any thread; unlock() only from the holder.
class xylMutex {
public:
	void lock() { mutex_.lock(); }
	void unlock() { mutex_.unlock(); }
	// Takes the lock if it is free, without waiting; true if it was taken.
	bool try_lock() { return mutex_.try_lock(); }

private:
	std::mutex mutex_;
};

// A lock that its holder may take again; it is free once unlocked as often as locked.
class xylRecursive_mutex {
public:
	void lock() { mutex_.lock(); }
	void unlock() { mutex_.unlock(); }
	// Takes the lock if it is free or already held by this thread, without waiting.
	bool try_lock() { return mutex_.try_lock(); }

private:
	std::recursive_mutex mutex_;
};
