// A packet is hostile until read. The input says which operations read it and with which infos, and
// then is the packet; each operation is compared with what its failure has to leave behind. A
// second reading writes back every field that was read and has to find the same value again.

#include "input.h"

#include <morvantis/net/read_bit_buffer.h>
#include <morvantis/net/write_bit_buffer.h>

#include <cstdint>
#include <cstring>
#include <iterator>

namespace {

// The head of the input: numbers for infos, 0 when it has run out.
struct Script {
	unsigned long long take(size_t byte_count) {
		unsigned long long value = 0;
		for (; byte_count > 0 && size > 0; --byte_count, --size) value = value << 8 | *data++;
		return value;
	}
	int take_int() { return static_cast<int>(take(4)); }
	int take_count(int from, int to) { return from + static_cast<int>(take(1)) % (to - from + 1); }
	float take_float() {
		const unsigned int bits = static_cast<unsigned int>(take(4));
		float value;
		std::memcpy(&value, &bits, sizeof(value));
		return value;
	}

	const unsigned char* data;
	size_t size;
};

struct Session {
	Read_bit_buffer reader;
	Write_bit_buffer copy; // fields written back
	Script script;

	// The common rule: too few bits change nothing, otherwise the field is consumed.
	template <typename Value, typename Info, typename Read>
	void read_field(const Info& info, Read read, bool (*is_in_range)(Value, const Info&)) {
		const int cursor = reader.get_cursor_in_bits(), unread = reader.get_unread_bits();
		Value value;
		std::memset(&value, 0x5A, sizeof(value));
		const Value before = value;
		const bool is_good = read(value);
		if (unread < info.bit_count) {
			require(!is_good && reader.get_cursor_in_bits() == cursor);
			require(std::memcmp(&value, &before, sizeof(value)) == 0);
			return;
		}
		require(reader.get_cursor_in_bits() == cursor + info.bit_count);
		require(is_good == is_in_range(value, info));
	}

	template <typename Value, typename Info, typename Write, typename Read>
	void read_back(const Info& info, Write write, Read read, Value value) {
		copy.clear();
		write(value);
		require(copy.get_size_in_bits() == info.bit_count);
		copy.rewind();
		Value seen;
		require(read(seen) && std::memcmp(&seen, &value, sizeof(value)) == 0);
	}

