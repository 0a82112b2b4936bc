#include <morvantis/diagnostics/image_identity.h>

#include <morvantis/diagnostics/zubcallstack_module.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr xylUInt32 rsds_signature = 0x53445352; // "RSDS"

// Memory of an image, read only where that is allowed.
class Image_bytes {
public:
	Image_bytes(size_t base, Readable_bytes readable) : base_(base), readable_(readable) {}

	// The bytes from `offset` on, or null when less than `size` of them may be read. They may lie
	// in several pieces: a page of a section that was written to is a piece of its own.
	const char* at(xylUInt64 offset, xylUInt64 size) {
		const size_t address = base_ + static_cast<size_t>(offset);
		if (address < base_) return nullptr;
		if (address < begin_ || address - begin_ >= length_) {
			begin_ = address;
			length_ = readable_(reinterpret_cast<const void*>(address));
		}
		while (size > length_ - (address - begin_)) {
			const size_t more = readable_(reinterpret_cast<const void*>(begin_ + length_));
			if (more == 0) return nullptr;
			length_ += more;
		}
		return reinterpret_cast<const char*>(address);
	}

	template <typename T> bool read(xylUInt64 offset, T& value) {
		const char* bytes = at(offset, sizeof(T));
		if (!bytes) return false;
		std::memcpy(&value, bytes, sizeof(T));
		return true;
	}

	// The text at `offset`, up to its terminator or the end of what may be read.
	xylVarString text(xylUInt64 offset) {
		const char* const begin = at(offset, 1);
		xylUInt64 length = 0;
		for (const char* c = begin; c && *c; c = at(offset + length, 1)) ++length;
		return {begin, static_cast<int>(length)};
	}

private:
	size_t base_;
	Readable_bytes readable_;
	size_t begin_ = 0, length_ = 0; // what was asked about last, and may be read
};

// --- Images with "MZ"

constexpr xylUInt64 nt_offset_place = 60; // in the image
// In the NT headers:
constexpr xylUInt64 time_date_stamp_place = 8;
constexpr xylUInt64 characteristics_place = 22;
constexpr xylUInt64 image_size_place = 80;
constexpr xylUInt64 debug_directory_place = 184; // entry 6: address and size
constexpr xylUInt16 debug_stripped_flag = 0x0200;

struct Debug_entry {
	xylUInt32 characteristics, time_date_stamp;
	xylUInt16 major_version, minor_version;
	xylUInt32 type, data_size, data_address, data_file_offset;
};
static_assert(sizeof(Debug_entry) == 28);
constexpr xylUInt32 codeview_type = 2;

struct Codeview_record {
	xylUInt32 signature;
	xylGuid_type guid;
	xylUInt32 age; // the name follows
};
static_assert(sizeof(Codeview_record) == 24);

bool read_codeview_record(Image_bytes& image, xylUInt32 place, zubCallstack_module& module) {
	Codeview_record record;
	if (!image.read(place, record.signature) || record.signature != rsds_signature) return false;
	if (!image.read(place, record)) return false;
	module.pdb_age = record.age;
	module.pdb_name = image.text(place + sizeof(record));
	module.pdb_signature = record.signature;
	module.pdb_guid = record.guid;
	return true;
}

bool read_windows_image(Image_bytes& image, zubCallstack_module& module) {
	xylUInt32 nt, directory[2];
	xylUInt16 characteristics;
	if (!image.read(nt_offset_place, nt)) return false;
	if (!image.read(nt + image_size_place, module.image_size)) return false;
	if (!image.read(nt + time_date_stamp_place, module.time_date_stamp)) return false;
	if (!image.read(nt + characteristics_place, characteristics)) return false;
	module.is_stripped = (characteristics & debug_stripped_flag) != 0;
	if (!image.read(nt + debug_directory_place, directory)) return false;
	const auto [address, size] = directory;
	if (size < sizeof(Debug_entry)) return false;
	for (xylUInt32 i = 0; i < size / sizeof(Debug_entry); ++i) {
		Debug_entry entry;
		if (!image.read(address + xylUInt64{i} * sizeof(Debug_entry), entry)) return false;
		if (entry.data_size == 0 || entry.type != codeview_type) continue;
		if (!read_codeview_record(image, entry.data_address, module)) return false;
	}
	return true;
}

// --- Images with ELF's magic, of 64 bits and little-endian

