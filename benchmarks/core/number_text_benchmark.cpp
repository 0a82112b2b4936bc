// Numbers and log lines to text, beside the C library and std::to_chars. Conversion of digits is
// all there is to it: the texts stay in one buffer.

#include <morvantis/core/legacy_format.h>
#include <morvantis/core/number_text.h>

#include <benchmark/benchmark.h>

#include <array>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <random>

namespace {

constexpr size_t value_count = 4096; // a power of two, too many for the branch predictor to learn

// Floats and doubles as positions are: within 2,000 of 0, with all digits. Integers of all lengths.
template <typename Number> std::array<Number, value_count> make_values() {
	std::mt19937_64 random(1);
	std::array<Number, value_count> values;
	for (Number& value : values) {
		const auto bits = static_cast<xylInt64>(random());
		if constexpr (std::is_floating_point_v<Number>) {
			value = static_cast<Number>(static_cast<double>(bits) / 9.3e18 * 2000);
		} else {
			value = static_cast<Number>(bits >> random() % 64);
		}
	}
	return values;
}

int write_ours(char* out, size_t, double value) { return number_text::write_fixed6(out, value); }
int write_ours(char* out, size_t, xylInt64 value) { return number_text::write_signed(out, value); }
int write_ours(char* out, size_t, xylUInt64 value) {
	return number_text::write_unsigned(out, value);
}

int write_snprintf(char* out, size_t size, double value) {
	return std::snprintf(out, size, "%f", value);
}
int write_snprintf(char* out, size_t size, xylInt64 value) {
	return std::snprintf(out, size, "%lld", value);
}
int write_snprintf(char* out, size_t size, xylUInt64 value) {
	return std::snprintf(out, size, "%llu", value);
}

template <typename Number> int write_to_chars(char* out, size_t size, Number value) {
	if constexpr (std::is_floating_point_v<Number>) {
		const auto form = std::chars_format::fixed;
		return static_cast<int>(std::to_chars(out, out + size, value, form, 6).ptr - out);
	} else {
		return static_cast<int>(std::to_chars(out, out + size, value).ptr - out);
	}
}

// `Number` is what the values are, `Wide` what is passed, as variadic functions widen it.
template <typename Number, typename Wide, int (*write)(char*, size_t, Wide)>
void write_numbers(benchmark::State& state) {
	const auto values = make_values<Number>();
	char buffer[512];
	size_t i = 0;
	for (auto _ : state) {
		benchmark::DoNotOptimize(write(buffer, sizeof(buffer), values[i++ % value_count]));
		benchmark::ClobberMemory();
	}
}

int format_ours(char* out, size_t size, const char* format, ...) {
	va_list arguments;
	va_start(arguments, format);
	const int count = format_bounded(out, size, format, arguments);
	va_end(arguments);
	return count;
}

// A log line of a game: a name, a tick, a position and an identity.
template <int (*format)(char*, size_t, const char*, ...)>
void write_log_line(benchmark::State& state) {
	const auto values = make_values<float>();
	char buffer[512];
	size_t i = 0;
	for (auto _ : state) {
		const size_t at = i++ % (value_count - 2);
		benchmark::DoNotOptimize(
			format(buffer, sizeof(buffer), "%s: tick %d at (%f, %f, %f), id %08X", "agent_manager",
		           static_cast<int>(i), values[at], values[at + 1], values[at + 2],
		           static_cast<unsigned int>(i * 2654435761u)));
		benchmark::ClobberMemory();
	}
}

#define MORVANTIS_NUMBER_BENCHMARK(what, Number, Wide)                                             \
	BENCHMARK(write_numbers<Number, Wide, write_ours>)->Name(what "/ours");                        \
	BENCHMARK(write_numbers<Number, Wide, write_snprintf>)->Name(what "/snprintf");                \
	BENCHMARK(write_numbers<Number, Wide, write_to_chars<Wide>>)->Name(what "/to_chars")

MORVANTIS_NUMBER_BENCHMARK("text_of_float", float, double);
MORVANTIS_NUMBER_BENCHMARK("text_of_double", double, double);
MORVANTIS_NUMBER_BENCHMARK("text_of_integer/32", xylInt32, xylInt64);
MORVANTIS_NUMBER_BENCHMARK("text_of_integer/64", xylInt64, xylInt64);
MORVANTIS_NUMBER_BENCHMARK("text_of_unsigned/64", xylUInt64, xylUInt64);

BENCHMARK(write_log_line<format_ours>)->Name("log_line/ours");
BENCHMARK(write_log_line<std::snprintf>)->Name("log_line/snprintf");

} // namespace
