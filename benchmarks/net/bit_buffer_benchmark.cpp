// Packing and unpacking fields, arrays and a whole packet; the pool against the heap.

#include "plain_bit_kernel.h"

#include <morvantis/net/bit_buffer_manager.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace {

using Plain = Plain_buffer<Plain_kernel>;
using Bits = Plain_buffer<Bit_loop>;
using Bytes = Plain_buffer<Byte_loop>;

template <int bits>
constexpr Integer_compression_info int_info{0, static_cast<int>((1ll << bits) / 2 * 2 - 1), bits};
template <> constexpr Integer_compression_info int_info<32>{-2147483647 - 1, 2147483647, 32};
template <int bits>
constexpr Integer64_compression_info wide_info{0, static_cast<long long>((1ull << bits) - 1), bits};
constexpr Float_compression_info raw_float{0, 0, 0, 32};
constexpr Float_compression_info quantised_float{-1024.0f, 1024.0f, 0.03125f, 17};

// What one field is: how a value is made, written and read. 100 of them go into a packet, so that
// every position in a word comes up and each field follows another.
template <int bits> struct Int_field {
	using Value = int;
	static Value make(unsigned int random) {
		return static_cast<int>(random & static_cast<unsigned int>(int_info<bits>.max_value));
	}
	template <typename B> static bool write(B& buffer, Value v) {
		return buffer.serial_op(v, int_info<bits>);
	}
	template <typename B> static bool read(B& buffer, Value& v) {
		return buffer.read_op(v, int_info<bits>);
	}
};
template <int bits> struct Wide_field {
	using Value = long long;
	static Value make(unsigned int random) {
		return static_cast<long long>(random * 0x9E3779B97F4A7C15ull &
		                              static_cast<unsigned long long>(wide_info<bits>.max_value));
	}
	template <typename B> static bool write(B& buffer, Value v) {
		return buffer.serial_op(v, wide_info<bits>);
	}
	template <typename B> static bool read(B& buffer, Value& v) {
		return buffer.read_op(v, wide_info<bits>);
	}
};
template <const Float_compression_info& info> struct Float_field {
	using Value = float;
	static Value make(unsigned int random) {
		return static_cast<float>(random % 65000) / 32.0f - 1000.0f;
	}
	template <typename B> static bool write(B& buffer, Value v) {
		return buffer.serial_op_float(v, info);
	}
	template <typename B> static bool read(B& buffer, Value& v) {
		return buffer.read_op_float(v, info);
	}
};

constexpr int field_count = 100;

template <typename Field> std::vector<typename Field::Value> make_values() {
	std::vector<typename Field::Value> values;
	unsigned int random = 1;
	for (int i = 0; i < field_count; ++i)
		values.push_back(Field::make(random = random * 1664525 + 1013904223));
	return values;
}

template <typename Buffer, typename Field> void write_fields(benchmark::State& state) {
	static Buffer buffer;
	const auto values = make_values<Field>();
	for (auto _ : state) {
		buffer.start_writing();
		for (const auto& value : values) Field::write(buffer, value);
		benchmark::ClobberMemory();
	}
	state.SetItemsProcessed(state.iterations() * field_count);
}

template <typename Buffer, typename Field> void read_fields(benchmark::State& state) {
	static Buffer buffer;
	buffer.start_writing();
	for (const auto& value : make_values<Field>()) Field::write(buffer, value);
	for (auto _ : state) {
		buffer.start_reading();
		bool is_good = true;
		typename Field::Value value{};
		for (int i = 0; i < field_count; ++i) {
			is_good &= Field::read(buffer, value);
			benchmark::DoNotOptimize(value);
		}
		if (!is_good) return state.SkipWithError("a field was refused");
	}
	state.SetItemsProcessed(state.iterations() * field_count);
}

template <typename Field> void register_fields(const std::string& name) {
	const auto add = [](const std::string& full, void (*function)(benchmark::State&)) {
		benchmark::RegisterBenchmark(full.c_str(), function);
	};
	add("write_" + name + "/ours", write_fields<Our_buffer, Field>);
	add("write_" + name + "/plain_kernel", write_fields<Plain, Field>);
	add("write_" + name + "/byte_loop", write_fields<Bytes, Field>);
	add("write_" + name + "/bit_loop", write_fields<Bits, Field>);
	add("read_" + name + "/ours", read_fields<Our_buffer, Field>);
	add("read_" + name + "/plain_kernel", read_fields<Plain, Field>);
	add("read_" + name + "/byte_loop", read_fields<Bytes, Field>);
	add("read_" + name + "/bit_loop", read_fields<Bits, Field>);
}

