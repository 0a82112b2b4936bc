#include "scripted_system.h"

#include <morvantis/core/xylguid.h>
#include <morvantis/platform/zubplatform.h>
#include <morvantis/strings/xylvarstring.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <new>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

void* const handle = reinterpret_cast<void*>(0x40);

class Scripted_platform_test : public testing::Test {
protected:
	void SetUp() override { scripted_system = {}; }
	// What the system was asked since the last time.
	static std::vector<std::string> calls() { return std::exchange(scripted_system.calls, {}); }
	static std::vector<std::string> reports() { return std::exchange(scripted_system.reports, {}); }
};

// --- Time
// -----------------------------------------------------------------------------------------

TEST_F(Scripted_platform_test, ClocksHandOnWhatTheSystemSays) {
	scripted_system.counter = -5;
	EXPECT_EQ(zubPlatform::get_timestamp_counter(), -5);
	EXPECT_EQ(zubPlatform::get_timestamp_counter_frequency(), 10'000'000);
	EXPECT_THAT(reports(), IsEmpty());
	zubPlatform::sleep(12);
	EXPECT_THAT(calls(), ElementsAre("sleep(12)"));
}

TEST_F(Scripted_platform_test, MillisecondsAreWidenedWithoutSign) {
	scripted_system.milliseconds = 0xFFFFFFFF;
	EXPECT_EQ(zubPlatform::get_system_time(), 4294967295);
}

TEST_F(Scripted_platform_test, MissingCounterIsAnErrorAndTheCallReturns) {
	scripted_system.frequency.reset();
	EXPECT_EQ(zubPlatform::get_timestamp_counter_frequency(), 0);
	EXPECT_THAT(reports(), ElementsAre("error: The hardware does not support high-resolution "
	                                   "performance counters!"));
}

// --- Threads
// --------------------------------------------------------------------------------------

TEST_F(Scripted_platform_test, PrioritiesComeFromTheTable) {
	for (const int value : {0, 1, 2, 3}) {
		zubPlatform::set_thread_priority(handle, static_cast<xylThread_priority>(value));
	}
	EXPECT_THAT(calls(),
	            ElementsAre("set_thread_priority(0x40, -2)", "set_thread_priority(0x40, 0)",
	                        "set_thread_priority(0x40, 2)", "set_thread_priority(0x40, 0)"));
	EXPECT_EQ(xylThread_priority_low, 0);
	EXPECT_EQ(xylThread_priority_normal, 1);
	EXPECT_EQ(xylThread_priority_high, 2);
}

TEST_F(Scripted_platform_test, NameWithoutStorageIsTheEmptyName) {
	zubPlatform::set_thread_name(handle, xylVarString());
	zubPlatform::set_thread_name(handle, xylVarString("loader"));
	EXPECT_THAT(calls(), ElementsAre("name_thread(0x40, '')", "name_thread(0x40, 'loader')"));
}

TEST_F(Scripted_platform_test, ThreadCallsHandOnTheirArguments) {
	scripted_system.address = handle;
	EXPECT_EQ(zubPlatform::get_current_native_thread_handle(), handle);
	EXPECT_EQ(zubPlatform::get_native_thread_id(handle), 5u);
	zubPlatform::set_thread_affinity(handle, 0xFFFFFFFFFFFFFFFF);
	EXPECT_THAT(calls(),
	            ElementsAre("thread_id(0x40)", "set_thread_affinity(0x40, 18446744073709551615)"));
	EXPECT_EQ(zubPlatform::get_current_process_id(), 0xFFFFFFFEu);
	EXPECT_TRUE(zubPlatform::is_debugger_present());
	scripted_system.succeeds = false;
	EXPECT_FALSE(zubPlatform::is_debugger_present());
}

TEST_F(Scripted_platform_test, ExceptionThatComesBackIsFollowedByASecondOfSleep) {
	zubPlatform::raise_exception(0xDEADFACE);
	EXPECT_THAT(calls(), ElementsAre("raise_exception(3735943886)", "sleep(1000)"));
}

// --- Memory figures
// -------------------------------------------------------------------------------

