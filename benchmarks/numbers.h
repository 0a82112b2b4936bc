// Numbers for benchmarks of their texts, and the C library's texts of them.
#pragma once

#include <climits>
#include <cstddef>
#include <cstdio>
#include <random>
#include <type_traits>
#include <vector>

// Values of all lengths, as many decimal digits as often as another number of them; always the
// same.
template <typename Number> std::vector<Number> numbers_of_all_lengths(int count) {
	std::mt19937_64 random(2);
	std::vector<Number> values(static_cast<std::size_t>(count));
	for (Number& value : values) {
		if constexpr (std::is_floating_point_v<Number>) {
			value = static_cast<Number>((static_cast<double>(random()) / 1.8e19 - 0.5) *
			                            static_cast<double>(1ull << random() % 32));
		} else {
			value = static_cast<Number>(random()) >> random() % (sizeof(Number) * CHAR_BIT);
		}
	}
	return values;
}

inline void write_by_snprintf(char* text, std::size_t size, int value) {
	std::snprintf(text, size, "%d", value);
}
inline void write_by_snprintf(char* text, std::size_t size, long long value) {
	std::snprintf(text, size, "%lld", value);
}
inline void write_by_snprintf(char* text, std::size_t size, double value) {
	std::snprintf(text, size, "%f", value);
}
inline void write_by_snprintf(char* text, std::size_t size, float value) {
	write_by_snprintf(text, size, static_cast<double>(value));
}
