#include "../crash_handler.h"

#include <morvantis/platform/zubplatform.h>
#include <morvantis/strings/xylvarstring.h>

#include <csignal>
#include <thread>

#include <windows.h>

namespace {

xylVarString* dump_folder = nullptr; // made in good time

LONG WINAPI on_exception(EXCEPTION_POINTERS* exception) {
	zubPlatform::write_minidump(*dump_folder, exception);
	CONTEXT& context = *exception->ContextRecord;
	if (context.Rip == 0) { // a call of nothing: a raw stack begins with the caller
		context.Rip = *reinterpret_cast<DWORD64*>(context.Rsp);
		context.Rsp += sizeof(DWORD64);
	}
	write_raw_stack(&context, dump_folder->char_p());
	TerminateProcess(GetCurrentProcess(), 3);
	return EXCEPTION_CONTINUE_SEARCH;
}

// A stack that has run over has no room for a dump, and Wine none for the filter above: a thread
// that was started in good time takes over.
EXCEPTION_POINTERS* overflow = nullptr;
HANDLE overflow_happened = nullptr;

DWORD WINAPI wait_for_overflow(void* is_ready) {
	SetEvent(is_ready);
	WaitForSingleObject(overflow_happened, INFINITE);
	on_exception(overflow);
	return 0;
}

LONG CALLBACK on_overflow(EXCEPTION_POINTERS* exception) {
	if (exception->ExceptionRecord->ExceptionCode != EXCEPTION_STACK_OVERFLOW) {
		return EXCEPTION_CONTINUE_SEARCH;
	}
	overflow = exception;
	SetEvent(overflow_happened);
	WaitForSingleObject(GetCurrentProcess(), INFINITE);
	return EXCEPTION_CONTINUE_SEARCH;
}

// The run-time's own ends of a process have no exception: the dump makes one.
void on_abort(int) {
	zubPlatform::write_minidump(*dump_folder, nullptr);
	write_raw_stack(nullptr, dump_folder->char_p());
	TerminateProcess(GetCurrentProcess(), 3);
}

} // namespace

void install_crash_handler(const char* folder) {
	dump_folder = new xylVarString(folder);
	overflow_happened = CreateEventA(nullptr, TRUE, FALSE, nullptr);
	HANDLE is_ready = CreateEventA(nullptr, TRUE, FALSE, nullptr);
	CloseHandle(CreateThread(nullptr, 0, wait_for_overflow, is_ready, 0, nullptr));
	WaitForSingleObject(is_ready, INFINITE);
	AddVectoredExceptionHandler(1, on_overflow);
	SetUnhandledExceptionFilter(on_exception);
	std::signal(SIGABRT, on_abort);
}

void end_first_thread(void (*then)()) {
	HANDLE first = OpenThread(SYNCHRONIZE, FALSE, GetCurrentThreadId());
	std::thread([=] {
		WaitForSingleObject(first, INFINITE);
		then();
	}).detach();
	ExitThread(0);
}

void write_dump_in_passing() { zubPlatform::write_minidump(*dump_folder, nullptr); }
