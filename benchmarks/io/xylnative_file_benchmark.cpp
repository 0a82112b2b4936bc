// Reading and writing a file that is in the system's cache: our handle and the system's call.
//
// The system copies the bytes, which is all the time there is from some KiB on; below that it is
// the way into the system. The question is whether a layer adds anything that can be seen.
#include <morvantis/io/xylnative_file.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int flags = xylFile_access_read | xylFile_access_write;

// One file for all, in memory where the system has a folder there.
class Scratch_file {
public:
	Scratch_file() {
		const std::filesystem::path memory = "/dev/shm";
		const auto folder =
			std::filesystem::exists(memory) ? memory : std::filesystem::temp_directory_path();
		path_ = (folder / ("morvantis_benchmark_" + std::to_string(getpid()))).string();
	}
	~Scratch_file() { std::filesystem::remove(path_); }
	const char* path() const { return path_.c_str(); }

private:
	std::string path_;
};
const Scratch_file scratch;

using Bytes = std::vector<char>;

Bytes bytes_of(const benchmark::State& state) {
	return Bytes(static_cast<size_t>(state.range(0)), 'x');
}

void finish(benchmark::State& state, bool is_well) {
	if (!is_well) state.SkipWithError("bytes are missing");
	state.SetBytesProcessed(state.iterations() * state.range(0));
}

void read_ours(benchmark::State& state) {
	Bytes bytes = bytes_of(state);
	xylNative_file file(scratch.path(), flags, xylFile_flag_create_always);
	bool is_well = file.write(bytes.data(), bytes.size()) == bytes.size();
	for (auto _ : state) {
		file.set_pointer(0, xylFile_from_start);
		is_well &= file.read(bytes.data(), bytes.size()) == bytes.size();
		benchmark::ClobberMemory();
	}
	finish(state, is_well);
}

// A caller of the system has to go on after a short read, too.
bool read_all(int descriptor, Bytes& bytes) {
	size_t total = 0;
	while (total < bytes.size()) {
		const ssize_t count = read(descriptor, bytes.data() + total, bytes.size() - total);
		if (count <= 0) return false;
		total += static_cast<size_t>(count);
	}
	return true;
}

void read_raw(benchmark::State& state) {
	Bytes bytes = bytes_of(state);
	const int descriptor = open(scratch.path(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
	bool is_well =
		write(descriptor, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
	for (auto _ : state) {
		lseek(descriptor, 0, SEEK_SET);
		is_well &= read_all(descriptor, bytes);
		benchmark::ClobberMemory();
	}
	close(descriptor);
	finish(state, is_well);
}

void write_ours(benchmark::State& state) {
	const Bytes bytes = bytes_of(state);
	xylNative_file file(scratch.path(), flags, xylFile_flag_create_always);
	bool is_well = file.write(bytes.data(), bytes.size()) == bytes.size();
	for (auto _ : state) {
		file.set_pointer(0, xylFile_from_start);
		is_well &= file.write(bytes.data(), bytes.size()) == bytes.size();
	}
	finish(state, is_well);
}

void write_raw(benchmark::State& state) {
	const Bytes bytes = bytes_of(state);
	const int descriptor = open(scratch.path(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
	const ssize_t size = static_cast<ssize_t>(bytes.size());
	bool is_well = write(descriptor, bytes.data(), bytes.size()) == size;
	for (auto _ : state) {
		lseek(descriptor, 0, SEEK_SET);
		is_well &= write(descriptor, bytes.data(), bytes.size()) == size;
	}
	close(descriptor);
	finish(state, is_well);
}

void sizes(benchmark::internal::Benchmark* benchmark) {
	benchmark->Arg(4 << 10)->Arg(1 << 20)->Arg(256 << 20);
}

BENCHMARK(read_ours)->Name("file_read/ours")->Apply(sizes);
BENCHMARK(read_raw)->Name("file_read/system_call")->Apply(sizes);
BENCHMARK(write_ours)->Name("file_write/ours")->Apply(sizes);
BENCHMARK(write_raw)->Name("file_write/system_call")->Apply(sizes);

} // namespace
