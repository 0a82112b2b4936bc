#include <morvantis/platform/system/linux/elf_image.h>

#include <morvantis/platform/system/linux/own_memory.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include <elf.h>

namespace {

constexpr xylUInt64 page = 4096;

xylUInt64 page_start(xylUInt64 address) { return address & ~(page - 1); }

// Looks through a segment of notes for the build id.
bool find_build_id(const xylUInt8* notes, size_t size, xylUInt64 alignment, os::Elf_image* image) {
	static constexpr char owner[] = "GNU";
	const size_t unit = alignment == 8 ? 8 : 4;
	const auto rounded = [unit](size_t count) { return (count + unit - 1) & ~(unit - 1); };
	Elf64_Nhdr header;
	while (size >= sizeof(header)) {
		std::memcpy(&header, notes, sizeof(header));
		const size_t text = rounded(sizeof(header) + header.n_namesz); // where the descriptor is
		const size_t whole = text + rounded(header.n_descsz);
		if (text > size || header.n_descsz > size - text) return false;
		if (header.n_type == NT_GNU_BUILD_ID && header.n_namesz == sizeof(owner) &&
		    std::memcmp(notes + sizeof(header), owner, sizeof(owner)) == 0) {
			image->build_id_size = std::min<xylUInt32>(header.n_descsz, sizeof(image->build_id));
			std::memcpy(image->build_id, notes + text, image->build_id_size);
			return true;
		}
		if (whole > size) return false;
		notes += whole;
		size -= whole;
	}
	return false;
}

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
		if (find_build_id(notes, size, segments[i].p_align, image)) break;
	}
	return image->size > 0;
}
