// The lock and its holder over a system lock that writes down what is asked of it.

#include <morvantis/memory/xylcritical_section.h>
#include <morvantis/memory/xylmemory_allocation_critical_section_holder.h>
#include <morvantis/platform/system/lock.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;
using Holder = xylMemory_allocation_critical_section_holder;

namespace {

std::vector<std::string> calls;

std::vector<std::string> take() { return std::exchange(calls, {}); }

} // namespace

void os::create_lock(void* storage, int spin_count) {
	std::memset(storage, spin_count & 0xff, lock_size);
	calls.push_back("create " + std::to_string(spin_count));
}
void os::destroy_lock(void*) { calls.push_back("destroy"); }
void os::enter_lock(void*) { calls.push_back("enter"); }
void os::leave_lock(void*) { calls.push_back("leave"); }

TEST(xylCritical_section, MakesAndEndsOneLockWithItsSpinCount) {
	{
		const xylCritical_section lock;
	}
	EXPECT_THAT(take(), ElementsAre("create 4096", "destroy"));
	{
		const xylCritical_section lock(0);
	}
	EXPECT_THAT(take(), ElementsAre("create 0", "destroy"));
	{
		const xylCritical_section lock(-1);
	}
	EXPECT_THAT(take(), ElementsAre("create -1", "destroy"));
}

TEST(xylCritical_section, LocksAndUnlocksTheSystemsLock) {
	xylCritical_section lock;
	take();
	lock.lock();
	EXPECT_THAT(take(), ElementsAre("enter"));
	lock.unlock();
	EXPECT_THAT(take(), ElementsAre("leave"));
}

TEST(xylCritical_section, AssignmentAsksNothingOfTheSystem) {
	{
		xylCritical_section source(1), target(2);
		take();
		target = source;
		EXPECT_THAT(take(), IsEmpty());
		EXPECT_EQ(std::memcmp(static_cast<void*>(&target), static_cast<void*>(&source), 40), 0);
	}
	EXPECT_THAT(take(), ElementsAre("destroy", "destroy"));
	EXPECT_FALSE(std::is_copy_constructible_v<xylCritical_section>);
}

TEST(xylMemory_allocation_critical_section_holder, LocksOnceAndOnlyWhenTold) {
	xylCritical_section lock;
	take();
	{
		const Holder holder(lock, true);
		EXPECT_THAT(take(), ElementsAre("enter"));
	}
	EXPECT_THAT(take(), ElementsAre("leave"));
	{
		const Holder holder(lock, false);
	}
	EXPECT_THAT(take(), IsEmpty());
}
