// The shapes of xylDebug_render_records: what each leaves in the lists.

#include <morvantis/diagnostics/xyldebug_render_records.h>

#include "shapes_step_by_step.h"
#include "test_data.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <limits>
#include <numbers>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using Records = xylDebug_render_records;

constexpr xylUInt32 color = 0xFF123456;
constexpr xylUInt32 highlight = 0xFFD8D8D8;
const xylVec3 low(1, 2, 3);
const xylVec3 high(4, 6, 8);

xylMatrix_frame sample_frame() {
	xylMatrix_frame frame = xylMatrix_frame::identity();
	frame.s = {0, 1, 0, 0};
	frame.f = {-1, 0, 0, 0};
	frame.origin = {10, 20, 30, 1};
	return frame;
}

struct Counts {
	size_t lines, lines_alternate, quads, quads_dithered;
	bool operator==(const Counts&) const = default;
};
void PrintTo(const Counts& c, std::ostream* stream) {
	*stream << c.lines << ' ' << c.lines_alternate << ' ' << c.quads << ' ' << c.quads_dithered;
}
Counts counts(const Records& r) {
	return {r.lines.size(), r.lines_alternate.size(), r.quads.size(), r.quads_dithered.size()};
}

// One fixed call of each shape, and what it adds. `is_exact` where no approximate root is in it,
// whose last digits differ between processors.
struct Shape {
	const char* name;
	bool is_exact;
	Counts expected;
	void (*add)(Records&);
};

const xylVec3 corners[8] = {{0, 0, 0}, {1, 1, 1}, {0, 1, 0}, {1, 1, 0},
                            {0, 0, 1}, {1, 0, 1}, {0, 1, 1}, {1, 0, 0}};
int one_axis[3] = {0, 1, 0};
int one_plane[3] = {0, 0, 1};
int scale_s_and_u[6] = {0, 0, 0, 1, 1, 1};

const Shape shapes[] = {
	{"box_with_points",
     true,
     {0, 12, 0, 0},
     [](Records& r) { r.add_debug_box_object_with_points(corners, color, true, 1); }},
	{"box",
     true,
     {12, 0, 0, 0},
     [](Records& r) { r.add_debug_box_object(low, high, color, false, 1); }},
	{"box_in_frame",
     true,
     {12, 0, 0, 0},
     [](Records& r) { r.add_debug_box_object(low, high, sample_frame(), color, false, 1); }},
	{"transformed_box",
     true,
     {0, 12, 0, 0},
     [](Records& r) { r.add_debug_transformed_box(low, high, sample_frame(), color, true, 1); }},
	{"cube", true, {0, 0, 6, 0}, [](Records& r) { r.add_debug_cube_box_object(corners, color); }},
	{"cube_min_max",
     true,
     {0, 0, 6, 0},
     [](Records& r) { r.add_debug_cube_box_object(low, high, color); }},
	{"cube_from_bb",
     true,
     {0, 0, 6, 0},
     [](Records& r) { r.add_debug_cube_box_object_from_bb(corners, color); }},
	{"cube_from_bb_dithered",
     true,
     {0, 0, 0, 6},
     [](Records& r) { r.add_debug_cube_box_object_from_bb_dithered(corners, color); }},
	{"cube_dithered",
     true,
     {0, 0, 0, 6},
     [](Records& r) { r.add_debug_cube_box_object_dithered(low, high, color); }},
	{"wireframe_quad",
     true,
     {5, 0, 0, 0},
     [](Records& r) { r.add_debug_quad_wireframe(corners, 4, color, false, 1); }},
	{"wireframe_triangle",
     true,
     {0, 3, 0, 0},
     [](Records& r) { r.add_debug_quad_wireframe(corners, 3, color, true, 1); }},
	{"sphere",
     true,
     {231, 0, 0, 0},
     [](Records& r) { r.add_debug_sphere(low, 2.5f, color, false, 1); }},
	{"capsule",
     false,
     {294, 0, 0, 0},
     [](Records& r) { r.add_debug_capsule(low, high, 0.5f, color, false, 1); }},
	{"capsule_with_two_radius",
     false,
     {0, 96, 0, 0},
     [](Records& r) { r.add_debug_capsule_with_two_radius(low, high, 0.5f, 2, color, true, 1); }},
	{"cone",
     false,
     {40, 0, 0, 0}, // 3 rings of a length of 7.07
     [](Records& r) { r.add_debug_cone(low, high, 2, color, false, 1); }},
	{"cone_solid",
     false,
     {0, 0, 12, 0},
     [](Records& r) {
		 r.add_debug_cone_solid({0, 2, 0}, {0, -1, 0}, 0.3f, sample_frame(), color, true, 1);
	 }},
	{"arrow",
     false,
     {1, 0, 6, 0},
     [](Records& r) { r.add_debug_direction_arrow(low, {3, 4, 12}, color, false); }},
	{"arrow_up",
     false,
     {0, 1, 6, 0},
     [](Records& r) { r.add_debug_direction_arrow(low, {0, 0, -2}, color, true); }},
	{"frame", true, {3, 0, 0, 0}, [](Records& r) { r.add_debug_frame(sample_frame(), 2, 1); }},
	{"coordinate_space",
     false,
     {9, 0, 39, 0},
     [](Records& r) { r.add_debug_coordinate_space(sample_frame(), 2, one_axis, one_plane); }},
	{"coordinate_space_scale",
     true,
     {9, 0, 18, 0},
     [](Records& r) {
		 r.add_debug_coordinate_space_scale(sample_frame(), 2, one_axis, one_plane, 0,
	                                        scale_s_and_u, 0, 3);
	 }},
	{"rotation_area",
     true,
     {0, 0, 63, 0}, // a right angle, 1.5708 / 0.025 = 62.8
     [](Records& r) {
		 r.add_debug_rotation_area({}, sample_frame(), {2, 0, 0}, {0, 3, 0}, 2, color, 3);
	 }},
	{"rotation_ends",
     true,
     {2, 0, 0, 0},
     [](Records& r) {
		 r.add_debug_rotation_area({}, sample_frame(), {2, 0, 0}, {0, 3, 0}, 2, color, 4);
	 }},
	{"object_space_grid",
     true,
     {0, 20, 0, 0},
     [](Records& r) { r.add_object_space_grid(sample_frame(), 1.5f, 2, color); }},
	{"ground_grid", true, {0, 6, 0, 0}, [](Records& r) { r.add_ground_grid(8, 3, color); }},
};

