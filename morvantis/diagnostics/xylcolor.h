// A colour of debug drawings, and the colours that have a name.
#pragma once

#include <morvantis/core/xyltypes.h> // xylUInt32, MORVANTIS_API

// One number, 0xAARRGGBB, which converts both ways without asking. Threads: a value.
struct MORVANTIS_API xylColor {
	// Leaves the colour unset.
	xylColor() = default;
	constexpr xylColor(xylUInt32 argb) : value(argb) {}
	constexpr operator xylUInt32() const { return value; }

	// Full alpha; set before any code of a program runs.
	static const xylColor SOLID_BLACK;
	static const xylColor SOLID_RED;
	static const xylColor SOLID_GREEN;
	static const xylColor SOLID_BLUE;
	static const xylColor SOLID_CYAN;
	static const xylColor SOLID_MAGENTA;
	static const xylColor SOLID_YELLOW;
	static const xylColor SOLID_GRAY;
	static const xylColor SOLID_WHITE;

	xylUInt32 value;
};
static_assert(sizeof(xylColor) == 4);
