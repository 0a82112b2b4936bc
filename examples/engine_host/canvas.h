// A software rasteriser: lines, triangles, rectangles and glyphs on an image with depth.
#pragma once

#include <array>
#include <string>
#include <vector>

using Rgb = std::array<unsigned char, 3>;

// 0xAARRGGBB apart.
struct Ink {
	explicit Ink(unsigned int argb)
		: red(static_cast<float>(argb >> 16 & 255)), green(static_cast<float>(argb >> 8 & 255)),
		  blue(static_cast<float>(argb & 255)), alpha(static_cast<float>(argb >> 24) / 255) {}
	float red, green, blue; // 0 to 255
	float alpha;            // 0 to 1
};

// A point on the canvas; `nearness` is 1 / distance, which is linear on the screen.
struct Canvas_point {
	double x, y, nearness;
};

// What becomes of a pixel beside its colour.
struct Paint_mode {
	bool tests_depth = true;
	bool writes_depth = true;
	bool dithered = false; // every second pixel
};

// Coordinates that are given must lie on the canvas or close to it: they are clipped by the caller,
// so that no loop here is longer than the canvas is wide. Beyond a budget of painted pixels nothing
// more is painted until clear(), so that no picture takes longer than a few seconds, whatever it is
// made of.
class Canvas {
public:
	Canvas(int width, int height);

	int width() const { return width_; }
	int height() const { return height_; }
	bool is_exhausted() const { return budget_ <= 0; }

	// From the one colour above to the other below, and nothing near.
	void clear(Rgb top, Rgb bottom);
	// Anti-aliased; the ink runs from the one to the other. Depth is tested and not written.
	void line(Canvas_point from, Canvas_point to, double line_width, const Ink& ink_from,
	          const Ink& ink_to, bool tests_depth);
	void triangle(const Canvas_point& a, const Canvas_point& b, const Canvas_point& c,
	              const Ink& ink, Paint_mode mode);
	void rectangle(double left, double top, double right, double bottom, const Ink& ink);
	// `coverage` of the ink, 0 to 1, at one pixel, which may lie outside.
	void blend(int x, int y, const Ink& ink, float coverage);

	// Each pixel the mean of `factor` by `factor` of this canvas.
	Canvas shrunk(int factor) const;
	// False when the file can't be written.
	bool save_png(const std::string& path) const;

	Rgb pixel(int x, int y) const { return pixels_[index(x, y)]; }

private:
	size_t index(int x, int y) const {
		return static_cast<size_t>(y) * static_cast<size_t>(width_) + static_cast<size_t>(x);
	}
	void mix(size_t at, const Ink& ink, float share);

	int width_, height_;
	long long budget_ = 0; // pixels that may still be painted
	std::vector<Rgb> pixels_;
	std::vector<float> nearness_;
};
