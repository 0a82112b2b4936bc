#include <morvantis/diagnostics/xyldebug_render_records.h>

#include <morvantis/diagnostics/debug_batch.h>

#include <emmintrin.h> // a conversion to int that is defined for every float
#include <mutex>       // lock_guard

xylDebug_render_records* xyl_cur_frame_debug_render_objects_ptr = nullptr;

constinit const xylColor xylDebug_render_records::axis_color_x = 0xFFFF4000;
constinit const xylColor xylDebug_render_records::axis_color_y = 0xFF80FF00;
constinit const xylColor xylDebug_render_records::axis_color_z = 0xFF0080FF;

const unsigned int xylDebug_render_records::max_lines;
const unsigned int xylDebug_render_records::max_double_color_lines;
const unsigned int xylDebug_render_records::max_texts;

static_assert(sizeof(Debug_line_record) == 48);
static_assert(sizeof(Debug_quad_record) == 80);
static_assert(sizeof(Debug_2d_object_record) == 20);

namespace {

using Lock = std::lock_guard<xylRecursive_mutex>;

constexpr xylUInt32 default_2d_color = 0x22663399;
constexpr float text_line_height = 20.0f; // of draw_text_nl(), and its left border

template <typename T> void append_all(xylArray<T>& list, const xylArray<T>& other) {
	debug_records::append(list, other, other.size());
}

float whole_part(float value) { return static_cast<float>(_mm_cvttss_si32(_mm_set_ss(value))); }

struct Colors { // in one register
	xylColor start, end;
};

// Apart from the test before it, which then needs no frame on the stack: one function for both
// kinds of lines is not inlined into them, and takes no more arguments than there are registers.
// push_back() and not emplace_back(), whose arguments go through memory: 1.03 of a bare
// push_back() under the lock against 1.3. `start` and `delta` may be part of the list.
void add_line(xylDebug_render_records& records, const xylVec3& start, const xylVec3& delta,
              Colors colors, bool selector, float duration, unsigned int limit) {
	xylArray<Debug_line_record>& list = debug_records::line_list(records, selector);
	const Lock lock(records.mutex);
	if (list.size() >= limit) return;
	list.push_back({xylVec3::from_lanes(start.lanes()), xylVec3::from_lanes(delta.lanes()),
	                colors.start, colors.end, debug_records::time_stamp(), duration});
}

} // namespace

xylDebug_render_records::xylDebug_render_records(const xylDebug_render_records& other)
	: lines(other.lines), lines_alternate(other.lines_alternate), quads(other.quads),
	  quads_dithered(other.quads_dithered), quads_alternate(other.quads_alternate),
	  objects_2d(other.objects_2d), texts(other.texts) {}

xylDebug_render_records& xylDebug_render_records::operator=(const xylDebug_render_records& other) {
	if (this == &other) return *this;
	lines = other.lines;
	lines_alternate = other.lines_alternate;
	quads = other.quads;
	quads_dithered = other.quads_dithered;
	quads_alternate = other.quads_alternate;
	objects_2d = other.objects_2d;
	texts = other.texts;
	return *this;
}

bool xylDebug_render_records::is_empty() const {
	return lines.empty() && lines_alternate.empty() && quads.empty() && quads_alternate.empty() &&
	       objects_2d.empty() && texts.empty() && quads_dithered.empty();
}

void xylDebug_render_records::clear() {
	lines.clear();
	lines_alternate.clear();
	quads.clear();
	quads_dithered.clear();
	quads_alternate.clear();
	objects_2d.clear();
	texts.clear();
}

void xylDebug_render_records::set_debug_objects_mode(int mode) {
	constexpr int on = 1;
	constexpr int toggle = 2;
	std::atomic_ref<bool> flag(enabled);
	const bool result = mode == on || (mode == toggle && !flag.load(std::memory_order_relaxed));
	flag.store(result, std::memory_order_relaxed);
	if (result) return;
	const Lock lock(mutex);
	objects_2d.clear();
	lines.clear();
	lines_alternate.clear();
	quads.clear();
	quads_alternate.clear();
}