// A length of 11 bits and then the bytes: behind 5 bits they are aligned, behind none they are not.
template <typename Buffer> void write_array(benchmark::State& state) {
	static Buffer buffer;
	const int size = static_cast<int>(state.range(0));
	const int lead = static_cast<int>(state.range(1));
	std::vector<unsigned char> data(1400);
	for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<unsigned char>(i * 7);
	const Integer_compression_info lead_info{0, 31, lead};
	for (auto _ : state) {
		buffer.start_writing();
		buffer.serial_op(1, lead_info);
		buffer.serial_op_byte_array(data.data(), size);
		benchmark::ClobberMemory();
	}
	state.SetBytesProcessed(state.iterations() * size);
}

template <typename Buffer> void read_array(benchmark::State& state) {
	static Buffer buffer;
	const int size = static_cast<int>(state.range(0));
	const int lead = static_cast<int>(state.range(1));
	std::vector<unsigned char> data(1400);
	const Integer_compression_info lead_info{0, 31, lead};
	buffer.start_writing();
	buffer.serial_op(1, lead_info);
	buffer.serial_op_byte_array(data.data(), size);
	for (auto _ : state) {
		buffer.start_reading();
		int value, seen_size;
		const bool is_good = buffer.read_op(value, lead_info) &
		                     buffer.read_op_byte_array(data.data(), 1400, seen_size);
		if (!is_good) return state.SkipWithError("the array was refused");
		benchmark::ClobberMemory();
	}
	state.SetBytesProcessed(state.iterations() * size);
}

void register_arrays() {
	const auto add = [](const std::string& name, void (*function)(benchmark::State&)) {
		auto* added = benchmark::RegisterBenchmark(name.c_str(), function);
		for (const int lead : {0, 5}) {
			for (const int size : {4, 100, 1400}) added->Args({size, lead});
		}
		added->ArgNames({"bytes", "lead"});
	};
	add("write_array/ours", write_array<Our_buffer>);
	add("write_array/word_loop", write_array<Plain>);
	add("write_array/byte_loop", write_array<Bytes>);
	add("write_array/bit_loop", write_array<Bits>);
	add("read_array/ours", read_array<Our_buffer>);
	add("read_array/word_loop", read_array<Plain>);
	add("read_array/byte_loop", read_array<Bytes>);
	add("read_array/bit_loop", read_array<Bits>);
}

// A snapshot as a game sends it: 30 agents of 9 fields each, 270 fields of 3 to 41 bits.
struct Agent {
	int number, health, team, animation;
	float x, y, z, heading;
	long long action_time;
};
constexpr int agent_count = 30;
constexpr Integer_compression_info number_info{0, 2047, 11};
constexpr Integer_compression_info health_info{0, 100, 7};
constexpr Integer_compression_info team_info{-1, 6, 3};
constexpr Integer_compression_info animation_info{0, 999, 10};
constexpr Float_compression_info place_info{-1000.0f, 1000.0f, 0.01f, 18};
constexpr Float_compression_info height_info{-50.0f, 500.0f, 0.03125f, 15};
constexpr Integer64_compression_info action_info{0, 1ll << 40, 41};

std::vector<Agent> make_agents() {
	std::vector<Agent> agents;
	unsigned int random = 7;
	const auto below = [&](unsigned int limit) {
		random = random * 1664525 + 1013904223;
		return (random >> 8) % limit;
	};
	for (int i = 0; i < agent_count; ++i) {
		agents.push_back({static_cast<int>(below(2048)), static_cast<int>(below(101)),
		                  static_cast<int>(below(8)) - 1, static_cast<int>(below(1000)),
		                  static_cast<float>(below(190000)) * 0.01f - 950.0f,
		                  static_cast<float>(below(190000)) * 0.01f - 950.0f,
		                  static_cast<float>(below(17000)) * 0.03125f - 50.0f,
		                  static_cast<float>(below(6283)) * 0.001f,
		                  static_cast<long long>(below(1u << 24)) << 16});
	}
	return agents;
}

