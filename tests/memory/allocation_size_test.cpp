#include <morvantis/memory/allocation_size.h>

#include <gtest/gtest.h>

namespace {

TEST(allocation_size, CountsInUnitsOfFourMegabytesAboveTwo) {
	struct Case {
		size_t usable, counted;
	};
	const Case cases[] = {
		{0, 0},
		{1, 1},
		{16, 16},
		{2097151, 2097151},
		{2097152, 2097152},
		{2097153, 4194304},
		{4194303, 4194304},
		{4194304, 8388608}, // an exact multiple goes up as well
		{4194305, 8388608},
		{8388607, 8388608},
		{8388608, 12582912},
		{(size_t{1} << 40) + 5, (size_t{1} << 40) + 4194304},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.usable);
		EXPECT_EQ(counted_allocation_size(c.usable), c.counted);
	}
}

TEST(allocation_size, CopiesTheSmallerSizeOfSigned32Bits) {
	constexpr size_t gib = size_t{1} << 30;
	struct Case {
		const char* name;
		size_t new_size, old_size, copied;
	};
	const Case cases[] = {
		{"growing", 100, 40, 40},
		{"shrinking", 40, 100, 40},
		{"equal", 40, 40, 40},
		{"nothing known of the old block", 100, 0, 0},
		{"largest", 2 * gib - 1, 3 * gib - 1 - gib, 2 * gib - 1},
		{"2 GiB is negative", 2 * gib, 100, 0},
		{"old of 3 GiB is negative", 100, 3 * gib, 0},
		{"4 GiB and 5 counts as 5", 4 * gib + 5, 100, 5},
		{"old of 4 GiB counts as nothing", 100, 4 * gib, 0},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		EXPECT_EQ(copied_allocation_size(c.new_size, c.old_size), c.copied);
	}
}

} // namespace
