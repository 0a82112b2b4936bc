#include <morvantis/io/xylio_text_stream.h>

#include <morvantis/io/xylio_binary_stream.h>
#include <morvantis/math/xylint_vec3.h>
#include <morvantis/math/xylquaternion.h>
#include <morvantis/strings/xylconststring.h>

#include "recording_host.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

std::string data_of(const xylIO_Stream& stream) {
	return std::string(stream.buffer.char_p(), static_cast<size_t>(stream.buffer.length()));
}

template <typename Value> std::string written(const Value& value) {
	xylIO_text_stream stream;
	EXPECT_EQ(&(stream << value), &stream);
	EXPECT_EQ(stream.buffer.char_p()[stream.buffer.length()], 0);
	return data_of(stream);
}

struct Text : xylIO_text_stream {
	explicit Text(const char* text) { buffer = text; }
};

template <typename Value> Value read_from(const char* text) {
	Text stream(text);
	Value value{};
	EXPECT_EQ(&(stream >> value), &stream);
	return value;
}

const Host_call end_of_file = {"error", "Unexpected End of File while reading file: ", {0}};

} // namespace

TEST(xylIO_text_stream, WritesEachValueInItsForm) {
	EXPECT_EQ(written(static_cast<const char*>("a b")), "a b");
	EXPECT_EQ(written(static_cast<const char*>("")), "");
	EXPECT_EQ(written(static_cast<const char*>(nullptr)), "");
	EXPECT_EQ(written(xylVarString("a\0b", 3)), std::string("a\0b", 3));
	EXPECT_EQ(written(xylVarString()), "");
	EXPECT_EQ(written(static_cast<short>(-7)), "-7");
	EXPECT_EQ(written(static_cast<unsigned short>(65535)), "65535");
	EXPECT_EQ(written(static_cast<unsigned char>(200)), "200");
	EXPECT_EQ(written('a'), "97");
	EXPECT_EQ(written('\xff'), std::to_string(static_cast<int>('\xff')));
	EXPECT_EQ(written(INT_MIN), "-2147483648");
	EXPECT_EQ(written(2147483647u), "2147483647");
	EXPECT_EQ(written(4294967295u), "-1") << "kept";
	EXPECT_EQ(written(true), "1 ");
	EXPECT_EQ(written(false), "0 ");
	EXPECT_EQ(written(1.5f), "1.500000 ");
	EXPECT_EQ(written(-0.0f), "-0.000000 ");
	EXPECT_EQ(written(FLT_MAX), "340282346638528859811704183484516925440.000000 ");
	EXPECT_EQ(written(0.1), "0.100000 ");
	EXPECT_EQ(written(-INFINITY), "-inf ");
	EXPECT_EQ(written(DBL_MAX).size(), 309u + 8u);
	EXPECT_EQ(written(xylQuaternion(1, 2, 3, 4)), "2.000000 3.000000 4.000000 1.000000 ");
	EXPECT_EQ(written(xylInt_vec3(1, -2, 3)), "1 -2 3 ");
	EXPECT_EQ(written(xylInt64{0}), "0");
	EXPECT_EQ(written(xylInt64{LLONG_MIN}), "-9223372036854775808");
	EXPECT_EQ(written(xylUInt64{0}), "0");
	EXPECT_EQ(written(xylUInt64{ULLONG_MAX}), "18446744073709551615");
	EXPECT_EQ(written(xylStream_manip_none), "");
}

TEST(xylIO_text_stream, StartsAsAnEmptyTextStream) {
	char ignored[] = "text";
	xylIO_text_stream stream(ignored);
	EXPECT_EQ(data_of(stream), "");
	EXPECT_FALSE(stream.is_binary_file());
	EXPECT_TRUE(stream.get_name().is_empty());
	EXPECT_EQ(stream.format_check_pending, 0);
	EXPECT_EQ(reinterpret_cast<const char*>(&stream.stream_mutex) -
	              reinterpret_cast<const char*>(&stream),
	          static_cast<std::ptrdiff_t>(sizeof(xylIO_binary_stream)));
}

TEST(xylIO_text_stream, IntegersAreGluedTogether) {
	xylIO_text_stream stream;
	stream << 1 << 2;
	EXPECT_EQ(data_of(stream), "12");
	stream << " " << 3 << "\n";
	int value = 0;
	stream >> value;
	EXPECT_EQ(value, 12);
	stream >> value;
	EXPECT_EQ(value, 3);
}

