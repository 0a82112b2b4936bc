// The typed face of a bit buffer for reading, and the records that say how a field is packed.
#pragma once

#include <morvantis/net/dynamic_bit_buffer.h>

// How a number is packed: as its distance from `min_value`, in `bit_count` bits. Both ends must
// hold the same record, since a packet carries no types and no tags. `bit_count` is the caller's to
// choose, wide enough for max_value - min_value: 0 to 32 for the 32-bit records, 32 to 64 for the
// 64-bit ones. Records are only read, and may be shared between threads.
struct Integer_compression_info {
	int min_value;
	int max_value;
	int bit_count;
};

struct Unsigned_integer_compression_info {
	unsigned int min_value;
	unsigned int max_value;
	int bit_count;
};

struct Integer64_compression_info {
	long long min_value;
	long long max_value;
	int bit_count;
};

struct Unsigned_integer64_compression_info {
	unsigned long long min_value;
	unsigned long long max_value;
	int bit_count;
};

// A float goes as the number of steps of `precision` from `min_value`, rounded to the nearest, in 0
// to 32 bits. A precision of 0 (or NaN) sends the 32 bits of the float as they are, untested;
// `bit_count` must be 32 then.
//
// All arithmetic is in single precision, so the last step may come back a digit above `max_value`,
// which the reader refuses: with {0, 3, 0.001, 12} that befalls the value 3. It can't happen where
// `precision` is a power of two and the bounds are multiples of it with few enough digits;
// elsewhere give `max_value` half a step of room.
struct Float_compression_info {
	float min_value;
	float max_value;
	float precision;
	int bit_count;
};

// A Dynamic_bit_buffer seen for reading. Each operation reads what the one of the same name in
// Write_bit_buffer wrote with the same record.
//
// A packet is hostile until read. Where nothing else is said, an operation returns
// - false with cursor and output unchanged when the packet has fewer bits left than the field;
// - false with the field consumed and the decoded value in the output when it is out of range;
// - true otherwise.
// The caller drops the packet at the first false. Nothing is reported and nothing allocated.
class MORVANTIS_API Read_bit_buffer : public Dynamic_bit_buffer {
public:
	Read_bit_buffer() = default;
	// All four copy as Dynamic_bit_buffer does; nothing is taken from the source.
	Read_bit_buffer(const Read_bit_buffer& source) : Dynamic_bit_buffer(source) {}
	Read_bit_buffer(Read_bit_buffer&& source) : Dynamic_bit_buffer(source) {}
	Read_bit_buffer& operator=(const Read_bit_buffer& source);
	Read_bit_buffer& operator=(Read_bit_buffer&& source);

	// Sums wrap around.
	//
	// kept: with `bit_count` 32 and the least `min_value` the bits are the value, and `max_value`
	// is not looked at, so the result is true.
	bool serial_op(int& value, const Integer_compression_info& info);
	bool serial_op(unsigned int& value, const Unsigned_integer_compression_info& info);
	// kept: with `bit_count` 64 and the least `min_value` the bits are the value, true. The writer
	// has no such case, so the value comes back with its sign bit flipped.
	bool serial_op(long long& value, const Integer64_compression_info& info);
	bool serial_op(unsigned long long& value, const Unsigned_integer64_compression_info& info);
	bool serial_op_float(float& value, const Float_compression_info& info);

	// Reads an array into `data`, which has room for `max_size` bytes, and its length into `size`.
	// False when the length is missing (`size` is 0 then), when the claimed length is above
	// `max_size` (`size` has it, `data` is untouched), or when the packet ends early (`data` is
	// zero up to the claimed length).
	bool serial_op_byte_array(unsigned char* data, int max_size, int& size);

	bool serial_op_time(long long& value);
	// On false `value` is not defined; the cursor stands behind the flag, if there was one.
	bool serial_op_time_coarse(long long& value);

	// Rebuilds a tick number from its 16 bits and a tick near it, as the receiver's own last one:
	// right when less than 32,750 lie between the two. `reference_tick` 0 means that none is known.
	// Reads 0, the mark of no tick, as 0. On false `tick` is 0.
	//
	// kept: a result in 1 to 32,749 comes back 65,500 higher, and in the first cycle a field far
	// above its reference wraps around below 0.
	bool read_tick_no(unsigned int reference_tick, unsigned int& tick);
	// Reads the whole id. On false `id` has the tick, as far as it was read, and packet number 0.
	bool read_packet_id(unsigned int reference_tick, udp_packet_id& id);

	int get_unread_bits() const { return wrapping_difference(size_in_bits, cursor_in_bits); }
	// kept: empty, and still called by hosts.
	void debug_check_out_of_bounds() const {}

private:
	// Fills `data`, with zeros and false where the packet has fewer bytes left.
	bool read_bytes_or_zeros(unsigned char* data, int byte_count);
	static unsigned int rebuild_tick(unsigned int field, unsigned int reference_tick);
};

static_assert(sizeof(Read_bit_buffer) == sizeof(Dynamic_bit_buffer));

inline Read_bit_buffer& Dynamic_bit_buffer::as_read_bit_buffer() {
	return static_cast<Read_bit_buffer&>(*this);
}

inline const Read_bit_buffer& Dynamic_bit_buffer::as_read_bit_buffer() const {
	return static_cast<const Read_bit_buffer&>(*this);
}

inline Read_bit_buffer& Read_bit_buffer::operator=(const Read_bit_buffer& source) {
	copy_from(source);
	return *this;
}

inline Read_bit_buffer& Read_bit_buffer::operator=(Read_bit_buffer&& source) {
	copy_from(source);
	return *this;
}

