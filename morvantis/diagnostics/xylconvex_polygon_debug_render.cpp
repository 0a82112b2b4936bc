// Drawing of the polygons of math/, which knows nothing of debug records.

#include <morvantis/math/xylconvex_polygon.h>

#include <morvantis/diagnostics/debug_batch.h>

void xylConvex_polygon::debug_render(xylColor color, bool selector, float duration) const {
	constexpr float height = 0.5f; // above the ground
	xylDebug_render_records& records = *xyl_cur_frame_debug_render_objects_ptr;
	if (!debug_records::is_enabled(records)) return;
	debug_records::Line_batch batch(records, selector, duration);
	for (eastl_size_t i = 0; i < points.size(); ++i) {
		const xylVec2& a = points[i];
		const xylVec2& b = points[i + 1 < points.size() ? i + 1 : 0];
		batch.add({a.x, a.y, height}, {b.x - a.x, b.y - a.y, 0}, color);
	}
}
