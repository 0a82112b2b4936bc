#include <morvantis/diagnostics/xyldebug_render_records.h>

#include <morvantis/core/xyltimer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>
#include <mutex>
#include <thread>
#include <type_traits>
#include <vector>

// The order of fields that hosts read.
static_assert(offsetof(Debug_line_record, delta) == 16);
static_assert(offsetof(Debug_line_record, color_start) == 32);
static_assert(offsetof(Debug_line_record, color_end) == 36);
static_assert(offsetof(Debug_line_record, time_stamp) == 40);
static_assert(offsetof(Debug_line_record, duration) == 44);
static_assert(offsetof(Debug_quad_record, color) == 64);
static_assert(offsetof(Debug_2d_object_record, d) == 12);
static_assert(offsetof(Debug_2d_object_record, color) == 16);
static_assert(std::is_trivially_copyable_v<Debug_line_record>);
static_assert(std::is_trivially_copyable_v<Debug_quad_record>);
static_assert(std::is_trivially_copyable_v<Debug_2d_object_record>);

namespace {

using Records = xylDebug_render_records;

constexpr float seconds_per_tick = 1e-5f; // bits 0x3727C5AC
const xylVec3 point(1, 2, 3, 4);
const xylVec3 other_point(5, 6, 7, 8);
const xylVec3 quad[4] = {{1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}};

bool same_bits(const xylVec3& a, const xylVec3& b) { return std::memcmp(&a, &b, sizeof(a)) == 0; }

// Number of records in each list, in the order of the fields.
std::vector<size_t> sizes(const Records& r) {
	return {r.lines.size(),          r.lines_alternate.size(), r.quads.size(),
	        r.quads_dithered.size(), r.quads_alternate.size(), r.objects_2d.size(),
	        r.texts.size()};
}
using Sizes = std::vector<size_t>;

// One record in each list.
void fill(Records& r) {
	const xylVarString text("text");
	r.add_debug_line(point, other_point, 1, false, 0);
	r.add_debug_line(point, other_point, 2, true, 0);
	r.add_debug_quad(quad, 3, false, false);
	r.add_debug_quad(quad, 4, true, false);
	r.add_debug_quad(quad, 5, false, true);
	r.add_debug_2d_object(1, 2, 3, 4, 6);
	r.add_debug_text(point, text, 7, nullptr, 0);
}
const Sizes one_of_each(7, 1);
const Sizes none(7, 0);

class Debug_render_records_test : public testing::Test {
protected:
	void SetUp() override { xylTimer::cur_ticks__[0] = 123456; }
	void TearDown() override { xylTimer::cur_ticks__[0] = 0; }

