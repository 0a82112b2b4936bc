// The images of this process as the system layer shows them, and what of them may be read.

#include <morvantis/platform/system/module.h>

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

constexpr char constant_text[] = "in a part of the image that nobody writes to";

struct Shown_image {
	xylUInt64 key;
	const void* base;
	std::string name, path;
};

std::vector<Shown_image> shown_images() {
	std::vector<Shown_image> images;
	const auto note = [](const os::Loaded_module& image, void* data) {
		static_cast<std::vector<Shown_image>*>(data)->push_back(
			{image.key, image.base, image.name, image.path});
	};
	EXPECT_EQ(os::visit_modules(nullptr, note, &images), os::Module_list::complete);
	return images;
}

} // namespace

TEST(Modules, EachImageIsShownOnceTheProgramFirst) {
	const std::vector<Shown_image> images = shown_images();
	ASSERT_GT(images.size(), 1u);
	EXPECT_EQ(images[0].name.substr(0, 17), "diagnostics_tests");
	std::set<xylUInt64> keys;
	for (const Shown_image& image : images) {
		SCOPED_TRACE(image.path);
		EXPECT_TRUE(keys.insert(image.key).second);
		EXPECT_EQ(image.key, reinterpret_cast<size_t>(image.base));
		EXPECT_GT(os::readable_image_bytes(image.base), 64u); // a header at least
		EXPECT_TRUE(image.path.ends_with(image.name) && !image.name.empty());
	}
}

TEST(Modules, BaseOfALibraryIsTheShownOne) {
	void* const library = os::load_module(MORVANTIS_CACHED_LIBRARY);
	ASSERT_NE(library, nullptr);
	const void* const base = os::module_base(library);
	int count = 0;
	for (const Shown_image& image : shown_images()) {
		if (image.base != base) continue;
		++count;
		EXPECT_EQ(image.name, MORVANTIS_CACHED_LIBRARY_NAME);
	}
	EXPECT_EQ(count, 1);
	EXPECT_TRUE(os::free_module(library));
	EXPECT_EQ(os::module_base(nullptr), nullptr);
}

TEST(Modules, ReadableBytesReachToTheEndOfTheirPart) {
	const void* const places[] = {shown_images()[0].base, constant_text,
	                              reinterpret_cast<const void*>(shown_images)};
	for (const void* place : places) {
		const auto* bytes = static_cast<const volatile char*>(place);
		const size_t count = os::readable_image_bytes(place);
		ASSERT_GT(count, 1u);
		const auto count_at = [place](size_t offset) {
			return os::readable_image_bytes(static_cast<const char*>(place) + offset);
		};
		EXPECT_EQ(count_at(1), count - 1);
		EXPECT_EQ(count_at(count / 2), count - count / 2);
		EXPECT_EQ(count_at(count - 1), 1u);
		static_cast<void>(bytes[count - 1]); // it is really there
	}
}

TEST(Modules, WhatIsNoImageIsNotReadable) {
	int local = 0;
	const auto on_the_heap = std::make_unique<int>();
	for (const void* address :
	     {static_cast<const void*>(&local), static_cast<const void*>(on_the_heap.get()),
	      static_cast<const void*>(nullptr), reinterpret_cast<const void*>(~size_t{0})}) {
		EXPECT_EQ(os::readable_image_bytes(address), 0u) << address;
	}
}
