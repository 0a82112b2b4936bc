// Glyphs of one size from a font file, drawn on a canvas.
#pragma once

#include "canvas.h"

#include <string>
#include <vector>

class Font {
public:
	// `path` of a TrueType font; false when it isn't there or isn't one, and then nothing is drawn.
	bool load(const std::string& path, float pixel_height);

	// From `x` rightwards on the base line `y`, with a dark rim, as far as the canvas reaches.
	// Bytes that aren't printable ASCII become '?'.
	void draw(Canvas& canvas, double x, double y, const std::string& text, const Ink& ink) const;
	double width(const std::string& text) const;

private:
	static constexpr int first_glyph = 32, glyph_count = 95, atlas_size = 256;
	struct Glyph {
		int left, top, width, height; // in the atlas
		float x_offset, y_offset, advance;
	};
	const Glyph& glyph_of(char letter) const;
	void stamp(Canvas& canvas, double x, double y, const Glyph& glyph, const Ink& ink) const;

	std::vector<Glyph> glyphs_;
	std::vector<unsigned char> atlas_; // coverage, 0 to 255
};
