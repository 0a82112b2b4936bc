#include <morvantis/platform/system/dump.h>

#include <morvantis/platform/system/windows/include_windows.h>

#include <dbghelp.h>

#include <cstddef>

namespace {

static_assert(sizeof(os::Exception_pointers) == sizeof(EXCEPTION_POINTERS) &&
              offsetof(os::Exception_pointers, context) ==
                  offsetof(EXCEPTION_POINTERS, ContextRecord));

constexpr unsigned int dump_type =
	MiniDumpWithDataSegs | MiniDumpWithHandleData | MiniDumpScanMemory |
	MiniDumpWithUnloadedModules | MiniDumpWithIndirectlyReferencedMemory |
	MiniDumpWithProcessThreadData | MiniDumpWithFullMemoryInfo | MiniDumpWithThreadInfo |
	MiniDumpWithFullAuxiliaryState | MiniDumpIgnoreInaccessibleMemory |
	MiniDumpWithTokenInformation | MiniDumpWithModuleHeaders;
static_assert(dump_type == 0xE9975);

// A call of catch_exception() that is under way.
struct Guard {
	DWORD thread;
	unsigned int code;
	void (*filter)(void* pointers, void* argument);
	void* argument;
	CONTEXT behind;                // where execution goes on
	volatile bool is_over = false; // the filter has run
	Guard* next;
};

// All of them, and what keeps the list together: no thread-local variable, which some run-times
// take from the heap.
Guard* guards = nullptr;
SRWLOCK guards_lock = SRWLOCK_INIT;

void insert(Guard& guard) {
	AcquireSRWLockExclusive(&guards_lock);
	guard.next = guards;
	guards = &guard;
	ReleaseSRWLockExclusive(&guards_lock);
}

void remove(Guard& guard) {
	AcquireSRWLockExclusive(&guards_lock);
	Guard** link = &guards;
	while (*link != &guard) link = &(*link)->next;
	*link = guard.next;
	ReleaseSRWLockExclusive(&guards_lock);
}

// The innermost one of the calling thread for this code.
Guard* find_guard(unsigned int code) {
	AcquireSRWLockShared(&guards_lock);
	Guard* guard = guards;
	while (guard && !(guard->thread == GetCurrentThreadId() && guard->code == code)) {
		guard = guard->next;
	}
	ReleaseSRWLockShared(&guards_lock);
	return guard;
}

LONG CALLBACK run_filter(EXCEPTION_POINTERS* exception) {
	Guard* guard = find_guard(exception->ExceptionRecord->ExceptionCode);
	if (!guard || guard->is_over) return EXCEPTION_CONTINUE_SEARCH;
	guard->filter(exception, guard->argument);
	guard->is_over = true;
	*exception->ContextRecord = guard->behind;
	return EXCEPTION_CONTINUE_EXECUTION;
}

} // namespace

// A vectored handler, asked before all others, and not a guarded block, which each compiler family
// spells in a way of its own.
void os::catch_exception(unsigned int code, void (*raise)(unsigned int),
                         void (*filter)(void*, void*), void* argument) {
	Guard guard{.thread = GetCurrentThreadId(),
	            .code = code,
	            .filter = filter,
	            .argument = argument,
	            .behind = {},
	            .next = nullptr};
	insert(guard);
	void* handler = AddVectoredExceptionHandler(1, run_filter);
	// Comes back twice: the second time from the handler, which has set the flag.
	RtlCaptureContext(&guard.behind);
	if (!guard.is_over) raise(code);
	RemoveVectoredExceptionHandler(handler);
	remove(guard);
}

bool os::open_dump(const char* path, Dump* dump) {
	constexpr DWORD rights = PROCESS_QUERY_INFORMATION | PROCESS_VM_READ | PROCESS_DUP_HANDLE;
	static_assert(rights == 0x450);
	dump->thread_id = GetCurrentThreadId();
	dump->process_id = GetCurrentProcessId();
	dump->process = OpenProcess(rights, FALSE, dump->process_id);
	dump->file = CreateFileA(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
	                         FILE_ATTRIBUTE_NORMAL, nullptr);
	return dump->file && dump->file != INVALID_HANDLE_VALUE;
}

void os::write_dump(const Dump& dump, void* exception_pointers) {
	MINIDUMP_EXCEPTION_INFORMATION information{};
	information.ThreadId = dump.thread_id;
	information.ExceptionPointers = static_cast<EXCEPTION_POINTERS*>(exception_pointers);
	information.ClientPointers = FALSE;
	MiniDumpWriteDump(dump.process, dump.process_id, dump.file,
	                  static_cast<MINIDUMP_TYPE>(dump_type), &information, nullptr, nullptr);
}

void os::close_dump(const Dump& dump) {
	CloseHandle(dump.process);
	CloseHandle(dump.file);
}
