// The bytes of every encoding, which both systems have to write and read exactly.

#include "bit_stream_model.h"
#include "test_data.h"

#include <morvantis/net/read_bit_buffer.h>
#include <morvantis/net/write_bit_buffer.h>

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <sstream>
#include <string>

namespace {

constexpr Integer_compression_info int_info{-100, 100, 8};
constexpr Integer_compression_info full_int_info{std::numeric_limits<int>::min(),
                                                 std::numeric_limits<int>::max(), 32};
constexpr Integer_compression_info count_info{0, 100, 7};
constexpr Unsigned_integer_compression_info unsigned_info{10, 1000, 10};
constexpr Integer64_compression_info wide_info{-1000000000000, 1000000000000, 41};
constexpr Integer64_compression_info full_wide_info{std::numeric_limits<long long>::min(),
                                                    std::numeric_limits<long long>::max(), 64};
constexpr Unsigned_integer64_compression_info unsigned_wide_info{
	0, std::numeric_limits<unsigned long long>::max(), 64};
constexpr Float_compression_info float_info{-1.0f, 1.0f, 0.0009765625f, 12};
constexpr Float_compression_info raw_info{0.0f, 0.0f, 0.0f, 32};
constexpr char text[] = "Morvantis";

const unsigned char* text_bytes() { return reinterpret_cast<const unsigned char*>(text); }

bool read_text(Read_bit_buffer& reader, int expected_size) {
	unsigned char seen[sizeof(text)];
	int size = -1;
	return reader.serial_op_byte_array(seen, sizeof(text), size) && size == expected_size &&
	       std::memcmp(seen, text, static_cast<size_t>(size)) == 0;
}

// Whether the operation read `expected`, to the bit.
template <typename Value, typename Read> bool reads(Value expected, Read read) {
	Value seen{};
	return read(seen) && std::memcmp(&seen, &expected, sizeof(seen)) == 0;
}

template <typename Value, typename Info>
bool reads_integer(Read_bit_buffer& reader, Value expected, const Info& info) {
	return reads(expected, [&](Value& seen) { return reader.serial_op(seen, info); });
}

bool reads_float(Read_bit_buffer& reader, float expected, const Float_compression_info& info) {
	return reads(expected, [&](float& seen) { return reader.serial_op_float(seen, info); });
}

bool reads_coarse_time(Read_bit_buffer& reader, long long expected) {
	return reads(expected, [&](long long& seen) { return reader.serial_op_time_coarse(seen); });
}

bool reads_time(Read_bit_buffer& reader, long long expected) {
	return reads(expected, [&](long long& seen) { return reader.serial_op_time(seen); });
}

bool reads_id(Read_bit_buffer& reader, udp_packet_id expected) {
	return reads(expected, [&](udp_packet_id& seen) { return reader.read_packet_id(70000, seen); });
}

void write_mixed(Write_bit_buffer& w) {
	w.write_packet_id(udp_packet_id(70010, 5));
	w.serial_op_time_coarse(123456);
	w.serial_op(2, count_info);
	for (int i = 0; i < 2; ++i) {
		w.serial_op(-37 + i, int_info);
		w.serial_op(999u + static_cast<unsigned int>(i), unsigned_info);
		w.serial_op(-1ll + i, wide_info);
		w.serial_op_float(0.3f + static_cast<float>(i) * 0.0009765625f, float_info);
		w.serial_op_float(1.5f + static_cast<float>(i), raw_info);
		w.serial_op_byte_array(text_bytes(), 4 + i);
	}
	w.serial_op_time(123456789012345);
	w.serial_op(0xFEDCBA9876543210u, unsigned_wide_info);
	w.serial_op(-1, full_int_info);
}

bool read_mixed(Read_bit_buffer& r) {
	bool is_good =
		reads_id(r, {70010, 5}) && reads_coarse_time(r, 123400) && reads_integer(r, 2, count_info);
	for (int i = 0; i < 2; ++i) {
		const float steps = static_cast<float>(1331 + i);
		is_good = is_good && reads_integer(r, -37 + i, int_info) &&
		          reads_integer(r, 999u + static_cast<unsigned int>(i), unsigned_info) &&
		          reads_integer(r, -1ll + i, wide_info) &&
		          reads_float(r, steps * 0.0009765625f - 1.0f, float_info) &&
		          reads_float(r, 1.5f + static_cast<float>(i), raw_info) && read_text(r, 4 + i);
	}
	return is_good && reads_time(r, 123456789012345) &&
	       reads_integer(r, 0xFEDCBA9876543210ull, unsigned_wide_info) &&
	       reads_integer(r, -1, full_int_info);
}

struct Packet {
	const char* name;
	void (*write)(Write_bit_buffer&);
	bool (*read)(Read_bit_buffer&);
};

using W = Write_bit_buffer;
using R = Read_bit_buffer;
const Packet packets[] = {
	{"two_fields",
     [](W& w) {
		 w.append_bits_from_uint32(5, 3);
		 w.append_bits_from_uint32(0xAB, 8);
	 },
     [](R& r) {
		 unsigned int a = 0, b = 0;
		 return r.read_bits_to_uint32(a, 3) && r.read_bits_to_uint32(b, 8) && a == 5 && b == 0xAB;
	 }},
	{"int", [](W& w) { w.serial_op(-37, int_info); },
     [](R& r) { return reads_integer(r, -37, int_info); }},
	{"int_full_range", [](W& w) { w.serial_op(-1, full_int_info); },
     [](R& r) { return reads_integer(r, -1, full_int_info); }},
	{"unsigned_int", [](W& w) { w.serial_op(999u, unsigned_info); },
     [](R& r) { return reads_integer(r, 999u, unsigned_info); }},
	{"unsigned_int_below_minimum",
     [](W& w) {
		 w.serial_op(5u, unsigned_info);
		 w.append_bits_from_uint32(0, 22); // clears what spilled
		 w.shrink_size_to(10);
	 },
     [](R& r) {
		 unsigned int seen = 0;
		 return !r.serial_op(seen, unsigned_info) && seen == 1029;
	 }},
	{"int64", [](W& w) { w.serial_op(-1ll, wide_info); },
     [](R& r) { return reads_integer(r, -1ll, wide_info); }},
	{"int64_full_range", [](W& w) { w.serial_op(-1ll, full_wide_info); },
     [](R& r) { return reads_integer(r, std::numeric_limits<long long>::max(), full_wide_info); }},
	{"unsigned_int64", [](W& w) { w.serial_op(0xFEDCBA9876543210u, unsigned_wide_info); },
     [](R& r) { return reads_integer(r, 0xFEDCBA9876543210ull, unsigned_wide_info); }},
	{"float", [](W& w) { w.serial_op_float(0.3f, float_info); },
     [](R& r) { return reads_float(r, 0.2998046875f, float_info); }},
	{"float_maximum", [](W& w) { w.serial_op_float(1.0f, float_info); },
     [](R& r) { return reads_float(r, 1.0f, float_info); }},
	{"float_raw", [](W& w) { w.serial_op_float(1.5f, raw_info); },
     [](R& r) { return reads_float(r, 1.5f, raw_info); }},
	{"float_raw_nan", [](W& w) { w.serial_op_float(std::bit_cast<float>(0x7FC00001), raw_info); },
     [](R& r) { return reads_float(r, std::bit_cast<float>(0x7FC00001), raw_info); }},
	{"byte_array", [](W& w) { w.serial_op_byte_array(text_bytes(), 9); },
     [](R& r) { return read_text(r, 9); }},
	{"byte_array_empty", [](W& w) { w.serial_op_byte_array(nullptr, 5); },
     [](R& r) { return read_text(r, 0); }},
	{"time", [](W& w) { w.serial_op_time(123456789012345); },
     [](R& r) { return reads_time(r, 123456789012345); }},
	{"coarse_time", [](W& w) { w.serial_op_time_coarse(123456); },
     [](R& r) { return reads_coarse_time(r, 123400); }},
	{"coarse_time_largest_short", [](W& w) { w.serial_op_time_coarse(419430399); },
     [](R& r) { return reads_coarse_time(r, 419430300); }},
	{"coarse_time_smallest_exact", [](W& w) { w.serial_op_time_coarse(419430400); },
     [](R& r) { return reads_coarse_time(r, 419430400); }},
	{"tick", [](W& w) { w.write_packet_id(65501u); },
     [](R& r) {
		 unsigned int tick = 0;
		 return r.read_tick_no(65500, tick) && tick == 65501;
	 }},
	{"tick_none", [](W& w) { w.write_packet_id(0u); },
     [](R& r) {
		 unsigned int tick = 42;
		 return r.read_tick_no(65500, tick) && tick == 0;
	 }},
	{"packet_id", [](W& w) { w.write_packet_id(udp_packet_id(70010, 0)); },
     [](R& r) { return reads_id(r, {70010, 0}); }},
	{"packet_id_with_number", [](W& w) { w.write_packet_id(udp_packet_id(70010, 5)); },
     [](R& r) { return reads_id(r, {70010, 5}); }},
	{"packet_id_unreliable",
     [](W& w) {
		 w.write_packet_id(udp_packet_id::PACKET_ID_UNRELIABLE);
		 w.append_bits_from_uint32(0, 32); // clears what spilled
		 w.shrink_size_to(23);
	 },
     [](R& r) { return reads_id(r, {0, 63}); }},
	{"mixed", write_mixed, read_mixed},
};

struct Golden {
	int size_in_bits;
	std::string bytes; // as hexadecimal text
};

std::map<std::string, Golden> load_golden() {
	std::map<std::string, Golden> loaded;
	std::ifstream file(test_data("golden/wire.txt"));
	for (std::string line; std::getline(file, line);) {
		if (!line.empty() && line.back() == '\r') line.pop_back();
		if (line.empty() || line[0] == '#') continue;
		std::istringstream words(line);
		std::string name, bytes;
		int size = 0;
		words >> name >> size >> std::ws;
		std::getline(words, bytes);
		loaded[name] = {size, bytes};
	}
	return loaded;
}

std::vector<unsigned char> bytes_of(const std::string& hex) {
	std::istringstream words(hex);
	std::vector<unsigned char> bytes;
	for (unsigned int byte; words >> std::hex >> byte;) {
		bytes.push_back(static_cast<unsigned char>(byte));
	}
	return bytes;
}

TEST(Wire_golden, EveryPacketIsInTheFile) { EXPECT_EQ(load_golden().size(), std::size(packets)); }

TEST(Wire_golden, WritersProduceTheBytes) {
	const std::map<std::string, Golden> golden = load_golden();
	for (const Packet& packet : packets) {
		SCOPED_TRACE(packet.name);
		ASSERT_TRUE(golden.contains(packet.name));
		Write_bit_buffer writer;
		packet.write(writer);
		EXPECT_EQ(writer.get_size_in_bits(), golden.at(packet.name).size_in_bits);
		EXPECT_EQ(hex_of(writer), golden.at(packet.name).bytes);
	}
}

TEST(Wire_golden, ReadersTakeTheBytes) {
	const std::map<std::string, Golden> golden = load_golden();
	for (const Packet& packet : packets) {
		SCOPED_TRACE(packet.name);
		ASSERT_TRUE(golden.contains(packet.name));
		const std::vector<unsigned char> bytes = bytes_of(golden.at(packet.name).bytes);
		Read_bit_buffer reader;
		reader.setup(bytes.data(), static_cast<int>(bytes.size()));
		EXPECT_TRUE(packet.read(reader));
		EXPECT_EQ(reader.get_cursor_in_bits(), golden.at(packet.name).size_in_bits);
	}
}

} // namespace
