// Lets the threads of a test start at one moment.
#pragma once

#include <atomic>
#include <thread>

// Not std::latch: for a system without a wait on a word, GCC's run-time looks at the word before it
// takes the lock of its wait, misses the last arrival once in some ten thousand times, and waits
// for ever.
class Start_line {
public:
	explicit Start_line(int thread_count) : missing_(thread_count) {}
	// Comes back when all threads are here.
	void arrive_and_wait() {
		--missing_;
		while (missing_ > 0) std::this_thread::yield();
	}

private:
	std::atomic<int> missing_;
};
