// zubPlatform's answers on Linux.
#include "temporary_folder.h"

#include <morvantis/platform/zubplatform.h>
#include <morvantis/strings/xylvarstring.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>

#include <pthread.h>
#include <sched.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Runs `work` on a thread of its own, so that its attributes end with it.
template <typename Work> void on_own_thread(Work work) { std::thread(work).join(); }

void* self() { return zubPlatform::get_current_native_thread_handle(); }

TEST(zubPlatform_linux, ProcessAndThreadAreTheKernels) {
	EXPECT_EQ(zubPlatform::get_current_process_id(), static_cast<xylUInt32>(getpid()));
	EXPECT_EQ(zubPlatform::get_native_thread_id(self()), static_cast<unsigned long>(gettid()));
	EXPECT_EQ(self(), reinterpret_cast<void*>(pthread_self()));
	void* main_thread = self();
	on_own_thread([&] { EXPECT_EQ(zubPlatform::get_native_thread_id(main_thread), 0u); });
}

TEST(zubPlatform_linux, CounterIsInNanoseconds) {
	EXPECT_EQ(zubPlatform::get_timestamp_counter_frequency(), 1'000'000'000);
}

TEST(zubPlatform_linux, ThreadNamesKeepFifteenBytes) {
	on_own_thread([] {
		const auto name = [] {
			char text[16]{};
			pthread_getname_np(pthread_self(), text, sizeof(text));
			return std::string(text);
		};
		zubPlatform::set_thread_name(self(), xylVarString("loader"));
		EXPECT_EQ(name(), "loader");
		zubPlatform::set_thread_name(self(), xylVarString("0123456789abcdefgh"));
		EXPECT_EQ(name(), "0123456789abcde");
		zubPlatform::set_thread_name(self(), xylVarString());
		EXPECT_EQ(name(), "");
	});
}

TEST(zubPlatform_linux, PrioritiesAreNiceValues) {
	on_own_thread([] {
		const auto nice_value = [] {
			return getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()));
		};
		zubPlatform::set_thread_priority(self(), xylThread_priority_low);
		EXPECT_EQ(nice_value(), 5);
		rlimit limit{};
		getrlimit(RLIMIT_NICE, &limit);
		const bool may_raise = geteuid() == 0 || limit.rlim_cur >= 25;
		zubPlatform::set_thread_priority(self(), xylThread_priority_high);
		EXPECT_EQ(nice_value(), may_raise ? -5 : 5);
		zubPlatform::set_thread_priority(self(), static_cast<xylThread_priority>(3));
		EXPECT_EQ(nice_value(), may_raise ? 0 : 5);
	});
}

TEST(zubPlatform_linux, AffinityIsAMaskOfProcessors) {
	on_own_thread([] {
		cpu_set_t before;
		ASSERT_EQ(sched_getaffinity(0, sizeof(before), &before), 0);
		unsigned int processor = 0;
		while (!CPU_ISSET(processor, &before)) ++processor;
		ASSERT_LT(processor, 64u);
		zubPlatform::set_thread_affinity(self(), xylUInt64{1} << processor);
		cpu_set_t after;
		ASSERT_EQ(sched_getaffinity(0, sizeof(after), &after), 0);
		EXPECT_EQ(CPU_COUNT(&after), 1);
		EXPECT_TRUE(CPU_ISSET(processor, &after));
		zubPlatform::set_thread_affinity(self(), 0); // refused, and nothing changes
		ASSERT_EQ(sched_getaffinity(0, sizeof(after), &after), 0);
		EXPECT_EQ(CPU_COUNT(&after), 1);
	});
}

TEST(zubPlatform_linux_death_test, RaisedExceptionIsATrap) {
	EXPECT_EXIT(zubPlatform::raise_exception(0xDEADFACE), testing::KilledBySignal(SIGTRAP), "");
}

// A child that is traced by this process sees its debugger.
TEST(zubPlatform_linux, TracerIsADebugger) {
	const pid_t child = fork();
	ASSERT_GE(child, 0);
	if (child == 0) {
		if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(2);
		_exit(zubPlatform::is_debugger_present() ? 1 : 0);
	}
	int status = 0;
	ASSERT_EQ(waitpid(child, &status, 0), child);
	ASSERT_TRUE(WIFEXITED(status));
	if (WEXITSTATUS(status) == 2) GTEST_SKIP() << "tracing isn't allowed here";
	EXPECT_EQ(WEXITSTATUS(status), 1);
}

// No debugger attaches to a first thread that has ended, so the others count.
TEST(zubPlatform_linux, TracerOfTheCallingThreadIsADebugger) {
	const pid_t child = fork();
	ASSERT_GE(child, 0);
	if (child == 0) {
		std::thread([] {
			if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(2);
			_exit(zubPlatform::is_debugger_present() ? 1 : 0);
		}).join();
	}
	// Who traces a thread waits for it, too, and before its process.
	int status = 0;
	pid_t ended = 0;
	while ((ended = waitpid(-1, &status, __WALL)) > 0 && ended != child) {
	}
	ASSERT_EQ(ended, child);
	ASSERT_TRUE(WIFEXITED(status));
	if (WEXITSTATUS(status) == 2) GTEST_SKIP() << "tracing isn't allowed here";
	EXPECT_EQ(WEXITSTATUS(status), 1);
}

