// A reader of a binary stream from outside, which asks eof() and how much there is before it reads,
// as the contract wants it: then any bytes may come, nothing is read outside them, and each value
// is the bytes at the cursor.

#include "input.h"

#include <morvantis/io/xylio_binary_stream.h>
#include <morvantis/math/xylquaternion.h>
#include <morvantis/strings/xylconststring.h>

#include <cstdint>
#include <cstring>
#include <iterator>

namespace {

unsigned int unread(const xylIO_binary_stream& stream) {
	return static_cast<unsigned int>(stream.buffer.length()) - stream.get_cursor();
}

// Each reader is called with at least one byte left, and gives the place behind what it read.

template <typename Value> unsigned int read_value(xylIO_binary_stream& stream) {
	if (unread(stream) < sizeof(Value)) return stream.get_cursor();
	unsigned char bytes[sizeof(Value)];
	std::memcpy(bytes, stream.get_cursor_pointer(), sizeof(Value));
	const unsigned int end = stream.get_cursor() + static_cast<unsigned int>(sizeof(Value));
	Value value{};
	stream >> value;
	if constexpr (std::is_same_v<Value, bool>) {
		require(value == (bytes[0] != 0));
	} else {
		require(std::memcmp(&value, bytes, sizeof(Value)) == 0);
	}
	return end;
}

// The length in front of a text or a stream, if all that it promises is there.
bool has_counted_bytes(const xylIO_binary_stream& stream, unsigned int* count) {
	if (unread(stream) < sizeof(*count)) return false;
	std::memcpy(count, stream.get_cursor_pointer(), sizeof(*count));
	return *count <= unread(stream) - sizeof(*count);
}

template <typename Target, typename Read>
unsigned int read_counted(xylIO_binary_stream& stream, Target& target, Read content_of) {
	unsigned int count;
	if (!has_counted_bytes(stream, &count)) return stream.get_cursor();
	const unsigned int start = stream.get_cursor() + 4;
	stream >> target;
	const xylVarString& content = content_of(target);
	require(content.is_valid() && content.length() == static_cast<int>(count));
	require(std::memcmp(content.char_p(), stream.buffer.char_p() + start, count) == 0);
	require(content.char_p()[count] == 0);
	return start + count;
}

unsigned int read_text(xylIO_binary_stream& stream) {
	xylVarString target("before");
	return read_counted(stream, target, [](const xylVarString& t) -> auto& { return t; });
}

unsigned int read_stream(xylIO_binary_stream& stream) {
	xylIO_binary_stream target("before", 6);
	return read_counted(stream, target,
	                    [](const xylIO_binary_stream& t) -> auto& { return t.buffer; });
}

// A text of 64 characters is refused with a warning, which needs a host: read only shorter ones.
unsigned int read_fixed_text(xylIO_binary_stream& stream) {
	unsigned int count;
	if (!has_counted_bytes(stream, &count) || count > 63) return stream.get_cursor();
	const unsigned int start = stream.get_cursor() + 4;
	xylConstString<64> text("before");
	stream >> text;
	require(text == xylVarString(stream.buffer.char_p() + start, static_cast<int>(count)).char_p());
	return start + count;
}

unsigned int consume(xylIO_binary_stream& stream) {
	xylIO_binary_stream target;
	target.read_consume(stream);
	require(stream.eof() && target.buffer.is_valid());
	return static_cast<unsigned int>(stream.buffer.length());
}

unsigned int (*const readers[])(xylIO_binary_stream&) = {
	read_value<char>,
	read_value<unsigned char>,
	read_value<short>,
	read_value<unsigned short>,
	read_value<int>,
	read_value<unsigned int>,
	read_value<xylInt64>,
	read_value<xylUInt64>,
	read_value<bool>,
	read_value<float>,
	read_value<xylQuaternion>,
	read_text,
	read_stream,
	read_fixed_text,
	consume,
};

} // namespace

// The choices are of readers, the rest is the data.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
	const Parted_input input(data, size);
	xylIO_binary_stream stream(input.rest, input.rest_size);
	for (const std::uint8_t choice : input.choices) {
		if (stream.eof()) break;
		const unsigned int end = readers[choice % std::size(readers)](stream);
		require(stream.get_cursor() == end);
		require(stream.eof() == (end == static_cast<unsigned int>(stream.buffer.length())));
	}
	return 0;
}
