#include "page.h"

#include "recording.h" // load_file

#include <morvantis/io/xylnative_file.h>

#include <cstdlib>
#include <string_view>

// Part of stb_image_write, which declares it for itself alone.
extern "C" unsigned char* stbi_zlib_compress(unsigned char* data, int size, int* compressed_size,
                                             int quality);

namespace {

constexpr std::string_view data_mark = "@DATA@";

std::string in_base64(const unsigned char* data, size_t size) {
	constexpr char letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
	std::string text;
	text.reserve(size / 3 * 4 + 4);
	for (size_t i = 0; i < size; i += 3) {
		unsigned int bits = 0;
		for (size_t j = i; j < i + 3; ++j) bits = bits << 8 | (j < size ? data[j] : 0u);
		for (size_t j = 0; j < 4; ++j)
			text += i + j <= size ? letters[bits >> (18 - 6 * j) & 63] : '=';
	}
	return text;
}

} // namespace

bool write_page(const std::string& page, const unsigned char* data, size_t size,
                const std::string& path, size_t* written) {
	xylBuffer file;
	if (!load_file(page, &file)) return false;
	std::string text(reinterpret_cast<const char*>(file.get_buffer_from_start()),
	                 static_cast<size_t>(file.get_length()));
	const size_t at = text.find(data_mark);
	if (at == std::string::npos) return false;
	int compressed_size = 0;
	// It only reads the data.
	unsigned char* compressed = stbi_zlib_compress(const_cast<unsigned char*>(data),
	                                               static_cast<int>(size), &compressed_size, 8);
	text.replace(at, data_mark.size(), in_base64(compressed, static_cast<size_t>(compressed_size)));
	std::free(compressed);
	xylNative_file out;
	if (!out.open(path.c_str(), xylFile_access_write, xylFile_flag_create_always)) return false;
	*written = text.size();
	return out.write(text.data(), text.size()) == text.size() && out.close();
}
