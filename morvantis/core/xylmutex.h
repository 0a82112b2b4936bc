// The library's two locks, in the shape that std::lock_guard takes.
#pragma once

#include <atomic>
#include <mutex>
#include <thread>

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
//
// A plain lock and a note of its holder, since the run-time's recursive one takes as long again for
// each further time.
class xylRecursive_mutex {
public:
	void lock() {
		if (is_held()) [[unlikely]] {
			++depth_;
			return;
		}
		mutex_.lock();
		holder_.store(std::this_thread::get_id(), std::memory_order_relaxed);
	}
	void unlock() {
		if (depth_ != 0) [[unlikely]] {
			--depth_;
			return;
		}
		holder_.store(std::thread::id(), std::memory_order_relaxed);
		mutex_.unlock();
	}
	// Takes the lock if it is free or already held by this thread, without waiting.
	bool try_lock() {
		if (is_held()) [[unlikely]] {
			++depth_;
			return true;
		}
		if (!mutex_.try_lock()) return false;
		holder_.store(std::this_thread::get_id(), std::memory_order_relaxed);
		return true;
	}

private:
	// Another thread may change the holder meanwhile, but never to or from this one.
	bool is_held() const {
		return holder_.load(std::memory_order_relaxed) == std::this_thread::get_id();
	}

	std::mutex mutex_;
	std::atomic<std::thread::id> holder_{}; // no thread while it is free
	int depth_ = 0;                         // how often the holder took it beyond the first time
};
