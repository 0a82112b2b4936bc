// The module cache over the images that this process has really loaded.

#include <morvantis/diagnostics/zubcallstack_helpers.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

// Known to the build: a library beside the tests, and its file name.
constexpr char library_path[] = MORVANTIS_CACHED_LIBRARY;
constexpr char library_name[] = MORVANTIS_CACHED_LIBRARY_NAME;

std::vector<std::string> cached_paths() {
	xylArray<xylVarString> names;
	zubCallstack_helpers::get_cached_module_names(names);
	std::vector<std::string> paths;
	for (const xylVarString& name : names) paths.emplace_back(name.char_p());
	return paths;
}

} // namespace

class Callstack_helpers_test : public testing::Test {
protected:
	~Callstack_helpers_test() override { zubCallstack_helpers::clear_module_cache(); }
};

TEST_F(Callstack_helpers_test, DepthOfACaptureIsFixed) {
	EXPECT_EQ(zubCallstack_helpers::callstack_max_depth, 128u);
}

TEST_F(Callstack_helpers_test, CacheIsEmptyUntilItIsAskedFor) {
	EXPECT_TRUE(zubCallstack_helpers::Modules.empty());
	EXPECT_TRUE(cached_paths().empty());
}

TEST_F(Callstack_helpers_test, ProgramAndLibraryAreAmongTheLoadedImages) {
	ASSERT_TRUE(zubCallstack_helpers::enumerate_modules(nullptr));
	int programs = 0, libraries = 0;
	for (const auto& [key, module] : zubCallstack_helpers::Modules) {
		const std::string name = module.name.char_p(), path = module.path.char_p();
		SCOPED_TRACE(path);
		EXPECT_EQ(key, module.base_address);
		EXPECT_NE(key, 0u);
		EXPECT_THAT(path, testing::EndsWith(name));
		EXPECT_GT(module.image_size, 0u);
		programs += name.starts_with("diagnostics_tests");
		libraries += name.find("Morvantis.Library") != std::string::npos;
		// An identity is whole or missing.
		EXPECT_TRUE(module.pdb_signature == 0x53445352 || module.pdb_signature == 0);
		EXPECT_EQ(module.pdb_signature == 0, module.pdb_guid == xylGuid_type{});
	}
	EXPECT_EQ(programs, 1);
	EXPECT_EQ(libraries, 1);
}

TEST_F(Callstack_helpers_test, WhatIsNoProcessMeansThisOne) {
	ASSERT_TRUE(zubCallstack_helpers::enumerate_modules(nullptr));
	const std::vector<std::string> paths = cached_paths();
	zubCallstack_helpers::clear_module_cache();
	ASSERT_TRUE(zubCallstack_helpers::enumerate_modules(reinterpret_cast<void*>(size_t{0x1234})));
	EXPECT_EQ(cached_paths(), paths);
}

TEST_F(Callstack_helpers_test, PathsAreFullOnes) {
	ASSERT_TRUE(zubCallstack_helpers::enumerate_modules(nullptr));
	for (const std::string& path : cached_paths()) {
		const std::filesystem::path file(path);
		EXPECT_TRUE(file.is_absolute() || !file.has_parent_path()) << path; // or there is no file
	}
}

TEST_F(Callstack_helpers_test, SecondEnumerationChangesNothing) {
	ASSERT_TRUE(zubCallstack_helpers::enumerate_modules(nullptr));
	const std::vector<std::string> before = cached_paths();
	// A mark that a new reading would wipe out.
	for (auto& entry : zubCallstack_helpers::Modules) entry.second.extra_path = "mark";
	ASSERT_TRUE(zubCallstack_helpers::enumerate_modules(nullptr));
	EXPECT_EQ(cached_paths(), before);
	for (const auto& [key, module] : zubCallstack_helpers::Modules) {
		EXPECT_STREQ(module.extra_path.char_p(), "mark") << module.path.char_p();
	}
}

TEST_F(Callstack_helpers_test, LoadedLibraryIsCachedOnce) {
	const xylVarString path = library_path;
	const unsigned long long key = zubCallstack_helpers::load_and_cache_module(path);
	ASSERT_NE(key, 0u);
	EXPECT_EQ(zubCallstack_helpers::Modules.size(), 1u);
	zubCallstack_module module;
	ASSERT_TRUE(zubCallstack_helpers::get_module_info(key, module));
	EXPECT_STREQ(module.name.char_p(), library_name);
	EXPECT_STREQ(module.path.char_p(), library_path);
	EXPECT_EQ(module.base_address, key);
	EXPECT_GT(module.image_size, 0u);
	EXPECT_TRUE(zubCallstack_helpers::get_module_info(path, module));

	EXPECT_EQ(zubCallstack_helpers::load_and_cache_module(path), key);
	EXPECT_EQ(zubCallstack_helpers::Modules.size(), 1u);

	// The loader's own list knows it by the same key.
	ASSERT_TRUE(zubCallstack_helpers::enumerate_modules(nullptr));
	int entries = 0;
	for (const auto& entry : zubCallstack_helpers::Modules) {
		entries += std::string(entry.second.name.char_p()) == library_name;
	}
	EXPECT_EQ(entries, 1);
	EXPECT_TRUE(zubCallstack_helpers::get_module_info(key, module));
	EXPECT_STREQ(module.path.char_p(), library_path);
}

TEST_F(Callstack_helpers_test, LibraryThatIsNoneIsNotCached) {
	EXPECT_EQ(zubCallstack_helpers::load_and_cache_module("no such library"), 0u);
	EXPECT_EQ(zubCallstack_helpers::load_and_cache_module(""), 0u);
	xylArray<xylVarString> paths;
	paths.push_back("no such library");
	paths.push_back(library_path);
	EXPECT_TRUE(zubCallstack_helpers::load_and_cache_modules(paths));
	EXPECT_EQ(cached_paths(), std::vector<std::string>{library_path});
}

TEST_F(Callstack_helpers_test, ClearedCacheFillsAnew) {
	ASSERT_TRUE(zubCallstack_helpers::enumerate_modules(nullptr));
	const std::vector<std::string> before = cached_paths();
	zubCallstack_helpers::clear_module_cache();
	EXPECT_TRUE(cached_paths().empty());
	ASSERT_TRUE(zubCallstack_helpers::enumerate_modules(nullptr));
	EXPECT_EQ(cached_paths(), before);
}
