// Streams over files that change between the moment they are measured and the moment
// they are read.

#include "../platform/scripted_system.h"
#include "scripted_file.h"

#include <morvantis/io/xylfile.h>
#include <morvantis/io/xylio_input_binary_file_stream.h>
#include <morvantis/io/xylio_input_text_file_stream.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

class Scripted_stream_test : public testing::Test {
protected:
	void SetUp() override {
		scripted_system = {};
		scripted_file = {};
	}
};

// What opens next holds `content` and says that it has `size` bytes.
void next_file(const char* content, xylUInt64 size) {
	scripted_file.stream = std::tmpfile();
	ASSERT_NE(scripted_file.stream, nullptr);
	std::fputs(content, scripted_file.stream);
	std::rewind(scripted_file.stream);
	scripted_file.size = size;
}

template <typename Input> void loads(const char* content, xylUInt64 size, const char* loaded) {
	SCOPED_TRACE(size);
	const int open_files = xylFile::open_files_count_;
	next_file(content, size);
	Input stream;
	stream.buffer = "before";
	EXPECT_TRUE(stream.try_open("file"));
	EXPECT_FALSE(stream.fail());
	EXPECT_EQ(stream.file_object, nullptr);
	EXPECT_STREQ(stream.buffer.char_p(), loaded);
	EXPECT_EQ(stream.buffer.length(), static_cast<int>(std::strlen(loaded)));
	EXPECT_TRUE(stream.buffer.is_valid());
	EXPECT_EQ(xylFile::open_files_count_, open_files);
	stream.buffer.consume_all();
	EXPECT_TRUE(stream.eof());
}

template <typename Input> void loads_what_is_there() {
	loads<Input>("0123456789", 10, "0123456789");
	// it shrank
	loads<Input>("0123456789", 11, "0123456789");
	loads<Input>("0123456789", 100000, "0123456789");
	loads<Input>("", 10, "");
	// it grew
	loads<Input>("0123456789", 4, "0123");
	loads<Input>("0123456789", 0, "before");
	// a pipe has no size
	loads<Input>("0123456789", ~xylUInt64{0}, "before");
	// more than a text can have
	for (const xylUInt64 size : {0x7FFFFFFFull, 0x80000000ull, 0xC0000000ull, 0x100000005ull}) {
		loads<Input>("0123456789", size, "before");
	}
}

TEST_F(Scripted_stream_test, BinaryFileThatChangesIsLoadedAsFarAsItGoes) {
	loads_what_is_there<xylIO_Input_binary_file_stream>();
}

TEST_F(Scripted_stream_test, TextFileThatChangesIsLoadedAsFarAsItGoes) {
	loads_what_is_there<xylIO_Input_text_file_stream>();
}

} // namespace
