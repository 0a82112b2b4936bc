// The two odd sums of the allocators, apart from them so that they can be tested with sizes
// that no test can allocate.
#pragma once

#include <morvantis/core/xyltypes.h> // size_t

#include <algorithm>

// What a block of `usable` bytes counts as: itself up to 2 MiB, and above in units of 4 MiB.
//
// kept: an exact multiple of 4 MiB counts one unit more.
constexpr size_t counted_allocation_size(size_t usable) {
	constexpr size_t unit = size_t{4} << 20;
	return usable <= unit / 2 ? usable : (usable & ~(unit - 1)) + unit;
}

// How many bytes a reallocation that moves copies: the smaller size.
//
// kept: compared as signed 32-bit numbers, so that from 2 GiB up only the low bits count. A
// negative result copies nothing.
constexpr size_t copied_allocation_size(size_t new_size, size_t old_size) {
	const xylInt32 size =
		std::min(static_cast<xylInt32>(new_size), static_cast<xylInt32>(old_size));
	return size > 0 ? static_cast<size_t>(size) : 0;
}
