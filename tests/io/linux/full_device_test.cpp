// Output streams on a device that is full: the run-time's buffer takes the data, the system
// doesn't.

#include <morvantis/io/xylfile.h>
#include <morvantis/io/xyloutput_binary_file_stream.h>
#include <morvantis/io/xyloutput_text_file_stream.h>

#include "../file_stream_trials.h"

#include <stdio.h>
#include <unistd.h>

namespace {

constexpr int more_than_the_runtime_buffers = 1 << 20;

template <typename Output> void answers_as_stated() {
	const int open_files = xylFile::open_files_count_;
	{
		Output stream;
		ASSERT_EQ(open_anew(stream, "/dev/full"), 0);
		stream.buffer.append(std::string(more_than_the_runtime_buffers, 'x').c_str());
		EXPECT_EQ(stream.flush(), 1);
		EXPECT_EQ(stream.flush(), 0) << "kept: not tried again";
		stream.buffer.append("more");
		EXPECT_EQ(stream.flush(), 0) << "kept: only the run-time's own flush failed";
		EXPECT_EQ(stream.close(), 1);
		EXPECT_EQ(stream.file_object, nullptr);
	}
	{
		Output stream;
		ASSERT_EQ(open_anew(stream, "/dev/full"), 0);
		stream.buffer.append(std::string(more_than_the_runtime_buffers, 'x').c_str());
		EXPECT_EQ(stream.close(), 1);
		EXPECT_NE(stream.file_object, nullptr) << "kept: the file stays";
	}
	EXPECT_EQ(xylFile::open_files_count_, open_files);
}

// The system's handle goes from under the run-time's stream.
template <typename Output> void tells_when_closing_fails() {
	const Temporary_folder folder;
	Output stream;
	ASSERT_EQ(open_anew(stream, folder / "out"), 0);
	::close(::fileno(stream.file_object->file));
	EXPECT_EQ(stream.close(), 0);
	EXPECT_EQ(stream.file_object, nullptr);
	EXPECT_TRUE(stream.failed);
	EXPECT_FALSE(stream.is_opened);
}

} // namespace

TEST(xylIO_Output_binary_file_stream, TellsWhenClosingFails) {
	tells_when_closing_fails<xylOutput_binary_file_stream>();
}

TEST(xylIO_Output_text_file_stream, TellsWhenClosingFails) {
	tells_when_closing_fails<xylOutput_text_file_stream>();
}

TEST(xylIO_Output_binary_file_stream, AnswersAsStatedOnAFullDevice) {
	answers_as_stated<xylOutput_binary_file_stream>();
}

TEST(xylIO_Output_text_file_stream, AnswersAsStatedOnAFullDevice) {
	answers_as_stated<xylOutput_text_file_stream>();
}
