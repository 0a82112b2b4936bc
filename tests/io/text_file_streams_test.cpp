// The text streams with a file behind them.

#include <morvantis/io/xylinput_text_file_stream.h>
#include <morvantis/io/xyloutput_text_file_stream.h>

#include "file_stream_trials.h"

using Input = xylInput_text_file_stream;
using Output = xylOutput_text_file_stream;

namespace {

// The text as the run-time of this system ends lines in a text file.
std::string without_carriage_returns(std::string text) {
	std::erase(text, '\r');
	return text;
}

} // namespace

TEST(xylIO_Input_text_file_stream, LoadsTheWholeFile) {
	const Temporary_folder folder;
	const std::string path = folder.make_file("a", "one 2\nthree");
	Input stream;
	EXPECT_TRUE(stream.fail());
	EXPECT_EQ(stream.file_object, nullptr);
	EXPECT_EQ(stream.open(path.c_str()), 0);
	EXPECT_FALSE(stream.fail());
	EXPECT_EQ(stream.file_object, nullptr);
	EXPECT_TRUE(stream.get_name() == path.c_str());
	EXPECT_EQ(data_of(stream), "one 2\nthree");
	EXPECT_FALSE(stream.is_binary_file());
	xylVarString text;
	int value = 0;
	stream >> text >> value;
	EXPECT_TRUE(text == "one");
	EXPECT_EQ(value, 2);
	stream.close();
	EXPECT_TRUE(stream.fail());
}

TEST(xylIO_Input_text_file_stream, TokensAreThoseOfEitherLineEnd) {
	const Temporary_folder folder;
	for (const char* text : {"1\n2\n", "1\r\n2\r\n"}) {
		Input stream;
		ASSERT_TRUE(stream.try_open(folder.make_file("a", text).c_str()));
		int first = 0, second = 0;
		stream >> first >> second;
		EXPECT_EQ(first, 1);
		EXPECT_EQ(second, 2);
		EXPECT_FALSE(stream.buffer.has_more_tokens());
	}
}

TEST(xylIO_Input_text_file_stream, LinesEndAtTheLineFeedWhichStays) {
	const Temporary_folder folder;
	Input stream;
	ASSERT_TRUE(stream.try_open(folder.make_file("a", "first line\nsecond").c_str()));
	EXPECT_TRUE(stream.get_line() == "first line");
	EXPECT_TRUE(stream.get_line() == "") << "kept: it stands on the line feed";
	stream.buffer.advance_cursor_by(1);
	EXPECT_TRUE(stream.get_line() == "second");
	EXPECT_TRUE(stream.eof());
}

TEST(xylIO_Input_text_file_stream, MissingFileIsAWarningUnlessOnlyTried) {
	const Temporary_folder folder;
	const std::string path = folder / "missing";
	Input stream;
	EXPECT_FALSE(stream.try_open(path.c_str()));
	EXPECT_TRUE(stream.fail());
	EXPECT_NE(stream.file_object, nullptr);
	EXPECT_EQ(stream.open(path.c_str()), -1);
	EXPECT_EQ(Recording_host::get().take(),
	          (std::vector<Host_call>{{"warning", "Unable to open " + path, {0}}}));
	stream.close();
	EXPECT_EQ(stream.file_object, nullptr);
}

TEST(xylIO_Input_text_file_stream, EmptyFileLeavesTheBuffer) {
	const Temporary_folder folder;
	Input stream;
	stream << "before";
	EXPECT_TRUE(stream.try_open(folder.make_file("empty", "").c_str()));
	EXPECT_EQ(data_of(stream), "before");
}

TEST(xylIO_Input_text_file_stream, WhiteSpaceAloneIsTheEnd) {
	const Temporary_folder folder;
	Input stream;
	const std::string path = folder.make_file("blank", " \n\t ");
	ASSERT_TRUE(stream.try_open(path.c_str()));
	stream.check_has_tokens();
	EXPECT_EQ(Recording_host::get().take_texts(),
	          std::vector<std::string>{"Unexpected End of File while reading file: " + path});
}