struct Elf_segment {
	xylUInt32 type, flags;
	xylUInt64 file_offset, address, physical_address, file_size, memory_size, alignment;
};
static_assert(sizeof(Elf_segment) == 56);
constexpr xylUInt32 loaded_segment = 1, note_segment = 4;
constexpr xylUInt64 segment_table_place = 32, segment_size_place = 54, segment_count_place = 56;
constexpr xylUInt64 page_size = 4096;

struct Elf_note {
	xylUInt32 name_size, content_size, type; // name and content follow
};
constexpr xylUInt32 build_id_type = 3;
constexpr char build_id_owner[4] = "GNU";

xylUInt64 round_up(xylUInt64 value, xylUInt64 step) { return (value + step - 1) & ~(step - 1); }

void set_build_id(const char* id, size_t size, zubCallstack_module& module) {
	module.pdb_guid = {};
	std::memcpy(&module.pdb_guid, id, std::min(size, sizeof(module.pdb_guid)));
	module.pdb_signature = rsds_signature;
	module.pdb_age = 0;
	module.pdb_name = module.name;
}

// Walks the notes of one segment that begins `place` bytes behind the image's base.
bool read_notes(Image_bytes& image, xylUInt64 place, const Elf_segment& segment,
                zubCallstack_module& module) {
	const xylUInt64 step = segment.alignment == 8 ? 8 : 4;
	Elf_note note;
	for (xylUInt64 at = 0; at < segment.memory_size;) {
		if (!image.read(place + at, note)) return false;
		const xylUInt64 name = at + sizeof(note);
		const xylUInt64 content = round_up(name + note.name_size, step);
		if (note.type == build_id_type && note.name_size == sizeof(build_id_owner)) {
			const char* owner = image.at(place + name, sizeof(build_id_owner));
			const char* id = image.at(place + content, note.content_size);
			if (!owner || !id) return false;
			if (std::memcmp(owner, build_id_owner, sizeof(build_id_owner)) == 0 &&
			    note.content_size > 0) {
				set_build_id(id, note.content_size, module);
				return true;
			}
		}
		at = round_up(content + note.content_size, step);
	}
	return false;
}

bool read_elf_image(Image_bytes& image, zubCallstack_module& module) {
	constexpr char class_and_order[] = {2, 1};
	const char* ident = image.at(4, sizeof(class_and_order));
	if (!ident || std::memcmp(ident, class_and_order, sizeof(class_and_order)) != 0) return false;
	xylUInt64 table;
	xylUInt16 size, count;
	if (!image.read(segment_table_place, table) || !image.read(segment_size_place, size) ||
	    !image.read(segment_count_place, count) || size < sizeof(Elf_segment)) {
		return false;
	}
	const auto segment_no = [&](unsigned int no, Elf_segment& segment) {
		return image.read(table + xylUInt64{no} * size, segment);
	};

	// Addresses count from the page of the first loaded segment, which is at the base.
	bool has_first = false;
	xylUInt64 first = 0, end = 0;
	Elf_segment segment;
	for (unsigned int i = 0; i < count; ++i) {
		if (!segment_no(i, segment)) return false;
		if (segment.type != loaded_segment) continue;
		if (!has_first) first = segment.address & ~(page_size - 1);
		has_first = true;
		end = round_up(segment.address + segment.memory_size, page_size);
	}
	if (!has_first) return false;
	module.image_size = static_cast<xylUInt32>(end - first);
	for (unsigned int i = 0; i < count; ++i) {
		if (!segment_no(i, segment) || segment.type != note_segment) continue;
		if (read_notes(image, segment.address - first, segment, module)) return true;
	}
	return false;
}

} // namespace

bool read_image_identity(zubCallstack_module& module, Readable_bytes readable) {
	Image_bytes image(module.base_address, readable);
	constexpr char windows_magic[] = {'M', 'Z'};
	constexpr char elf_magic[] = {0x7F, 'E', 'L', 'F'};
	const char* bytes = image.at(0, sizeof(windows_magic));
	if (bytes && std::memcmp(bytes, windows_magic, sizeof(windows_magic)) == 0) {
		return read_windows_image(image, module);
	}
	bytes = image.at(0, sizeof(elf_magic));
	if (bytes && std::memcmp(bytes, elf_magic, sizeof(elf_magic)) == 0) {
		return read_elf_image(image, module);
	}
	return false;
}
