#include "system_files.h"
#include "temporary_folder.h"

#include <morvantis/io/xylnative_file.h>
#include <morvantis/platform/zubplatform.h>
#include <morvantis/strings/xylvarstring.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

static_assert(sizeof(xylNative_file) == sizeof(void*), "one handle and no more");
static_assert(!std::is_copy_constructible_v<xylNative_file>);
static_assert(!std::is_copy_assignable_v<xylNative_file>);
static_assert(std::is_same_v<decltype(xylNative_file::open_files_count_), std::atomic<int>>);

static_assert(xylFile_from_start == 0 && xylFile_from_current == 1 && xylFile_from_end == 2);
static_assert(xylFile_access_read == 1 && xylFile_access_write == 2);
static_assert(xylFile_share_read == 4 && xylFile_share_write == 8);
static_assert(xylFile_flag_sequential == 1 && xylFile_flag_temporary == 2);
static_assert(xylFile_flag_open_existing == 4 && xylFile_flag_create_always == 8);
static_assert(xylFile_flag_create_new == 16 && xylFile_flag_backup_semantics == 32);
static_assert(xylFile_flag_archive == 64 && xylFile_flag_system == 128);
static_assert(xylFile_flag_normal == 256 && xylFile_flag_read_only == 1024);

namespace {

namespace fs = std::filesystem;

constexpr int reading = xylFile_access_read;
constexpr int writing = xylFile_access_read | xylFile_access_write;
constexpr int existing = xylFile_flag_open_existing;
constexpr int anew = xylFile_flag_create_always;
constexpr xylUInt64 four_gib = xylUInt64{1} << 32;
void* const closed = reinterpret_cast<void*>(~xylUInt64{0});

std::string contents_of(const std::string& path) {
	std::ifstream stream(path, std::ios::binary);
	return {std::istreambuf_iterator<char>(stream), {}};
}

std::string read_text(xylNative_file& file, size_t size) {
	std::string text(size, '?');
	text.resize(static_cast<size_t>(file.read(text.data(), size)));
	return text;
}

// Every test ends with as many handles as it began with, and with the counter where it was.
class Native_file_test : public testing::Test {
protected:
	void TearDown() override { EXPECT_EQ(xylNative_file::open_files_count_, count_before_); }
	int count() const { return xylNative_file::open_files_count_ - count_before_; }

