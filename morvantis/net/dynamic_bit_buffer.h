// One packet, packed bit by bit: its storage and its bit cursor.
#pragma once

#include <morvantis/core/xylexport.h> // MORVANTIS_API, MORVANTIS_FORCE_INLINE
#include <morvantis/net/udp_packet_id.h>

#include <cstring>

class Read_bit_buffer;
class Write_bit_buffer;
struct QoNetRawBuffer;

// Storage and cursor under all network serialisation. Seen as a Write_bit_buffer or as a
// Read_bit_buffer it has typed operations; Bit_buffer_manager recycles whole objects.
//
// Order of bits: bit n of the stream is bit n % 8, counted from the least significant, of byte
// n / 8. A value goes out least significant bit first, and fields stand back to back. So the 3-bit
// value 5 and then the 8-bit value 0xAB make the bytes 0x5D, 0x05, with a size of 11 bits.
//
// Writes are never checked: the writer calls guarantee_capacity_in_bits() for all it will write.
// Reads past the size return false and change nothing. No other failure is detected, and nothing is
// ever reported to the host: cursors below 0 or past the capacity are outside the contract.
//
// A packet of up to 1,408 bytes lives inside the object. A larger one moves to a block of the
// library's heap, which the object owns. Positions are signed 32-bit numbers of bits.
//
// The transfers have their bodies here, so that a caller's compiler works with its own constants: a
// field is a few instructions then, too many to take in unforced when a packet has many fields.
//
// Threads: none of this is synchronised. A buffer belongs to one thread at a time, also for
// reading, since a read moves the cursor.
class MORVANTIS_API Dynamic_bit_buffer {
public:
	static const int static_buffer_size_in_bits = 11264; // 1408 * 8
	static const int static_buffer_size_in_bytes = 1408;
	// kept: a published number that nothing here reads.
	static const int static_buffer_size_adder_in_bytes = 8;
	// Tick numbers travel modulo this, see Write_bit_buffer::write_packet_id().
	static const unsigned int packet_id_mod_limit = 65500;
	static const unsigned int packet_id_mod_limit_div_2 = 32750;

	// An empty buffer of 11,264 bits, all zero. Nothing is allocated.
	Dynamic_bit_buffer();
	// As setup() on a new buffer.
	Dynamic_bit_buffer(const unsigned char* data, int byte_count);
	// A copy owns its own storage: a grown source means a heap block for the copy too.
	Dynamic_bit_buffer(const Dynamic_bit_buffer& source);
	// Keeps a storage of its own that is larger than the source's, with what its tail holds.
	void operator=(const Dynamic_bit_buffer& source);
	~Dynamic_bit_buffer();

	// The same object as what it derives from nothing but these: see the two headers.
	Read_bit_buffer& as_read_bit_buffer();
	const Read_bit_buffer& as_read_bit_buffer() const;
	Write_bit_buffer& as_write_bit_buffer();
	const Write_bit_buffer& as_write_bit_buffer() const;
	// The pair `capacity_in_bits`, `buffer` as a socket takes it. After a receive call
	// initialize_after_read() with the number of bytes received.
	QoNetRawBuffer* as_raw_buffer();

	// Puts every field to its first value and loads `byte_count` bytes of `data` (not the buffer's
	// own storage), which then can be read from the start. With null `data` the buffer is empty,
	// and `byte_count` means nothing. Allocates for more than 1,408 bytes.
	//
	// kept: a heap block that the buffer owns is forgotten and not freed.
	void setup(const unsigned char* data, int byte_count);
	// Makes room for `bits` in all, from the start of the storage. Above 11,264 and above the
	// capacity this allocates, and the storage moves; the bytes up to the size come along, and the
	// rest is zero. The new capacity is `bits` rounded up to a multiple of 64, and it stays until
	// the object ends: growth is by request, never ahead of it.
	void guarantee_capacity_in_bits(int bits);
	// Empties the buffer and zeroes its storage up to the capacity, which stays.
	void clear();

	int get_size_in_bits() const { return size_in_bits; }
	int get_cursor_in_bits() const { return cursor_in_bits; }
	// The size in whole bytes, the last one perhaps in part.
	int size_in_bytes() const { return size_in_bits / 8 + (size_in_bits % 8 != 0 ? 1 : 0); }
	// The storage: inside the object, or its heap block. Valid until the next growth.
	const unsigned char* get_buffer() const { return buffer; }

