// What the targets have in common.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

// What must hold for any input.
inline void require(bool holds) {
	if (!holds) std::abort();
}

// An input in two parts: the first byte tells how many of those that follow are choices of what is
// done, and what is left is what it is done with. Points into the input.
struct Parted_input {
	Parted_input(const std::uint8_t* data, std::size_t size) {
		if (size == 0) return;
		const std::size_t count = data[0] < size - 1 ? data[0] : size - 1;
		choices = {data + 1, count};
		rest = reinterpret_cast<const char*>(data) + 1 + count;
		rest_size = static_cast<int>(size - 1 - count);
	}

	std::span<const std::uint8_t> choices;
	const char* rest = "";
	int rest_size = 0;
};
