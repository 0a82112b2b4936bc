// Stacks of this process, resolved for real; every answer that can be made up is in
// scripted_callstack_test.cpp.

#include "expected_leaks.h"
#include "start_line.h"

#include <morvantis/diagnostics/zubcallstack.h>
#include <morvantis/diagnostics/zubcallstack_helpers.h>
#include <morvantis/diagnostics/zubdebughelp_interface.h>
#include <morvantis/diagnostics/zubraw_callstack.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

struct Counters {
	unsigned long long addresses[64] = {};
	unsigned long long hash = 0;
	bool result = false;
	unsigned int size() const {
		return static_cast<unsigned int>(std::find(addresses, addresses + 64, 0u) - addresses);
	}
};

[[gnu::noinline]] Counters capture(unsigned int max_count, unsigned int skip_count) {
	Counters counters;
	counters.result =
		zubCallstack::capture_counters(counters.addresses, &counters.hash, max_count, skip_count);
	return counters;
}

// The same, and where the caller of this function goes on.
[[gnu::noinline]] Counters capture_and_tell(unsigned int skip_count, unsigned long long& caller) {
	caller = reinterpret_cast<size_t>(__builtin_return_address(0));
	return capture(6, skip_count);
}

} // namespace

class Real_callstack_test : public testing::Test {
protected:
	Real_callstack_test() { zub_debughelp_interface = &engine_; }
	~Real_callstack_test() override {
		zub_debughelp_interface = nullptr;
		zubCallstack_helpers::clear_module_cache();
	}
	zubDebughelp_interface engine_;
};

static_assert(std::is_copy_constructible_v<zubCallstack> &&
              std::is_copy_assignable_v<zubCallstack>);

TEST_F(Real_callstack_test, EmptyStackHasASentenceOfItsOwn) {
	const zubCallstack stack;
	EXPECT_EQ(stack.get_frame_count(), 0u);
	EXPECT_STREQ(stack.get_stack_str().char_p(), "No native frames available.\n");
}

TEST_F(Real_callstack_test, CaptureTakesTheLoadedImagesInAndHasALineForEachFrame) {
	EXPECT_TRUE(zubCallstack_helpers::Modules.empty());
	zubCallstack stack;
	stack.capture(nullptr, 0);
	EXPECT_FALSE(zubCallstack_helpers::Modules.empty());
	EXPECT_GT(stack.get_frame_count(), 3u);
	std::string text;
	for (const xylVarString& line : stack.get_stack()) {
		EXPECT_TRUE(line.begins_with("#") || line.begins_with("@")) << line.char_p();
		text += std::string(line.char_p()) + "\n";
	}
	EXPECT_EQ(stack.get_stack_str().char_p(), text);

	const unsigned int before = stack.get_frame_count();
	stack.capture(nullptr, 2);
	EXPECT_EQ(stack.get_frame_count(), before - 2); // and none of the old lines
	stack.capture(nullptr, zubCallstack_helpers::callstack_max_depth);
	EXPECT_EQ(stack.get_frame_count(), 0u);
}

// All resolve the same frames, whose lines must come out the same; the thread sanitizer looks on.
TEST_F(Real_callstack_test, ResolvesOnSeveralThreadsWaitForEachOther) {
	engine_.initialize();
	zubRaw_callstack raw;
	raw.capture(nullptr, 0);
	ASSERT_TRUE(zubCallstack_helpers::enumerate_modules(nullptr));
	constexpr int thread_count = 8;
	zubCallstack stacks[thread_count];
	Start_line start(thread_count);
	std::vector<std::thread> threads;
	for (zubCallstack& stack : stacks) {
		threads.emplace_back([&] {
			start.arrive_and_wait();
			for (int i = 0; i < 3; ++i) EXPECT_TRUE(stack.resolve_from_raw(raw));
		});
	}
	for (std::thread& thread : threads) thread.join();
	EXPECT_EQ(stacks[0].get_frame_count(), raw.stack.size());
	for (const zubCallstack& stack : stacks) {
		EXPECT_STREQ(stack.get_stack_str().char_p(), stacks[0].get_stack_str().char_p());
	}
}

TEST_F(Real_callstack_test, CountersEndInZeroAndNeedASlotForIt) {
	const Counters none = capture(1, 0);
	EXPECT_FALSE(none.result);
	EXPECT_EQ(none.addresses[0], 0u);
	EXPECT_EQ(none.hash, 0u);
	const Counters one = capture(2, 0);
	EXPECT_TRUE(one.result);
	EXPECT_NE(one.addresses[0], 0u);
	EXPECT_EQ(one.size(), 1u);
	EXPECT_NE(one.hash, 0u);
	const Counters too_deep = capture(64, 1000000);
	EXPECT_FALSE(too_deep.result);
	EXPECT_EQ(too_deep.addresses[0], 0u);
	EXPECT_EQ(too_deep.hash, 0u);
}

// Behind it come those of the two functions above and of the test.
TEST_F(Real_callstack_test, FirstFrameIsTheCapturesOwn) {
	for (unsigned int skip = 0; skip <= 3; ++skip) {
		unsigned long long caller = 0;
		const Counters counters = capture_and_tell(skip, caller);
		EXPECT_EQ(counters.addresses[3 - skip], caller) << skip;
	}
}

TEST_F(Real_callstack_test, SkippedFramesAreTheInnermost) {
	Counters counters[3];
	for (unsigned int skip = 0; skip < 3; ++skip) counters[skip] = capture(6, skip);
	for (const int i : {1, 2, 3}) {
		EXPECT_EQ(counters[1].addresses[i - 1], counters[0].addresses[i]);
		EXPECT_EQ(counters[2].addresses[i - 1], counters[1].addresses[i]);
	}
	EXPECT_NE(counters[0].hash, counters[1].hash);
}

TEST_F(Real_callstack_test, SameStackHasTheSameHash) {
	Counters counters[2];
	for (Counters& each : counters) each = capture(6, 0);
	EXPECT_TRUE(std::equal(std::begin(counters[0].addresses), std::end(counters[0].addresses),
	                       std::begin(counters[1].addresses)));
	EXPECT_EQ(counters[0].hash, counters[1].hash);
	EXPECT_NE(counters[0].hash, 0u);
}

TEST_F(Real_callstack_test, CountersAreNotResolvedWithoutTheEngine) {
	Counters counters = capture(6, 0);
	std::string out = "from before";
	EXPECT_FALSE(zubCallstack::resolve_counters(counters.addresses, 6, out));
	EXPECT_EQ(out, "from before");
}
