// Reads values of foreign tables, byte by byte within their bounds.
#pragma once

#include <morvantis/core/xyltypes.h>

#include <cstring>

namespace os {

// Goes through bytes from `position` to `end`. What doesn't fit reads as 0, leaves the reader at
// the end and sets `failed` for good, so a run of reads needs one question behind it.
struct Byte_reader {
	const unsigned char* position;
	const unsigned char* end;
	bool failed = false;

	size_t left() const { return static_cast<size_t>(end - position); }

	template <typename T> T take() {
		T value{};
		if (left() < sizeof(T)) {
			fail();
			return value;
		}
		std::memcpy(&value, position, sizeof(T));
		position += sizeof(T);
		return value;
	}

	// DWARF's numbers of variable length, of which 64 bits count.
	xylUInt64 take_uleb() { return take_leb(false); }
	// As the bits of a signed number.
	xylUInt64 take_sleb() { return take_leb(true); }

	// The next `count` bytes, as a reader of their own.
	Byte_reader take_bytes(xylUInt64 count) {
		if (count > left()) {
			fail();
			return {end, end, true};
		}
		const unsigned char* const begin = position;
		position += count;
		return {begin, position};
	}

	void fail() {
		position = end;
		failed = true;
	}

private:
	xylUInt64 take_leb(bool is_signed) {
		xylUInt64 value = 0;
		for (unsigned int shift = 0; position < end; shift += 7) {
			const xylUInt64 byte = *position++;
			if (shift < 64) value |= (byte & 0x7F) << shift;
			if (byte & 0x80) continue;
			if (is_signed && (byte & 0x40) && shift + 7 < 64) value |= ~0ULL << (shift + 7);
			return value;
		}
		fail();
		return 0;
	}
};

} // namespace os
