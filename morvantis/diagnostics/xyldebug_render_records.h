// What any code wants drawn for debugging, collected for the host, which does the drawing.
#pragma once

#include <morvantis/core/xylmutex.h>
#include <morvantis/diagnostics/xylcolor.h>
#include <morvantis/math/xylint_vec2.h>
#include <morvantis/math/xylmatrix_frame.h>
#include <morvantis/memory/xylarray.h>
#include <morvantis/strings/xylvarstring.h>

// The order of fields in the records and in xylDebug_render_records is what hosts are built
// against. `time_stamp` is clock 0 (xylTimer::real_timer_no__) in seconds at the time of adding;
// `duration` is how long the host keeps drawing the record, as the caller passed it. Nothing here
// ever expires.

struct Debug_line_record {
	xylVec3 start; // world space
	xylVec3 delta; // from `start` to the second end: not an end point
	xylColor color_start;
	xylColor color_end;
	float time_stamp;
	float duration;
};

// A triangle stores its third corner again as the fourth.
struct Debug_quad_record {
	xylVec3 corners[4];
	xylColor color;
};

// The four numbers mean what the host's renderer takes them for.
struct Debug_2d_object_record {
	float a, b, c, d;
	xylColor color;
};

struct Debug_text_record {
	bool screen_space = false; // whether `position` is on the screen and not in the world
	xylVec3 position{};
	xylVarString text; // a copy of its own
	xylColor color = 0xFFFFFFFF;
	xylInt_vec2 pixel_offset{};
	float time_stamp = 0;
	float duration = 0;
};

// A set of things to draw, to which any thread may add at any time.
//
// The host reads the lists once a frame, under `mutex`, draws them, and drops what it has drawn.
// A thread or a task may also have a set of its own, merged later by add_other_records_and_clear().
//
// A set takes records only while `enabled` is true; where it isn't, or a list is full, what is
// added is dropped and nothing is reported. Where a comment says nothing else, an operation takes
// the lock, tests `enabled` before that, so that drawing that is switched off costs one byte test,
// and allocates only by growing its list, from 1 by doubling. Coordinates of any kind are stored as
// they come. A failure of the lock throws std::system_error.
//
// In the operations `list_selector` (or `selector`) puts a record into the alternate list of its
// kind, whatever the host shows there.
class MORVANTIS_API xylDebug_render_records {
public:
	static const xylColor axis_color_x; // 0xFFFF4000
	static const xylColor axis_color_y; // 0xFF80FF00
	static const xylColor axis_color_z; // 0xFF0080FF

	// kept: the two limits on the same lists differ.
	static const unsigned int max_lines = 0x10000;             // of add_debug_line()
	static const unsigned int max_double_color_lines = 0x8000; // of add_debug_line_double_color()
	static const unsigned int max_texts = 512;

	// Empty and enabled. No allocation.
	xylDebug_render_records() = default;
	// Copies of the seven record lists; the new set is enabled, and an assignment leaves `enabled`
	// as it is. Neither takes a lock.
	xylDebug_render_records(const xylDebug_render_records& other);
	xylDebug_render_records& operator=(const xylDebug_render_records& other);

	// --- The set as a whole

	// Whether all seven record lists are empty. Takes no lock: for the thread that owns the frame,
	// while no other adds.
	bool is_empty() const;
	// Empties the seven record lists and keeps their memory. Takes no lock either.
	void clear();

	// Switches the set off (0), on (1) or over (2); any other mode switches it off. Switching off
	// empties the lists, under the lock.
	// kept: `quads_dithered` and `texts` keep their contents.
	void set_debug_objects_mode(int mode);

	// Appends copies of all records of `other`, list by list; neither `enabled` nor a limit is
	// looked at. Takes the lock of this set and then that of `other`: two threads must not merge
	// two sets into each other.
	// kept: in spite of the name `other` is not emptied, which is left to its clear().
	void add_other_records_and_clear(xylDebug_render_records& other);
	// The same for the texts alone.
	void add_text_records_and_clear(xylDebug_render_records& other);

	// --- Lines, faces, screen objects

	// A line in one colour. Dropped where its list holds `max_lines` or more.
	void add_debug_line(const xylVec3& start, const xylVec3& delta, xylColor color,
	                    bool list_selector, float duration);
	// A line that fades from one colour to the other. Dropped where its list holds
	// `max_double_color_lines` or more.
	void add_debug_line_double_color(const xylVec3& start, const xylVec3& delta,
	                                 xylColor color_start, xylColor color_end, bool list_selector,
	                                 float duration);

