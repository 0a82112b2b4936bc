// A growing array for the system layer, which stands below the heap and its containers.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <type_traits>

// Plain values side by side, in memory of the C runtime like all that the system's libraries hold.
// Not copyable. When memory is exhausted, push() says so and the array stays as it was.
template <typename T> class Plain_array {
	static_assert(std::is_trivially_copyable_v<T>);

public:
	Plain_array() = default;
	~Plain_array() { std::free(values_); }
	Plain_array(const Plain_array&) = delete;
	Plain_array& operator=(const Plain_array&) = delete;

	bool push(const T& value) {
		if (count_ == capacity_ && !grow()) return false;
		values_[count_++] = value;
		return true;
	}

	size_t size() const { return count_; }
	T& operator[](size_t index) { return values_[index]; }
	const T& operator[](size_t index) const { return values_[index]; }
	T* begin() { return values_; }
	T* end() { return values_ + count_; }
	const T* begin() const { return values_; }
	const T* end() const { return values_ + count_; }

private:
	bool grow() {
		const size_t capacity = capacity_ ? capacity_ * 2 : 16;
		T* const moved = static_cast<T*>(std::realloc(values_, capacity * sizeof(T)));
		if (!moved) return false;
		values_ = moved;
		capacity_ = capacity;
		return true;
	}

	T* values_ = nullptr;
	size_t count_ = 0;
	size_t capacity_ = 0;
};
