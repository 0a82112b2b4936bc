// Real children, alike on every system.
#include "started_child.h"

#include <morvantis/strings/xylvarstring.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;

TEST(zubPlatform_process, WaitEndsWhenTheChildHasEnded) {
	Started_child child;
	EXPECT_EQ(child.start({"one", "two"}, true), 1);
	EXPECT_THAT(child.report(), HasSubstr("argument one\nargument two\nfolder "));
	EXPECT_NE(child.id, 0u);
	EXPECT_NE(child.id, zubPlatform::get_current_process_id());
}

TEST(zubPlatform_process, QuotesGroupAnArgument) {
	Started_child child;
	EXPECT_EQ(child.start({"\"with blank\"", "plain"}, true), 1);
	EXPECT_THAT(child.report(), HasSubstr("argument with blank\nargument plain\nfolder "));
}

TEST(zubPlatform_process, CurrentFolderIsHandedOn) {
	Started_child child;
	const Temporary_folder here;
	const Current_folder current(here.path());
	EXPECT_EQ(child.start({}, true), 1);
	EXPECT_THAT(child.report(),
	            HasSubstr("folder " + std::filesystem::current_path().string() + "\n"));
}

TEST(zubPlatform_process, EnvironmentIsInheritedOrGiven) {
	ASSERT_TRUE(zubPlatform::set_environment_variable("MORVANTIS_CHILD", "inherited"));
	Started_child inheriting;
	EXPECT_EQ(inheriting.start({}, true), 1);
	EXPECT_THAT(inheriting.report(), HasSubstr("variable inherited\n"));
	char first[] = "MORVANTIS_CHILD=given";
	char second[] = "SECOND=2";
	char* const environment[] = {first, second, nullptr};
	Started_child given;
	EXPECT_EQ(given.start({}, true, environment), 1);
	EXPECT_THAT(given.report(), HasSubstr("variable givenSECOND=2\n"));
}

TEST(zubPlatform_process, MissingProgramIsMinusOne) {
	const Temporary_folder folder;
	std::string program = folder / "no_such_program";
	char* const arguments[] = {program.data(), nullptr};
	unsigned int id = 99;
	EXPECT_EQ(zubPlatform::create_process(id, nullptr, arguments, nullptr, 0, true), -1);
	EXPECT_EQ(id, 0u);
	id = 99;
	EXPECT_EQ(zubPlatform::create_process(id, nullptr, nullptr, nullptr, 0, true), -1);
	EXPECT_EQ(id, 0u);
}

TEST(zubPlatform_process, MissingFileIsNotOpened) {
	const Temporary_folder folder;
	zubPlatform::open_with_default_app(xylVarString((folder / "missing.txt").c_str()));
	zubPlatform::open_with_default_app(xylVarString(folder.path().string().c_str()));
}

} // namespace