// --- Golden records

void put(std::string& text, float value) {
	char digits[32];
	const auto end = std::to_chars(digits, digits + sizeof(digits), value).ptr;
	text.append(digits, end);
	text += ' ';
}
void put(std::string& text, const xylVec3& v) {
	put(text, v.x);
	put(text, v.y);
	put(text, v.z);
}
void put(std::string& text, xylColor value) {
	char digits[32];
	text.append(digits, std::to_chars(digits, digits + sizeof(digits), value.value, 16).ptr);
}
void put_lines(std::string& text, const char* list, const xylArray<Debug_line_record>& lines) {
	for (const Debug_line_record& line : lines) {
		text += list;
		put(text, line.start);
		put(text, line.delta);
		put(text, line.duration);
		put(text, line.color_start);
		text += ' ';
		put(text, line.color_end);
		text += '\n';
	}
}
void put_quads(std::string& text, const char* list, const xylArray<Debug_quad_record>& quads) {
	for (const Debug_quad_record& quad : quads) {
		text += list;
		for (const xylVec3& corner : quad.corners) put(text, corner);
		put(text, quad.color);
		text += '\n';
	}
}

// A line for each record: list, numbers in the shortest form that gives them back, colours.
std::string text_of(const Records& r) {
	std::string text;
	put_lines(text, "line ", r.lines);
	put_lines(text, "line_alternate ", r.lines_alternate);
	put_quads(text, "quad ", r.quads);
	put_quads(text, "quad_dithered ", r.quads_dithered);
	return text;
}

// Whether two lines say the same, word by word, numbers with a point or an exponent to `tolerance`.
bool is_close(const std::string& a, const std::string& b, float tolerance) {
	std::istringstream words_a(a), words_b(b);
	std::string word_a, word_b;
	while (words_a >> word_a) {
		if (!(words_b >> word_b)) return false;
		if (word_a == word_b) continue;
		char *end_a, *end_b;
		const float number_a = std::strtof(word_a.c_str(), &end_a);
		const float number_b = std::strtof(word_b.c_str(), &end_b);
		if (*end_a || *end_b || !(std::abs(number_a - number_b) <= tolerance)) return false;
	}
	return !(words_b >> word_b);
}

const std::string golden_file = test_data("golden/debug_shapes.txt");

