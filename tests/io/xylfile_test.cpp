#include "expected_leaks.h"
#include "system_files.h"
#include "temporary_folder.h"

#include <morvantis/io/xylfile.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <type_traits>

static_assert(sizeof(xylFile) == sizeof(FILE*), "one stream and no more");
static_assert(std::is_same_v<decltype(xylFile::open_files_count_), std::atomic<int>>);
static_assert(std::is_copy_assignable_v<xylFile>);

namespace {

constexpr xylUInt64 four_gib = xylUInt64{1} << 32;

std::string contents_of(const std::string& path) {
	std::ifstream stream(path, std::ios::binary);
	return {std::istreambuf_iterator<char>(stream), {}};
}

// Every test ends with as many handles as it began with, and with the counter where it was.
class File_test : public testing::Test {
protected:
	void TearDown() override { EXPECT_EQ(xylFile::open_files_count_, count_before_); }
	int count() const { return xylFile::open_files_count_ - count_before_; }

	Temporary_folder folder_;

private:
	int count_before_ = xylFile::open_files_count_;
	Handle_check handles_;
};

TEST_F(File_test, OpensAndCloses) {
	const std::string path = folder_.make_file("file", "text");
	xylFile file;
	EXPECT_FALSE(file.is_valid());
	EXPECT_EQ(file.file, nullptr);
	EXPECT_FALSE(file.close());
	EXPECT_EQ(count(), 0);
	EXPECT_EQ(file.open(path.c_str(), "rb"), 0);
	EXPECT_TRUE(file.is_valid());
	EXPECT_EQ(count(), 1);
	EXPECT_TRUE(file.close());
	EXPECT_FALSE(file.is_valid());
	EXPECT_EQ(file.file, nullptr);
	EXPECT_EQ(count(), 0);
	EXPECT_FALSE(file.close());
	EXPECT_EQ(count(), 0);
	const int handles = open_handle_count();
	{
		xylFile other(path.c_str(), "rb");
		EXPECT_TRUE(other.is_valid());
		EXPECT_EQ(count(), 1);
		EXPECT_EQ(open_handle_count(), handles + 1);
	}
	EXPECT_EQ(open_handle_count(), handles);
	EXPECT_EQ(count(), 0);
}

TEST_F(File_test, FailedOpenGivesTheErrorNumber) {
	xylFile file;
	EXPECT_EQ(file.open((folder_ / "missing").c_str(), "rb"), ENOENT);
	EXPECT_FALSE(file.is_valid());
	EXPECT_EQ(file.open((folder_ / "missing/file").c_str(), "wb"), ENOENT);
	EXPECT_NE(file.open(nullptr, "rb"), 0) << "null is the empty name";
	for (const char* mode : {"r", "rb", "w", "a", "r+"}) {
		SCOPED_TRACE(mode);
		const int handles = open_handle_count();
		EXPECT_NE(file.open(folder_.path().string().c_str(), mode), 0) << "a folder";
		EXPECT_FALSE(file.is_valid());
		EXPECT_EQ(open_handle_count(), handles);
	}
	xylFile other((folder_ / "missing").c_str(), "rb");
	EXPECT_FALSE(other.is_valid());
	EXPECT_EQ(count(), 0);
}

TEST_F(File_test, ReadOnlyTargetDoesNotOpenForWriting) {
	const std::string path = folder_.make_file("file", "text");
	std::filesystem::permissions(folder_.path(), std::filesystem::perms::all);
	std::filesystem::permissions(path, std::filesystem::perms(0444));
	const Without_privileges nobody;
	const int expected = nobody.is_bound() ? EACCES : 0;
	for (const char* mode : {"ab", "r+b", "wb"}) {
		SCOPED_TRACE(mode);
		xylFile file;
		EXPECT_EQ(file.open(path.c_str(), mode), expected);
	}
	xylFile file;
	EXPECT_EQ(file.open(path.c_str(), "rb"), 0);
}

TEST_F(File_test, SecondOpenLosesTheFirstStream) {
	const std::string path = folder_.make_file("file", "text");
	xylFile file(path.c_str(), "rb");
	FILE* const lost = file.file;
	EXPECT_EQ(file.open(path.c_str(), "rb"), 0);
	EXPECT_NE(file.file, lost);
	EXPECT_EQ(count(), 2);
	EXPECT_TRUE(file.close());
	EXPECT_EQ(count(), 1) << "one too high";
	file.file = lost;
	EXPECT_EQ(file.getc(), 't') << "still open";
	EXPECT_TRUE(file.close());
}

TEST_F(File_test, AssignmentSharesTheStream) {
	const std::string path = folder_.make_file("file", "text");
	xylFile first(path.c_str(), "rb");
	xylFile second;
	second = first;
	EXPECT_EQ(second.file, first.file);
	EXPECT_EQ(count(), 1) << "one stream";
	EXPECT_EQ(first.getc(), 't');
	EXPECT_EQ(second.getc(), 'e');
	second.file = nullptr;
}

TEST_F(File_test, ReopenLeavesTheCounterAlone) {
	const Expected_leaks failed_streams; // the C library of Linux keeps what freopen() failed on
	const std::string path = folder_.make_file("file", "text");
	const std::string other = folder_.make_file("other", "words");
	xylFile file(path.c_str(), "rb");
	EXPECT_EQ(file.reopen(other.c_str(), "rb"), 0);
	EXPECT_TRUE(file.is_valid());
	EXPECT_EQ(count(), 1);
	EXPECT_EQ(file.getc(), 'w');
	EXPECT_EQ(file.reopen((folder_ / "missing").c_str(), "rb"), ENOENT);
	EXPECT_FALSE(file.is_valid());
	EXPECT_EQ(count(), 1) << "one too high";
	EXPECT_FALSE(file.close());
	EXPECT_EQ(count(), 1);
	--xylFile::open_files_count_;

	ASSERT_EQ(file.open(path.c_str(), "rb"), 0);
	EXPECT_NE(file.reopen(folder_.path().string().c_str(), "rb"), 0) << "a folder";
	EXPECT_FALSE(file.is_valid());
	--xylFile::open_files_count_;
}

TEST_F(File_test, BasePathsLeadTwoFoldersUp) {
	std::filesystem::create_directories(folder_ / "bin/x64");
	folder_.make_file("first", "1");
	folder_.make_file("second", "2");
	const Current_folder inside(folder_.path() / "bin" / "x64");
	xylFile file("$BASE/first", "rb");
	ASSERT_TRUE(file.is_valid());
	EXPECT_EQ(file.getc(), '1');
	ASSERT_EQ(file.reopen("$BASE/second", "rb"), 0);
	EXPECT_EQ(file.getc(), '2');
}

TEST_F(File_test, CharactersAndLines) {
	const std::string path = folder_ / "file";
	xylFile file(path.c_str(), "wb");
	EXPECT_EQ(file.putc('a'), 'a');
	EXPECT_EQ(file.putc('\xFF'), 255);
	EXPECT_GE(file.puts("first\nsecond"), 0);
	EXPECT_TRUE(file.close());
	EXPECT_EQ(contents_of(path), "a\xFF"
	                             "first\nsecond");

	ASSERT_EQ(file.open(path.c_str(), "rb"), 0);
	EXPECT_EQ(file.getc(), 'a');
	EXPECT_EQ(file.getc(), '\xFF');
	EXPECT_FALSE(file.eof()) << "a byte like any other";
	char line[20];
	EXPECT_EQ(file.gets(line, 4), line);
	EXPECT_STREQ(line, "fir");
	EXPECT_EQ(file.gets(line, 20), line);
	EXPECT_STREQ(line, "st\n");
	EXPECT_EQ(file.gets(line, 20), line);
	EXPECT_STREQ(line, "second");
	EXPECT_TRUE(file.eof());
	EXPECT_EQ(file.gets(line, 20), nullptr);
	EXPECT_EQ(file.getc(), '\xFF') << "the end";
}

TEST_F(File_test, PrintsAsTheReportingFunctionsDo) {
	const std::string path = folder_ / "file";
	xylFile file(path.c_str(), "wb");
	EXPECT_EQ(file.print("plain"), 5);
	EXPECT_EQ(file.print("|%d %s %c %.3f %p|", -7, "text", 'x', 1.5, static_cast<void*>(nullptr)),
	          34);
	EXPECT_EQ(file.print("%s", ""), 0);
	EXPECT_TRUE(file.close());
	EXPECT_EQ(contents_of(path), "plain|-7 text x 1.500 0000000000000000|");
	ASSERT_EQ(file.open(path.c_str(), "rb"), 0);
	EXPECT_EQ(file.print("lost"), -1) << "not open for writing";
}

TEST_F(File_test, PrintedTextsHaveAnyLength) {
	for (const int length : {4095, 4096, 4097, 8192, 8193, 100'000}) {
		SCOPED_TRACE(length);
		const std::string path = folder_ / "file";
		const std::string text(static_cast<size_t>(length) - 2, 'x');
		xylFile file(path.c_str(), "wb");
		EXPECT_EQ(file.print("%s%d", text.c_str(), 42), length);
		EXPECT_TRUE(file.close());
		EXPECT_EQ(contents_of(path), text + "42");
	}
}

TEST_F(File_test, ScansOneValue) {
	const std::string path = folder_.make_file("file", "word -12 1.5 2.25e2 x");
	xylFile file(path.c_str(), "rb");
	char text[10];
	int whole = 0;
	float single = 0;
	double twice = 0;
	EXPECT_EQ(file.scan("%9s", text), 1);
	EXPECT_STREQ(text, "word");
	EXPECT_EQ(file.scan("%d", &whole), 1);
	EXPECT_EQ(whole, -12);
	EXPECT_EQ(file.scan("%f", &single), 1);
	EXPECT_EQ(single, 1.5f);
	EXPECT_EQ(file.scan("%lf", &twice), 1);
	EXPECT_EQ(twice, 225.0);
	EXPECT_EQ(file.scan("%d", &whole), 0);
	EXPECT_EQ(whole, -12);
	EXPECT_EQ(file.getc(), 'x');
	EXPECT_EQ(file.scan("%d", &whole), EOF);
}

TEST_F(File_test, ReadsAndWritesItems) {
	const std::string path = folder_ / "file";
	xylFile file(path.c_str(), "w+b");
	EXPECT_EQ(file.write("0123456789", 2, 5), 5u);
	EXPECT_EQ(file.write("x", 1, 0), 0u);
	EXPECT_EQ(file.tell(), 10u);
	EXPECT_EQ(file.seek(1, SEEK_SET), 0);
	char text[20]{};
	EXPECT_EQ(file.read(text, 4, 3), 2u) << "whole items";
	EXPECT_TRUE(file.eof());
	EXPECT_EQ(std::string(text), "123456789");
	EXPECT_EQ(file.seek(0, SEEK_SET), 0);
	EXPECT_FALSE(file.eof());
	EXPECT_EQ(file.read(text, 1, 3), 3u);
}

TEST_F(File_test, SeeksFromThreePlaces) {
	const std::string path = folder_.make_file("file", "0123456789");
	xylFile file(path.c_str(), "rb");
	EXPECT_EQ(file.seek(3, SEEK_SET), 0);
	EXPECT_EQ(file.getc(), '3');
	EXPECT_EQ(file.seek(2, SEEK_CUR), 0);
	EXPECT_EQ(file.getc(), '6');
	EXPECT_EQ(file.seek(~xylUInt64{0} - 4, SEEK_CUR), 0) << "five back";
	EXPECT_EQ(file.tell(), 2u);
	EXPECT_EQ(file.seek(~xylUInt64{0}, SEEK_END), 0);
	EXPECT_EQ(file.getc(), '9');
	EXPECT_NE(file.seek(0 - xylUInt64{1}, SEEK_SET), 0) << "in front of the file";
	EXPECT_EQ(file.tell(), 10u);
}

TEST_F(File_test, FlushHandsTheBufferOn) {
	const std::string path = folder_ / "file";
	xylFile file(path.c_str(), "wb");
	file.puts("text");
	EXPECT_EQ(std::filesystem::file_size(path), 0u) << "buffered";
	EXPECT_EQ(file.flush(), 0);
	EXPECT_EQ(std::filesystem::file_size(path), 4u);
}

TEST_F(File_test, FileSizeRestoresThePosition) {
	const std::string path = folder_.make_file("file", "0123456789");
	xylFile file(path.c_str(), "r+b");
	EXPECT_EQ(file.get_file_size(), 10u);
	EXPECT_EQ(file.tell(), 0u);
	EXPECT_EQ(file.getc(), '0');
	EXPECT_EQ(file.getc(), '1');
	EXPECT_EQ(file.get_file_size(), 10u);
	EXPECT_EQ(file.tell(), 2u);
	EXPECT_EQ(file.getc(), '2');
	EXPECT_EQ(file.seek(0, SEEK_END), 0);
	EXPECT_GE(file.puts("ab"), 0);
	EXPECT_EQ(file.get_file_size(), 12u) << "what is in the buffer counts";
}

TEST_F(File_test, OffsetsHaveSixtyFourBits) {
	const std::string path = folder_ / "sparse";
	xylFile file(path.c_str(), "w+b");
	ASSERT_TRUE(file.is_valid());
	EXPECT_EQ(file.write("near", 1, 4), 4u);
	EXPECT_EQ(file.seek(four_gib + 3, SEEK_SET), 0);
	EXPECT_EQ(file.tell(), four_gib + 3);
	EXPECT_EQ(file.write("far", 1, 3), 3u);
	EXPECT_EQ(file.get_file_size(), four_gib + 6);
	EXPECT_EQ(file.tell(), four_gib + 6);
	EXPECT_EQ(file.seek(0 - (four_gib + 6), SEEK_CUR), 0);
	EXPECT_EQ(file.getc(), 'n');
	EXPECT_EQ(file.seek(four_gib + 2, SEEK_CUR), 0);
	EXPECT_EQ(file.getc(), 'f');
	EXPECT_EQ(file.tell(), four_gib + 4);
}

TEST(xylFileDeathTest, NameOf256CharactersEndsTheProcess) {
	const std::string longest(255, 'x');
	const std::string too_long(256, 'x');
	xylFile file;
	EXPECT_NE(file.open(longest.c_str(), "rb"), 0);
	EXPECT_DEATH(file.open(too_long.c_str(), "rb"), "");
	EXPECT_DEATH(file.reopen(too_long.c_str(), "rb"), "");
}

} // namespace
