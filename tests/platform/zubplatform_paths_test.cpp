#include "recording_host.h"
#include "temporary_folder.h"

#include <morvantis/platform/zubplatform.h>
#include <morvantis/strings/xylvarstring.h>

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

// The conversions as functions on texts.
std::string final_of(const std::string& path) {
	return zubPlatform::convert_base_path_to_final(xylVarString(path.c_str())).char_p();
}
std::string base_of(const std::string& path) {
	return zubPlatform::convert_final_to_base_path(xylVarString(path.c_str())).char_p();
}
std::string absolute_of(const std::string& path) {
	return zubPlatform::convert_base_path_to_absolute_path(xylVarString(path.c_str())).char_p();
}
std::string relative_of(const std::string& path) {
	return zubPlatform::get_base_relative_path(xylVarString(path.c_str())).char_p();
}

TEST(zubPlatform_paths, ConstantsOfTheScheme) {
	EXPECT_EQ(std::string(zubPlatform::get_base_path_prefix().char_p()), "$BASE/");
	EXPECT_EQ(zubPlatform::get_base_path_prefix().length(), 6);
	EXPECT_EQ(std::string(zubPlatform::get_platform_base()), "../../");
	EXPECT_EQ(zubPlatform::get_platform_base(), zub_platform->get_platform_base());
}

TEST(zubPlatform_paths, FinalFormOfBasePaths) {
	struct Case {
		const char* name;
		const char* path;
		const char* expected;
	};
	const Case cases[] = {
		{"prefix in front", "$BASE/data/a.txt", "../../data/a.txt"},
		{"prefix alone", "$BASE/", "../../"},
		{"backslash behind it", "$BASE/data\\a.txt", "../../data\\a.txt"},
		// Without the prefix nothing changes.
		{"empty", "", ""},
		{"plain", "data/a.txt", "data/a.txt"},
		{"case counts", "$base/x", "$base/x"},
		{"its backslash form", "$BASE\\x", "$BASE\\x"},
		{"one short", "$BASE", "$BASE"},
		// Found later, the first six characters give way all the same.
		{"behind two", "x/$BASE/a.txt", "../../E/a.txt"},
		{"behind one", "/$BASE/a", "../..//a"},
		{"behind six", "abcdef$BASE/a", "../../$BASE/a"},
		{"behind more", "C:/game/$BASE/a", "../../e/$BASE/a"},
		{"twice", "$BASE/$BASE/a", "../../$BASE/a"},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		EXPECT_EQ(final_of(c.path), c.expected);
		EXPECT_EQ(zubPlatform::convert_base_path_to_final(xylVarString(c.path)).length(),
		          static_cast<int>(std::string(c.expected).size()));
	}
}

TEST(zubPlatform_paths, FinalFormOfTheLongestPath) {
	const std::string tail(279 - 6, 'x');
	EXPECT_EQ(final_of("$BASE/" + tail), "../../" + tail);
}

TEST(zubPlatform_paths, BaseFormOfFinalPathsCutsTheTailToSix) {
	struct Case {
		const char* name;
		const char* path;
		const char* expected;
	};
	const Case cases[] = {
		{"alone", "../../", "$BASE/"},
		{"longer tail", "../../data/textures/a.tga", "$BASE/data/t"},
		{"seven", "../../abcdefg", "$BASE/abcdef"},
		{"six", "../../abcdef", "$BASE/abcdef"},
		{"later in the path", "C:/x/../../abcdefg", "C:/x/$BASE/abcdef"},
		{"only the first", "../../../../a", "$BASE/../../"},
		{"nothing behind", "abc../../", "abc$BASE/"},
		// Without one nothing changes.
		{"empty", "", ""},
		{"plain", "data/a.txt", "data/a.txt"},
		{"one level", "../a", "../a"},
		{"its backslash form", "..\\..\\a", "..\\..\\a"},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		EXPECT_EQ(base_of(c.path), c.expected);
		EXPECT_EQ(zubPlatform::convert_final_to_base_path(xylVarString(c.path)).length(),
		          static_cast<int>(std::string(c.expected).size()));
	}
}