	// A filled quad of four corners, or a triangle of three. No limit.
	void add_debug_quad(const xylVec3* corners, xylColor color, bool dithered, bool list_selector);
	void add_debug_tri(const xylVec3* corners, xylColor color, bool dithered, bool list_selector);
	// Reads four corners where `count` is 4, and three for any other count. `dithered` goes before
	// `list_selector` where both are true.
	// kept: the two flags stand the other way round than in the two operations above.
	void add_debug_quad_or_tri(const xylVec3* corners, int count, xylColor color,
	                           bool list_selector, bool dithered);

	// Four numbers for the host's renderer, with the colour 0x22663399 where none is given. No
	// limit, whether enabled or not. Takes no lock: for the thread that owns the frame.
	void add_debug_2d_object(float a, float b, float c, float d);
	void add_debug_2d_object(float a, float b, float c, float d, xylColor color);

	// --- Text

	// A text at a point of the world, with `pixel_offset` on the screen, (0, 0) where null. A null
	// text is stored as "". Dropped where there are `max_texts`. `enabled` is tested under the
	// lock. Allocates the copy of the text.
	void add_debug_text(const xylVec3& position, const xylString_base& text, xylColor color,
	                    const xylInt_vec2* pixel_offset, float duration);
	void add_debug_text(const xylVec3& position, const char* text, xylColor color,
	                    const xylInt_vec2* pixel_offset, float duration);
	// kept: text on the screen is switched off: these store nothing, whatever they are given.
	void add_debug_text(float x, float y, xylColor color, const xylString_base& text,
	                    float duration);
	void add_debug_text(float x, float y, xylColor color, const char* text, float duration);
	// kept: moves the cursor one line down, to x = 20 and y + 20, and stores nothing.
	void draw_text_nl(float& x, float& y, xylColor color, const char* text, float duration);
	// A text on the screen, the only one there is: x and y are cut to whole numbers (those beyond
	// an int become its smallest). An empty text is dropped, as is any where there are `max_texts`.
	// kept: stores whether enabled or not.
	void show_framerate(float x, float y, xylColor color, const xylString_base& text,
	                    float duration);

	// --- Shapes
	//
	// Each holds the lock for its whole length, so that a shape stays in one piece, and appends
	// lines by the rules of add_debug_line() (limit included: a list that fills up cuts the shape
	// off) and quads by those of add_debug_quad(). Boxes have their corners in the order of
	// xylBounding_box where nothing else is said. Numbers that aren't finite give records that
	// aren't; no shape hangs on them.

	// The 12 edges of a box: of eight corners, of the box from `min` to `max`, of the same under a
	// frame.
	void add_debug_box_object_with_points(const xylVec3* corners, xylColor color, bool selector,
	                                      float duration);
	void add_debug_box_object(const xylVec3& min, const xylVec3& max, xylColor color, bool selector,
	                          float duration);
	void add_debug_box_object(const xylVec3& min, const xylVec3& max, xylMatrix_frame frame,
	                          xylColor color, bool selector, float duration);
	void add_debug_transformed_box(const xylVec3& min, const xylVec3& max,
	                               const xylMatrix_frame& frame, xylColor color, bool selector,
	                               float duration);

	// The 6 faces of a box whose corners stand ring by ring: 0 to 3 round the one end, 4 to 7 round
	// the other.
	void add_debug_cube_box_object(const xylVec3* corners, xylColor color);
	// kept: the corners of `min` and `max` are not handed on in that order, so the faces come out
	// twisted. add_debug_cube_box_object_from_bb() has right ones.
	void add_debug_cube_box_object(const xylVec3& min, const xylVec3& max, xylColor color);
	// The 6 faces of eight corners in the order of xylBounding_box; the dithered ones go to
	// `quads_dithered`.
	void add_debug_cube_box_object_from_bb(const xylVec3* corners, xylColor color);
	void add_debug_cube_box_object_from_bb_dithered(const xylVec3* corners, xylColor color);
	void add_debug_cube_box_object_dithered(const xylVec3& min, const xylVec3& max, xylColor color);

	// The sides of a triangle, 3 lines, or where `count` is 4 those of a quad with the diagonal
	// from 0 to 2, 5 lines.
	void add_debug_quad_wireframe(const xylVec3* corners, int count, xylColor color, bool selector,
	                              float duration);

