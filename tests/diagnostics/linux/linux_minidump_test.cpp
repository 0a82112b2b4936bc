// Crash dumps on Linux: the file is written by us.
#include "../minidump_reader.h"
#include "temporary_folder.h"

#include <morvantis/platform/zubplatform.h>
#include <morvantis/strings/xylvarstring.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <ucontext.h>
#include <unistd.h>

namespace {

using testing::HasSubstr;

class Linux_minidump_test : public testing::Test {
protected:
	Minidump dump_in_passing() {
		EXPECT_FALSE(zubPlatform::write_minidump(folder_text_, nullptr));
		return Minidump(path());
	}
	Minidump dump_of(zubException_pointers exception) {
		EXPECT_FALSE(zubPlatform::write_minidump(folder_text_, &exception));
		return Minidump(path());
	}
	std::string path() const { return folder_ / "dump.dmp"; }

	const Temporary_folder folder_;
	const xylVarString folder_text_{folder_.path().string().c_str()};
};

// A thread that keeps a pattern on its stack and waits in the kernel.
class Waiting_thread {
public:
	explicit Waiting_thread(int number, bool keeps_signals_out = false) {
		EXPECT_EQ(pipe(pipe_), 0);
		thread_ = std::thread([=, this] {
			if (keeps_signals_out) {
				sigset_t all;
				sigfillset(&all);
				pthread_sigmask(SIG_SETMASK, &all, nullptr);
			}
			// Not a variable: sanitizers put those elsewhere.
			char* local = static_cast<char*>(__builtin_alloca(64));
			std::snprintf(local, 64, "pattern of thread %d", number);
			pattern_ = local;
			id_ = gettid();
			char byte;
			while (read(pipe_[0], &byte, 1) < 0) {
			}
			sigset_t none;
			sigemptyset(&none);
			pthread_sigmask(SIG_SETMASK, &none, nullptr); // what is pending comes now
		});
		while (id_ == 0) std::this_thread::yield();
	}
	~Waiting_thread() {
		EXPECT_EQ(write(pipe_[1], "", 1), 1);
		thread_.join();
		close(pipe_[0]);
		close(pipe_[1]);
	}
	Waiting_thread(const Waiting_thread&) = delete;
	Waiting_thread& operator=(const Waiting_thread&) = delete;