// What stands between a shorter tail and the cut is nobody's to depend on.
TEST(zubPlatform_paths, BaseFormCountsAShorterTailAsSix) {
	for (const char* tail : {"a", "ab", "abcde"}) {
		SCOPED_TRACE(tail);
		const std::string path = std::string("x/../../") + tail;
		EXPECT_EQ(base_of(path).substr(0, 8 + std::strlen(tail)), std::string("x/$BASE/") + tail);
		EXPECT_EQ(zubPlatform::convert_final_to_base_path(xylVarString(path.c_str())).length(), 14);
	}
}

TEST(zubPlatform_paths, BaseFormOfTheLongestPaths) {
	const std::string front(243, 'f');
	EXPECT_EQ(base_of(front + "../../abcdef"), front + "$BASE/abcdef") << "255 characters";
	const std::string longer_front(249, 'f');
	EXPECT_EQ(base_of(longer_front + "../../"), longer_front + "$BASE/") << "255 characters";
}

TEST(zubPlatform_paths, PrefixThereAndBack) {
	EXPECT_EQ(base_of(final_of("$BASE/")), "$BASE/");
	EXPECT_EQ(base_of(final_of("$BASE/abcdef")), "$BASE/abcdef");
}

// The two conversions against their description, step by step, on texts full of near matches.
TEST(zubPlatform_paths, ConversionsAgreeWithTheirDescription) {
	std::mt19937 random(41);
	const std::string pieces[] = {"$BASE/", "../../", "$", "B", "/", ".", "..", "../", "a", "\\"};
	for (int round = 0; round < 3000; ++round) {
		std::string path;
		for (size_t count = random() % 12; count > 0; --count) path += pieces[random() % 10];
		SCOPED_TRACE(path);
		const bool has_prefix = path.find("$BASE/") != std::string::npos;
		EXPECT_EQ(final_of(path), has_prefix ? "../../" + path.substr(6) : path);
		const size_t at = path.find("../../");
		EXPECT_EQ(base_of(path), at == std::string::npos
		                             ? path
		                             : path.substr(0, at) + "$BASE/" + path.substr(at + 6, 6));
		EXPECT_EQ(zubPlatform::is_base_relative(xylVarString(path.c_str())),
		          path.rfind("$BASE/", 0) == 0);
	}
}

TEST(zubPlatform_paths, BaseRelativeIsAMatterOfTheFirstSixCharacters) {
	struct Case {
		const char* path;
		bool expected;
	};
	const Case cases[] = {
		{"$BASE/", true},   {"$BASE/x", true},   {"$BASE", false},    {"", false},
		{"$base/x", false}, {"/$BASE/x", false}, {"$BASE\\x", false}, {"../../x", false},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.path);
		EXPECT_EQ(zubPlatform::is_base_relative(xylVarString(c.path)), c.expected);
	}
	EXPECT_FALSE(zubPlatform::is_base_relative(xylVarString()));
}

TEST(zubPlatform_paths, BaseRelativeFormOfAbsolutePaths) {
	struct Case {
		const char* name;
		const char* path;
		const char* expected;
	};
	const Case cases[] = {
		{"first root", "/home/u/NERU/a/b.txt", "$BASE/a/b.txt"},
		{"second root", "/home/u/Wolmes/a/b.txt", "$BASE/a/b.txt"},
		{"first root wins in front", "/NERU/x/Wolmes/a", "$BASE/x/Wolmes/a"},
		{"first root wins behind", "/Wolmes/x/NERU/a", "$BASE/a"},
		{"only the first match", "/NERU/x/NERU/a", "$BASE/x/NERU/a"},
		{"nothing behind", "/home/NERU/", "$BASE/"},
		{"base-relative already", "$BASE/NERU/a", "$BASE/NERU/a"},
		{"neither", "/home/u/a.txt", ""},
		{"empty", "", ""},
		{"backslashes", "C:\\NERU\\a", ""},
		{"case counts", "/neru/a", ""},
		{"no slash behind", "/home/NERU", ""},
		{"no slash in front", "NERU/a", ""},
		{"part of a name", "/home/xNERU/a", ""},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		EXPECT_EQ(relative_of(c.path), c.expected);
	}
}

