#include <morvantis/net/dynamic_bit_buffer.h>

#include <morvantis/memory/xylheap.h>

#include <algorithm>
#include <bit>

static_assert(std::endian::native == std::endian::little, "spans are loaded as they lie");

const int Dynamic_bit_buffer::static_buffer_size_in_bits;
const int Dynamic_bit_buffer::static_buffer_size_in_bytes;
const int Dynamic_bit_buffer::static_buffer_size_adder_in_bytes;
const unsigned int Dynamic_bit_buffer::packet_id_mod_limit;
const unsigned int Dynamic_bit_buffer::packet_id_mod_limit_div_2;
const int Dynamic_bit_buffer::slack_in_bytes;

namespace {

// The rest of an array, 0 to 7 bytes, as a number and back: a call of memcpy would cost more.
unsigned long long load_bytes(const unsigned char* from, size_t count) {
	unsigned long long value = 0;
	if (count & 1) value = from[count - 1];
	if (count & 2) {
		unsigned short part;
		std::memcpy(&part, from + (count & 4), 2);
		value = value << 16 | part;
	}
	if (count & 4) {
		unsigned int part;
		std::memcpy(&part, from, 4);
		value = value << 32 | part;
	}
	return value;
}

void store_bytes(unsigned char* to, unsigned long long value, size_t count) {
	if (count & 4) {
		std::memcpy(to, &value, 4);
		to += 4;
		value >>= 32;
	}
	if (count & 2) {
		std::memcpy(to, &value, 2);
		to += 2;
		value >>= 16;
	}
	if (count & 1) *to = static_cast<unsigned char>(value);
}

} // namespace

Dynamic_bit_buffer::Dynamic_bit_buffer() { setup(nullptr, 0); }

Dynamic_bit_buffer::Dynamic_bit_buffer(const unsigned char* data, int byte_count) {
	setup(data, byte_count);
}

Dynamic_bit_buffer::Dynamic_bit_buffer(const Dynamic_bit_buffer& source) : Dynamic_bit_buffer() {
	copy_from(source);
}

void Dynamic_bit_buffer::operator=(const Dynamic_bit_buffer& source) { copy_from(source); }

Dynamic_bit_buffer::~Dynamic_bit_buffer() {
	xyl_heap_free(dynamic_buffer);
	dynamic_buffer = nullptr;
}

QoNetRawBuffer* Dynamic_bit_buffer::as_raw_buffer() {
	return reinterpret_cast<QoNetRawBuffer*>(&capacity_in_bits);
}

void Dynamic_bit_buffer::setup(const unsigned char* data, int byte_count) {
	user_int_a = -1;
	user_int_b = 0;
	user_int_c = 0;
	cursor_in_bits = 0;
	size_in_bits = 0;
	packet_id = udp_packet_id::PACKET_ID_ZERO;
	std::memset(user_block, 0, 8);

	// kept: an old block is not freed. The constructor calls this on fields that are not yet set.
	dynamic_buffer = nullptr;
	// The object's address, and not the array's, since spans reach on into the slack.
	buffer = reinterpret_cast<unsigned char*>(this);
	capacity_in_bits = static_buffer_size_in_bits;
	std::memset(buffer, 0, sizeof(static_buffer) + sizeof(static_buffer_slack));

	if (!data) return;
	const int bits = static_cast<int>(static_cast<unsigned int>(byte_count) * 8);
	guarantee_capacity_in_bits(bits);
	size_in_bits = bits;
	std::memcpy(buffer, data, static_cast<unsigned int>(byte_count));
}

void Dynamic_bit_buffer::copy_from(const Dynamic_bit_buffer& source) {
	packet_id = source.packet_id;
	std::memmove(user_block, source.user_block, sizeof(user_block));
	user_int_a = source.user_int_a;
	user_int_b = source.user_int_b;
	user_int_c = source.user_int_c;
	guarantee_capacity_in_bits(source.capacity_in_bits);
	// A buffer may be assigned to itself, so the ranges may be the same.
	std::memmove(buffer, source.buffer, byte_offset(source.capacity_in_bits));
	cursor_in_bits = source.cursor_in_bits;
	size_in_bits = source.size_in_bits;
}