TEST_F(Scripted_platform_test, MemoryFiguresAndTheirFailures) {
	EXPECT_EQ(zubPlatform::get_application_memory(), 0u);
	EXPECT_EQ(zubPlatform::get_application_commit_memory(), 0u);
	EXPECT_EQ(zubPlatform::get_available_memory_percentage(), -1.0f);
	scripted_system.process_memory = {11, 22};
	scripted_system.physical_memory = {1, 4};
	EXPECT_EQ(zubPlatform::get_application_memory(), 11u);
	EXPECT_EQ(zubPlatform::get_application_commit_memory(), 22u);
	EXPECT_EQ(zubPlatform::get_available_memory_percentage(), 25.0f);
	EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(Scripted_platform_test, PercentageIsNarrowedBeforeItIsMultiplied) {
	scripted_system.physical_memory = {0, 7};
	EXPECT_EQ(zubPlatform::get_available_memory_percentage(), 0.0f);
	int differing = 0;
	for (xylUInt64 available = 1; available <= 1000; ++available) {
		scripted_system.physical_memory = {available, 1021};
		const double quotient = static_cast<double>(available) / 1021.0;
		EXPECT_EQ(zubPlatform::get_available_memory_percentage(),
		          static_cast<float>(quotient) * 100.0f);
		differing += static_cast<float>(quotient) * 100.0f != static_cast<float>(quotient * 100.0);
	}
	EXPECT_GT(differing, 0) << "the values chosen must tell the two orders apart";
}

TEST_F(Scripted_platform_test, HugeMemoryCountsWithoutSign) {
	scripted_system.physical_memory = {xylUInt64{1} << 63, 0xFFFFFFFFFFFFFFFF};
	EXPECT_EQ(zubPlatform::get_available_memory_percentage(), 50.0f);
}

// --- Processor
// ------------------------------------------------------------------------------------

os::Cpuid_registers text_leaf(const char* text) {
	os::Cpuid_registers registers{};
	std::memcpy(&registers, text, 16);
	return registers;
}

void set_limit(xylUInt32 limit) {
	scripted_system.leaves[0x80000000] = {limit, 0, 0, 0};
	scripted_system.leaves[0x80000002] = text_leaf("0123456789abcdef");
	scripted_system.leaves[0x80000003] = text_leaf("ghijklmnopqrstuv");
	scripted_system.leaves[0x80000004] = text_leaf("wxyzABCDEFGHIJKL");
}

TEST_F(Scripted_platform_test, ExtendedLimitGatesEveryLeaf) {
	static constexpr char all[] = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKL";
	struct Case {
		xylUInt32 limit;
		bool basic, seventh;
		int characters;
	};
	const Case cases[] = {
		{0, false, false, 0},         {1, false, false, 0},         {2, true, false, 0},
		{7, true, false, 0},          {8, true, true, 0},           {0x80000000, true, true, 0},
		{0x80000002, true, true, 0},  {0x80000003, true, true, 16}, {0x80000004, true, true, 32},
		{0x80000005, true, true, 48}, {0xFFFFFFFF, true, true, 48},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(testing::Message() << std::hex << c.limit);
		set_limit(c.limit);
		const xylCPU_description description = zubPlatform::get_cpu_description();
		EXPECT_EQ(description.has_sse3, c.basic);
		EXPECT_EQ(description.has_avx, c.basic);
		EXPECT_EQ(description.has_avx2, c.seventh);
		EXPECT_EQ(description.brand_name.char_p(),
		          std::string(all, static_cast<size_t>(c.characters)));
		EXPECT_EQ(description.brand_name.length(), c.characters);
	}
}

TEST_F(Scripted_platform_test, BrandEndsAtItsTerminator) {
	set_limit(0x80000008);
	scripted_system.leaves[0x80000003] = text_leaf("gh\0jklmnopqrstu");
	EXPECT_EQ(std::string(zubPlatform::get_cpu_description().brand_name.char_p()),
	          "0123456789abcdefgh");
}

TEST_F(Scripted_platform_test, EachFlagIsItsOwnBit) {
	struct Case {
		const char* name;
		bool xylCPU_description::* flag;
		os::Cpuid_registers first, seventh;
	};
	const Case cases[] = {
		{"sse3", &xylCPU_description::has_sse3, {0, 0, 1u << 0, 0}, {}},
		{"ssse3", &xylCPU_description::has_ssse3, {0, 0, 1u << 9, 0}, {}},
		{"sse4.1", &xylCPU_description::has_sse4_1, {0, 0, 1u << 19, 0}, {}},
		{"sse4.2", &xylCPU_description::has_sse4_2, {0, 0, 1u << 20, 0}, {}},
		{"avx", &xylCPU_description::has_avx, {0, 0, 1u << 28, 0}, {}},
		{"avx2", &xylCPU_description::has_avx2, {}, {0, 1u << 5, 0, 0}},
	};
	set_limit(0x80000008);
	for (const Case& lit : cases) {
		scripted_system.leaves[1] = lit.first;
		scripted_system.leaves[7] = lit.seventh;
		const xylCPU_description description = zubPlatform::get_cpu_description();
		for (const Case& c : cases) {
			SCOPED_TRACE(std::string(lit.name) + " on, looking at " + c.name);
			EXPECT_EQ(description.*c.flag, c.flag == lit.flag);
		}
	}
}

TEST_F(Scripted_platform_test, LeavesAreAskedInOrderAndSeventhWithSubleafZero) {
	set_limit(0x80000008);
	scripted_system.processor_count = 12;
	EXPECT_EQ(zubPlatform::get_cpu_description().processor_count, 12u);
	EXPECT_THAT(calls(),
	            ElementsAre("cpuid(80000000, 0)", "cpuid(1, 0)", "cpuid(7, 0)",
	                        "cpuid(80000002, 0)", "cpuid(80000003, 0)", "cpuid(80000004, 0)"));
	set_limit(1);
	zubPlatform::get_cpu_description();
	EXPECT_THAT(calls(), ElementsAre("cpuid(80000000, 0)"));
}

TEST(xylCPU_description, ConstructionClearsEveryFlag) {
	alignas(xylCPU_description) unsigned char storage[sizeof(xylCPU_description)];
	std::memset(storage, 0xFF, sizeof(storage));
	const auto* description = new (storage) xylCPU_description;
	EXPECT_TRUE(description->brand_name.is_empty());
	EXPECT_FALSE(description->has_sse3 || description->has_ssse3 || description->has_sse4_1 ||
	             description->has_sse4_2 || description->has_avx || description->has_avx2);
	description->~xylCPU_description();
}

// --- Page memory
// ----------------------------------------------------------------------------------

TEST_F(Scripted_platform_test, PageSizeIsTheLargerOfTheTwo) {
	scripted_system.page_sizes = {4096, 65536};
	EXPECT_EQ(zubPlatform::page_size_internal(), 65536u);
	scripted_system.page_sizes = {16384, 4096};
	EXPECT_EQ(zubPlatform::page_size_internal(), 16384u);
}

// The only test that may call page_size(): the first call of a process decides.
TEST_F(Scripted_platform_test, PageSizeIsKeptWithASignFromTheFirstCallOn) {
	scripted_system.page_sizes = {4096, 0x80000000};
	EXPECT_EQ(zubPlatform::page_size(), 0xFFFFFFFF80000000);
	scripted_system.page_sizes = {4096, 65536};
	EXPECT_EQ(zubPlatform::page_size(), 0xFFFFFFFF80000000);
}

TEST_F(Scripted_platform_test, PageCallsIgnoreTheirSpareArguments) {
	scripted_system.address = handle;
	EXPECT_EQ(zubPlatform::allocate_memory(100, 1 << 20, true, true), handle);
	EXPECT_EQ(zubPlatform::allocation_size(handle), 77u);
	EXPECT_TRUE(zubPlatform::deallocate_memory(handle, 1));
	EXPECT_TRUE(zubPlatform::decommit_memory(handle, 4096, 1));
	EXPECT_THAT(calls(), ElementsAre("take_pages(100)", "region_size(0x40)", "release_pages(0x40)",
	                                 "decommit_pages(0x40, 4096)"));
	scripted_system.succeeds = false;
	scripted_system.address = nullptr;
	EXPECT_EQ(zubPlatform::allocate_memory(100, 0, false, false), nullptr);
	EXPECT_FALSE(zubPlatform::deallocate_memory(handle, 1));
	EXPECT_FALSE(zubPlatform::decommit_memory(handle, 4096, 1));
	EXPECT_THAT(reports(), IsEmpty());
}

// In one test, since the messages come once a process; a repeated run of the test sees none.
TEST_F(Scripted_platform_test, DirectMemoryIsMissingAndSaysSoOnce) {
	static bool seen = false;
	EXPECT_EQ(zubPlatform::allocate_direct_memory(4096, 0, true, true), nullptr);
	EXPECT_FALSE(zubPlatform::deallocate_direct_memory(handle));
	if (!std::exchange(seen, true)) {
		EXPECT_THAT(
			reports(),
			ElementsAre("debug output: Not implemented: zubPlatform::allocate_direct_memory "
		                "(zubplatform:780)\n",
		                "debug output: Not implemented: zubPlatform::deallocate_direct_memory "
		                "(zubplatform:871)\n"));
	}
	EXPECT_EQ(zubPlatform::allocate_direct_memory(4096, 0, true, true), nullptr);
	EXPECT_FALSE(zubPlatform::deallocate_direct_memory(handle));
	EXPECT_THAT(reports(), IsEmpty());
	EXPECT_THAT(calls(), IsEmpty());
}

// --- Identity
// -------------------------------------------------------------------------------------

TEST_F(Scripted_platform_test, GuidKeepsTheSystemsBytesAndAFailureLeavesIt) {
	xylGuid_type guid{};
	zubPlatform::create_guid(&guid);
	EXPECT_EQ(guid, (xylGuid_type{0x03020100, 0x0504, 0x0706, {8, 9, 10, 11, 12, 13, 14, 15}}));
	scripted_system.succeeds = false;
	guid.data1 = 99;
	zubPlatform::create_guid(&guid);
	EXPECT_EQ(guid, (xylGuid_type{99, 0x0504, 0x0706, {8, 9, 10, 11, 12, 13, 14, 15}}));
}

TEST_F(Scripted_platform_test, LibraryAndEnvironmentCallsHandOnTheirTexts) {
	scripted_system.address = handle;
	xylVarString symbol("entry");
	EXPECT_EQ(zubPlatform::load_library(xylVarString()), handle);
	EXPECT_EQ(zubPlatform::load_library("a.dll"), handle);
	EXPECT_EQ(zubPlatform::get_process_address(handle, symbol), handle);
	EXPECT_TRUE(zubPlatform::free_library(handle));
	EXPECT_TRUE(zubPlatform::set_environment_variable("NAME", "value"));
	EXPECT_THAT(calls(),
	            ElementsAre("load_module('')", "load_module('a.dll')", "module_symbol(0x40, entry)",
	                        "free_module(0x40)", "set_environment_variable(NAME, value)"));
	scripted_system.succeeds = false;
	EXPECT_FALSE(zubPlatform::free_library(handle));
	EXPECT_FALSE(zubPlatform::set_environment_variable("NAME", "value"));
}

TEST_F(Scripted_platform_test, ComputerNameIsTerminatedAtTheCount) {
	scripted_system.name = "builder and more";
	scripted_system.name_count = 7;
	xylVarString name("before");
	EXPECT_TRUE(zubPlatform::get_computer_name(name));
	EXPECT_EQ(std::string(name.char_p()), "builder");
	EXPECT_THAT(calls(), ElementsAre("computer_name(16)"));
	scripted_system.name_count = 15;
	EXPECT_TRUE(zubPlatform::get_computer_name(name));
	EXPECT_EQ(name.length(), 15);
}

TEST_F(Scripted_platform_test, UserNameIsTerminatedOneBehindTheSystemsOwn) {
	scripted_system.name = std::string("ada") + '\0' + "#rest";
	scripted_system.name_count = 4;
	xylVarString name("before");
	EXPECT_TRUE(zubPlatform::get_os_user_name(name));
	EXPECT_EQ(std::string(name.char_p()), "ada");
	EXPECT_THAT(calls(), ElementsAre("user_name(257)"));
	// A count without the terminator would show the position.
	scripted_system.name = "lovelace";
	scripted_system.name_count = 4;
	EXPECT_TRUE(zubPlatform::get_os_user_name(name));
	EXPECT_EQ(std::string(name.char_p()), "love");
	scripted_system.name = std::string(255, 'x') + '\0';
	scripted_system.name_count = 256;
	EXPECT_TRUE(zubPlatform::get_os_user_name(name));
	EXPECT_EQ(name.length(), 255);
}

TEST_F(Scripted_platform_test, MissingNamesAreWarnedOfAndLeaveTheText) {
	xylVarString name("before");
	EXPECT_FALSE(zubPlatform::get_computer_name(name));
	EXPECT_FALSE(zubPlatform::get_os_user_name(name));
	EXPECT_EQ(std::string(name.char_p()), "before");
	EXPECT_THAT(reports(), ElementsAre("warning with system error: Cannot Get Computer Name: #E",
	                                   "warning with system error: Cannot Get User Name: #E"));
}

using Scripted_platform_death_test = Scripted_platform_test;

TEST_F(Scripted_platform_death_test, NameCountsOutOfRangeEndTheProcess) {
	xylVarString name;
	scripted_system.name_count = 16;
	EXPECT_DEATH(zubPlatform::get_computer_name(name), "");
	scripted_system.name_count = 0xFFFFFFFF;
	EXPECT_DEATH(zubPlatform::get_computer_name(name), "");
	scripted_system.name_count = 257;
	EXPECT_DEATH(zubPlatform::get_os_user_name(name), "");
}

// --- Paths
// ----------------------------------------------------------------------------------------

TEST_F(Scripted_platform_test, TemporaryFolderIsCopiedAsItStands) {
	scripted_system.path = "C:\\users\\ada\\Temp\\";
	EXPECT_EQ(std::string(zubPlatform::get_temp_path().char_p()), scripted_system.path);
	EXPECT_THAT(calls(), ElementsAre("temporary_folder(280)"));
	scripted_system.path.clear();
	EXPECT_TRUE(zubPlatform::get_temp_path().is_empty());
}

TEST_F(Scripted_platform_test, ExecutableFolderEndsInASlash) {
	struct Case {
		const char* name;
		char separator;
		const char* path;
		const char* folder;
	};
	const Case cases[] = {
		{"both separators mix", '\\', "C:\\games\\bin\\game.exe", "C:\\games\\bin/"},
		{"drive's root", '\\', "C:\\game.exe", "C:/"},
		{"a slash separates nothing there", '\\', "C:\\a/b.exe", "C:/"},
		{"no separator, nothing cut", '\\', "game.exe", "game.exe/"},
		{"slashes", '/', "/opt/game/bin/game", "/opt/game/bin/"},
		{"root", '/', "/game", "/"},
		{"a backslash is part of a name", '/', "/opt/a\\b/game", "/opt/a\\b/"},
		{"nothing known", '/', "", ""},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		scripted_system.separator = c.separator;
		scripted_system.path = c.path;
		EXPECT_EQ(std::string(zubPlatform::get_executable_path().char_p()), c.folder);
		EXPECT_THAT(calls(), ElementsAre("executable_path(280)"));
	}
}

TEST_F(Scripted_platform_test, FoldersOfTheLargestSizeFit) {
	scripted_system.path = std::string(255, 't');
	EXPECT_EQ(zubPlatform::get_temp_path().length(), 255);
	scripted_system.path = "/" + std::string(253, 'f') + "/name";
	EXPECT_EQ(zubPlatform::get_executable_path().length(), 255);
}

TEST_F(Scripted_platform_death_test, LargerFoldersEndTheProcess) {
	scripted_system.path = std::string(256, 't');
	EXPECT_DEATH(zubPlatform::get_temp_path(), "");
	scripted_system.path = "/" + std::string(254, 'f') + "/name";
	EXPECT_DEATH(zubPlatform::get_executable_path(), "");
}

TEST_F(Scripted_platform_test, AbsolutePathAsksForTheFinalOneAndTurnsBackslashes) {
	scripted_system.path = "Z:\\game\\data\\a.txt";
	EXPECT_EQ(std::string(zubPlatform::convert_base_path_to_absolute_path(
							  xylConstString<64>("$BASE/data/a.txt"))
	                          .char_p()),
	          "Z:/game/data/a.txt");
	EXPECT_THAT(calls(), ElementsAre("absolute_path(../../data/a.txt, 1024)"));
}

TEST_F(Scripted_platform_test, LongAbsolutePathIsWarnedOfAndEmpty) {
	const xylConstString<16> path("a");
	scripted_system.path = "/" + std::string(254, 'a');
	EXPECT_EQ(zubPlatform::convert_base_path_to_absolute_path(path).length(), 255);
	EXPECT_THAT(reports(), IsEmpty());
	scripted_system.path += 'a';
	EXPECT_TRUE(zubPlatform::convert_base_path_to_absolute_path(path).is_empty());
	EXPECT_THAT(reports(), ElementsAre("warning: Could not set fixed-size(256) string to: " +
	                                   scripted_system.path));
}

TEST_F(Scripted_platform_test, ConversionsDoNotAllocate) {
	scripted_system.path = "/home/ada/game/data/a.txt";
	const xylConstString<64> base("$BASE/data/a.txt");
	const xylConstString<64> final_path("../../data/a.txt");
	const xylVarString long_path("$BASE/a/path/that/needs/storage/on/the/heap");
	scripted_system.allocations = 0;
	zubPlatform::get_base_path_prefix();
	zubPlatform::get_platform_base();
	zubPlatform::get_temp_path();
	zubPlatform::get_executable_path();
	zubPlatform::convert_base_path_to_final(base);
	zubPlatform::convert_base_path_to_absolute_path(base);
	zubPlatform::convert_final_to_base_path(final_path);
	zubPlatform::is_base_relative(long_path);
	zubPlatform::is_directory_exists(base);
	zubPlatform::file_exists(base);
	zubPlatform::create_directory(base);
	zubPlatform::remove_directory(base);
	zubPlatform::get_file_last_modification_date(base);
	EXPECT_EQ(scripted_system.allocations, 0);
	// The counter does count: here the result itself is on the heap.
	zubPlatform::get_base_relative_path(long_path);
	EXPECT_GT(scripted_system.allocations, 0);
}

// --- Folders and files
// ----------------------------------------------------------------------------

TEST_F(Scripted_platform_test, FileOperationsConvertTheirPathsButTheDateDoesNot) {
	const xylConstString<64> path("$BASE/a");
	zubPlatform::create_directory(path);
	zubPlatform::remove_directory(path);
	zubPlatform::is_directory_exists(path);
	zubPlatform::file_exists(path);
	zubPlatform::get_file_last_modification_date(path);
	EXPECT_THAT(calls(), ElementsAre("create_folder(../../a)", "delete_tree(../../a, )",
	                                 "path_kind(../../a)", "path_kind(../../a)",
	                                 "modification_time($BASE/a)"));
}

TEST_F(Scripted_platform_test, KindsOfPaths) {
	struct Case {
		os::Path_kind kind;
		bool is_directory, is_file;
	};
	const Case cases[] = {{os::Path_kind::missing, false, false},
	                      {os::Path_kind::file, false, true},
	                      {os::Path_kind::folder, true, false}};
	const xylConstString<16> path("a");
	for (const Case& c : cases) {
		scripted_system.path_kind = c.kind;
		EXPECT_EQ(zubPlatform::is_directory_exists(path), c.is_directory);
		EXPECT_EQ(zubPlatform::file_exists(path), c.is_file);
	}
}

TEST_F(Scripted_platform_test, FailuresAreNeutralAndSilent) {
	const xylConstString<16> path("a");
	scripted_system.succeeds = false;
	EXPECT_FALSE(zubPlatform::create_directory(path));
	EXPECT_FALSE(zubPlatform::remove_directory(path));
	EXPECT_EQ(zubPlatform::get_file_last_modification_date(path), -1);
	scripted_system.succeeds = true;
	scripted_system.modification_time = 5'000'000'000;
	EXPECT_TRUE(zubPlatform::create_directory(path));
	EXPECT_TRUE(zubPlatform::remove_directory(path));
	EXPECT_EQ(zubPlatform::get_file_last_modification_date(path), 5'000'000'000);
	EXPECT_THAT(reports(), IsEmpty());
}

TEST_F(Scripted_platform_test, RemoveTakesPathsWithRoomForTwoZeroBytes) {
	const xylVarString path(std::string(278, 'x').c_str());
	EXPECT_TRUE(zubPlatform::remove_directory(path));
	EXPECT_THAT(calls(), ElementsAre("delete_tree(" + std::string(278, 'x') + ", )"));
}

TEST_F(Scripted_platform_death_test, RemoveOfALongerPathEndsTheProcess) {
	EXPECT_DEATH(zubPlatform::remove_directory(xylVarString(std::string(279, 'x').c_str())), "");
}

// --- The object
// -----------------------------------------------------------------------------------

TEST_F(Scripted_platform_test, OperationsAreReachedThroughTheObjectToo) {
	ASSERT_NE(zub_platform, nullptr);
	zub_platform->sleep(3);
	EXPECT_THAT(calls(), ElementsAre("sleep(3)"));
}

} // namespace
