// Crash dumps on Windows.
#include "../minidump_reader.h"
#include "temporary_folder.h"

#include <morvantis/platform/zubplatform.h>
#include <morvantis/strings/xylvarstring.h>

#include <gtest/gtest.h>

#include <morvantis/platform/system/windows/include_windows.h>

namespace {

// Handles of this process that lead to itself.
int handles_of_this_process() {
	int count = 0;
	for (ULONG_PTR value = 4; value < 0x4000; value += 4) {
		count += GetProcessId(reinterpret_cast<HANDLE>(value)) == GetCurrentProcessId();
	}
	return count;
}

TEST(zubPlatform_minidump_windows, AttemptWithoutAFileLeavesItsProcessHandleOpen) {
	const Temporary_folder folder;
	const xylVarString missing((folder / "missing").c_str());
	const int before = handles_of_this_process();
	zubPlatform::write_minidump(missing, nullptr);
	EXPECT_EQ(handles_of_this_process(), before + 1);
	zubPlatform::write_minidump(missing, nullptr);
	EXPECT_EQ(handles_of_this_process(), before + 2);
}

int seen = 0;
LONG CALLBACK count_exception(EXCEPTION_POINTERS* exception) {
	seen += exception->ExceptionRecord->ExceptionCode == 0xDEADFACE;
	return EXCEPTION_CONTINUE_SEARCH;
}

TEST(zubPlatform_minidump_windows, RaisedExceptionIsTheDumpsAndNoHandlersOfTheHost) {
	seen = 0;
	void* handler = AddVectoredExceptionHandler(1, count_exception);
	const Temporary_folder folder;
	const int before = handles_of_this_process();
	zubPlatform::write_minidump(xylVarString(folder.path().string().c_str()), nullptr);
	RemoveVectoredExceptionHandler(handler);
	const Minidump dump(folder / "dump.dmp");
	EXPECT_EQ(dump.exception.code, 0xDEADFACEu);
	EXPECT_EQ(seen, 0);
	EXPECT_EQ(handles_of_this_process(), before) << "a dump that was written closes its handles";
	uint64_t flags = 0;
	std::ifstream file(folder / "dump.dmp", std::ios::binary);
	file.seekg(24);
	file.read(reinterpret_cast<char*>(&flags), sizeof(flags));
	EXPECT_EQ(flags, 0xE9975u);
}

// The host's own pointers, from a handler that it is asked by.
LONG CALLBACK write_and_continue(EXCEPTION_POINTERS* exception) {
	if (exception->ExceptionRecord->ExceptionCode != 0xE0001234) return EXCEPTION_CONTINUE_SEARCH;
	zubPlatform::write_minidump(".", exception);
	return EXCEPTION_CONTINUE_EXECUTION;
}

TEST(zubPlatform_minidump_windows, GivenPointersAreTheDumps) {
	const Temporary_folder folder;
	const Current_folder current(folder.path());
	void* handler = AddVectoredExceptionHandler(1, write_and_continue);
	RaiseException(0xE0001234, 0, 0, nullptr);
	RemoveVectoredExceptionHandler(handler);
	const Minidump dump(folder / "dump.dmp");
	EXPECT_EQ(dump.exception.code, 0xE0001234u);
	EXPECT_EQ(dump.exception.thread, GetCurrentThreadId());
}

} // namespace