void Dynamic_bit_buffer::resize_capacity_in_bits(int bits) {
	const unsigned int rounded = (static_cast<unsigned int>(bits) + 63) / 64 * 64;
	// A size past the capacity is outside the contract, but costs nothing to survive here.
	const size_t held =
		std::min(static_cast<size_t>(size_in_bytes()), byte_offset(capacity_in_bits));
	capacity_in_bits = static_cast<int>(rounded);
	unsigned char* block = nullptr;
	if (rounded != 0) {
		const size_t block_size = rounded / 8 + slack_in_bytes;
		block = static_cast<unsigned char*>(xyl_heap_allocate(block_size));
		std::memcpy(block, buffer, held);
		std::memset(block + held, 0, block_size - held);
	}
	xyl_heap_free(dynamic_buffer);
	buffer = block;
	dynamic_buffer = block;
}

void Dynamic_bit_buffer::shrink_size_to(int bits) {
	size_in_bits = bits;
	cursor_in_bits = std::min(cursor_in_bits, bits);
	// kept: from the cursor on, although the size may count more.
	const size_t first = byte_offset(cursor_in_bits);
	const size_t end = byte_offset(capacity_in_bits);
	if (first >= end) return;
	buffer[first] &= static_cast<unsigned char>(low_bits(cursor_in_bits % 8));
	std::memset(buffer + first + 1, 0, end - first - 1);
}

void Dynamic_bit_buffer::advance(int bits) {
	const int end = wrapping_sum(cursor_in_bits, bits);
	guarantee_capacity_in_bits(end);
	cursor_in_bits = end;
	size_in_bits = std::max(size_in_bits, end);
}

void Dynamic_bit_buffer::skip_to_next_byte() {
	const int skip = compute_bit_count_to_skip_to_next_byte();
	if (skip != 0) advance(skip);
}

void Dynamic_bit_buffer::skip_bits(int bits) { advance(bits); }

void Dynamic_bit_buffer::append_bits_const(const Dynamic_bit_buffer* source, unsigned int count) {
	append_copied_bits(source, count);
}

void Dynamic_bit_buffer::append_bits(Dynamic_bit_buffer* source, int count) {
	const bool by_bytes = cursor_in_bits % 8 == 0 && source->cursor_in_bits % 8 == 0;
	if (!by_bytes && count < 1) return;
	append_copied_bits(source, static_cast<unsigned int>(count));
	source->cursor_in_bits = wrapping_sum(source->cursor_in_bits, count);
}

// Sets exactly the bits of the field, as spans of 32 masked bits would, but in 8 bytes at a time:
// up to a whole byte of the target, then whole words without a load of the target, then the rest.
void Dynamic_bit_buffer::append_copied_bits(const Dynamic_bit_buffer* source, unsigned int count) {
	int from = source->cursor_in_bits;
	if (cursor_in_bits % 8 == 0 && from % 8 == 0) {
		std::memmove(buffer + byte_offset(cursor_in_bits), source->buffer + byte_offset(from),
		             count / 8 + (count % 8 != 0 ? 1 : 0));
		increment_cursor_and_size_in_bits(static_cast<int>(count));
		return;
	}
	const auto transfer = [&](unsigned int bits) {
		unsigned int value;
		read_bits_to_uint32_impl(source->buffer, from, value, static_cast<int>(bits));
		append_bits_from_uint32(value, static_cast<int>(bits));
		count -= bits;
	};
	transfer(std::min(count, static_cast<unsigned int>(compute_bit_count_to_skip_to_next_byte())));
	const unsigned int shift = static_cast<unsigned int>(from) % 8;
	for (; count >= 64; count -= 64) {
		const unsigned char* const word = source->buffer + byte_offset(from);
		// The ninth byte holds the last `shift` bits; shifted in two steps it gives 0 for none.
		const unsigned long long last = static_cast<unsigned long long>(word[8]) << 1;
		store_64(buffer + byte_offset(cursor_in_bits),
		         (load_64(word) >> shift) | (last << (63 - shift)));
		increment_cursor_and_size_in_bits(64);
		from = wrapping_sum(from, 64);
	}
	while (count != 0) transfer(std::min(count, 32u));
}

