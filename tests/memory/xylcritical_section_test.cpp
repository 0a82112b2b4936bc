#include <morvantis/memory/xylcritical_section.h>
#include <morvantis/memory/xylmemory_allocation_critical_section_holder.h>

#include <gtest/gtest.h>

#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

using Holder = xylMemory_allocation_critical_section_holder;

namespace {

// The lock's state, in the system's own words: a lock that is taken has other bytes than a free
// one, and one that nobody waited for looks the same each time it is free.
std::vector<unsigned char> state_of(const xylCritical_section& lock) {
	std::vector<unsigned char> bytes(sizeof(lock));
	std::memcpy(bytes.data(), static_cast<const void*>(&lock), sizeof(lock));
	return bytes;
}

} // namespace

TEST(xylCritical_section, IsTheSystemsLockAlone) {
	EXPECT_EQ(sizeof(xylCritical_section), 40u);
	EXPECT_EQ(sizeof(Holder), 16u);
}

TEST(xylCritical_section, ShutsOtherThreadsOut) {
	for (const int spin_count : {0, 1, 4096}) {
		SCOPED_TRACE(spin_count);
		xylCritical_section lock(spin_count);
		long long sum = 0; // unprotected: lost additions show that two threads were inside
		std::vector<std::thread> workers;
		for (int t = 0; t < 4; ++t) {
			workers.emplace_back([&] {
				for (int i = 0; i < 20000; ++i) {
					const std::lock_guard guard(lock);
					sum = sum + 1;
				}
			});
		}
		for (std::thread& worker : workers) worker.join();
		EXPECT_EQ(sum, 80000);
	}
}

TEST(xylCritical_section, IsFreeOnceUnlockedAsOftenAsLocked) {
	xylCritical_section lock;
	const auto free = state_of(lock);
	lock.lock();
	const auto held = state_of(lock);
	EXPECT_NE(held, free);
	lock.lock();
	EXPECT_NE(state_of(lock), held);
	lock.unlock();
	EXPECT_EQ(state_of(lock), held);
	lock.unlock();
	EXPECT_EQ(state_of(lock), free);
}

TEST(xylCritical_section, AssignmentCopiesTheBytes) {
	xylCritical_section source(10), target(20);
	source.lock();
	const auto former = state_of(target);
	const auto expected = state_of(source);
	EXPECT_EQ(&(target = source), &target);
	EXPECT_EQ(state_of(target), expected);
	xylCritical_section& same = target;
	target = same;
	EXPECT_EQ(state_of(target), expected);
	// Both are ended as what they were made as.
	std::memcpy(static_cast<void*>(&target), former.data(), former.size());
	source.unlock();
}

TEST(xylMemory_allocation_critical_section_holder, HoldsTheLockForItsLifetime) {
	xylCritical_section lock;
	const auto free = state_of(lock);
	lock.lock();
	const auto held = state_of(lock);
	lock.unlock();
	{
		const Holder holder(lock, true);
		EXPECT_EQ(state_of(lock), held);
	}
	EXPECT_EQ(state_of(lock), free);
}

TEST(xylMemory_allocation_critical_section_holder, WithoutTheFlagNeitherEntersNorLeaves) {
	xylCritical_section lock;
	const auto free = state_of(lock);
	{
		const Holder holder(lock, false);
		EXPECT_EQ(state_of(lock), free);
	}
	lock.lock();
	const auto held = state_of(lock);
	{
		const Holder holder(lock, false);
	}
	EXPECT_EQ(state_of(lock), held);
	lock.unlock();
}
