// Text streams against a plain model of their readers, over random texts and the edges between
// reading a token where it stands and reading a copy of it.

#include "recording_host.h"
#include "text_reader_model.h"

#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <string>

namespace {

void expect_like_the_model(xylIO_text_stream& stream, unsigned int choice, int count) {
	Text_reader_model model(stream.buffer);
	SCOPED_TRACE(std::string(stream.buffer.char_p(), static_cast<size_t>(stream.buffer.length())));
	for (int i = 0; i < count; ++i) {
		const unsigned int reader =
			(choice + static_cast<unsigned int>(i)) % std::size(reader_pairs);
		ASSERT_TRUE(reader_pairs[reader](stream, model)) << "reader " << reader << ", read " << i;
	}
	ASSERT_EQ(Recording_host::get().take().size(), static_cast<size_t>(model.reports()));
}

} // namespace

TEST(xylIO_text_stream, ReadsWhatAModelReads) {
	using namespace std::string_literals;
	const std::string pieces[] = {
		" ",    " ",   "  ",    "\n",       "\t", "\0"s, "\x1f",     "\"",   "-",    "+",
		"0",    "1",   "7",     "42",       "9",  ".",   "12345678", "999",  "e",    "E5",
		"0x",   "0x1", "a",     "\x80\xff", ",",  ".5",  "0.25",     "-1",   "-12 ", "inf",
		"nan(", "nan", "1e-40", "3.75 ",    "_",  ")",   "00000000", "1.5 ", "-2 ",  "4294967295 ",
	};
	std::mt19937 random(541);
	for (int i = 0; i < 100000 && !testing::Test::HasFatalFailure(); ++i) {
		std::string text;
		for (auto k = random() % 12; k != 0; --k) text += pieces[random() % std::size(pieces)];
		xylIO_text_stream stream;
		stream.buffer.push_back(text.data(), static_cast<unsigned int>(text.size()));
		expect_like_the_model(stream, static_cast<unsigned int>(random()), 8);
	}
}

// Behind the end of the data stands what would go on with the number.
TEST(xylIO_text_stream, ReadsNothingBehindAnEndWithoutATerminator) {
	for (const char* text : {"12", "1.5", "-", "4 12", "\"12", "1e", "12 "}) {
		xylIO_text_stream stream;
		stream.buffer.push_back("99999999999999999999", 20);
		stream.buffer.clear();
		stream.buffer.append_binary(text, static_cast<int>(std::strlen(text)));
		for (unsigned int reader = 0; reader < std::size(reader_pairs); ++reader) {
			stream.buffer.reset_cursor(0);
			expect_like_the_model(stream, reader, 3);
		}
	}
}

TEST(xylIO_text_stream, ReadsTokensOfAllLengthsAroundTheLimit) {
	for (const int length :
	     {1, 7, 8, 9, 15, 16, 17, 19, 20, 21, 40, 8190, 8191, 8192, 8193, 9000}) {
		for (const char* front : {"", "-", "0.", "\"", "\" "}) {
			for (const char* back : {"", " ", "x ", "\" 3"}) {
				const std::string text =
					front + std::string(static_cast<size_t>(length - 1), '0') + "7" + back;
				xylIO_text_stream stream;
				stream.buffer.push_back(text.data(), static_cast<unsigned int>(text.size()));
				for (unsigned int reader = 0; reader < std::size(reader_pairs); ++reader) {
					stream.buffer.reset_cursor(0);
					expect_like_the_model(stream, reader, 3);
				}
			}
		}
	}
}

TEST(xylIO_text_stream, ReadsFromCursorsOutside) {
	xylIO_text_stream stream;
	stream.buffer = "12 34";
	for (const int cursor : {5, 6, 100, -1}) {
		SCOPED_TRACE(cursor);
		stream.buffer.reset_cursor(cursor);
		int value = 7;
		stream >> value;
		EXPECT_EQ(value, 0);
		EXPECT_EQ(stream.buffer.get_cursor_position(), cursor);
		EXPECT_EQ(Recording_host::get().take().size(), 1u);
	}
}
