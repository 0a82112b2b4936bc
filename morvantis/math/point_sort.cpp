// Points become 64-bit keys that compare as the points do. A comparison sort of random points
// spends most of its time on mispredicted branches, so neither of the two sorts here has a branch
// on a key: a few keys are merged, many are distributed by the bytes of x. Of the time of
// eastl::quick_sort on the very same keys that is 0.3 for 8 keys and 0.45 for 100 (merged), 0.2
// for 1,000 (distributed).

#include <morvantis/math/point_sort.h>

#include <morvantis/core/xyltypes.h>
#include <morvantis/memory/xylarray.h>

#include <EASTL/sort.h>

#include <algorithm>
#include <bit>

namespace {

using Key = xylUInt64; // x in the upper half, y in the lower

constexpr xylUInt32 sign = 0x80000000;
constexpr xylUInt32 negative_zero = 0x7FFFFFFF; // as a half of a key; 0 follows it
constexpr xylUInt32 zero = 0x80000000;

// Rises with the number: negative ones are turned upside down and stand below the others.
xylUInt32 ordered(float number) {
	const xylUInt32 bits = std::bit_cast<xylUInt32>(number);
	return bits ^ ((0 - (bits >> 31)) | sign);
}
float number_of(xylUInt32 half) { return std::bit_cast<float>(half ^ (((half >> 31) - 1) | sign)); }

Key key_of(const xylVec2& point) {
	return static_cast<Key>(ordered(point.x)) << 32 | ordered(point.y);
}
xylUInt32 upper_half(Key key) { return static_cast<xylUInt32>(key >> 32); }
xylUInt32 lower_half(Key key) { return static_cast<xylUInt32>(key); }

// Where the run of keys that starts at `first` and has one x ends.
Key* end_of_run(Key* first, const Key* last) {
	const xylUInt32 x = upper_half(*first);
	while (first != last && upper_half(*first) == x) ++first;
	return first;
}

// For keys in order: the keys with x = -0 stand before those with x = 0, though the numbers are
// equal, so both are sorted by y alone.
void join_zeros(Key* first, Key* last) {
	const auto is_below = [](Key key, xylUInt32 half) { return upper_half(key) < half; };
	Key* const negative = std::lower_bound(first, last, negative_zero, is_below);
	if (negative == last || upper_half(*negative) != negative_zero) return;
	Key* const positive = end_of_run(negative, last);
	if (positive == last || upper_half(*positive) != zero) return;
	eastl::quick_sort(negative, end_of_run(positive, last),
	                  [](Key a, Key b) { return lower_half(a) < lower_half(b); });
}

// --- A few keys

constexpr std::size_t few = 128; // beyond that distribution is faster; a power of two
constexpr std::size_t block = 8;

// The place of each key is the number of those before it.
void sort_block(Key* keys) {
	xylUInt32 places[block] = {};
	for (xylUInt32 i = 1; i < block; ++i) {
		for (xylUInt32 j = 0; j < i; ++j) {
			const xylUInt32 is_after = keys[j] <= keys[i];
			places[i] += is_after;
			places[j] += 1 - is_after;
		}
	}
	Key sorted[block];
	for (std::size_t i = 0; i < block; ++i) sorted[places[i]] = keys[i];
	std::copy_n(sorted, block, keys);
}

// Two sorted runs of `width` keys become one, from both its ends at once: so neither run is used
// up before the last step.
void merge(const Key* runs, std::size_t width, Key* to) {
	const Key* left = runs;
	const Key* right = runs + width;
	const Key* left_last = right - 1;
	const Key* right_last = right + width - 1;
	Key* to_last = to + 2 * width - 1;
	for (std::size_t i = 0; i < width; ++i) {
		const bool is_right_lower = *right < *left;
		*to++ = is_right_lower ? *right : *left;
		right += is_right_lower;
		left += !is_right_lower;
		const bool is_left_higher = *right_last < *left_last;
		*to_last-- = is_left_higher ? *left_last : *right_last;
		left_last -= is_left_higher;
		right_last -= !is_left_higher;
	}
}

// Both arrays have room for `few` keys; what follows the first `count` is overwritten.
// Returns where the sorted keys are: `keys` or `spare`.
Key* sort_by_merging(Key* keys, Key* spare, std::size_t count) {
	const std::size_t size = std::max(block, std::bit_ceil(count));
	std::fill(keys + count, keys + size, ~Key{0}); // not below any key
	for (std::size_t i = 0; i < count; i += block) sort_block(keys + i);
	for (std::size_t width = block; width < size; width *= 2) {
		for (std::size_t i = 0; i < size; i += 2 * width) {
			if (i + width < count) {
				merge(keys + i, width, spare + i);
			} else {
				std::copy_n(keys + i, 2 * width, spare + i); // the right half has no key
			}
		}
		std::swap(keys, spare);
	}
	return keys;
}

// --- Many keys

constexpr int digits = 4; // bytes of x, from the lowest
constexpr int digit_values = 256;

xylUInt32 digit_of(Key key, int digit) { return (key >> (32 + 8 * digit)) & 0xFF; }

struct Histograms {
	Histograms(const Key* keys, std::size_t count) {
		for (std::size_t i = 0; i < count; ++i) {
			for (int d = 0; d < digits; ++d) ++at[d][digit_of(keys[i], d)];
		}
	}
	xylUInt32 at[digits][digit_values] = {};
};

// Moves the keys over, in order of one digit and otherwise as they stand. `places` has how many
// there are of each value, and is used up.
void distribute(const Key* from, Key* to, std::size_t count, int digit, xylUInt32* places) {
	xylUInt32 place = 0;
	for (int value = 0; value < digit_values; ++value) {
		const xylUInt32 next = place + places[value];
		places[value] = place;
		place = next;
	}
	for (std::size_t i = 0; i < count; ++i) to[places[digit_of(from[i], digit)]++] = from[i];
}

// Sorts by x, digit by digit from the lowest, and runs of one x on their own.
// Returns where the keys then are: `keys` or `spare`.
Key* sort_by_digits(Key* keys, Key* spare, std::size_t count) {
	Histograms histograms(keys, count);
	for (int digit = 0; digit < digits; ++digit) {
		xylUInt32* const places = histograms.at[digit];
		if (places[digit_of(keys[0], digit)] == count) continue; // all have the same
		distribute(keys, spare, count, digit, places);
		std::swap(keys, spare);
	}
	Key* const last = keys + count;
	for (Key* first = keys; first != last;) {
		Key* const end = end_of_run(first, last);
		if (end - first > 1) eastl::quick_sort(first, end);
		first = end;
	}
	return keys;
}

void read_keys(const xylVec2* points, std::size_t count, Key* keys) {
	for (std::size_t i = 0; i < count; ++i) keys[i] = key_of(points[i]);
}
void write_points(Key* keys, std::size_t count, xylVec2* points) {
	join_zeros(keys, keys + count);
	for (std::size_t i = 0; i < count; ++i) {
		points[i] = {number_of(upper_half(keys[i])), number_of(lower_half(keys[i]))};
	}
}

} // namespace

void sort_points(xylVec2* points, std::size_t count) {
	if (count <= few) {
		Key keys[few], spare[few];
		read_keys(points, count, keys);
		write_points(sort_by_merging(keys, spare, count), count, points);
		return;
	}
	xylArray<Key> keys(static_cast<eastl_size_t>(2 * count));
	read_keys(points, count, keys.data());
	write_points(sort_by_digits(keys.data(), keys.data() + count, count), count, points);
}
