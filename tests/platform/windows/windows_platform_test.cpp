// zubPlatform's answers on Windows.
#include "temporary_folder.h"

#include <morvantis/platform/zubplatform.h>
#include <morvantis/strings/xylvarstring.h>

#include <gtest/gtest.h>

#include <morvantis/platform/system/windows/include_windows.h>

#include <cstring>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

void* self() { return zubPlatform::get_current_native_thread_handle(); }

// What the handler below saw, which is asked before all others.
struct Seen_exception {
	DWORD code;
	DWORD flags;
	std::vector<ULONG_PTR> arguments;
	std::string name; // of the naming exception
};
std::vector<Seen_exception> seen_exceptions;

LONG CALLBACK note_exception(EXCEPTION_POINTERS* exception) {
	const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
	Seen_exception seen{record.ExceptionCode, record.ExceptionFlags, {}, {}};
	for (DWORD i = 0; i < record.NumberParameters; ++i) {
		seen.arguments.push_back(record.ExceptionInformation[i]);
	}
	if (seen.code == 0x406D1388 && seen.arguments.size() == 3) {
		seen.name = reinterpret_cast<const char*>(seen.arguments[1]);
	}
	seen_exceptions.push_back(std::move(seen));
	return EXCEPTION_CONTINUE_SEARCH;
}

class Windows_exception_test : public testing::Test {
protected:
	Windows_exception_test() : handler_(AddVectoredExceptionHandler(1, note_exception)) {
		seen_exceptions.clear();
	}
	~Windows_exception_test() override { RemoveVectoredExceptionHandler(handler_); }

private:
	void* handler_;
};

TEST_F(Windows_exception_test, NamingExceptionCarriesTheRecordAndEndsInTheCall) {
	zubPlatform::set_thread_name(self(), xylVarString("loader"));
	zubPlatform::set_thread_name(self(), xylVarString());
	ASSERT_EQ(seen_exceptions.size(), 2u);
	for (const Seen_exception& seen : seen_exceptions) {
		EXPECT_EQ(seen.code, 0x406D1388u);
		EXPECT_EQ(seen.flags, 0u);
		ASSERT_EQ(seen.arguments.size(), 3u);
		EXPECT_EQ(static_cast<DWORD>(seen.arguments[0]), 0x1000u);
		EXPECT_EQ(static_cast<DWORD>(seen.arguments[2]), GetCurrentThreadId());
		EXPECT_EQ(seen.arguments[2] >> 32, 0u) << "flags";
	}
	EXPECT_EQ(seen_exceptions[0].name, "loader");
	EXPECT_EQ(seen_exceptions[1].name, "");
}

TEST(Windows_exception_death_test, RaisedExceptionEndsTheProcessWithItsCode) {
	EXPECT_EXIT(zubPlatform::raise_exception(0xDEADFACE),
	            testing::ExitedWithCode(static_cast<int>(0xDEADFACE)), "");
}

TEST(zubPlatform_windows, ProcessAndThreadAreTheSystems) {
	EXPECT_EQ(zubPlatform::get_current_process_id(), GetCurrentProcessId());
	EXPECT_EQ(self(), GetCurrentThread());
	EXPECT_EQ(zubPlatform::get_native_thread_id(self()), GetCurrentThreadId());
	HANDLE thread = nullptr;
	DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &thread, 0, FALSE,
	                DUPLICATE_SAME_ACCESS);
	const DWORD number = GetCurrentThreadId();
	std::thread([&] { EXPECT_EQ(zubPlatform::get_native_thread_id(thread), number); }).join();
	CloseHandle(thread);
}

TEST(zubPlatform_windows, PrioritiesAreTheSystems) {
	std::thread([] {
		zubPlatform::set_thread_priority(self(), xylThread_priority_low);
		EXPECT_EQ(GetThreadPriority(GetCurrentThread()), THREAD_PRIORITY_LOWEST);
		zubPlatform::set_thread_priority(self(), xylThread_priority_high);
		EXPECT_EQ(GetThreadPriority(GetCurrentThread()), THREAD_PRIORITY_HIGHEST);
		zubPlatform::set_thread_priority(self(), static_cast<xylThread_priority>(3));
		EXPECT_EQ(GetThreadPriority(GetCurrentThread()), THREAD_PRIORITY_NORMAL);
	}).join();
}

TEST(zubPlatform_windows, AffinityIsAMaskOfProcessors) {
	std::thread([] {
		zubPlatform::set_thread_affinity(self(), 1);
		EXPECT_EQ(GetCurrentProcessorNumber(), 0u);
		zubPlatform::set_thread_affinity(self(), 0); // refused
		EXPECT_EQ(SetThreadAffinityMask(GetCurrentThread(), 1), 1u) << "and nothing changed";
	}).join();
}

TEST(zubPlatform_windows, CounterIsThePerformanceCounter) {
	LARGE_INTEGER frequency;
	QueryPerformanceFrequency(&frequency);
	EXPECT_EQ(zubPlatform::get_timestamp_counter_frequency(), frequency.QuadPart);
}