// The file has the shapes one by one, each with its name after a '#'.
std::string golden_text(const std::string& name) {
	std::ifstream file(golden_file);
	std::string line, text;
	while (std::getline(file, line) && line != "# " + name) {
	}
	while (std::getline(file, line) && line[0] != '#') text += line + '\n';
	return text;
}

TEST(Debug_shapes, RecordsAreTheGoldenOnes) {
	if (const char* path = std::getenv("MORVANTIS_WRITE_GOLDEN")) {
		std::ofstream file(path, std::ios::binary);
		for (const Shape& shape : shapes) {
			Records records;
			shape.add(records);
			file << "# " << shape.name << '\n' << text_of(records);
		}
		GTEST_SKIP() << "golden records written";
	}
	for (const Shape& shape : shapes) {
		SCOPED_TRACE(shape.name);
		Records records;
		shape.add(records);
		const std::string seen = text_of(records);
		const std::string expected = golden_text(shape.name);
		ASSERT_FALSE(expected.empty());
		if (shape.is_exact) {
			EXPECT_EQ(seen, expected);
			continue;
		}
		std::istringstream seen_lines(seen), expected_lines(expected);
		std::string a, b;
		while (std::getline(seen_lines, a)) {
			ASSERT_TRUE(std::getline(expected_lines, b));
			EXPECT_TRUE(is_close(a, b, 2e-5f)) << a << "\n" << b;
		}
		EXPECT_FALSE(std::getline(expected_lines, b));
	}
}

TEST(Debug_shapes, EachHasItsNumberOfRecords) {
	for (const Shape& shape : shapes) {
		SCOPED_TRACE(shape.name);
		Records records;
		shape.add(records);
		EXPECT_EQ(counts(records), shape.expected);
	}
}

TEST(Debug_shapes, DisabledLeavesNoneAndTakesNoLock) {
	for (const Shape& shape : shapes) {
		SCOPED_TRACE(shape.name);
		Records records;
		records.enabled = false;
		const std::lock_guard<xylRecursive_mutex> lock(records.mutex);
		std::thread(shape.add, std::ref(records)).join();
		EXPECT_TRUE(records.is_empty());
	}
}

TEST(Debug_shapes, FullListsCutTheShapeOff) {
	for (const Shape& shape : shapes) {
		SCOPED_TRACE(shape.name);
		const bool is_faded = std::string(shape.name) == "object_space_grid";
		const size_t limit = is_faded ? Records::max_double_color_lines : Records::max_lines;
		Records records;
		records.lines.resize(limit - 1);
		records.lines_alternate.resize(limit - 1);
		shape.add(records);
		const Counts cut{limit - (shape.expected.lines == 0),
		                 limit - (shape.expected.lines_alternate == 0), shape.expected.quads,
		                 shape.expected.quads_dithered};
		EXPECT_EQ(counts(records), cut);
		records.lines.resize(limit + 5);
		records.lines_alternate.resize(limit + 5);
		shape.add(records);
		EXPECT_EQ(records.lines.size(), limit + 5);
		EXPECT_EQ(records.lines_alternate.size(), limit + 5);
	}
}

TEST(Debug_shapes, StayInOnePieceWhileOthersAdd) {
	Records records;
	std::vector<std::thread> threads;
	for (xylUInt32 n = 1; n <= 4; ++n) {
		threads.emplace_back([&records, n] {
			for (int i = 0; i < 20; ++i) records.add_debug_sphere(low, 1, n, false, 0);
		});
	}
	for (std::thread& thread : threads) thread.join();
	ASSERT_EQ(records.lines.size(), 80u * 231);
	for (size_t i = 0; i < records.lines.size(); ++i) {
		ASSERT_EQ(records.lines[i].color_start, records.lines[i / 231 * 231].color_start);
	}
}

// --- Round shapes, to the bit

void expect_same_lines(const Records& a, const Records& b) {
	ASSERT_EQ(a.lines.size(), b.lines.size());
	EXPECT_EQ(a.lines.capacity(), b.lines.capacity());
	for (size_t i = 0; i < a.lines.size(); ++i) {
		ASSERT_EQ(std::memcmp(&a.lines[i], &b.lines[i], sizeof(Debug_line_record)), 0)
			<< "line " << i << ": " << a.lines[i].start << a.lines[i].delta << " and "
			<< b.lines[i].start << b.lines[i].delta;
	}
}

const xylVec3 ends[][2] = {{{1, 2, 3}, {4, 6, 8}},
                           {{0, 0, 0}, {0, 0, 5}},
                           {{-7, 3, 1}, {-7.5f, 3.25f, -20}},
                           {{100, 200, -300}, {99, 230, -301}}};

