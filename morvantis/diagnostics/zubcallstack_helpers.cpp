#include <morvantis/diagnostics/zubcallstack_helpers.h>

#include <morvantis/diagnostics/image_identity.h>
#include <morvantis/platform/system/module.h>
#include <morvantis/platform/system/path.h> // file_name

#include <cstring>

const unsigned int zubCallstack_helpers::callstack_max_depth;

bool zubCallstack_helpers::enumerate_modules(void* process) {
	const auto add = [](const os::Loaded_module& image, void*) {
		if (Modules.find(image.key) != Modules.end()) return;
		zubCallstack_module module;
		module.name = image.name;
		module.path = image.path;
		module.base_address = reinterpret_cast<size_t>(image.base);
		load_symbol_info(module);
		Modules[image.key] = module;
	};
	os::Module_list result;
	do {
		result = os::visit_modules(process, add, nullptr);
	} while (result == os::Module_list::changing);
	return result == os::Module_list::complete;
}

unsigned long long zubCallstack_helpers::load_and_cache_module(const xylVarString& path) {
	void* const handle = os::load_module(path.char_p());
	if (!handle) return 0;
	const auto base = reinterpret_cast<size_t>(os::module_base(handle));
	if (Modules.find(base) != Modules.end()) return base;
	zubCallstack_module module;
	module.name = os::file_name(path.char_p());
	module.path = path;
	module.base_address = base;
	load_symbol_info(module);
	Modules[base] = module;
	return base;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): hosts are compiled against the copy
bool zubCallstack_helpers::load_and_cache_modules(xylArray<xylVarString> paths) {
	for (const xylVarString& path : paths) load_and_cache_module(path);
	return true;
}

bool zubCallstack_helpers::get_module_info(unsigned long long key, zubCallstack_module& out) {
	const auto entry = Modules.find(key);
	if (entry == Modules.end()) return false;
	out = entry->second;
	return true;
}

bool zubCallstack_helpers::get_module_info(const xylVarString& path, zubCallstack_module& out) {
	for (const auto& [key, module] : Modules) {
		if (!module.path.same_as(path, true)) continue;
		out = module;
		return true;
	}
	return false;
}

void zubCallstack_helpers::clear_module_cache() { Modules.clear(); }

void zubCallstack_helpers::get_cached_module_names(xylArray<xylVarString>& out) {
	out.clear();
	for (const auto& [key, module] : Modules) out.push_back(module.path);
}

void zubCallstack_helpers::get_file_name_from_path(const xylString_base& path, char* out) {
	const char* const separator = std::strrchr(path.char_p(), '\\');
	std::strcpy(out, separator ? separator + 1 : path.char_p());
}

bool zubCallstack_helpers::load_symbol_info(zubCallstack_module& module) {
	return read_image_identity(module, os::readable_image_bytes);
}
