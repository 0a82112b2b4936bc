#include "temporary_folder.h"

#include <morvantis/platform/zubplatform.h>
#include <morvantis/strings/xylvarstring.h>

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>

namespace {

namespace fs = std::filesystem;

// A repository with the folder of a program two levels down, which is the current folder, so that
// "$BASE/" leads to the repository.
class Platform_filesystem_test : public testing::Test {
protected:
	Platform_filesystem_test() {
		fs::create_directories(repository_.path() / "bin" / "x64");
		inside_.emplace(repository_.path() / "bin" / "x64");
	}
	bool is_there(const std::string& name) const {
		return fs::exists(fs::symlink_status(repository_.path() / name));
	}

	Temporary_folder repository_;

private:
	std::optional<Current_folder> inside_;
};

xylVarString text(const std::string& path) { return path.c_str(); }

TEST_F(Platform_filesystem_test, CreateMakesOneLevelOnce) {
	EXPECT_TRUE(zubPlatform::create_directory(text("$BASE/new")));
	EXPECT_TRUE(fs::is_directory(repository_.path() / "new"));
	EXPECT_FALSE(zubPlatform::create_directory(text("$BASE/new"))) << "exists already";
	EXPECT_FALSE(zubPlatform::create_directory(text("$BASE/a/b"))) << "two levels at once";
	EXPECT_FALSE(is_there("a"));
	EXPECT_TRUE(zubPlatform::create_directory(text("here")));
	EXPECT_TRUE(is_there("bin/x64/here"));
	EXPECT_TRUE(zubPlatform::create_directory(text(repository_ / "absolute")));
	EXPECT_TRUE(is_there("absolute"));
	EXPECT_FALSE(zubPlatform::create_directory(text("")));
}

TEST_F(Platform_filesystem_test, FilesAndFoldersAreToldApart) {
	repository_.make_file("file.txt");
	fs::create_directory(repository_.path() / "folder");
	struct Case {
		const char* path;
		bool is_directory, is_file;
	};
	const Case cases[] = {
		{"$BASE/file.txt", false, true}, {"$BASE/folder", true, false},
		{"$BASE/missing", false, false}, {"$BASE/missing/file.txt", false, false},
		{"$BASE/", true, false},         {"../../file.txt", false, true},
		{"file.txt", false, false},      {"", false, false},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.path);
		EXPECT_EQ(zubPlatform::is_directory_exists(text(c.path)), c.is_directory);
		EXPECT_EQ(zubPlatform::file_exists(text(c.path)), c.is_file);
	}
}

TEST_F(Platform_filesystem_test, DateIsInSecondsSince1970) {
	const std::string file = repository_.make_file("file.txt");
	// The date is set, so that no clock is part of this.
	const std::time_t before = std::time(nullptr) - 1'000'000;
	const auto moment = std::chrono::system_clock::from_time_t(before);
	const auto now = std::chrono::system_clock::now();
	const auto file_now = fs::file_time_type::clock::now();
	fs::last_write_time(
		file, file_now - std::chrono::duration_cast<fs::file_time_type::duration>(now - moment));
	const xylInt64 date = zubPlatform::get_file_last_modification_date(text(file));
	EXPECT_NEAR(static_cast<double>(date), static_cast<double>(before), 2.0);
	EXPECT_EQ(zubPlatform::get_file_last_modification_date(text("../../file.txt")), date);
}

TEST_F(Platform_filesystem_test, DateTakesPathsAsTheyStand) {
	repository_.make_file("file.txt");
	EXPECT_NE(zubPlatform::get_file_last_modification_date(text("../../file.txt")), -1);
	EXPECT_EQ(zubPlatform::get_file_last_modification_date(text("$BASE/file.txt")), -1);
	EXPECT_EQ(zubPlatform::get_file_last_modification_date(text("missing")), -1);
	EXPECT_EQ(zubPlatform::get_file_last_modification_date(text("")), -1);
}

TEST_F(Platform_filesystem_test, RemoveTakesTheWholeTreeAndNothingElse) {
	repository_.make_file("tree/file.txt");
	repository_.make_file("tree/.hidden");
	repository_.make_file("tree/a/b/c/d/deep.txt");
	fs::create_directories(repository_.path() / "tree" / "empty" / "folder");
	const std::string read_only = repository_.make_file("tree/a/read_only.txt");
	fs::permissions(read_only,
	                fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
	                fs::perm_options::remove);
	repository_.make_file("tree2/file.txt");
	repository_.make_file("trees.txt");

	EXPECT_TRUE(zubPlatform::remove_directory(text("$BASE/tree")));
	EXPECT_FALSE(is_there("tree"));
	EXPECT_TRUE(is_there("tree2/file.txt"));
	EXPECT_TRUE(is_there("trees.txt"));
	EXPECT_TRUE(is_there("bin/x64"));
}

TEST_F(Platform_filesystem_test, RemoveOfAMissingFolderFails) {
	EXPECT_FALSE(zubPlatform::remove_directory(text("$BASE/missing")));
	EXPECT_FALSE(zubPlatform::remove_directory(text("$BASE/missing/deeper")));
	EXPECT_TRUE(is_there("bin/x64"));
}

TEST_F(Platform_filesystem_test, RemoveTakesAbsolutePathsUpToTheLimitOfTheSystem) {
	// 259 characters are the most that every system takes.
	std::string path = repository_.path().string() + "/";
	ASSERT_LT(path.size(), 130u);
	path += std::string(100, 'a');
	ASSERT_TRUE(zubPlatform::create_directory(text(path)));
	const std::string top = path;
	path += "/" + std::string(230 - path.size(), 'b');
	ASSERT_TRUE(zubPlatform::create_directory(text(path)));
	ASSERT_EQ(path.size(), 231u);
	EXPECT_TRUE(zubPlatform::remove_directory(text(path)));
	EXPECT_FALSE(fs::exists(path));
	EXPECT_TRUE(zubPlatform::remove_directory(text(top)));
	EXPECT_FALSE(fs::exists(top));
}

} // namespace
