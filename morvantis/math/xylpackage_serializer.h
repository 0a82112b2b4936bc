// The forms that values take in packages.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API

class xylBuffer;
struct xylBounding_box;

class MORVANTIS_API xylPackage_serializer {
public:
	// Stored at the buffer's cursor, which moves behind them. Reading tests nothing.
	class MORVANTIS_API Primitives {
	public:
		// 56 bytes: a 32-bit 0, then min, max and center as by xylBuffer::write_vec3(), and the
		// radius. Not null.
		static void write(const xylBounding_box& box, xylBuffer* out);
		// The first word is skipped unread; the vectors' fourth floats are taken as they stand.
		static void read(xylBounding_box& box, xylBuffer* in);
	};
};
