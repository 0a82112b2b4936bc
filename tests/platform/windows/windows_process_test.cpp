// Children and the shell on Windows.
#include "../started_child.h"

#include <morvantis/strings/xylvarstring.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <morvantis/platform/system/windows/include_windows.h>

#include <tlhelp32.h>

#include <vector>

namespace {

using testing::HasSubstr;

// The handles of this process that lead to process `id`, or to its threads. Handles are multiples
// of four.
std::vector<HANDLE> handles_of(DWORD id, DWORD(WINAPI* id_of)(HANDLE)) {
	std::vector<HANDLE> found;
	for (ULONG_PTR value = 4; value < 0x4000; value += 4) {
		const HANDLE handle = reinterpret_cast<HANDLE>(value);
		if (id_of(handle) == id) found.push_back(handle);
	}
	return found;
}

TEST(zubPlatform_process_windows, HandlesOfProcessAndThreadStayOpen) {
	for (const bool wait : {true, false}) {
		SCOPED_TRACE(wait);
		Started_child child;
		ASSERT_EQ(child.start({}, wait), 1);
		const std::vector<HANDLE> processes = handles_of(child.id, GetProcessId);
		const std::vector<HANDLE> threads = handles_of(child.id, GetProcessIdOfThread);
		ASSERT_EQ(processes.size(), 1u);
		EXPECT_EQ(threads.size(), 1u);
		EXPECT_EQ(WaitForSingleObject(processes[0], INFINITE), WAIT_OBJECT_0);
		EXPECT_THAT(child.report(), HasSubstr("variable "));
		for (HANDLE handle : processes) CloseHandle(handle);
		for (HANDLE handle : threads) CloseHandle(handle);
	}
}

// A child that runs when it is told to.
struct Suspended_child {
	Suspended_child() {
		std::string program = child_program(), report = report_path();
		char* const arguments[] = {program.data(), report.data(), nullptr};
		unsigned int id = 0;
		EXPECT_EQ(
			zubPlatform::create_process(id, nullptr, arguments, nullptr, CREATE_SUSPENDED, false),
			1);
		processes = handles_of(id, GetProcessId);
		threads = handles_of(id, GetProcessIdOfThread);
		EXPECT_EQ(processes.size(), 1u);
		EXPECT_EQ(threads.size(), 1u);
	}
	~Suspended_child() {
		for (const HANDLE thread : threads) {
			EXPECT_EQ(ResumeThread(thread), 1u) << "it was suspended once";
			CloseHandle(thread);
		}
		for (const HANDLE process : processes) {
			EXPECT_EQ(WaitForSingleObject(process, INFINITE), WAIT_OBJECT_0);
			CloseHandle(process);
		}
		EXPECT_TRUE(std::filesystem::exists(report_path()));
	}
	Suspended_child(const Suspended_child&) = delete;
	Suspended_child& operator=(const Suspended_child&) = delete;
	std::string report_path() const { return folder / "report"; }

	Temporary_folder folder;
	std::vector<HANDLE> processes, threads;
};

TEST(zubPlatform_process_windows, CreationFlagsAreTheSystems) {
	const Suspended_child child;
	EXPECT_FALSE(std::filesystem::exists(child.report_path()));
}

TEST(zubPlatform_process_windows, OpenHandlesAreNotHandedOn) {
	const Temporary_folder folder;
	const std::string path = folder.make_file("held");
	const auto open_alone = [&](bool is_inheritable) {
		SECURITY_ATTRIBUTES attributes{sizeof(attributes), nullptr, is_inheritable};
		return CreateFileA(path.c_str(), GENERIC_READ, 0, &attributes, OPEN_EXISTING,
		                   FILE_ATTRIBUTE_NORMAL, nullptr);
	};
	HANDLE file = open_alone(true);
	ASSERT_NE(file, INVALID_HANDLE_VALUE);
	const Suspended_child child;
	CloseHandle(file);
	file = open_alone(false);
	EXPECT_NE(file, INVALID_HANDLE_VALUE) << "the child has it open";
	CloseHandle(file);
}

// Waits for the end of a program that somebody else has started, by the name of its file.
void wait_for_program(const std::string& name) {
	HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
	PROCESSENTRY32 entry{};
	entry.dwSize = sizeof(entry);
	for (BOOL more = Process32First(snapshot, &entry); more;
	     more = Process32Next(snapshot, &entry)) {
		if (name != entry.szExeFile) continue;
		HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, entry.th32ProcessID);
		WaitForSingleObject(process, INFINITE);
		CloseHandle(process);
	}
	CloseHandle(snapshot);
}

// The desktop's program for a program is the program itself, so no desktop is needed.
TEST(zubPlatform_process_windows, ShellOpensWhatExists) {
	const Temporary_folder folder;
	HANDLE change = FindFirstChangeNotificationA(folder.path().string().c_str(), FALSE,
	                                             FILE_NOTIFY_CHANGE_FILE_NAME);
	ASSERT_NE(change, INVALID_HANDLE_VALUE);
	for (const char* name : {"shell_opened.exe", "app_opened.exe"}) {
		SCOPED_TRACE(name);
		const std::string program = folder / name;
		std::filesystem::copy_file(child_program() + ".exe", program);
		if (name[0] == 's') {
			zubPlatform::shell_execute("open", program.c_str());
		} else {
			zubPlatform::open_with_default_app(xylVarString(program.c_str()));
		}
		while (!std::filesystem::exists(program + ".report")) {
			ASSERT_EQ(WaitForSingleObject(change, 60'000), WAIT_OBJECT_0) << "nothing was opened";
			FindNextChangeNotification(change);
		}
		wait_for_program(name);
	}
	FindCloseChangeNotification(change);
}

// What exists would open a window of the desktop and leave its program running.
TEST(zubPlatform_process_windows, MissingFolderIsNotShown) {
	const Temporary_folder folder;
	zubPlatform::open_folder_and_select_items(xylVarString((folder / "none").c_str()),
	                                          xylVarString((folder / "none\\item").c_str()));
	EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

} // namespace
