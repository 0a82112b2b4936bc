#include <frame_text.h>

#include <gtest/gtest.h>

namespace {

constexpr char guid[] = "{0123456789ABCDEF0011223344556677}";

TEST(Frame_text, ReadsRawFrames) {
	const std::string line = "12:00 [log] 0x0000000012345678 0x00000000000ABCDE " +
	                         std::string(guid) + " 3 a game.dll\r";
	Found_frame found;
	ASSERT_TRUE(find_frame(line, 0, found));
	EXPECT_EQ(found.frame.name, "a game.dll");
	EXPECT_EQ(found.frame.offset, 0xABCDEu);
	EXPECT_EQ(found.frame.age, 3u);
	const std::array<unsigned char, 16> bytes{0x67, 0x45, 0x23, 0x01, 0xAB, 0x89, 0xEF, 0xCD,
	                                          0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77};
	EXPECT_EQ(found.frame.guid, bytes);
	EXPECT_EQ(guid_text(bytes), guid);
	EXPECT_EQ(line.substr(found.begin, 4), "0x00");
	EXPECT_EQ(line.substr(found.begin + found.length), "\r");
}

TEST(Frame_text, ReadsDeferredFrames) {
	const std::string line =
		"# 0x12 #lib#1.so@" + std::string(guid) + " (10): 0:4096, then #b@" + guid + " (0): 0:1";
	Found_frame found;
	ASSERT_TRUE(find_frame(line, 2, found));
	EXPECT_EQ(found.frame.name, "lib#1.so");
	EXPECT_EQ(found.frame.offset, 4096u);
	EXPECT_EQ(found.frame.age, 10u);
	ASSERT_TRUE(find_frame(line, found.begin + found.length, found));
	EXPECT_EQ(found.frame.name, "b");
	EXPECT_EQ(found.frame.offset, 1u);
	EXPECT_EQ(found.begin + found.length, line.size());
	EXPECT_FALSE(find_frame(line, line.size(), found));
}

TEST(Frame_text, ShortensPathsOfBothSystems) {
	const std::string raw = "0x0000000000000000 0x0000000000000001 " + std::string(guid) + " 0 ";
	for (const char* path : {"/usr/lib/lib a.so", "D:\\game\\lib a.so", "lib a.so"}) {
		Found_frame found;
		ASSERT_TRUE(find_frame(raw + path, 0, found));
		EXPECT_EQ(found.frame.name, "lib a.so");
		EXPECT_EQ(found.frame.path, path);
	}
	Found_frame found;
	EXPECT_FALSE(find_frame(raw + "/usr/lib/", 0, found));
}

TEST(Frame_text, PassesOverWhatIsNoFrame) {
	const std::string raw = "0x0000000012345678 0x00000000000ABCDE ";
	const std::string lines[] = {
		"",
		"0",
		"#",
		"#@{",
		raw,
		raw + guid,
		raw + guid + " 3",
		raw + guid + " 3 ",
		raw + guid + " x name",
		raw + "{0123456789ABCDEF001122334455667} 3 name",   // a digit less
		raw + "{0123456789ABCDEF00112233445566777} 3 name", // a digit more
		raw + "{0123456789ABCDEFG011223344556677} 3 name",
		raw + "{00000000000000000000000000000000} 0 ", // an image without identity
		raw + "{00000000000000000000000000000000} 0 name",
		"0x000000001234567 0x00000000000ABCDE " + std::string(guid) + " 3 name",
		std::string("#@") + guid + " (1): 0:1", // no name
		std::string("#a@") + guid + " (): 0:1",
		std::string("#a@") + guid + " (1): 1:1",
		std::string("#a@") + guid + " (1): 0:",
		"#a@{00000000000000000000000000000000} (0): 0:1",
		"@a@b.cpp (1): f", // resolved already
		"[unresolvable frame] ",
	};
	for (const std::string& line : lines) {
		SCOPED_TRACE(line);
		Found_frame found;
		EXPECT_FALSE(find_frame(line, 0, found));
	}
}

TEST(Frame_text, SurvivesEveryCut) {
	const std::string line = "0x0000000012345678 0x00000000000ABCDE " + std::string(guid) +
	                         " 3 n #a@" + guid + " (1): 0:1";
	Found_frame found;
	for (size_t begin = 0; begin < line.size(); ++begin)
		for (size_t length = 0; begin + length <= line.size(); ++length) {
			// A block of its own, so that a byte too far is seen.
			const std::string part = line.substr(begin, length);
			const std::unique_ptr<char[]> block(new char[length + 1]);
			std::copy(part.begin(), part.end(), block.get());
			if (!find_frame({block.get(), length}, 0, found)) continue;
			EXPECT_LE(found.begin + found.length, length);
		}
}

TEST(Frame_text, NamesWhatIsNotKnown) {
	EXPECT_EQ(resolved_text("m", {"f", "s.cpp", 7}), "@m@s.cpp (7): f");
	EXPECT_EQ(resolved_text("m", {"f", "", 0}), "@m@unknown_source (unknown_line): f");
	EXPECT_EQ(resolved_text("m", {}), "@m@unknown_source (unknown_line): unknown_function");
}

} // namespace
