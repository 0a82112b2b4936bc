// Appends to the lists of debug records that don't pay for each record on its own.
#pragma once

#include <morvantis/core/xyltimer.h>
#include <morvantis/diagnostics/xyldebug_render_records.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstring>
#include <mutex> // lock_guard

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

// Writes lines of one colour one after the other, all in registers: each is three stores.
class Line_writer {
public:
	Line_writer() = default; // writes nowhere
	Line_writer(Debug_line_record* first, xylColor color, float time_stamp, float duration)
		: next_(first), rest_(_mm_setr_ps(std::bit_cast<float>(color), std::bit_cast<float>(color),
	                                      time_stamp, duration)) {}

	// The fourth lane of a point is the marker, that of a delta 0.
	void add(__m128 start, __m128 delta) {
		const __m128 marker_alone = _mm_set_ps(xyl_lanes::marker, 0, 0, 0);
		_mm_store_ps(&next_->start.x, start);
		_mm_store_ps(&next_->delta.x, _mm_or_ps(delta, marker_alone));
		std::memcpy(static_cast<void*>(&next_->color_start), &rest_, sizeof(rest_));
		++next_;
	}
	// The line between two points.
	void connect(__m128 from, __m128 to) { add(from, _mm_sub_ps(to, from)); }
	// Leaves the next `count` lines to the writer that comes back.
	Line_writer leave(size_t count) {
		const Line_writer result = *this;
		next_ += count;
		return result;
	}

private:
	Debug_line_record* next_ = nullptr;
	__m128 rest_ = _mm_setzero_ps(); // the two colours, the time stamp and the duration
};

// The lines of one shape, which go into their list by the batch. The lock is held while it lives.
//
// What comes out is what add_debug_line() (or, with its limit, add_debug_line_double_color()) would
// have stored one by one.
class Line_batch {
public:
	Line_batch(xylDebug_render_records& records, bool selector, float duration,
	           unsigned int limit = xylDebug_render_records::max_lines)
		: lock_(records.mutex), records_(records), list_(line_list(records, selector)),
		  limit_(limit), time_stamp_(time_stamp()), duration_(duration) {}
	~Line_batch() { flush(); }
	Line_batch(const Line_batch&) = delete;
	Line_batch& operator=(const Line_batch&) = delete;

	void add(const xylVec3& start, const xylVec3& delta, xylColor color) {
		add(start, delta, color, color);
	}
	void add(const xylVec3& start, const xylVec3& delta, xylColor color_start, xylColor color_end) {
		if (count_ == capacity) flush();
		waiting_[count_++] = {start, delta, color_start, color_end, time_stamp_, duration_};
	}
	// The line between two points.
	void connect(const xylVec3& from, const xylVec3& to, xylColor color) {
		add(from, to - from, color);
	}
	// Where the next `count` lines go, at most `capacity` of them. All must be written before
	// anything else is done with the batch.
	Line_writer take(size_t count, xylColor color) {
		if (count_ + count > capacity) flush();
		Debug_line_record* const first = waiting_ + count_;
		count_ += count;
		return {first, color, time_stamp_, duration_};
	}
	// Whether further lines would all be dropped, as the list is full.
	bool is_full() const { return list_.size() + count_ >= limit_; }

	static constexpr size_t capacity = 42; // two rows of the sphere, 2 KiB

private:
	void flush() {
		if (list_.size() < limit_ && is_enabled(records_)) {
			const size_t room = limit_ - list_.size();
			make_room(list_, std::min(count_, room));
			list_.insert(list_.end(), waiting_, waiting_ + std::min(count_, room));
		}
		count_ = 0;
	}

	const std::lock_guard<xylRecursive_mutex> lock_;
	xylDebug_render_records& records_;
	xylArray<Debug_line_record>& list_;
	const size_t limit_;
	const float time_stamp_;
	const float duration_;
	size_t count_ = 0;
	Debug_line_record waiting_[capacity];
};

// `axis` is of unit length, the angle given by its cosine and sine. Rodrigues' formula:
// v·cos + (axis × v)·sin + axis·(axis·v)·(1 − cos), summed from left to right.
// The fourth lanes are 0, and so is that of the result.
inline __m128 rotate_around_axis(__m128 v, __m128 axis, float cosine, float sine) {
	using namespace xyl_lanes;
	const __m128 across = _mm_mul_ps(cross(axis, v), _mm_set1_ps(sine));
	const __m128 along = _mm_mul_ss(dot(axis, v), _mm_set_ss(1.0f - cosine));
	const __m128 turned = _mm_add_ps(_mm_mul_ps(v, _mm_set1_ps(cosine)), across);
	return _mm_add_ps(turned,
	                  _mm_mul_ps(axis, with_zero(splat<0>(along)))); // along may be infinite
}
inline xylVec3 rotate_around_axis(const xylVec3& v, const xylVec3& axis, float cosine, float sine) {
	using namespace xyl_lanes;
	return xylVec3::from_lanes(with_marker(
		rotate_around_axis(with_zero(v.lanes()), with_zero(axis.lanes()), cosine, sine)));
}

} // namespace debug_records
