// A program that crashes on purpose, with a host's handlers that write the dump.
//
// usage: crash_child <kind> <folder> [thread | alone]
//
// "thread": in a second thread; "alone": in a second thread, when the first has ended
#include "crash_handler.h"

#include <morvantis/diagnostics/zubraw_callstack.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

// Never true, but only we know: keeps the compiler from finding out how the functions end.
volatile bool returns = false;
int* volatile null_pointer = nullptr;

} // namespace

// Names to be found in the dump: with external linkage, and not inlined since each is called
// through the table.

void crash_by_null_write() { *null_pointer = 1; }

void crash_by_abort() {
	if (!returns) std::abort();
}

int crash_by_stack_overflow_at(volatile int* above) {
	volatile int here[256]{};
	here[0] = *above + 1;
	if (returns) return here[0];
	return crash_by_stack_overflow_at(here) + here[1];
}

void crash_by_stack_overflow() {
	volatile int start = 0;
	crash_by_stack_overflow_at(&start);
}

struct Pure_base {
	Pure_base() { call_too_early(); }
	virtual ~Pure_base() = default;
	virtual void overridden_below() = 0;
	void call_too_early();
};

void Pure_base::call_too_early() {
	Pure_base* volatile self = this;
	self->overridden_below();
}

struct Pure_derived : Pure_base {
	void overridden_below() override {}
};

void crash_by_pure_call() { const Pure_derived object; }

void crash_by_uncaught_exception() {
	if (!returns) throw std::runtime_error("nobody catches this");
}

// No crash: a dump in passing, and the process goes on.
void dump_in_passing() {
	write_dump_in_passing();
	std::_Exit(0); // the other thread still waits
}

namespace {

struct Kind {
	const char* name;
	void (*crash)();
};
constexpr Kind kinds[] = {
	{"null_write", crash_by_null_write},
	{"abort", crash_by_abort},
	{"stack_overflow", crash_by_stack_overflow},
	{"pure_call", crash_by_pure_call},
	{"uncaught_exception", crash_by_uncaught_exception},
	{"in_passing", dump_in_passing},
};

std::atomic<bool> is_waiting = false;

const char* crash_folder = nullptr; // for the dump and the stack
void (*chosen_crash)() = nullptr;

void crash_as_told() {
	install_crash_handler(crash_folder);
	chosen_crash();
}

} // namespace

void wait_in_another_thread() {
	is_waiting = true;
	// Holds no lock of the heap: the dump of Windows, which needs the heap, would wait for it.
	std::this_thread::sleep_for(std::chrono::hours(1));
	std::puts("never"); // behind the wait, so that it is no tail call
}

void write_raw_stack(void* context, const char* folder) {
	zubRaw_callstack stack;
	stack.capture(context, 0);
	std::ofstream(folder + std::string("/stack.txt")) << stack.get_stack_str().char_p();
}

int main(int count, char** arguments) {
	if (count < 3) return 2;
	crash_folder = arguments[2];
	for (const Kind& kind : kinds) {
		if (std::strcmp(kind.name, arguments[1]) == 0) chosen_crash = kind.crash;
	}
	if (!chosen_crash) return 2;
	std::thread(wait_in_another_thread).detach();
	while (!is_waiting) std::this_thread::yield();
	const std::string where = count > 3 ? arguments[3] : "here";
	if (where == "alone") end_first_thread(crash_as_told);
	if (where == "thread") {
		std::thread(crash_as_told).join();
	} else {
		crash_as_told();
	}
	return 2;
}
