// Golden files: every form of the binary and the text streams, read and written alike by both
// systems. Text files differ in their line ends alone, which the run-time translates.

#include <morvantis/io/xylinput_binary_file_stream.h>
#include <morvantis/io/xylinput_text_file_stream.h>
#include <morvantis/io/xyloutput_binary_file_stream.h>
#include <morvantis/io/xyloutput_text_file_stream.h>
#include <morvantis/math/xylint_vec3.h>
#include <morvantis/math/xylquaternion.h>

#include "file_stream_trials.h"
#include "test_data.h"

#include <algorithm>
#include <climits>

namespace {

const std::string binary_path = test_data("golden/binary_stream.bin");
const std::string text_path = test_data("golden/text_stream.txt");

void write_values(xylIO_binary_stream& stream) {
	stream << 'c';
	stream << static_cast<unsigned char>(200) << true << static_cast<short>(-300)
		   << static_cast<unsigned short>(50000) << -70000 << 4000000000u << 0.1f
		   << xylInt64{LLONG_MIN} << xylUInt64{ULLONG_MAX} << xylQuaternion(1, 2, 3, 4) << "text"
		   << xylVarString("a\0b", 3) << xylIO_binary_stream("xyz", 3);
}

void write_values(xylIO_text_stream& stream) {
	stream << 'c';
	stream << " " << static_cast<unsigned char>(200) << " " << true << static_cast<short>(-300)
		   << " " << static_cast<unsigned short>(50000) << "\n"
		   << -70000 << " " << 4000000000u << " " << 0.1f;
	stream << 0.1;
	stream << xylInt64{LLONG_MIN} << " " << xylUInt64{ULLONG_MAX} << "\n"
		   << xylQuaternion(1, 2, 3, 4) << "\"two words\"\n";
	stream << xylInt_vec3(1, -2, 3);
	stream << xylIO_binary_stream("xyz", 3) << "\n";
}

// What both forms hold, read by the forms' own operators.
struct Values {
	char c = 0;
	unsigned char byte = 0;
	bool flag = false;
	short small = 0;
	unsigned short unsigned_small = 0;
	int number = 0;
	unsigned int unsigned_number = 0;
	float real = 0;
	xylInt64 wide = 0;
	xylUInt64 unsigned_wide = 0;
	xylQuaternion q{};
	xylVarString text;
};

template <typename Stream> void read_up_to_the_float(Stream& stream, Values& v) {
	stream >> v.c >> v.byte >> v.flag >> v.small >> v.unsigned_small >> v.number >>
		v.unsigned_number >> v.real;
}
template <typename Stream> void read_behind_the_float(Stream& stream, Values& v) {
	stream >> v.wide >> v.unsigned_wide >> v.q >> v.text;
}

void expect_written_values(const Values& v, const char* text) {
	EXPECT_TRUE(v.c == 'c' && v.byte == 200 && v.flag && v.small == -300);
	EXPECT_TRUE(v.unsigned_small == 50000 && v.number == -70000 && v.real == 0.1f);
	EXPECT_EQ(v.unsigned_number, 4000000000u) << "in a text by way of -294967296";
	EXPECT_TRUE(v.wide == LLONG_MIN && v.unsigned_wide == ULLONG_MAX);
	EXPECT_TRUE(v.q.w == 1 && v.q.x == 2 && v.q.y == 3 && v.q.z == 4);
	EXPECT_TRUE(v.text == text);
}

} // namespace

TEST(Stream_golden, BinaryFileIsWrittenByteForByte) {
	const Temporary_folder folder;
	const std::string path = folder / "out";
	xylOutput_binary_file_stream stream;
	ASSERT_EQ(stream.open(path.c_str()), 0);
	write_values(stream);
	ASSERT_EQ(stream.close(), 1);
	EXPECT_EQ(content_of(path), content_of(binary_path));
}

TEST(Stream_golden, BinaryFileIsReadBack) {
	xylInput_binary_file_stream stream;
	ASSERT_TRUE(stream.try_open(binary_path.c_str()));
	xylIO_binary_stream expected;
	write_values(expected);
	EXPECT_EQ(data_of(stream), data_of(expected));
	Values values;
	read_up_to_the_float(stream, values);
	read_behind_the_float(stream, values);
	expect_written_values(values, "text");
	xylVarString bytes;
	xylIO_binary_stream inner;
	stream >> bytes >> inner;
	EXPECT_EQ(bytes.length(), 3);
	EXPECT_EQ(data_of(inner), "xyz");
	EXPECT_TRUE(stream.eof());
}

TEST(Stream_golden, TextFileIsWrittenByteForByteButForLineEnds) {
	const Temporary_folder folder;
	const std::string path = folder / "out";
	xylOutput_text_file_stream stream;
	ASSERT_EQ(stream.open(path.c_str(), false), 0);
	write_values(stream);
	ASSERT_EQ(stream.close(), 1);
	std::string written = content_of(path);
	std::erase(written, '\r');
	EXPECT_EQ(written, content_of(text_path));
}

TEST(Stream_golden, TextFileIsReadBack) {
	xylInput_text_file_stream stream;
	ASSERT_TRUE(stream.try_open(text_path.c_str()));
	xylIO_text_stream expected;
	write_values(expected);
	EXPECT_EQ(data_of(stream), data_of(expected));
	Values values;
	float again = 0;
	read_up_to_the_float(stream, values);
	stream >> again;
	read_behind_the_float(stream, values);
	expect_written_values(values, "two words");
	EXPECT_EQ(again, 0.1f);
	xylInt_vec3 v(0, 0, 0);
	static_cast<xylIO_text_stream&>(stream) >> v;
	EXPECT_EQ(v, xylInt_vec3(1, -2, 3));
	xylVarString text;
	stream >> text;
	EXPECT_TRUE(text == "3xyz");
}