// The kernel's facts on a process begin with a name that is anybody's choice.
TEST(zubPlatform_linux, NameOfAThreadIsNoDebugger) {
	on_own_thread([] {
		zubPlatform::set_thread_name(self(), xylVarString("TracerPid:1234"));
		EXPECT_FALSE(zubPlatform::is_debugger_present());
	});
}

// Ends the first thread of the process and goes on in a second one, whose result is the process's.
[[noreturn]] void outlive_first_thread(int (*then)()) {
	std::thread([then] {
		// It stays listed, as a zombie, for as long as the process has other threads.
		for (std::string state; state != "Z";) {
			std::ifstream status("/proc/self/status");
			for (std::string word; status >> word && word != "State:";) {
			}
			status >> state;
		}
		_exit(then());
	}).detach();
	syscall(SYS_exit, 0); // not by pthread_exit(), whose unwinding the test's frames would catch
	std::abort();
}

TEST(zubPlatform_linux_death_test, AnswersOutliveTheFirstThread) {
	GTEST_FLAG_SET(death_test_style, "threadsafe");
	const auto count_wrong_answers = [] {
		zubPlatform::set_thread_name(self(), xylVarString("second"));
		char name[16]{};
		pthread_getname_np(pthread_self(), name, sizeof(name));
		int wrong = std::string(name) != "second";
		wrong += zubPlatform::get_application_memory() == 0;
		wrong += zubPlatform::get_application_commit_memory() == 0;
		wrong += !zubPlatform::is_directory_exists(zubPlatform::get_executable_path());
		wrong += zubPlatform::is_debugger_present();
		return wrong;
	};
	EXPECT_EXIT(outlive_first_thread(count_wrong_answers), testing::ExitedWithCode(0), "");
}

TEST(zubPlatform_linux, ErrorNumberSaysWhyAFolderFailed) {
	const Temporary_folder folder;
	const xylVarString there(folder.path().c_str());
	const xylVarString file(folder.make_file("file").c_str());
	const xylVarString missing((folder / "missing").c_str());
	const xylVarString deeper((folder / "missing/deeper").c_str());
	struct Case {
		const char* name;
		bool (*operation)(const xylString_base&);
		const xylVarString& path;
		int error;
	};
	const Case cases[] = {
		{"a folder that is there", zubPlatform::create_directory, there, EEXIST},
		{"a file that is there", zubPlatform::create_directory, file, EEXIST},
		{"a folder in a missing one", zubPlatform::create_directory, deeper, ENOENT},
		{"a missing folder to delete", zubPlatform::remove_directory, missing, ENOENT},
		{"one in a missing one", zubPlatform::remove_directory, deeper, ENOENT},
		{"a missing folder", zubPlatform::is_directory_exists, missing, ENOENT},
		{"a missing file", zubPlatform::file_exists, missing, ENOENT},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		errno = 0;
		EXPECT_FALSE(c.operation(c.path));
		EXPECT_EQ(errno, c.error);
	}
	errno = 0;
	EXPECT_EQ(zubPlatform::get_file_last_modification_date(missing), -1);
	EXPECT_EQ(errno, ENOENT);
}

TEST(zubPlatform_linux, FiguresOfTheKernel) {
	EXPECT_EQ(zubPlatform::page_size(), static_cast<xylUInt64>(sysconf(_SC_PAGESIZE)));
	int local = 0;
	EXPECT_EQ(zubPlatform::allocation_size(&local), 0u) << "only blocks of allocate_memory()";
	EXPECT_EQ(zubPlatform::allocation_size(nullptr), 0u);
}

TEST(zubPlatform_linux, SymbolsOfALoadedLibrary) {
	void* module = zubPlatform::load_library(xylVarString("libm.so.6"));
	ASSERT_NE(module, nullptr);
	xylVarString symbol("cos");
	auto* cosine =
		reinterpret_cast<double (*)(double)>(zubPlatform::get_process_address(module, symbol));
	ASSERT_NE(cosine, nullptr);
	EXPECT_EQ(cosine(0.0), 1.0);
	symbol = "no_such_symbol";
	EXPECT_EQ(zubPlatform::get_process_address(module, symbol), nullptr);
	EXPECT_TRUE(zubPlatform::free_library(module));
}

TEST(zubPlatform_linux, EnvironmentIsTheProcesss) {
	ASSERT_TRUE(zubPlatform::set_environment_variable("MORVANTIS_TEST", "first"));
	ASSERT_TRUE(zubPlatform::set_environment_variable("MORVANTIS_TEST", "second"));
	EXPECT_STREQ(std::getenv("MORVANTIS_TEST"), "second");
	ASSERT_TRUE(zubPlatform::set_environment_variable("MORVANTIS_TEST", ""));
	EXPECT_STREQ(std::getenv("MORVANTIS_TEST"), "");
	EXPECT_FALSE(zubPlatform::set_environment_variable("A=B", "value"));
	unsetenv("MORVANTIS_TEST");
}