	uint32_t id() const { return static_cast<uint32_t>(id_.load()); }
	const char* pattern() const { return pattern_; }

private:
	int pipe_[2]{};
	std::atomic<int> id_ = 0;
	const char* pattern_ = nullptr;
	std::thread thread_;
};

TEST_F(Linux_minidump_test, EveryThreadIsThereWithItsStack) {
	std::vector<std::unique_ptr<Waiting_thread>> threads;
	for (int i = 0; i < 8; ++i) threads.push_back(std::make_unique<Waiting_thread>(i));
	const Minidump dump = dump_in_passing();
	for (const auto& thread : threads) {
		SCOPED_TRACE(thread->pattern());
		ASSERT_EQ(dump.threads.count(thread->id()), 1u);
		const Minidump::Thread& record = dump.threads.at(thread->id());
		EXPECT_EQ(dump.memory(thread->pattern(), 20), std::string(thread->pattern(), 20));
		const uint64_t pointer = Minidump::stack_pointer(record.context);
		EXPECT_EQ(record.stack.start, pointer - 128) << "the red zone belongs to the frame";
		EXPECT_LE(record.stack.bytes.size(), 256u << 10);
		EXPECT_EQ(dump.memory(reinterpret_cast<void*>(pointer), 8),
		          record.stack.bytes.substr(128, 8));
	}
}

// Such a thread can't be interrupted; the kernel tells where it waits. The signal that was sent to
// it comes when nobody is interested any more, and must not end the process.
TEST_F(Linux_minidump_test, ThreadThatKeepsSignalsOutIsThereAndLivesOn) {
	const Waiting_thread thread(7, true);
	const Minidump dump = dump_in_passing();
	ASSERT_EQ(dump.threads.count(thread.id()), 1u);
	EXPECT_EQ(dump.memory(thread.pattern(), 20), std::string(thread.pattern(), 20));
}

TEST_F(Linux_minidump_test, ExceptionIsATrapThatNobodyElseSees) {
	static int seen;
	seen = 0;
	struct sigaction action{}, before{}, after{};
	action.sa_handler = [](int) { ++seen; };
	sigaction(SIGTRAP, &action, &before);
	const Minidump dump = dump_in_passing();
	sigaction(SIGTRAP, &before, &after);
	EXPECT_EQ(dump.exception.code, static_cast<uint32_t>(SIGTRAP));
	EXPECT_EQ(seen, 0);
	EXPECT_EQ(after.sa_handler, action.sa_handler) << "the host's handler is in force again";
}

TEST_F(Linux_minidump_test, TrapThatIsKeptOutIsLetInForTheDump) {
	sigset_t trap, before, after;
	sigemptyset(&trap);
	sigaddset(&trap, SIGTRAP);
	pthread_sigmask(SIG_BLOCK, &trap, &before);
	const Minidump dump = dump_in_passing();
	pthread_sigmask(SIG_SETMASK, &before, &after);
	EXPECT_EQ(dump.exception.code, static_cast<uint32_t>(SIGTRAP));
	EXPECT_EQ(sigismember(&after, SIGTRAP), 1);
}

TEST_F(Linux_minidump_test, HostsUseOfTheHoldingSignalIsPutBack) {
	struct sigaction action{}, before{}, after{};
	action.sa_handler = [](int) {};
	sigaction(SIGURG, &action, &before);
	dump_in_passing();
	sigaction(SIGURG, &before, &after);
	EXPECT_EQ(after.sa_handler, action.sa_handler);
}

// From a handler on a stack of its own, as hosts do it.
TEST_F(Linux_minidump_test, HandlersRegistersAreTheDumpsOwn) {
	static const xylVarString* folder;
	static uint64_t instruction, pointer;
	folder = &folder_text_;
	std::vector<char> room(64 << 10);
	stack_t stack{}, stack_before{};
	stack.ss_sp = room.data();
	stack.ss_size = room.size();
	sigaltstack(&stack, &stack_before);
	struct sigaction action{}, before{};
	action.sa_flags = SA_SIGINFO | SA_ONSTACK;
	action.sa_sigaction = [](int, siginfo_t* record, void* context) {
		const auto& registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
		instruction = static_cast<uint64_t>(registers[REG_RIP]);
		pointer = static_cast<uint64_t>(registers[REG_RSP]);
		zubException_pointers exception{record, context};
		zubPlatform::write_minidump(*folder, &exception);
	};
	sigaction(SIGUSR1, &action, &before);
	std::raise(SIGUSR1);
	sigaction(SIGUSR1, &before, nullptr);
	sigaltstack(&stack_before, nullptr);
	const Minidump dump(path());
	EXPECT_EQ(dump.exception.code, static_cast<uint32_t>(SIGUSR1));
	EXPECT_EQ(dump.exception.thread, static_cast<uint32_t>(gettid()));
	EXPECT_EQ(Minidump::instruction(dump.exception.context), instruction);
	EXPECT_EQ(Minidump::stack_pointer(dump.exception.context), pointer);
	EXPECT_EQ(dump.exception.address, instruction) << "a signal that was sent has no address";
	EXPECT_EQ(dump.threads.at(static_cast<uint32_t>(gettid())).context, dump.exception.context);
	EXPECT_NE(dump.memory(reinterpret_cast<void*>(instruction), 16), "");
}

template <typename Number> Number number_at(const std::string& bytes, size_t position) {
	Number number;
	std::memcpy(&number, bytes.data() + position, sizeof(number));
	return number;
}

TEST_F(Linux_minidump_test, EveryRegisterHasItsPlace) {
	struct Place {
		int index;
		size_t position; // in the context of a dump
	};
	static constexpr Place places[] = {
		{REG_RAX, 0x78}, {REG_RCX, 0x80}, {REG_RDX, 0x88}, {REG_RBX, 0x90}, {REG_RSP, 0x98},
		{REG_RBP, 0xA0}, {REG_RSI, 0xA8}, {REG_RDI, 0xB0}, {REG_R8, 0xB8},  {REG_R9, 0xC0},
		{REG_R10, 0xC8}, {REG_R11, 0xD0}, {REG_R12, 0xD8}, {REG_R13, 0xE0}, {REG_R14, 0xE8},
		{REG_R15, 0xF0}, {REG_RIP, 0xF8}};
	ucontext_t context{};
	greg_t* const registers = context.uc_mcontext.gregs;
	for (const Place& place : places) registers[place.index] = 0x7700 + place.index;
	registers[REG_EFL] = 0x12345678;
	registers[REG_CSGSFS] = 0x0044'0033'0022'0011; // ss, fs, gs, cs
	_libc_fpstate floating_point{};
	for (size_t i = 0; i < sizeof(floating_point); ++i) {
		reinterpret_cast<unsigned char*>(&floating_point)[i] = static_cast<unsigned char>(i * 7);
	}
	context.uc_mcontext.fpregs = &floating_point;
	siginfo_t record{};
	const std::string found = dump_of({&record, &context}).exception.context;
	for (const Place& place : places) {
		EXPECT_EQ(number_at<uint64_t>(found, place.position),
		          static_cast<uint64_t>(0x7700 + place.index));
	}
	EXPECT_EQ(number_at<uint32_t>(found, 0x30), 0x10000Fu) << "what of it is valid";
	EXPECT_EQ(number_at<uint32_t>(found, 0x34), floating_point.mxcsr);
	EXPECT_EQ(number_at<uint16_t>(found, 0x38), 0x11) << "cs";
	EXPECT_EQ(number_at<uint16_t>(found, 0x3E), 0x33) << "fs";
	EXPECT_EQ(number_at<uint16_t>(found, 0x40), 0x22) << "gs";
	EXPECT_EQ(number_at<uint16_t>(found, 0x42), 0x44) << "ss";
	EXPECT_EQ(number_at<uint32_t>(found, 0x44), 0x12345678u);
	EXPECT_EQ(std::memcmp(found.data() + 0x100, &floating_point, sizeof(floating_point)), 0);
}

TEST_F(Linux_minidump_test, OfADeepStackTheInnermostPartIsThere) {
	constexpr size_t depth = 512 << 10;
	Minidump::Thread deep;
	std::thread([&] {
		auto* const room = static_cast<volatile char*>(__builtin_alloca(depth));
		room[0] = 1;
		room[depth - 1] = 1;
		deep = dump_in_passing().threads.at(static_cast<uint32_t>(gettid()));
	}).join();
	EXPECT_EQ(deep.stack.start, Minidump::stack_pointer(deep.context) - 128);
	EXPECT_EQ(deep.stack.bytes.size(), 256u << 10);
}

TEST_F(Linux_minidump_test, SystemIsTheKernelsOwnWords) {
	const Minidump dump = dump_in_passing();
	const std::string system = dump.stream(7), process = dump.stream(15);
	utsname name{};
	uname(&name);
	unsigned int major = 0, minor = 0;
	std::sscanf(name.release, "%u.%u", &major, &minor);
	EXPECT_EQ(number_at<uint8_t>(system, 6), static_cast<uint8_t>(sysconf(_SC_NPROCESSORS_ONLN)));
	EXPECT_EQ(number_at<uint32_t>(system, 8), major);
	EXPECT_EQ(number_at<uint32_t>(system, 12), minor);
	EXPECT_EQ(number_at<uint32_t>(system, 20), 0x8201u) << "Linux";
	EXPECT_EQ(dump.text(number_at<uint32_t>(system, 24)), name.version);
	std::ifstream info("/proc/cpuinfo");
	const std::string processor{std::istreambuf_iterator<char>(info), {}};
	EXPECT_THAT(processor, HasSubstr(system.substr(32, 12))) << "the maker";
	EXPECT_THAT(processor, HasSubstr("cpu family\t: " +
	                                 std::to_string(number_at<uint16_t>(system, 2)) + "\n"));
	EXPECT_EQ(number_at<uint32_t>(process, 0), 24u);
	EXPECT_EQ(number_at<uint32_t>(process, 4), 1u) << "the process's number is all there is";
}

TEST_F(Linux_minidump_test, FaultKeepsItsAddressAndWhatRegistersPointAtIsThere) {
	siginfo_t record{};
	record.si_signo = SIGSEGV;
	record.si_code = SEGV_MAPERR;
	record.si_addr = reinterpret_cast<void*>(0x1234);
	ucontext_t context{};
	getcontext(&context);
	static const char pointed_at[512] = "what a register points at";
	context.uc_mcontext.gregs[REG_R13] = reinterpret_cast<greg_t>(pointed_at + 128);
	context.uc_mcontext.gregs[REG_R14] = 0x10; // unreadable
	const Minidump dump = dump_of({&record, &context});
	EXPECT_EQ(dump.exception.code, static_cast<uint32_t>(SIGSEGV));
	EXPECT_EQ(dump.exception.flags, static_cast<uint32_t>(SEGV_MAPERR));
	EXPECT_EQ(dump.exception.address, 0x1234u);
	EXPECT_EQ(dump.memory(pointed_at, 256), std::string(pointed_at, 256));
	EXPECT_EQ(dump.memory(reinterpret_cast<void*>(0x10), 1), "");
}

TEST_F(Linux_minidump_test, DamagedPointersStillMakeADump) {
	EXPECT_EQ(dump_of({nullptr, nullptr}).exception.code, 0u);
	const Minidump dump = dump_of({reinterpret_cast<void*>(16), reinterpret_cast<void*>(-16)});
	EXPECT_EQ(dump.exception.code, 0u);
	EXPECT_GE(dump.threads.size(), 1u);
	EXPECT_FALSE(zubPlatform::write_minidump(folder_text_, reinterpret_cast<void*>(8)));
	EXPECT_EQ(Minidump(path()).exception.code, 0u);
}

TEST_F(Linux_minidump_test, NoRangeOfMemoryOverlapsAnother) {
	const Minidump dump = dump_in_passing();
	std::map<uint64_t, uint64_t> ends;
	for (const Minidump::Range& range : dump.ranges) {
		EXPECT_TRUE(ends.emplace(range.start, range.start + range.bytes.size()).second);
	}
	uint64_t end_before = 0;
	for (const auto& [start, end] : ends) {
		EXPECT_GE(start, end_before);
		end_before = end;
	}
}

// Name, base and build id, as the dynamic linker knows them.
TEST_F(Linux_minidump_test, ModulesAreTheLoadedImagesAndTheProgramIsTheFirst) {
	const Minidump dump = dump_in_passing();
	ASSERT_FALSE(dump.modules.empty());
	EXPECT_EQ(dump.modules[0].name, std::filesystem::read_symlink("/proc/self/exe").string());
	std::map<uint64_t, const Minidump::Module*> modules;
	for (const Minidump::Module& module : dump.modules) modules[module.base] = &module;
	EXPECT_EQ(modules.size(), dump.modules.size());
	const auto compare = [](dl_phdr_info* image, size_t, void* found) {
		const auto& bases = *static_cast<decltype(modules)*>(found);
		std::string identity;
		uint64_t base = ~0ull;
		for (int i = 0; i < image->dlpi_phnum; ++i) {
			const ElfW(Phdr)& segment = image->dlpi_phdr[i];
			if (segment.p_type == PT_LOAD && base == ~0ull) {
				base = image->dlpi_addr + (segment.p_vaddr & ~0xFFFull);
			}
			if (segment.p_type != PT_NOTE) continue;
			const char* note = reinterpret_cast<const char*>(image->dlpi_addr + segment.p_vaddr);
			const std::string notes(note, segment.p_memsz);
			const size_t position = notes.find(std::string("\3\0\0\0GNU\0", 8));
			if (position == std::string::npos) continue;
			identity = "LEpB" +
			           notes.substr(position + 8, static_cast<unsigned char>(notes[position - 4]));
		}
		const auto module = bases.find(base);
		EXPECT_TRUE(module != bases.end()) << image->dlpi_name;
		if (module == bases.end()) return 0;
		EXPECT_EQ(module->second->identity, identity) << image->dlpi_name;
		if (image->dlpi_name[0] == '/') {
			EXPECT_EQ(module->second->name, std::filesystem::canonical(image->dlpi_name).string());
		}
		return 0;
	};
	dl_iterate_phdr(compare, &modules);
}

TEST_F(Linux_minidump_test, ImageThatIsOnlyReadIsNoModule) {
	const int file = open(MORVANTIS_CACHED_LIBRARY, O_RDONLY | O_CLOEXEC);
	ASSERT_GE(file, 0);
	void* const image = mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE, file, 0);
	close(file);
	ASSERT_NE(image, MAP_FAILED);
	for (const Minidump::Module& module : dump_in_passing().modules) {
		EXPECT_NE(module.base, reinterpret_cast<uint64_t>(image)) << module.name;
	}
	munmap(image, 4096);
}

