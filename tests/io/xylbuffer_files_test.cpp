// The byte buffer to and from files, and the preparation of text resources.

#include "recording_host.h"
#include "resource_text_model.h"
#include "temporary_folder.h"

#include <morvantis/io/xylbuffer.h>
#include <morvantis/io/xylfile.h>
#include <morvantis/io/xylnative_file.h>
#include <morvantis/io/xylnative_file_async.h>
#include <morvantis/strings/xylvarstring.h>

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

namespace {

using namespace std::string_literals;

constexpr int reading = xylFile_access_read | xylFile_share_read | xylFile_share_write;
constexpr int writing = xylFile_access_write | xylFile_share_read | xylFile_share_write;

class Buffer_files_test : public testing::Test {
protected:
	std::string text_of(const std::string& path) {
		std::ifstream file(path, std::ios::binary);
		return std::string(std::istreambuf_iterator<char>(file), {});
	}

	Temporary_folder folder_;
	std::string path_ = folder_.make_file("file", "0123456789");
	xylBuffer buffer_;
};

TEST_F(Buffer_files_test, ReadsToTheCursorAndAdvances) {
	xylNative_file file(path_.c_str(), reading, xylFile_flag_open_existing);
	EXPECT_TRUE(buffer_.read_handle(file, 0));
	EXPECT_EQ(buffer_.data, nullptr); // at once, without a block
	EXPECT_TRUE(buffer_.read_handle(file, 4));
	EXPECT_EQ(buffer_.capacity, 4u);
	EXPECT_TRUE(buffer_.read_handle(file, 6));
	EXPECT_EQ(buffer_.capacity, 12u); // 10 times 1.2
	EXPECT_EQ(buffer_.get_length(), 10u);
	EXPECT_EQ(std::memcmp(buffer_.data, "0123456789", 10), 0);
}

TEST_F(Buffer_files_test, ReadThatFallsShortLeavesTheCursor) {
	xylNative_file file(path_.c_str(), reading, xylFile_flag_open_existing);
	EXPECT_FALSE(buffer_.read_handle(file, 11));
	EXPECT_EQ(buffer_.get_length(), 0u);
	EXPECT_EQ(std::memcmp(buffer_.data, "0123456789", 10), 0);
	EXPECT_FALSE(buffer_.read_handle_do_not_advance(file, 1));
	xylNative_file closed;
	EXPECT_FALSE(buffer_.read_handle(closed, 1));
	EXPECT_TRUE(buffer_.read_handle(closed, 0));
}

TEST_F(Buffer_files_test, ReadsWithoutAdvancing) {
	xylNative_file file(path_.c_str(), reading, xylFile_flag_open_existing);
	EXPECT_TRUE(buffer_.read_handle_do_not_advance(file, 0));
	EXPECT_EQ(buffer_.data, nullptr);
	EXPECT_TRUE(buffer_.read_handle_do_not_advance(file, 10));
	EXPECT_EQ(buffer_.get_length(), 0u);
	EXPECT_EQ(std::memcmp(buffer_.cursor, "0123456789", 10), 0);
}

TEST_F(Buffer_files_test, StartsOverlappedReads) {
	xylNative_file_async file(path_.c_str(), reading, xylFile_flag_open_existing);
	EXPECT_TRUE(buffer_.read_handle_do_not_advance_async(file, 10));
	xylUInt64 count = 0;
	EXPECT_EQ(file.get_async_status(&count, true), xylAsync_io_completed);
	EXPECT_EQ(count, 10u);
	EXPECT_EQ(buffer_.get_length(), 0u);
	EXPECT_EQ(buffer_.capacity, 10u);
	EXPECT_EQ(std::memcmp(buffer_.data, "0123456789", 10), 0);
	file.set_pointer(10, xylFile_from_start);
	EXPECT_TRUE(buffer_.read_handle_do_not_advance_async(file, 1)); // fails, and isn't told
	EXPECT_EQ(file.get_async_status(&count, true), xylAsync_io_failed);
}

TEST_F(Buffer_files_test, WritesWhatLiesAtTheCursor) {
	const std::string path = folder_ / "written";
	buffer_.write_void("abcdef", 6);
	buffer_.rewind();
	buffer_.cursor += 1;
	{
		xylNative_file file(path.c_str(), writing, xylFile_flag_create_always);
		EXPECT_TRUE(buffer_.write_handle(file, 3));
		EXPECT_EQ(buffer_.get_length(), 4u);
		EXPECT_EQ(buffer_.capacity, 6u);
		EXPECT_TRUE(buffer_.write_handle_from_beginning(file, 2));
		EXPECT_EQ(buffer_.get_length(), 4u);
		buffer_.rewind();
		buffer_.cursor += 2;
		EXPECT_TRUE(buffer_.write_handle(file, 4)); // the room test is a write's: the block grows
		EXPECT_EQ(buffer_.capacity, 7u);
	}
	const std::string seen = text_of(path);
	EXPECT_EQ(seen.size(), 9u);
	EXPECT_EQ(seen.substr(0, 5), "bcdab");
}

TEST_F(Buffer_files_test, ReadsAFileFromWhereItStands) {
	xylFile file(path_.c_str(), "rb");
	buffer_.read_file(&file);
	EXPECT_EQ(buffer_.capacity, 10u);
	EXPECT_EQ(buffer_.get_length(), 0u);
	EXPECT_EQ(std::memcmp(buffer_.data, "0123456789", 10), 0);
	file.seek(4, SEEK_SET);
	buffer_.read_file(&file); // asks for the whole size, and gets what is left
	EXPECT_EQ(buffer_.capacity, 12u);
	EXPECT_EQ(std::memcmp(buffer_.data, "456789", 6), 0);
}

TEST_F(Buffer_files_test, WritesAFileFromTheStartToTheCursor) {
	const std::string path = folder_ / "written";
	buffer_.write_void("abcdef", 6);
	buffer_.cursor -= 2;
	{
		xylFile file(path.c_str(), "wb");
		buffer_.write_file(&file);
		xylBuffer().write_file(&file); // nothing
	}
	EXPECT_EQ(text_of(path), "abcd");
	EXPECT_EQ(buffer_.get_length(), 4u);
}

// --- Text resources

class Text_resource_test : public Buffer_files_test {
protected:
	bool prepare(const std::string& text) {
		const std::string path = folder_.make_file("resource.txt", text);
		xylNative_file file(path.c_str(), reading, xylFile_flag_open_existing);
		return buffer_.trf_read_and_prepare(file, static_cast<unsigned int>(file.get_file_size()),
		                                    "resource.txt");
	}
	std::string prepared(size_t size) {
		return std::string(reinterpret_cast<const char*>(buffer_.data), size);
	}
	std::vector<Host_call> told() { return Recording_host::get().take(); }

