// Points become 64-bit keys that compare as the points do, so that sorting needs one comparison of
// integers, or none: many keys are distributed by the bytes of x. Half the time of a comparison
// sort of the points for 1,000 of them.

#include <morvantis/math/point_sort.h>

#include <morvantis/core/xyltypes.h>
#include <morvantis/memory/xylarray.h>

#include <EASTL/sort.h>

#include <bit>

namespace {

using Key = xylUInt64; // x in the upper half, y in the lower

constexpr xylUInt32 sign = 0x80000000;
constexpr xylUInt32 negative_zero = 0x7FFFFFFF; // as a half of a key; 0 follows it
constexpr xylUInt32 zero = 0x80000000;

// Rises with the number: negative ones are turned upside down and stand below the others.
xylUInt32 ordered(float number) {
	const xylUInt32 bits = std::bit_cast<xylUInt32>(number);
	return bits & sign ? ~bits : bits | sign;
}
float number_of(xylUInt32 half) { return std::bit_cast<float>(half & sign ? half & ~sign : ~half); }

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
	constexpr std::size_t few = 128; // from here on digits are faster
	if (count <= few) {
		Key keys[few];
		read_keys(points, count, keys);
		eastl::quick_sort(keys, keys + count);
		write_points(keys, count, points);
		return;
	}
	xylArray<Key> keys(static_cast<eastl_size_t>(2 * count));
	read_keys(points, count, keys.data());
	write_points(sort_by_digits(keys.data(), keys.data() + count, count), count, points);
}