// Letters of two, three and four bytes, and a byte that is none.
TEST_F(Linux_minidump_test, NamesOfModulesAreUtf16) {
	const std::string path = folder_ / "\xC3\xBC\xE4\xB8\xAD\xF0\x9D\x84\x9E\xFF.so";
	std::filesystem::copy_file(MORVANTIS_CACHED_LIBRARY, path);
	void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
	ASSERT_NE(library, nullptr) << dlerror();
	dump_in_passing();
	dlclose(library);
	std::ifstream file(this->path(), std::ios::binary);
	const std::string bytes{std::istreambuf_iterator<char>(file), {}};
	static constexpr char16_t name[] = u"/\u00FC\u4E2D\U0001D11E\u00FF.so";
	EXPECT_NE(bytes.find(std::string(reinterpret_cast<const char*>(name), sizeof(name))),
	          std::string::npos);
}

TEST_F(Linux_minidump_test, KernelsTextsAreThereWithoutTheEnvironment) {
	const Minidump dump = dump_in_passing();
	const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
	EXPECT_THAT(dump.stream(0x47670009), HasSubstr(program + "\n"));
	EXPECT_THAT(dump.stream(0x47670003), HasSubstr("processor"));
	EXPECT_THAT(dump.stream(0x47670004), HasSubstr("Pid:\t" + std::to_string(getpid()) + "\n"));
	std::ifstream file("/proc/self/cmdline", std::ios::binary);
	EXPECT_EQ(dump.stream(0x47670006), std::string(std::istreambuf_iterator<char>(file), {}));
	EXPECT_EQ(dump.stream(0x47670008).size() % 16, 0u);
	EXPECT_FALSE(dump.has(0x47670007)) << "secrets live in the environment";
}

