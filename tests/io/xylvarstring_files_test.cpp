#include "system_files.h"
#include "temporary_folder.h"

#include <morvantis/io/xylbuffer.h>
#include <morvantis/io/xylfile.h>
#include <morvantis/io/xylnative_file.h>
#include <morvantis/strings/xylvarstring.h>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace {

std::string text_of(const xylVarString& string) {
	return {string.char_p(), static_cast<size_t>(string.length())};
}

class VarString_files_test : public testing::Test {
protected:
	Temporary_folder folder_;
};

TEST_F(VarString_files_test, ReadFileTakesCountBytesFromThePosition) {
	const std::string path = folder_.make_file("file", std::string("0123\0"
	                                                               "56789",
	                                                               10));
	xylFile file(path.c_str(), "rb");
	file.seek(2, SEEK_SET);
	xylVarString string("before");
	string.read_file(&file, 4);
	EXPECT_EQ(text_of(string), std::string("23\0"
	                                       "5",
	                                       4));
	EXPECT_EQ(string.char_p()[4], 0);
	EXPECT_TRUE(string.is_valid());
	EXPECT_EQ(file.tell(), 6u);
	string.read_file(&file, 100);
	EXPECT_EQ(text_of(string), "6789") << "what is left";
	EXPECT_EQ(string.char_p()[4], 0);
	string.read_file(&file, 5);
	EXPECT_EQ(text_of(string), "") << "at the end";
	EXPECT_EQ(string.char_p()[0], 0);
	EXPECT_TRUE(string.is_valid());
}

TEST_F(VarString_files_test, CountOfZeroIsTheWholeFilesSize) {
	const std::string path = folder_.make_file("file", "0123456789");
	xylFile file(path.c_str(), "rb");
	xylVarString string;
	string.read_file(&file, 0);
	EXPECT_EQ(text_of(string), "0123456789");
	file.seek(7, SEEK_SET);
	string.read_file(&file, 0);
	EXPECT_EQ(text_of(string), "789") << "asked for ten, stopped with what was there";
	EXPECT_EQ(file.tell(), 10u);
	string.read_file(&file, 0);
	EXPECT_EQ(text_of(string), "");
}

TEST_F(VarString_files_test, EmptyFileLeavesTheStringAsItIs) {
	const std::string path = folder_.make_file("file", "");
	xylFile file(path.c_str(), "rb");
	xylVarString string("before");
	string.read_file(&file, 0);
	EXPECT_EQ(text_of(string), "before");
	xylVarString fresh;
	fresh.read_file(&file, 0);
	EXPECT_TRUE(fresh.is_buffer_null());
}

// Room for what the length can't tell isn't taken, and nothing is read without room.
TEST_F(VarString_files_test, FilesLongerThanATextLeaveTheStringAsItIs) {
	for (const xylUInt64 size : {0x7FFFFFFFull, 0x80000000ull, 0xFFFFFFFFull, 0x100000005ull}) {
		SCOPED_TRACE(size);
		const std::string path = folder_ / "sparse";
		{
			xylNative_file file(path.c_str(), xylFile_access_write, xylFile_flag_create_always);
			make_sparse(file.handle);
			file.set_pointer(size - 1, xylFile_from_start);
			EXPECT_EQ(file.write("x", 1), 1u);
		}
		xylFile file(path.c_str(), "rb");
		ASSERT_EQ(file.get_file_size(), size);
		xylVarString string("before"), fresh;
		string.read_file(&file, 0);
		fresh.read_file(&file, 0);
		string.read_file(&file, 0x7FFFFFFF);
		string.read_file(&file, 0xFFFFFFFF);
		EXPECT_EQ(text_of(string), "before");
		EXPECT_TRUE(fresh.is_buffer_null());
		EXPECT_EQ(file.tell(), 0u);
	}
}

TEST_F(VarString_files_test, PipeHasNoSizeAndIsReadByCount) {
	xylFile file;
	file.file = open_pipe("0123456789");
	ASSERT_NE(file.file, nullptr);
	++xylFile::open_files_count_;
	xylVarString string("before");
	string.read_file(&file, 0);
	EXPECT_EQ(text_of(string), "before");
	xylBuffer buffer;
	buffer.ensure_capacity(16);
	buffer.data[0] = 'b';
	buffer.read_file(&file);
	EXPECT_EQ(buffer.data[0], 'b');
	EXPECT_EQ(buffer.get_buffer_size(), 16u);
	string.read_file(&file, 4);
	EXPECT_EQ(text_of(string), "0123");
}

TEST_F(VarString_files_test, CursorStays) {
	const std::string path = folder_.make_file("file", "one two");
	xylFile file(path.c_str(), "rb");
	xylVarString string("ab cd"), token;
	string.next_token_str(token);
	const int left = string.stream_length();
	string.read_file(&file, 0);
	EXPECT_EQ(string.length() - string.stream_length(), 5 - left);
}

TEST_F(VarString_files_test, WriteFileWritesLengthBytes) {
	const std::string path = folder_ / "file";
	xylFile file(path.c_str(), "wb");
	xylVarString string("abc\0def", 7);
	string.write_file(&file);
	xylVarString().write_file(&file);
	xylVarString("!").write_file(&file);
	EXPECT_TRUE(file.close());
	std::ifstream stream(path, std::ios::binary);
	EXPECT_EQ((std::string{std::istreambuf_iterator<char>(stream), {}}),
	          std::string("abc\0def!", 8));
}

} // namespace
