// What bit packing is measured against: three packers with the same interface and the same bytes.
#pragma once

#include <morvantis/net/read_bit_buffer.h>
#include <morvantis/net/write_bit_buffer.h>

#include <cstring>

// Each span is one plain 64-bit load, and a store for a write.
struct Plain_kernel {
	MORVANTIS_FORCE_INLINE void put(unsigned int value, int count) {
		unsigned char* span = data + static_cast<unsigned int>(cursor) / 32 * 4;
		const unsigned int shift = static_cast<unsigned int>(cursor) % 32;
		const unsigned long long mask = ((1ull << count) - 1) << shift;
		cursor += count;
		unsigned long long bits;
		std::memcpy(&bits, span, 8);
		bits = (bits & ~mask) | static_cast<unsigned long long>(value) << shift;
		std::memcpy(span, &bits, 8);
		size += count;
	}
	MORVANTIS_FORCE_INLINE bool get(unsigned int& value, int count) {
		if (size < cursor + count) return false;
		const unsigned char* span = data + static_cast<unsigned int>(cursor) / 32 * 4;
		unsigned long long bits;
		std::memcpy(&bits, span, 8);
		value = static_cast<unsigned int>(bits >> (static_cast<unsigned int>(cursor) % 32)) &
		        static_cast<unsigned int>((1ull << count) - 1);
		cursor += count;
		return true;
	}
	void put_bytes(const unsigned char* bytes, int count) {
		if (cursor % 8 == 0) {
			std::memcpy(data + cursor / 8, bytes, static_cast<size_t>(count));
			cursor += count * 8;
			size += count * 8;
			return;
		}
		for (; count >= 4; count -= 4, bytes += 4) {
			unsigned int word;
			std::memcpy(&word, bytes, 4);
			put(word, 32);
		}
		for (; count > 0; --count) put(*bytes++, 8);
	}
	bool get_bytes(unsigned char* bytes, int count) {
		if (size < cursor + count * 8) return false;
		if (cursor % 8 == 0) {
			std::memcpy(bytes, data + cursor / 8, static_cast<size_t>(count));
			cursor += count * 8;
			return true;
		}
		unsigned int word = 0;
		for (; count >= 4; count -= 4, bytes += 4) {
			get(word, 32);
			std::memcpy(bytes, &word, 4);
		}
		for (; count > 0; --count) {
			get(word, 8);
			*bytes++ = static_cast<unsigned char>(word);
		}
		return true;
	}

	unsigned char* data;
	int cursor = 0;
	int size = 0;
};

// What the two loops below share: their place, and arrays as fields of 8 bits one after another.
template <typename Loop> struct Field_loop {
	void put_bytes(const unsigned char* bytes, int count) {
		for (int i = 0; i < count; ++i) static_cast<Loop*>(this)->put(bytes[i], 8);
	}
	bool get_bytes(unsigned char* bytes, int count) {
		if (size < cursor + count * 8) return false;
		for (int i = 0; i < count; ++i) {
			unsigned int byte = 0;
			static_cast<Loop*>(this)->get(byte, 8);
			bytes[i] = static_cast<unsigned char>(byte);
		}
		return true;
	}

	unsigned char* data;
	int cursor = 0;
	int size = 0;
};

// A loop over the bits of the field.
struct Bit_loop : Field_loop<Bit_loop> {
	void put(unsigned int value, int count) {
		for (int i = 0; i < count; ++i, ++cursor) {
			const unsigned char bit = static_cast<unsigned char>(1 << cursor % 8);
			unsigned char& byte = data[cursor / 8];
			byte = static_cast<unsigned char>(value >> i & 1 ? byte | bit : byte & ~bit);
		}
		size += count;
	}
	bool get(unsigned int& value, int count) {
		if (size < cursor + count) return false;
		value = 0;
		for (int i = 0; i < count; ++i, ++cursor) {
			value |= static_cast<unsigned int>(data[cursor / 8] >> cursor % 8 & 1) << i;
		}
		return true;
	}
};

// A loop over the bytes that the field touches.
struct Byte_loop : Field_loop<Byte_loop> {
	void put(unsigned int value, int count) {
		size += count;
		while (count > 0) {
			const int shift = cursor % 8;
			const int taken = count < 8 - shift ? count : 8 - shift;
			const unsigned int mask = ((1u << taken) - 1) << shift;
			unsigned char& byte = data[cursor / 8];
			byte = static_cast<unsigned char>((byte & ~mask) | (value << shift & mask));
			value >>= taken;
			cursor += taken;
			count -= taken;
		}
	}
	bool get(unsigned int& value, int count) {
		if (size < cursor + count) return false;
		value = 0;
		for (int done = 0; done < count;) {
			const int shift = cursor % 8;
			const int taken = count - done < 8 - shift ? count - done : 8 - shift;
			value |= (static_cast<unsigned int>(data[cursor / 8]) >> shift & ((1u << taken) - 1))
			         << done;
			done += taken;
			cursor += taken;
		}
		return true;
	}
};