TEST_F(Linux_minidump_test, OnlyTheUserMayReadIt) {
	dump_in_passing();
	struct stat status{};
	ASSERT_EQ(stat(path().c_str(), &status), 0);
	EXPECT_EQ(status.st_mode & 07777, 0600u);
}

TEST_F(Linux_minidump_test, DumpThatDoesNotFitIsEmpty) {
	rlimit before{};
	getrlimit(RLIMIT_FSIZE, &before);
	struct sigaction ignored{}, action_before{};
	ignored.sa_handler = SIG_IGN;
	sigaction(SIGXFSZ, &ignored, &action_before);
	const size_t whole = dump_in_passing().size();
	for (const rlim_t room : {rlim_t{0}, rlim_t{16}, rlim_t{whole / 2}}) {
		const rlimit limit{room, before.rlim_max};
		setrlimit(RLIMIT_FSIZE, &limit);
		EXPECT_FALSE(zubPlatform::write_minidump(folder_text_, nullptr));
		setrlimit(RLIMIT_FSIZE, &before);
		EXPECT_EQ(std::filesystem::file_size(path()), 0u) << room;
	}
	sigaction(SIGXFSZ, &action_before, nullptr);
	dump_in_passing();
}

// What a handler calls must not wait for the dynamic linker's locks or need its heap.
TEST_F(Linux_minidump_test, LibrarysCallsAreBoundWhenItIsLoaded) {
	bool is_bound = false;
	const auto visit = [](dl_phdr_info* image, size_t, void* found) {
		if (!std::strstr(image->dlpi_name, "libMorvantis.Library")) return 0;
		for (int i = 0; i < image->dlpi_phnum; ++i) {
			if (image->dlpi_phdr[i].p_type != PT_DYNAMIC) continue;
			const auto* entry =
				reinterpret_cast<const ElfW(Dyn)*>(image->dlpi_addr + image->dlpi_phdr[i].p_vaddr);
			for (; entry->d_tag != DT_NULL; ++entry) {
				if (entry->d_tag == DT_FLAGS && (entry->d_un.d_val & DF_BIND_NOW))
					*static_cast<bool*>(found) = true;
			}
		}
		return 1;
	};
	EXPECT_EQ(dl_iterate_phdr(visit, &is_bound), 1);
	EXPECT_TRUE(is_bound);
}