	Records records;
	const float now = 123456.0f * seconds_per_tick;
};

TEST(xylColor, NamesHaveTheirValues) {
	struct Case {
		const char* name;
		xylColor color;
		xylUInt32 value;
	};
	const Case cases[] = {
		{"black", xylColor::SOLID_BLACK, 0xFF000000},
		{"red", xylColor::SOLID_RED, 0xFFFF0000},
		{"green", xylColor::SOLID_GREEN, 0xFF00FF00},
		{"blue", xylColor::SOLID_BLUE, 0xFF0000FF},
		{"cyan", xylColor::SOLID_CYAN, 0xFF00FFFF},
		{"magenta", xylColor::SOLID_MAGENTA, 0xFFFF00FF},
		{"yellow", xylColor::SOLID_YELLOW, 0xFFFFFF00},
		{"gray", xylColor::SOLID_GRAY, 0xFFAAAAAA},
		{"white", xylColor::SOLID_WHITE, 0xFFFFFFFF},
		{"x axis", Records::axis_color_x, 0xFFFF4000},
		{"y axis", Records::axis_color_y, 0xFF80FF00},
		{"z axis", Records::axis_color_z, 0xFF0080FF},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		EXPECT_EQ(c.color.value, c.value);
	}
}

TEST(xylColor, ConvertsBothWays) {
	const xylColor color = 0x12345678u;
	const xylUInt32 value = color;
	EXPECT_EQ(value, 0x12345678u);
}

TEST(Debug_text_record, IsWhiteUntilSet) {
	EXPECT_EQ(Debug_text_record().color, xylColor::SOLID_WHITE);
}

TEST_F(Debug_render_records_test, FieldsStandInTheirOrder) {
	const void* const fields[] = {
		&records.mutex,      &records.enabled,        &records.reserved_a,
		&records.reserved_b, &records.lines,          &records.lines_alternate,
		&records.quads,      &records.quads_dithered, &records.quads_alternate,
		&records.objects_2d, &records.texts};
	EXPECT_TRUE(std::is_sorted(std::begin(fields), std::end(fields), std::less<>()));
	EXPECT_EQ(static_cast<const void*>(&records.lines + 1), &records.lines_alternate);
	const Debug_text_record text;
	const void* const text_fields[] = {&text.screen_space, &text.position,     &text.text,
	                                   &text.color,        &text.pixel_offset, &text.time_stamp,
	                                   &text.duration};
	EXPECT_TRUE(std::is_sorted(std::begin(text_fields), std::end(text_fields), std::less<>()));
}

TEST_F(Debug_render_records_test, StartsEmptyAndEnabled) {
	EXPECT_TRUE(records.enabled);
	EXPECT_TRUE(records.is_empty());
	EXPECT_EQ(sizes(records), none);
}

TEST_F(Debug_render_records_test, LineIsStoredAsItComes) {
	records.add_debug_line(point, other_point, 0x11223344, false, 2.5f);
	ASSERT_EQ(sizes(records), Sizes({1, 0, 0, 0, 0, 0, 0}));
	const Debug_line_record& line = records.lines[0];
	EXPECT_TRUE(same_bits(line.start, point));
	EXPECT_TRUE(same_bits(line.delta, other_point));
	EXPECT_EQ(line.color_start, 0x11223344u);
	EXPECT_EQ(line.color_end, 0x11223344u);
	EXPECT_EQ(line.time_stamp, now);
	EXPECT_EQ(line.duration, 2.5f);
}

TEST_F(Debug_render_records_test, DoubleColorLineHasBothColors) {
	records.add_debug_line_double_color(point, other_point, 1, 2, false, 2.5f);
	ASSERT_EQ(sizes(records), Sizes({1, 0, 0, 0, 0, 0, 0}));
	const Debug_line_record& line = records.lines[0];
	EXPECT_TRUE(same_bits(line.start, point));
	EXPECT_TRUE(same_bits(line.delta, other_point));
	EXPECT_EQ(line.color_start, 1u);
	EXPECT_EQ(line.color_end, 2u);
	EXPECT_EQ(line.time_stamp, now);
	EXPECT_EQ(line.duration, 2.5f);
}

TEST_F(Debug_render_records_test, SelectorChoosesTheAlternateLines) {
	records.add_debug_line(point, point, 0, true, 0);
	records.add_debug_line_double_color(point, point, 0, 0, true, 0);
	EXPECT_EQ(sizes(records), Sizes({0, 2, 0, 0, 0, 0, 0}));
}

TEST_F(Debug_render_records_test, TheTwoLineLimitsDiffer) {
	for (const bool selector : {false, true}) {
		SCOPED_TRACE(selector);
		xylArray<Debug_line_record>& list = selector ? records.lines_alternate : records.lines;
		list.resize(0x8000 - 1);
		records.add_debug_line_double_color(point, point, 0, 0, selector, 0);
		EXPECT_EQ(list.size(), 0x8000u);
		records.add_debug_line_double_color(point, point, 0, 0, selector, 0);
		EXPECT_EQ(list.size(), 0x8000u);
		records.add_debug_line(point, point, 0, selector, 0);
		EXPECT_EQ(list.size(), 0x8001u);
		list.resize(65535);
		records.add_debug_line(point, point, 0, selector, 0);
		EXPECT_EQ(list.size(), 65536u);
		records.add_debug_line(point, point, 0, selector, 0);
		records.add_debug_line_double_color(point, point, 0, 0, selector, 0);
		EXPECT_EQ(list.size(), 65536u);
	}
}

TEST_F(Debug_render_records_test, FullListLeavesTheOtherOpen) {
	records.lines.resize(65536);
	records.add_debug_line(point, point, 0, true, 0);
	EXPECT_EQ(records.lines_alternate.size(), 1u);
}

TEST_F(Debug_render_records_test, ListsGrowByDoublingFromOne) {
	std::vector<size_t> capacities;
	for (int i = 0; i < 5; ++i) {
		records.add_debug_line(point, point, 0, false, 0);
		capacities.push_back(records.lines.capacity());
	}
	EXPECT_EQ(capacities, Sizes({1, 2, 4, 4, 8}));
}

TEST_F(Debug_render_records_test, LineMayComeFromTheListItself) {
	records.add_debug_line(point, other_point, 0, false, 0);
	for (int i = 0; i < 8; ++i) {
		records.add_debug_line(records.lines[0].start, records.lines[0].delta, 0, false, 0);
	}
	EXPECT_TRUE(same_bits(records.lines[8].start, point));
	EXPECT_TRUE(same_bits(records.lines[8].delta, other_point));
}

TEST_F(Debug_render_records_test, QuadAndTriangleChooseTheirList) {
	struct Case {
		bool dithered, selector;
		Sizes expected;
	};
	const Case cases[] = {
		{false, false, {0, 0, 1, 0, 0, 0, 0}},
		{true, false, {0, 0, 0, 1, 0, 0, 0}},
		{true, true, {0, 0, 0, 1, 0, 0, 0}},
		{false, true, {0, 0, 0, 0, 1, 0, 0}},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(testing::Message() << c.dithered << c.selector);
		Records of_quad, of_tri, of_either;
		of_quad.add_debug_quad(quad, 0, c.dithered, c.selector);
		of_tri.add_debug_tri(quad, 0, c.dithered, c.selector);
		of_either.add_debug_quad_or_tri(quad, 4, 0, c.selector, c.dithered);
		EXPECT_EQ(sizes(of_quad), c.expected);
		EXPECT_EQ(sizes(of_tri), c.expected);
		EXPECT_EQ(sizes(of_either), c.expected);
	}
}

TEST_F(Debug_render_records_test, EveryCountButFourIsATriangle) {
	for (const int count : {4, 3, 5, 0, -1}) {
		SCOPED_TRACE(count);
		records.clear();
		records.add_debug_quad_or_tri(quad, count, 0xABCDEF01, false, false);
		ASSERT_EQ(records.quads.size(), 1u);
		const Debug_quad_record& record = records.quads[0];
		for (int i = 0; i < 3; ++i) EXPECT_TRUE(same_bits(record.corners[i], quad[i]));
		EXPECT_TRUE(same_bits(record.corners[3], quad[count == 4 ? 3 : 2]));
		EXPECT_EQ(record.color, 0xABCDEF01u);
	}
	records.clear();
	records.add_debug_quad(quad, 0, false, false);
	EXPECT_TRUE(same_bits(records.quads[0].corners[3], quad[3]));
	records.add_debug_tri(quad, 0, false, false);
	EXPECT_TRUE(same_bits(records.quads[1].corners[3], quad[2]));
}

TEST_F(Debug_render_records_test, ScreenObjectsHaveADefaultColor) {
	records.enabled = false; // which they don't care about
	records.add_debug_2d_object(1, 2, 3, 4);
	records.add_debug_2d_object(5, 6, 7, 8, 0x01020304);
	ASSERT_EQ(records.objects_2d.size(), 2u);
	const Debug_2d_object_record& first = records.objects_2d[0];
	EXPECT_EQ(first.color, 0x22663399u);
	EXPECT_EQ(std::vector<float>({first.a, first.b, first.c, first.d}),
	          std::vector<float>({1, 2, 3, 4}));
	EXPECT_EQ(records.objects_2d[1].a, 5);
	EXPECT_EQ(records.objects_2d[1].color, 0x01020304u);
}

TEST_F(Debug_render_records_test, TextIsCopied) {
	const xylInt_vec2 offset(10, -20);
	{
		xylVarString text("a text");
		records.add_debug_text(point, text, 0x11223344, &offset, 2.5f);
		text = "changed";
	}
	records.add_debug_text(other_point, "plain", 5, nullptr, 0);
	ASSERT_EQ(records.texts.size(), 2u);
	const Debug_text_record& record = records.texts[0];
	EXPECT_FALSE(record.screen_space);
	EXPECT_TRUE(same_bits(record.position, point));
	EXPECT_STREQ(record.text.char_p(), "a text");
	EXPECT_EQ(record.color, 0x11223344u);
	EXPECT_EQ(record.pixel_offset, offset);
	EXPECT_EQ(record.time_stamp, now);
	EXPECT_EQ(record.duration, 2.5f);
	EXPECT_STREQ(records.texts[1].text.char_p(), "plain");
	EXPECT_EQ(records.texts[1].pixel_offset, xylInt_vec2(0, 0));
}

TEST_F(Debug_render_records_test, NullTextIsEmpty) {
	records.add_debug_text(point, static_cast<const char*>(nullptr), 0, nullptr, 0);
	records.add_debug_text(point, xylVarString(), 0, nullptr, 0);
	ASSERT_EQ(records.texts.size(), 2u);
	for (const Debug_text_record& record : records.texts) {
		EXPECT_TRUE(record.text.is_empty());
		EXPECT_EQ(record.text.length(), 0);
	}
}

TEST_F(Debug_render_records_test, TextsAreLimitedTo512) {
	for (int i = 0; i < 512; ++i) records.add_debug_text(point, "t", 0, nullptr, 0);
	EXPECT_EQ(records.texts.size(), 512u);
	records.add_debug_text(point, "t", 0, nullptr, 0);
	records.show_framerate(0, 0, 0, xylVarString("t"), 0);
	EXPECT_EQ(records.texts.size(), 512u);
	records.texts.pop_back();
	records.show_framerate(0, 0, 0, xylVarString("t"), 0);
	EXPECT_EQ(records.texts.size(), 512u);
}

TEST_F(Debug_render_records_test, TextOnTheScreenIsSwitchedOff) {
	records.add_debug_text(1.0f, 2.0f, 0, xylVarString("t"), 1);
	records.add_debug_text(1.0f, 2.0f, 0, "t", 1);
	records.add_debug_text(1.0f, 2.0f, 0, static_cast<const char*>(nullptr), 1);
	EXPECT_TRUE(records.is_empty());
}

TEST_F(Debug_render_records_test, DrawTextNlMovesTheCursorAlone) {
	float x = 5;
	float y = 7;
	records.draw_text_nl(x, y, 0, "t", 1);
	EXPECT_EQ(x, 20);
	EXPECT_EQ(y, 27);
	records.draw_text_nl(x, y, 0, nullptr, 1);
	EXPECT_EQ(x, 20);
	EXPECT_EQ(y, 47);
	EXPECT_TRUE(records.is_empty());
}

TEST_F(Debug_render_records_test, FramerateIsStoredOnTheScreenEvenDisabled) {
	records.enabled = false;
	records.show_framerate(1.9f, -2.9f, 0x11223344, xylVarString("60"), 2.5f);
	ASSERT_EQ(records.texts.size(), 1u);
	const Debug_text_record& record = records.texts[0];
	EXPECT_TRUE(record.screen_space);
	EXPECT_TRUE(same_bits(record.position, xylVec3(1, -2, 0, 0)));
	EXPECT_STREQ(record.text.char_p(), "60");
	EXPECT_EQ(record.color, 0x11223344u);
	EXPECT_EQ(record.pixel_offset, xylInt_vec2(0, 0));
	EXPECT_EQ(record.time_stamp, now);
	EXPECT_EQ(record.duration, 2.5f);
}

TEST_F(Debug_render_records_test, EmptyFramerateIsDropped) {
	records.show_framerate(0, 0, 0, xylVarString(""), 0);
	records.show_framerate(0, 0, 0, xylVarString(), 0);
	EXPECT_TRUE(records.is_empty());
}

TEST_F(Debug_render_records_test, FramerateBeyondAnIntBecomesItsSmallest) {
	const float infinity = std::numeric_limits<float>::infinity();
	const float nan = std::numeric_limits<float>::quiet_NaN();
	records.show_framerate(infinity, nan, 0, xylVarString("t"), 0);
	EXPECT_TRUE(
		same_bits(records.texts[0].position, xylVec3(-2147483648.0f, -2147483648.0f, 0, 0)));
}

TEST_F(Debug_render_records_test, DisabledTakesNothing) {
	records.enabled = false;
	fill(records);
	records.add_debug_line_double_color(point, point, 0, 0, false, 0);
	records.add_debug_text(point, "t", 0, nullptr, 0);
	EXPECT_EQ(sizes(records), Sizes({0, 0, 0, 0, 0, 1, 0}));
}

TEST_F(Debug_render_records_test, ModeSwitches) {
	struct Case {
		int mode;
		bool before, after;
	};
	const Case cases[] = {{0, true, false},  {0, false, false}, {1, true, true},  {1, false, true},
	                      {2, true, false},  {2, false, true},  {5, true, false}, {5, false, false},
	                      {-1, true, false}, {3, false, false}};
	for (const Case& c : cases) {
		SCOPED_TRACE(testing::Message() << c.mode << " when " << c.before);
		records.clear();
		records.enabled = true;
		fill(records);
		records.enabled = c.before;
		records.set_debug_objects_mode(c.mode);
		EXPECT_EQ(records.enabled, c.after);
		// The dithered quads and the texts stay in any case.
		EXPECT_EQ(sizes(records), c.after ? one_of_each : Sizes({0, 0, 0, 1, 0, 0, 1}));
	}
}

TEST_F(Debug_render_records_test, TogglingTwiceEnablesAgainAndEmptiesInBetween) {
	fill(records);
	records.set_debug_objects_mode(2);
	records.set_debug_objects_mode(2);
	EXPECT_TRUE(records.enabled);
	EXPECT_EQ(sizes(records), Sizes({0, 0, 0, 1, 0, 0, 1}));
}

TEST_F(Debug_render_records_test, EachListAloneMakesItNotEmpty) {
	for (int i = 0; i < 7; ++i) {
		SCOPED_TRACE(i);
		Records alone;
		if (i == 0) alone.lines.resize(1);
		if (i == 1) alone.lines_alternate.resize(1);
		if (i == 2) alone.quads.resize(1);
		if (i == 3) alone.quads_dithered.resize(1);
		if (i == 4) alone.quads_alternate.resize(1);
		if (i == 5) alone.objects_2d.resize(1);
		if (i == 6) alone.texts.resize(1);
		EXPECT_FALSE(alone.is_empty());
		alone.clear();
		EXPECT_TRUE(alone.is_empty());
	}
}

TEST_F(Debug_render_records_test, ReservedListsAreNeverLookedAt) {
	records.reserved_a.push_back(1);
	records.reserved_b.push_back(2);
	EXPECT_TRUE(records.is_empty());
	records.clear();
	records.set_debug_objects_mode(0);
	EXPECT_EQ(records.reserved_a.size(), 1u);
	EXPECT_EQ(records.reserved_b.size(), 1u);
	const Records copy(records);
	Records assigned;
	assigned = records;
	Records merged;
	merged.add_other_records_and_clear(records);
	for (const Records* r :
	     {&copy, static_cast<const Records*>(&assigned), static_cast<const Records*>(&merged)}) {
		EXPECT_TRUE(r->reserved_a.empty());
		EXPECT_TRUE(r->reserved_b.empty());
	}
}

TEST_F(Debug_render_records_test, ClearKeepsTheMemory) {
	fill(records);
	records.clear();
	EXPECT_EQ(sizes(records), none);
	EXPECT_EQ(records.lines.capacity(), 1u);
	EXPECT_EQ(records.quads_dithered.capacity(), 1u);
	EXPECT_EQ(records.texts.capacity(), 1u);
}

TEST_F(Debug_render_records_test, CopyIsEnabledAndHasTheSevenLists) {
	fill(records);
	records.enabled = false;
	const Records copy(records);
	EXPECT_TRUE(copy.enabled);
	EXPECT_EQ(sizes(copy), one_of_each);
	EXPECT_STREQ(copy.texts[0].text.char_p(), "text");
	EXPECT_NE(copy.texts[0].text.char_p(), records.texts[0].text.char_p());
}

TEST_F(Debug_render_records_test, AssignmentLeavesEnabled) {
	fill(records);
	Records target;
	target.enabled = false;
	target.lines.resize(10);
	target = records;
	EXPECT_FALSE(target.enabled);
	EXPECT_EQ(sizes(target), one_of_each);
	EXPECT_EQ(target.lines[0].color_start, 1u);
	EXPECT_EQ(target.quads_alternate[0].color, 5u);
}

TEST_F(Debug_render_records_test, SelfAssignmentChangesNothing) {
	fill(records);
	const Records& same = records;
	records = same;
	EXPECT_EQ(sizes(records), one_of_each);
}

TEST_F(Debug_render_records_test, MergingLeavesTheOtherAsItIs) {
	fill(records);
	Records other;
	fill(other);
	other.lines[0].color_start = 0xAA;
	other.quads_dithered[0].color = 0xBB;
	other.objects_2d[0].color = 0xCC;
	other.enabled = false;
	records.enabled = false;
	records.add_other_records_and_clear(other);
	EXPECT_EQ(sizes(other), one_of_each);
	EXPECT_EQ(sizes(records), Sizes(7, 2));
	EXPECT_FALSE(records.enabled);
	EXPECT_EQ(records.lines[0].color_start, 1u);
	EXPECT_EQ(records.lines[1].color_start, 0xAAu);
	EXPECT_EQ(records.lines_alternate[1].color_start, 2u);
	EXPECT_EQ(records.quads[1].color, 3u);
	EXPECT_EQ(records.quads_dithered[1].color, 0xBBu);
	EXPECT_EQ(records.quads_alternate[1].color, 5u);
	EXPECT_EQ(records.objects_2d[1].color, 0xCCu);
	EXPECT_STREQ(records.texts[1].text.char_p(), "text");
	EXPECT_NE(records.texts[1].text.char_p(), other.texts[0].text.char_p());
}

TEST_F(Debug_render_records_test, MergingTextsTakesNothingElse) {
	Records other;
	fill(other);
	records.add_text_records_and_clear(other);
	EXPECT_EQ(sizes(records), Sizes({0, 0, 0, 0, 0, 0, 1}));
	EXPECT_EQ(sizes(other), one_of_each);
}

TEST_F(Debug_render_records_test, MergingKnowsNoLimit) {
	Records other;
	other.lines.resize(65536);
	other.texts.resize(512);
	records.lines.resize(65536);
	records.texts.resize(512);
	records.add_other_records_and_clear(other);
	EXPECT_EQ(records.lines.size(), 131072u);
	EXPECT_EQ(records.texts.size(), 1024u);
	records.add_text_records_and_clear(other);
	EXPECT_EQ(records.texts.size(), 1536u);
	records.add_debug_line(point, point, 0, false, 0);
	records.add_debug_text(point, "t", 0, nullptr, 0);
	EXPECT_EQ(records.lines.size(), 131072u);
	EXPECT_EQ(records.texts.size(), 1536u);
}

TEST_F(Debug_render_records_test, MergingWithItselfDoubles) {
	fill(records);
	records.add_other_records_and_clear(records);
	EXPECT_EQ(sizes(records), Sizes(7, 2));
	EXPECT_EQ(records.lines[1].color_start, 1u);
	EXPECT_STREQ(records.texts[1].text.char_p(), "text");
}

TEST_F(Debug_render_records_test, AnyNumberIsStoredAsItComes) {
	const float infinity = std::numeric_limits<float>::infinity();
	const float nan = std::numeric_limits<float>::quiet_NaN();
	const xylVec3 wild(nan, infinity, -infinity, nan);
	records.add_debug_line(wild, wild, 0, false, nan);
	EXPECT_TRUE(same_bits(records.lines[0].start, wild));
	EXPECT_TRUE(same_bits(records.lines[0].delta, wild));
	records.add_debug_2d_object(nan, infinity, 0, -infinity);
	EXPECT_EQ(records.objects_2d[0].b, infinity);
}

// --- Threads

// Runs `call` on another thread while this one holds the lock, and waits for its end: an operation
// that took the lock would never end.
void run_beside_the_lock(Records& records, const std::function<void(Records&)>& call) {
	const std::lock_guard<xylRecursive_mutex> lock(records.mutex);
	std::thread(call, std::ref(records)).join();
}

TEST_F(Debug_render_records_test, SomeOperationsTakeNoLock) {
	run_beside_the_lock(records, [](Records& r) {
		r.add_debug_2d_object(1, 2, 3, 4);
		EXPECT_FALSE(r.is_empty());
		const Records copy(r);
		r = copy;
		r.clear();
		r.set_debug_objects_mode(1);
		r.add_debug_text(1.0f, 2.0f, 0, "t", 0);
		float x = 0, y = 0;
		r.draw_text_nl(x, y, 0, "t", 0);
	});
	EXPECT_TRUE(records.is_empty());
}

TEST_F(Debug_render_records_test, DisabledLinesAndQuadsTakeNoLock) {
	records.enabled = false;
	run_beside_the_lock(records, [](Records& r) {
		r.add_debug_line(point, point, 0, false, 0);
		r.add_debug_line_double_color(point, point, 0, 0, false, 0);
		r.add_debug_quad(quad, 0, false, false);
		r.add_debug_tri(quad, 0, false, false);
	});
	EXPECT_TRUE(records.is_empty());
}

TEST_F(Debug_render_records_test, HolderOfTheLockMayAdd) {
	const std::lock_guard<xylRecursive_mutex> lock(records.mutex);
	fill(records);
	EXPECT_EQ(sizes(records), one_of_each);
}

constexpr int thread_count = 4;
constexpr int records_per_thread = 100;

// What each of the adding threads adds: its own number in every record.
void add_from_thread(Records& records, xylUInt32 number) {
	const xylVarString text("t");
	for (int i = 0; i < records_per_thread; ++i) {
		records.add_debug_line(point, point, number, false, 0);
		records.add_debug_line_double_color(point, point, number, number, true, 0);
		records.add_debug_quad(quad, number, false, false);
		records.add_debug_tri(quad, number, true, false);
		records.add_debug_quad_or_tri(quad, 4, number, true, false);
		if (i % 2)
			records.add_debug_text(point, text, number, nullptr, 0);
		else
			records.show_framerate(0, 0, number, text, 0);
	}
}

template <typename Record> size_t count_of(const xylArray<Record>& list, xylUInt32 number) {
	return static_cast<size_t>(
		std::count_if(list.begin(), list.end(), [number](const auto& record) {
			if constexpr (std::is_same_v<Record, Debug_line_record>) {
				return record.color_start == number;
			} else {
				return record.color == number;
			}
		}));
}

TEST_F(Debug_render_records_test, FourThreadsLoseNothing) {
	std::vector<std::thread> threads;
	for (xylUInt32 n = 0; n < thread_count; ++n) {
		threads.emplace_back(add_from_thread, std::ref(records), n);
	}
	for (std::thread& thread : threads) thread.join();
	for (xylUInt32 n = 0; n < thread_count; ++n) {
		SCOPED_TRACE(n);
		EXPECT_EQ(count_of(records.lines, n), 100u);
		EXPECT_EQ(count_of(records.lines_alternate, n), 100u);
		EXPECT_EQ(count_of(records.quads, n), 100u);
		EXPECT_EQ(count_of(records.quads_dithered, n), 100u);
		EXPECT_EQ(count_of(records.quads_alternate, n), 100u);
		EXPECT_EQ(count_of(records.texts, n), 100u);
	}
}

TEST_F(Debug_render_records_test, MergingWhileOthersAddTakesWholeRecords) {
	Records other;
	std::vector<std::thread> threads;
	threads.emplace_back(add_from_thread, std::ref(records), 1);
	threads.emplace_back(add_from_thread, std::ref(other), 2);
	threads.emplace_back([&] {
		for (int i = 0; i < 20; ++i) records.add_text_records_and_clear(other);
	});
	for (int i = 0; i < 20; ++i) records.add_other_records_and_clear(other);
	for (std::thread& thread : threads) thread.join();
	EXPECT_EQ(count_of(records.lines, 1), 100u);
	EXPECT_EQ(count_of(other.lines, 2), 100u);
	EXPECT_EQ(count_of(records.lines, 1) + count_of(records.lines, 2), records.lines.size());
}

TEST_F(Debug_render_records_test, ModeMaySwitchWhileOthersAdd) {
	std::thread adder(add_from_thread, std::ref(records), 1);
	for (int i = 0; i < 100; ++i) records.set_debug_objects_mode(2);
	adder.join();
	EXPECT_TRUE(records.enabled);
	EXPECT_LE(records.lines.size(), 100u);
}

} // namespace
