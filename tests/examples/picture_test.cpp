#include <engine_host/picture.h>

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

constexpr float nan_value = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr Rgb black = {0, 0, 0};
const Ink white(0xFFFFFFFF), red(0xFFFF0000);

Canvas black_canvas(int width, int height) {
	Canvas canvas(width, height);
	canvas.clear(black, black);
	return canvas;
}

// Pixels that are not black.
int painted(const Canvas& canvas) {
	int count = 0;
	for (int y = 0; y < canvas.height(); ++y) {
		for (int x = 0; x < canvas.width(); ++x) count += canvas.pixel(x, y) != black;
	}
	return count;
}

int different(const Canvas& a, const Canvas& b) {
	int count = 0;
	for (int y = 0; y < a.height(); ++y) {
		for (int x = 0; x < a.width(); ++x) count += a.pixel(x, y) != b.pixel(x, y);
	}
	return count;
}

Canvas picture_of(const Frame& frame) { return Painter().paint(frame); }

} // namespace

TEST(Canvas, SharesALineOutByCoverage) {
	Canvas canvas = black_canvas(20, 9);
	canvas.line({2, 4.5, 1}, {18, 4.5, 1}, 2, white, white, false);
	for (int x = 2; x < 18; ++x) {
		EXPECT_EQ(canvas.pixel(x, 3), (Rgb{128, 128, 128})) << x;
		EXPECT_EQ(canvas.pixel(x, 4), (Rgb{255, 255, 255})) << x;
		EXPECT_EQ(canvas.pixel(x, 5), (Rgb{128, 128, 128})) << x;
	}
	EXPECT_EQ(painted(canvas), 3 * 16);
}

TEST(Canvas, DrawsALineAlikeInAllEightDirections) {
	for (const auto& [dx, dy] : {std::pair(15.0, 6.0), {6.0, 15.0}, {-15.0, 6.0}, {-6.0, 15.0}}) {
		SCOPED_TRACE(dx);
		Canvas there = black_canvas(41, 41), back = black_canvas(41, 41);
		const Canvas_point middle{20.5, 20.5, 1}, end{20.5 + dx, 20.5 + dy, 1};
		there.line(middle, end, 1.5, white, white, false);
		back.line(end, middle, 1.5, white, white, false);
		EXPECT_EQ(different(there, back), 0);
		EXPECT_GT(painted(there), 15);
	}
}

TEST(Canvas, RunsFromTheOneInkToTheOther) {
	Canvas canvas = black_canvas(100, 3);
	canvas.line({0, 1.5, 1}, {100, 1.5, 1}, 1, white, red, false);
	EXPECT_EQ(canvas.pixel(0, 1)[0], 255);
	EXPECT_GT(canvas.pixel(0, 1)[1], 250);
	EXPECT_NEAR(canvas.pixel(50, 1)[1], 127, 3);
	EXPECT_LT(canvas.pixel(99, 1)[1], 5);
}

TEST(Canvas, FillsThePixelsWhoseMiddlesLieInATriangle) {
	Canvas canvas = black_canvas(10, 10);
	canvas.triangle({0, 0, 1}, {10, 0, 1}, {0, 10, 1}, white, {});
	EXPECT_EQ(painted(canvas), 45); // those on the long side itself are not
	EXPECT_EQ(canvas.pixel(4, 4), (Rgb{255, 255, 255}));
	EXPECT_EQ(canvas.pixel(5, 5), black);
}

TEST(Canvas, LeavesNoGapAndNoOverlapBetweenTrianglesOfAQuad) {
	Canvas canvas = black_canvas(64, 64);
	const Ink half(0x80FFFFFF);
	const Canvas_point a{3.3, 5.1, 1}, b{60.2, 9.7, 1}, c{55.5, 58.9, 1}, d{7.7, 49.2, 1};
	canvas.triangle(a, b, c, half, {});
	canvas.triangle(a, c, d, half, {});
	for (int y = 15; y < 45; ++y) {
		for (int x = 12; x < 52; ++x)
			ASSERT_EQ(canvas.pixel(x, y), (Rgb{128, 128, 128})) << x << ' ' << y;
	}
}

