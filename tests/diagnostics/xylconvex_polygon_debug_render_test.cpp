// Polygons drawn into the records of the current frame.

#include <morvantis/core/xyltimer.h>
#include <morvantis/diagnostics/xyldebug_render_records.h>
#include <morvantis/math/xylconvex_polygon.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace {

using Records = xylDebug_render_records;

// Records of the test's own stand where the frame's are.
class Convex_polygon_drawing_test : public testing::Test {
protected:
	void SetUp() override {
		xyl_cur_frame_debug_render_objects_ptr = &records;
		xylTimer::cur_ticks__[0] = 123456;
	}
	void TearDown() override {
		xyl_cur_frame_debug_render_objects_ptr = former;
		xylTimer::cur_ticks__[0] = 0;
	}

	Records records;
	Records* const former = xyl_cur_frame_debug_render_objects_ptr;
};

xylConvex_polygon polygon_of(xylArray<xylVec2> points) {
	xylConvex_polygon polygon;
	polygon.initialize(points);
	return polygon;
}

TEST_F(Convex_polygon_drawing_test, EachEdgeIsALineHalfAboveTheGround) {
	const xylConvex_polygon triangle = polygon_of({{1, 2}, {5, 2}, {3, 8}});
	triangle.debug_render(0x80123456, true, 2.5f);
	Records expected;
	expected.add_debug_line({1, 2, 0.5f}, {4, 0, 0}, 0x80123456, true, 2.5f);
	expected.add_debug_line({5, 2, 0.5f}, {-2, 6, 0}, 0x80123456, true, 2.5f);
	expected.add_debug_line({3, 8, 0.5f}, {-2, -6, 0}, 0x80123456, true, 2.5f);
	ASSERT_EQ(records.lines_alternate.size(), 3u);
	for (size_t i = 0; i < 3; ++i) {
		EXPECT_EQ(std::memcmp(&records.lines_alternate[i], &expected.lines_alternate[i],
		                      sizeof(Debug_line_record)),
		          0)
			<< i;
	}
	records.lines_alternate.clear();
	EXPECT_TRUE(records.is_empty());
	triangle.debug_render(1, false, 0);
	EXPECT_EQ(records.lines.size(), 3u);
	EXPECT_TRUE(records.lines_alternate.empty());
}

TEST_F(Convex_polygon_drawing_test, ManyEdgesAreLinesInTheirOrder) {
	xylArray<xylVec2> circle;
	for (int i = 0; i < 200; ++i) {
		const float angle = static_cast<float>(i) * 0.0314159265f;
		circle.push_back({100 * std::cos(angle), 100 * std::sin(angle)});
	}
	const xylConvex_polygon polygon = polygon_of(circle);
	ASSERT_GT(polygon.points.size(), 150u);
	polygon.debug_render(1, false, 0);
	ASSERT_EQ(records.lines.size(), polygon.points.size());
	for (size_t i = 0; i < polygon.points.size(); ++i) {
		const xylVec2& a = polygon.points[i];
		const xylVec2& b = polygon.points[(i + 1) % polygon.points.size()];
		EXPECT_EQ(records.lines[i].start, xylVec3(a.x, a.y, 0.5f)) << i;
		EXPECT_EQ(records.lines[i].delta, xylVec3(b.x - a.x, b.y - a.y, 0)) << i;
	}
}

TEST_F(Convex_polygon_drawing_test, DegenerateOnesDrawTheirEdges) {
	struct Case {
		const char* name;
		xylConvex_polygon polygon;
		size_t lines;
	};
	const Case cases[] = {
		{"empty", {}, 0},
		{"a point", polygon_of({{1, 1}, {1, 1}}), 2},
		{"a segment, there and back", polygon_of({{1, 1}, {2, 2}}), 2},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		records.clear();
		c.polygon.debug_render(1, false, 0);
		EXPECT_EQ(records.lines.size(), c.lines);
	}
}

TEST_F(Convex_polygon_drawing_test, FullAndDisabledRecordsTakeNoMore) {
	const xylConvex_polygon triangle = polygon_of({{1, 2}, {5, 2}, {3, 8}});
	records.lines.resize(Records::max_lines - 2);
	triangle.debug_render(1, false, 0);
	EXPECT_EQ(records.lines.size(), size_t{Records::max_lines});
	records.clear();
	records.enabled = false;
	triangle.debug_render(1, false, 0);
	EXPECT_TRUE(records.is_empty());
}

} // namespace
