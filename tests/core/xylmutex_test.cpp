#include <morvantis/core/xylmutex.h>

#include <gtest/gtest.h>

#include <mutex>
#include <thread>

namespace {

// Whether another thread finds the lock free.
template <typename Mutex> bool is_free(Mutex& mutex) {
	bool taken = false;
	std::thread([&] {
		taken = mutex.try_lock();
		if (taken) mutex.unlock();
	}).join();
	return taken;
}

// Two threads count with a plain int: one that the lock lets in at a time.
template <typename Mutex> int count_in_threads() {
	Mutex mutex;
	int count = 0;
	const auto add = [&] {
		for (int i = 0; i < 5000; ++i) {
			const std::lock_guard lock(mutex);
			++count;
		}
	};
	std::thread other(add);
	add();
	other.join();
	return count;
}

} // namespace

TEST(xylMutex, KeepsOthersOut) {
	xylMutex mutex;
	EXPECT_TRUE(is_free(mutex));
	mutex.lock();
	EXPECT_FALSE(is_free(mutex));
	mutex.unlock();
	EXPECT_TRUE(is_free(mutex));
	EXPECT_TRUE(mutex.try_lock());
	EXPECT_FALSE(is_free(mutex));
	mutex.unlock();
	EXPECT_EQ(count_in_threads<xylMutex>(), 10000);
}

TEST(xylRecursive_mutex, IsFreeOnceUnlockedAsOftenAsLocked) {
	xylRecursive_mutex mutex;
	mutex.lock();
	mutex.lock();
	EXPECT_TRUE(mutex.try_lock());
	for (int i = 0; i < 3; ++i) {
		EXPECT_FALSE(is_free(mutex));
		mutex.unlock();
	}
	EXPECT_TRUE(is_free(mutex));
	EXPECT_EQ(count_in_threads<xylRecursive_mutex>(), 10000);
}
