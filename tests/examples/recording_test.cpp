#include <engine_host/recording.h>

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace {

constexpr float nan_value = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

// One record in each list, two in the texts.
void fill(xylDebug_render_records& records) {
	const xylVec3 corners[] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {nan_value, infinity, -FLT_MAX}};
	const xylInt_vec2 offset(-7, 1 << 30);
	records.add_debug_line_double_color({1, 2, 3}, {-4, 5e-40f, infinity}, 0x11223344, 0x55667788,
	                                    false, 2.5f);
	records.add_debug_line({nan_value, 0, 0}, {0, 0, 1}, 0xFFFFFFFF, true, -1);
	records.add_debug_quad(corners, 0xFF010203, false, false);
	records.add_debug_quad(corners, 0x80040506, true, false);
	records.add_debug_tri(corners, 0x00070809, false, true);
	records.add_debug_2d_object(1, -2, FLT_MAX, 4, 0xAABBCCDD);
	records.add_debug_text({9, 8, 7}, "a name", 0xFF00FF00, &offset, 0.5f);
	records.show_framerate(20, 40, 0xFF0000FF, xylVarString("60 \xE4 %s"), 0);
}

std::vector<unsigned char> bytes_of(const Recording& recording) {
	return {recording.data(), recording.data() + recording.size()};
}

std::vector<unsigned char> two_frames() {
	xylDebug_render_records records;
	fill(records);
	Recording recording;
	recording.add(7, 0.25f, records);
	records.lines.clear();
	recording.add(8, 0.5f, records);
	return bytes_of(recording);
}

// How many frames come out of the bytes, and whether they are damaged.
std::pair<int, bool> read_all(const std::vector<unsigned char>& bytes) {
	Recording_reader reader(bytes.data(), bytes.size());
	Frame frame;
	int count = 0;
	while (reader.next(&frame)) ++count;
	return {count, reader.is_damaged()};
}

} // namespace

TEST(Recording, GivesBackEveryFieldBitForBit) {
	xylDebug_render_records records;
	fill(records);
	Recording recording;
	recording.add(7, 0.25f, records);
	Recording_reader reader(recording.data(), recording.size());
	Frame frame;
	ASSERT_TRUE(reader.next(&frame));
	EXPECT_EQ(frame.tick, 7u);
	EXPECT_EQ(frame.time, 0.25f);
	Recording again;
	again.add(frame.tick, frame.time, frame.records);
	EXPECT_EQ(bytes_of(again), bytes_of(recording));
	ASSERT_EQ(frame.records.texts.size(), 2u);
	EXPECT_STREQ(frame.records.texts[0].text.char_p(), "a name");
	EXPECT_EQ(frame.records.texts[0].pixel_offset.x, -7);
	EXPECT_FALSE(frame.records.texts[0].screen_space);
	EXPECT_TRUE(frame.records.texts[1].screen_space);
	EXPECT_STREQ(frame.records.texts[1].text.char_p(), "60 \xE4 %s");
	ASSERT_EQ(frame.records.lines.size(), 1u);
	EXPECT_EQ(frame.records.lines[0].delta.y, 5e-40f);
	EXPECT_EQ(frame.records.lines[0].color_end, 0x55667788u);
	EXPECT_TRUE(std::isnan(frame.records.lines_alternate[0].start.x));
	EXPECT_EQ(frame.records.quads_dithered[0].color, 0x80040506u);
	EXPECT_EQ(frame.records.quads_alternate[0].corners[3].x, 7); // a triangle's third again
	EXPECT_EQ(frame.records.objects_2d[0].c, FLT_MAX);
	EXPECT_FALSE(reader.next(&frame));
	EXPECT_FALSE(reader.is_damaged());
}

// The bytes that the header tells.
TEST(Recording, IsLaidOutAsDescribed) {
	xylDebug_render_records records;
	records.add_debug_line({1, 2, 3}, {4, 5, 6}, 0x11223344, false, 8);
	Recording recording;
	recording.add(3, 1.5f, records);
	ASSERT_EQ(recording.size(), 4u + 8 + 7 * 4 + 40);
	const auto word = [&](size_t at) {
		unsigned int value = 0;
		std::memcpy(&value, recording.data() + at, 4);
		return value;
	};
	EXPECT_EQ(word(0), recording_mark);
	EXPECT_EQ(word(4), 3u);
	EXPECT_EQ(word(8), 0x3FC00000u); // 1.5
	EXPECT_EQ(word(12), 1u);         // lines
	EXPECT_EQ(word(16), 0x3F800000u);
	EXPECT_EQ(word(16 + 24), 0x11223344u);
	EXPECT_EQ(word(16 + 36), 0x41000000u); // 8
	EXPECT_EQ(word(16 + 40), 0u);          // lines_alternate
}

TEST(Recording, ThatBreaksOffAnywhereGivesTheFramesBeforeThat) {
	const std::vector<unsigned char> whole = two_frames();
	ASSERT_EQ(read_all(whole), std::pair(2, false));
	size_t first_end = whole.size();
	for (size_t size = 0; size < whole.size(); ++size) {
		SCOPED_TRACE(size);
		const auto [count, is_damaged] =
			read_all({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
		ASSERT_LE(count, 1);
		if (count == 1 && first_end == whole.size()) first_end = size;
		// Whole as far as they go: the mark alone, and the mark with the first frame.
		EXPECT_EQ(is_damaged, size != 4 && size != first_end);
	}
	EXPECT_LT(first_end, whole.size());
}

TEST(Recording, WithAnImpossibleCountTakesNoMemory) {
	std::vector<unsigned char> bytes = two_frames();
	for (const size_t list : {size_t{12}, size_t{16 + 40}}) { // the counts of the first two lists
		SCOPED_TRACE(list);
		std::vector<unsigned char> damaged = bytes;
		std::memset(damaged.data() + list, 0xFF, 4);
		EXPECT_EQ(read_all(damaged), std::pair(0, true));
	}
}

TEST(Recording, OfAnotherKindIsDamaged) {
	std::vector<unsigned char> bytes = two_frames();
	bytes[0] ^= 1;
	EXPECT_EQ(read_all(bytes), std::pair(0, true));
	EXPECT_EQ(read_all({}), std::pair(0, true));
}

// Every byte in turn is replaced: whatever comes out, the reader stays within the block, which the
// address sanitizer sees.
TEST(Recording, WithAnyByteReplacedStaysWithinItsBytes) {
	const std::vector<unsigned char> whole = two_frames();
	for (size_t at = 0; at < whole.size(); ++at) {
		for (const auto value : std::vector<unsigned char>{0x00, 0x7F, 0xFF}) {
			std::vector<unsigned char> damaged = whole;
			damaged[at] = value;
			ASSERT_LE(read_all(damaged).first, 2) << at;
		}
	}
}