TEST(Debug_shapes, SphereIsThatOfSingleSteps) {
	for (const float radius : {1.0f, 2.5f, 0.001f, 12345.0f}) {
		for (const auto& at : ends) {
			Records ours, steps;
			ours.add_debug_sphere(at[0], radius, color, false, 1);
			step_by_step::add_sphere(steps, at[0], radius, color);
			expect_same_lines(ours, steps);
		}
	}
}

TEST(Debug_shapes, CapsulesAreThoseOfSingleSteps) {
	for (const auto& at : ends) {
		Records ours, steps;
		ours.add_debug_capsule(at[0], at[1], 0.5f, color, false, 1);
		step_by_step::add_capsule(steps, at[0], at[1], 0.5f, 0.5f, 32, color);
		expect_same_lines(ours, steps);
		Records ours_of_two, steps_of_two;
		ours_of_two.add_debug_capsule_with_two_radius(at[0], at[1], 0.5f, 3, color, false, 1);
		step_by_step::add_capsule(steps_of_two, at[0], at[1], 0.5f, 3, 10, color);
		expect_same_lines(ours_of_two, steps_of_two);
	}
}

TEST(Debug_shapes, ConeIsThatOfSingleSteps) {
	for (const auto& at : ends) {
		Records ours, steps;
		ours.add_debug_cone(at[0], at[1], 2, color, false, 1);
		step_by_step::add_cone(steps, at[0], at[1], 2, color);
		expect_same_lines(ours, steps);
	}
}

TEST(Debug_shapes, SphereOfNoRadiusHasLinesOfNoLength) {
	Records records;
	records.add_debug_sphere(low, 0, color, false, 0);
	EXPECT_EQ(records.lines.size(), 231u);
	for (const Debug_line_record& line : records.lines) {
		EXPECT_EQ(line.start, low);
		EXPECT_EQ(line.delta, xylVec3(0, 0, 0));
	}
}

TEST(Debug_shapes, ConeHasARingForEachTwoUnits) {
	struct Case {
		float length;
		size_t lines;
	};
	for (const Case& c : {Case{0.5f, 20}, Case{3.9f, 20}, Case{4, 30}, Case{9, 50}}) {
		SCOPED_TRACE(c.length);
		Records records;
		records.add_debug_cone({0, 0, 0}, {0, 0, c.length}, 1, color, false, 0);
		EXPECT_EQ(records.lines.size(), c.lines);
	}
}

// --- Faces, edges, counts

TEST(Debug_shapes, MinMaxCubeHasTwistedFacesAndTheOthersRightOnes) {
	Records twisted, right, dithered;
	twisted.add_debug_cube_box_object({0, 0, 0}, {1, 1, 1}, color);
	right.add_debug_cube_box_object_from_bb(corners, color);
	dithered.add_debug_cube_box_object_dithered({0, 0, 0}, {1, 1, 1}, color);
	const auto is_square = [](const Debug_quad_record& q) {
		return q.corners[0] + q.corners[2] == q.corners[1] + q.corners[3];
	};
	EXPECT_FALSE(is_square(twisted.quads[0]));
	// kept: face 1 of ring order takes the two ends of the box's diagonal.
	EXPECT_EQ(twisted.quads[0].corners[0], xylVec3(0, 0, 0));
	EXPECT_EQ(twisted.quads[0].corners[1], xylVec3(1, 1, 1));
	for (int i = 0; i < 6; ++i) {
		EXPECT_TRUE(is_square(right.quads[static_cast<size_t>(i)]));
		EXPECT_TRUE(is_square(dithered.quads_dithered[static_cast<size_t>(i)]));
	}
}

TEST(Debug_shapes, WireframeOfAnyCountButFourIsATriangle) {
	for (const int count : {3, 0, 5, -1}) {
		Records records;
		records.add_debug_quad_wireframe(corners, count, color, false, 0);
		EXPECT_EQ(records.lines.size(), 3u);
	}
}

TEST(Debug_shapes, ArrowOfNoLengthCollapses) {
	Records records;
	records.add_debug_direction_arrow(low, {0, 0, 0}, color, false);
	EXPECT_EQ(counts(records), (Counts{1, 0, 6, 0}));
	for (const Debug_quad_record& quad : records.quads) {
		for (const xylVec3& corner : quad.corners) EXPECT_EQ(corner, low);
	}
}

