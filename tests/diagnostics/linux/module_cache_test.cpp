// What only images of this system have: a place that they were linked for, and the path by which
// they were loaded.

#include "temporary_folder.h"

#include <morvantis/diagnostics/zubcallstack_helpers.h>

#include <gtest/gtest.h>

#include <memory>

#include <dlfcn.h>
#include <link.h>

namespace {

constexpr char image_path[] = MORVANTIS_TEST_IMAGES "/known_placed.so";

class Linux_module_cache_test : public testing::Test {
protected:
	~Linux_module_cache_test() override { zubCallstack_helpers::clear_module_cache(); }

	// Loads a library until the end of the test; its place in memory.
	dl_find_object load(const char* path) {
		library_.reset(dlopen(path, RTLD_NOW));
		dl_find_object image{};
		if (!library_ || _dl_find_object(dlsym(library_.get(), "known_places"), &image) != 0) {
			ADD_FAILURE() << path;
		}
		return image;
	}
	static unsigned long long key_of(const dl_find_object& image) {
		return reinterpret_cast<size_t>(image.dlfo_map_start);
	}

	struct Closer {
		void operator()(void* library) const { dlclose(library); }
	};
	std::unique_ptr<void, Closer> library_;
};

} // namespace

TEST_F(Linux_module_cache_test, KeyIsThePlaceInMemoryWhereverTheImageWasLinkedFor) {
	const dl_find_object image = load(image_path);
	const unsigned long long key = key_of(image);
	ASSERT_NE(image.dlfo_link_map->l_addr, key) << "linked for address 0";
	ASSERT_TRUE(zubCallstack_helpers::enumerate_modules(nullptr));
	zubCallstack_module module;
	ASSERT_TRUE(zubCallstack_helpers::get_module_info(key, module));
	EXPECT_STREQ(module.path.char_p(), image_path);
	EXPECT_STREQ(module.name.char_p(), "known_placed.so");
	EXPECT_EQ(module.base_address, key);
	const auto bytes = static_cast<size_t>(static_cast<char*>(image.dlfo_map_end) -
	                                       static_cast<char*>(image.dlfo_map_start));
	EXPECT_EQ(module.image_size, (bytes + 4095) / 4096 * 4096);
	// The build id that the linker was told, which is shorter than a GUID.
	EXPECT_EQ(module.pdb_guid, (xylGuid_type{0xD4C3B2A1, 0xF6E5, 0x1807, {}}));
	EXPECT_STREQ(module.pdb_name.char_p(), "known_placed.so");

	zubCallstack_helpers::clear_module_cache();
	EXPECT_EQ(zubCallstack_helpers::load_and_cache_module(image_path), key);
	ASSERT_TRUE(zubCallstack_helpers::get_module_info(key, module));
	EXPECT_EQ(module.pdb_guid.data1, 0xD4C3B2A1);
}

TEST_F(Linux_module_cache_test, PathFromTheCurrentFolderIsMadeFull) {
	const Temporary_folder folder;
	std::filesystem::copy_file(image_path, folder / "copy.so");
	const Current_folder current(folder.path());
	const unsigned long long key = key_of(load("./copy.so"));
	ASSERT_TRUE(zubCallstack_helpers::enumerate_modules(nullptr));
	zubCallstack_module module;
	ASSERT_TRUE(zubCallstack_helpers::get_module_info(key, module));
	EXPECT_EQ(module.path.char_p(), folder / "copy.so");
	EXPECT_STREQ(module.name.char_p(), "copy.so");
	library_.reset();
}
