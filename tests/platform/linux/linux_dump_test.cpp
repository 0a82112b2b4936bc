// The guard beside a host's handlers of its signal, and the rights of a dump, on Linux.
#include "temporary_folder.h"

#include <morvantis/platform/system/dump.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <thread>

#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

int lock_failure = 0; // of the next lock; 0: it is the system's own

} // namespace

// In place of the C library's, for file systems without locks.
extern "C" int flock(int file, int operation) noexcept {
	if (lock_failure == 0) return static_cast<int>(syscall(SYS_flock, file, operation));
	errno = lock_failure;
	return -1;
}

namespace {

pid_t trapped = 0; // the thread that the host's handler ran on
int filtered = 0;

void count(void*, void*) { ++filtered; }

// Another thread meets a trap of its own while this one's guard stands.
void let_another_trap(unsigned int) {
	pid_t other = 0;
	std::thread([&] {
		other = gettid();
		std::raise(SIGTRAP);
	}).join();
	EXPECT_TRUE(trapped == 0 || trapped == other);
}

TEST(Dump_guard_linux, TrapOfAnotherThreadIsTheHosts) {
	struct Case {
		const char* name;
		struct sigaction action;
		bool is_seen;
	};
	Case cases[3] = {};
	cases[0].name = "handler with facts";
	cases[0].action.sa_flags = SA_SIGINFO;
	cases[0].action.sa_sigaction = [](int number, siginfo_t* record, void* context) {
		trapped = gettid();
		EXPECT_EQ(number, SIGTRAP);
		EXPECT_EQ(record->si_signo, SIGTRAP);
		EXPECT_NE(context, nullptr);
	};
	cases[0].is_seen = true;
	cases[1].name = "plain handler";
	cases[1].action.sa_handler = [](int number) {
		trapped = gettid();
		EXPECT_EQ(number, SIGTRAP);
	};
	cases[1].is_seen = true;
	cases[2].name = "ignored";
	cases[2].action.sa_handler = SIG_IGN;
	for (Case& c : cases) {
		SCOPED_TRACE(c.name);
		struct sigaction before{};
		sigaction(SIGTRAP, &c.action, &before);
		trapped = filtered = 0;
		os::catch_exception(0xDEADFACE, let_another_trap, count, nullptr);
		sigaction(SIGTRAP, &before, nullptr);
		EXPECT_EQ(trapped != 0, c.is_seen);
		EXPECT_EQ(filtered, 0);
	}
}

TEST(Dump_guard_linux_death_test, TrapOfAnotherThreadEndsAProcessWithoutAHandler) {
	GTEST_FLAG_SET(death_test_style, "threadsafe");
	const auto die = [] {
		const rlimit no_core{0, 0};
		setrlimit(RLIMIT_CORE, &no_core);
		std::signal(SIGTRAP, SIG_DFL);
		os::catch_exception(0xDEADFACE, let_another_trap, count, nullptr);
		std::_Exit(0);
	};
	EXPECT_EXIT(die(), testing::KilledBySignal(SIGTRAP), "");
}

TEST(Dump_file_linux, RightsOfAnOlderFileAreTakenBack) {
	const Temporary_folder folder;
	const std::string path = folder.make_file("dump.dmp");
	ASSERT_EQ(chmod(path.c_str(), 0644), 0);
	os::Dump dump;
	ASSERT_TRUE(os::open_dump(path.c_str(), &dump));
	os::close_dump(dump);
	struct stat facts{};
	ASSERT_EQ(stat(path.c_str(), &facts), 0);
	EXPECT_EQ(facts.st_mode & 07777, 0600u);
}

TEST(Dump_file_linux, FileSystemWithoutLocksGetsItsDump) {
	const Temporary_folder folder;
	const std::string path = folder / "dump.dmp";
	for (const int failure : {ENOLCK, EOPNOTSUPP, ENOSYS}) {
		lock_failure = failure;
		os::Dump dump;
		const bool is_open = os::open_dump(path.c_str(), &dump);
		lock_failure = 0;
		ASSERT_TRUE(is_open) << failure;
		os::close_dump(dump);
	}
}

} // namespace