TEST(Canvas, KeepsWhatIsNearer) {
	Canvas canvas = black_canvas(10, 10);
	const auto square = [&](double nearness, const Ink& ink) {
		canvas.triangle({0, 0, nearness}, {10, 0, nearness}, {10, 10, nearness}, ink, {});
		canvas.triangle({0, 0, nearness}, {10, 10, nearness}, {0, 10, nearness}, ink, {});
	};
	square(0.5, white);
	square(0.4, red);
	EXPECT_EQ(canvas.pixel(5, 5)[1], 255);
	canvas.line({0, 5.5, 0.4}, {10, 5.5, 0.4}, 1, red, red, true);
	EXPECT_EQ(canvas.pixel(5, 5)[1], 255);
	canvas.line({0, 5.5, 0.6}, {10, 5.5, 0.6}, 1, red, red, true);
	EXPECT_EQ(canvas.pixel(5, 5)[1], 0);
	square(0.6, white);
	EXPECT_EQ(canvas.pixel(5, 5)[1], 255);
}

TEST(Canvas, DithersEverySecondPixel) {
	Canvas canvas = black_canvas(10, 10);
	canvas.triangle({0, 0, 1}, {20, 0, 1}, {0, 20, 1}, white, {true, true, true});
	EXPECT_EQ(painted(canvas), 50);
	EXPECT_EQ(painted(canvas.shrunk(2)), 25);
	EXPECT_EQ(canvas.shrunk(2).pixel(1, 1), (Rgb{128, 128, 128}));
}

TEST(Canvas, TakesRectanglesOfAnyNumbers) {
	for (const double number : {0.0, 1e300, -1e300, double{infinity}, double{nan_value}}) {
		SCOPED_TRACE(number);
		Canvas canvas = black_canvas(8, 8);
		canvas.rectangle(number, 2, 4, number, white);
		canvas.rectangle(1, number, number, 4, white);
		EXPECT_LE(painted(canvas), 64);
	}
	Canvas canvas = black_canvas(8, 8);
	canvas.rectangle(-1e300, 2, 1e300, 4, white);
	EXPECT_EQ(painted(canvas), 16);
}

TEST(Canvas, StopsWhenItsBudgetIsSpent) {
	Canvas canvas = black_canvas(16, 16);
	int rounds = 0;
	while (!canvas.is_exhausted() && rounds < 100000) {
		canvas.rectangle(0, 0, 16, 16, rounds++ % 2 ? red : white);
	}
	EXPECT_TRUE(canvas.is_exhausted());
	EXPECT_GT(rounds, 20);
	EXPECT_LT(rounds, 1000);
	const Rgb before = canvas.pixel(3, 3);
	canvas.rectangle(0, 0, 16, 16, before == Rgb{255, 0, 0} ? white : red);
	EXPECT_EQ(canvas.pixel(3, 3), before);
}

TEST(View, CutsLinesOffAtTheBorders) {
	const View view({0, -10, 0}, {0, 0, 0}, 1, 200, 100);
	Canvas_point ends[2];
	ASSERT_TRUE(view.project_line({-1e9f, 0, 0}, {1e9f, 0, 0}, ends));
	EXPECT_NEAR(ends[0].x, 0, 1e-3);
	EXPECT_NEAR(ends[1].x, 200, 1e-3);
	EXPECT_NEAR(ends[0].y, 50, 1e-6);
	ASSERT_TRUE(view.project_line({0, 0, 0}, {0, -1000, 0}, ends)); // past the eye
	EXPECT_NEAR(ends[0].nearness, 0.1, 1e-9);
	EXPECT_NEAR(ends[1].nearness, 10, 1e-6);
	EXPECT_FALSE(view.project_line({0, -20, 0}, {5, -20, 3}, ends)); // behind
	EXPECT_FALSE(view.project_line({100, 0, 0}, {100, 5, 0}, ends)); // beside
}