// --- Handles

TEST(Debug_shapes, CoordinateSpaceTakesNullHighlights) {
	Records records;
	records.add_debug_coordinate_space(xylMatrix_frame::identity(), 1, nullptr, nullptr);
	const xylColor axes[3] = {Records::axis_color_x, Records::axis_color_y, Records::axis_color_z};
	for (size_t i = 0; i < 3; ++i) EXPECT_EQ(records.lines[i].color_start, axes[i]);
	const size_t cones[3] = {1, 0, 2}; // on f, on s, on u
	for (size_t i = 0; i < 3; ++i) EXPECT_EQ(records.quads[i * 12].color, axes[cones[i]]);
	// The colour of a plane is that of the axis across it.
	const size_t planes[3] = {1, 2, 0};
	for (size_t i = 0; i < 3; ++i) {
		EXPECT_EQ(records.quads[36 + i].color, axes[planes[i]] & 0x40FFFFFFu);
		EXPECT_EQ(records.lines[3 + 2 * i].color_start, axes[planes[i]]);
	}
}

TEST(Debug_shapes, CoordinateSpaceHighlightsOneByOne) {
	for (size_t entry = 0; entry < 3; ++entry) {
		int flags[3] = {};
		flags[entry] = 1;
		Records records;
		records.add_debug_coordinate_space(xylMatrix_frame::identity(), 1, flags, flags);
		for (size_t i = 0; i < 3; ++i) {
			EXPECT_EQ(records.lines[i].color_start == highlight, i == entry);
			EXPECT_EQ(records.lines[3 + 2 * i].color_start == highlight, i == entry);
			EXPECT_EQ(records.quads[36 + i].color == 0x40D8D8D8u, i == entry);
		}
	}
}

// The cones stand with their tips a fifth of the scale beyond the axes' ends.
TEST(Debug_shapes, ConesOfTheAxesPointAlongThem) {
	Records records;
	records.add_debug_coordinate_space(xylMatrix_frame::identity(), 10, nullptr, nullptr);
	const xylVec3 tips[3] = {{0, 12, 0}, {12, 0, 0}, {0, 0, 12}};
	for (size_t i = 0; i < 3; ++i) {
		EXPECT_LT((records.quads[12 * i].corners[0] - tips[i]).length(), 1e-5f);
	}
}

TEST(Debug_shapes, ScaleHandlesLengthenTheAxesTold) {
	struct Case {
		int entry, uniform;
		float s, f, u;
	};
	const Case cases[] = {{-1, 0, 2, 2, 2}, {0, 0, 6, 2, 2}, {1, 0, 2, 6, 2}, {2, 0, 2, 2, 6},
	                      {3, 0, 6, 2, 6},  {4, 0, 6, 6, 2}, {5, 0, 2, 6, 6}, {-1, 1, 6, 6, 6}};
	for (const Case& c : cases) {
		SCOPED_TRACE(testing::Message() << c.entry << ' ' << c.uniform);
		int none[3] = {};
		int axes[6] = {};
		if (c.entry >= 0) axes[c.entry] = 1;
		Records records;
		records.add_debug_coordinate_space_scale(xylMatrix_frame::identity(), 2, none, none, 0,
		                                         c.uniform ? nullptr : axes, c.uniform, 3);
		const auto end = [&](size_t i) { return records.lines[i].start + records.lines[i].delta; };
		EXPECT_FLOAT_EQ(end(0).x, c.s);
		EXPECT_FLOAT_EQ(end(1).y, c.f);
		EXPECT_FLOAT_EQ(end(2).z, c.u);
		EXPECT_FLOAT_EQ(records.lines[0].start.x, 0.175f * c.s);
		EXPECT_FLOAT_EQ(records.lines[6].start.x, 0.7f * c.s); // the first outer line
	}
}

TEST(Debug_shapes, HighlightAllIsForTheInnerLines) {
	int none[3] = {};
	int axes[6] = {};
	Records records;
	records.add_debug_coordinate_space_scale(xylMatrix_frame::identity(), 2, none, none, 1, axes, 0,
	                                         1);
	for (size_t i = 3; i < 6; ++i) EXPECT_EQ(records.lines[i].color_start, highlight);
	EXPECT_EQ(records.lines[6].color_start, Records::axis_color_x);
	EXPECT_EQ(records.lines[7].color_start, Records::axis_color_y);
	EXPECT_EQ(records.lines[8].color_start, Records::axis_color_z);
}

