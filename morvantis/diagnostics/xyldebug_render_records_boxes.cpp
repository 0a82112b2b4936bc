// Boxes and other shapes of straight edges.

#include <morvantis/diagnostics/xyldebug_render_records.h>

#include <morvantis/diagnostics/debug_batch.h>
#include <morvantis/math/xylbounding_box.h>

namespace {

using namespace debug_records;
using Lock = std::lock_guard<xylRecursive_mutex>;

constexpr int corner_count = 8;
constexpr int face_count = 6;
using Faces = unsigned char[face_count][4];

constexpr unsigned char edges[12][2] = {{0, 7}, {0, 2}, {3, 7}, {3, 2}, {4, 5}, {4, 6},
                                        {1, 5}, {1, 6}, {0, 4}, {7, 5}, {2, 6}, {3, 1}};

// For corners ring by ring.
// kept: some faces cross themselves even so.
constexpr Faces ring_faces = {{0, 1, 2, 3}, {1, 2, 6, 7}, {4, 5, 6, 7},
                              {0, 3, 5, 4}, {0, 1, 4, 7}, {2, 3, 5, 6}};
// For corners in the order of xylBounding_box: minimum y, maximum z, maximum y, minimum z, maximum
// x, minimum x.
constexpr Faces tip_faces = {{0, 7, 5, 4}, {4, 5, 1, 6}, {6, 1, 3, 2},
                             {2, 3, 7, 0}, {7, 5, 1, 3}, {2, 6, 4, 0}};

struct Tip_points {
	Tip_points(const xylVec3& min, const xylVec3& max)
		: at{{min.x, min.y, min.z}, {max.x, max.y, max.z}, {min.x, max.y, min.z},
	         {max.x, max.y, min.z}, {min.x, min.y, max.z}, {max.x, min.y, max.z},
	         {min.x, max.y, max.z}, {max.x, min.y, min.z}} {}
	Tip_points(const xylVec3& min, const xylVec3& max, const xylMatrix_frame& frame) {
		xylBounding_box::get_transformed_tip_points(at, min, max, frame);
	}

	xylVec3 at[corner_count];
};

void add_faces(xylDebug_render_records& records, xylArray<Debug_quad_record>& list,
               const xylVec3* corners, const Faces& faces, xylColor color) {
	if (!is_enabled(records)) return;
	const Lock lock(records.mutex);
	Debug_quad_record quads[face_count];
	for (int i = 0; i < face_count; ++i) {
		for (int k = 0; k < 4; ++k) quads[i].corners[k] = corners[faces[i][k]];
		quads[i].color = color;
	}
	make_room(list, face_count);
	list.insert(list.end(), quads, quads + face_count);
}

} // namespace

void xylDebug_render_records::add_debug_box_object_with_points(const xylVec3* corners,
                                                               xylColor color, bool selector,
                                                               float duration) {
	if (!is_enabled(*this)) return;
	Line_batch batch(*this, selector, duration);
	for (const auto& edge : edges) batch.connect(corners[edge[0]], corners[edge[1]], color);
}

void xylDebug_render_records::add_debug_box_object(const xylVec3& min, const xylVec3& max,
                                                   xylColor color, bool selector, float duration) {
	if (!is_enabled(*this)) return;
	add_debug_box_object_with_points(Tip_points(min, max).at, color, selector, duration);
}

void xylDebug_render_records::add_debug_box_object(const xylVec3& min, const xylVec3& max,
                                                   xylMatrix_frame frame, xylColor color,
                                                   bool selector, float duration) {
	add_debug_transformed_box(min, max, frame, color, selector, duration);
}

void xylDebug_render_records::add_debug_transformed_box(const xylVec3& min, const xylVec3& max,
                                                        const xylMatrix_frame& frame,
                                                        xylColor color, bool selector,
                                                        float duration) {
	if (!is_enabled(*this)) return;
	add_debug_box_object_with_points(Tip_points(min, max, frame).at, color, selector, duration);
}

void xylDebug_render_records::add_debug_cube_box_object(const xylVec3* corners, xylColor color) {
	add_faces(*this, quads, corners, ring_faces, color);
}

// kept: corners in the order of a bounding box to faces for ring order.
void xylDebug_render_records::add_debug_cube_box_object(const xylVec3& min, const xylVec3& max,
                                                        xylColor color) {
	add_faces(*this, quads, Tip_points(min, max).at, ring_faces, color);
}

void xylDebug_render_records::add_debug_cube_box_object_from_bb(const xylVec3* corners,
                                                                xylColor color) {
	add_faces(*this, quads, corners, tip_faces, color);
}

void xylDebug_render_records::add_debug_cube_box_object_from_bb_dithered(const xylVec3* corners,
                                                                         xylColor color) {
	add_faces(*this, quads_dithered, corners, tip_faces, color);
}

void xylDebug_render_records::add_debug_cube_box_object_dithered(const xylVec3& min,
                                                                 const xylVec3& max,
                                                                 xylColor color) {
	add_faces(*this, quads_dithered, Tip_points(min, max).at, tip_faces, color);
}

void xylDebug_render_records::add_debug_quad_wireframe(const xylVec3* corners, int count,
                                                       xylColor color, bool selector,
                                                       float duration) {
	if (!is_enabled(*this)) return;
	Line_batch batch(*this, selector, duration);
	batch.connect(corners[0], corners[1], color);
	batch.connect(corners[1], corners[2], color);
	batch.connect(corners[0], corners[2], color);
	if (count != 4) return;
	batch.connect(corners[2], corners[3], color);
	batch.connect(corners[3], corners[0], color);
}