	Temporary_folder folder_;

private:
	int count_before_ = xylNative_file::open_files_count_;
	Handle_check handles_;
};

TEST_F(Native_file_test, NewObjectIsClosed) {
	xylNative_file file;
	EXPECT_FALSE(file.is_valid());
	EXPECT_EQ(file.handle, closed);
	EXPECT_FALSE(file.close()) << "nothing to close";
	EXPECT_EQ(count(), 0);
	EXPECT_EQ(file.get_file_size(), ~xylUInt64{0});
	char byte = 'x';
	EXPECT_EQ(file.read(&byte, 0), 0u);
	EXPECT_EQ(file.write(&byte, 0), 0u);
	EXPECT_EQ(file.read(&byte, 1), 0u);
}

TEST_F(Native_file_test, ModesChooseBetweenMakingAndOpening) {
	struct Case {
		const char* name;
		int access, mode;
		bool opens_missing, opens_existing;
		const char* left_in_existing;
	};
	const Case cases[] = {
		{"none", writing, 0, false, false, "old"},
		{"no disposition", writing, xylFile_flag_normal, false, false, "old"},
		{"open existing", reading, existing, false, true, "old"},
		{"create always", writing, anew, true, true, ""},
		{"create always, only to read", reading, anew, true, true, ""},
		{"create new", writing, xylFile_flag_create_new, true, false, "old"},
		{"create always with create new is open existing", writing, anew | xylFile_flag_create_new,
	     false, true, "old"},
		{"open existing wins over create always", writing, existing | anew, false, true, "old"},
		{"open existing wins over create new", writing, existing | xylFile_flag_create_new, false,
	     true, "old"},
		{"all three", writing, existing | anew | xylFile_flag_create_new, false, true, "old"},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		const std::string there = folder_.make_file("there", "old");
		const std::string missing = folder_ / "missing";
		{
			xylNative_file file;
			EXPECT_EQ(file.open(there.c_str(), c.access, c.mode), c.opens_existing);
			EXPECT_EQ(file.is_valid(), c.opens_existing);
			EXPECT_EQ(file.handle == closed, !c.opens_existing);
			EXPECT_EQ(count(), c.opens_existing ? 1 : 0);
		}
		EXPECT_EQ(count(), 0);
		EXPECT_EQ(contents_of(there), c.left_in_existing);
		{
			xylNative_file file(missing.c_str(), c.access, c.mode);
			EXPECT_EQ(file.is_valid(), c.opens_missing);
		}
		EXPECT_EQ(fs::exists(missing), c.opens_missing);
		fs::remove(missing);
	}
}

TEST_F(Native_file_test, AccessDecidesWhatTheHandleMayDo) {
	const std::string path = folder_.make_file("file", "text");
	xylNative_file write_only(path.c_str(), xylFile_access_write, existing);
	ASSERT_TRUE(write_only.is_valid());
	EXPECT_EQ(read_text(write_only, 4), "");
	EXPECT_EQ(write_only.write("T", 1), 1u);
	EXPECT_TRUE(write_only.close());
	xylNative_file questions(path.c_str(), 0, existing);
	ASSERT_TRUE(questions.is_valid());
	EXPECT_EQ(questions.get_file_size(), 4u);
	EXPECT_EQ(read_text(questions, 4), "");
	EXPECT_TRUE(questions.close());
	EXPECT_EQ(contents_of(path), "Text");
}

TEST_F(Native_file_test, CloseMarksTheObjectClosed) {
	xylNative_file file((folder_ / "file").c_str(), writing, anew);
	EXPECT_EQ(count(), 1);
	EXPECT_TRUE(file.close());
	EXPECT_FALSE(file.is_valid());
	EXPECT_EQ(file.handle, closed);
	EXPECT_EQ(count(), 0);
	EXPECT_FALSE(file.close());
	EXPECT_EQ(count(), 0);
	EXPECT_EQ(file.get_file_size(), ~xylUInt64{0});
}

TEST_F(Native_file_test, SecondOpenLosesTheFirstHandle) {
	const std::string path = folder_.make_file("file");
	xylNative_file file(path.c_str(), reading | xylFile_share_read, existing);
	void* const lost = file.handle;
	EXPECT_TRUE(file.open(path.c_str(), reading | xylFile_share_read, existing));
	EXPECT_NE(file.handle, lost) << "the first one was not closed";
	EXPECT_EQ(count(), 2);
	EXPECT_TRUE(file.close());
	EXPECT_EQ(count(), 1) << "one too high";
	file.handle = lost;
	EXPECT_TRUE(file.close()) << "still open";

	EXPECT_TRUE(file.open(path.c_str(), reading, existing));
	void* const lost_again = file.handle;
	EXPECT_FALSE(file.open((folder_ / "missing").c_str(), reading, existing));
	EXPECT_FALSE(file.is_valid()) << "overwritten by the failure";
	file.handle = lost_again;
	EXPECT_TRUE(file.close());
}

TEST_F(Native_file_test, DestructorCloses) {
	const std::string path = folder_.make_file("file");
	const int handles = open_handle_count();
	{
		xylNative_file file(path.c_str(), reading, existing);
		EXPECT_EQ(open_handle_count(), handles + 1);
		EXPECT_EQ(count(), 1);
	}
	EXPECT_EQ(open_handle_count(), handles);
	EXPECT_EQ(count(), 0);
}

TEST_F(Native_file_test, FailuresLeakNoHandle) {
	const std::string plain = folder_.make_file("plain");
	fs::create_directory(folder_ / "folder");
	struct Case {
		const char* name;
		std::string path;
		int access, mode;
	};
	const Case cases[] = {
		{"a missing file", folder_ / "missing", reading, existing},
		{"a missing folder", folder_ / "missing/file", writing, anew},
		{"a file for a folder", folder_ / "plain/file", reading, existing},
		{"a folder for a file", folder_ / "folder", reading, existing},
		{"a folder to write", folder_ / "folder", writing, anew},
		{"a folder, with normal against backup semantics", folder_ / "folder", reading,
	     existing | xylFile_flag_backup_semantics | xylFile_flag_normal},
		{"a file that is there already", plain, writing, xylFile_flag_create_new},
		{"no name", "", reading, existing},
		{"no disposition", plain, reading, 0},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		const int handles = open_handle_count();
		xylNative_file file;
		EXPECT_FALSE(file.open(c.path.c_str(), c.access, c.mode));
		EXPECT_FALSE(file.is_valid());
		EXPECT_EQ(open_handle_count(), handles);
		EXPECT_EQ(count(), 0);
	}
	xylNative_file file;
	EXPECT_FALSE(file.open(nullptr, reading, existing)) << "null is the empty name";
}

TEST_F(Native_file_test, FolderOpensWithBackupSemantics) {
	fs::create_directory(folder_ / "folder");
	xylNative_file file((folder_ / "folder").c_str(), reading,
	                    existing | xylFile_flag_backup_semantics);
	EXPECT_TRUE(file.is_valid());
	char byte;
	EXPECT_EQ(file.read(&byte, 1), 0u);
}

TEST_F(Native_file_test, ReadOnlyFileIsWrittenByItsMakerAlone) {
	fs::permissions(folder_.path(), fs::perms::all); // for the user without privileges
	const Without_privileges nobody;
	const std::string path = folder_ / "file";
	xylNative_file file(path.c_str(), writing, anew | xylFile_flag_read_only);
	ASSERT_TRUE(file.is_valid());
	EXPECT_EQ(file.write("text", 4), 4u);
	EXPECT_TRUE(file.close());
	ASSERT_TRUE(file.open(path.c_str(), reading, existing));
	EXPECT_EQ(read_text(file, 10), "text");
	EXPECT_TRUE(file.close());
	for (const int mode : {existing, anew}) {
		SCOPED_TRACE(mode);
		EXPECT_EQ(file.open(path.c_str(), writing, mode), !nobody.is_bound());
		EXPECT_EQ(file.close(), !nobody.is_bound());
	}

	// The bit is dropped beside normal.
	const std::string normal = folder_ / "normal";
	EXPECT_TRUE(
		file.open(normal.c_str(), writing, anew | xylFile_flag_read_only | xylFile_flag_normal));
	EXPECT_TRUE(file.close());
	EXPECT_TRUE(file.open(normal.c_str(), writing, existing));
}

TEST_F(Native_file_test, AllOtherModeBitsOpenAFileAsWell) {
	for (const int bit :
	     {xylFile_flag_sequential, xylFile_flag_temporary, xylFile_flag_archive,
	      xylFile_flag_system, xylFile_flag_normal, xylFile_flag_backup_semantics}) {
		SCOPED_TRACE(bit);
		const std::string path = folder_ / std::to_string(bit);
		xylNative_file file(path.c_str(), writing, anew | bit);
		ASSERT_TRUE(file.is_valid());
		EXPECT_EQ(file.write("text", 4), 4u);
		EXPECT_TRUE(file.close());
		EXPECT_EQ(contents_of(path), "text");
	}
}

TEST_F(Native_file_test, BasePathsLeadTwoFoldersUp) {
	fs::create_directories(folder_ / "bin/x64");
	folder_.make_file("file", "above");
	const Current_folder inside(folder_.path() / "bin" / "x64");
	xylNative_file file("$BASE/file", reading, existing);
	EXPECT_EQ(read_text(file, 10), "above");
}

TEST_F(Native_file_test, ReadsUpToTheEnd) {
	const std::string path = folder_.make_file("file", "0123456789");
	xylNative_file file(path.c_str(), reading, existing);
	EXPECT_EQ(file.get_file_size(), 10u);
	EXPECT_EQ(read_text(file, 4), "0123");
	EXPECT_EQ(read_text(file, 0), "");
	EXPECT_EQ(read_text(file, 100), "456789");
	EXPECT_EQ(read_text(file, 100), "") << "at the end";
	EXPECT_EQ(file.set_pointer(0, xylFile_from_start), 0);
	EXPECT_EQ(read_text(file, 100), "0123456789");
	EXPECT_EQ(file.get_file_size(), 10u);
}

TEST_F(Native_file_test, PointerMovesFromThreePlaces) {
	const std::string path = folder_.make_file("file", "0123456789");
	xylNative_file file(path.c_str(), reading, existing);
	EXPECT_EQ(file.set_pointer(3, xylFile_from_start), 3);
	EXPECT_EQ(read_text(file, 1), "3");
	EXPECT_EQ(file.set_pointer(2, xylFile_from_current), 6);
	EXPECT_EQ(read_text(file, 1), "6");
	EXPECT_EQ(file.set_pointer(~xylUInt64{0} - 4, xylFile_from_current), 2) << "five back";
	EXPECT_EQ(read_text(file, 1), "2");
	EXPECT_EQ(file.set_pointer(~xylUInt64{0}, xylFile_from_end), 9) << "one back";
	EXPECT_EQ(read_text(file, 5), "9");
	EXPECT_EQ(file.set_pointer(1, static_cast<xylFile_starting_point>(3)), 1) << "as from start";
	EXPECT_EQ(file.set_pointer(1, static_cast<xylFile_starting_point>(-1)), 1);
	EXPECT_EQ(read_text(file, 1), "1");
	EXPECT_EQ(file.set_pointer(20, xylFile_from_start), 20) << "behind the end";
	EXPECT_EQ(read_text(file, 1), "");
}

TEST_F(Native_file_test, OffsetsHaveSixtyFourBits) {
	const std::string path = folder_ / "sparse";
	xylNative_file file(path.c_str(), writing, anew);
	ASSERT_TRUE(file.is_valid());
	make_sparse(file.handle);
	EXPECT_EQ(file.set_pointer(four_gib + 3, xylFile_from_start), 0x100000003);
	EXPECT_EQ(file.write("far", 3), 3u);
	EXPECT_EQ(file.get_file_size(), four_gib + 6);
	EXPECT_EQ(file.set_pointer(3, xylFile_from_start), 3);
	EXPECT_EQ(file.write("near", 4), 4u);
	EXPECT_EQ(file.set_pointer(four_gib - 4, xylFile_from_current), 0x100000003);
	EXPECT_EQ(read_text(file, 10), "far");
	EXPECT_EQ(file.set_pointer(0 - (four_gib + 3), xylFile_from_end), 3);
	EXPECT_EQ(read_text(file, 4), "near");
}

TEST_F(Native_file_test, LargeReadsCrossThePieces) {
	// Just above two pieces, of bytes that tell their place.
	std::vector<unsigned int> words((2 * 0x1000000 + 4096) / sizeof(unsigned int));
	for (size_t i = 0; i < words.size(); ++i) words[i] = static_cast<unsigned int>(i * 2654435761u);
	const xylUInt64 size = words.size() * sizeof(unsigned int);
	const std::string path = folder_ / "large";
	xylNative_file file(path.c_str(), writing, anew);
	EXPECT_EQ(file.write(words.data(), size), size);
	EXPECT_EQ(file.get_file_size(), size);
	file.set_pointer(0, xylFile_from_start);
	std::vector<unsigned int> read(words.size() + 1);
	EXPECT_EQ(file.read(read.data(), size + 4), size);
	read.pop_back();
	EXPECT_TRUE(read == words);
}

TEST_F(Native_file_test, TwoHandlesSeeEachOthersBytes) {
	const std::string path = folder_ / "file";
	const int sharing = writing | xylFile_share_read | xylFile_share_write;
	xylNative_file first(path.c_str(), sharing, anew);
	xylNative_file second(path.c_str(), sharing, existing);
	ASSERT_TRUE(first.is_valid() && second.is_valid());
	EXPECT_EQ(count(), 2);
	EXPECT_EQ(first.write("shared", 6), 6u);
	EXPECT_EQ(read_text(second, 10), "shared");
	EXPECT_EQ(second.write(" text", 5), 5u);
	EXPECT_EQ(read_text(first, 10), " text");
}

// A second process works on the file that the first one holds open. It may be this program started
// anew, up to the call: the environment tells it which file.
TEST(xylNative_file, TwoProcessesShareOneFile) {
	static constexpr char name[] = "MORVANTIS_TEST_SHARED_FILE";
	static constexpr int sharing = writing | xylFile_share_read | xylFile_share_write;
	std::optional<Temporary_folder> folder;
	xylNative_file mine;
	if (const char* shared = std::getenv(name); !shared || !*shared) {
		folder.emplace();
		const std::string path = *folder / "file";
		ASSERT_TRUE(mine.open(path.c_str(), sharing, anew));
		ASSERT_EQ(mine.write("first", 5), 5u);
		ASSERT_TRUE(
			zubPlatform::set_environment_variable(xylVarString(name), xylVarString(path.c_str())));
	}
	const auto second_process = [] {
		const char* path = std::getenv(name);
		xylNative_file refused, theirs;
		const bool opened_anew =
			refused.open(path, sharing, xylFile_flag_create_new); // there already
		const bool worked = theirs.open(path, sharing, existing) &&
		                    read_text(theirs, 9) == "first" && theirs.write(" second", 7) == 7;
		std::_Exit(worked && !opened_anew ? 7 : 1); // without closing
	};
	EXPECT_EXIT(second_process(), testing::ExitedWithCode(7), "");
	zubPlatform::set_environment_variable(xylVarString(name), xylVarString());
	EXPECT_EQ(read_text(mine, 9), " second") << "from this process's own place on";
	EXPECT_EQ(mine.get_file_size(), 12u);
	EXPECT_EQ(mine.write("!", 1), 1u);
	EXPECT_TRUE(mine.close());
	EXPECT_EQ(contents_of(*folder / "file"), "first second!");
}

// Random steps on the file and on a text that stands for it.
TEST_F(Native_file_test, RandomStepsAgreeWithAText) {
	std::mt19937 random(20);
	const std::string path = folder_ / "file";
	xylNative_file file(path.c_str(), writing, anew);
	std::string model;
	size_t position = 0;
	for (int step = 0; step < 2000; ++step) {
		SCOPED_TRACE(step);
		const size_t size = random() % 300;
		switch (random() % 4) {
		case 0: {
			const std::string text(size, static_cast<char>('a' + step % 26));
			ASSERT_EQ(file.write(text.data(), size), size);
			if (size > 0 && model.size() < position) model.resize(position);
			if (size > 0) model.replace(position, size, text);
			position += size;
			break;
		}
		case 1: {
			const std::string expected =
				position < model.size() ? model.substr(position, size) : "";
			ASSERT_EQ(read_text(file, size), expected);
			position += expected.size();
			break;
		}
		case 2:
			position = random() % (model.size() + 20);
			ASSERT_EQ(file.set_pointer(position, xylFile_from_start),
			          static_cast<xylInt64>(position));
			break;
		default:
			ASSERT_EQ(file.get_file_size(), model.size());
			break;
		}
	}
	EXPECT_TRUE(file.close());
	EXPECT_EQ(contents_of(path), model);
}

TEST(xylNative_fileDeathTest, NameOf256CharactersEndsTheProcess) {
	const std::string longest(255, 'x');
	const std::string too_long(256, 'x');
	xylNative_file file;
	EXPECT_FALSE(file.open(longest.c_str(), reading, existing));
	EXPECT_DEATH(file.open(too_long.c_str(), reading, existing), "");
	EXPECT_DEATH(xylNative_file(too_long.c_str(), reading, existing), "");
	const std::string base = "$BASE/" + std::string(249, 'x');
	EXPECT_FALSE(file.open(base.c_str(), reading, existing));
}

} // namespace