TEST(xylIO_text_stream, WideIntegersGoThroughTheStringOperator) {
	struct Counting_stream : xylIO_text_stream {
		using xylIO_text_stream::operator<<;
		xylIO_Stream& operator<<(const xylString_base& text) override {
			texts.emplace_back(text.char_p());
			return *this;
		}
		std::vector<std::string> texts;
	};
	Counting_stream stream;
	stream << xylInt64{-12} << xylUInt64{34};
	EXPECT_EQ(stream.texts, (std::vector<std::string>{"-12", "34"}));
	EXPECT_EQ(data_of(stream), "");
}

TEST(xylIO_text_stream, WholeStreamIsSentWhereverItsCursorIs) {
	xylIO_binary_stream source("ab\0d", 4);
	source.set_cursor(3);
	EXPECT_EQ(written(static_cast<const xylIO_Stream&>(source)), std::string("4ab\0d", 5));
	EXPECT_EQ(source.get_cursor(), 3u);
	xylIO_text_stream itself;
	itself << "ab";
	itself << itself;
	EXPECT_EQ(data_of(itself), "ab2ab");
}

TEST(xylIO_text_stream, AutoFlushFlushesAfterEachValue) {
	struct Counting_stream : xylIO_text_stream {
		int flush() override { return ++flushes, 1; }
		int flushes = 0;
	};
	Counting_stream stream;
	stream << 1 << "a";
	EXPECT_EQ(stream.flushes, 0);
	stream.set_auto_flush(true);
	const auto flushes_of = [&stream](const auto& value) {
		const int before = stream.flushes;
		stream << value;
		return stream.flushes - before;
	};
	EXPECT_EQ(flushes_of(1), 1);
	EXPECT_EQ(flushes_of(1.5f), 1);
	EXPECT_EQ(flushes_of(1.5), 1);
	EXPECT_EQ(flushes_of(true), 1);
	EXPECT_EQ(flushes_of('a'), 1);
	EXPECT_EQ(flushes_of(static_cast<const char*>("a")), 1);
	EXPECT_EQ(flushes_of(xylVarString("a")), 1);
	EXPECT_EQ(flushes_of(xylQuaternion(1, 2, 3, 4)), 1);
	EXPECT_EQ(flushes_of(xylInt_vec3(1, 2, 3)), 1);
	EXPECT_GE(flushes_of(xylInt64{5}), 1);
	EXPECT_GE(flushes_of(xylUInt64{5}), 1);
}

TEST(xylIO_text_stream, ReadsIntegersAsTheCLibraryWithA32BitLong) {
	struct Case {
		const char* text;
		int as_int;
		int as_short;
		bool as_bool;
	};
	const Case cases[] = {
		{" 12 ", 12, 12, true},
		{"-5", -5, -5, true},
		{"+5x", 5, 5, true},
		{"abc", 0, 0, false},
		{"0", 0, 0, false},
		{"4294967295", -1, -1, true}, // strtoul() keeps it, atoi() ends at 2147483647
		{"99999999999", -1, -1, true},
		{"-99999999999", -1, 0, true},
		{"65537", 65537, 1, true},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.text);
		EXPECT_EQ(read_from<int>(c.text), c.as_int);
		EXPECT_EQ(read_from<unsigned int>(c.text), static_cast<unsigned int>(c.as_int));
		EXPECT_EQ(read_from<char>(c.text), static_cast<char>(c.as_int));
		EXPECT_EQ(read_from<short>(c.text), static_cast<short>(c.as_short));
		EXPECT_EQ(read_from<unsigned short>(c.text), static_cast<unsigned short>(c.as_short));
		EXPECT_EQ(read_from<unsigned char>(c.text), static_cast<unsigned char>(c.as_short));
		EXPECT_EQ(read_from<bool>(c.text), c.as_bool);
	}
}

TEST(xylIO_text_stream, ReadsWideIntegersByHand) {
	EXPECT_EQ(read_from<xylInt64>("-12 "), -12);
	EXPECT_EQ(read_from<xylInt64>("9223372036854775807"), LLONG_MAX);
	EXPECT_EQ(read_from<xylInt64>("-9223372036854775808"), LLONG_MIN);
	EXPECT_EQ(read_from<xylUInt64>("18446744073709551615"), ULLONG_MAX);
	// overflow wraps around
	EXPECT_EQ(read_from<xylUInt64>("18446744073709551616"), 0u);
	EXPECT_EQ(read_from<xylUInt64>("18446744073709551617"), 1u);
	EXPECT_EQ(read_from<xylInt64>("9223372036854775808"), LLONG_MIN);
	// kept: every character is a digit
	EXPECT_EQ(read_from<xylInt64>("+12"), ('+' - '0') * 100 + 12);
	EXPECT_EQ(read_from<xylInt64>("1a"), 10 + 'a' - '0');
	EXPECT_EQ(read_from<xylInt64>("--1"), -(('-' - '0') * 10 + 1));
	EXPECT_EQ(static_cast<xylInt64>(read_from<xylUInt64>("-1")), ('-' - '0') * 10 + 1);
	EXPECT_EQ(read_from<xylInt64>("-"), 0);
}

