// GUID texts beside the C library's formatter with the same format, and beside libuuid.
#include <morvantis/core/xylguid_generator.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <random>
#include <vector>

#include <uuid/uuid.h>

namespace {

constexpr size_t count = 1024; // a constant: to divide by it costs nothing

// More than a branch predictor or a cache of digits could learn.
std::vector<xylGuid_type> guids() {
	std::mt19937 random(7);
	std::vector<xylGuid_type> values(count);
	for (xylGuid_type& value : values) {
		xylUInt32 words[4];
		for (xylUInt32& word : words) word = static_cast<xylUInt32>(random());
		std::memcpy(&value, words, sizeof(value));
	}
	return values;
}

// --- To text: braces and dashes for ours and the formatter, the dashes alone for libuuid's form.

void to_text_ours(benchmark::State& state, bool braces) {
	const auto values = guids();
	xylConstString<64> text;
	size_t i = 0;
	for (auto _ : state) {
		xylGuid_generator::guid_to_string(values[i++ % count], text, braces, true);
		benchmark::DoNotOptimize(text.char_p());
		benchmark::ClobberMemory();
	}
}

void to_text_snprintf(benchmark::State& state) {
	const auto values = guids();
	char text[40];
	size_t i = 0;
	for (auto _ : state) {
		const xylGuid_type& g = values[i++ % count];
		std::snprintf(text, sizeof(text),
		              "{%08X-%04hX-%04hX-%02hhX%02hhX-%02hhX%02hhX%02hhX%02hhX%02hhX%02hhX}",
		              g.data1, g.data2, g.data3, g.data4[0], g.data4[1], g.data4[2], g.data4[3],
		              g.data4[4], g.data4[5], g.data4[6], g.data4[7]);
		benchmark::DoNotOptimize(text);
		benchmark::ClobberMemory();
	}
}

void to_text_libuuid(benchmark::State& state) {
	const auto values = guids();
	char text[40];
	size_t i = 0;
	for (auto _ : state) {
		uuid_unparse_upper(reinterpret_cast<const unsigned char*>(&values[i++ % count]), text);
		benchmark::DoNotOptimize(text);
		benchmark::ClobberMemory();
	}
}

// --- From text: the form with dashes, which both readers take.

std::vector<xylConstString<64>> texts() {
	std::vector<xylConstString<64>> result;
	for (const xylGuid_type& value : guids()) {
		xylGuid_generator::guid_to_string(value, result.emplace_back(), false, true);
	}
	return result;
}

void from_text_ours(benchmark::State& state) {
	const auto values = texts();
	size_t i = 0;
	for (auto _ : state) {
		benchmark::DoNotOptimize(xylGuid_generator::string_to_guid(values[i++ % count].char_p()));
	}
}

void from_text_libuuid(benchmark::State& state) {
	const auto values = texts();
	uuid_t guid;
	size_t i = 0;
	for (auto _ : state) {
		uuid_parse(values[i++ % count].char_p(), guid);
		benchmark::DoNotOptimize(guid);
		benchmark::ClobberMemory();
	}
}

} // namespace

BENCHMARK_CAPTURE(to_text_ours, braces, true)->Name("guid_to_text/braces/ours");
BENCHMARK(to_text_snprintf)->Name("guid_to_text/braces/snprintf");
BENCHMARK_CAPTURE(to_text_ours, dashes, false)->Name("guid_to_text/dashes/ours");
BENCHMARK(to_text_libuuid)->Name("guid_to_text/dashes/libuuid");
BENCHMARK(from_text_ours)->Name("guid_from_text/ours");
BENCHMARK(from_text_libuuid)->Name("guid_from_text/libuuid");
