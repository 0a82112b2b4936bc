// Output streams on a device that takes a part of what it is given, and on one that fails when it
// is closed.

#include <morvantis/io/xylfile.h>
#include <morvantis/io/xyloutput_binary_file_stream.h>
#include <morvantis/io/xyloutput_binary_file_stream_auto_flush.h>
#include <morvantis/io/xyloutput_text_file_stream.h>

#include "../file_stream_trials.h"

#include <cerrno>
#include <stdio.h>

namespace {

struct Device {
	size_t room;           // bytes that it still takes
	int result_of_closing; // 0 or EOF
	std::string content;

	static ssize_t write(void* cookie, const char* bytes, size_t size) {
		Device& device = *static_cast<Device*>(cookie);
		const size_t taken = std::min(size, device.room);
		if (taken == 0) {
			errno = ENOSPC;
			return 0;
		}
		device.content.append(bytes, taken);
		device.room -= taken;
		return static_cast<ssize_t>(taken);
	}
	static int close(void* cookie) { return static_cast<Device*>(cookie)->result_of_closing; }
};

// Opens a stream and puts the device in place of its file.
template <typename Output> void open_on(Output& stream, Device& device, int buffering) {
	const Temporary_folder folder;
	ASSERT_EQ(open_anew(stream, folder / "out"), 0);
	std::fclose(stream.file_object->file);
	FILE* const file =
		::fopencookie(&device, "w", {nullptr, Device::write, nullptr, Device::close});
	ASSERT_NE(file, nullptr);
	std::setvbuf(file, nullptr, buffering, BUFSIZ);
	stream.file_object->file = file;
}

template <typename Output> void answers_a_short_write() {
	const int open_files = xylFile::open_files_count_;
	Device device{4, 0, {}};
	{
		Output stream;
		open_on(stream, device, _IONBF);
		stream.buffer.append("0123456789");
		EXPECT_EQ(stream.flush(), 1);
		EXPECT_EQ(device.content, "0123");
		EXPECT_EQ(stream.flushed_length, 10u) << "kept: moved whether or not all went out";
		EXPECT_EQ(stream.flush(), 0) << "kept: nothing is left to write";
		device.room = 100;
		stream.buffer.append("ab");
		EXPECT_EQ(stream.flush(), 0);
		EXPECT_EQ(device.content, "0123ab") << "kept: what did not go out is lost";
		device.room = 1;
		stream.buffer.append("cd");
		xylFile* const file = stream.file_object;
		EXPECT_EQ(stream.close(), 1) << "the flush's";
		EXPECT_EQ(device.content, "0123abc");
		EXPECT_EQ(stream.file_object, file);
		EXPECT_TRUE(file->is_valid());
		EXPECT_FALSE(stream.is_opened);
		EXPECT_TRUE(stream.failed);
		stream.buffer.append("more");
		EXPECT_EQ(stream.flush(), 0) << "nothing is open";
		EXPECT_EQ(stream.close(), 1);
		EXPECT_EQ(stream.file_object, file);
	}
	EXPECT_EQ(xylFile::open_files_count_, open_files);
	EXPECT_EQ(device.content, "0123abc");
}

// The run-time's buffer takes the data, its own flush finds out, and nobody asks for that result.
template <typename Output> void overlooks_the_flush_of_the_runtime() {
	Device device{4, 0, {}};
	Output stream;
	open_on(stream, device, _IOFBF);
	stream.buffer.append("0123456789");
	EXPECT_EQ(stream.flush(), 0);
	EXPECT_EQ(device.content, "0123");
}

template <typename Output> void tells_of_a_failed_closing() {
	const int open_files = xylFile::open_files_count_;
	Device device{100, EOF, {}};
	Output stream;
	open_on(stream, device, _IOFBF);
	stream.buffer.append("abc");
	EXPECT_EQ(stream.close(), 0);
	EXPECT_EQ(device.content, "abc");
	EXPECT_EQ(stream.file_object, nullptr);
	EXPECT_TRUE(stream.failed);
	EXPECT_FALSE(stream.is_opened);
	EXPECT_EQ(stream.close(), 1) << "nothing is open";
	EXPECT_EQ(xylFile::open_files_count_, open_files);
}

using Binary = xylOutput_binary_file_stream;
using Text = xylOutput_text_file_stream;

TEST(xylIO_Output_binary_file_stream, AnswersAShortWrite) { answers_a_short_write<Binary>(); }
TEST(xylIO_Output_text_file_stream, AnswersAShortWrite) { answers_a_short_write<Text>(); }

TEST(xylIO_Output_binary_file_stream, OverlooksTheFlushOfTheRuntime) {
	overlooks_the_flush_of_the_runtime<Binary>();
}
TEST(xylIO_Output_text_file_stream, OverlooksTheFlushOfTheRuntime) {
	overlooks_the_flush_of_the_runtime<Text>();
}

TEST(xylIO_Output_binary_file_stream, TellsOfAFailedClosing) {
	tells_of_a_failed_closing<Binary>();
}
TEST(xylIO_Output_text_file_stream, TellsOfAFailedClosing) { tells_of_a_failed_closing<Text>(); }

TEST(xylIO_Output_text_file_stream, AutomaticFlushGoesOnAfterAShortWrite) {
	Device device{2, 0, {}};
	Text stream;
	open_on(stream, device, _IONBF);
	stream.set_auto_flush(true);
	stream << 123 << "ab";
	EXPECT_EQ(device.content, "12");
	EXPECT_EQ(stream.flushed_length, 5u);
	device.room = 100;
	stream << "cd";
	EXPECT_EQ(device.content, "12cd");
	EXPECT_EQ(stream.close(), 1);
	EXPECT_EQ(stream.file_object, nullptr);
}

// Values that go straight to the file: what doesn't fit is lost without a word.
TEST(xylOutput_binary_file_stream_auto_flush, FailuresAreSeenWhenItCloses) {
	Device device{6, EOF, {}};
	xylOutput_binary_file_stream_auto_flush stream;
	open_on(stream, device, _IONBF);
	stream << 0x04030201 << 0x08070605 << 'x';
	EXPECT_EQ(device.content, "\x01\x02\x03\x04\x05\x06");
	EXPECT_EQ(stream.flush(), 0);
	EXPECT_EQ(stream.close(), 0);
	EXPECT_EQ(stream.file_object, nullptr);
}

} // namespace