TEST(xylIO_text_stream, ReadsDecimalsThroughAFloat) {
	EXPECT_EQ(read_from<float>("0.1"), 0.1f);
	EXPECT_EQ(read_from<float>("-1e3x"), -1000);
	EXPECT_EQ(read_from<float>("abc"), 0);
	EXPECT_EQ(read_from<double>("0.1"), static_cast<double>(0.1f));
	EXPECT_NE(read_from<double>("0.1"), 0.1);
	EXPECT_EQ(read_from<double>("1e99"), INFINITY);
	EXPECT_EQ(read_from<float>("1.00000005960464477540"), 1.0f)
		<< "rounded twice, as atof() narrowed";
}

TEST(xylIO_text_stream, ReadsCompositesInTheirOrder) {
	const auto q = read_from<xylQuaternion>("2 3 4 1");
	EXPECT_EQ(q.w, 1);
	EXPECT_EQ(q.x, 2);
	EXPECT_EQ(q.y, 3);
	EXPECT_EQ(q.z, 4);
	EXPECT_EQ(read_from<xylInt_vec3>("1 -2 3"), xylInt_vec3(1, -2, 3));
}

TEST(xylIO_text_stream, ReadsStringsByTokens) {
	Text stream("one  \"two words\"\n\"\" tail");
	xylVarString text("before");
	xylConstString<64> fixed("before");
	stream >> text;
	EXPECT_TRUE(text == "one");
	stream >> fixed;
	EXPECT_TRUE(fixed == "two words");
	stream >> text;
	EXPECT_TRUE(text.is_empty());
	stream >> xylStream_manip_none >> fixed;
	EXPECT_TRUE(fixed == "tail");
	Text long_text((std::string(63, 'a') + " " + std::string(64, 'b') + " c").c_str());
	long_text >> fixed;
	EXPECT_EQ(fixed.length(), 63);
	long_text >> fixed;
	EXPECT_TRUE(fixed.is_empty());
	EXPECT_EQ(Recording_host::get().take().size(), 1u) << "the fixed string's warning";
	long_text >> fixed;
	EXPECT_TRUE(fixed == "c");
}

TEST(xylIO_text_stream, PendingCheckComparesTheNextToken) {
	struct Case {
		const char* text;
		const char* expected;
		bool is_broken;
	};
	const Case cases[] = {
		{"version 2", "version", false}, {"Version 2", "version", true},
		{"versions 2", "version", true}, {"\"\" 2", "", false},
		{"\"a b\" 2", "a b", false},     {"a 2", "", true},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.text);
		std::vector<Host_call> calls;
		if (c.is_broken) calls = {{"error", "format broken", {0}}};
		const auto check = [&](auto expected) {
			Text stream(c.text);
			stream.set_format_check_pending(true);
			EXPECT_EQ(stream.format_check_pending, 1);
			stream >> expected;
			EXPECT_TRUE(expected == c.expected);
			EXPECT_EQ(stream.format_check_pending, 0);
			EXPECT_EQ(Recording_host::get().take(), calls);
			stream >> expected;
			EXPECT_TRUE(expected == "2") << "the check is over";
		};
		check(xylVarString(c.expected));
		check(xylConstString<64>(c.expected));
	}
	Text stream("3 word");
	stream.set_format_check_pending(true);
	stream.set_format_check_pending(false);
	EXPECT_EQ(stream.format_check_pending, 0);
	stream.format_check_pending = 2; // only 1 is a check
	xylVarString text;
	stream >> text;
	EXPECT_TRUE(text == "3");
}

TEST(xylIO_text_stream, ReadsAStreamByteByByte) {
	Text stream("3 \nab rest");
	xylIO_binary_stream target;
	target << "before";
	target.set_cursor(2);
	stream >> target;
	EXPECT_EQ(data_of(target), " \na") << "the count's separator belongs to the bytes";
	EXPECT_EQ(target.get_cursor(), 0u);
	Text short_text("9 ab");
	short_text >> target;
	EXPECT_EQ(data_of(target), " ab") << "as many as there are";
	Text negative("-1 ab");
	negative >> target;
	EXPECT_EQ(data_of(target), "");
	EXPECT_FALSE(negative.eof());
}

