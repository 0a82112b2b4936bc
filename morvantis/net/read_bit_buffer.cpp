#include <morvantis/net/read_bit_buffer.h>

bool Read_bit_buffer::read_bytes_or_zeros(unsigned char* data, int byte_count) {
	if (read_bits_from_array(data, byte_count * 8)) return true;
	std::memset(data, 0, static_cast<size_t>(byte_count));
	return false;
}