// Whatever the numbers, what is projected lies on the canvas.
TEST(View, ProjectsAnyNumbersOntoTheCanvasOrNot) {
	const View view({1, -10, 2}, {0, 0, 0}, 0.5, 200, 100);
	const std::vector<float> numbers = {0,       1,        -1,    20,       -20,       1e-40f,
	                                    FLT_MAX, -FLT_MAX, 1e20f, infinity, -infinity, nan_value};
	const auto is_on_canvas = [](const Canvas_point& p) {
		return p.x > -0.01 && p.x < 200.01 && p.y > -0.01 && p.y < 100.01 && p.nearness > 0 &&
		       p.nearness < 10.01;
	};
	int lines = 0, faces = 0;
	for (const float a : numbers) {
		for (const float b : numbers) {
			for (const float c : numbers) {
				Canvas_point ends[2];
				if (view.project_line({a, b, c}, {c, a, b}, ends)) {
					++lines;
					ASSERT_TRUE(is_on_canvas(ends[0]) && is_on_canvas(ends[1]))
						<< a << ' ' << b << ' ' << c;
				}
				const xylVec3 corners[] = {{a, b, c}, {b, c, a}, {c, a, b}, {a, c, b}};
				View::Polygon face;
				if (!view.project_quad(corners, &face)) continue;
				++faces;
				for (size_t i = 0; i < face.count; ++i)
					ASSERT_TRUE(is_on_canvas(face.points[i])) << a << ' ' << b << ' ' << c;
			}
		}
	}
	EXPECT_GT(lines, 50);
	EXPECT_GT(faces, 50);
}

TEST(Painter, ShowsEveryKindOfRecord) {
	const Canvas empty = picture_of(Frame());
	const xylVec3 square[] = {{-9, -9, 1}, {9, -9, 1}, {9, 9, 1}, {-9, 9, 1}};
	using Records = xylDebug_render_records;
	const std::vector<std::pair<const char*, void (*)(Records&, const xylVec3*)>> cases = {
		{"line", [](Records& r,
	                const xylVec3* p) { r.add_debug_line(p[0], {9, 9, 9}, 0xFFFFFFFF, false, 0); }},
		{"line on the ground",
	     [](Records& r, const xylVec3* p) {
			 r.add_debug_line(p[0], {9, 9, 9}, 0xFFFFFFFF, true, 0);
		 }},
		{"quad",
	     [](Records& r, const xylVec3* p) { r.add_debug_quad(p, 0xFFFFFFFF, false, false); }},
		{"clear quad",
	     [](Records& r, const xylVec3* p) { r.add_debug_quad(p, 0x40FFFFFF, false, false); }},
		{"dithered quad",
	     [](Records& r, const xylVec3* p) { r.add_debug_quad(p, 0xFFFFFFFF, true, false); }},
		{"quad on the ground",
	     [](Records& r, const xylVec3* p) { r.add_debug_quad(p, 0xFFFFFFFF, false, true); }},
		{"object",
	     [](Records& r, const xylVec3*) { r.add_debug_2d_object(10, 10, 50, 50, 0xFFFFFFFF); }},
	};
	for (const auto& [name, add] : cases) {
		SCOPED_TRACE(name);
		Frame frame;
		add(frame.records, square);
		EXPECT_GT(different(picture_of(frame), empty), 100);
	}
}

TEST(Painter, FadesARecordUntilItsDurationIsOver) {
	const Canvas empty = picture_of(Frame());
	Painter painter;
	Frame frame;
	frame.records.add_debug_line({-9, 0, 0}, {18, 0, 0}, 0xFFFFFFFF, false, 2);
	frame.records.lines[0].time_stamp = 10;
	frame.time = 10;
	const Canvas fresh = painter.paint(frame);
	frame.records.clear();
	frame.time = 11;
	const Canvas half = painter.paint(frame);
	frame.time = 12;
	const Canvas over = painter.paint(frame);
	EXPECT_GT(different(fresh, empty), 100);
	EXPECT_GT(different(half, empty), 100);
	EXPECT_GT(different(half, fresh), 100);
	EXPECT_EQ(different(over, empty), 0);
}

