#include "debug_output.h"
#include "system_files.h"
#include "temporary_folder.h"

#include <morvantis/io/xylnative_file_async.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <filesystem>
#include <string>
#include <type_traits>

static_assert(std::is_standard_layout_v<xylNative_file_async>);
static_assert(offsetof(xylNative_file_async, overlapped) == 0, "the object is the record");
static_assert(offsetof(xylNative_file_async, handle) <
              offsetof(xylNative_file_async, read_position));
static_assert(!std::is_copy_constructible_v<xylNative_file_async>);
static_assert(!std::is_copy_assignable_v<xylNative_file_async>);
static_assert(xylAsync_io_failed == 0 && xylAsync_io_pending == 1 && xylAsync_io_completed == 2);

namespace {

constexpr int reading = xylFile_access_read | xylFile_share_read | xylFile_share_write;
constexpr int existing = xylFile_flag_open_existing;
constexpr xylUInt64 four_gib = xylUInt64{1} << 32;

// Every test ends with as many handles as it began with, and moves no counter.
class Native_file_async_test : public testing::Test {
protected:
	void TearDown() override { EXPECT_EQ(xylNative_file::open_files_count_, count_before_); }

	// Reads and waits; "failed" for a failure.
	std::string read_text(xylNative_file_async& file, size_t size) {
		std::string text(size, '?');
		file.read(text.data(), size);
		xylUInt64 count = 77;
		const xylAsync_io_status status = file.get_async_status(&count, true);
		if (status == xylAsync_io_completed) return text.substr(0, static_cast<size_t>(count));
		EXPECT_EQ(status, xylAsync_io_failed);
		EXPECT_EQ(count, 0u);
		return "failed";
	}

