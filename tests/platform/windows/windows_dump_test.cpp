// The guard beside a host's handlers on Windows.
#include <morvantis/platform/system/dump.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include <morvantis/platform/system/windows/include_windows.h>

namespace {

constexpr DWORD code = 0xDEADFACE, another_code = 0xE0001234;

std::atomic<int> seen = 0; // by the host's handler, which is asked last and goes on
int filtered = 0;

LONG CALLBACK see(EXCEPTION_POINTERS* exception) {
	const DWORD raised = exception->ExceptionRecord->ExceptionCode;
	if (raised != code && raised != another_code) return EXCEPTION_CONTINUE_SEARCH;
	++seen;
	return EXCEPTION_CONTINUE_EXECUTION;
}

void count(void* pointers, void*) {
	++filtered;
	const auto& exception = *static_cast<const EXCEPTION_POINTERS*>(pointers);
	EXPECT_EQ(exception.ExceptionRecord->ExceptionCode, code);
}

int seen_with_guard(void (*raise)(unsigned int)) {
	seen = filtered = 0;
	void* handler = AddVectoredExceptionHandler(0, see);
	os::catch_exception(code, raise, count, nullptr);
	RemoveVectoredExceptionHandler(handler);
	return seen;
}

TEST(Dump_guard_windows, ExceptionOfAnotherThreadIsTheHosts) {
	const auto raise_elsewhere = [](unsigned int number) {
		std::thread([=] { RaiseException(number, 0, 0, nullptr); }).join();
	};
	EXPECT_EQ(seen_with_guard(raise_elsewhere), 1);
	EXPECT_EQ(filtered, 0);
}

TEST(Dump_guard_windows, ExceptionOfAnotherCodeIsTheHosts) {
	const auto raise_both = [](unsigned int number) {
		RaiseException(another_code, 0, 0, nullptr);
		RaiseException(number, 0, 0, nullptr);
	};
	EXPECT_EQ(seen_with_guard(raise_both), 1);
	EXPECT_EQ(filtered, 1);
}

TEST(Dump_guard_windows, NothingIsLeftOfItBehind) {
	EXPECT_EQ(seen_with_guard([](unsigned int number) { RaiseException(number, 0, 0, nullptr); }),
	          0);
	void* handler = AddVectoredExceptionHandler(0, see);
	RaiseException(code, 0, 0, nullptr);
	RemoveVectoredExceptionHandler(handler);
	EXPECT_EQ(seen, 1);
	EXPECT_EQ(filtered, 1);
}

} // namespace