TEST(xylIO_Output_text_file_stream, WritesOnCloseAndTellsWhetherItIsOpen) {
	const Temporary_folder folder;
	const std::string path = folder / "out";
	Output stream;
	EXPECT_FALSE(stream.is_open());
	EXPECT_EQ(stream.open(path.c_str(), false), 0);
	EXPECT_TRUE(stream.is_open());
	EXPECT_FALSE(stream.failed);
	stream << 1 << " " << 2.5f << "\n";
	EXPECT_EQ(content_of(path), "");
	EXPECT_EQ(stream.close(), 1);
	EXPECT_FALSE(stream.is_open());
	EXPECT_EQ(without_carriage_returns(content_of(path)), "1 2.500000 \n");
	Input again;
	ASSERT_TRUE(again.try_open(path.c_str()));
	EXPECT_EQ(data_of(again), "1 2.500000 \n") << "the same on every system";
}

TEST(xylIO_Output_text_file_stream, AppendKeepsWhatIsThere) {
	const Temporary_folder folder;
	const std::string path = folder.make_file("out", "old ");
	Output stream;
	ASSERT_EQ(stream.open(path.c_str(), true), 0);
	stream << "new ";
	EXPECT_EQ(stream.flush(), 0);
	stream << "newer";
	EXPECT_EQ(stream.close(), 1);
	EXPECT_EQ(content_of(path), "old new newer");
	Output other;
	ASSERT_EQ(other.open(path.c_str(), false), 0);
	EXPECT_EQ(other.close(), 1);
	EXPECT_EQ(content_of(path), "");
}

TEST(xylIO_Output_text_file_stream, AutoFlushWritesEachValue) {
	const Temporary_folder folder;
	const std::string path = folder / "out";
	Output stream;
	ASSERT_EQ(stream.open(path.c_str(), false), 0);
	stream.set_auto_flush(true);
	stream << 12;
	EXPECT_EQ(content_of(path), "12");
	stream << xylInt64{34};
	EXPECT_EQ(content_of(path), "1234");
}

TEST(xylIO_Output_text_file_stream, FlushWritesWhatCameSince) {
	flush_writes_what_came_since<Output>();
}

TEST(xylIO_Output_text_file_stream, DestructorCloses) { destructor_closes<Output>(); }

TEST(xylIO_Output_text_file_stream, AnswersWhenItCannotOpen) {
	answers_when_it_cannot_open<Output>();
}

TEST(xylIO_Output_text_file_stream, KeepsTheFileWhenItTakesNoData) {
	keeps_the_file_when_it_takes_no_data<Output>();
}

TEST(xylInput_text_file_stream, HiddenOperatorsDoNothing) {
	Input stream;
	expect_hidden_outputs<const xylString_base&, const xylStream_manip&, int, unsigned int, float,
	                      xylInt64, xylUInt64, bool>(stream);
	stream << static_cast<short>(12);
	EXPECT_EQ(data_of(stream), "12") << "the others are those of the base";
}

TEST(xylOutput_text_file_stream, HiddenOperatorsDoNothing) {
	Output stream;
	expect_hidden_input<char>(stream, 'c');
	expect_hidden_input<short>(stream, 7);
	expect_hidden_input<unsigned short>(stream, 7);
	expect_hidden_input<int>(stream, 7);
	expect_hidden_input<unsigned int>(stream, 7);
	expect_hidden_input<float>(stream, 7);
	expect_hidden_input<bool>(stream, true);
	expect_hidden_input<xylInt64>(stream, 7);
	expect_hidden_input<xylUInt64>(stream, 7);
	expect_hidden_input<xylVarString>(stream, xylVarString("before"));
	stream.buffer = "12 ";
	unsigned char value = 0;
	stream >> value;
	EXPECT_EQ(value, 12) << "the others are those of the base";
}
