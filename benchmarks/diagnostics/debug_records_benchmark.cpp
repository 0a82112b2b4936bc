// Debug drawing: what one record costs beside a plain push_back under the same kind of lock, and
// how fast whole sets are merged.

#include <morvantis/core/xyltimer.h>
#include <morvantis/diagnostics/xyldebug_render_records.h>

#include "shapes_step_by_step.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <mutex>

namespace {

constexpr int batch = 4096; // lines between two clear(), which keeps the memory

xylDebug_render_records& shared_records() {
	static xylDebug_render_records records;
	return records;
}

// The lock dominates; the record itself is 48 bytes written once.
void line_ours(benchmark::State& state) {
	xylDebug_render_records records;
	records.lines.reserve(batch);
	const xylVec3 start(1, 2, 3);
	const xylVec3 delta(4, 5, 6);
	for (auto _ : state) {
		for (int i = 0; i < batch; ++i) {
			records.add_debug_line(start, delta, xylColor::SOLID_RED, false, 1);
		}
		benchmark::DoNotOptimize(records.lines.data());
		records.clear();
	}
	state.SetItemsProcessed(state.iterations() * batch);
}
// A function that does nothing else, called as ours is.
[[gnu::noinline]] void push_line(xylRecursive_mutex& mutex, xylArray<Debug_line_record>& lines,
                                 const xylVec3& start, const xylVec3& delta, xylColor color,
                                 float duration) {
	const std::lock_guard<xylRecursive_mutex> lock(mutex);
	lines.push_back({start, delta, color, color, xylTimer::get_global_time(0), duration});
}
void line_push_back(benchmark::State& state) {
	xylRecursive_mutex mutex;
	xylArray<Debug_line_record> lines;
	lines.reserve(batch);
	const xylVec3 start(1, 2, 3);
	const xylVec3 delta(4, 5, 6);
	for (auto _ : state) {
		for (int i = 0; i < batch; ++i) {
			push_line(mutex, lines, start, delta, xylColor::SOLID_RED, 1);
		}
		benchmark::DoNotOptimize(lines.data());
		lines.clear();
	}
	state.SetItemsProcessed(state.iterations() * batch);
}
BENCHMARK(line_ours)->Name("debug_line/ours");
BENCHMARK(line_push_back)->Name("debug_line/push_back");

// Switched off: one byte is tested. The peer is the same test in a function of its own with the
// same arguments; what remains is that ours is called through the library's border.
struct Byte_test {
	[[gnu::noipa]] void add_line(const xylVec3&, const xylVec3&, xylColor, bool, float) {
		if (enabled) benchmark::ClobberMemory();
	}
	[[gnu::noipa]] void add_quad(const xylVec3*, int, xylColor, bool, bool) {
		if (enabled) benchmark::ClobberMemory();
	}
	volatile bool enabled = false;
};
void disabled_line_ours(benchmark::State& state) {
	xylDebug_render_records records;
	records.enabled = false;
	const xylVec3 v(1, 2, 3);
	for (auto _ : state) records.add_debug_line(v, v, 0xFFFF0000, false, 1);
}
void disabled_line_byte_test(benchmark::State& state) {
	Byte_test peer;
	const xylVec3 v(1, 2, 3);
	for (auto _ : state) peer.add_line(v, v, 0xFFFF0000, false, 1);
}
void disabled_quad_ours(benchmark::State& state) {
	xylDebug_render_records records;
	records.enabled = false;
	const xylVec3 corners[4] = {};
	for (auto _ : state) records.add_debug_quad_or_tri(corners, 4, 0xFFFF0000, false, false);
}
void disabled_quad_byte_test(benchmark::State& state) {
	Byte_test peer;
	const xylVec3 corners[4] = {};
	for (auto _ : state) peer.add_quad(corners, 4, 0xFFFF0000, false, false);
}
BENCHMARK(disabled_line_ours)->Name("debug_line_disabled/ours");
BENCHMARK(disabled_line_byte_test)->Name("debug_line_disabled/byte_test");
BENCHMARK(disabled_quad_ours)->Name("debug_quad_disabled/ours");
BENCHMARK(disabled_quad_byte_test)->Name("debug_quad_disabled/byte_test");

// Lines from several threads at once into one full set, so that only the way in is measured.
void contended_ours(benchmark::State& state) {
	xylDebug_render_records& records = shared_records();
	if (state.thread_index() == 0) {
		records.lines.resize(xylDebug_render_records::max_lines);
	}
	const xylVec3 v(1, 2, 3);
	for (auto _ : state) records.add_debug_line(v, v, xylColor::SOLID_RED, false, 1);
}
void contended_lock_alone(benchmark::State& state) {
	static xylRecursive_mutex mutex;
	for (auto _ : state) {
		const std::lock_guard<xylRecursive_mutex> lock(mutex);
		benchmark::ClobberMemory();
	}
}
BENCHMARK(contended_ours)->Name("debug_line_threads/ours")->Threads(4)->UseRealTime();
BENCHMARK(contended_lock_alone)->Name("debug_line_threads/lock_alone")->Threads(4)->UseRealTime();

// A set of 10,000 lines into one that has the memory: copying dominates.
constexpr size_t merged_lines = 10000;

void merge_ours(benchmark::State& state) {
	xylDebug_render_records from;
	xylDebug_render_records to;
	from.lines.resize(merged_lines);
	to.lines.reserve(merged_lines);
	for (auto _ : state) {
		to.clear();
		to.add_other_records_and_clear(from);
		benchmark::DoNotOptimize(to.lines.data());
		benchmark::ClobberMemory();
	}
}
void merge_memcpy(benchmark::State& state) {
	xylArray<Debug_line_record> from(merged_lines);
	xylArray<Debug_line_record> to(merged_lines);
	for (auto _ : state) {
		std::memcpy(static_cast<void*>(to.data()), from.data(),
		            merged_lines * sizeof(Debug_line_record));
		benchmark::DoNotOptimize(to.data());
		benchmark::ClobberMemory();
	}
}
BENCHMARK(merge_ours)->Name("merge_debug_lines/ours");
BENCHMARK(merge_memcpy)->Name("merge_debug_lines/memcpy");

// Round shapes beside the very same lines, added one by one. "lines" has them ready and only adds
// them; "steps" works them out as well, with the runtime's trigonometry for the sphere.
const xylVec3 apex(1, 2, 3);
const xylVec3 base(4, 6, 15);
const xylColor shape_color = xylColor::SOLID_RED;

template <void (*add)(xylDebug_render_records&)> void shape(benchmark::State& state) {
	xylDebug_render_records records;
	for (auto _ : state) {
		records.clear();
		add(records);
		benchmark::DoNotOptimize(records.lines.data());
		benchmark::ClobberMemory();
	}
}
template <void (*add)(xylDebug_render_records&)> void lines_of_shape(benchmark::State& state) {
	xylDebug_render_records records, ready;
	add(ready);
	for (auto _ : state) {
		records.clear();
		for (const Debug_line_record& line : ready.lines) {
			records.add_debug_line(line.start, line.delta, line.color_start, false, line.duration);
		}
		benchmark::DoNotOptimize(records.lines.data());
		benchmark::ClobberMemory();
	}
}

void sphere(xylDebug_render_records& r) { r.add_debug_sphere(apex, 2, shape_color, false, 1); }
void sphere_steps(xylDebug_render_records& r) { step_by_step::add_sphere(r, apex, 2, shape_color); }
void capsule(xylDebug_render_records& r) {
	r.add_debug_capsule(apex, base, 2, shape_color, false, 1);
}
void capsule_steps(xylDebug_render_records& r) {
	step_by_step::add_capsule(r, apex, base, 2, 2, 32, shape_color);
}
void cone(xylDebug_render_records& r) { r.add_debug_cone(apex, base, 2, shape_color, false, 1); }
void cone_steps(xylDebug_render_records& r) {
	step_by_step::add_cone(r, apex, base, 2, shape_color);
}
BENCHMARK(shape<sphere>)->Name("debug_sphere/ours");
BENCHMARK(lines_of_shape<sphere>)->Name("debug_sphere/lines");
BENCHMARK(shape<sphere_steps>)->Name("debug_sphere/steps");
BENCHMARK(shape<capsule>)->Name("debug_capsule/ours");
BENCHMARK(lines_of_shape<capsule>)->Name("debug_capsule/lines");
BENCHMARK(shape<capsule_steps>)->Name("debug_capsule/steps");
BENCHMARK(shape<cone>)->Name("debug_cone/ours");
BENCHMARK(lines_of_shape<cone>)->Name("debug_cone/lines");
BENCHMARK(shape<cone_steps>)->Name("debug_cone/steps");

} // namespace