TEST(zubPlatform_paths, BaseRelativeFormHasLessThan127Characters) {
	const std::string tail(120, 't');
	EXPECT_EQ(relative_of("/NERU/" + tail), "$BASE/" + tail) << "126 in all";
	EXPECT_EQ(relative_of("/NERU/" + tail + "t"), "$BASE/") << "127 in all";
	EXPECT_EQ(relative_of("/NERU/" + std::string(127, 't')), "$BASE/");
	// The limit is the result's: a path of the scheme is copied whatever its length.
	EXPECT_EQ(relative_of("$BASE/" + std::string(500, 't')).size(), 506u);
	EXPECT_EQ(relative_of("/" + std::string(500, 'f') + "/NERU/a"), "$BASE/a");
}

TEST(zubPlatform_paths_death_test, TextsTooLongForTheirStringsEndTheProcess) {
	const auto text = [](size_t count) { return std::string(count, 'x'); };
	EXPECT_EQ(base_of(text(255)), text(255));
	EXPECT_DEATH(base_of(text(256)), "");
	EXPECT_DEATH(base_of(text(244) + "../../a"), "") << "251 characters that count as 256";
	EXPECT_EQ(final_of(text(279)), text(279));
	EXPECT_DEATH(final_of(text(512)), "");
	EXPECT_DEATH(absolute_of(text(256)), "");
	EXPECT_DEATH(relative_of("/NERU/" + text(128)), "");
}

TEST(zubPlatform_paths, AbsoluteFormStartsTwoFoldersUp) {
	const Temporary_folder folder;
	std::filesystem::create_directories(folder.path() / "bin" / "x64");
	// As the system itself sees it: the folder may be reached through a link or a short name.
	std::string here;
	{
		const Current_folder inside(folder.path());
		here = absolute_of("data");
	}
	ASSERT_GT(here.size(), 5u);
	EXPECT_EQ(here.substr(here.size() - 5), "/data");
	EXPECT_EQ(here.find('\\'), std::string::npos);
	here.resize(here.size() - 4);

	const Current_folder inside(folder.path() / "bin" / "x64");
	EXPECT_EQ(absolute_of("$BASE/data/a.txt"), here + "data/a.txt");
	EXPECT_EQ(absolute_of("$BASE/"), here) << "the separator at the end stays";
	EXPECT_EQ(absolute_of("a.txt"), here + "bin/x64/a.txt");
	EXPECT_EQ(absolute_of("./a/../b"), here + "bin/x64/b");
	EXPECT_EQ(absolute_of("../a//b"), here + "bin/a/b");
	EXPECT_EQ(absolute_of(""), "");
}

TEST(zubPlatform_paths, LongAbsoluteFormIsWarnedOfByTheString) {
	const Temporary_folder folder;
	const Current_folder inside(folder.path());
	const size_t front = absolute_of("x").size() - 1;
	ASSERT_LT(front, 255u);
	EXPECT_EQ(absolute_of(std::string(255 - front, 'x')).size(), 255u);
	EXPECT_EQ(absolute_of(std::string(256 - front, 'x')), "");
	const std::vector<Host_call> calls = Recording_host::get().take();
	ASSERT_EQ(calls.size(), 1u);
	EXPECT_EQ(calls[0].operation, "warning");
	EXPECT_EQ(calls[0].text.rfind("Could not set fixed-size(256) string to: ", 0), 0u);
}

TEST(zubPlatform_paths, FoldersOfTheRunningProgramAndOfTemporaryFiles) {
	const std::string program = zubPlatform::get_executable_path().char_p();
	ASSERT_FALSE(program.empty());
	EXPECT_EQ(program.back(), '/');
	EXPECT_TRUE(zubPlatform::is_directory_exists(zubPlatform::get_executable_path()));
	const std::string temporary = zubPlatform::get_temp_path().char_p();
	ASSERT_FALSE(temporary.empty());
	EXPECT_TRUE(temporary.back() == '/' || temporary.back() == '\\');
	EXPECT_TRUE(zubPlatform::is_directory_exists(zubPlatform::get_temp_path()));
}

} // namespace