TEST(Debug_shapes, RotationAreaKnowsFourModes) {
	const xylMatrix_frame frame = xylMatrix_frame::identity();
	for (const int mode : {0, 5, -1}) {
		Records records;
		records.add_debug_rotation_area(frame, frame, {1, 0, 0}, {0, 1, 0}, 1, color, mode);
		EXPECT_TRUE(records.is_empty());
	}
	const xylVec3 from[3] = {{0, 1, 0}, {0, 0, 1}, {1, 0, 0}};
	const xylVec3 to[3] = {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}};
	for (int mode = 1; mode <= 3; ++mode) {
		for (const bool swapped : {false, true}) {
			const xylVec3& a = swapped ? to[mode - 1] : from[mode - 1];
			const xylVec3& b = swapped ? from[mode - 1] : to[mode - 1];
			Records records;
			records.add_debug_rotation_area(frame, frame, a, b, 2, color, mode);
			EXPECT_EQ(counts(records), (Counts{0, 0, 63, 0}));
			EXPECT_EQ(records.quads[0].corners[0], a * 2);
			EXPECT_LT((records.quads[62].corners[3] - b * 2).length(), 0.05f);
		}
	}
}

TEST(Debug_shapes, RotationAreaEndsWhereItNeverMeetsTheEnd) {
	const xylMatrix_frame frame = xylMatrix_frame::identity();
	for (const xylVec3& from : {xylVec3(0, 0, 1), xylVec3(0, 0, 0)}) {
		Records records;
		records.add_debug_rotation_area(frame, frame, from, {0, 1, 0}, 1, color, 3);
		EXPECT_LE(records.quads.size(), 252u);
	}
}

// --- Grids

TEST(Debug_shapes, ObjectSpaceGridFadesOut) {
	Records records;
	records.add_object_space_grid(xylMatrix_frame::identity(), 1, 2, 0xFF112233);
	const xylUInt32 alphas[5] = {0, 95, 191, 95, 0};
	for (size_t i = 0; i < 10; ++i) {
		const Debug_line_record& in = records.lines_alternate[2 * i];
		const Debug_line_record& out = records.lines_alternate[2 * i + 1];
		const xylUInt32 seen = alphas[i % 5] << 24 | 0x112233;
		EXPECT_EQ(in.color_start, 0x112233u);
		EXPECT_EQ(in.color_end, seen);
		EXPECT_EQ(out.color_start, seen);
		EXPECT_EQ(out.color_end, 0x112233u);
		EXPECT_EQ(in.start + in.delta, out.start);
		EXPECT_EQ(in.delta, out.delta);
	}
}

TEST(Debug_shapes, GridsTakeAnyNumberOfLines) {
	const xylMatrix_frame frame = xylMatrix_frame::identity();
	constexpr int largest = std::numeric_limits<int>::max();
	constexpr int smallest = std::numeric_limits<int>::min();
	struct Case {
		int half_count;
		size_t lines;
	};
	for (const Case& c : {Case{0, 4}, {-1, 0}, {smallest, 0}, {1, 12}, {largest, 0x8000}}) {
		SCOPED_TRACE(c.half_count);
		Records records;
		records.add_object_space_grid(frame, 1, c.half_count, color);
		EXPECT_EQ(records.lines_alternate.size(), c.lines);
	}
	for (const unsigned int count : {0u, 1u, 2u, 4000000000u}) {
		SCOPED_TRACE(count);
		Records records;
		records.add_ground_grid(8, count, color);
		EXPECT_EQ(records.lines_alternate.size(), std::min<size_t>(2 * size_t{count}, 0x10000));
		if (count == 1) {
			EXPECT_EQ(records.lines_alternate[0].start, xylVec3(-4, -4, 0));
			EXPECT_EQ(records.lines_alternate[1].delta, xylVec3(8, 0, 0));
		}
	}
}

TEST(Debug_shapes, NumbersThatAreNotFiniteEnd) {
	const float nan = std::numeric_limits<float>::quiet_NaN();
	const float infinity = std::numeric_limits<float>::infinity();
	for (const float wild : {nan, infinity, -infinity, 3e38f, 1e10f}) {
		SCOPED_TRACE(wild);
		const xylVec3 v(wild, wild, wild);
		const xylMatrix_frame frame = xylMatrix_frame::identity();
		Records records;
		records.add_debug_box_object(v, high, frame, color, false, wild);
		records.add_debug_sphere(v, wild, color, false, 0);
		records.add_debug_capsule(v, low, wild, color, false, 0);
		records.add_debug_cone_solid(v, low, wild, frame, color, false, 0);
		records.add_debug_direction_arrow(v, v, color, false);
		records.add_debug_rotation_area(frame, frame, v, low, wild, color, 1);
		EXPECT_EQ(records.lines.size(), 12u + 231 + 294 + 1);
		records.add_debug_cone(v, low, wild, color, false, 0);
		EXPECT_LE(records.lines.size(), size_t{Records::max_lines});
	}
}

