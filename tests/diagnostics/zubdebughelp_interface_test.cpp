// The search path of the real environment, and the engine's life without a host's object.

#include "temporary_folder.h"

#include <morvantis/diagnostics/zubdebughelp_interface.h>
#include <morvantis/platform/zubplatform.h>

#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::StartsWith;

TEST(zubDebughelp_interface, PointerIsTheHosts) { EXPECT_EQ(zub_debughelp_interface, nullptr); }

TEST(zubDebughelp_interface, ProcessIsKnownAtLoad) {
	EXPECT_NE(zubDebughelp_interface::dummy_process, nullptr);
}

TEST(zubDebughelp_interface, SearchBeginsInTheCurrentFolder) {
	const Temporary_folder folder;
	const Current_folder current(folder.path());
	const std::string paths = zubDebughelp_interface::get_symbol_search_paths().char_p();
	EXPECT_THAT(paths, StartsWith(".;" + std::filesystem::current_path().string() + ";"));
	EXPECT_THAT(paths, testing::EndsWith("*\\\\" MORVANTIS_SYMBOL_SERVER "\\SymbolsSystem;"));
}

TEST(zubDebughelp_interface, EnvironmentIsReadOnEachCall) {
	for (const char* value : {"first place", "second place"}) {
		ASSERT_TRUE(zubPlatform::set_environment_variable("_NT_SYMBOL_PATH", value));
		EXPECT_THAT(zubDebughelp_interface::get_symbol_search_paths().char_p(),
		            HasSubstr(std::string(";") + value + ";"));
	}
	ASSERT_TRUE(zubPlatform::set_environment_variable("_NT_SYMBOL_PATH", "")); // empty is not set
	EXPECT_THAT(
		zubDebughelp_interface::get_symbol_search_paths().char_p(),
		testing::AllOf(testing::Not(HasSubstr("second place")), testing::Not(HasSubstr(";;"))));
}
