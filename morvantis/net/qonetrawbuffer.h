// The memory that a datagram moves in and out of.
#pragma once

#include <morvantis/core/xyltypes.h> // xylInt32, xylUInt8, offsetof

// Names storage that somebody else owns. A bit buffer holds the same two fields in the same order,
// so a socket receives straight into it.
struct QoNetRawBuffer {
	xylInt32 capacity_in_bits; // room at `data`; a receive takes this divided by 8 as bytes
	xylUInt8* data;
};
static_assert(offsetof(QoNetRawBuffer, capacity_in_bits) == 0);
static_assert(offsetof(QoNetRawBuffer, data) == 8 && sizeof(QoNetRawBuffer) == 16);