	// After someone else filled the storage with `byte_count` bytes: ready to read from the start.
	void initialize_after_read(int byte_count);
	// After someone else wrote `bits` more at the cursor.
	void increment_cursor_and_size_in_bits(int bits);
	// Takes back what was written past `bits`, with the cursor at the end of the bits kept: sets
	// the size to `bits`, moves a cursor past it back to it, and zeroes all from the cursor on.
	//
	// kept: from the cursor, not from the new size. With the cursor below `bits` the bits between
	// are erased although the size still counts them.
	void shrink_size_to(int bits);
	// Back to the first bit; the size stays, so what was written can be read.
	void rewind() { cursor_in_bits = 0; }
	// Back by `bits`, unchecked.
	void rewind_by(int bits) { cursor_in_bits = wrapping_difference(cursor_in_bits, bits); }

	// Bits from `position` to the next multiple of 8: 0 to 7.
	static int compute_bit_count_to_skip_to_next_byte(int position);
	int compute_bit_count_to_skip_to_next_byte() const;
	// Moves the cursor up to a whole byte, or by `bits`. Grows the storage where needed, and the
	// size where the cursor passes it. The bits in between stay as the storage has them, which is
	// zero after clear().
	void skip_to_next_byte();
	void skip_bits(int bits);

	// kept: empty, and still called by hosts.
	void assert_capacity_in_bits(int) const {}

	// Writes `count` bits at the cursor, 0 to 32 of `value` or 32 to 64; cursor and size grow by
	// `count`. Capacity is the caller's business.
	//
	// kept: `value` is not masked. Bits of it above `count` are ORed into what follows the field
	// and stay there until the next field is written over them.
	void append_bits_from_uint32(unsigned int value, int count);
	void append_bits_from_uint64(unsigned long long value, int count);
	// Read `count` bits at the cursor, 0 to 32 or 32 to 64, and move it. False past the size, with
	// `out` and the cursor unchanged.
	//
	// kept: the 64-bit pair works in steps of 32 bits, the first of which is always a whole one.
	// With a count below 32 the cursor comes out right and the value wrong.
	bool read_bits_to_uint32(unsigned int& out, int count);
	bool read_bits_to_uint64(unsigned long long& out, int count);

	// Appends `count` bits of another buffer from that one's cursor on, whether or not its size
	// has as many. The second form moves the source's cursor by `count`, the first leaves it.
	//
	// kept: where both cursors stand at whole bytes the copy is by bytes, and the last byte comes
	// over whole, so bits of the source past `count` arrive behind the cursor.
	void append_bits_const(const Dynamic_bit_buffer* source, unsigned int count);
	void append_bits(Dynamic_bit_buffer* source, int count);

	// Inline storage. First in the object: `buffer` points here until the storage has grown.
	unsigned char static_buffer[1408];
	// Room for the span of the last bits of static_buffer; holds nothing of meaning.
	unsigned char static_buffer_slack[8];
	unsigned char* dynamic_buffer; // owned heap block, or null; freed by the destructor alone
	// A QoNetRawBuffer in all but name: these two stay side by side.
	int capacity_in_bits;  // of the current storage; at least 11264, never falls
	unsigned char* buffer; // the current storage: static_buffer, or dynamic_buffer when that is set
	// The caller's; only initialised and copied here.
	udp_packet_id packet_id;
	unsigned char user_block[24]; // the first 8 bytes start as zero, the others unset
	int user_int_a;               // starts as -1
	int user_int_b;               // starts as 0
	int user_int_c;               // starts as 0

	int cursor_in_bits; // next bit to read or write
	int size_in_bits;   // number of valid bits

protected:
	// Appends `count` bits of `data`, which has (count + 7) / 8 bytes.
	//
	// kept: at a cursor on a whole byte the bytes are copied whole, and cursor and size grow by
	// whole bytes; elsewhere they grow by `count`, and the last byte is not masked.
	void append_bits_from_array(const unsigned char* data, int count);
	// Reads `count` bits into `data`, (count + 7) / 8 bytes. False past the size, with nothing
	// changed. The cursor moves by `count` in all cases.
	bool read_bits_from_array(unsigned char* data, int count);

private:
	friend class Read_bit_buffer;
	friend class Write_bit_buffer;

	// Bytes behind each storage. A span is 8 bytes long and begins at the latest right behind the
	// storage: a field of 0 bits at its end, or the upper step of one of 32 bits that ends there.
	static const int slack_in_bytes = 8;