void xylDebug_render_records::add_other_records_and_clear(xylDebug_render_records& other) {
	const Lock lock(mutex);
	const Lock other_lock(other.mutex);
	append_all(lines, other.lines);
	append_all(lines_alternate, other.lines_alternate);
	append_all(quads_dithered, other.quads_dithered);
	append_all(quads, other.quads);
	append_all(quads_alternate, other.quads_alternate);
	append_all(objects_2d, other.objects_2d);
	append_all(texts, other.texts);
}

void xylDebug_render_records::add_text_records_and_clear(xylDebug_render_records& other) {
	const Lock lock(mutex);
	const Lock other_lock(other.mutex);
	append_all(texts, other.texts);
}

void xylDebug_render_records::add_debug_line(const xylVec3& start, const xylVec3& delta,
                                             xylColor color, bool list_selector, float duration) {
	if (!debug_records::is_enabled(*this)) return;
	add_line(*this, start, delta, {color, color}, list_selector, duration, max_lines);
}

void xylDebug_render_records::add_debug_line_double_color(const xylVec3& start,
                                                          const xylVec3& delta,
                                                          xylColor color_start, xylColor color_end,
                                                          bool list_selector, float duration) {
	if (!debug_records::is_enabled(*this)) return;
	add_line(*this, start, delta, {color_start, color_end}, list_selector, duration,
	         max_double_color_lines);
}

void xylDebug_render_records::add_debug_quad(const xylVec3* corners, xylColor color, bool dithered,
                                             bool list_selector) {
	add_debug_quad_or_tri(corners, 4, color, list_selector, dithered);
}

void xylDebug_render_records::add_debug_tri(const xylVec3* corners, xylColor color, bool dithered,
                                            bool list_selector) {
	add_debug_quad_or_tri(corners, 3, color, list_selector, dithered);
}

void xylDebug_render_records::add_debug_quad_or_tri(const xylVec3* corners, int count,
                                                    xylColor color, bool list_selector,
                                                    bool dithered) {
	if (!debug_records::is_enabled(*this)) return;
	const Lock lock(mutex);
	xylArray<Debug_quad_record>& list = dithered        ? quads_dithered
	                                    : list_selector ? quads_alternate
	                                                    : quads;
	const xylVec3& last = count == 4 ? corners[3] : corners[2];
	list.push_back({{corners[0], corners[1], corners[2], last}, color});
}

void xylDebug_render_records::add_debug_2d_object(float a, float b, float c, float d) {
	add_debug_2d_object(a, b, c, d, default_2d_color);
}

void xylDebug_render_records::add_debug_2d_object(float a, float b, float c, float d,
                                                  xylColor color) {
	objects_2d.push_back({a, b, c, d, color});
}

void xylDebug_render_records::add_debug_text(const xylVec3& position, const xylString_base& text,
                                             xylColor color, const xylInt_vec2* pixel_offset,
                                             float duration) {
	const Lock lock(mutex);
	if (!debug_records::is_enabled(*this) || texts.size() >= max_texts) return;
	const xylInt_vec2 offset = pixel_offset ? *pixel_offset : xylInt_vec2(0, 0);
	texts.push_back({false, position, xylVarString(text), color, offset,
	                 debug_records::time_stamp(), duration});
}

void xylDebug_render_records::add_debug_text(const xylVec3& position, const char* text,
                                             xylColor color, const xylInt_vec2* pixel_offset,
                                             float duration) {
	add_debug_text(position, xylVarString(text), color, pixel_offset, duration);
}

void xylDebug_render_records::add_debug_text(float, float, xylColor, const xylString_base&, float) {
}

void xylDebug_render_records::add_debug_text(float, float, xylColor, const char*, float) {}

void xylDebug_render_records::draw_text_nl(float& x, float& y, xylColor color, const char* text,
                                           float duration) {
	y += text_line_height;
	x = text_line_height;
	add_debug_text(x, y, color, text, duration);
}

void xylDebug_render_records::show_framerate(float x, float y, xylColor color,
                                             const xylString_base& text, float duration) {
	const Lock lock(mutex);
	if (text.is_empty() || texts.size() >= max_texts) return;
	texts.push_back({true, xylVec3(whole_part(x), whole_part(y), 0, 0), xylVarString(text), color,
	                 xylInt_vec2(0, 0), debug_records::time_stamp(), duration});
}
