#include "scripted_system.h"

#include <morvantis/platform/zubplatform.h>
#include <morvantis/strings/xylvarstring.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Scripted_process_test : public testing::Test {
protected:
	void SetUp() override {
		scripted_system = {};
		scripted_system.current_folder = "/here";
	}
	static std::vector<std::string> calls() { return std::exchange(scripted_system.calls, {}); }
	static int create(std::vector<const char*> arguments, std::vector<const char*> environment = {},
	                  bool wait = false) {
		arguments.push_back(nullptr);
		const bool inherits = environment.empty();
		environment.push_back(nullptr);
		return zubPlatform::create_process(
			id(), "not looked at", const_cast<char**>(arguments.data()),
			inherits ? nullptr : const_cast<char**>(environment.data()), 4, wait);
	}
	static unsigned int& id() {
		static unsigned int value;
		return value;
	}
};

TEST_F(Scripted_process_test, EachArgumentIsFollowedByABlank) {
	id() = 99;
	EXPECT_EQ(create({"a.exe"}), 1);
	EXPECT_EQ(id(), 7u);
	EXPECT_THAT(calls(),
	            ElementsAre("current_folder(1024)", "start_process('a.exe ', 4, null, /here)"));
	create({"a.exe", "-x", "with blank", ""});
	EXPECT_THAT(calls(),
	            ElementsAre(testing::_, "start_process('a.exe -x with blank  ', 4, null, /here)"));
}

TEST_F(Scripted_process_test, FolderThatIsNotToldIsAnEmptyText) {
	scripted_system.current_folder.clear();
	create({"a.exe"});
	EXPECT_THAT(calls(), ElementsAre(testing::_, "start_process('a.exe ', 4, null, )"));
}

TEST_F(Scripted_process_test, NoArgumentsMakeAnEmptyCommandLine) {
	create({});
	EXPECT_THAT(calls(), ElementsAre(testing::_, "start_process('', 4, null, /here)"));
	EXPECT_EQ(zubPlatform::create_process(id(), "a.exe", nullptr, nullptr, 0, false), 1);
	EXPECT_THAT(calls(), ElementsAre(testing::_, "start_process('', 0, null, /here)"));
}

TEST_F(Scripted_process_test, EnvironmentEntriesRunTogether) {
	create({"a.exe"}, {"A=1", "B=2"});
	EXPECT_THAT(calls(), ElementsAre(testing::_, "start_process('a.exe ', 4, 'A=1B=2', /here)"));
	char* const none[] = {nullptr};
	char program[] = "a.exe";
	char* const arguments[] = {program, nullptr};
	zubPlatform::create_process(id(), nullptr, arguments, none, 0, false);
	EXPECT_THAT(calls(), ElementsAre(testing::_, "start_process('a.exe ', 0, '', /here)"));
}

TEST_F(Scripted_process_test, WaitingIsForTheProcessThatWasStarted) {
	EXPECT_EQ(create({"a.exe"}, {}, true), 1);
	EXPECT_THAT(calls(), ElementsAre(testing::_, testing::_, "wait_for_process(7)"));
}

TEST_F(Scripted_process_test, ResultIsTheSystemsOwn) {
	scripted_system.start_result = 5;
	EXPECT_EQ(create({"a.exe"}), 5);
}

TEST_F(Scripted_process_test, FailureIsMinusOneAndNumberZeroAndNobodyWaits) {
	struct Case {
		const char* name;
		int result;
		xylUInt32 id;
	};
	for (const Case& c : {Case{"refused", 0, 7}, Case{"no number", 1, 0}, Case{"neither", 0, 0}}) {
		SCOPED_TRACE(c.name);
		scripted_system.start_result = c.result;
		scripted_system.child_id = c.id;
		id() = 99;
		EXPECT_EQ(create({"a.exe"}, {}, true), -1);
		EXPECT_EQ(id(), 0u);
		EXPECT_THAT(calls(), ElementsAre(testing::_, testing::_));
	}
	EXPECT_THAT(scripted_system.reports, IsEmpty());
}

