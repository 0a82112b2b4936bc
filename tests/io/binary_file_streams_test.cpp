// The binary streams with a file behind them.

#include <morvantis/io/xylfile.h>
#include <morvantis/io/xylinput_binary_file_stream.h>
#include <morvantis/io/xyloutput_binary_file_stream.h>
#include <morvantis/io/xyloutput_binary_file_stream_auto_flush.h>
#include <morvantis/math/xylquaternion.h>
#include <morvantis/memory/xylheap.h>
#include <morvantis/strings/xylconststring.h>

#include "file_stream_trials.h"

using Input = xylInput_binary_file_stream;
using Output = xylOutput_binary_file_stream;
using Auto_flush = xylOutput_binary_file_stream_auto_flush;

TEST(xylIO_Input_binary_file_stream, LoadsTheWholeFileAndRemembersItsName) {
	const Temporary_folder folder;
	const std::string path = folder.make_file("a", std::string("ab\0\r\ncd", 7));
	const int open_files = xylFile::open_files_count_;
	Input stream;
	EXPECT_TRUE(stream.fail());
	EXPECT_TRUE(stream.try_open(path.c_str()));
	EXPECT_FALSE(stream.fail());
	EXPECT_EQ(stream.file_object, nullptr) << "closed at once";
	EXPECT_EQ(xylFile::open_files_count_, open_files);
	EXPECT_EQ(data_of(stream), std::string("ab\0\r\ncd", 7));
	EXPECT_TRUE(stream.get_name() == path.c_str());
	EXPECT_TRUE(stream.is_binary_file());
	EXPECT_FALSE(stream.eof());
	stream.close();
	EXPECT_TRUE(stream.fail());
	EXPECT_EQ(stream.buffer.length(), 7);
}

TEST(xylIO_Input_binary_file_stream, EmptyFileOpensAndIsAtItsEnd) {
	const Temporary_folder folder;
	const std::string path = folder.make_file("empty", "");
	Input stream;
	EXPECT_EQ(stream.open(path.c_str()), 0);
	EXPECT_TRUE(stream.eof());
	Input full;
	full << 7;
	EXPECT_TRUE(full.try_open(path.c_str()));
	EXPECT_EQ(full.buffer.length(), 4) << "left as it was";
}

TEST(xylIO_Input_binary_file_stream, MissingFileIsAnErrorUnlessOnlyTried) {
	const Temporary_folder folder;
	const std::string path = folder / "missing";
	Input stream;
	EXPECT_FALSE(stream.try_open(path.c_str()));
	EXPECT_TRUE(stream.fail());
	EXPECT_NE(stream.file_object, nullptr);
	EXPECT_TRUE(stream.get_name() == path.c_str());
	EXPECT_EQ(stream.open(path.c_str()), -1);
	EXPECT_EQ(Recording_host::get().take(),
	          (std::vector<Host_call>{{"error", "Unable to open file: " + path + "\n", {0}}}));
	stream.close();
	EXPECT_EQ(stream.file_object, nullptr);
	EXPECT_TRUE(stream.try_open(folder.make_file("b", "b").c_str()));
	EXPECT_FALSE(stream.fail());
}

TEST(xylIO_Input_binary_file_stream, CopySharesTheFileObject) {
	const Temporary_folder folder;
	Input stream;
	ASSERT_TRUE(stream.try_open(folder.make_file("a", "abc").c_str()));
	Input copy(stream);
	EXPECT_EQ(copy.file_object, nullptr);
	EXPECT_EQ(data_of(copy), "abc");
	Input failed;
	failed.try_open((folder / "missing").c_str());
	Input sharing(failed);
	EXPECT_EQ(sharing.file_object, failed.file_object);
	sharing.file_object = nullptr;
}

TEST(xylIO_Output_binary_file_stream, WritesNothingBeforeCloseOrFlush) {
	const Temporary_folder folder;
	const std::string path = folder / "out";
	Output stream;
	EXPECT_TRUE(stream.failed);
	EXPECT_FALSE(stream.is_opened);
	EXPECT_EQ(stream.open(path.c_str()), 0);
	EXPECT_TRUE(stream.is_opened);
	EXPECT_FALSE(stream.failed);
	stream << 7 << "ab";
	EXPECT_EQ(content_of(path), "");
	EXPECT_EQ(stream.close(), 1);
	EXPECT_EQ(content_of(path), std::string("\7\0\0\0\2\0\0\0ab", 10));
	EXPECT_EQ(stream.file_object, nullptr);
	EXPECT_TRUE(stream.failed);
	EXPECT_FALSE(stream.is_opened);
	EXPECT_EQ(stream.close(), 1) << "nothing is open";
}

