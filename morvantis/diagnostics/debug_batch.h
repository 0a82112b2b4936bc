// Appends to the lists of debug records that don't pay for each record on its own.
#pragma once

#include <morvantis/core/xyltimer.h>
#include <morvantis/diagnostics/xyldebug_render_records.h>

#include <algorithm>
#include <atomic>

namespace debug_records {

// A host may switch a set on and off while others add to it, hence the atomic access: it compiles
// to the same test of one byte.
inline bool is_enabled(xylDebug_render_records& records) {
	return std::atomic_ref<bool>(records.enabled).load(std::memory_order_relaxed);
}

inline float time_stamp() { return xylTimer::get_global_time(xylTimer::real_timer_no__); }

inline xylArray<Debug_line_record>& line_list(xylDebug_render_records& records, bool selector) {
	return selector ? records.lines_alternate : records.lines;
}

// Makes room for `addition` more elements in the steps that single appends would take.
template <typename T> void make_room(xylArray<T>& list, size_t addition) {
	const size_t needed = list.size() + addition;
	if (needed <= list.capacity()) return;
	size_t capacity = std::max<size_t>(list.capacity(), 1);
	while (capacity < needed) capacity *= 2;
	list.reserve(static_cast<eastl_size_t>(capacity));
}

// Appends copies of `count` elements, which may be the list's own first ones.
template <typename T, typename Source>
void append(xylArray<T>& list, const Source& source, size_t count) {
	make_room(list, count);
	list.insert(list.end(), source.data(), source.data() + count);
}

} // namespace debug_records