MORVANTIS_FORCE_INLINE bool Read_bit_buffer::serial_op(int& value,
                                                       const Integer_compression_info& info) {
	unsigned int raw;
	if (!read_bits_to_uint32(raw, info.bit_count)) return false;
	if (info.bit_count == 32 && static_cast<unsigned int>(info.min_value) == 0x80000000u) {
		value = static_cast<int>(raw);
		return true;
	}
	const int sum = wrapping_sum(info.min_value, static_cast<int>(raw));
	const bool in_range = info.min_value <= sum && sum <= info.max_value;
	value = sum;
	return in_range;
}

MORVANTIS_FORCE_INLINE bool
Read_bit_buffer::serial_op(unsigned int& value, const Unsigned_integer_compression_info& info) {
	unsigned int raw;
	if (!read_bits_to_uint32(raw, info.bit_count)) return false;
	const unsigned int sum = info.min_value + raw;
	const bool in_range = info.min_value <= sum && sum <= info.max_value;
	value = sum;
	return in_range;
}

MORVANTIS_FORCE_INLINE bool Read_bit_buffer::serial_op(long long& value,
                                                       const Integer64_compression_info& info) {
	unsigned long long raw;
	if (!read_bits_to_uint64(raw, info.bit_count)) return false;
	const unsigned long long least = static_cast<unsigned long long>(info.min_value);
	if (info.bit_count == 64 && least == 0x8000000000000000u) {
		value = static_cast<long long>(raw);
		return true;
	}
	const long long sum = static_cast<long long>(least + raw);
	const bool in_range = info.min_value <= sum && sum <= info.max_value;
	value = sum;
	return in_range;
}

MORVANTIS_FORCE_INLINE bool
Read_bit_buffer::serial_op(unsigned long long& value,
                           const Unsigned_integer64_compression_info& info) {
	unsigned long long raw;
	if (!read_bits_to_uint64(raw, info.bit_count)) return false;
	const unsigned long long sum = info.min_value + raw;
	const bool in_range = info.min_value <= sum && sum <= info.max_value;
	value = sum;
	return in_range;
}

MORVANTIS_FORCE_INLINE bool Read_bit_buffer::serial_op_float(float& value,
                                                             const Float_compression_info& info) {
	unsigned int raw;
	if (!read_bits_to_uint32(raw, info.bit_count)) return false;
	if (!(info.precision < 0.0f || info.precision > 0.0f)) {
		std::memcpy(&value, &raw, sizeof(value));
		return true;
	}
	const float sum = static_cast<float>(raw) * info.precision + info.min_value;
	const bool in_range = !(sum > info.max_value) && sum >= info.min_value;
	value = sum;
	return in_range;
}

inline bool Read_bit_buffer::serial_op_byte_array(unsigned char* data, int max_size, int& size) {
	size = 0;
	unsigned int claimed; // 11 bits, so any length is within the 2,047 that a writer sends at most
	if (!read_bits_to_uint32(claimed, 11)) return false;
	const int byte_count = static_cast<int>(claimed);
	size = byte_count;
	if (byte_count > max_size) return false;
	return byte_count == 0 || read_bytes_or_zeros(data, byte_count);
}

MORVANTIS_FORCE_INLINE bool Read_bit_buffer::serial_op_time(long long& value) {
	unsigned long long raw;
	if (!read_bits_to_uint64(raw, 63)) return false;
	value = static_cast<long long>(raw);
	return true; // 63 bits are never negative
}

MORVANTIS_FORCE_INLINE bool Read_bit_buffer::serial_op_time_coarse(long long& value) {
	unsigned int is_exact;
	if (!read_bits_to_uint32(is_exact, 1)) return false;
	if (is_exact != 0) return serial_op_time(value);
	unsigned int hundreds;
	if (!read_bits_to_uint32(hundreds, 22)) return false;
	value = 100ll * hundreds;
	return true;
}

inline unsigned int Read_bit_buffer::rebuild_tick(unsigned int field, unsigned int reference_tick) {
	if (field == 0) return 0;
	unsigned int tick = field;
	if (reference_tick != 0) {
		unsigned int cycle = (reference_tick - 1) / packet_id_mod_limit;
		const unsigned int wrapped = (reference_tick - 1) % packet_id_mod_limit + 1;
		const unsigned int distance = field > wrapped ? field - wrapped : wrapped - field;
		if (distance > packet_id_mod_limit_div_2) {
			// The field has wrapped past the reference, or lies before its last wrap.
			cycle = wrapped >= packet_id_mod_limit_div_2 ? cycle + 1 : cycle - 1;
		}
		tick += cycle * packet_id_mod_limit;
	}
	// kept: no tick lies in the first half of the first cycle.
	return tick >= 1 && tick < packet_id_mod_limit_div_2 ? tick + packet_id_mod_limit : tick;
}

inline bool Read_bit_buffer::read_tick_no(unsigned int reference_tick, unsigned int& tick) {
	unsigned int field;
	if (!read_bits_to_uint32(field, 16)) {
		tick = 0;
		return false;
	}
	tick = rebuild_tick(field, reference_tick);
	return true;
}

inline bool Read_bit_buffer::read_packet_id(unsigned int reference_tick, udp_packet_id& id) {
	unsigned int tick;
	unsigned int is_zero = 0;
	unsigned int packet_no = 0;
	const bool is_complete = read_tick_no(reference_tick, tick) &&
	                         read_bits_to_uint32(is_zero, 1) &&
	                         (is_zero != 0 || read_bits_to_uint32(packet_no, 6));
	id = {static_cast<int>(tick), static_cast<int>(packet_no)};
	return is_complete;
}
