// Text resources of any bytes: they must become what the rule says byte by byte, nothing outside
// the text may be touched, and the walk must deliver the tokens.

#include "input.h"

#include <morvantis/io/resource_text.h>
#include <morvantis/io/xylbuffer.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace {

Resource_text_flaws prepare_plainly(std::vector<xylUInt8>& text) {
	Resource_text_flaws flaws;
	for (xylUInt8& byte : text) {
		const xylUInt8 c = byte;
		if (c == ',') {
			flaws.has_comma = true;
			byte = '.';
		} else if (c < 33 || c > 127) {
			if (std::memchr("\0\t\n\r ", c, 5) == nullptr) flaws.last_bad_byte = c;
			byte = 0;
		}
	}
	return flaws;
}

// The text must begin with a separator, so that the walk delivers its first token.
void walk(const std::vector<xylUInt8>& text) {
	xylBuffer buffer;
	buffer.write_void(text.data(), text.size());
	buffer.write_void("\0end", 5); // with its terminator: the walk knows no other end
	buffer.rewind();
	for (std::size_t i = 1; i < text.size(); ++i) {
		const bool is_start = text[i] != 0 && text[i - 1] == 0;
		if (!is_start) continue;
		const char* token = buffer.next_string();
		require(token == reinterpret_cast<const char*>(buffer.data) + i);
		require(buffer == token);
	}
	require(std::strcmp(buffer.next_string(), "end") == 0);
	buffer.rewind();
	buffer.next_int();
	buffer.rewind();
	buffer.next_uint();
	buffer.rewind();
	buffer.next_float();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
	if (size == 0) return 0;
	std::vector<xylUInt8> text(data, data + size);
	text[0] = ' ';
	std::vector<xylUInt8> plain = text;
	require(prepare_resource_text(text.data(), text.size()) == prepare_plainly(plain));
	require(text == plain);
	walk(text);
	return 0;
}
