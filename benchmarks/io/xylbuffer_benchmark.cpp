// Runs of 4-byte values through the byte buffer beside copies into an array that is large enough,
// and the preparation of text resources beside a loop over its bytes.

#include <morvantis/io/resource_text.h>
#include <morvantis/io/xylbuffer.h>

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int count = 4096; // 16 KiB, in the first cache

// Every value stands for a record's field: it is made or used by itself, and so neither side may be
// turned into one wide copy. What dominates is the way of our cursor through memory.
void write_ours(benchmark::State& state) {
	xylBuffer buffer;
	buffer.allocate(count * 4 + 64);
	for (auto _ : state) {
		buffer.rewind();
		for (int i = 0; i < count; ++i) {
			buffer.write_int(i);
			benchmark::ClobberMemory();
		}
	}
	state.SetBytesProcessed(state.iterations() * count * 4);
}

void write_array(benchmark::State& state) {
	std::vector<unsigned char> bytes(count * 4 + 64);
	benchmark::DoNotOptimize(bytes.data());
	for (auto _ : state) {
		unsigned char* cursor = bytes.data();
		for (int i = 0; i < count; ++i) {
			std::memcpy(cursor, &i, sizeof(i));
			cursor += sizeof(i);
			benchmark::ClobberMemory();
		}
	}
	state.SetBytesProcessed(state.iterations() * count * 4);
}

void read_ours(benchmark::State& state) {
	xylBuffer buffer;
	for (int i = 0; i < count; ++i) buffer.write_int(i);
	for (auto _ : state) {
		buffer.rewind();
		for (int i = 0; i < count; ++i) {
			int value;
			buffer.read_int(&value);
			benchmark::DoNotOptimize(value);
		}
	}
	state.SetBytesProcessed(state.iterations() * count * 4);
}

void read_array(benchmark::State& state) {
	std::vector<unsigned char> bytes(count * 4, 1);
	benchmark::DoNotOptimize(bytes.data());
	for (auto _ : state) {
		const unsigned char* cursor = bytes.data();
		for (int i = 0; i < count; ++i) {
			int value;
			std::memcpy(&value, cursor, sizeof(value));
			cursor += sizeof(value);
			benchmark::DoNotOptimize(value);
		}
	}
	state.SetBytesProcessed(state.iterations() * count * 4);
}

// The rule byte by byte, with its end test only at separators but for the last 30 bytes.
Resource_text_flaws prepare_by_bytes(unsigned char* byte, std::size_t size) {
	Resource_text_flaws flaws;
	const unsigned char* end = byte + size;
	const unsigned char* tested = size < 30 ? byte : end - 30;
	const auto step = [&](unsigned char& c) {
		if (static_cast<signed char>(c) >= 33) {
			if (c == ',') {
				c = '.';
				flaws.has_comma = true;
			}
			return false;
		}
		if (c != 0 && c != 9 && c != 10 && c != 13 && c != 32) flaws.last_bad_byte = c;
		c = 0;
		return true;
	};
	while (!step(*byte++) || byte < tested) {
	}
	while (byte < end) step(*byte++);
	return flaws;
}

std::string resource_text() {
	std::string text;
	for (int i = 0; text.size() < 32 << 10; ++i) {
		text += "mesh_" + std::to_string(i * 37) + " 0." + std::to_string(i * 7919 % 100000) +
		        (i % 6 == 5 ? "\r\n" : "\t");
	}
	return text;
}

// Each round prepares a fresh copy; the copying counts for both.
template <Resource_text_flaws (*prepare)(unsigned char*, unsigned long long)>
void prepare_text(benchmark::State& state) {
	const std::string text = resource_text();
	std::string work = text;
	for (auto _ : state) {
		std::memcpy(work.data(), text.data(), text.size());
		const Resource_text_flaws flaws =
			prepare(reinterpret_cast<unsigned char*>(work.data()), work.size());
		benchmark::DoNotOptimize(flaws);
		benchmark::ClobberMemory();
	}
	state.SetBytesProcessed(state.iterations() * static_cast<long long>(text.size()));
}

Resource_text_flaws by_bytes(unsigned char* bytes, unsigned long long size) {
	return prepare_by_bytes(bytes, size);
}

BENCHMARK(write_ours)->Name("buffer_write_int/ours");
BENCHMARK(write_array)->Name("buffer_write_int/memcpy");
BENCHMARK(read_ours)->Name("buffer_read_int/ours");
BENCHMARK(read_array)->Name("buffer_read_int/memcpy");
BENCHMARK(prepare_text<prepare_resource_text>)->Name("resource_text/ours");
BENCHMARK(prepare_text<by_bytes>)->Name("resource_text/byte_loop");

} // namespace