TEST_F(Linux_minidump_test, FileThatSomebodyWritesIsLeftAlone) {
	folder_.make_file("dump.dmp", "being written");
	const int file = open(path().c_str(), O_RDWR | O_CLOEXEC);
	ASSERT_EQ(flock(file, LOCK_EX | LOCK_NB), 0);
	EXPECT_FALSE(zubPlatform::write_minidump(folder_text_, nullptr));
	std::ifstream stream(path());
	EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), "being written");
	close(file);
	dump_in_passing(); // and now it is replaced
}

TEST_F(Linux_minidump_test, LongerFileLeavesNothingBehind) {
	folder_.make_file("dump.dmp", std::string(4 << 20, 'x'));
	const Minidump dump = dump_in_passing();
	EXPECT_LT(dump.size(), 2u << 20);
}

// Twelve threads come and go while the dumps are written.
TEST_F(Linux_minidump_test, ThreadsThatComeAndGoDoNoHarm) {
	std::atomic<bool> ends = false;
	std::vector<std::thread> makers;
	for (int i = 0; i < 2; ++i) {
		makers.emplace_back([&] {
			while (!ends) {
				std::vector<std::thread> short_lived;
				for (int k = 0; k < 6; ++k) short_lived.emplace_back([] {});
				for (std::thread& thread : short_lived) thread.join();
			}
		});
	}
	for (int i = 0; i < 20; ++i) EXPECT_GE(dump_in_passing().threads.size(), 3u);
	ends = true;
	for (std::thread& maker : makers) maker.join();
}

} // namespace