template <typename Buffer> void write_agent(Buffer& buffer, const Agent& agent) {
	buffer.serial_op(agent.number, number_info);
	buffer.serial_op(agent.health, health_info);
	buffer.serial_op(agent.team, team_info);
	buffer.serial_op(agent.animation, animation_info);
	buffer.serial_op_float(agent.x, place_info);
	buffer.serial_op_float(agent.y, place_info);
	buffer.serial_op_float(agent.z, height_info);
	buffer.serial_op_float(agent.heading, raw_float);
	buffer.serial_op(agent.action_time, action_info);
}

template <typename Buffer> bool read_agent(Buffer& buffer, Agent& agent) {
	return buffer.read_op(agent.number, number_info) && buffer.read_op(agent.health, health_info) &&
	       buffer.read_op(agent.team, team_info) &&
	       buffer.read_op(agent.animation, animation_info) &&
	       buffer.read_op_float(agent.x, place_info) && buffer.read_op_float(agent.y, place_info) &&
	       buffer.read_op_float(agent.z, height_info) &&
	       buffer.read_op_float(agent.heading, raw_float) &&
	       buffer.read_op(agent.action_time, action_info);
}

template <typename Buffer> void mixed_write(benchmark::State& state) {
	static Buffer buffer;
	const std::vector<Agent> agents = make_agents();
	for (auto _ : state) {
		buffer.start_writing();
		for (const Agent& agent : agents) write_agent(buffer, agent);
		benchmark::ClobberMemory();
	}
	state.SetItemsProcessed(state.iterations() * agent_count * 9);
}

template <typename Buffer> void mixed_read(benchmark::State& state) {
	static Buffer buffer;
	std::vector<Agent> agents = make_agents();
	buffer.start_writing();
	for (const Agent& agent : agents) write_agent(buffer, agent);
	for (auto _ : state) {
		buffer.start_reading();
		bool is_good = true;
		for (Agent& agent : agents) is_good &= read_agent(buffer, agent);
		if (!is_good) return state.SkipWithError("an agent was refused");
		benchmark::ClobberMemory();
	}
	state.SetItemsProcessed(state.iterations() * agent_count * 9);
}

BENCHMARK(mixed_write<Our_buffer>)->Name("mixed_write/ours");
BENCHMARK(mixed_write<Plain>)->Name("mixed_write/plain_kernel");
BENCHMARK(mixed_write<Bytes>)->Name("mixed_write/byte_loop");
BENCHMARK(mixed_write<Bits>)->Name("mixed_write/bit_loop");
BENCHMARK(mixed_read<Our_buffer>)->Name("mixed_read/ours");
BENCHMARK(mixed_read<Plain>)->Name("mixed_read/plain_kernel");
BENCHMARK(mixed_read<Bytes>)->Name("mixed_read/byte_loop");
BENCHMARK(mixed_read<Bits>)->Name("mixed_read/bit_loop");

// The clearing of 1,408 bytes dominates; the heap pays it in the constructor.
void pool_get_and_return(benchmark::State& state) {
	Bit_buffer_manager pool;
	pool.return_bit_buffer(pool.get_bit_buffer());
	for (auto _ : state) {
		Dynamic_bit_buffer* buffer = pool.get_bit_buffer();
		benchmark::DoNotOptimize(buffer);
		pool.return_bit_buffer(buffer);
	}
}
void heap_new_and_delete(benchmark::State& state) {
	for (auto _ : state) {
		Dynamic_bit_buffer* buffer = new Dynamic_bit_buffer;
		benchmark::DoNotOptimize(buffer);
		delete buffer;
	}
}
BENCHMARK(pool_get_and_return)->Name("pool_get_and_return/ours");
BENCHMARK(heap_new_and_delete)->Name("pool_get_and_return/heap_new_delete");

[[maybe_unused]] const bool is_registered = [] {
	register_fields<Int_field<1>>("1_bit");
	register_fields<Int_field<7>>("7_bits");
	register_fields<Int_field<8>>("8_bits");
	register_fields<Int_field<16>>("16_bits");
	register_fields<Int_field<31>>("31_bits");
	register_fields<Int_field<32>>("32_bits");
	register_fields<Wide_field<41>>("41_bits");
	register_fields<Wide_field<63>>("63_bits");
	register_fields<Float_field<raw_float>>("float_raw");
	register_fields<Float_field<quantised_float>>("float_quantised");
	register_arrays();
	return true;
}();

} // namespace