TEST(Painter, DropsARecordWithoutDurationAfterItsFrame) {
	const Canvas empty = picture_of(Frame());
	for (const float duration : {0.0f, -1.0f, nan_value}) {
		SCOPED_TRACE(duration);
		Painter painter;
		Frame frame;
		frame.records.add_debug_line({-9, 0, 0}, {18, 0, 0}, 0xFFFFFFFF, false, duration);
		EXPECT_GT(different(painter.paint(frame), empty), 100);
		frame.records.clear();
		EXPECT_EQ(different(painter.paint(frame), empty), 0);
	}
}

// Records of bad numbers in every list, and a good line that is seen all the same.
TEST(Painter, LeavesOutWhatCannotBeShown) {
	Frame good;
	good.records.add_debug_line({-9, 0, 0}, {18, 0, 0}, 0xFFFFFFFF, false, 0);
	const Canvas expected = picture_of(good);
	for (const float bad : {nan_value, infinity, -infinity}) {
		SCOPED_TRACE(bad);
		Frame frame = good;
		const xylVec3 corners[] = {{0, 0, 0}, {1, 0, 0}, {1, bad, 0}, {0, 1, 0}};
		for (const bool selector : {false, true}) {
			frame.records.add_debug_line({0, bad, 0}, {1, 0, 0}, 0xFFFF0000, selector, 0);
			frame.records.add_debug_line({0, 0, 0}, {1, 0, bad}, 0xFFFF0000, selector, bad);
			frame.records.add_debug_quad(corners, 0xFFFF0000, selector, !selector);
			frame.records.add_debug_quad(corners, 0x40FF0000, selector, selector);
		}
		frame.records.add_debug_2d_object(bad, bad, bad, bad, 0xFFFF0000);
		frame.records.add_debug_text({bad, 0, 0}, "text", 0xFFFF0000, nullptr, bad);
		frame.records.show_framerate(bad, 20, 0xFFFF0000, xylVarString("text"), 0);
		EXPECT_EQ(different(picture_of(frame), expected), 0);
	}
}

TEST(Painter, EndsWhateverItIsGiven) {
	Frame frame;
	const xylVec3 screen[] = {{-900, -900, 0}, {900, -900, 0}, {900, 900, 0}, {-900, 900, 0}};
	for (int i = 0; i < 3000; ++i) frame.records.add_debug_quad(screen, 0x04FFFFFF, false, false);
	for (int i = 0; i < 20; ++i) {
		frame.records.add_debug_line({-FLT_MAX, 0, 0}, {FLT_MAX, FLT_MAX, 1}, 0xFFFFFFFF, false, 0);
		frame.records.add_debug_2d_object(-1e30f, -1e30f, 2e30f, 2e30f, 0x01FFFFFF);
	}
	frame.records.show_framerate(5, 50, 0xFFFFFFFF, xylVarString(std::string(100000, 'x')), 0);
	Painter painter;
	painter.paint(frame);
	EXPECT_TRUE(painter.was_cut_short());
	painter.paint(Frame()); // and goes on with the next
}

TEST(Painter, GoesWithoutLettersWhereThereIsNoFont) {
	Painter painter;
	EXPECT_FALSE(painter.load_font("no such file"));
	Frame frame;
	frame.records.show_framerate(50, 50, 0xFFFFFFFF, xylVarString("text"), 0);
	EXPECT_EQ(different(painter.paint(frame), picture_of(Frame())), 0);
}

TEST(Painter, DrawsLettersOfTheFont) {
	Painter painter;
	ASSERT_TRUE(painter.load_font(ENGINE_HOST_FONT));
	Frame frame;
	frame.records.show_framerate(50, 50, 0xFFFFFFFF, xylVarString("60 agents \x01\xFF"), 0);
	const xylInt_vec2 offset(2147483647, -2147483647 - 1);
	frame.records.add_debug_text({0, 0, 0}, "far away", 0xFFFFFFFF, &offset, 0);
	const Canvas picture = painter.paint(frame), empty = picture_of(Frame());
	EXPECT_GT(different(picture, empty), 200);
	for (int y = 0; y < Painter::height; ++y) {
		for (int x = 0; x < Painter::width; ++x) {
			if (x > 45 && x < 200 && y > 30 && y < 60) continue;
			ASSERT_EQ(picture.pixel(x, y), empty.pixel(x, y)) << x << ' ' << y;
		}
	}
}