// Every shape with a number that is not finite, or too large, in every place; the number of records
// stays, except where it comes from a length.
TEST(Debug_shapes, WildNumbersChangeNoCount) {
	const float nan = std::numeric_limits<float>::quiet_NaN();
	const float infinity = std::numeric_limits<float>::infinity();
	int all[6] = {1, 1, 1, 1, 1, 1};
	for (const float wild : {nan, infinity, -infinity, 3e38f, -3e38f, 1e20f}) {
		SCOPED_TRACE(wild);
		const xylVec3 v(wild, 1, wild);
		xylMatrix_frame frame = sample_frame();
		frame.f.y = wild;
		frame.origin.z = wild;
		const xylVec3 wild_corners[8] = {v, low, v, high, low, v, high, v};
		struct Case {
			const char* name;
			Counts expected;
			std::function<void(Records&)> add;
		};
		const Case cases[] = {
			{"box with points",
		     {12, 0, 0, 0},
		     [&](Records& r) {
				 r.add_debug_box_object_with_points(wild_corners, color, false, wild);
			 }},
			{"box",
		     {12, 0, 0, 0},
		     [&](Records& r) { r.add_debug_box_object(v, low, 1, false, 0); }},
			{"transformed box",
		     {12, 0, 0, 0},
		     [&](Records& r) { r.add_debug_transformed_box(v, low, frame, 1, false, 0); }},
			{"cube", {0, 0, 6, 0}, [&](Records& r) { r.add_debug_cube_box_object(v, low, color); }},
			{"dithered cube",
		     {0, 0, 0, 6},
		     [&](Records& r) { r.add_debug_cube_box_object_dithered(v, low, color); }},
			{"wireframe",
		     {5, 0, 0, 0},
		     [&](Records& r) { r.add_debug_quad_wireframe(wild_corners, 4, color, false, 0); }},
			{"sphere",
		     {231, 0, 0, 0},
		     [&](Records& r) { r.add_debug_sphere(v, wild, 1, false, 0); }},
			{"capsule",
		     {294, 0, 0, 0},
		     [&](Records& r) { r.add_debug_capsule(v, low, wild, color, false, 0); }},
			{"capsule, wild radius alone",
		     {294, 0, 0, 0},
		     [&](Records& r) { r.add_debug_capsule(low, high, wild, color, false, 0); }},
			{"capsule with two radii",
		     {96, 0, 0, 0},
		     [&](Records& r) {
				 r.add_debug_capsule_with_two_radius(low, v, wild, 1, color, false, 0);
			 }},
			{"cone, wild radius",
		     {40, 0, 0, 0},
		     [&](Records& r) { r.add_debug_cone(low, high, wild, color, false, 0); }},
			{"solid cone",
		     {0, 0, 12, 0},
		     [&](Records& r) { r.add_debug_cone_solid(v, low, wild, frame, color, false, 0); }},
			{"arrow",
		     {1, 0, 6, 0},
		     [&](Records& r) { r.add_debug_direction_arrow(low, v, color, false); }},
			{"frame", {3, 0, 0, 0}, [&](Records& r) { r.add_debug_frame(frame, wild, wild); }},
			{"coordinate space",
		     {9, 0, 39, 0},
		     [&](Records& r) { r.add_debug_coordinate_space(frame, wild, all, all); }},
			{"coordinate space for scaling",
		     {9, 0, 18, 0},
		     [&](Records& r) {
				 r.add_debug_coordinate_space_scale(frame, wild, all, all, 1, all, 0, wild);
			 }},
			{"rotation ends",
		     {2, 0, 0, 0},
		     [&](Records& r) { r.add_debug_rotation_area(frame, frame, v, low, wild, color, 4); }},
			{"object space grid",
		     {0, 20, 0, 0},
		     [&](Records& r) { r.add_object_space_grid(frame, wild, 2, color); }},
			{"ground grid", {0, 8, 0, 0}, [&](Records& r) { r.add_ground_grid(wild, 4, color); }},
		};
		for (const Case& c : cases) {
			SCOPED_TRACE(c.name);
			Records records;
			c.add(records);
			EXPECT_EQ(counts(records), c.expected);
			for (const Debug_line_record& line : records.lines) {
				EXPECT_EQ(line.color_start, line.color_end);
			}
		}
		Records sweep;
		sweep.add_debug_rotation_area(frame, frame, v, low, wild, color, 2);
		EXPECT_LE(sweep.quads.size(), 252u);
	}
}