	// A span is the 8 bytes from the cursor's 32-bit word on. Any field of up to 32 bits lies
	// within one, so a transfer is shifts and masks of it, without a branch.
	//
	// A span is written as its two words. The next field begins in one of them, and loading what
	// was stored with the same address and width costs next to nothing, while an access over a
	// store in flight and older memory waits for that store to retire: 0.41 of the time of one
	// 64-bit load and store. Compilers join neighbouring accesses where nothing stands between
	// them, so cursor and size, which the storage may overlap for all that they know, are moved
	// between the words and apart from each other.
	static void append_bits_from_uint32_impl(unsigned char* data, int& cursor, int& size,
	                                         unsigned int value, int count);
	static void read_bits_to_uint32_impl(const unsigned char* data, int& cursor, unsigned int& out,
	                                     int count);
	static void append_bits_from_uint64_impl(unsigned char* data, int& cursor, int& size,
	                                         unsigned long long value, int count);
	static void read_bits_to_uint64_impl(const unsigned char* data, int& cursor,
	                                     unsigned long long& out, int count);

	static unsigned int load_32(const unsigned char* from);
	static unsigned long long load_64(const unsigned char* from);
	static void store_32(unsigned char* to, unsigned int value);
	static void store_64(unsigned char* to, unsigned long long value);
	// A number with its `count` low bits set; counts outside 0 to 63 are taken modulo 64.
	static unsigned long long low_bits(int count);
	static size_t word_offset(int cursor) {
		return static_cast<size_t>(static_cast<unsigned int>(cursor) / 32) * 4;
	}
	static unsigned int word_shift(int cursor) { return static_cast<unsigned int>(cursor) % 32; }
	static size_t byte_offset(int cursor) { return static_cast<unsigned int>(cursor) / 8; }
	static int wrapping_sum(int a, int b) {
		return static_cast<int>(static_cast<unsigned int>(a) + static_cast<unsigned int>(b));
	}
	static int wrapping_difference(int a, int b) {
		return static_cast<int>(static_cast<unsigned int>(a) - static_cast<unsigned int>(b));
	}

	bool has_bits(int count) const { return size_in_bits >= wrapping_sum(cursor_in_bits, count); }
	void append_copied_bits(const Dynamic_bit_buffer* source, unsigned int count);
	static void append_unaligned_bytes(unsigned char* to, unsigned int shift,
	                                   const unsigned char* from, size_t byte_count);
	static void read_unaligned_bytes(const unsigned char* from, unsigned int shift,
	                                 unsigned char* to, size_t byte_count);
	void advance(int bits);
	void copy_from(const Dynamic_bit_buffer& source);
	void resize_capacity_in_bits(int bits);
};

static_assert(sizeof(Dynamic_bit_buffer::static_buffer) == 1408);
static_assert(offsetof(Dynamic_bit_buffer, static_buffer) == 0);
static_assert(offsetof(Dynamic_bit_buffer, buffer) ==
              offsetof(Dynamic_bit_buffer, capacity_in_bits) + 8);

inline unsigned int Dynamic_bit_buffer::load_32(const unsigned char* from) {
	unsigned int value;
	std::memcpy(&value, from, sizeof(value));
	return value;
}

inline unsigned long long Dynamic_bit_buffer::load_64(const unsigned char* from) {
	unsigned long long value;
	std::memcpy(&value, from, sizeof(value));
	return value;
}

inline void Dynamic_bit_buffer::store_32(unsigned char* to, unsigned int value) {
	std::memcpy(to, &value, sizeof(value));
}

inline void Dynamic_bit_buffer::store_64(unsigned char* to, unsigned long long value) {
	std::memcpy(to, &value, sizeof(value));
}

inline unsigned long long Dynamic_bit_buffer::low_bits(int count) {
	return (1ull << (static_cast<unsigned int>(count) % 64)) - 1;
}

MORVANTIS_FORCE_INLINE void Dynamic_bit_buffer::append_bits_from_uint32_impl(unsigned char* data,
                                                                             int& cursor, int& size,
                                                                             unsigned int value,
                                                                             int count) {
	unsigned char* const span = data + word_offset(cursor);
	const unsigned int shift = word_shift(cursor);
	cursor = wrapping_sum(cursor, count);
	const unsigned long long field = static_cast<unsigned long long>(value) << shift;
	const unsigned long long kept = ~(low_bits(count) << shift);
	const unsigned int low = load_32(span) & static_cast<unsigned int>(kept);
	const unsigned int high = load_32(span + 4) & static_cast<unsigned int>(kept >> 32);
	store_32(span, low | static_cast<unsigned int>(field));
	size = wrapping_sum(size, count);
	store_32(span + 4, high | static_cast<unsigned int>(field >> 32));
}

