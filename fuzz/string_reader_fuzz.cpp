// The reader of texts from outside: any order of reads over any bytes must stay inside the text,
// and what it calls read must be what the text's own tokens say.

#include "input.h"

#include <morvantis/io/zubunsanitizedstring_reader.h>
#include <morvantis/math/xylint_vec3.h>

#include <cstdint>

namespace {

// A number token of twenty characters ends the process, and a long length makes a long string: both
// are told, not found.
bool is_within_the_contract(const char* bytes, int count) {
	int run = 0;
	for (int i = 0; i < count; ++i) {
		const char c = bytes[i];
		run = (c >= '0' && c <= '9') || c == '+' || c == '-' ? run + 1 : 0;
		if (run == 6) return false;
	}
	return true;
}

template <typename Value> void read_one(zubUnsanitizedString_reader& reader, Value before) {
	Value value = before;
	if (!reader.read(value)) require(value == before);
}

void read_by(zubUnsanitizedString_reader& reader, unsigned char choice) {
	switch (choice % 8) {
	case 0:
		return read_one(reader, 77);
	case 1:
		return read_one(reader, 78u);
	case 2:
		return read_one(reader, xylInt64{79});
	case 3:
		return read_one(reader, xylUInt64{80});
	case 4:
		return read_one(reader, true);
	case 5: {
		float value = 1;
		return require(reader.read(value));
	}
	case 6: {
		xylInt_vec3 value(1, 2, 3);
		reader.read(value);
		return;
	}
	default: {
		xylVarString value("before");
		reader.read(value);
		return require(value.is_valid());
	}
	}
}

} // namespace

// The choices are of what is read, the rest is the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
	const Parted_input input(data, size);
	if (!is_within_the_contract(input.rest, input.rest_size)) return 0;
	xylVarString text(input.rest, input.rest_size);
	zubUnsanitizedString_reader reader(text);
	for (const std::uint8_t choice : input.choices) {
		reader.has_unread_data();
		const int before = reader.source.get_cursor_position();
		read_by(reader, choice);
		require(reader.source.get_cursor_position() >= before);
	}
	return 0;
}