	const std::vector<Host_call> comma_warning_{
		{"warning",
	     "Resource file contains invalid comma(',') characters, use dots('.'): \"resource.txt\"",
	     {0}}};
};

TEST_F(Text_resource_test, BecomesTokensInPlace) {
	EXPECT_TRUE(prepare("mesh 12\t1.5\r\nlast\n"));
	EXPECT_EQ(prepared(19), "mesh\0"
	                        "12\0"
	                        "1.5\0\0last\0\0"s);
	EXPECT_EQ(buffer_.capacity, 19u);
	EXPECT_EQ(buffer_.get_length(), 0u);
	EXPECT_TRUE(buffer_ == "mesh");
	EXPECT_EQ(buffer_.next_int(), 12);
	EXPECT_EQ(buffer_.next_float(), 1.5f);
	EXPECT_STREQ(buffer_.next_string(), "last");
}

TEST_F(Text_resource_test, WorksInABlockThatIsLargeEnough) {
	buffer_.allocate(100);
	buffer_.write_int(1);
	const xylUInt8* block = buffer_.data;
	EXPECT_TRUE(prepare("a b "));
	EXPECT_EQ(buffer_.data, block);
	EXPECT_EQ(buffer_.cursor, block);
	EXPECT_EQ(buffer_.capacity, 100u);
	EXPECT_EQ(prepared(5), "a\0b\0\0"s);
}

TEST_F(Text_resource_test, CommasAreRepairedAndRefused) {
	EXPECT_FALSE(prepare("1,5 2,5 "));
	EXPECT_EQ(told(), comma_warning_);
	EXPECT_EQ(prepared(9), "1.5\0"
	                       "2.5\0\0"s);
}

TEST_F(Text_resource_test, LastBadByteIsNamed) {
	EXPECT_FALSE(prepare("a\x02 b\xE9 c "));
	EXPECT_EQ(told(), (std::vector<Host_call>{
						  {"warning",
	                       "Resource file \"resource.txt\" contains at least one invalid character "
	                       "\"\xE9\". Please check resource naming and try again.",
	                       {0}}}));
	EXPECT_EQ(prepared(9), "a\0\0b\0\0c\0\0"s);
}

TEST_F(Text_resource_test, CommaHidesABadByte) {
	EXPECT_FALSE(prepare("1,5 \x02 "));
	EXPECT_EQ(told(), comma_warning_);
	EXPECT_EQ(prepared(7), "1.5\0\0\0\0"s);
}

TEST_F(Text_resource_test, FailedReadIsNotTold) {
	const std::string path = folder_.make_file("short.txt", "a b ");
	xylNative_file file(path.c_str(), reading, xylFile_flag_open_existing);
	EXPECT_FALSE(buffer_.trf_read_and_prepare(file, 100, "short.txt"));
	EXPECT_EQ(buffer_.capacity, 101u);
	EXPECT_EQ(prepared(4), "a b "); // as it was read
}

// Files of any bytes, in blocks of any size before.
TEST_F(Text_resource_test, RandomFilesComeOutAsByteByByte) {
	std::mt19937 random(23);
	for (int run = 0; run < 1000; ++run) {
		SCOPED_TRACE(run);
		std::string text = random_resource_text(random);
		for (auto more = random() % 8; more != 0; --more) text += random_resource_text(random);
		buffer_.shrink(static_cast<unsigned int>(random() % 500));
		const xylUInt64 old_capacity = buffer_.capacity;
		const bool is_well = prepare(text);
		const Resource_text_flaws flaws = prepare_plainly(text);
		ASSERT_EQ(is_well, !flaws.has_comma && flaws.last_bad_byte == 0);
		ASSERT_EQ(prepared(text.size() + 1), text + '\0');
		ASSERT_EQ(buffer_.cursor, buffer_.data);
		ASSERT_GE(buffer_.capacity, std::max<xylUInt64>(old_capacity, text.size() + 1));
		const std::vector<Host_call> calls = told();
		ASSERT_EQ(calls.size(), is_well ? 0u : 1u);
		if (flaws.has_comma) {
			ASSERT_EQ(calls, comma_warning_);
		} else if (!is_well) {
			const std::string name =
				std::string("\"") + static_cast<char>(flaws.last_bad_byte) + '"';
			ASSERT_NE(calls[0].text.find(name), std::string::npos) << calls[0].text;
		}
	}
}

TEST_F(Text_resource_test, ZeroBytesAreWhiteSpace) {
	EXPECT_TRUE(prepare("a\0b "s));
	EXPECT_EQ(prepared(5), "a\0b\0\0"s);
}

} // namespace
