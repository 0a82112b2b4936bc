// The signal is SIGURG, which does nothing unless a process asks for it: a thread that keeps
// signals out for now gets it later, when nobody is interested any more, and must not die of it.
//
// Each run of holding has an odd number while it lasts. A thread that comes tells where its context
// is and sleeps until the number changes; one that comes between two runs goes on at once. The next
// run starts when nobody is left inside the handler, so no context of an old run is ever taken for
// one of the new.
#include <morvantis/platform/system/linux/held_threads.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <ctime>

#include <dirent.h>
#include <fcntl.h>
#include <linux/futex.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int hold_signal = SIGURG;
constexpr xylInt64 patience_ns = 100'000'000;

struct Slot {
	std::atomic<pid_t> id;
	std::atomic<const ucontext_t*> context;
};
Slot slots[os::most_held_threads];
std::atomic<xylUInt32> slot_count;
std::atomic<xylUInt32> run;     // odd while threads are held
std::atomic<xylUInt32> arrived; // in this run
std::atomic<xylUInt32> inside;  // the handler
struct sigaction action_before;

xylInt64 now_ns() {
	timespec time{};
	clock_gettime(CLOCK_MONOTONIC, &time);
	return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
}

// Sleeps while the word has this value, until somebody wakes its sleepers or the time is over.
void sleep_on(std::atomic<xylUInt32>& word, xylUInt32 value, xylInt64 timeout_ns) {
	const timespec timeout{timeout_ns / 1'000'000'000, timeout_ns % 1'000'000'000};
	syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, value, &timeout, nullptr, 0);
}

void wake_all(std::atomic<xylUInt32>& word) {
	syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
}

Slot* find_slot(pid_t id) {
	const xylUInt32 count = slot_count.load();
	for (xylUInt32 i = 0; i < count; ++i) {
		if (slots[i].id.load() == id) return &slots[i];
	}
	return nullptr;
}

void hold(int, siginfo_t*, void* context) {
	const int error_before = errno;
	inside.fetch_add(1);
	const xylUInt32 own_run = run.load();
	Slot* slot = own_run % 2 == 1 ? find_slot(gettid()) : nullptr;
	if (slot && !slot->context.load()) {
		slot->context.store(static_cast<const ucontext_t*>(context));
		arrived.fetch_add(1);
		wake_all(arrived);
		while (run.load() == own_run) sleep_on(run, own_run, 1'000'000'000);
	}
	inside.fetch_sub(1);
	errno = error_before;
}

void interrupt(pid_t id) {
	const xylUInt32 index = slot_count.load();
	slots[index].id.store(id);
	slots[index].context.store(nullptr);
	slot_count.store(index + 1);
	if (tgkill(getpid(), id, hold_signal) != 0) slot_count.store(index); // it has ended
}

// The number in a name of /proc/self/task; 0 for other names.
pid_t number_in(const char* name) {
	pid_t number = 0;
	for (; *name >= '0' && *name <= '9'; ++name) number = number * 10 + (*name - '0');
	return *name ? 0 : number;
}

// Interrupts the threads that aren't listed yet. True if there were some.
bool interrupt_new_threads() {
	const int folder = open("/proc/self/task", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
	if (folder < 0) return false;
	const pid_t self = gettid();
	const xylUInt32 count_before = slot_count.load();
	alignas(dirent64) char entries[2048];
	for (;;) {
		const long size = syscall(SYS_getdents64, folder, entries, sizeof(entries));
		if (size <= 0) break;
		for (long position = 0; position < size;) {
			const auto* entry = reinterpret_cast<const dirent64*>(entries + position);
			position += entry->d_reclen;
			const pid_t id = number_in(entry->d_name);
			if (id == 0 || id == self || find_slot(id)) continue;
			if (slot_count.load() < os::most_held_threads) interrupt(id);
		}
	}
	close(folder);
	return slot_count.load() != count_before;
}

void wait_for_arrivals(xylInt64 deadline) {
	for (;;) {
		const xylUInt32 count = arrived.load();
		const xylInt64 left = deadline - now_ns();
		if (count >= slot_count.load() || left <= 0) return;
		sleep_on(arrived, count, left);
	}
}

} // namespace

size_t os::hold_other_threads() {
	slot_count.store(0);
	arrived.store(0);
	run.fetch_add(1);
	struct sigaction action{};
	action.sa_sigaction = hold;
	action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESTART;
	sigfillset(&action.sa_mask);
	sigaction(hold_signal, &action, &action_before);
	const xylInt64 deadline = now_ns() + patience_ns;
	// Again until no thread is new: one that was about to start others may have done so before it
	// came.
	while (interrupt_new_threads()) wait_for_arrivals(deadline);
	return slot_count.load();
}

os::Held_thread os::held_thread(size_t index) {
	return {slots[index].id.load(), slots[index].context.load()};
}

void os::release_threads() {
	run.fetch_add(1);
	wake_all(run);
	const xylInt64 deadline = now_ns() + patience_ns;
	while (inside.load() != 0 && now_ns() < deadline) sched_yield();
	sigaction(hold_signal, &action_before, nullptr);
}
