// The records of all frames in one block of bytes: what is hashed, stored, and shown by the page.
#pragma once

#include <morvantis/diagnostics/xyldebug_render_records.h>
#include <morvantis/io/xylbuffer.h>

#include <cstddef>
#include <string>

// The block: recording_mark, then frame by frame the tick (u32), the time in seconds (float), and
// seven lists, each a u32 count and its records. Lists stand in the order of
// xylDebug_render_records, fields in the order of the records, little-endian and without gaps:
//   line    start x y z, delta x y z, color_start, color_end, time_stamp, duration     40 bytes
//   quad    four corners x y z, color                                                  52 bytes
//   object  a, b, c, d, color                                                          20 bytes
//   text    screen_space (u8), x y z, color, pixel_offset x y (i32), time_stamp, duration, and the
//           text: a u32 length and the bytes                                    37 bytes and more
inline constexpr unsigned int recording_mark = 0x31524845; // "EHR1"

struct Frame {
	unsigned int tick = 0;
	float time = 0; // seconds, the clock of the time stamps
	xylDebug_render_records records;
};

// Writes the seven lists as above.
void write_records(xylBuffer& buffer, const xylDebug_render_records& records);

class Recording {
public:
	Recording() { bytes_.write_uint(recording_mark); }
	void add(unsigned int tick, float time, const xylDebug_render_records& records);
	bool save(const std::string& path) const;

	const unsigned char* data() const { return bytes_.get_buffer_from_start(); }
	size_t size() const { return static_cast<size_t>(bytes_.get_length()); }

private:
	xylBuffer bytes_;
};

// Goes through a block frame by frame. Bytes from a file are hostile: every count is held against
// what is left. Numbers are taken as they come, NaN and infinities among them.
class Recording_reader {
public:
	// `data` must live as long as the reader.
	Recording_reader(const unsigned char* data, size_t size);
	// Reads the next frame; false at the end, or at the first thing that is wrong.
	bool next(Frame* frame);
	bool is_damaged() const { return is_damaged_; }

private:
	template <typename Value> bool take(Value* value);
	template <typename... Values> bool take_all(Values*... values);
	bool take_point(xylVec3* point);
	bool take_one(Debug_line_record* line);
	bool take_one(Debug_quad_record* quad);
	bool take_one(Debug_2d_object_record* object);
	bool take_one(Debug_text_record* text);
	template <typename List> bool take_list(List* list, size_t smallest_record);
	bool take_frame(Frame* frame);

	const unsigned char* at_;
	size_t left_;
	bool is_damaged_ = false;
};

// The whole file; false when it can't be read.
bool load_file(const std::string& path, xylBuffer* bytes);
