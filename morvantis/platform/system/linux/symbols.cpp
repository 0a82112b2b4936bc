#include <morvantis/platform/system/symbols.h>

#include <morvantis/platform/system/linux/elf_image.h>
#include <morvantis/platform/system/linux/function_name.h>
#include <morvantis/platform/system/linux/symbol_files.h>
#include <morvantis/platform/system/path.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include <dlfcn.h>
#include <link.h>

namespace {

// Whoever resolves stacks and whoever asks the engine may do so on two threads.
std::mutex engine_lock;
os::Symbol_files files;
char* engine_paths; // of the started engine; null: it isn't

// A loaded image and where an address lies in it.
struct Image {
	xylUInt64 address;
	xylUInt64 base = 0;          // 0: no image holds the address
	char path[4096] = {};        // empty for what has no file
	unsigned char guid[16] = {}; // zeros: it has no build id

	xylUInt32 offset() const { return static_cast<xylUInt32>(address - base); }
	os::Wanted_build build() const { return {path, path, guid, 0}; }
};

bool find_image(xylUInt64 address, Image& image) {
	dl_find_object object;
	if (_dl_find_object(reinterpret_cast<void*>(address), &object) != 0) {
		errno = ENOENT;
		return false;
	}
	image.address = address;
	image.base = reinterpret_cast<xylUInt64>(object.dlfo_map_start);
	// The program itself has no name there.
	const char* const name = object.dlfo_link_map->l_name;
	std::snprintf(image.path, sizeof(image.path), "%s", name);
	if (name[0] == 0 && os::executable_path(image.path, sizeof(image.path)) >= sizeof(image.path)) {
		image.path[0] = 0;
	}
	os::Elf_image facts;
	if (os::read_elf_image(image.base, &facts)) {
		std::memcpy(image.guid, facts.build_id,
		            std::min<size_t>(facts.build_id_size, sizeof(image.guid)));
	}
	return true;
}

os::Wanted_build build_of(const os::Symbol_file_identity& identity) {
	return {identity.name ? identity.name : "", identity.image_path ? identity.image_path : "",
	        identity.guid, identity.age};
}

os::Elf_symbols::Place place_in(os::Elf_symbols& symbols, const os::Wanted_build& build,
                                xylUInt32 offset) {
	const os::Elf_symbols* image = nullptr;
	if (!symbols.has_code() && build.image_path[0] != 0)
		image = files.open_beside(&symbols, build.image_path, build);
	return symbols.look_up(offset, image);
}

// What the symbol file of the image that holds `address` knows of it. False, with the reason in
// errno, when there is no such image or file.
bool engine_place(const Image& image, os::Elf_symbols::Place& place) {
	char file[os::symbol_text_size];
	os::Elf_symbols* symbols = nullptr;
	if (files.find(engine_paths ? engine_paths : "", image.build(), file))
		symbols = files.open(file, image.build());
	errno = ENOENT;
	if (!symbols) return false;
	place = place_in(*symbols, image.build(), image.offset());
	return true;
}

// The name that the dynamic linker has for `address`, which it knows of exported functions alone.
const char* exported_name(xylUInt64 address) {
	Dl_info info;
	if (dladdr(reinterpret_cast<const void*>(address), &info) == 0) return nullptr;
	return info.dli_sname;
}

} // namespace

const char* os::symbol_reader_library() { return nullptr; }

void os::set_symbol_options(xylUInt32) {}

void os::set_symbol_search_path(void*, const char* paths) {
	const std::lock_guard hold(engine_lock);
	if (!engine_paths) return;
	char* const copy = strdup(paths);
	if (!copy) return;
	std::free(engine_paths);
	engine_paths = copy;
}

bool os::start_symbol_engine(void*, const char* paths) {
	const std::lock_guard hold(engine_lock);
	std::free(engine_paths);
	engine_paths = strdup(paths);
	return engine_paths != nullptr;
}

void os::stop_symbol_engine(void*) {
	const std::lock_guard hold(engine_lock);
	std::free(engine_paths);
	engine_paths = nullptr;
	files.clear();
}

bool os::find_symbol_file(const char* paths, const Symbol_file_identity& identity,
                          char (&found)[symbol_text_size]) {
	const std::lock_guard hold(engine_lock);
	return files.find(paths, build_of(identity), found);
}

bool os::look_up_symbol(void*, const char* file, const Symbol_file_identity& identity,
                        xylUInt32 offset, Symbol_answer& answer) {
	const std::lock_guard hold(engine_lock);
	const Wanted_build build = build_of(identity);
	Elf_symbols* const symbols = files.open(file, build);
	if (!symbols) return false;
	const Elf_symbols::Place place = place_in(*symbols, build, offset);
	answer = {};
	answer.has_function = place.function != nullptr;
	if (place.function)
		readable_function_name(place.function, false, answer.function, sizeof(answer.function));
	answer.has_line = answer.has_source = place.line != 0;
	answer.line = place.line;
	if (!answer.has_source) return true;
	// kept: what doesn't fit leaves the text that the name's conversion left.
	const bool fits = std::strlen(place.source) < sizeof(answer.source);
	std::snprintf(answer.source, sizeof(answer.source), "%s",
	              fits ? place.source : answer.function);
	return true;
}

bool os::engine_module(void*, xylUInt64 address, Engine_module& answer) {
	Image image;
	if (!find_image(address, image)) return false;
	answer.base = image.base;
	std::snprintf(answer.image, sizeof(answer.image), "%.255s", image.path);
	std::snprintf(answer.loaded_image, sizeof(answer.loaded_image), "%.255s", image.path);
	return true;
}

void* os::allocate_engine_record() { return std::calloc(1, engine_record_size); }

bool os::engine_name(void*, xylUInt64 address, void* record, Engine_name& answer) {
	Image image;
	if (!find_image(address, image)) return false;
	const std::lock_guard hold(engine_lock);
	Elf_symbols::Place place{};
	engine_place(image, place);
	const char* const symbol = place.function ? place.function : exported_name(address);
	errno = ENOENT;
	if (!symbol) return false;
	constexpr size_t head = engine_record_size - engine_text_size;
	char* const decorated = static_cast<char*>(record) + head;
	std::snprintf(decorated, engine_text_size, "%s", symbol);
	answer.decorated = decorated;
	answer.plain[0] = answer.complete[0] = 0; // for names that don't fit
	readable_function_name(symbol, false, answer.plain, sizeof(answer.plain));
	readable_function_name(symbol, true, answer.complete, sizeof(answer.complete));
	return true;
}

bool os::engine_line(void*, xylUInt64 address, Engine_line& answer) {
	static char file[4096];
	Image image;
	if (!find_image(address, image)) return false;
	const std::lock_guard hold(engine_lock);
	Elf_symbols::Place place{};
	if (!engine_place(image, place) || place.line == 0) {
		errno = ENOENT;
		return false;
	}
	std::snprintf(file, sizeof(file), "%s", place.source);
	answer = {file, place.line};
	return true;
}
