// Path conversions beside the same on standard strings. Ours returns a string of 512 or 256 bytes
// by value and never allocates; a standard string takes a heap block from 16 characters on.
#include <morvantis/platform/zubplatform.h>
#include <morvantis/strings/xylvarstring.h>

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

namespace {

constexpr char base_path[] = "$BASE/data/textures/terrain/grass_01.tga";
constexpr char final_path[] = "../../data/textures/terrain/grass_01.tga";

void to_final_ours(benchmark::State& state) {
	const xylConstString<256> path(base_path);
	for (auto _ : state) {
		benchmark::DoNotOptimize(zubPlatform::convert_base_path_to_final(path).char_p());
		benchmark::ClobberMemory();
	}
}

void to_final_standard(benchmark::State& state) {
	const std::string path(base_path);
	for (auto _ : state) {
		std::string result = path;
		if (result.find("$BASE/") != std::string::npos) result.replace(0, 6, "../../");
		benchmark::DoNotOptimize(result.data());
		benchmark::ClobberMemory();
	}
}

void to_base_ours(benchmark::State& state) {
	const xylConstString<256> path(final_path);
	for (auto _ : state) {
		benchmark::DoNotOptimize(zubPlatform::convert_final_to_base_path(path).char_p());
		benchmark::ClobberMemory();
	}
}

void to_base_standard(benchmark::State& state) {
	const std::string path(final_path);
	for (auto _ : state) {
		std::string result = path;
		const size_t at = result.find("../../");
		if (at != std::string::npos) result.replace(at, 6, "$BASE/").resize(at + 12);
		benchmark::DoNotOptimize(result.data());
		benchmark::ClobberMemory();
	}
}

// Both ask the system for the current folder, which is most of the time.
void to_absolute_ours(benchmark::State& state) {
	const xylConstString<256> path(base_path);
	for (auto _ : state) {
		benchmark::DoNotOptimize(zubPlatform::convert_base_path_to_absolute_path(path).char_p());
		benchmark::ClobberMemory();
	}
}

void to_absolute_filesystem(benchmark::State& state) {
	const std::filesystem::path path(final_path);
	for (auto _ : state) {
		std::filesystem::path result = std::filesystem::absolute(path).lexically_normal();
		benchmark::DoNotOptimize(result.c_str());
	}
}

} // namespace

BENCHMARK(to_final_ours)->Name("path_to_final/ours");
BENCHMARK(to_final_standard)->Name("path_to_final/std_string");
BENCHMARK(to_base_ours)->Name("path_to_base/ours");
BENCHMARK(to_base_standard)->Name("path_to_base/std_string");
BENCHMARK(to_absolute_ours)->Name("path_to_absolute/ours");
BENCHMARK(to_absolute_filesystem)->Name("path_to_absolute/std_filesystem");
