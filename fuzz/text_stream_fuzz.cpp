// The readers of a text stream in any order over any bytes: nothing may be read outside, each must
// move on, what is read must be the same a second time, and numbers must be what the plain model
// reads.

#include "../tests/io/text_reader_model.h"
#include "../tests/support/silent_host.h"
#include "input.h"

#include <morvantis/core/zublibrary.h>
#include <morvantis/io/xylio_text_stream.h>
#include <morvantis/math/xylint_vec3.h>
#include <morvantis/math/xylquaternion.h>
#include <morvantis/strings/xylconststring.h>

#include <cstdint>
#include <cstring>
#include <iterator>

namespace {

template <typename Value> void read_number(xylIO_text_stream& stream) {
	Text_reader_model model(stream.buffer);
	require(reads_alike<Value>(stream, model));
}

template <typename Value> void read_twice(xylIO_text_stream& stream) {
	const int start = stream.buffer.get_cursor_position();
	Value first{};
	stream >> first;
	const int end = stream.buffer.get_cursor_position();
	require(end >= start);
	stream.buffer.reset_cursor(start);
	Value second{};
	stream >> second;
	require(stream.buffer.get_cursor_position() == end);
	if constexpr (requires { first == second; }) {
		require(first == second);
	} else {
		require(std::memcmp(&first, &second, sizeof(first)) == 0);
	}
}

void read_stream(xylIO_text_stream& stream) {
	xylIO_text_stream target;
	stream >> target;
	require(target.buffer.is_valid());
}

void (*const readers[])(xylIO_text_stream&) = {
	read_number<char>,
	read_number<unsigned char>,
	read_number<short>,
	read_number<unsigned short>,
	read_number<int>,
	read_number<unsigned int>,
	read_number<xylInt64>,
	read_number<xylUInt64>,
	read_number<bool>,
	read_number<float>,
	read_number<double>,
	read_twice<xylVarString>,
	read_twice<xylConstString<64>>,
	read_twice<xylInt_vec3>,
	read_twice<xylQuaternion>,
	read_stream,
};

} // namespace

// The end of the data is reported, and goes on with empty tokens.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
	static Silent_host host;
	zubLibrary::initialize(&host, nullptr);
	return 0;
}

// The choices are of readers, the rest is the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
	const Parted_input input(data, size);
	xylIO_text_stream stream;
	stream.buffer.push_back(input.rest, static_cast<unsigned int>(input.rest_size));
	for (const std::uint8_t choice : input.choices) readers[choice % std::size(readers)](stream);
	return 0;
}
