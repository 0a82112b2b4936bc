// From a captured stack to its text, whole stacks of 33 frames and more. Raw text brings the module
// cache up to date, which is most of its time, and then formats; glibc's own looks each address up
// in the dynamic linker's tables, and knows no identities. The resolved text is of images whose
// symbol files are open already; platform/symbols_benchmark has what the first frame of a file
// costs.
#include <morvantis/diagnostics/zubcallstack.h>
#include <morvantis/diagnostics/zubdebughelp_interface.h>
#include <morvantis/diagnostics/zubraw_callstack.h>

#include <benchmark/benchmark.h>

#include <cstdlib>

#include <execinfo.h>

namespace {

constexpr int depth = 33;

// Calls `work` from `depth` functions deep.
template <typename Work> [[gnu::noinline]] void descend(int left, const Work& work) {
	if (left > 0) {
		descend(left - 1, work);
	} else {
		work();
	}
	benchmark::ClobberMemory(); // no jump instead of the call
}

void raw_text_ours(benchmark::State& state) {
	zubRaw_callstack stack;
	descend(depth, [&] { stack.capture(nullptr, 0); });
	for (auto _ : state) {
		const xylVarString text = stack.get_stack_str();
		benchmark::DoNotOptimize(text.char_p());
	}
	state.SetItemsProcessed(state.iterations() * stack.get_frame_count());
}

void raw_text_backtrace_symbols(benchmark::State& state) {
	void* addresses[128];
	int count = 0;
	descend(depth, [&] { count = backtrace(addresses, 128); });
	for (auto _ : state) {
		char** const texts = backtrace_symbols(addresses, count);
		benchmark::DoNotOptimize(texts);
		std::free(static_cast<void*>(texts));
	}
	state.SetItemsProcessed(state.iterations() * count);
}

void resolved_text_ours(benchmark::State& state) {
	zubDebughelp_interface engine;
	zub_debughelp_interface = &engine;
	engine.initialize();
	zubRaw_callstack raw;
	descend(depth, [&] { raw.capture(nullptr, 0); });
	raw.get_stack_str(); // fills the module cache
	zubCallstack stack;
	stack.resolve_from_raw(raw);
	for (auto _ : state) {
		stack.resolve_from_raw(raw);
		const xylVarString text = stack.get_stack_str();
		benchmark::DoNotOptimize(text.char_p());
	}
	state.SetItemsProcessed(state.iterations() * raw.get_frame_count());
	zub_debughelp_interface = nullptr;
}

BENCHMARK(raw_text_ours)->Name("raw_stack_text/ours");
BENCHMARK(raw_text_backtrace_symbols)->Name("raw_stack_text/backtrace_symbols");
BENCHMARK(resolved_text_ours)->Name("resolved_stack_text/ours");
BENCHMARK(raw_text_backtrace_symbols)->Name("resolved_stack_text/backtrace_symbols");

} // namespace
