// Line drawings of things in space, as text of an SVG file.
#pragma once

#include <morvantis/math/xylmatrix_frame.h>

#include <string>
#include <vector>

// Strokes are classes of the style sheet in drawing.cpp.
inline constexpr const char* plain_stroke = "plain";
inline constexpr const char* hidden_stroke = "hidden"; // dashed
inline constexpr const char* strong_stroke = "strong";

// What a camera at infinity sees: the same size at every distance.
class Drawing {
public:
	// Looks along `direction` at `middle`, with Z up. `scale` is pixels a metre.
	Drawing(const xylVec3& middle, const xylVec3& direction, float scale, int width, int height);

	void line(const xylVec3& from, const xylVec3& to, const char* stroke);
	void path(const std::vector<xylVec3>& points, const char* stroke);
	void arrow(const xylVec3& from, const xylVec3& to, const char* stroke);
	void dot(const xylVec3& at);
	// Text beside a point, moved by pixels to the right and down; moved to the left, it ends there.
	void label(const xylVec3& at, const std::string& text, float right, float down);
	// Edges of a convex solid; those behind it are dashed. Each face is four corners around it, any
	// way round.
	struct Face {
		int corners[4];
	};
	void solid(const xylVec3* corners, const std::vector<Face>& faces);

	std::string svg() const;

private:
	struct Pixel {
		float x, y;
	};
	Pixel pixel(const xylVec3& point) const;

	xylMatrix_frame camera_;
	float scale_;
	int width_, height_;
	std::string body_;
};
