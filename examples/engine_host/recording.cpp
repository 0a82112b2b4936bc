#include "recording.h"

#include <morvantis/io/xylnative_file.h>

#include <cstring>

namespace {

constexpr size_t line_size = 40, quad_size = 52, object_size = 20, text_size = 37;

void put_point(xylBuffer& buffer, const xylVec3& point) {
	buffer.write_float(point.x);
	buffer.write_float(point.y);
	buffer.write_float(point.z);
}

void put(xylBuffer& buffer, const Debug_line_record& line) {
	put_point(buffer, line.start);
	put_point(buffer, line.delta);
	buffer.write_uint(line.color_start);
	buffer.write_uint(line.color_end);
	buffer.write_float(line.time_stamp);
	buffer.write_float(line.duration);
}

void put(xylBuffer& buffer, const Debug_quad_record& quad) {
	for (const xylVec3& corner : quad.corners) put_point(buffer, corner);
	buffer.write_uint(quad.color);
}

void put(xylBuffer& buffer, const Debug_2d_object_record& object) {
	for (const float number : {object.a, object.b, object.c, object.d}) buffer.write_float(number);
	buffer.write_uint(object.color);
}

void put(xylBuffer& buffer, const Debug_text_record& text) {
	buffer.write_bool(text.screen_space);
	put_point(buffer, text.position);
	buffer.write_uint(text.color);
	buffer.write_int(text.pixel_offset.x);
	buffer.write_int(text.pixel_offset.y);
	buffer.write_float(text.time_stamp);
	buffer.write_float(text.duration);
	buffer.write_string(text.text);
}

template <typename List> void put_list(xylBuffer& buffer, const List& list) {
	buffer.write_uint(static_cast<unsigned int>(list.size()));
	for (const auto& record : list) put(buffer, record);
}

} // namespace

void write_records(xylBuffer& buffer, const xylDebug_render_records& records) {
	put_list(buffer, records.lines);
	put_list(buffer, records.lines_alternate);
	put_list(buffer, records.quads);
	put_list(buffer, records.quads_dithered);
	put_list(buffer, records.quads_alternate);
	put_list(buffer, records.objects_2d);
	put_list(buffer, records.texts);
}

void Recording::add(unsigned int tick, float time, const xylDebug_render_records& records) {
	bytes_.write_uint(tick);
	bytes_.write_float(time);
	write_records(bytes_, records);
}

bool Recording::save(const std::string& path) const {
	xylNative_file file;
	if (!file.open(path.c_str(), xylFile_access_write, xylFile_flag_create_always)) return false;
	return file.write(data(), size()) == size() && file.close();
}

bool load_file(const std::string& path, xylBuffer* bytes) {
	xylNative_file file;
	if (!file.open(path.c_str(), xylFile_access_read | xylFile_share_read,
	               xylFile_flag_open_existing))
		return false;
	const unsigned int size = static_cast<unsigned int>(file.get_file_size());
	bytes->ensure_capacity(size + 1ull);
	return bytes->read_handle(file, size);
}

Recording_reader::Recording_reader(const unsigned char* data, size_t size)
	: at_(data), left_(size) {
	unsigned int mark = 0;
	is_damaged_ = !take(&mark) || mark != recording_mark;
}

template <typename Value> bool Recording_reader::take(Value* value) {
	if (left_ < sizeof(Value)) return false;
	std::memcpy(value, at_, sizeof(Value));
	at_ += sizeof(Value);
	left_ -= sizeof(Value);
	return true;
}

template <typename... Values> bool Recording_reader::take_all(Values*... values) {
	return (take(values) && ...);
}

bool Recording_reader::take_point(xylVec3* point) {
	point->w = 0;
	return take_all(&point->x, &point->y, &point->z);
}

bool Recording_reader::take_one(Debug_line_record* line) {
	return take_point(&line->start) && take_point(&line->delta) &&
	       take_all(&line->color_start, &line->color_end, &line->time_stamp, &line->duration);
}

bool Recording_reader::take_one(Debug_quad_record* quad) {
	for (xylVec3& corner : quad->corners) {
		if (!take_point(&corner)) return false;
	}
	return take(&quad->color);
}

bool Recording_reader::take_one(Debug_2d_object_record* object) {
	return take_all(&object->a, &object->b, &object->c, &object->d, &object->color);
}

bool Recording_reader::take_one(Debug_text_record* text) {
	unsigned char screen_space = 0;
	unsigned int length = 0;
	if (!take(&screen_space) || !take_point(&text->position) ||
	    !take_all(&text->color, &text->pixel_offset.x, &text->pixel_offset.y, &text->time_stamp,
	              &text->duration, &length) ||
	    length > left_)
		return false;
	text->screen_space = screen_space != 0;
	text->text = xylVarString(std::string(reinterpret_cast<const char*>(at_), length).c_str());
	at_ += length;
	left_ -= length;
	return true;
}

// A count that the bytes can't hold is found before any memory is taken for it.
template <typename List> bool Recording_reader::take_list(List* list, size_t smallest_record) {
	unsigned int count = 0;
	if (!take(&count) || count > left_ / smallest_record) return false;
	list->resize(count);
	for (auto& record : *list) {
		if (!take_one(&record)) return false;
	}
	return true;
}

bool Recording_reader::take_frame(Frame* frame) {
	xylDebug_render_records& records = frame->records;
	return take_all(&frame->tick, &frame->time) && take_list(&records.lines, line_size) &&
	       take_list(&records.lines_alternate, line_size) && take_list(&records.quads, quad_size) &&
	       take_list(&records.quads_dithered, quad_size) &&
	       take_list(&records.quads_alternate, quad_size) &&
	       take_list(&records.objects_2d, object_size) && take_list(&records.texts, text_size);
}

bool Recording_reader::next(Frame* frame) {
	if (is_damaged_ || left_ == 0) return false;
	is_damaged_ = !take_frame(frame);
	if (is_damaged_) frame->records.clear();
	return !is_damaged_;
}