TEST_F(Scripted_process_test, TextsOfTheLargestSizeFitAndLargerOnesStartNothing) {
	const std::string longest(1022, 'x');
	EXPECT_EQ(create({longest.c_str()}), 1);
	EXPECT_THAT(calls(),
	            ElementsAre(testing::_, "start_process('" + longest + " ', 4, null, /here)"));
	const std::string variable(1023, 'v');
	EXPECT_EQ(create({"a"}, {variable.c_str()}), 1);
	EXPECT_THAT(calls(),
	            ElementsAre(testing::_, "start_process('a ', 4, '" + variable + "', /here)"));
	id() = 99;
	EXPECT_EQ(create({longest.c_str(), ""}), -1);
	EXPECT_EQ(create({(longest + "x").c_str()}), -1);
	EXPECT_EQ(create({"a"}, {variable.c_str(), "v"}), -1);
	EXPECT_EQ(id(), 0u);
	EXPECT_THAT(calls(), testing::Each("current_folder(1024)"));
}

TEST_F(Scripted_process_test, ShellGetsWhatTheCallerSays) {
	zubPlatform::shell_execute("print", "$BASE/a.txt");
	zubPlatform::shell_execute(nullptr, nullptr);
	EXPECT_THAT(calls(),
	            ElementsAre("shell_execute(print, $BASE/a.txt)", "shell_execute(null, null)"));
}

TEST_F(Scripted_process_test, ExistingFileIsOpenedByItsAbsolutePath) {
	scripted_system.path_kind = os::Path_kind::file;
	scripted_system.path = "/game/data/a.txt";
	zubPlatform::open_with_default_app(xylConstString<64>("$BASE/data/a.txt"));
	EXPECT_THAT(calls(),
	            ElementsAre("path_kind(../../data/a.txt)", "absolute_path(../../data/a.txt, 1024)",
	                        "path_kind(/game/data/a.txt)",
	                        "shell_execute(open, /game/data/a.txt)"));
}

TEST_F(Scripted_process_test, MissingFileOrFolderIsNotOpened) {
	for (const os::Path_kind kind : {os::Path_kind::missing, os::Path_kind::folder}) {
		scripted_system.path_kind = kind;
		zubPlatform::open_with_default_app(xylVarString("a.txt"));
		EXPECT_THAT(calls(), ElementsAre("path_kind(a.txt)"));
	}
}

TEST_F(Scripted_process_test, FileThatIsGoneByItsAbsolutePathIsNotOpened) {
	scripted_system.path_kinds = {{"a.txt", os::Path_kind::file}};
	scripted_system.path = "/there/a.txt";
	zubPlatform::open_with_default_app(xylVarString("a.txt"));
	EXPECT_THAT(calls(), ElementsAre("path_kind(a.txt)", "absolute_path(a.txt, 1024)",
	                                 "path_kind(/there/a.txt)"));
}

TEST_F(Scripted_process_test, FolderAndItemAreMadeAbsoluteOnTheirOwn) {
	scripted_system.path = "/there";
	zubPlatform::open_folder_and_select_items("$BASE/data", "a.txt");
	zubPlatform::open_folder_and_select_items("", "");
	EXPECT_THAT(calls(),
	            ElementsAre("absolute_path(../../data, 1024)", "absolute_path(a.txt, 1024)",
	                        "open_folder_and_select(/there, /there)", "absolute_path(., 1024)",
	                        "absolute_path(., 1024)", "open_folder_and_select(/there, /there)"));
}

TEST_F(Scripted_process_test, PathThatDoesNotFitIsEmpty) {
	scripted_system.path = std::string(1024, 'x');
	zubPlatform::open_folder_and_select_items("a", "b");
	EXPECT_EQ(calls().back(), "open_folder_and_select(, )");
	scripted_system.path_kind = os::Path_kind::missing;
	zubPlatform::open_with_default_app(xylVarString("a"));
	EXPECT_THAT(calls(), ElementsAre("path_kind(a)"));
}

} // namespace
