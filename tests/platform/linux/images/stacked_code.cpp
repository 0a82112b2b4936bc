// Functions that call each other, for tests that resolve whole stacks. Built several times, with
// different options.
#include "stacked_code.h"

#include <cstdlib>

namespace {

Stacked_call calls[16];
int call_count;
bool is_compared;
Visit_stack* visitor;
void* visitor_data;
volatile int counter; // written behind each call, so that none becomes a jump

} // namespace

// Makes a call that is known by function and line.
#define CALL(function, call)                                                                       \
	do {                                                                                           \
		calls[call_count++] = {function, __LINE__};                                                \
		call;                                                                                      \
		--call_count;                                                                              \
		counter = counter + 1;                                                                     \
	} while (0)

namespace stacked {

[[gnu::noinline]] static void innermost() {
	CALL("stacked::innermost", visitor(calls, call_count, visitor_data));
}

struct Walker {
	template <typename T> [[gnu::noinline]] void step(T steps) {
		if (steps == 0) {
			CALL("stacked::Walker::step<int>", innermost());
			return;
		}
		CALL("stacked::Walker::step<int>", step(steps - 1));
	}
};

// One more call that is no frame of its own, nor known as one.
[[gnu::always_inline]] inline void inlined(Walker& walker) {
	walker.step(2);
	counter = counter + 1;
}

[[gnu::noinline]] static void with_inlining() {
	Walker walker;
	CALL("stacked::with_inlining", inlined(walker));
}

static int compare(const void* a, const void* b) {
	if (!is_compared) CALL("stacked::compare", innermost()); // sanitizers sort twice
	is_compared = true;
	return *static_cast<const int*>(a) - *static_cast<const int*>(b);
}

[[gnu::noinline]] static void through_the_library() {
	int numbers[] = {2, 1};
	CALL("stacked::through_the_library", std::qsort(numbers, 2, sizeof(int), compare));
}

} // namespace stacked

extern "C" [[gnu::visibility("default")]] void run_stacks(Visit_stack* visit, void* data) {
	visitor = visit;
	visitor_data = data;
	call_count = 0;
	is_compared = false;
	CALL("run_stacks", stacked::innermost());
	CALL("run_stacks", stacked::with_inlining());
	CALL("run_stacks", stacked::through_the_library());
}
