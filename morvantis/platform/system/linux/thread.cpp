#include <morvantis/platform/system/thread.h>

#include <cstring>

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

pthread_t pthread_of(void* thread) { return reinterpret_cast<pthread_t>(thread); }

} // namespace

void* os::current_thread() { return reinterpret_cast<void*>(pthread_self()); }

// The C library doesn't tell the kernel's number of another thread.
unsigned long os::thread_id(void* thread) {
	if (!pthread_equal(pthread_of(thread), pthread_self())) return 0;
	return static_cast<unsigned long>(gettid());
}

void os::name_thread(void* thread, const char* name) {
	char cut[16]{}; // the kernel's limit, terminator included
	std::strncpy(cut, name, sizeof(cut) - 1);
	pthread_setname_np(pthread_of(thread), cut);
}

// Nice values of -5, 0 and 5: they shift a thread within the ordinary scheduler, as the
// priorities of the other system do.
bool os::set_thread_priority(void* thread, int priority) {
	const unsigned long id = thread_id(thread);
	if (id == 0) return false;
	return setpriority(PRIO_PROCESS, static_cast<id_t>(id), -priority * 5 / 2) == 0;
}

bool os::set_thread_affinity(void* thread, xylUInt64 mask) {
	cpu_set_t processors;
	CPU_ZERO(&processors);
	for (unsigned int i = 0; i < 64; ++i) {
		if (mask >> i & 1) CPU_SET(i, &processors);
	}
	return pthread_setaffinity_np(pthread_of(thread), sizeof(processors), &processors) == 0;
}
