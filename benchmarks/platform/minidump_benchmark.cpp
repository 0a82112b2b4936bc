// A crash dump of a process with two threads, as a handler writes it. What dominates is the kernel:
// its texts about the process, and opening and emptying the file.
//
// Peers: the same bytes written by one call, which no dump can beat; and the way without a format
// of our own, a child by fork() that copies every writable mapping (what a core file would hold).
#include <morvantis/platform/zubplatform.h>
#include <morvantis/strings/xylvarstring.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include <fcntl.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <ucontext.h>
#include <unistd.h>

namespace {

// A folder, a second thread, and the registers of a crash.
class Dumped_process {
public:
	Dumped_process() : waiter_([this] { wait(); }) {
		while (!is_waiting_) std::this_thread::yield();
		std::filesystem::create_directory(path_);
		getcontext(&context_);
		record_.si_signo = SIGSEGV;
		write();
		std::ifstream file(dump(), std::ios::binary);
		bytes.assign(std::istreambuf_iterator<char>(file), {});
	}
	~Dumped_process() {
		ends_ = true;
		ends_.notify_all();
		waiter_.join();
		std::filesystem::remove_all(path_);
	}
	std::string dump() const { return path_ + "/dump.dmp"; }
	void write() {
		zubException_pointers exception{&record_, &context_};
		zubPlatform::write_minidump(folder_, &exception);
	}

	std::string bytes; // of a dump

private:
	void wait() {
		is_waiting_ = true;
		ends_.wait(false);
	}

	std::string path_ =
		(std::filesystem::temp_directory_path() / ("dump_benchmark_" + std::to_string(getpid())))
			.string();
	xylVarString folder_{path_.c_str()};
	siginfo_t record_{};
	ucontext_t context_{};
	std::atomic<bool> is_waiting_ = false, ends_ = false;
	std::thread waiter_;
};

void write_dump(benchmark::State& state) {
	Dumped_process process;
	for (auto _ : state) process.write();
	state.counters["bytes"] = static_cast<double>(process.bytes.size());
}
BENCHMARK(write_dump)->Name("write_minidump/ours")->UseRealTime();

void same_bytes(benchmark::State& state) {
	const Dumped_process process;
	for (auto _ : state) {
		const int file = open(process.dump().c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
		benchmark::DoNotOptimize(write(file, process.bytes.data(), process.bytes.size()));
		close(file);
	}
}
BENCHMARK(same_bytes)->Name("write_minidump/same_bytes")->UseRealTime();

// In the child: every writable mapping of the process into the file.
void copy_writable_mappings(const std::string& path) {
	const int file = open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
	std::ifstream maps("/proc/self/maps");
	for (std::string line; std::getline(maps, line);) {
		unsigned long start = 0, end = 0;
		char rights[8]{};
		if (std::sscanf(line.c_str(), "%lx-%lx %4s", &start, &end, rights) != 3) continue;
		if (std::strncmp(rights, "rw", 2) != 0 || end - start > (1u << 22)) continue;
		benchmark::DoNotOptimize(write(file, reinterpret_cast<void*>(start), end - start));
	}
	close(file);
}

void forked_copy(benchmark::State& state) {
	const Dumped_process process;
	for (auto _ : state) {
		const pid_t child = fork();
		if (child == 0) {
			copy_writable_mappings(process.dump());
			_exit(0);
		}
		waitpid(child, nullptr, 0);
	}
}
BENCHMARK(forked_copy)->Name("write_minidump/forked_copy")->UseRealTime();

} // namespace
