// Draws recorded frames as a host draws what its game recorded.
#pragma once

#include "font.h"
#include "recording.h"
#include "view.h"

#include <string>
#include <vector>

// Where the picture of a frame goes: frame_000.png and on.
std::string picture_path(const std::string& folder, int number);

// Frames are drawn in their order, for a record with a duration stays for the frames that follow.
// Records of any numbers are taken: what isn't finite or not in sight is left out.
class Painter {
public:
	static constexpr int width = 1280, height = 720; // what screen coordinates count

	// Without the font file texts are left out; false then.
	bool load_font(const std::string& path) { return font_.load(path, 16); }
	Canvas paint(const Frame& frame);

	// Records that were not drawn since the picture took too long, over all frames.
	bool was_cut_short() const { return was_cut_short_; }

private:
	// What is left of a record's time: 1 when it is new, 0 at its end.
	static float freshness(float time, float time_stamp, float duration);
	void keep_what_stays(const Frame& frame);
	void paint_quads(const View& view, const Frame& frame);
	void paint_quad(const View& view, const Debug_quad_record& quad, bool dithered, bool on_ground);
	void paint_lines(const View& view, const std::vector<Debug_line_record>& lines, float time,
	                 bool on_ground);
	void paint_texts(const View& view, const Frame& frame, Canvas& canvas) const;

	static constexpr int oversampling = 2;

	Font font_;
	Canvas canvas_{width * oversampling, height* oversampling};
	std::vector<Debug_line_record> lines_, ground_lines_; // that are to be drawn now
	std::vector<Debug_text_record> texts_;
	bool was_cut_short_ = false;
};
