// Numbers appended to a string and read back, beside the C library's forms of the same texts.

#include "../numbers.h"

#include <morvantis/strings/xylvarstring.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

template <typename Number> std::vector<Number> numbers() {
	return numbers_of_all_lengths<Number>(1024);
}

template <typename Number> void append_ours(benchmark::State& state) {
	const std::vector<Number> values = numbers<Number>();
	xylVarString text;
	text.ensure_length(64);
	size_t i = 0;
	for (auto _ : state) {
		text.clear();
		text.append(values[i++ % values.size()]);
		benchmark::DoNotOptimize(text.char_p());
	}
}

// Formatting alone, without the append that ours includes.
template <typename Number> void snprintf_only(benchmark::State& state) {
	const std::vector<Number> values = numbers<Number>();
	char text[64];
	size_t i = 0;
	for (auto _ : state) {
		write_by_snprintf(text, sizeof(text), values[i++ % values.size()]);
		benchmark::DoNotOptimize(text);
	}
}
BENCHMARK(append_ours<int>)->Name("number_to_text/int/ours");
BENCHMARK(snprintf_only<int>)->Name("number_to_text/int/snprintf");
BENCHMARK(append_ours<long long>)->Name("number_to_text/int64/ours");
BENCHMARK(snprintf_only<long long>)->Name("number_to_text/int64/snprintf");
BENCHMARK(append_ours<float>)->Name("number_to_text/float/ours");
BENCHMARK(snprintf_only<float>)->Name("number_to_text/float/snprintf");
BENCHMARK(append_ours<double>)->Name("number_to_text/double/ours");
BENCHMARK(snprintf_only<double>)->Name("number_to_text/double/snprintf");

template <typename Number> std::vector<xylVarString> number_texts() {
	std::vector<xylVarString> texts;
	for (const Number value : numbers<Number>()) {
		texts.emplace_back();
		texts.back().append(value);
	}
	return texts;
}

template <typename Number, auto read> void read_numbers(benchmark::State& state) {
	const std::vector<xylVarString> texts = number_texts<Number>();
	size_t i = 0;
	for (auto _ : state) benchmark::DoNotOptimize(read(texts[i++ % texts.size()]));
}
constexpr auto to_float_ours = [](const xylVarString& text) { return text.to_float(); };
constexpr auto to_float_c = [](const xylVarString& text) {
	return static_cast<float>(std::atof(text.char_p()));
};
constexpr auto to_int_ours = [](const xylVarString& text) { return text.to_int(); };
constexpr auto to_int_c = [](const xylVarString& text) { return std::atoi(text.char_p()); };
BENCHMARK(read_numbers<float, to_float_ours>)->Name("text_to_number/float/ours");
BENCHMARK(read_numbers<float, to_float_c>)->Name("text_to_number/float/atof");
BENCHMARK(read_numbers<int, to_int_ours>)->Name("text_to_number/int/ours");
BENCHMARK(read_numbers<int, to_int_c>)->Name("text_to_number/int/atoi");

} // namespace
