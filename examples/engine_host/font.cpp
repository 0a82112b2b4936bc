#include "font.h"

#include "recording.h" // load_file

#include <stb/stb_truetype.h>

#include <algorithm>
#include <cmath>

bool Font::load(const std::string& path, float pixel_height) {
	xylBuffer file;
	if (!load_file(path, &file)) return false;
	const unsigned char* data = file.get_buffer_from_start();
	if (stbtt_GetFontOffsetForIndex(data, 0) < 0) return false;
	atlas_.resize(atlas_size * atlas_size);
	std::vector<stbtt_bakedchar> baked(glyph_count);
	if (stbtt_BakeFontBitmap(data, 0, pixel_height, atlas_.data(), atlas_size, atlas_size,
	                         first_glyph, glyph_count, baked.data()) <= 0)
		return false;
	for (const stbtt_bakedchar& glyph : baked) {
		glyphs_.push_back({glyph.x0, glyph.y0, glyph.x1 - glyph.x0, glyph.y1 - glyph.y0, glyph.xoff,
		                   glyph.yoff, glyph.xadvance});
	}
	return true;
}

const Font::Glyph& Font::glyph_of(char letter) const {
	const int number = letter - first_glyph;
	return glyphs_[static_cast<size_t>(number >= 0 && number < glyph_count ? number
	                                                                       : '?' - first_glyph)];
}

void Font::stamp(Canvas& canvas, double x, double y, const Glyph& glyph, const Ink& ink) const {
	const int left = static_cast<int>(std::lround(x + glyph.x_offset));
	const int top = static_cast<int>(std::lround(y + glyph.y_offset));
	for (int row = 0; row < glyph.height; ++row) {
		for (int column = 0; column < glyph.width; ++column) {
			const size_t at =
				static_cast<size_t>((glyph.top + row) * atlas_size + glyph.left + column);
			canvas.blend(left + column, top + row, ink, static_cast<float>(atlas_[at]) / 255);
		}
	}
}

void Font::draw(Canvas& canvas, double x, double y, const std::string& text, const Ink& ink) const {
	if (glyphs_.empty()) return;
	Ink rim(0xFF05080F);
	rim.alpha = 0.45f * ink.alpha;
	const auto pass = [&](double dx, double dy, const Ink& with) {
		double at = x + dx;
		for (const char letter : text) {
			if (at > canvas.width()) break;
			const Glyph& glyph = glyph_of(letter);
			stamp(canvas, at, y + dy, glyph, with);
			at += glyph.advance;
		}
	};
	for (const double dx : {-1, 0, 1}) {
		for (const double dy : {-1, 0, 1}) {
			if (dx != 0 || dy != 0) pass(dx, dy, rim);
		}
	}
	pass(0, 0, ink);
}

double Font::width(const std::string& text) const {
	double sum = 0;
	if (glyphs_.empty()) return sum;
	for (const char letter : text) sum += glyph_of(letter).advance;
	return sum;
}