// The codecs over one of the packers above, as plain as Write_bit_buffer and Read_bit_buffer would
// be; the infos are constants of the caller in both.
template <typename Packer> struct Plain_buffer {
	static constexpr int capacity = 1408;

	void start_writing() {
		packer.data = storage;
		packer.cursor = packer.size = 0;
	}
	void start_reading() {
		packer.data = storage;
		packer.cursor = 0;
	}
	MORVANTIS_FORCE_INLINE void put_64(unsigned long long value, int count) {
		packer.put(static_cast<unsigned int>(value), 32);
		packer.put(static_cast<unsigned int>(value >> 32), count - 32);
	}
	MORVANTIS_FORCE_INLINE bool get_64(unsigned long long& value, int count) {
		if (packer.size < packer.cursor + count) return false;
		unsigned int low = 0, high = 0;
		packer.get(low, 32);
		packer.get(high, count - 32);
		value = low | static_cast<unsigned long long>(high) << 32;
		return true;
	}
	MORVANTIS_FORCE_INLINE bool serial_op(int value, const Integer_compression_info& info) {
		packer.put(static_cast<unsigned int>(value) - static_cast<unsigned int>(info.min_value),
		           info.bit_count);
		return true;
	}
	MORVANTIS_FORCE_INLINE bool read_op(int& value, const Integer_compression_info& info) {
		unsigned int raw;
		if (!packer.get(raw, info.bit_count)) return false;
		value = static_cast<int>(raw + static_cast<unsigned int>(info.min_value));
		return info.min_value <= value && value <= info.max_value;
	}
	MORVANTIS_FORCE_INLINE bool serial_op(long long value, const Integer64_compression_info& info) {
		put_64(static_cast<unsigned long long>(value) -
		           static_cast<unsigned long long>(info.min_value),
		       info.bit_count);
		return true;
	}
	MORVANTIS_FORCE_INLINE bool read_op(long long& value, const Integer64_compression_info& info) {
		unsigned long long raw;
		if (!get_64(raw, info.bit_count)) return false;
		value = static_cast<long long>(raw + static_cast<unsigned long long>(info.min_value));
		return info.min_value <= value && value <= info.max_value;
	}
	MORVANTIS_FORCE_INLINE bool serial_op_float(float value, const Float_compression_info& info) {
		unsigned int raw;
		if (info.precision == 0.0f) {
			std::memcpy(&raw, &value, 4);
		} else {
			raw = static_cast<unsigned int>(
				static_cast<int>((value - info.min_value) / info.precision + 0.5f));
		}
		packer.put(raw, info.bit_count);
		return true;
	}
	MORVANTIS_FORCE_INLINE bool read_op_float(float& value, const Float_compression_info& info) {
		unsigned int raw;
		if (!packer.get(raw, info.bit_count)) return false;
		if (info.precision == 0.0f) {
			std::memcpy(&value, &raw, 4);
			return true;
		}
		value = static_cast<float>(raw) * info.precision + info.min_value;
		return !(value > info.max_value) && value >= info.min_value;
	}
	bool serial_op_byte_array(const unsigned char* bytes, int count) {
		packer.put(static_cast<unsigned int>(count), 11);
		packer.put_bytes(bytes, count);
		return true;
	}
	bool read_op_byte_array(unsigned char* bytes, int max_count, int& count) {
		unsigned int length;
		if (!packer.get(length, 11)) return false;
		count = static_cast<int>(length);
		return count <= max_count && packer.get_bytes(bytes, count);
	}

	alignas(16) unsigned char storage[capacity + 16] = {};
	Packer packer;
};

// Ours, under the same names.
struct Our_buffer {
	void start_writing() { buffer.rewind(), buffer.size_in_bits = 0; }
	void start_reading() { buffer.rewind(); }
	bool serial_op(int value, const Integer_compression_info& info) {
		return writer().serial_op(value, info);
	}
	bool read_op(int& value, const Integer_compression_info& info) {
		return reader().serial_op(value, info);
	}
	bool serial_op(long long value, const Integer64_compression_info& info) {
		return writer().serial_op(value, info);
	}
	bool read_op(long long& value, const Integer64_compression_info& info) {
		return reader().serial_op(value, info);
	}
	bool serial_op_float(float value, const Float_compression_info& info) {
		return writer().serial_op_float(value, info);
	}
	bool read_op_float(float& value, const Float_compression_info& info) {
		return reader().serial_op_float(value, info);
	}
	bool serial_op_byte_array(const unsigned char* bytes, int count) {
		return writer().serial_op_byte_array(bytes, count);
	}
	bool read_op_byte_array(unsigned char* bytes, int max_count, int& count) {
		return reader().serial_op_byte_array(bytes, max_count, count);
	}

	Write_bit_buffer& writer() { return buffer.as_write_bit_buffer(); }
	Read_bit_buffer& reader() { return buffer.as_read_bit_buffer(); }
	Dynamic_bit_buffer buffer;
};
