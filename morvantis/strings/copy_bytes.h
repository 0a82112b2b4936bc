// Copies of a few bytes without a call. Internal.
#pragma once

#include <cstddef>
#include <cstring>

// Copies `count` bytes, which may overlap. Texts and tokens are mostly short, and for them the call
// of memmove() costs more than the copy: two loads that meet or overlap in the middle take their
// place, both done before the first store.
inline void copy_bytes(char* target, const char* source, size_t count) {
	const auto copy_ends = [=]<typename Part>(Part first, Part last) {
		const size_t rest = count - sizeof(Part);
		std::memcpy(&first, source, sizeof(Part));
		std::memcpy(&last, source + rest, sizeof(Part));
		std::memcpy(target, &first, sizeof(Part));
		std::memcpy(target + rest, &last, sizeof(Part));
	};
	struct Sixteen {
		unsigned long long low, high;
	};
	if (count > 32) {
		std::memmove(target, source, count);
	} else if (count > 16) {
		copy_ends(Sixteen{}, Sixteen{});
	} else if (count >= 8) {
		copy_ends(0ull, 0ull);
	} else if (count >= 4) {
		copy_ends(0u, 0u);
	} else if (count >= 2) {
		copy_ends(static_cast<unsigned short>(0), static_cast<unsigned short>(0));
	} else if (count == 1) {
		*target = *source;
	}
}
