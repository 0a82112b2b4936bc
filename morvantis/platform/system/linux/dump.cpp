#include <morvantis/platform/system/dump.h>

#include <morvantis/platform/system/linux/minidump_writer.h>
#include <morvantis/platform/system/linux/own_memory.h>

#include <atomic>
#include <cerrno>
#include <csetjmp>
#include <csignal>

#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int raised_signal = SIGTRAP; // what an exception with a code is here

// The call of catch_exception() that is under way. Handlers of signals belong to the whole process,
// so there is one at a time.
struct Guard {
	std::atomic<bool> is_taken;
	std::atomic<pid_t> thread; // 0: nobody's exception is expected
	void (*filter)(void* pointers, void* argument);
	void* argument;
	sigjmp_buf behind;
	struct sigaction action_before;
};
constinit Guard guard{};

// What would have happened to a signal that isn't ours.
void hand_on(int number, siginfo_t* record, void* context) {
	const struct sigaction before = guard.action_before;
	if (before.sa_flags & SA_SIGINFO) {
		before.sa_sigaction(number, record, context);
	} else if (before.sa_handler == SIG_DFL) {
		sigaction(number, &before, nullptr);
		std::raise(number); // comes when this handler has returned
	} else if (before.sa_handler != SIG_IGN) {
		before.sa_handler(number);
	}
}

void run_filter(int number, siginfo_t* record, void* context) {
	if (guard.thread.load() != gettid()) {
		hand_on(number, record, context);
		return;
	}
	os::Exception_pointers pointers{record, context};
	guard.filter(&pointers, guard.argument);
	siglongjmp(guard.behind, 1);
}

os::Minidump_writer writer;

} // namespace

void os::catch_exception(unsigned int code, void (*raise)(unsigned int),
                         void (*filter)(void*, void*), void* argument) {
	while (guard.is_taken.exchange(true)) sched_yield();
	guard.filter = filter;
	guard.argument = argument;
	struct sigaction action{};
	action.sa_sigaction = run_filter;
	action.sa_flags = SA_SIGINFO | SA_ONSTACK;
	sigaction(raised_signal, &action, &guard.action_before);
	sigset_t expected, mask_before;
	sigemptyset(&expected);
	sigaddset(&expected, raised_signal);
	pthread_sigmask(SIG_UNBLOCK, &expected, &mask_before);
	guard.thread.store(gettid());
	if (sigsetjmp(guard.behind, 1) == 0) raise(code);
	guard.thread.store(0);
	pthread_sigmask(SIG_SETMASK, &mask_before, nullptr);
	sigaction(raised_signal, &guard.action_before, nullptr);
	guard.is_taken.store(false);
}

// A dump holds passwords and letters as the process does: nobody else may read it, even when a file
// that others could read was there before. Some file systems have no locks or no rights, which is
// no reason to go without a dump.
bool os::open_dump(const char* path, Dump* dump) {
	const int file = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
	if (file < 0) return false;
	const bool is_taken = flock(file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
	if (is_taken || ftruncate(file, 0) != 0) {
		close(file);
		return false;
	}
	fchmod(file, 0600);
	dump->file = reinterpret_cast<void*>(static_cast<size_t>(file));
	dump->process_id = static_cast<xylUInt32>(getpid());
	dump->thread_id = static_cast<xylUInt32>(gettid());
	return true;
}

void os::write_dump(const Dump& dump, void* exception_pointers) {
	Exception_pointers exception{};
	read_own_memory(reinterpret_cast<xylUInt64>(exception_pointers), &exception, sizeof(exception));
	writer.write(dump, exception);
}

void os::close_dump(const Dump& dump) {
	close(static_cast<int>(reinterpret_cast<size_t>(dump.file)));
}
