// The typed face of a bit buffer for writing.
#pragma once

#include <morvantis/net/read_bit_buffer.h> // the compression infos

#include <xmmintrin.h> // _mm_cvttss_si32

// A Dynamic_bit_buffer seen for writing. Each field is squeezed as its compression info says, and
// the operation of the same name in Read_bit_buffer reads it back with the same info.
//
// Every operation returns true and none checks anything: the caller has guaranteed the capacity,
// and a value outside its bounds is written as it comes out. Bits of it above `bit_count` spill
// into what follows the field until the next field is written, and the reader sees the low ones.
// Nothing is reported and nothing allocated.
class MORVANTIS_API Write_bit_buffer : public Dynamic_bit_buffer {
public:
	Write_bit_buffer() = default;
	// All four copy as Dynamic_bit_buffer does; nothing is taken from the source.
	Write_bit_buffer(const Write_bit_buffer& source) : Dynamic_bit_buffer(source) {}
	Write_bit_buffer(Write_bit_buffer&& source) : Dynamic_bit_buffer(source) {}
	Write_bit_buffer& operator=(const Write_bit_buffer& source);
	Write_bit_buffer& operator=(Write_bit_buffer&& source);

	// Write value - min_value, which wraps around, in `bit_count` bits.
	//
	// kept: with `bit_count` 32 and the least `min_value` the signed 32-bit value itself goes out.
	// The 64-bit forms have no such case: there a full range value goes out with its sign bit
	// flipped.
	bool serial_op(int value, const Integer_compression_info& info);
	bool serial_op(unsigned int value, const Unsigned_integer_compression_info& info);
	bool serial_op(long long value, const Integer64_compression_info& info);
	bool serial_op(unsigned long long value, const Unsigned_integer64_compression_info& info);
	// Writes the nearest step. Not clamped: what lies more than half a step below `min_value` goes
	// out as a negative number, what lies 2^31 steps or more above it, or is NaN, as 0x80000000.
	bool serial_op_float(float value, const Float_compression_info& info);

	// Writes a length of 11 bits and then the bytes, not aligned. `size` from 0 on; only the first
	// 2,047 bytes go, silently. Null `data` is written as an empty array, whatever `size` says.
	bool serial_op_byte_array(const unsigned char* data, int size);

	// A time in the caller's unit, 63 bits. A negative one comes back wrong.
	bool serial_op_time(const long long& value);
	// The same in 23 bits, rounded down to a multiple of 100, up to 419,430,399; in 64 bits and
	// exact from 419,430,400 on. A negative one comes back wrong.
	bool serial_op_time_coarse(const long long& value);

	// Writes a tick number in 16 bits: 0, which means none, or its place from 1 to 65,500 in its
	// cycle of 65,500.
	bool write_packet_id(unsigned int tick);
	// Writes the whole id: the tick number, where one below 1 counts as none, and the packet number
	// in one bit when it is 0 and in 7 bits otherwise. Packet numbers from 64 on do not survive;
	// udp_packet_id::PACKET_ID_UNRELIABLE is read back as {0, 63}.
	bool write_packet_id(const udp_packet_id& id);

private:
	bool append_distance(unsigned long long value, unsigned long long min_value, int bit_count);
};

static_assert(sizeof(Write_bit_buffer) == sizeof(Dynamic_bit_buffer));

inline Write_bit_buffer& Dynamic_bit_buffer::as_write_bit_buffer() {
	return static_cast<Write_bit_buffer&>(*this);
}

inline const Write_bit_buffer& Dynamic_bit_buffer::as_write_bit_buffer() const {
	return static_cast<const Write_bit_buffer&>(*this);
}

inline Write_bit_buffer& Write_bit_buffer::operator=(const Write_bit_buffer& source) {
	copy_from(source);
	return *this;
}

inline Write_bit_buffer& Write_bit_buffer::operator=(Write_bit_buffer&& source) {
	copy_from(source);
	return *this;
}

MORVANTIS_FORCE_INLINE bool Write_bit_buffer::serial_op(int value,
                                                        const Integer_compression_info& info) {
	const unsigned int least = static_cast<unsigned int>(info.min_value);
	const bool is_full_range = info.bit_count == 32 && least == 0x80000000u;
	append_bits_from_uint32(static_cast<unsigned int>(value) - (is_full_range ? 0 : least),
	                        info.bit_count);
	return true;
}

MORVANTIS_FORCE_INLINE bool
Write_bit_buffer::serial_op(unsigned int value, const Unsigned_integer_compression_info& info) {
	append_bits_from_uint32(value - info.min_value, info.bit_count);
	return true;
}

MORVANTIS_FORCE_INLINE bool Write_bit_buffer::append_distance(unsigned long long value,
                                                              unsigned long long min_value,
                                                              int bit_count) {
	append_bits_from_uint64(value - min_value, bit_count);
	return true;
}

MORVANTIS_FORCE_INLINE bool Write_bit_buffer::serial_op(long long value,
                                                        const Integer64_compression_info& info) {
	return append_distance(static_cast<unsigned long long>(value),
	                       static_cast<unsigned long long>(info.min_value), info.bit_count);
}

MORVANTIS_FORCE_INLINE bool
Write_bit_buffer::serial_op(unsigned long long value,
                            const Unsigned_integer64_compression_info& info) {
	return append_distance(value, info.min_value, info.bit_count);
}

MORVANTIS_FORCE_INLINE bool Write_bit_buffer::serial_op_float(float value,
                                                              const Float_compression_info& info) {
	unsigned int raw;
	if (info.precision < 0.0f || info.precision > 0.0f) {
		const float steps = (value - info.min_value) / info.precision + 0.5f;
		// The instruction gives 0x80000000 for what no int holds, where a cast has no defined
		// result.
		raw = static_cast<unsigned int>(_mm_cvttss_si32(_mm_set_ss(steps)));
	} else {
		std::memcpy(&raw, &value, sizeof(raw));
	}
	append_bits_from_uint32(raw, info.bit_count);
	return true;
}

inline bool Write_bit_buffer::serial_op_byte_array(const unsigned char* data, int size) {
	constexpr int largest_size = 2047;
	const int sent = data == nullptr ? 0 : size < largest_size ? size : largest_size;
	append_bits_from_uint32(static_cast<unsigned int>(sent), 11);
	if (sent >= 1) append_bits_from_array(data, sent * 8);
	return true;
}

MORVANTIS_FORCE_INLINE bool Write_bit_buffer::serial_op_time(const long long& value) {
	append_bits_from_uint64(static_cast<unsigned long long>(value), 63);
	return true;
}

MORVANTIS_FORCE_INLINE bool Write_bit_buffer::serial_op_time_coarse(const long long& value) {
	const long long hundreds = value / 100;
	if (hundreds > 0x3FFFFF) {
		append_bits_from_uint32(1, 1);
		return serial_op_time(value);
	}
	append_bits_from_uint32(0, 1);
	append_bits_from_uint32(static_cast<unsigned int>(hundreds), 22);
	return true;
}

inline bool Write_bit_buffer::write_packet_id(unsigned int tick) {
	append_bits_from_uint32(tick == 0 ? 0 : (tick - 1) % packet_id_mod_limit + 1, 16);
	return true;
}

inline bool Write_bit_buffer::write_packet_id(const udp_packet_id& id) {
	write_packet_id(id.tick_no < 1 ? 0u : static_cast<unsigned int>(id.tick_no));
	append_bits_from_uint32(id.packet_no == 0 ? 1 : 0, 1);
	if (id.packet_no != 0) append_bits_from_uint32(static_cast<unsigned int>(id.packet_no), 6);
	return true;
}
