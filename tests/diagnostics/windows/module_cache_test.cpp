// What the system's own lists of images have to agree with: their sizes, and other processes.

#include <morvantis/diagnostics/zubcallstack_helpers.h>
#include <morvantis/diagnostics/zubdebughelp_interface.h>

#include <gtest/gtest.h>

#include <string>

#include <windows.h>

#include <psapi.h>

namespace {

// A command interpreter that waits for a command, and ends with the object.
class Waiting_process {
public:
	Waiting_process() {
		HANDLE input = nullptr, output = nullptr; // the child's ends
		SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
		EXPECT_TRUE(CreatePipe(&input, &input_, &inherited, 0));
		EXPECT_TRUE(CreatePipe(&output_, &output, &inherited, 0));
		STARTUPINFOA startup{};
		startup.cb = sizeof(startup);
		startup.dwFlags = STARTF_USESTDHANDLES;
		startup.hStdInput = input;
		startup.hStdOutput = startup.hStdError = output;
		char command[] = "cmd.exe";
		EXPECT_TRUE(CreateProcessA(nullptr, command, nullptr, nullptr, TRUE, 0, nullptr, nullptr,
		                           &startup, &child_));
		CloseHandle(input);
		CloseHandle(output);
		// Its prompt shows that all its images are loaded.
		char prompt = 0;
		DWORD count = 0;
		EXPECT_TRUE(ReadFile(output_, &prompt, 1, &count, nullptr));
	}
	~Waiting_process() {
		TerminateProcess(child_.hProcess, 0);
		WaitForSingleObject(child_.hProcess, INFINITE);
		for (const HANDLE handle : {input_, output_, child_.hProcess, child_.hThread}) {
			CloseHandle(handle);
		}
	}
	Waiting_process(const Waiting_process&) = delete;
	Waiting_process& operator=(const Waiting_process&) = delete;
	HANDLE handle() const { return child_.hProcess; }

private:
	HANDLE input_ = nullptr, output_ = nullptr; // this side's ends
	PROCESS_INFORMATION child_{};
};

int entries_of(const char* name) {
	int count = 0;
	for (const auto& entry : zubCallstack_helpers::Modules) {
		count += _stricmp(entry.second.name.char_p(), name) == 0;
	}
	return count;
}

} // namespace

class Windows_module_cache_test : public testing::Test {
protected:
	~Windows_module_cache_test() override { zubCallstack_helpers::clear_module_cache(); }
};

TEST_F(Windows_module_cache_test, EngineIsAskedInTheNameOfThisProcess) {
	EXPECT_EQ(zubDebughelp_interface::dummy_process, GetCurrentProcess());
}

TEST_F(Windows_module_cache_test, SizesAreTheSystemsOwn) {
	ASSERT_TRUE(zubCallstack_helpers::enumerate_modules(nullptr));
	for (const auto& [key, module] : zubCallstack_helpers::Modules) {
		MODULEINFO facts{};
		ASSERT_TRUE(K32GetModuleInformation(GetCurrentProcess(), reinterpret_cast<HMODULE>(key),
		                                    &facts, sizeof(facts)));
		EXPECT_EQ(module.image_size, facts.SizeOfImage) << module.path.char_p();
	}
}

TEST_F(Windows_module_cache_test, ImagesAreThoseOfTheGivenProcess) {
	ASSERT_TRUE(zubCallstack_helpers::enumerate_modules(GetCurrentProcess()));
	EXPECT_EQ(entries_of("diagnostics_tests.exe"), 1);
	EXPECT_EQ(entries_of("cmd.exe"), 0);
	zubCallstack_helpers::clear_module_cache();
	const Waiting_process other;
	ASSERT_TRUE(zubCallstack_helpers::enumerate_modules(other.handle()));
	EXPECT_EQ(entries_of("diagnostics_tests.exe"), 0);
	EXPECT_EQ(entries_of("cmd.exe"), 1);
}
