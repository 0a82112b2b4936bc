#include "../system_files.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

#include <morvantis/platform/system/windows/include_windows.h>

#include <winioctl.h> // FSCTL_SET_SPARSE

#include <cstring>
#include <vector>

#include <fcntl.h> // _O_BINARY
#include <io.h>

// From the list of all handles of the system: Wine 8 answers 0 to GetProcessHandleCount().
int open_handle_count() {
	using Query = LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*);
	struct Entry {
		USHORT process, trace;
		UCHAR type, flags;
		USHORT handle;
		void* object;
		ACCESS_MASK access;
	};
	static constexpr ULONG system_handle_information = 16;
	static constexpr LONG too_small = static_cast<LONG>(0xC0000004);
	SCOPED_TRACE("for a handle of GoogleTest's own, taken at the first trace");
	const HMODULE library = GetModuleHandleA("ntdll.dll");
	const auto query = reinterpret_cast<Query>(
		reinterpret_cast<void*>(GetProcAddress(library, "NtQuerySystemInformation")));
	std::vector<unsigned char> answer(1 << 16);
	LONG status = too_small;
	while ((status = query(system_handle_information, answer.data(),
	                       static_cast<ULONG>(answer.size()), nullptr)) == too_small) {
		answer.resize(answer.size() * 2);
	}
	EXPECT_EQ(status, 0);
	ULONG count = 0;
	std::memcpy(&count, answer.data(), sizeof(count));
	int own = 0;
	for (ULONG i = 0; i < count; ++i) {
		Entry entry;
		std::memcpy(&entry, answer.data() + 8 + i * sizeof(Entry), sizeof(Entry));
		own += entry.process == static_cast<USHORT>(GetCurrentProcessId());
	}
	EXPECT_GT(own, 0);
	return own;
}

// Where the file system has no such files the answer is no, and none is needed.
void make_sparse(void* handle) {
	DWORD count = 0;
	DeviceIoControl(handle, FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &count, nullptr);
}

std::FILE* open_pipe(const std::string& text) {
	int ends[2];
	EXPECT_EQ(_pipe(ends, 4096, _O_BINARY), 0);
	const int size = static_cast<int>(text.size());
	EXPECT_EQ(_write(ends[1], text.data(), static_cast<unsigned int>(size)), size);
	_close(ends[1]);
	return _fdopen(ends[0], "rb");
}

Overlapped_pipe::Overlapped_pipe() {
	const std::string name =
		"\\\\.\\pipe\\morvantis_overlapped_" + std::to_string(GetCurrentProcessId());
	reading_end_ = CreateNamedPipeA(name.c_str(), PIPE_ACCESS_INBOUND | FILE_FLAG_OVERLAPPED,
	                                PIPE_TYPE_BYTE, 1, 4096, 4096, 0, nullptr);
	EXPECT_NE(reading_end_, INVALID_HANDLE_VALUE);
	writing_end_ = CreateFileA(name.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
	EXPECT_NE(writing_end_, INVALID_HANDLE_VALUE);
}

Overlapped_pipe::~Overlapped_pipe() { CloseHandle(writing_end_); }

void Overlapped_pipe::write(const std::string& text) {
	DWORD count = 0;
	EXPECT_TRUE(
		WriteFile(writing_end_, text.data(), static_cast<DWORD>(text.size()), &count, nullptr));
	EXPECT_EQ(count, text.size());
}

Handle_check::~Handle_check() { EXPECT_EQ(open_handle_count(), before_); }

Without_privileges::Without_privileges() {
	const Temporary_folder folder;
	const std::string path = folder.make_file("read_only");
	SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY);
	const HANDLE file =
		CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
	is_bound_ = file == INVALID_HANDLE_VALUE;
	if (!is_bound_) CloseHandle(file);
}

Without_privileges::~Without_privileges() {}
