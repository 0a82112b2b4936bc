// An image of tests/platform/linux/images, loaded, and the forms of its symbol file.
#pragma once

#include "images/known_code.h"

#include <morvantis/core/xyltypes.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include <dlfcn.h>

// The file `form`/`image`.so with `extension`; the image itself for an empty form.
inline std::string known_file(const std::string& image, const std::string& form,
                              const std::string& extension = "") {
	const std::string folder = form.empty() ? "" : "/" + form;
	return MORVANTIS_TEST_IMAGES + folder + "/" + image + ".so" + extension;
}

// A place as a raw frame has it.
struct Known_offset {
	xylUInt32 offset;
	std::string function;
	xylUInt32 line;
};

// Loads a form of the image for as long as the object lives, and asks it for its places.
class Known_image {
public:
	explicit Known_image(const std::string& name, const std::string& form = "") {
		module_ = dlopen(known_file(name, form).c_str(), RTLD_NOW | RTLD_LOCAL);
		if (!module_) {
			ADD_FAILURE() << dlerror();
			return;
		}
		auto* const fill = reinterpret_cast<Known_places*>(dlsym(module_, "known_places"));
		Known_place found[most_known_places];
		const int count = fill(found);
		dl_find_object facts;
		if (_dl_find_object(const_cast<void*>(found[0].address), &facts) != 0) ADD_FAILURE();
		base_ = static_cast<const char*>(facts.dlfo_map_start);
		for (int i = 0; i < count; ++i)
			places_.push_back({offset_of(found[i].address), found[i].function,
			                   static_cast<xylUInt32>(found[i].line)});
		entry_ = offset_of(reinterpret_cast<const void*>(fill));
	}
	~Known_image() {
		if (module_) dlclose(module_);
	}
	Known_image(const Known_image&) = delete;
	Known_image& operator=(const Known_image&) = delete;

	const std::vector<Known_offset>& places() const { return places_; }
	// Where known_places() begins.
	xylUInt32 entry() const { return entry_; }
	const char* base() const { return base_; }

private:
	xylUInt32 offset_of(const void* address) const {
		return static_cast<xylUInt32>(static_cast<const char*>(address) - base_);
	}

	void* module_ = nullptr;
	const char* base_ = nullptr;
	xylUInt32 entry_ = 0;
	std::vector<Known_offset> places_;
};
