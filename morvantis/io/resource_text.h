// What text resources may hold, and how they become tokens. Internal.
#pragma once

#include <morvantis/core/xyltypes.h>

// What was found in a text that a resource must not hold.
struct Resource_text_flaws {
	bool has_comma = false;
	xylUInt8 last_bad_byte = 0; // 0 without one

	bool operator==(const Resource_text_flaws&) const = default;
};

// Turns `size` bytes into tokens between zero bytes, in place: every byte outside 33 to 127 becomes
// 0 and every comma a dot. Bytes other than these, tab, line feed, carriage return, blank and 0 are
// bad. Reads and writes nothing outside. Any thread; does not allocate.
Resource_text_flaws prepare_resource_text(xylUInt8* bytes, xylUInt64 size);