	template <typename Value, typename Info> void integer(const Info& info, bool is_full_range) {
		const auto in_range = [](Value v, const Info& i) {
			return i.min_value <= v && v <= i.max_value;
		};
		Value value = 0;
		bool is_good = false;
		const auto read = [&](Value& out) {
			is_good = reader.serial_op(out, info);
			value = out;
			return is_good;
		};
		if (is_full_range) {
			read_field<Value, Info>(info, read, [](Value, const Info&) { return true; });
		} else {
			read_field<Value, Info>(info, read, in_range);
		}
		// A full range 64-bit value comes back with its sign flipped; it is left out here.
		if (!is_good || (is_full_range && info.bit_count == 64)) return;
		read_back<Value>(
			info, [&](Value v) { copy.serial_op(v, info); },
			[&](Value& out) { return copy.as_read_bit_buffer().serial_op(out, info); }, value);
	}
	void int_32() {
		const Integer_compression_info info{script.take_int(), script.take_int(),
		                                    script.take_count(0, 32)};
		integer<int>(info, info.bit_count == 32 &&
		                       static_cast<unsigned int>(info.min_value) == 0x80000000u);
	}
	void unsigned_32() {
		const Unsigned_integer_compression_info info{static_cast<unsigned int>(script.take(4)),
		                                             static_cast<unsigned int>(script.take(4)),
		                                             script.take_count(0, 32)};
		integer<unsigned int>(info, false);
	}
	void int_64() {
		const Integer64_compression_info info{static_cast<long long>(script.take(8)),
		                                      static_cast<long long>(script.take(8)),
		                                      script.take_count(32, 64)};
		integer<long long>(info, info.bit_count == 64 &&
		                             static_cast<unsigned long long>(info.min_value) ==
		                                 0x8000000000000000u);
	}
	void unsigned_64() {
		const Unsigned_integer64_compression_info info{script.take(8), script.take(8),
		                                               script.take_count(32, 64)};
		integer<unsigned long long>(info, false);
	}
	void float_32() {
		const Float_compression_info info{script.take_float(), script.take_float(),
		                                  script.take_float(), script.take_count(0, 32)};
		const auto read = [&](float& out) { return reader.serial_op_float(out, info); };
		read_field<float, Float_compression_info>(
			info, read, [](float v, const Float_compression_info& i) {
				const bool is_raw = i.precision == 0.0f || i.precision != i.precision;
				return is_raw || (!(v > i.max_value) && v >= i.min_value);
			});
	}
	void byte_array() {
		unsigned char data[2048 + 1];
		std::memset(data, 0x5A, sizeof(data));
		const int max_size = script.take_count(0, 255) * 8;
		const int cursor = reader.get_cursor_in_bits(), unread = reader.get_unread_bits();
		int size = -1;
		const bool is_good = reader.serial_op_byte_array(data, max_size, size);
		if (unread < 11) {
			require(!is_good && size == 0 && reader.get_cursor_in_bits() == cursor &&
			        data[0] == 0x5A);
			return;
		}
		require(size >= 0 && size <= 2047);
		require(is_good == (size <= max_size && unread - 11 >= size * 8));
		require(reader.get_cursor_in_bits() == cursor + 11 + (is_good ? size * 8 : 0));
		if (size > max_size) return require(data[0] == 0x5A);
		require(data[size] == 0x5A);
		if (!is_good) {
			for (int i = 0; i < size; ++i) require(data[i] == 0);
			return;
		}
		copy.clear();
		copy.serial_op_byte_array(data, size);
		copy.rewind();
		unsigned char seen[2047];
		int seen_size = -1;
		require(copy.as_read_bit_buffer().serial_op_byte_array(seen, 2047, seen_size));
		require(seen_size == size && std::memcmp(seen, data, static_cast<size_t>(size)) == 0);
	}
	void time() {
		const int cursor = reader.get_cursor_in_bits(), unread = reader.get_unread_bits();
		long long value = 42;
		const bool is_good = reader.serial_op_time(value);
		require(is_good == (unread >= 63));
		require(reader.get_cursor_in_bits() == cursor + (is_good ? 63 : 0));
		require(is_good ? value >= 0 : value == 42);
	}
	void coarse_time() {
		const int cursor = reader.get_cursor_in_bits(), unread = reader.get_unread_bits();
		long long value = 0;
		const bool is_good = reader.serial_op_time_coarse(value);
		const int used = reader.get_cursor_in_bits() - cursor;
		if (!is_good) return require(unread < 64 && used == (unread == 0 ? 0 : 1));
		require((used == 23 && value % 100 == 0) || used == 64);
		copy.clear();
		copy.serial_op_time_coarse(value);
		copy.rewind();
		long long seen = -1;
		require(copy.as_read_bit_buffer().serial_op_time_coarse(seen));
		// An exact time that is small goes out the short way when it is written again.
		require(seen == (value > 419430399 ? value : value / 100 * 100));
	}
	void tick() {
		const int unread = reader.get_unread_bits();
		unsigned int value = 42;
		const bool is_good = reader.read_tick_no(static_cast<unsigned int>(script.take(4)), value);
		require(is_good == (unread >= 16));
		require(is_good ? value == 0 || value >= 32750 : value == 0);
		require(reader.get_unread_bits() == unread - (is_good ? 16 : 0));
	}
	void packet_id() {
		const int unread = reader.get_unread_bits();
		udp_packet_id id(42, 42);
		const bool is_good = reader.read_packet_id(static_cast<unsigned int>(script.take(4)), id);
		const int used = unread - reader.get_unread_bits();
		require(id.packet_no >= 0 && id.packet_no < 64);
		if (is_good) return require((used == 17 && id.packet_no == 0) || used == 23);
		require(id.packet_no == 0 && used == (unread < 16 ? 0 : unread < 17 ? 16 : 17));
		require(used != 0 || id.tick_no == 0);
	}
	void move() {
		// What a reader may do between fields.
		switch (script.take(1) % 4) {
		case 0:
			return reader.rewind();
		case 1:
			return reader.rewind_by(script.take_count(0, 255) % (reader.get_cursor_in_bits() + 1));
		case 2:
			return reader.skip_to_next_byte();
		default:
			return reader.skip_bits(script.take_count(0, 255));
		}
	}
};

} // namespace

// The first byte is the length of the script, the script follows, and the rest is the packet.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
	if (size < 1 || size > 4096) return 0;
	const size_t script_size = data[0] < size - 1 ? data[0] : size - 1;
	const unsigned char* const packet = data + 1 + script_size;
	Session session{{}, {}, {data + 1, script_size}};
	session.copy.guarantee_capacity_in_bits(11 + 2047 * 8 + 32);
	session.reader.guarantee_capacity_in_bits(static_cast<int>(size - 1 - script_size) * 8);
	std::memcpy(session.reader.buffer, packet, size - 1 - script_size);
	session.reader.initialize_after_read(static_cast<int>(size - 1 - script_size));

	static constexpr void (Session::* operations[])() = {
		&Session::int_32,   &Session::unsigned_32, &Session::int_64, &Session::unsigned_64,
		&Session::float_32, &Session::byte_array,  &Session::time,   &Session::coarse_time,
		&Session::tick,     &Session::packet_id,   &Session::move};
	while (session.script.size > 0) {
		(session.*operations[session.script.take(1) % std::size(operations)])();
		require(session.reader.get_cursor_in_bits() <= session.reader.get_size_in_bits());
	}
	return 0;
}
