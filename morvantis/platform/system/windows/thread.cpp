#include <morvantis/platform/system/thread.h>

#include <morvantis/platform/system/windows/include_windows.h>

namespace {

constexpr DWORD naming_exception = 0x406D1388;

// What a debugger reads when it takes the naming exception.
struct Thread_name_record {
	DWORD type = 0x1000;
	const char* name;
	DWORD thread_id;
	DWORD flags = 0;
};
static_assert(sizeof(Thread_name_record) == 3 * sizeof(ULONG_PTR));

LONG CALLBACK accept_naming_exception(EXCEPTION_POINTERS* exception) {
	return exception->ExceptionRecord->ExceptionCode == naming_exception
	           ? EXCEPTION_CONTINUE_EXECUTION
	           : EXCEPTION_CONTINUE_SEARCH;
}

} // namespace

void* os::current_thread() { return GetCurrentThread(); }

unsigned long os::thread_id(void* thread) { return GetThreadId(thread); }

// The guard is a vectored handler and not a guarded block, which every compiler family spells in a
// way of its own. It is asked last: handlers of the host see the exception as they would in front
// of a guarded block, and the exception ends here.
void os::name_thread(void* thread, const char* name) {
	Thread_name_record record{.name = name, .thread_id = GetThreadId(thread)};
	void* guard = AddVectoredExceptionHandler(0, accept_naming_exception);
	RaiseException(naming_exception, 0, sizeof(record) / sizeof(ULONG_PTR),
	               reinterpret_cast<ULONG_PTR*>(&record));
	RemoveVectoredExceptionHandler(guard);
}

bool os::set_thread_priority(void* thread, int priority) {
	return SetThreadPriority(thread, priority) != 0;
}

bool os::set_thread_affinity(void* thread, xylUInt64 mask) {
	return SetThreadAffinityMask(thread, mask) != 0;
}
