// Functions that note from which line they were called, for tests of symbol files. Built several
// times, with different options; the places it notes are compared with what the symbol files say.
#include "known_code.h"

#include <csetjmp>
#include <cstdlib>

namespace {

Known_place* next_place;
std::jmp_buf way_out;
bool is_compared;

} // namespace

// Notes where its caller called it.
[[gnu::noinline]] static void note(const char* function, int line) {
	*next_place++ = {__builtin_return_address(0), function, line};
}

[[noreturn, gnu::noinline]] static void note_and_leave(const char* function, int line) {
	*next_place++ = {__builtin_return_address(0), function, line};
	std::longjmp(way_out, 1);
}

static volatile int counter; // written so that statements stay where they are

namespace known {

struct Walker {
	[[gnu::noinline]] int step(int distance) const {
		note("known::Walker::step", __LINE__);
		counter = distance;
		return distance + 1;
	}
	[[gnu::noinline]] void operator()(const char*) {
		note("known::Walker::operator()", __LINE__);
		counter = 2;
	}
};

template <typename T> [[gnu::noinline]] T twice(T value) {
	note("known::twice<int>", __LINE__);
	counter = 3;
	return value + value;
}

[[gnu::always_inline]] inline void inner_inlined(const char* function, int line) {
	counter = 4;
	note(function, line);
	counter = 5;
}

[[gnu::always_inline]] inline void outer_inlined(const char* function, int line) {
	counter = 6;
	inner_inlined(function, line);
	counter = 7;
}

[[gnu::noinline]] static void with_inlining() {
	counter = 8;
	outer_inlined("known::with_inlining", __LINE__);
	counter = 9;
	if (counter == 9) {
		volatile int scoped = 10;
		inner_inlined("known::with_inlining", __LINE__);
		counter = scoped;
	}
}

// The call is the function's last instruction.
[[noreturn, gnu::noinline]] static void never_returns() {
	counter = 11;
	note_and_leave("known::never_returns", __LINE__);
}

} // namespace known

static int compare(const void*, const void*) {
	if (!is_compared) note("compare", __LINE__); // sanitizers sort twice
	is_compared = true;
	counter = 12;
	return 0;
}

extern "C" [[gnu::visibility("default")]] int known_places(Known_place* places) {
	next_place = places;
	is_compared = false;
	note("known_places", __LINE__);
	counter = 13;
	known::Walker walker;
	counter = walker.step(1);
	walker("");
	counter = known::twice(4);
	known::with_inlining();
	int numbers[] = {1, 2};
	std::qsort(numbers, 2, sizeof(int), compare);
	if (setjmp(way_out) == 0) known::never_returns();
#ifdef OTHER_BUILD
	counter = 14; // one optimiser's levels may make the same code
#endif
	return static_cast<int>(next_place - places);
}
