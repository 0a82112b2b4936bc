#include <morvantis/platform/system/linux/elf_image.h>

#include <morvantis/platform/system/linux/build_id.h>
#include <morvantis/platform/system/linux/own_memory.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include <elf.h>

namespace {

constexpr xylUInt64 page = 4096;

xylUInt64 page_start(xylUInt64 address) { return address & ~(page - 1); }

bool is_image(const Elf64_Ehdr& header) {
	return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 &&
	       header.e_ident[EI_CLASS] == ELFCLASS64 && header.e_machine == EM_X86_64 &&
	       header.e_phentsize == sizeof(Elf64_Phdr);
}

} // namespace

bool os::read_elf_image(xylUInt64 base, Elf_image* image) {
	Elf64_Ehdr header;
	if (read_own_memory(base, &header, sizeof(header)) != sizeof(header) || !is_image(header)) {
		return false;
	}
	*image = {};
	Elf64_Phdr segments[16]; // linkers write a dozen
	const size_t wanted =
		std::min<size_t>(header.e_phnum, std::size(segments)) * sizeof(Elf64_Phdr);
	const size_t count =
		read_own_memory(base + header.e_phoff, segments, wanted) / sizeof(Elf64_Phdr);
	bool is_first = true;
	xylUInt64 first = 0;
	for (size_t i = 0; i < count; ++i) {
		if (segments[i].p_type != PT_LOAD) continue;
		if (is_first) first = page_start(segments[i].p_vaddr);
		is_first = false;
		const xylUInt64 end = segments[i].p_vaddr + segments[i].p_memsz;
		image->size = std::max(image->size, page_start(end + page - 1) - first);
	}
	for (size_t i = 0; i < count; ++i) {
		if (segments[i].p_type != PT_NOTE) continue;
		xylUInt8 notes[1024];
		const size_t size = read_own_memory(base + segments[i].p_vaddr - first, notes,
		                                    std::min<size_t>(segments[i].p_memsz, sizeof(notes)));
		const Build_id_note id = find_build_id_note(notes, size, segments[i].p_align == 8 ? 8 : 4);
		if (!id.bytes) continue;
		image->build_id_size =
			static_cast<xylUInt32>(std::min<size_t>(id.size, sizeof(image->build_id)));
		std::memcpy(image->build_id, id.bytes, image->build_id_size);
		break;
	}
	return image->size > 0;
}
