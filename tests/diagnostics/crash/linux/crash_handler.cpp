#include "../crash_handler.h"

#include <morvantis/platform/zubplatform.h>
#include <morvantis/strings/xylvarstring.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

xylVarString* dump_folder = nullptr; // made in good time: a handler allocates nothing

void on_crash(int, siginfo_t* record, void* context) {
	zubException_pointers exception{record, context};
	zubPlatform::write_minidump(*dump_folder, &exception);
	write_raw_stack(context, dump_folder->char_p());
	_exit(3);
}

} // namespace

void install_crash_handler(const char* folder) {
	dump_folder = new xylVarString(folder);
	static constexpr size_t size = 256 << 10;
	stack_t stack{};
	stack.ss_sp = std::malloc(size); // a stack that has run over can't serve its own handler
	stack.ss_size = size;
	sigaltstack(&stack, nullptr);
	struct sigaction action{};
	action.sa_sigaction = on_crash;
	action.sa_flags = SA_SIGINFO | SA_ONSTACK;
	for (const int signal : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT}) {
		sigaction(signal, &action, nullptr);
	}
	const rlimit no_core{0, 0};
	setrlimit(RLIMIT_CORE, &no_core);
}

void end_first_thread(void (*then)()) {
	std::thread([then] {
		// It stays listed, as a zombie, for as long as the process has other threads.
		for (std::string state; state != "Z";) {
			std::ifstream status("/proc/self/status");
			for (std::string word; status >> word && word != "State:";) {
			}
			status >> state;
		}
		then();
	}).detach();
	pthread_exit(nullptr);
}

void write_dump_in_passing() { zubPlatform::write_minidump(*dump_folder, nullptr); }