TEST(xylIO_text_stream, EndOfDataIsReportedAndReadAsEmpty) {
	for (const char* blanks : {"", " \t\r\n"}) {
		Text stream(blanks);
		stream.check_has_tokens();
		EXPECT_EQ(Recording_host::get().take(), std::vector{end_of_file});
		EXPECT_EQ(stream.buffer.get_cursor_position(), static_cast<int>(std::strlen(blanks)));
		int i = 7;
		stream >> i;
		EXPECT_EQ(i, 0);
		float f = 7;
		stream >> f;
		EXPECT_EQ(f, 0);
		xylInt64 wide = 7;
		stream >> wide;
		EXPECT_EQ(wide, 0);
		xylVarString text("before");
		stream >> text;
		EXPECT_TRUE(text.is_empty());
		EXPECT_EQ(Recording_host::get().take().size(), 4u);
	}
	Text named("");
	named.name = "some/file";
	named.check_has_tokens();
	EXPECT_EQ(Recording_host::get().take_texts(),
	          std::vector<std::string>{"Unexpected End of File while reading file: some/file"});
	Text full("  x");
	full.check_has_tokens();
	EXPECT_EQ(full.buffer.get_cursor_position(), 2);
}

TEST(xylIO_text_stream, LongTokenIsCutAndReadOn) {
	const std::string zeros(8191, '0');
	Text stream((zeros + "12 ").c_str()); // the 8192nd byte gives way to the terminator
	int value = 7;
	stream >> value;
	EXPECT_EQ(value, 0);
	EXPECT_EQ(stream.buffer.get_cursor_position(), 8192);
	stream >> value;
	EXPECT_EQ(value, 2);
	Text wide((zeros + "12 ").c_str());
	xylUInt64 wide_value = 7;
	wide >> wide_value;
	EXPECT_EQ(wide_value, 0u);
}

TEST(xylIO_text_stream, WhatIsWrittenWithSeparatorsComesBack) {
	std::mt19937_64 random(54);
	for (int i = 0; i < 2000; ++i) {
		const auto integer = static_cast<int>(random() >> random() % 33);
		const auto wide = static_cast<xylInt64>(random() >> random() % 64);
		const float number =
			static_cast<float>(static_cast<int>(random() % 2000000) - 1000000) / 64;
		xylIO_text_stream stream;
		stream << integer << " " << wide << "\t" << number << true << number;
		int read_integer = 0;
		xylInt64 read_wide = 0;
		float read_number = 0;
		bool read_bool = false;
		stream >> read_integer >> read_wide >> read_number >> read_bool;
		double again = 0;
		stream >> again;
		ASSERT_EQ(read_integer, integer);
		ASSERT_EQ(read_wide, wide);
		ASSERT_EQ(read_number, number);
		ASSERT_EQ(again, static_cast<double>(number));
		ASSERT_TRUE(read_bool);
	}
}

// Composites stand together, whatever the other threads write.
TEST(xylIO_text_stream, ThreadsMayShareAStream) {
	constexpr int threads = 4, rounds = 200;
	xylIO_text_stream stream;
	std::vector<std::thread> writers;
	for (int i = 0; i < threads; ++i) {
		writers.emplace_back([&stream, i] {
			for (int round = 0; round < rounds; ++round) {
				stream << xylInt_vec3(i, i + 10, i + 20);
				stream << xylStream_manip_none;
			}
		});
	}
	for (std::thread& writer : writers) writer.join();
	int counts[threads] = {};
	std::vector<std::thread> readers;
	std::mutex counting;
	for (int i = 0; i < threads; ++i) {
		readers.emplace_back([&] {
			for (int round = 0; round < rounds; ++round) {
				xylInt_vec3 v(0, 0, 0);
				stream >> v;
				const std::lock_guard<std::mutex> lock(counting);
				ASSERT_TRUE(v.x >= 0 && v.x < threads);
				EXPECT_EQ(v, xylInt_vec3(v.x, v.x + 10, v.x + 20));
				++counts[v.x];
			}
		});
	}
	for (std::thread& reader : readers) reader.join();
	for (const int count : counts) EXPECT_EQ(count, rounds);
	EXPECT_FALSE(stream.buffer.has_more_tokens());
}

TEST(xylIO_text_stream, LockIsFreeAfterEachOperator) {
	xylIO_text_stream stream;
	stream << xylQuaternion(1, 2, 3, 4);
	xylQuaternion q{};
	stream >> q;
	std::thread other([&stream] {
		EXPECT_TRUE(stream.stream_mutex.try_lock());
		stream.stream_mutex.unlock();
	});
	other.join();
}
