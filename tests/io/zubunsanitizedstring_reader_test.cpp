#include <morvantis/io/zubunsanitizedstring_reader.h>

#include "reader_trials.h"

#include <type_traits>

static_assert(sizeof(zubUnsanitizedString_reader) ==
              sizeof(zubReader_interface) + sizeof(xylVarString));
static_assert(!std::is_constructible_v<zubUnsanitizedString_reader, const xylVarString&>);

using Reader = zubUnsanitizedString_reader;

namespace {

template <typename Value> void refuses(const char* text, Value before) {
	SCOPED_TRACE(text);
	Reader reader = reader_of<Reader>(text);
	Value value = before;
	EXPECT_FALSE(reader.read(value));
	EXPECT_EQ(value, before);
}

} // namespace

TEST(zubUnsanitizedString_reader, CopiesAndMovesTakeTheCursor) {
	copies_and_moves_take_the_cursor<Reader>();
}

TEST(zubUnsanitizedString_reader, UnreadDataIsAByteAbove32) {
	unread_data_is_a_byte_above_32<Reader>();
}

TEST(zubUnsanitizedString_reader, ReadsNumbersInTurn) { numbers_are_read_in_turn<Reader>(); }

TEST(zubUnsanitizedString_reader, ScansFloatsAndKeepsTheTargetWithoutOne) {
	floats_are_scanned<Reader>();
}

TEST(zubUnsanitizedString_reader, RefusesBadNumbersAndKeepsTheTarget) {
	for (const char* text : {"12x ", "12x 5", "x ", "", "  ", "1.5 "}) {
		refuses<int>(text, 77);
		refuses<unsigned int>(text, 78);
		refuses<xylInt64>(text, 79);
		refuses<xylUInt64>(text, 80);
		refuses<bool>(text, true);
		refuses<bool>(text, false);
	}
}

// The oddity of 32-bit tokens: the last byte of the whole text is stepped over unseen.
TEST(zubUnsanitizedString_reader, LastByteOfTheTextEndsA32BitNumberWhateverItIs) {
	int value = 77;
	EXPECT_TRUE(reader_of<Reader>("12x").read(value));
	EXPECT_EQ(value, 12);
	EXPECT_TRUE(reader_of<Reader>("12").read(value));
	EXPECT_EQ(value, 1);
	refuses<xylInt64>("12x", 79);
	xylInt64 wide = 0;
	EXPECT_TRUE(reader_of<Reader>("12").read(wide));
	EXPECT_EQ(wide, 12);
}

TEST(zubUnsanitizedString_reader, VectorWithABadNumberConsumesThreeTokens) {
	Reader reader = reader_of<Reader>("1 x 3 9 ");
	xylInt_vec3 v(5, 5, 5);
	EXPECT_FALSE(reader.read(v));
	EXPECT_EQ(v, xylInt_vec3(1, 0, 3));
	int next = 0;
	EXPECT_TRUE(reader.read(next));
	EXPECT_EQ(next, 9);
}

TEST(zubUnsanitizedString_reader, ReadsStringsByTheirLengthWithoutMessage) {
	for (const String_case& c : string_cases) {
		SCOPED_TRACE(c.source);
		one_string_is_read_like_the_table<Reader>(c);
	}
	// no length at all
	for (const char* source : {"", "x hello", "12x hello"}) {
		SCOPED_TRACE(source);
		one_string_is_read_like_the_table<Reader>({source, "", false});
	}
}

TEST(zubUnsanitizedString_reader, TakesTheWordBehindAFullString) {
	word_behind_a_full_string_is_taken<Reader>();
}

TEST(zubUnsanitizedString_reader, WarnsOfWhatIsNotImplemented) {
	not_implemented_for<Reader, char>(
		'c', "zubUnsanitizedString_reader::read( char& c ) not implemented yet.");
	not_implemented_for<Reader, double>(
		1.5, "zubUnsanitizedString_reader::read( double& d ) not implemented yet.");
	not_implemented_for<Reader, short>(
		3, "zubUnsanitizedString_reader::read( xylInt16& i ) not implemented yet.");
	not_implemented_for<Reader, unsigned short>(
		4, "zubUnsanitizedString_reader::read( xylUInt16& i ) not implemented yet.");
}
