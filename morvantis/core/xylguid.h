// The 16-byte identifier value.
#pragma once

#include <morvantis/core/xyltypes.h>

// A GUID in its usual layout of one 32-bit part, two 16-bit parts and eight bytes, native byte
// order. Any value is one: nothing in the library looks at version or variant.
struct xylGuid_type {
	xylUInt32 data1;
	xylUInt16 data2, data3;
	xylUInt8 data4[8];

	bool operator==(const xylGuid_type&) const = default;
};
static_assert(sizeof(xylGuid_type) == 16 && alignof(xylGuid_type) == 4);
