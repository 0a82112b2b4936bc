// The bit stream told bit by bit, as slow and plain as it gets, for comparison with the real one.
#pragma once

#include <morvantis/net/dynamic_bit_buffer.h>

#include <algorithm>
#include <string>
#include <vector>

// A test's way to what a bit buffer keeps for the classes derived from it.
struct Open_bit_buffer : Dynamic_bit_buffer {
	using Dynamic_bit_buffer::append_bits_from_array;
	using Dynamic_bit_buffer::Dynamic_bit_buffer;
	using Dynamic_bit_buffer::read_bits_from_array;
};

inline std::string hex_of(const unsigned char* bytes, size_t count) {
	static constexpr char digits[] = "0123456789ABCDEF";
	std::string text;
	for (size_t i = 0; i < count; ++i) {
		if (i != 0) text += ' ';
		text += {digits[bytes[i] / 16], digits[bytes[i] % 16]};
	}
	return text;
}

inline std::string hex_of(const Dynamic_bit_buffer& buffer) {
	return hex_of(buffer.get_buffer(), static_cast<size_t>(buffer.size_in_bytes()));
}

// Every bit is an element of its own; bits past the capacity stand for what lies behind.
class Bit_stream_model {
public:
	static constexpr int static_bits = 11264;

	bool bit(int position) const { return bits_[static_cast<size_t>(position)] != 0; }
	void set_bit(int position, bool value) { bits_[static_cast<size_t>(position)] = value; }

	void append_32(unsigned int value, int count) {
		for (int i = 0; i < 32; ++i) {
			const bool one = (value >> i & 1) != 0;
			// Bits of the value above its field are ORed into what follows.
			set_bit(cursor + i, i < count ? one : one || bit(cursor + i));
		}
		cursor += count;
		size += count;
	}

	void append_64(unsigned long long value, int count) {
		append_32(static_cast<unsigned int>(value), 32);
		append_32(static_cast<unsigned int>(value >> 32), count - 32);
	}

	bool read(unsigned long long& out, int count) {
		if (size < cursor + count) return false;
		out = 0;
		for (int i = 0; i < count; ++i) {
			out |= static_cast<unsigned long long>(bit(cursor + i)) << i;
		}
		cursor += count;
		return true;
	}

	void append_array(const unsigned char* data, int count) {
		const bool by_bytes = cursor % 8 == 0;
		for (int done = 0; done < count; done += 8) {
			const int piece = by_bytes ? 8 : std::min(count - done, 8);
			append_32(data[done / 8], piece);
		}
	}

	bool read_array(unsigned char* data, int count) {
		if (size < cursor + count) return false;
		const int end = cursor + count;
		const bool by_bytes = cursor % 8 == 0;
		for (int done = 0; done < count; done += 8) {
			const int piece = by_bytes ? 8 : std::min(count - done, 8);
			data[done / 8] = 0;
			for (int i = 0; i < piece; ++i) {
				data[done / 8] |= static_cast<unsigned char>(bit(cursor + done + i) << i);
			}
		}
		cursor = end;
		return true;
	}

	void append_from(const Bit_stream_model& source, int count) {
		const bool by_bytes = cursor % 8 == 0 && source.cursor % 8 == 0;
		const int copied = by_bytes ? (count + 7) / 8 * 8 : count;
		for (int i = 0; i < copied; ++i) set_bit(cursor + i, source.bit(source.cursor + i));
		cursor += count;
		size += count;
	}

	void skip(int count) {
		guarantee(cursor + count);
		cursor += count;
		size = std::max(size, cursor);
	}

	void guarantee(int bits) {
		if (bits <= static_bits || bits <= capacity) return;
		capacity = (bits + 63) / 64 * 64;
		// Only the bytes up to the size come along.
		bits_.resize(static_cast<size_t>((size + 7) / 8 * 8));
		bits_.resize(static_cast<size_t>(capacity + behind));
	}

	void clear() {
		cursor = size = 0;
		erase_from(0);
	}

	void shrink(int bits) {
		size = bits;
		cursor = std::min(cursor, bits);
		erase_from(cursor);
	}

	void copy_from(const Bit_stream_model& source) {
		guarantee(source.capacity);
		std::copy_n(source.bits_.begin(), source.capacity, bits_.begin());
		cursor = source.cursor;
		size = source.size;
	}

	// Empty when `buffer` has the same fields and the same bytes over its whole capacity.
	std::string difference(const Dynamic_bit_buffer& buffer) const {
		if (buffer.get_cursor_in_bits() != cursor)
			return difference("cursor", buffer.get_cursor_in_bits(), cursor);
		if (buffer.get_size_in_bits() != size)
			return difference("size", buffer.get_size_in_bits(), size);
		if (buffer.capacity_in_bits != capacity)
			return difference("capacity", buffer.capacity_in_bits, capacity);
		for (int i = 0; i < capacity / 8; ++i) {
			int byte = 0;
			for (int k = 0; k < 8; ++k) byte |= bit(i * 8 + k) << k;
			if (buffer.get_buffer()[i] != byte) {
				return difference("byte " + std::to_string(i), buffer.get_buffer()[i], byte);
			}
		}
		return {};
	}

	int cursor = 0;
	int size = 0;
	int capacity = static_bits;

private:
	static constexpr int behind = 128;

	static std::string difference(const std::string& what, int seen, int expected) {
		return what + " is " + std::to_string(seen) + " and not " + std::to_string(expected);
	}
	void erase_from(int position) {
		std::fill(bits_.begin() + position, bits_.begin() + std::max(position, capacity), 0);
	}

	std::vector<unsigned char> bits_ = std::vector<unsigned char>(static_bits + behind);
};