	Temporary_folder folder_;

private:
	int count_before_ = xylNative_file::open_files_count_;
	Handle_check handles_;
};

TEST_F(Native_file_async_test, OpensAndClosesAsTheOtherDoesWithoutACounter) {
	const std::string path = folder_.make_file("file");
	const int count = xylNative_file::open_files_count_;
	xylNative_file_async file;
	EXPECT_FALSE(file.is_valid());
	EXPECT_FALSE(file.close());
	EXPECT_FALSE(file.open(path.c_str(), reading, 0)) << "no disposition";
	EXPECT_FALSE(file.open((folder_ / "missing").c_str(), reading, existing));
	EXPECT_FALSE(file.open(folder_.path().string().c_str(), reading, existing)) << "a folder";
	EXPECT_FALSE(file.open(nullptr, reading, existing));
	EXPECT_FALSE(file.is_valid());
	EXPECT_TRUE(file.open(path.c_str(), reading, existing | xylFile_flag_normal));
	EXPECT_TRUE(file.is_valid());
	EXPECT_EQ(xylNative_file::open_files_count_, count);
	EXPECT_EQ(file.get_file_size(), 4u);
	EXPECT_TRUE(file.close());
	EXPECT_FALSE(file.is_valid());
	EXPECT_FALSE(file.close());
	const int handles = open_handle_count();
	{
		xylNative_file_async other(path.c_str(), reading, existing);
		EXPECT_TRUE(other.is_valid());
		EXPECT_EQ(open_handle_count(), handles + 1);
	}
	EXPECT_EQ(open_handle_count(), handles);
}

TEST_F(Native_file_async_test, BasePathsLeadTwoFoldersUp) {
	std::filesystem::create_directories(folder_ / "bin/x64");
	folder_.make_file("file", "above");
	const Current_folder inside(folder_.path() / "bin" / "x64");
	xylNative_file_async file("$BASE/file", reading, existing);
	EXPECT_EQ(read_text(file, 10), "above");
}

TEST_F(Native_file_async_test, ReadsCompleteWithWhatTheFileHas) {
	const std::string path = folder_.make_file("file", "0123456789");
	// After normal, too, which drops all other flags, reads are overlapped.
	for (const int mode : {existing, existing | xylFile_flag_normal}) {
		SCOPED_TRACE(mode);
		xylNative_file_async file(path.c_str(), reading, mode);
		EXPECT_EQ(read_text(file, 4), "0123");
		EXPECT_EQ(read_text(file, 4), "0123") << "the position stays";
		EXPECT_EQ(file.read_position, 0u);
		EXPECT_EQ(file.set_pointer(6, xylFile_from_start), 6);
		EXPECT_EQ(file.read_position, 6u);
		EXPECT_EQ(read_text(file, 2), "67");
		EXPECT_EQ(read_text(file, 100), "6789");
		EXPECT_EQ(file.set_pointer(2, xylFile_from_end), 2) << "the starting point is ignored";
		EXPECT_EQ(read_text(file, 3), "234");
		EXPECT_EQ(file.set_pointer(1, xylFile_from_current), 1);
		EXPECT_EQ(read_text(file, 3), "123");
	}
}

TEST_F(Native_file_async_test, ReadAtTheEndFails) {
	const std::string path = folder_.make_file("file", "0123456789");
	xylNative_file_async file(path.c_str(), reading, existing);
	for (const xylUInt64 position : {10u, 11u, 1000u}) {
		SCOPED_TRACE(position);
		file.set_pointer(position, xylFile_from_start);
		EXPECT_EQ(read_text(file, 4), "failed");
		xylUInt64 count = 77;
		EXPECT_EQ(file.get_async_status(&count, false), xylAsync_io_failed) << "asked again";
		EXPECT_EQ(count, 0u);
		EXPECT_EQ(file.get_async_status(nullptr, false), xylAsync_io_failed);
	}
	file.set_pointer(0, xylFile_from_start);
	EXPECT_EQ(read_text(file, 4), "0123") << "a failure leaves nothing behind";
}

TEST_F(Native_file_async_test, WriteOnlyHandleFailsToRead) {
	const std::string path = folder_.make_file("file", "text");
	xylNative_file_async file(path.c_str(), xylFile_access_write, existing);
	ASSERT_TRUE(file.is_valid());
	char text[4];
	file.read(text, 4);
	EXPECT_NE(file.get_async_status(nullptr, false), xylAsync_io_completed);
}

TEST_F(Native_file_async_test, ClosingGivesUpAReadUnderWay) {
	Overlapped_pipe pipe;
	char text[8]{};
	{
		xylNative_file_async file;
		file.handle = pipe.reading_end();
		file.read(text, 5);
		EXPECT_EQ(file.get_async_status(nullptr, false), xylAsync_io_pending);
	}
	// Objects whose reads nobody waits for, again and again in one place.
	const std::string path = folder_.make_file("file", std::string(100'000, 'x'));
	for (int i = 0; i < 200; ++i) {
		std::string target(100'000, '?');
		xylNative_file_async file(path.c_str(), reading, existing);
		file.read(target.data(), target.size());
		EXPECT_TRUE(file.close());
		const std::string left = target;
		EXPECT_NE(file.get_async_status(nullptr, true), xylAsync_io_pending);
		EXPECT_TRUE(target == left);
	}
}

TEST_F(Native_file_async_test, StatusMayBeAskedAgain) {
	const std::string path = folder_.make_file("file", "0123456789");
	xylNative_file_async file(path.c_str(), reading, existing);
	EXPECT_EQ(read_text(file, 4), "0123");
	for (const bool wait : {false, true}) {
		xylUInt64 count = 0;
		EXPECT_EQ(file.get_async_status(&count, wait), xylAsync_io_completed);
		EXPECT_EQ(count, 4u);
		EXPECT_EQ(file.get_async_status(nullptr, wait), xylAsync_io_completed);
	}
}

TEST_F(Native_file_async_test, StatusBeforeAnyReadIsCompletedWithoutBytes) {
	const std::string path = folder_.make_file("file", "0123456789");
	xylNative_file_async file(path.c_str(), reading, existing);
	xylUInt64 count = 77;
	EXPECT_EQ(file.get_async_status(&count, false), xylAsync_io_completed);
	EXPECT_EQ(count, 0u);
}

TEST_F(Native_file_async_test, ReadIsPendingUntilThePipeHasBytes) {
	Overlapped_pipe pipe;
	xylNative_file_async file;
	file.handle = pipe.reading_end();
	char text[8]{};
	file.read(text, 5);
	for (int i = 0; i < 3; ++i) {
		xylUInt64 count = 77;
		EXPECT_EQ(file.get_async_status(&count, false), xylAsync_io_pending);
		EXPECT_EQ(count, 0u);
		EXPECT_EQ(file.get_async_status(nullptr, false), xylAsync_io_pending);
	}
	EXPECT_STREQ(text, "");
	pipe.write("abc");
	xylUInt64 count = 0;
	EXPECT_EQ(file.get_async_status(&count, true), xylAsync_io_completed);
	EXPECT_EQ(count, 3u);
	EXPECT_STREQ(text, "abc");
}

TEST_F(Native_file_async_test, ReadsStartWithinFourGib) {
	const std::string path = folder_ / "sparse";
	{
		xylNative_file file(path.c_str(), xylFile_access_write, xylFile_flag_create_always);
		make_sparse(file.handle);
		EXPECT_EQ(file.write("near near", 9), 9u);
		file.set_pointer(four_gib - 2, xylFile_from_start);
		EXPECT_EQ(file.write("0123456789", 10), 10u);
	}
	xylNative_file_async file(path.c_str(), reading, existing);
	EXPECT_EQ(file.get_file_size(), four_gib + 8);
	EXPECT_EQ(file.set_pointer(four_gib, xylFile_from_start), 0x100000000);
	EXPECT_EQ(file.read_position, four_gib);
	EXPECT_EQ(read_text(file, 4), "near");
	file.set_pointer(four_gib + 5, xylFile_from_start);
	EXPECT_EQ(read_text(file, 4), "near");
	EXPECT_EQ(file.read_position, four_gib + 5);
	file.set_pointer(four_gib - 1, xylFile_from_start);
	EXPECT_EQ(read_text(file, 4), "1234") << "a read may go on behind them";
}

// The flag is one for the process, so no other test may call write().
TEST_F(Native_file_async_test, WriteSaysOnceThatItIsNotImplemented) {
	static bool is_first_run = true;
	const std::string path = folder_ / "file";
	xylNative_file_async file(path.c_str(), reading | xylFile_access_write,
	                          xylFile_flag_create_always);
	Debug_output_catcher output;
	file.write("text", 4);
	EXPECT_EQ(output.take(),
	          is_first_run ? "Not implemented: xylNative_file_async::write (xylnative_file:776)\n"
	                       : "");
	is_first_run = false;
	file.write("text", 4);
	EXPECT_EQ(output.take(), "");
	EXPECT_EQ(file.get_file_size(), 0u);
}

TEST(xylNative_file_asyncDeathTest, NameOf256CharactersEndsTheProcess) {
	const std::string longest(255, 'x');
	const std::string too_long(256, 'x');
	xylNative_file_async file;
	EXPECT_FALSE(file.open(longest.c_str(), reading, existing));
	EXPECT_DEATH(file.open(too_long.c_str(), reading, existing), "");
}

} // namespace