TEST(zubPlatform_windows, PageSizeIsTheGranularity) {
	SYSTEM_INFO info;
	GetSystemInfo(&info);
	EXPECT_EQ(zubPlatform::page_size(), info.dwAllocationGranularity);
	EXPECT_EQ(zubPlatform::get_cpu_description().processor_count, info.dwNumberOfProcessors);
}

TEST(zubPlatform_windows, SymbolsOfALoadedLibrary) {
	void* module = zubPlatform::load_library(xylVarString("kernel32.dll"));
	ASSERT_NE(module, nullptr);
	xylVarString symbol("GetCurrentProcessId");
	auto* function =
		reinterpret_cast<DWORD(WINAPI*)()>(zubPlatform::get_process_address(module, symbol));
	ASSERT_NE(function, nullptr);
	EXPECT_EQ(function(), GetCurrentProcessId());
	symbol = "no_such_symbol";
	EXPECT_EQ(zubPlatform::get_process_address(module, symbol), nullptr);
	EXPECT_TRUE(zubPlatform::free_library(module));
}

// Exported by this program, for the test below.
extern "C" __declspec(dllexport) int morvantis_symbol_of_the_program() { return 17; }

TEST(zubPlatform_windows, NullModuleIsTheProgramItself) {
	xylVarString symbol("morvantis_symbol_of_the_program");
	EXPECT_EQ(zubPlatform::get_process_address(nullptr, symbol),
	          reinterpret_cast<void*>(morvantis_symbol_of_the_program));
	symbol = "GetCurrentProcessId";
	EXPECT_EQ(zubPlatform::get_process_address(nullptr, symbol), nullptr);
}

TEST(zubPlatform_windows, EnvironmentIsTheSystems) {
	char value[32]{};
	ASSERT_TRUE(zubPlatform::set_environment_variable("MORVANTIS_TEST", "first"));
	ASSERT_TRUE(zubPlatform::set_environment_variable("MORVANTIS_TEST", "second"));
	EXPECT_EQ(GetEnvironmentVariableA("MORVANTIS_TEST", value, sizeof(value)), 6u);
	EXPECT_STREQ(value, "second");
	SetEnvironmentVariableA("MORVANTIS_TEST", nullptr);
}

TEST(zubPlatform_windows, NamesAreTheSystems) {
	char expected[257];
	DWORD size = sizeof(expected);
	xylVarString name;
	ASSERT_TRUE(GetComputerNameA(expected, &size));
	ASSERT_TRUE(zubPlatform::get_computer_name(name));
	EXPECT_STREQ(name.char_p(), expected);
	size = sizeof(expected);
	ASSERT_TRUE(GetUserNameA(expected, &size));
	ASSERT_TRUE(zubPlatform::get_os_user_name(name));
	EXPECT_STREQ(name.char_p(), expected);
}

TEST(zubPlatform_windows, FoldersKeepTheSystemsSeparators) {
	char expected[MAX_PATH];
	GetTempPathA(sizeof(expected), expected);
	EXPECT_STREQ(zubPlatform::get_temp_path().char_p(), expected);
	GetModuleFileNameA(nullptr, expected, sizeof(expected));
	*std::strrchr(expected, '\\') = 0;
	EXPECT_EQ(std::string(zubPlatform::get_executable_path().char_p()),
	          std::string(expected) + "/");
}

TEST(zubPlatform_windows, AbsolutePathHasADriveAndForwardSlashes) {
	const xylConstString<256> path =
		zubPlatform::convert_base_path_to_absolute_path(xylVarString("C:\\a\\..\\b/c"));
	EXPECT_STREQ(path.char_p(), "C:/b/c");
}

TEST(zubPlatform_windows, LastErrorSaysWhyAFolderFailed) {
	const Temporary_folder folder;
	const xylVarString there(folder.path().string().c_str());
	const xylVarString missing((folder / "missing").c_str());
	const xylVarString deeper((folder / "missing/deeper").c_str());
	struct Case {
		const char* name;
		bool (*operation)(const xylString_base&);
		const xylVarString& path;
		DWORD error;
	};
	const Case cases[] = {
		{"a folder that is there", zubPlatform::create_directory, there, ERROR_ALREADY_EXISTS},
		{"a folder in a missing one", zubPlatform::create_directory, deeper, ERROR_PATH_NOT_FOUND},
		{"a missing folder", zubPlatform::is_directory_exists, missing, ERROR_FILE_NOT_FOUND},
		{"a missing file", zubPlatform::file_exists, missing, ERROR_FILE_NOT_FOUND},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		SetLastError(0);
		EXPECT_FALSE(c.operation(c.path));
		EXPECT_EQ(GetLastError(), c.error);
	}
}

TEST(zubPlatform_windows, RemoveTakesBackslashesAndHiddenReadOnlyFiles) {
	const Temporary_folder folder;
	const std::string file = folder.make_file("tree/sub/file.txt");
	SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
	EXPECT_TRUE(zubPlatform::remove_directory(xylVarString((folder / "tree").c_str())));
	EXPECT_FALSE(std::filesystem::exists(folder.path() / "tree"));
}

} // namespace
