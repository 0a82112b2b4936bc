// A context that a walk has moved is one that the processor can go on with.
#include <morvantis/platform/system/unwind.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include <ucontext.h>

namespace {

ucontext_t moved;
unsigned int steps_to_take;
volatile int left_to_do;
std::string way;

// A frame that is left this way never cleans up the marks of the address sanitizer.
#define LEFT_WITHOUT_RETURN [[gnu::noinline, gnu::no_sanitize_address]]

// Takes its own context, moves it out of some frames and goes on there.
LEFT_WITHOUT_RETURN void leave(int a, int b, int c, int d) {
	getcontext(&moved);
	os::Unwind_step steps[8];
	EXPECT_EQ(os::walk_context(&moved, steps, steps_to_take), steps_to_take);
	way += "left ";
	setcontext(&moved);
	left_to_do = a + b + c + d; // never reached
	way += "stayed ";
}

// Keeps values across the call, which the compiler puts where a call preserves them.
LEFT_WITHOUT_RETURN void inner(int a, int b, int c, int d) {
	leave(a, b, c, d);
	way += "inner " + std::to_string(a + 10 * b + 100 * c + 1000 * d) + " ";
}

[[gnu::noinline]] void outer(int a, int b, int c, int d) {
	inner(1, 2, 3, 4);
	way += "outer " + std::to_string(a + 10 * b + 100 * c + 1000 * d) + " ";
}

} // namespace

TEST(Unwind, MovesAContextThatRunsOn) {
	struct Case {
		unsigned int steps;
		const char* way;
	};
	const Case cases[] = {{1, "left inner 4321 outer 8765 "}, {2, "left outer 8765 "}};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.steps);
		steps_to_take = c.steps;
		way.clear();
		outer(5, 6, 7, 8);
		EXPECT_EQ(way, c.way);
	}
}

TEST(Unwind, TakesNoMoreStepsThanThereIsRoomFor) {
	os::Unwind_step steps[4] = {};
	EXPECT_EQ(os::walk_callers(steps, 0), 0u);
	EXPECT_EQ(steps[0].pc, 0u);
	EXPECT_EQ(os::walk_callers(steps, 3), 3u);
	EXPECT_NE(steps[2].pc, 0u);
	EXPECT_EQ(steps[3].pc, 0u);
}

TEST(Unwind, LeavesAContextWithoutInstructionAlone) {
	ucontext_t context{}, before{};
	os::Unwind_step step;
	EXPECT_EQ(os::walk_context(&context, &step, 1), 0u);
	EXPECT_EQ(std::memcmp(&context, &before, sizeof(before)), 0);
}