TEST(xylIO_Output_binary_file_stream, FlushWritesWhatCameSince) {
	flush_writes_what_came_since<Output>();
}

TEST(xylIO_Output_binary_file_stream, DestructorCloses) { destructor_closes<Output>(); }

TEST(xylIO_Output_binary_file_stream, AnswersWhenItCannotOpen) {
	answers_when_it_cannot_open<Output>();
}

TEST(xylIO_Output_binary_file_stream, KeepsTheFileWhenItTakesNoData) {
	keeps_the_file_when_it_takes_no_data<Output>();
}

TEST(xylOutput_binary_file_stream_auto_flush, ValuesGoStraightToTheFile) {
	const Temporary_folder folder;
	const std::string path = folder / "out";
	{
		Auto_flush stream;
		EXPECT_TRUE(stream.get_auto_flush());
		EXPECT_EQ(stream.flushed_length, 0u);
		ASSERT_EQ(stream.open(path.c_str()), 0);
		xylIO_binary_stream expected;
		const auto write = [](auto& out) {
			out << 'c';
			out << static_cast<unsigned char>(1) << true << static_cast<short>(-2)
				<< static_cast<unsigned short>(3) << -4 << 5u << 6.5f << xylInt64{-7}
				<< xylUInt64{8} << "nine" << xylVarString("ten")
				<< static_cast<const char*>(nullptr);
		};
		write(stream);
		write(expected);
		EXPECT_EQ(&(stream << 'c'), &stream);
		expected << 'c';
		stream << expected << xylStream_manip_none; // nothing
		EXPECT_TRUE(stream.buffer.is_buffer_null()) << "the buffer isn't touched";
		stream << xylQuaternion(1, 2, 3, 4);
		EXPECT_EQ(stream.buffer.length(), 16) << "kept";
		EXPECT_EQ(stream.flush(), 0);
		EXPECT_EQ(stream.close(), 1);
		EXPECT_EQ(content_of(path), data_of(expected));
	}
	EXPECT_EQ(content_of(path).size(), 55u);
}

TEST(xylOutput_binary_file_stream_auto_flush, DestructorLeavesTheQuaternionBehind) {
	const Temporary_folder folder;
	const std::string path = folder / "out";
	{
		Auto_flush stream;
		ASSERT_EQ(stream.open(path.c_str()), 0);
		stream << 'a';
		stream << xylQuaternion(1, 2, 3, 4);
	}
	EXPECT_EQ(content_of(path), "a");
}

TEST(xylOutput_binary_file_stream_auto_flush, DoesNothingWhileNoFileIsOpen) {
	Auto_flush stream;
	stream << 1 << "text" << xylVarString("text") << 2.5f;
	EXPECT_TRUE(stream.buffer.is_buffer_null());
	EXPECT_EQ(stream.close(), 1);
}

TEST(xylInput_binary_file_stream, HiddenOperatorsDoNothing) {
	Input stream;
	expect_hidden_outputs<const xylString_base&, const xylStream_manip&, float, bool>(stream);
	EXPECT_EQ(output_bytes<int>(stream, 7), 4);
	stream << 8;
	EXPECT_EQ(stream.buffer.length(), 8) << "the others are those of the base";
}

TEST(xylOutput_binary_file_stream, HiddenOperatorsDoNothing) {
	Output stream;
	expect_hidden_input<float>(stream, 7);
	expect_hidden_input<bool>(stream, true);
	expect_hidden_input<xylVarString>(stream, xylVarString("before"));
	expect_hidden_input<xylConstString<64>>(stream, xylConstString<64>("before"));
	stream.buffer.append("abcd");
	int value = 0;
	stream >> value;
	EXPECT_EQ(value, 0x64636261) << "the others are those of the base";
}

TEST(xylOutput_binary_file_stream_auto_flush, HiddenOperatorsDoNothing) {
	Auto_flush stream;
	expect_hidden_input<char>(stream, 'c');
	expect_hidden_input<int>(stream, 7);
	expect_hidden_input<unsigned int>(stream, 7);
	expect_hidden_input<float>(stream, 7);
	expect_hidden_input<bool>(stream, true);
	expect_hidden_input<xylInt64>(stream, 7);
	expect_hidden_input<xylUInt64>(stream, 7);
	expect_hidden_input<xylVarString>(stream, xylVarString("before"));
	expect_hidden_input<xylConstString<64>>(stream, xylConstString<64>("before"));
}
