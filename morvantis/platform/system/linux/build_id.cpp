#include <morvantis/platform/system/linux/build_id.h>

#include <morvantis/platform/system/linux/byte_reader.h>

#include <algorithm>

#include <elf.h>

namespace os {
namespace {

constexpr xylUInt64 page_size = 4096;

constexpr xylUInt64 round_up(xylUInt64 value, xylUInt64 step) {
	return (value + step - 1) / step * step;
}

// Takes the next segment of a type off the table. False when there is none.
bool take_segment(Byte_reader& table, Elf64_Word type, Elf64_Phdr& segment) {
	while (table.left() >= sizeof(segment)) {
		segment = table.take<Elf64_Phdr>();
		if (segment.p_type == type) return true;
	}
	return false;
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
	const Byte_reader page{first_page, first_page + page_size};
	Byte_reader rest = page;
	const auto header = rest.take<Elf64_Ehdr>();
	if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) return nullptr;
	rest = page;
	rest.take_bytes(header.e_phoff);
	const xylUInt64 table_size = header.e_phnum * xylUInt64{sizeof(Elf64_Phdr)};
	const Byte_reader table = rest.take_bytes(std::min<xylUInt64>(table_size, rest.left()));

	// Addresses count from the first loaded segment, where the first page comes from.
	Elf64_Phdr segment;
	Byte_reader segments = table;
	if (!take_segment(segments, PT_LOAD, segment)) return nullptr;
	const xylUInt64 image_start = segment.p_vaddr & ~(page_size - 1);
	for (segments = table; take_segment(segments, PT_NOTE, segment);) {
		Byte_reader notes = page;
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
