#include <morvantis/io/zubstring_reader.h>

#include "reader_trials.h"

static_assert(sizeof(zubString_reader) == sizeof(zubReader_interface) + sizeof(xylVarString));

using Reader = zubString_reader;

TEST(zubString_reader, CopiesAndMovesTakeTheCursor) { copies_and_moves_take_the_cursor<Reader>(); }

TEST(zubString_reader, UnreadDataIsAByteAbove32) { unread_data_is_a_byte_above_32<Reader>(); }

TEST(zubString_reader, ReadsNumbersInTurn) { numbers_are_read_in_turn<Reader>(); }

TEST(zubString_reader, ScansFloatsAndKeepsTheTargetWithoutOne) { floats_are_scanned<Reader>(); }

TEST(zubString_reader, TrustsItsNumbers) {
	int i = 0;
	EXPECT_TRUE(reader_of<Reader>("12x").read(i));
	EXPECT_TRUE(reader_of<Reader>("").read(i));
	unsigned int u = 0;
	EXPECT_TRUE(reader_of<Reader>("x").read(u));
	bool b = false;
	EXPECT_TRUE(reader_of<Reader>("x").read(b));
	xylInt64 i64 = 0;
	EXPECT_TRUE(reader_of<Reader>("x").read(i64));
	xylUInt64 u64 = 0;
	EXPECT_TRUE(reader_of<Reader>("x").read(u64));
	xylInt_vec3 v(0, 0, 0);
	EXPECT_TRUE(reader_of<Reader>("1 x 2 ").read(v));
}

TEST(zubString_reader, ReadsStringsByTheirLengthAndWarnsOfAnother) {
	for (const String_case& c : string_cases) {
		SCOPED_TRACE(c.source);
		one_string_is_read_like_the_table<Reader>(c);
		std::vector<Host_call> expected;
		if (!c.is_read) {
			expected = {{"warning", "invalid string format, length does not match", {0}}};
		}
		EXPECT_EQ(Recording_host::get().take(), expected);
	}
}

TEST(zubString_reader, TakesTheWordBehindAFullString) {
	word_behind_a_full_string_is_taken<Reader>();
	EXPECT_EQ(Recording_host::get().take().size(), 1u);
}

TEST(zubString_reader, ReadsStringsInTurn) {
	Reader reader = reader_of<Reader>("5 hello 3 a b 1 x ");
	xylVarString value;
	EXPECT_TRUE(reader.read(value));
	EXPECT_EQ(text_of(value), "hello");
	EXPECT_TRUE(reader.read(value));
	EXPECT_EQ(text_of(value), "a b");
	EXPECT_TRUE(reader.read(value));
	EXPECT_EQ(text_of(value), "x");
}

TEST(zubString_reader, WarnsOfWhatIsNotImplemented) {
	not_implemented_for<Reader, char>('c',
	                                  "zubString_reader::read( char& c ) not implemented yet.");
	not_implemented_for<Reader, double>(1.5,
	                                    "zubString_reader::read( double& d ) not implemented yet.");
	not_implemented_for<Reader, short>(
		3, "zubString_reader::read( xylInt16& i ) not implemented yet.");
	not_implemented_for<Reader, unsigned short>(4, "not implemented yet.");
}
