// Answers of files that are Windows's own.
#include "../system_files.h"
#include "temporary_folder.h"

#include <morvantis/io/xylnative_file.h>
#include <morvantis/io/xylnative_file_async.h>

#include <gtest/gtest.h>

#include <morvantis/platform/system/windows/include_windows.h>

#include <string>

static_assert(sizeof(OVERLAPPED) <= sizeof(xylOverlapped));

namespace {

constexpr int writing = xylFile_access_read | xylFile_access_write;

TEST(xylNative_file_windows, AttributesOfANewFile) {
	const Temporary_folder folder;
	struct Case {
		const char* name;
		int mode;
		DWORD attributes; // of the four below
	};
	const Case cases[] = {
		{"archive", xylFile_flag_archive, FILE_ATTRIBUTE_ARCHIVE},
		{"system", xylFile_flag_system, FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE},
		{"read-only", xylFile_flag_read_only, FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE},
		{"normal alone", xylFile_flag_normal | xylFile_flag_system | xylFile_flag_read_only,
	     FILE_ATTRIBUTE_ARCHIVE},
	};
	static constexpr DWORD looked_at =
		FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_READONLY;
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		const std::string path = folder / c.name;
		xylNative_file file(path.c_str(), writing, xylFile_flag_create_new | c.mode);
		ASSERT_TRUE(file.is_valid());
		EXPECT_TRUE(file.close());
		// The system adds the archive attribute to a new file.
		EXPECT_EQ(GetFileAttributesA(path.c_str()) & looked_at,
		          c.attributes | FILE_ATTRIBUTE_ARCHIVE);
		SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
	}
}

TEST(xylNative_file_windows, LastErrorSaysWhyAFileDidNotOpen) {
	const Temporary_folder folder;
	const std::string path = folder.make_file("file");
	struct Case {
		const char* name;
		std::string path;
		int mode;
		DWORD error;
	};
	const Case cases[] = {
		{"missing", folder / "missing", xylFile_flag_open_existing, ERROR_FILE_NOT_FOUND},
		{"there", path, xylFile_flag_create_new, ERROR_FILE_EXISTS},
		{"folder", folder.path().string(), xylFile_flag_open_existing, ERROR_ACCESS_DENIED},
		{"no disposition", path, 0, ERROR_INVALID_PARAMETER},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		xylNative_file file;
		SetLastError(0);
		EXPECT_FALSE(file.open(c.path.c_str(), xylFile_access_read, c.mode));
		EXPECT_EQ(GetLastError(), c.error);
	}
}

TEST(xylNative_file_windows, ShareBitsLetOthersIn) {
	const Temporary_folder folder;
	const std::string path = folder.make_file("file");
	struct Case {
		const char* name;
		int shared, second;
		bool opens;
	};
	const Case cases[] = {
		{"nothing shared", 0, xylFile_access_read, false},
		{"reading shared, to read", xylFile_share_read, xylFile_access_read, true},
		{"reading shared, to write", xylFile_share_read, xylFile_access_write, false},
		{"writing shared, to write", xylFile_share_write, xylFile_access_write, true},
		{"writing shared, to read", xylFile_share_write, xylFile_access_read, false},
		{"both shared", xylFile_share_read | xylFile_share_write, writing, true},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		xylNative_file first(path.c_str(), xylFile_access_read | c.shared,
		                     xylFile_flag_open_existing);
		ASSERT_TRUE(first.is_valid());
		const Handle_check handles;
		xylNative_file second(path.c_str(), c.second | xylFile_share_read,
		                      xylFile_flag_open_existing);
		EXPECT_EQ(second.is_valid(), c.opens);
	}
}

TEST(xylNative_file_windows, CloseOfALostHandleFails) {
	const Temporary_folder folder;
	const std::string path = folder.make_file("file");
	xylNative_file file(path.c_str(), writing, xylFile_flag_open_existing);
	const int count = xylNative_file::open_files_count_;
	CloseHandle(file.handle);
	EXPECT_FALSE(file.close());
	EXPECT_FALSE(file.is_valid());
	EXPECT_EQ(xylNative_file::open_files_count_, count - 1) << "counted all the same";
}

TEST(xylNative_file_windows, HandlesAreNotInherited) {
	const Temporary_folder folder;
	const std::string path = folder.make_file("file");
	xylNative_file file(path.c_str(), writing, xylFile_flag_open_existing);
	DWORD flags = 0;
	EXPECT_TRUE(GetHandleInformation(file.handle, &flags));
	EXPECT_FALSE(flags & HANDLE_FLAG_INHERIT);
}

} // namespace
