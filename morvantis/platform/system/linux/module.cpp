#include <morvantis/platform/system/module.h>

#include <morvantis/platform/system/path.h>

#include <cstddef>

#include <dlfcn.h>
#include <link.h>

// An empty name would give a handle of the program itself.
void* os::load_module(const char* name) { return name[0] ? dlopen(name, RTLD_NOW) : nullptr; }

bool os::free_module(void* module) { return module && dlclose(module) == 0; }

// A null handle would search every image of the process.
void* os::module_symbol(void* module, const char* symbol) {
	return module ? dlsym(module, symbol) : nullptr;
}

namespace {

constexpr ElfW(Addr) page_size = 4096;

// The part of the program header table that tells where the image begins: its first loaded segment.
// Null where nothing is loaded.
const ElfW(Phdr) * first_segment(const dl_phdr_info& image) {
	for (int i = 0; i < image.dlpi_phnum; ++i) {
		if (image.dlpi_phdr[i].p_type == PT_LOAD) return &image.dlpi_phdr[i];
	}
	return nullptr;
}

struct Visit {
	void (*visit)(const os::Loaded_module&, void*);
	void* data;
	bool is_first = true;
};

// The full path behind a name of the loader's list, which may be written to `buffer`. The list
// leaves the program's own name empty, and has that of a library as it was asked for: a path may
// begin in the current folder. What has no separator has no file.
const char* full_path(const char* name, bool is_program, char (&buffer)[4096]) {
	if (is_program && name[0] == 0) {
		const size_t length = os::executable_path(buffer, sizeof(buffer));
		return length > 0 && length < sizeof(buffer) ? buffer : "";
	}
	if (name[0] == '/' || os::file_name(name) == name) return name;
	const size_t length = os::absolute_path(name, buffer, sizeof(buffer));
	return length > 0 && length < sizeof(buffer) ? buffer : name;
}

int show_image(dl_phdr_info* image, size_t, void* data) {
	auto& visit = *static_cast<Visit*>(data);
	const ElfW(Phdr)* segment = first_segment(*image);
	char buffer[4096];
	const char* const path = full_path(image->dlpi_name, visit.is_first, buffer);
	visit.is_first = false;
	if (!segment) return 0;
	const ElfW(Addr) base = image->dlpi_addr + (segment->p_vaddr & ~(page_size - 1));
	visit.visit({base, reinterpret_cast<const void*>(base), os::file_name(path), path}, visit.data);
	return 0;
}

struct Readable_part {
	ElfW(Addr) address;
	size_t bytes;
};

int find_part(dl_phdr_info* image, size_t, void* data) {
	auto& part = *static_cast<Readable_part*>(data);
	for (int i = 0; i < image->dlpi_phnum; ++i) {
		const ElfW(Phdr)& segment = image->dlpi_phdr[i];
		const ElfW(Addr) begin = image->dlpi_addr + (segment.p_vaddr & ~(page_size - 1));
		const ElfW(Addr) end = image->dlpi_addr + segment.p_vaddr + segment.p_memsz;
		if (segment.p_type != PT_LOAD || !(segment.p_flags & PF_R)) continue;
		if (part.address < begin || part.address >= end) continue;
		part.bytes = end - part.address;
		return 1;
	}
	return 0;
}

} // namespace

const void* os::module_base(void* module) {
	link_map* map = nullptr;
	if (!module || dlinfo(module, RTLD_DI_LINKMAP, static_cast<void*>(&map)) != 0) return nullptr;
	dl_find_object image;
	return _dl_find_object(map->l_ld, &image) == 0 ? image.dlfo_map_start : nullptr;
}

os::Module_list os::visit_modules(void*, void (*visit)(const Loaded_module&, void*), void* data) {
	Visit state{visit, data};
	dl_iterate_phdr(show_image, &state);
	return Module_list::complete;
}

size_t os::readable_image_bytes(const void* address) {
	Readable_part part{reinterpret_cast<ElfW(Addr)>(address), 0};
	dl_iterate_phdr(find_part, &part);
	return part.bytes;
}
