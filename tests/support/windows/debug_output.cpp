// Here debug output is an exception that a debugger takes; this handler stands in for one.

#include "../debug_output.h"

#include <morvantis/platform/system/windows/include_windows.h>

#include <utility>

namespace {

constexpr DWORD print_exception = 0x40010006; // its arguments: the size with terminator, the text

std::string* caught = nullptr;

LONG CALLBACK take_print(EXCEPTION_POINTERS* exception) {
	const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
	if (record.ExceptionCode != print_exception) return EXCEPTION_CONTINUE_SEARCH;
	caught->append(reinterpret_cast<const char*>(record.ExceptionInformation[1]),
	               record.ExceptionInformation[0] - 1);
	return EXCEPTION_CONTINUE_EXECUTION;
}

} // namespace

Debug_output_catcher::Debug_output_catcher() {
	caught = new std::string;
	state_ = AddVectoredExceptionHandler(1, take_print);
}

Debug_output_catcher::~Debug_output_catcher() {
	RemoveVectoredExceptionHandler(state_);
	delete std::exchange(caught, nullptr);
}

std::string Debug_output_catcher::take() { return std::exchange(*caught, {}); }
