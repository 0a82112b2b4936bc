#include <morvantis/platform/system/linux/build_id.h>

#include <morvantis/platform/system/linux/byte_reader.h>

#include <elf.h>

namespace os {
namespace {

constexpr xylUInt64 page_size = 4096;

constexpr xylUInt64 round_up(xylUInt64 value, xylUInt64 step) {
	return (value + step - 1) / step * step;
}

} // namespace

Build_id_note find_build_id_note(const unsigned char* bytes, size_t size, size_t step) {
	Byte_reader notes{bytes, bytes + size};
	while (notes.left() > 0 && !notes.failed) {
		const auto note = notes.take<Elf64_Nhdr>();
		const Byte_reader name =
			notes.take_bytes(round_up(sizeof(note) + note.n_namesz, step) - sizeof(note));
		const Byte_reader id = notes.take_bytes(note.n_descsz);
		if (notes.failed) return {};
		if (note.n_type == NT_GNU_BUILD_ID && note.n_namesz == sizeof(ELF_NOTE_GNU) &&
		    std::memcmp(name.position, ELF_NOTE_GNU, sizeof(ELF_NOTE_GNU)) == 0) {
			return {id.position, id.left()};
		}
		notes.take_bytes(round_up(note.n_descsz, step) - note.n_descsz);
	}
	return {};
}

const unsigned char* find_build_id(const unsigned char* first_page) {
	Byte_reader page{first_page, first_page + page_size};
	const auto header = page.take<Elf64_Ehdr>();
	if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) return nullptr;
	page.position = first_page;
	page.take_bytes(header.e_phoff);

	xylUInt64 image_start = ~0ULL; // the address that the first page was linked for
	for (unsigned int i = 0; i < header.e_phnum && !page.failed; ++i) {
		const auto segment = page.take<Elf64_Phdr>();
		if (segment.p_type == PT_LOAD && image_start == ~0ULL) {
			image_start = segment.p_vaddr & ~(page_size - 1);
		}
		if (segment.p_type != PT_NOTE || segment.p_vaddr - image_start >= page_size) continue;
		Byte_reader notes{first_page, first_page + page_size};
		notes.take_bytes(segment.p_vaddr - image_start);
		if (notes.left() < segment.p_memsz) continue;
		notes = notes.take_bytes(segment.p_memsz);
		const Build_id_note id =
			find_build_id_note(notes.position, notes.left(), segment.p_align == 8 ? 8 : 4);
		if (id.size >= 8) return id.bytes;
	}
	return nullptr;
}

} // namespace os
