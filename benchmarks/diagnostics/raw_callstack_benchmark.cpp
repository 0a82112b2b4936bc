// Walks of 33 frames: warm, from a context, and through code that was not walked before; beside the
// C library's, the compiler's and libunwind's. The last is loaded and not linked, since it would
// put itself in place of the other two.
#include <morvantis/diagnostics/zubcallstack_helpers.h>
#include <morvantis/diagnostics/zubraw_callstack.h>

#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <cstdlib> // free
#include <utility>

#include <dlfcn.h>
#include <execinfo.h>
#include <ucontext.h>
#include <unwind.h>

namespace {

constexpr unsigned int wanted_frames = 33;
// More return addresses than the library remembers.
constexpr size_t function_count = 8192;

// Functions that call one another in a circle until the depth is reached, each with a return
// address of its own. They are called by way of memory, or the compiler would make one out of
// several.
struct Descent {
	void (*work)(void* data);
	void* data;
	unsigned int left;
	void (*const* links)(Descent&);
	size_t returned = 0;
};
using Link = void (*)(Descent&);

template <size_t index> void link(Descent& descent) {
	if (--descent.left == 0)
		descent.work(descent.data);
	else
		descent.links[(index + 1) % function_count](descent);
	descent.returned += index + 1;
}

template <size_t... indexes>
constexpr std::array<Link, function_count> make_links(std::index_sequence<indexes...>) {
	return {link<indexes>...};
}
const std::array<Link, function_count> links =
	make_links(std::make_index_sequence<function_count>());

template <typename Work> void run_deep(size_t first, unsigned int depth, Work& work) {
	const auto call = [](void* data) { (*static_cast<Work*>(data))(); };
	const Link* table = links.data();
	benchmark::DoNotOptimize(table);
	Descent descent{call, &work, depth, table};
	table[first % function_count](descent);
	benchmark::DoNotOptimize(descent.returned);
}

// How many links make a stack of 33 frames out of the one that is there.
unsigned int missing_depth() {
	zubRaw_callstack stack;
	unsigned int frames = 0;
	auto count = [&] {
		stack.capture(nullptr, 0);
		frames = stack.get_frame_count();
	};
	run_deep(0, 1, count);
	return frames < wanted_frames ? wanted_frames - frames + 1 : 1;
}

struct Ours {
	zubRaw_callstack stack;
	void operator()() { stack.capture(nullptr, 0); }
	double frames() const { return stack.get_frame_count(); }
};

struct C_library {
	void* addresses[128];
	int count = 0;
	void operator()() { count = backtrace(addresses, 128); }
	double frames() const { return count; }
};

struct Compiler {
	void* addresses[128];
	int count = 0;
	void operator()() {
		count = 0;
		_Unwind_Backtrace(
			[](_Unwind_Context* context, void* data) {
				auto& self = *static_cast<Compiler*>(data);
				if (self.count == 128) return _URC_END_OF_STACK;
				self.addresses[self.count++] = reinterpret_cast<void*>(_Unwind_GetIP(context));
				return _URC_NO_REASON;
			},
			this);
	}
	double frames() const { return count; }
};

struct Libunwind {
	void* addresses[128];
	int count = 0;
	int (*unw_backtrace)(void**, int) = nullptr;
	Libunwind() {
		void* const library = dlopen("libunwind.so.8", RTLD_NOW | RTLD_LOCAL);
		void* const symbol = library ? dlsym(library, "unw_backtrace") : nullptr;
		unw_backtrace = reinterpret_cast<int (*)(void**, int)>(symbol);
	}
	void operator()() { count = unw_backtrace ? unw_backtrace(addresses, 128) : 0; }
	double frames() const { return count; }
};

template <typename Walker> void walk_warm(benchmark::State& state) {
	Walker walker;
	auto measure = [&] {
		for (auto _ : state) walker();
	};
	run_deep(0, missing_depth(), measure);
	state.counters["frames"] = walker.frames();
	if (walker.frames() == 0) state.SkipWithError("libunwind.so.8 is not installed");
}
BENCHMARK(walk_warm<Ours>)->Name("walk_warm/ours");
BENCHMARK(walk_warm<C_library>)->Name("walk_warm/backtrace");
BENCHMARK(walk_warm<Libunwind>)->Name("walk_warm/unw_backtrace");

// The walk changes the context, so each begins with a copy of its registers.
void walk_context(benchmark::State& state) {
	zubRaw_callstack stack;
	auto measure = [&] {
		ucontext_t start, context;
		getcontext(&start);
		context = start;
		for (auto _ : state) {
			context.uc_mcontext = start.uc_mcontext;
			stack.capture(&context, 0);
		}
	};
	run_deep(0, missing_depth(), measure);
	state.counters["frames"] = stack.get_frame_count();
}
BENCHMARK(walk_context)->Name("walk_context/ours");
BENCHMARK(walk_warm<C_library>)->Name("walk_context/backtrace");

// Another 30 or so functions for each walk; the calls that lead there are part of it.
template <typename Walker> void walk_unseen(benchmark::State& state) {
	Walker walker;
	const unsigned int depth = missing_depth();
	size_t first = 0;
	for (auto _ : state) run_deep(first += depth, depth, walker);
	state.counters["frames"] = walker.frames();
}
BENCHMARK(walk_unseen<Ours>)->Name("walk_unseen/ours");
BENCHMARK(walk_unseen<Compiler>)->Name("walk_unseen/_Unwind_Backtrace");

// One line of text per frame. Cold, the images of the process are listed and their identities read
// first.
template <bool is_cold> void stack_text(benchmark::State& state) {
	zubRaw_callstack stack;
	auto capture = [&] { stack.capture(nullptr, 0); };
	run_deep(0, missing_depth(), capture);
	for (auto _ : state) {
		if (is_cold) zubCallstack_helpers::clear_module_cache();
		benchmark::DoNotOptimize(stack.get_stack_str());
	}
	state.counters["frames"] = stack.get_frame_count();
}
BENCHMARK(stack_text<false>)->Name("stack_text/ours");
BENCHMARK(stack_text<true>)->Name("stack_text_cold/ours");

// What the C library makes of the same stack: names of exported functions where there are any.
void stack_text_of_c_library(benchmark::State& state) {
	C_library walker;
	run_deep(0, missing_depth(), walker);
	for (auto _ : state) {
		char** const lines = backtrace_symbols(walker.addresses, walker.count);
		benchmark::DoNotOptimize(lines);
		std::free(lines);
	}
	state.counters["frames"] = walker.count;
}
BENCHMARK(stack_text_of_c_library)->Name("stack_text/backtrace_symbols");
BENCHMARK(stack_text_of_c_library)->Name("stack_text_cold/backtrace_symbols");

} // namespace