TEST(zubPlatform_linux, ComputerNameIsTheHostPartCutToFifteen) {
	char host[256]{};
	ASSERT_EQ(gethostname(host, sizeof(host) - 1), 0);
	xylVarString name;
	ASSERT_TRUE(zubPlatform::get_computer_name(name));
	const std::string expected =
		std::string(host).substr(0, std::min<size_t>(std::strcspn(host, "."), 15));
	EXPECT_EQ(std::string(name.char_p()), expected);
}

TEST(zubPlatform_linux, TemporaryFolderIsOfTheEnvironment) {
	const char* set = std::getenv("TMPDIR");
	const std::string before = set ? set : "";
	const auto answer = [](const char* folder) {
		setenv("TMPDIR", folder, 1);
		return std::string(zubPlatform::get_temp_path().char_p());
	};
	EXPECT_EQ(answer("/var/tmp"), "/var/tmp/");
	EXPECT_EQ(answer("/var/tmp/"), "/var/tmp/");
	EXPECT_EQ(answer(""), "/tmp/");
	EXPECT_EQ(answer("/"), "/");
	unsetenv("TMPDIR");
	EXPECT_EQ(std::string(zubPlatform::get_temp_path().char_p()), "/tmp/");
	EXPECT_DEATH(answer(("/" + std::string(300, 'x')).c_str()), "");
	if (set) setenv("TMPDIR", before.c_str(), 1);
}

TEST(zubPlatform_linux, ExecutableFolderIsThatOfThisProgram) {
	const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
	EXPECT_EQ(std::string(zubPlatform::get_executable_path().char_p()),
	          program.substr(0, program.rfind('/') + 1));
}

TEST(zubPlatform_linux, AbsolutePathsAreTakenByTheirNames) {
	struct Case {
		const char* path;
		const char* expected;
	};
	const Case cases[] = {
		{"/", "/"},
		{"//", "/"},
		{"/..", "/"},
		{"/../..", "/"},
		{"/a/..", "/"},
		{"/a/../", "/"},
		{"/a/b/..", "/a"},
		{"/a/./b", "/a/b"},
		{"/a//b///c", "/a/b/c"},
		{"/a/b/", "/a/b/"},
		{"/a/.b/..c", "/a/.b/..c"},
		{"/missing/../a", "/a"},
		{"/...", "/..."},
		// A backslash separates nothing, and becomes a slash like everywhere.
		{"/a\\..\\b", "/a/../b"},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.path);
		EXPECT_EQ(
			std::string(
				zubPlatform::convert_base_path_to_absolute_path(xylVarString(c.path)).char_p()),
			c.expected);
	}
}

TEST(zubPlatform_linux, RemoveDeletesLinksAndNotWhatTheyLeadTo) {
	const Temporary_folder folder;
	const std::string kept = folder.make_file("kept/file.txt");
	const std::string tree = folder / "tree";
	std::filesystem::create_directory(tree);
	std::filesystem::create_directory_symlink(folder.path() / "kept", tree + "/to_folder");
	std::filesystem::create_symlink(kept, tree + "/to_file");
	std::filesystem::create_symlink("nowhere", tree + "/dangling");
	EXPECT_TRUE(zubPlatform::remove_directory(xylVarString(tree.c_str())));
	EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(tree)));
	EXPECT_TRUE(std::filesystem::exists(kept));

	// The folder itself may be a link, with or without a separator behind its name.
	for (const char* end : {"", "/"}) {
		std::filesystem::create_directory_symlink(folder.path() / "kept", tree);
		EXPECT_TRUE(zubPlatform::remove_directory(xylVarString((tree + end).c_str())));
		EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(tree)));
		EXPECT_TRUE(std::filesystem::exists(kept));
	}
}

TEST(zubPlatform_linux, RemoveReportsWhatItHadToLeave) {
	static constexpr uid_t nobody = 65534;
	const Temporary_folder folder;
	const std::string kept = folder.make_file("tree/locked/file.txt");
	std::filesystem::permissions(folder.path() / "tree/locked",
	                             std::filesystem::perms::owner_read |
	                                 std::filesystem::perms::owner_exec);
	const bool is_root = geteuid() == 0; // to whom nothing is forbidden
	if (is_root) {
		ASSERT_EQ(seteuid(nobody), 0);
	}
	EXPECT_FALSE(zubPlatform::remove_directory(xylVarString((folder / "tree").c_str())));
	EXPECT_EQ(errno, EACCES);
	if (is_root) {
		ASSERT_EQ(seteuid(0), 0);
	}
	EXPECT_TRUE(std::filesystem::exists(kept));
}

} // namespace
