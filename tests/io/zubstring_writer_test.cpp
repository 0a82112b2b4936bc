#include <morvantis/io/zubstring_writer.h>

#include <morvantis/io/zubstring_reader.h>

#include "reader_trials.h"

#include <cfloat>
#include <random>

static_assert(sizeof(zubString_writer) == sizeof(zubWriter_interface) + sizeof(xylVarString));

namespace {

template <typename Value> std::string written(Value value) {
	zubString_writer writer;
	writer.write(value);
	return text_of(writer.get_data());
}

} // namespace

TEST(zubString_writer, WritesEachValueInItsForm) {
	EXPECT_EQ(written(-12), "-12");
	EXPECT_EQ(written(INT_MIN), "-2147483648");
	EXPECT_EQ(written(true), "1");
	EXPECT_EQ(written(false), "0");
	EXPECT_EQ(written(UINT_MAX), "4294967295");
	EXPECT_EQ(written(xylInt64{LLONG_MIN}), "-9223372036854775808");
	EXPECT_EQ(written(xylUInt64{ULLONG_MAX}), "18446744073709551615");
	EXPECT_EQ(written(1.5f), "1.500000");
	EXPECT_EQ(written(0.1f), "0.100000");
	EXPECT_EQ(written(-2.25), "-2.250000");
	EXPECT_EQ(written(xylInt_vec3(1, -2, 3)), "1-23");
	EXPECT_EQ(written(xylVarString("ab")), "2ab");
	EXPECT_EQ(written(xylVarString()), "0");
}

TEST(zubString_writer, CutsLongDecimalsAt31Characters) {
	EXPECT_EQ(written(FLT_MAX), "3402823466385288598117041834845");
	EXPECT_EQ(written(-1e300), "-100000000000000005250476025520");
}

TEST(zubString_writer, PutsNothingBetweenTwoValues) {
	zubString_writer writer;
	writer.write(1);
	writer.write(2);
	EXPECT_EQ(text_of(writer.get_data()), "12");
	writer.write(xylVarString("a b"));
	EXPECT_EQ(text_of(writer.get_data()), "123a b");
}

TEST(zubString_writer, LengthGoesThroughTheVirtualNumber) {
	struct Bracketing_writer : zubString_writer {
		using zubString_writer::write;
		void write(int value) override {
			output.append('[');
			zubString_writer::write(value);
			output.append(']');
		}
	};
	Bracketing_writer writer;
	writer.write(xylVarString("ab"));
	writer.write(xylInt_vec3(1, 2, 3));
	EXPECT_EQ(text_of(writer.get_data()), "[2]ab[1][2][3]");
}

TEST(zubString_writer, CopiesAndMovesTakeTheText) {
	zubString_writer writer;
	writer.write(7);
	zubString_writer copy(writer);
	copy.write(8);
	EXPECT_EQ(text_of(writer.get_data()), "7");
	EXPECT_EQ(text_of(copy.get_data()), "78");
	zubString_writer moved(std::move(copy));
	EXPECT_TRUE(copy.get_data().is_empty());
	EXPECT_EQ(text_of(moved.get_data()), "78");
}

TEST(zubString_writer, ReaderTakesBackWhatSeparatorsKeepApart) {
	std::mt19937_64 random(55);
	for (int round = 0; round < 200; ++round) {
		const int i = static_cast<int>(random());
		// Shorter than the longest: a number text has room for 19 characters.
		const auto i64 = static_cast<xylInt64>(random()) / 16;
		const bool b = random() % 2 != 0;
		const float f = static_cast<float>(static_cast<int>(random() % 65536) - 32768) / 64;
		const xylVarString text(random() % 2 ? "two words" : "word");
		zubString_writer writer;
		const auto write = [&writer](const auto& value) {
			writer.write(value);
			writer.output.append(' ');
		};
		write(i);
		write(i64);
		write(b);
		write(f);
		writer.write(text.length());
		writer.output.append(' ');
		writer.output.append(text);

		zubString_reader reader(writer.get_data());
		int read_i = 0;
		xylInt64 read_i64 = 0;
		bool read_b = false;
		float read_f = 0;
		xylVarString read_text;
		EXPECT_TRUE(reader.read(read_i) && reader.read(read_i64) && reader.read(read_b) &&
		            reader.read(read_f) && reader.read(read_text));
		EXPECT_EQ(read_i, i);
		EXPECT_EQ(read_i64, i64);
		EXPECT_EQ(read_b, b);
		EXPECT_EQ(read_f, f);
		EXPECT_TRUE(read_text == text);
		EXPECT_FALSE(reader.has_unread_data());
	}
}