	// 231 lines. kept: the first row of meridian pieces starts one step below the pole.
	void add_debug_sphere(const xylVec3& center, const float& radius, xylColor color, bool selector,
	                      float duration);
	// 294 lines round the way from `a` to `b`, which must differ.
	void add_debug_capsule(const xylVec3& a, const xylVec3& b, const float& radius, xylColor color,
	                       bool selector, float duration);
	// 96 lines.
	void add_debug_capsule_with_two_radius(const xylVec3& a, const xylVec3& b,
	                                       const float& radius_a, const float& radius_b,
	                                       xylColor color, bool selector, float duration);
	// A ring of 10 lines for each 2 units of length, at least one, and 10 spokes. The direction
	// must not lie in the XY plane: the rings are not finite then. No rings beyond 2^31 of them.
	void add_debug_cone(const xylVec3& apex, const xylVec3& base, float radius, xylColor color,
	                    bool selector, float duration);
	// 12 triangles from `apex` to a rim round `base`, both given in the space of `frame` and round
	// its local Y axis; `half_angle` in radians. The rim lies on the sphere round the apex. The
	// last two arguments are not used.
	void add_debug_cone_solid(const xylVec3& apex, const xylVec3& base, float half_angle,
	                          xylMatrix_frame frame, xylColor color, bool selector, float duration);

	// One line and the 6 quads of its head. A `delta` of no length gives a head of no size.
	void add_debug_direction_arrow(const xylVec3& start, const xylVec3& delta, xylColor color,
	                               bool selector);
	// The three axes in their colours, `length` times as long as the frame's.
	void add_debug_frame(const xylMatrix_frame& frame, float length, float duration);

	// Handles for moving things: three cones, three axes, three plane handles of one quad and two
	// lines. `highlight_axes` and `highlight_planes` have three entries each, of which those that
	// aren't 0 are drawn in 0xFFD8D8D8; either may be null.
	void add_debug_coordinate_space(const xylMatrix_frame& frame, float scale, int* highlight_axes,
	                                int* highlight_planes);
	// Handles for scaling things: three axes with a cube each, six lines between them. The first of
	// the six `scale_axes` (s, f, u, s and u, s and f, f and u) that isn't 0 says which axes are
	// `scale_factor` times as long; `scale_uniform` other than 0 means all of them, and
	// `scale_axes` isn't read. `highlight_all` other than 0 highlights the three inner lines.
	// kept: none of the three pointers may be null, unlike above.
	void add_debug_coordinate_space_scale(const xylMatrix_frame& frame, float scale,
	                                      int* highlight_axes, int* highlight_planes,
	                                      int highlight_all, int* scale_axes, int scale_uniform,
	                                      float scale_factor);
	// A fan of quads from `from` to `to`, taken to the length `scale`, round the axis `s`, `f` or
	// `u` of `frame` (mode 1, 2, 3); the two ends as lines alone (mode 4); nothing for any other
	// mode. The fan ends after a full turn where it never meets `to`, as for directions along the
	// axis or of no length. The first frame is not used.
	void add_debug_rotation_area(const xylMatrix_frame& unused_frame, const xylMatrix_frame& frame,
	                             xylVec3 from, xylVec3 to, float scale, xylColor color, int mode);

	// A grid in the s-f plane of the frame, `half_count` cells to each side, which fades out
	// towards its border; in the alternate list, by the limit of add_debug_line_double_color().
	// Nothing for a negative `half_count`; the alpha means nothing for 0.
	void add_object_space_grid(const xylMatrix_frame& frame, float cell, int half_count,
	                           xylColor color);
	// `count` lines in each direction over a square of the plane z = 0; in the alternate list.
	void add_ground_grid(float size, unsigned int count, xylColor color);

	// Whether `angle` lies on the arc that runs up from `arc_start` to `arc_end`, both ends
	// included; radians, of any turn. An arc from an angle to itself is a full circle. Any thread.
	static bool is_angle_on_arc(double angle, double arc_start, double arc_end);

	// --- Data

	xylRecursive_mutex mutex; // guards the lists; a builder may hold it and still add lines
	bool enabled = true;      // read outside the lock, as a byte
	xylArray<int> reserved_a; // room in the order of fields; never looked at
	xylArray<int> reserved_b; // likewise
	xylArray<Debug_line_record> lines;
	xylArray<Debug_line_record> lines_alternate;
	xylArray<Debug_quad_record> quads;
	xylArray<Debug_quad_record> quads_dithered; // drawn with a dither pattern
	xylArray<Debug_quad_record> quads_alternate;
	xylArray<Debug_2d_object_record> objects_2d;
	xylArray<Debug_text_record> texts;
};

// The records of the current frame: made by zubLibrary::init_globals(), null before and after the
// life of the library object.
extern MORVANTIS_API xylDebug_render_records* xyl_cur_frame_debug_render_objects_ptr;
