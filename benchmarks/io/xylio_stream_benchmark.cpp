// Values through streams by their virtual operators, beside what the standard library does for the
// same bytes.

#include "../numbers.h"

#include <morvantis/io/xylinput_binary_file_stream.h>
#include <morvantis/io/xylio_binary_stream.h>
#include <morvantis/io/xylio_text_stream.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

namespace {

// So many values that no branch predictor learns the lengths of their texts by heart.
constexpr int count = 16384;

template <typename Number> const std::vector<Number>& numbers() {
	static const std::vector<Number> all = numbers_of_all_lengths<Number>(count);
	return all;
}

// A call that the compiler can't see through.
template <typename Stream> Stream& hidden(Stream& stream) {
	Stream* address = &stream;
	benchmark::DoNotOptimize(address);
	return *address;
}

template <typename Number> void text_out_ours(benchmark::State& state) {
	xylIO_text_stream stream;
	for (auto _ : state) {
		stream.clear();
		xylIO_text_stream& out = hidden(stream);
		for (const Number value : numbers<Number>()) out << value;
		benchmark::DoNotOptimize(stream.buffer.char_p());
	}
}

// Formatting alone, without a place where it goes.
template <typename Number> void text_out_snprintf(benchmark::State& state) {
	char text[400];
	for (auto _ : state) {
		for (const Number value : numbers<Number>()) {
			write_by_snprintf(text, sizeof(text), value);
			benchmark::DoNotOptimize(text);
		}
	}
}
BENCHMARK(text_out_ours<int>)->Name("text_stream_out/int/ours");
BENCHMARK(text_out_snprintf<int>)->Name("text_stream_out/int/snprintf");
BENCHMARK(text_out_ours<long long>)->Name("text_stream_out/int64/ours");
BENCHMARK(text_out_snprintf<long long>)->Name("text_stream_out/int64/snprintf");
BENCHMARK(text_out_ours<float>)->Name("text_stream_out/float/ours");
BENCHMARK(text_out_snprintf<float>)->Name("text_stream_out/float/snprintf");
BENCHMARK(text_out_ours<double>)->Name("text_stream_out/double/ours");
BENCHMARK(text_out_snprintf<double>)->Name("text_stream_out/double/snprintf");

template <typename Number> void text_in_ours(benchmark::State& state) {
	xylIO_text_stream stream;
	for (const Number value : numbers<Number>()) stream << value << " ";
	for (auto _ : state) {
		stream.reset_to_buffer_start();
		xylIO_text_stream& in = hidden(stream);
		Number value;
		for (int i = 0; i < count; ++i) {
			in >> value;
			benchmark::DoNotOptimize(value);
		}
	}
}

// Conversion of tokens that stand ready.
template <typename Number, auto convert> void text_in_c(benchmark::State& state) {
	std::vector<std::string> tokens;
	char text[400];
	for (const Number value : numbers<Number>()) {
		write_by_snprintf(text, sizeof(text), value);
		tokens.emplace_back(text);
	}
	for (auto _ : state) {
		for (const std::string& token : tokens) benchmark::DoNotOptimize(convert(token.c_str()));
	}
}
// The same text from one end to the other under a lock, as a program of its own would share it.
void text_in_locked_walk(benchmark::State& state) {
	xylIO_text_stream stream;
	for (const int value : numbers<int>()) stream << value << " ";
	std::recursive_mutex mutex;
	for (auto _ : state) {
		const char* at = stream.buffer.char_p();
		for (int i = 0; i < count; ++i) {
			const std::lock_guard lock(mutex);
			char* end;
			benchmark::DoNotOptimize(std::strtoul(at, &end, 10));
			at = end;
		}
	}
}
constexpr auto by_atof = [](const char* text) { return static_cast<float>(std::atof(text)); };
constexpr auto by_strtoul = [](const char* text) { return std::strtoul(text, nullptr, 10); };
BENCHMARK(text_in_ours<float>)->Name("text_stream_in/float/ours");
BENCHMARK(text_in_c<float, by_atof>)->Name("text_stream_in/float/atof");
BENCHMARK(text_in_ours<int>)->Name("text_stream_in/int/ours");
BENCHMARK(text_in_c<int, by_strtoul>)->Name("text_stream_in/int/strtoul");
BENCHMARK(text_in_locked_walk)->Name("text_stream_in/int/locked_walk");

template <typename Stream> void put_all(Stream& stream) {
	for (const int value : numbers<int>()) {
		if constexpr (requires { stream << value; }) {
			stream << value;
		} else {
			stream.put(value);
		}
	}
}

void binary_out_ours(benchmark::State& state) {
	xylIO_binary_stream stream;
	for (auto _ : state) {
		stream.clear();
		put_all(hidden(static_cast<xylIO_Stream&>(stream)));
		benchmark::DoNotOptimize(stream.buffer.char_p());
	}
}

// Its unformatted output: operator<< would make texts.
struct Unformatted {
	std::ostream& stream;
	void put(int value) { stream.write(reinterpret_cast<const char*>(&value), sizeof(value)); }
};
void binary_out_ostringstream(benchmark::State& state) {
	std::ostringstream stream;
	for (auto _ : state) {
		stream.seekp(0);
		Unformatted out{hidden(static_cast<std::ostream&>(stream))};
		put_all(out);
	}
}

// What any stream with virtual operators takes at least: the call, and a length in the object. Of
// two kinds, so that the compiler can't guess which.
struct Virtual_count {
	virtual ~Virtual_count() = default;
	virtual Virtual_count& put(int value) = 0;
	size_t length = 0;
};
struct Count_of_bytes : Virtual_count {
	Virtual_count& put(int) override {
		length += sizeof(int);
		return *this;
	}
};
struct Count_of_values : Virtual_count {
	Virtual_count& put(int) override {
		++length;
		return *this;
	}
};
void binary_out_virtual_count(benchmark::State& state) {
	Count_of_bytes bytes;
	Count_of_values values;
	Virtual_count* streams[] = {&bytes, &values};
	benchmark::DoNotOptimize(streams);
	for (auto _ : state) put_all(*streams[0]);
}
BENCHMARK(binary_out_ours)->Name("binary_stream_out/ours");
BENCHMARK(binary_out_ostringstream)->Name("binary_stream_out/ostringstream");
BENCHMARK(binary_out_virtual_count)->Name("binary_stream_out/virtual_count");

// A stream for a message of a few values, from its making to its end.
constexpr int message_size = 16;
void message_ours(benchmark::State& state) {
	for (auto _ : state) {
		xylIO_binary_stream stream;
		xylIO_Stream& out = hidden(static_cast<xylIO_Stream&>(stream));
		for (int i = 0; i < message_size; ++i) out << i;
		benchmark::DoNotOptimize(stream.buffer.char_p());
	}
}
void message_ostringstream(benchmark::State& state) {
	for (auto _ : state) {
		std::ostringstream stream;
		Unformatted out{hidden(static_cast<std::ostream&>(stream))};
		for (int i = 0; i < message_size; ++i) out.put(i);
		benchmark::DoNotOptimize(stream.view().data());
	}
}
BENCHMARK(message_ours)->Name("binary_message_out/ours");
BENCHMARK(message_ostringstream)->Name("binary_message_out/ostringstream");

// A file of 4 MiB in the system's cache.
const std::string& file_path() {
	static const std::string path = [] {
		const auto file = std::filesystem::temp_directory_path() / "morvantis_stream_benchmark";
		std::ofstream(file, std::ios::binary) << std::string(4 << 20, 'x');
		return file.string();
	}();
	return path;
}
void whole_file_ours(benchmark::State& state) {
	for (auto _ : state) {
		xylInput_binary_file_stream stream;
		stream.try_open(file_path().c_str());
		benchmark::DoNotOptimize(stream.buffer.char_p());
	}
}
void whole_file_fread(benchmark::State& state) {
	for (auto _ : state) {
		std::FILE* file = std::fopen(file_path().c_str(), "rb");
		std::fseek(file, 0, SEEK_END);
		const auto size = static_cast<size_t>(std::ftell(file));
		std::rewind(file);
		char* bytes = static_cast<char*>(std::malloc(size + 1));
		benchmark::DoNotOptimize(std::fread(bytes, 1, size, file));
		std::fclose(file);
		std::free(bytes);
	}
}
BENCHMARK(whole_file_ours)->Name("whole_file_in/ours");
BENCHMARK(whole_file_fread)->Name("whole_file_in/fread");

} // namespace
