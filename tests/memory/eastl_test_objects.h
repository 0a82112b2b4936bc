// What the tests of the containers share: elements and allocators that are counted.
#pragma once

#include <morvantis/memory/xylheap.h>

#include <compare>
#include <utility>

// An element that counts how many are alive and how they were made.
struct Counted {
	Counted(int number = 0) : value(number) { ++alive; }
	Counted(const Counted& other) : value(other.value) {
		++alive;
		++copies;
	}
	Counted(Counted&& other) noexcept : value(std::exchange(other.value, -1)) { ++alive; }
	Counted& operator=(const Counted& other) = default;
	Counted& operator=(Counted&& other) noexcept {
		value = std::exchange(other.value, -1);
		return *this;
	}
	~Counted() { --alive; }
	auto operator<=>(const Counted&) const = default;

	int value; // -1 once moved from
	static inline int alive = 0;
	static inline int copies = 0;
};

// An allocator of EASTL's shape that counts; each copy of it counts in the same place.
struct Counting_allocator {
	struct Counts {
		int allocations = 0;
		int blocks = 0; // that are not given back
		size_t bytes = 0;
		size_t last_alignment = 0; // 0: the plain form was called
	};
	explicit Counting_allocator(Counts* where = nullptr) : counts(where) {}
	void* allocate(size_t n, int = 0) { return allocate(n, 0, 0); }
	void* allocate(size_t n, size_t alignment, size_t, int = 0) {
		++counts->allocations;
		++counts->blocks;
		counts->bytes += n;
		counts->last_alignment = alignment;
		return xyl_heap_allocate_aligned(n, alignment ? alignment : 16);
	}
	void deallocate(void* p, size_t n) {
		--counts->blocks;
		counts->bytes -= n;
		xyl_heap_free(p);
	}
	bool operator==(const Counting_allocator&) const = default;
	Counts* counts;
};