void Dynamic_bit_buffer::append_bits_from_array(const unsigned char* data, int count) {
	const unsigned int bits = static_cast<unsigned int>(count);
	const size_t whole_bytes = bits / 8;
	const unsigned int shift = static_cast<unsigned int>(cursor_in_bits) % 8;
	if (shift == 0) {
		// kept: the array counts as bytes here, so a partial last one is taken and counted whole.
		const size_t byte_count = whole_bytes + (bits % 8 != 0 ? 1 : 0);
		if (byte_count != 0) std::memcpy(buffer + byte_offset(cursor_in_bits), data, byte_count);
		increment_cursor_and_size_in_bits(static_cast<int>(byte_count * 8));
		return;
	}
	append_unaligned_bytes(buffer + byte_offset(cursor_in_bits), shift, data, whole_bytes);
	increment_cursor_and_size_in_bits(static_cast<int>(whole_bytes * 8));
	const int rest = static_cast<int>(bits % 8);
	if (rest != 0) append_bits_from_uint32(data[whole_bytes], rest);
}

bool Dynamic_bit_buffer::read_bits_from_array(unsigned char* data, int count) {
	if (!has_bits(count)) return false;
	const unsigned int bits = static_cast<unsigned int>(count);
	const size_t whole_bytes = bits / 8;
	const int rest = static_cast<int>(bits % 8);
	const unsigned int shift = static_cast<unsigned int>(cursor_in_bits) % 8;
	const unsigned char* const from = buffer + byte_offset(cursor_in_bits);
	if (shift == 0) {
		const size_t byte_count = whole_bytes + (rest != 0 ? 1 : 0);
		if (byte_count != 0) std::memcpy(data, from, byte_count);
		cursor_in_bits = wrapping_sum(cursor_in_bits, count);
		return true;
	}
	read_unaligned_bytes(from, shift, data, whole_bytes);
	cursor_in_bits = wrapping_sum(cursor_in_bits, static_cast<int>(whole_bytes * 8));
	if (rest != 0) {
		unsigned int last;
		read_bits_to_uint32_impl(buffer, cursor_in_bits, last, rest);
		data[whole_bytes] = static_cast<unsigned char>(last);
	}
	return true;
}

// Writes whole bytes at `shift`, 1 to 7, bits above the byte `to`. Each word goes out with the bits
// that the word before left over, so the target is loaded at the two ends only.
void Dynamic_bit_buffer::append_unaligned_bytes(unsigned char* to, unsigned int shift,
                                                const unsigned char* from, size_t byte_count) {
	unsigned long long carried = *to & low_bits(static_cast<int>(shift));
	for (; byte_count >= 8; byte_count -= 8, from += 8, to += 8) {
		const unsigned long long word = load_64(from);
		store_64(to, carried | (word << shift));
		carried = word >> (64 - shift);
	}
	// What lies above the field stays. Only the last byte holds some of it: loading more would wait
	// for the stores above.
	const unsigned long long rest = carried | (load_bytes(from, byte_count) << shift);
	store_bytes(to, rest, byte_count);
	const unsigned long long written = low_bits(static_cast<int>(shift));
	to[byte_count] = static_cast<unsigned char>((to[byte_count] & ~written) |
	                                            ((rest >> (byte_count * 8)) & written));
}

void Dynamic_bit_buffer::read_unaligned_bytes(const unsigned char* from, unsigned int shift,
                                              unsigned char* to, size_t byte_count) {
	for (; byte_count >= 8; byte_count -= 8, from += 8, to += 8) {
		const unsigned long long last = from[8];
		store_64(to, (load_64(from) >> shift) | (last << (64 - shift)));
	}
	store_bytes(to, load_64(from) >> shift, byte_count);
}