// The fourth float of round shapes is the marker of points and deltas, whatever the numbers are.
TEST(Debug_shapes, RoundShapesCarryTheMarker) {
	const float marker = std::numeric_limits<float>::max();
	const float infinity = std::numeric_limits<float>::infinity();
	const xylVec3 other_fourth(1, 2, 3, 77);
	for (const float radius : {1.0f, infinity, std::numeric_limits<float>::quiet_NaN(), 3e38f}) {
		SCOPED_TRACE(radius);
		Records records;
		records.add_debug_sphere(other_fourth, radius, color, false, 0);
		records.add_debug_capsule(other_fourth, high, radius, color, false, 0);
		records.add_debug_capsule(other_fourth, {infinity, 0, 0}, radius, color, false, 0);
		records.add_debug_capsule_with_two_radius(other_fourth, high, radius, 1, color, false, 0);
		records.add_debug_cone(other_fourth, high, radius, color, false, 0);
		ASSERT_FALSE(records.lines.empty());
		for (const Debug_line_record& line : records.lines) {
			ASSERT_EQ(line.start.w, marker);
			ASSERT_EQ(line.delta.w, marker);
		}
	}
}

TEST(Debug_shapes, ZeroRadiiAndLengthsKeepTheirCounts) {
	Records records;
	records.add_debug_capsule(low, high, 0, color, false, 0);
	EXPECT_EQ(records.lines.size(), 294u);
	for (const Debug_line_record& line : records.lines) {
		const bool is_side = line.delta == high - low;
		EXPECT_TRUE(is_side || line.delta == xylVec3(0, 0, 0)) << line.delta;
		EXPECT_TRUE(line.start == low || line.start == high) << line.start;
	}
	records.clear();
	records.add_debug_capsule_with_two_radius(low, high, 0, 0, color, false, 0);
	EXPECT_EQ(records.lines.size(), 96u);
	records.clear();
	records.add_debug_cone(low, high, 0, color, false, 0);
	EXPECT_EQ(records.lines.size(), 40u);
	for (size_t i = 0; i < 30; ++i) EXPECT_EQ(records.lines[i].delta, xylVec3(0, 0, 0));
	for (size_t i = 30; i < 40; ++i) EXPECT_EQ(records.lines[i].delta, high - low);
	records.clear();
	records.add_debug_capsule(low, low, 1, color, false, 0); // no way from a to b
	EXPECT_EQ(records.lines.size(), 294u);
	records.clear();
	records.add_debug_cone(low, low, 1, color, false, 0);
	EXPECT_EQ(records.lines.size(), 20u);
	records.clear();
	records.add_debug_cone_solid(low, low, 0, xylMatrix_frame::identity(), color, false, 0);
	ASSERT_EQ(records.quads.size(), 12u);
	for (const Debug_quad_record& quad : records.quads) EXPECT_EQ(quad.corners[1], low);
}

TEST(Debug_shapes, AngleOnArc) {
	constexpr double pi = std::numbers::pi;
	struct Case {
		double angle, start, end;
		bool expected;
	};
	const Case cases[] = {
		{0, 1.5 * pi, 0.5 * pi, true},
		{pi, 1.5 * pi, 0.5 * pi, false},
		{1, 1, 2, true},
		{2, 1, 2, true},
		{0.99, 1, 2, false},
		{2.01, 1, 2, false},
		{1.5 + 2 * pi, 1, 2, true},
		{1.5 - 4 * pi, 1, 2, true},
		{1.5, 1 - 2 * pi, 2 + 4 * pi, true},
		{5, 1, 1, true},
		{-0.1, -0.2, 0.2, true},
		{0.3, -0.2, 0.2, false},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(testing::Message() << c.angle << ' ' << c.start << ' ' << c.end);
		EXPECT_EQ(Records::is_angle_on_arc(c.angle, c.start, c.end), c.expected);
	}
}

} // namespace
