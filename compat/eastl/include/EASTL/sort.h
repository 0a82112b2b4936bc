// Sorting of ranges with random access.
#pragma once

#include <EASTL/functional.h> // less

#include <algorithm>
#include <iterator>

namespace eastl {

// Sorts [first, last) by `compare`, a strict weak ordering. Equal elements may change places.
// O(n log n) comparisons at worst, in place.
template <typename RandomAccessIterator, typename Compare>
void quick_sort(RandomAccessIterator first, RandomAccessIterator last, Compare compare) {
	std::sort(first, last, compare);
}

// The same by less-than.
template <typename RandomAccessIterator>
void quick_sort(RandomAccessIterator first, RandomAccessIterator last) {
	quick_sort(first, last,
	           less<typename std::iterator_traits<RandomAccessIterator>::value_type>());
}

} // namespace eastl
