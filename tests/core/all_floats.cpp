// Proves once that every one of the 2^32 floats prints as the C library prints it; a program and
// not a test, since it takes minutes. Prints the number of differences and fails if there are any.
//
//     all_floats [threads]     two threads unless said otherwise
//
// Infinities and NaNs are left out: their texts are the library's own, and tested.

#include <morvantis/core/number_text.h>

#include <atomic>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

namespace {

std::atomic<unsigned long long> compared = 0, differences = 0;

bool is_equal(float value) {
	char ours[number_text::fixed_max], theirs[512];
	const int length = number_text::write_fixed6(ours, value);
	const int expected = std::snprintf(theirs, sizeof(theirs), "%f", static_cast<double>(value));
	return length == expected && std::memcmp(ours, theirs, static_cast<size_t>(length)) == 0;
}

// Every `step`th float from `first` on.
void compare(xylUInt64 first, xylUInt64 step) {
	unsigned long long count = 0;
	for (xylUInt64 bits = first; bits < 1ull << 32; bits += step) {
		const float value = std::bit_cast<float>(static_cast<xylUInt32>(bits));
		if (!std::isfinite(value)) continue;
		++count;
		if (is_equal(value)) continue;
		if (differences++ < 10) std::printf("0x%08llx differs\n", bits);
	}
	compared += count;
}

} // namespace

int main(int argc, char** argv) {
	const int thread_count = argc > 1 ? std::atoi(argv[1]) : 2;
	if (thread_count < 1) {
		std::printf("usage: all_floats [threads]\n");
		return 2;
	}
	std::vector<std::thread> threads;
	for (int no = 0; no < thread_count; ++no) {
		threads.emplace_back(compare, static_cast<xylUInt64>(no), thread_count);
	}
	for (std::thread& thread : threads) thread.join();
	std::printf("%llu finite floats, %llu differences\n", compared.load(), differences.load());
	return differences == 0 ? 0 : 1;
}