MORVANTIS_FORCE_INLINE void Dynamic_bit_buffer::read_bits_to_uint32_impl(const unsigned char* data,
                                                                         int& cursor,
                                                                         unsigned int& out,
                                                                         int count) {
	const int position = cursor;
	cursor = wrapping_sum(position, count);
	out = static_cast<unsigned int>(load_64(data + word_offset(position)) >> word_shift(position)) &
	      static_cast<unsigned int>(low_bits(count));
}

// Both steps at once: they share the middle word, in which the lower one ends at bit `shift` and
// the upper one begins there.
MORVANTIS_FORCE_INLINE void
Dynamic_bit_buffer::append_bits_from_uint64_impl(unsigned char* data, int& cursor, int& size,
                                                 unsigned long long value, int count) {
	unsigned char* const span = data + word_offset(cursor);
	const unsigned int shift = word_shift(cursor);
	const unsigned long long lower = (value & 0xFFFFFFFFu) << shift;
	const unsigned long long upper = (value >> 32) << shift;
	const unsigned long long kept = ~(low_bits(wrapping_difference(count, 32)) << shift);
	const unsigned int below = (1u << shift) - 1;
	const unsigned int low = load_32(span) & below;
	const unsigned int middle = load_32(span + 4) & static_cast<unsigned int>(kept) & ~below;
	const unsigned int high = load_32(span + 8) & static_cast<unsigned int>(kept >> 32);
	store_32(span, low | static_cast<unsigned int>(lower));
	cursor = wrapping_sum(cursor, count);
	store_32(span + 4, middle | static_cast<unsigned int>(lower >> 32 | upper));
	size = wrapping_sum(size, count);
	store_32(span + 8, high | static_cast<unsigned int>(upper >> 32));
}

MORVANTIS_FORCE_INLINE void Dynamic_bit_buffer::read_bits_to_uint64_impl(const unsigned char* data,
                                                                         int& cursor,
                                                                         unsigned long long& out,
                                                                         int count) {
	const int position = cursor;
	const unsigned char* const span = data + word_offset(position);
	const unsigned int shift = word_shift(position);
	const unsigned long long low = (load_64(span) >> shift) & 0xFFFFFFFFu;
	const unsigned long long high =
		(load_64(span + 4) >> shift) & low_bits(wrapping_difference(count, 32)) & 0xFFFFFFFFu;
	cursor = wrapping_sum(position, count);
	out = (high << 32) | low;
}

MORVANTIS_FORCE_INLINE void Dynamic_bit_buffer::append_bits_from_uint32(unsigned int value,
                                                                        int count) {
	append_bits_from_uint32_impl(buffer, cursor_in_bits, size_in_bits, value, count);
}

MORVANTIS_FORCE_INLINE void Dynamic_bit_buffer::append_bits_from_uint64(unsigned long long value,
                                                                        int count) {
	append_bits_from_uint64_impl(buffer, cursor_in_bits, size_in_bits, value, count);
}

MORVANTIS_FORCE_INLINE bool Dynamic_bit_buffer::read_bits_to_uint32(unsigned int& out, int count) {
	if (!has_bits(count)) return false;
	read_bits_to_uint32_impl(buffer, cursor_in_bits, out, count);
	return true;
}

MORVANTIS_FORCE_INLINE bool Dynamic_bit_buffer::read_bits_to_uint64(unsigned long long& out,
                                                                    int count) {
	if (!has_bits(count)) return false;
	read_bits_to_uint64_impl(buffer, cursor_in_bits, out, count);
	return true;
}

inline void Dynamic_bit_buffer::guarantee_capacity_in_bits(int bits) {
	if (bits > static_buffer_size_in_bits && capacity_in_bits < bits) {
		resize_capacity_in_bits(bits);
	}
}

inline void Dynamic_bit_buffer::clear() {
	cursor_in_bits = 0;
	size_in_bits = 0;
	std::memset(buffer, 0, byte_offset(capacity_in_bits));
}

inline void Dynamic_bit_buffer::initialize_after_read(int byte_count) {
	cursor_in_bits = 0;
	size_in_bits = static_cast<int>(static_cast<unsigned int>(byte_count) * 8);
}

inline void Dynamic_bit_buffer::increment_cursor_and_size_in_bits(int bits) {
	cursor_in_bits = wrapping_sum(cursor_in_bits, bits);
	size_in_bits = wrapping_sum(size_in_bits, bits);
}

inline int Dynamic_bit_buffer::compute_bit_count_to_skip_to_next_byte(int position) {
	return static_cast<int>(-static_cast<unsigned int>(position) % 8);
}

inline int Dynamic_bit_buffer::compute_bit_count_to_skip_to_next_byte() const {
	return compute_bit_count_to_skip_to_next_byte(cursor_in_bits);
}
