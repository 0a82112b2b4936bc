#include <morvantis/platform/system/linux/elf_symbols.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

#include <dwarf.h>
#include <elfutils/libdwelf.h>
#include <fcntl.h>
#include <gelf.h>
#include <unistd.h>

namespace {

constexpr xylUInt64 page_size = 4096;
constexpr int max_depth = 64;           // of nested namespaces and blocks; real ones have a dozen
constexpr size_t max_ranges = 1u << 22; // a damaged list may go on for ever
constexpr xylUInt64 longest_call = 7;   // bytes: opcode, address form, scale byte, 32-bit distance

// The length of an indirect call (FF /2) that begins with these bytes, without prefixes; 0: it is
// none.
xylUInt64 indirect_call_length(const unsigned char* code) {
	const int form = code[1];
	if (code[0] != 0xFF || (form & 0x38) != 0x10) return 0;
	const int mode = form >> 6;
	const int base = form & 7;
	if (mode == 3) return 2;
	const bool has_scale = base == 4;
	const bool has_long_distance =
		mode == 2 || (mode == 0 && (has_scale ? (code[2] & 7) == 5 : base == 5));
	const unsigned int distance = has_long_distance ? 4 : mode == 1 ? 1 : 0;
	return 2u + has_scale + distance;
}

template <typename Value>
auto first_above(const Plain_array<Value>& values, xylUInt64 address, xylUInt64 Value::* key) {
	return std::upper_bound(values.begin(), values.end(), address,
	                        [key](xylUInt64 a, const Value& value) { return a < value.*key; });
}

// Calls `visit` for each child of `parent` until it returns true. libdw follows the links between
// neighbours as they stand, so in a damaged file they may lead back: only the way forward counts.
template <typename Visit> void for_each_child(Dwarf_Die& parent, Visit visit) {
	Dwarf_Die child;
	if (dwarf_child(&parent, &child) != 0) return;
	for (;;) {
		if (visit(child)) return;
		const Dwarf_Off here = dwarf_dieoffset(&child);
		Dwarf_Die next;
		if (dwarf_siblingof(&child, &next) != 0 || dwarf_dieoffset(&next) <= here) return;
		child = next;
	}
}

xylUInt64 number_of(Dwarf_Die& die, unsigned int attribute) {
	Dwarf_Attribute value;
	Dwarf_Word number = 0;
	if (!dwarf_attr(&die, attribute, &value) || dwarf_formudata(&value, &number) != 0) return 0;
	return number;
}

// The outermost call inlined into `function` at `address`. False when the code is its own.
bool inlined_call_at(const Dwarf_Die& function, xylUInt64 address, Dwarf_Die& call) {
	Dwarf_Die scope = function;
	for (int depth = 0; depth < max_depth; ++depth) {
		bool is_inlined = false;
		bool is_inner = false;
		for_each_child(scope, [&](Dwarf_Die& child) {
			const int tag = dwarf_tag(&child);
			const bool is_scope = tag == DW_TAG_lexical_block || tag == DW_TAG_inlined_subroutine ||
			                      tag == DW_TAG_try_block || tag == DW_TAG_catch_block;
			if (!is_scope || dwarf_haspc(&child, address) != 1) return false;
			call = child;
			is_inner = true;
			is_inlined = tag == DW_TAG_inlined_subroutine;
			return true;
		});
		if (is_inlined) return true;
		if (!is_inner) return false;
		scope = call;
	}
	return false;
}

// The place where `call` was written. False when the file doesn't say.
bool place_of_call(Dwarf_Die& unit, Dwarf_Die& call, os::Elf_symbols::Place& place) {
	Dwarf_Files* files = nullptr;
	size_t count = 0;
	const xylUInt64 file = number_of(call, DW_AT_call_file);
	const xylUInt64 line = number_of(call, DW_AT_call_line);
	if (line == 0 || line > UINT32_MAX) return false;
	if (dwarf_getsrcfiles(&unit, &files, &count) != 0 || file >= count) return false;
	place.source = dwarf_filesrc(files, file, nullptr, nullptr);
	place.line = static_cast<xylUInt32>(line);
	return place.source != nullptr;
}

// The name that the debug information has for a function, the linker's one if there is one.
const char* name_of(Dwarf_Die& function) {
	Dwarf_Attribute name;
	const bool is_found = dwarf_attr_integrate(&function, DW_AT_linkage_name, &name) ||
	                      dwarf_attr_integrate(&function, DW_AT_name, &name);
	return is_found ? dwarf_formstring(&name) : nullptr;
}

} // namespace

bool os::Elf_symbols::open(const char* path) {
	elf_version(EV_CURRENT);
	file_ = ::open(path, O_RDONLY | O_CLOEXEC);
	if (file_ < 0) return false;
	elf_ = elf_begin(file_, ELF_C_READ_MMAP, nullptr);
	GElf_Ehdr header;
	bool is_loadable = elf_ && elf_kind(elf_) == ELF_K_ELF && gelf_getehdr(elf_, &header) &&
	                   header.e_ident[EI_CLASS] == ELFCLASS64 && header.e_machine == EM_X86_64;
	size_t segments = 0;
	if (is_loadable) elf_getphdrnum(elf_, &segments);
	GElf_Phdr segment{};
	for (size_t i = 0; i < segments && segment.p_type != PT_LOAD; ++i)
		if (!gelf_getphdr(elf_, static_cast<int>(i), &segment)) break;
	is_loadable = is_loadable && segment.p_type == PT_LOAD;
	if (!is_loadable) {
		close();
		return false;
	}
	first_page_ = segment.p_vaddr & ~(page_size - 1);
	read_sections();
	read_build_id();
	return true;
}

void os::Elf_symbols::close() {
	if (dwarf_) dwarf_end(dwarf_);
	if (elf_) elf_end(elf_);
	if (file_ >= 0) ::close(file_);
	dwarf_ = nullptr;
	elf_ = nullptr;
	file_ = -1;
}

void os::Elf_symbols::read_sections() {
	size_t names = 0;
	if (elf_getshdrstrndx(elf_, &names) != 0) return;
	for (Elf_Scn* section = nullptr; (section = elf_nextscn(elf_, section)) != nullptr;) {
		GElf_Shdr header;
		if (!gelf_getshdr(section, &header)) continue;
		const char* const name = elf_strptr(elf_, names, header.sh_name);
		if (name) add_section(section, name, header);
	}
}

void os::Elf_symbols::add_section(Elf_Scn* section, const char* name, const GElf_Shdr& header) {
	if (header.sh_type != SHT_NOBITS &&
	    (std::strcmp(name, ".debug_info") == 0 || std::strcmp(name, ".zdebug_info") == 0))
		has_debug_info_ = true;
	if (header.sh_type == SHT_SYMTAB && header.sh_size > 0) {
		symbol_table_ = section;
		symbol_names_ = header.sh_link;
	}
	if ((header.sh_flags & SHF_ALLOC) == 0 || (header.sh_flags & SHF_EXECINSTR) == 0) return;
	size_t file_size = 0;
	const char* const file = elf_rawfile(elf_, &file_size);
	const bool has_bytes = file && header.sh_type == SHT_PROGBITS &&
	                       header.sh_offset <= file_size &&
	                       header.sh_size <= file_size - header.sh_offset;
	code_.push(
		{header.sh_addr, header.sh_size,
	     has_bytes ? reinterpret_cast<const unsigned char*>(file) + header.sh_offset : nullptr});
}

void os::Elf_symbols::read_build_id() {
	const void* bytes = nullptr;
	const ssize_t size = dwelf_elf_gnu_build_id(elf_, &bytes);
	has_build_id_ = size > 0;
	if (has_build_id_)
		std::memcpy(build_id_, bytes, std::min(static_cast<size_t>(size), sizeof(build_id_)));
}

bool os::Elf_symbols::has_code() const {
	return std::any_of(code_.begin(), code_.end(),
	                   [](const Code_section& section) { return section.bytes != nullptr; });
}

const os::Elf_symbols::Code_section* os::Elf_symbols::code_section_at(xylUInt64 address) const {
	for (const Code_section& section : code_)
		if (address - section.address < section.size) return &section;
	return nullptr;
}

// Whether a call instruction ends right before `address`. Bytes can't be decoded backwards with
// certainty, but what looks like a call of this image's own code hardly ever is something else.
os::Elf_symbols::Call_before os::Elf_symbols::call_before(xylUInt64 address) const {
	const Code_section* const section = code_section_at(address - 1);
	if (!section) return Call_before::no;
	if (!section->bytes) return Call_before::unknown;
	const xylUInt64 end = address - section->address; // bytes of the section before the place
	const unsigned char* const behind = section->bytes + end;
	if (end >= 5 && behind[-5] == 0xE8) {
		xylInt32 distance;
		std::memcpy(&distance, behind - 4, sizeof(distance));
		if (code_section_at(address + static_cast<xylUInt64>(xylInt64{distance})))
			return Call_before::yes;
	}
	for (xylUInt64 length = 2; length <= std::min(end, longest_call); ++length) {
		unsigned char call[3] = {}; // a short one ends the section, perhaps
		std::memcpy(call, behind - length, std::min<xylUInt64>(length, sizeof(call)));
		if (indirect_call_length(call) == length) return Call_before::yes;
	}
	return Call_before::no;
}

void os::Elf_symbols::read_function_symbols() {
	functions_are_read_ = true;
	Elf_Data* const table = symbol_table_ ? elf_getdata(symbol_table_, nullptr) : nullptr;
	if (!table) return;
	const size_t count = std::min<size_t>(table->d_size / sizeof(Elf64_Sym), INT32_MAX);
	for (size_t i = 0; i < count; ++i) {
		GElf_Sym symbol;
		if (!gelf_getsym(table, static_cast<int>(i), &symbol)) break;
		const int type = GELF_ST_TYPE(symbol.st_info);
		if ((type != STT_FUNC && type != STT_GNU_IFUNC) || symbol.st_shndx == SHN_UNDEF) continue;
		static constexpr xylUInt32 ranks[] = {2, 0, 1}; // local, global, weak
		const unsigned int binding = GELF_ST_BIND(symbol.st_info);
		functions_.push({symbol.st_value, symbol.st_size, symbol.st_name,
		                 binding < std::size(ranks) ? ranks[binding] : 3});
	}
	std::sort(functions_.begin(), functions_.end(),
	          [](const Function_symbol& a, const Function_symbol& b) {
				  if (a.address != b.address) return a.address < b.address;
				  return a.rank != b.rank ? a.rank < b.rank : a.name < b.name;
			  });
}

// The nearest symbol at or below `address`. One without a size, as assembly code leaves them,
// reaches to the next.
const os::Elf_symbols::Function_symbol*
os::Elf_symbols::function_symbol_at(xylUInt64 address) const {
	const Function_symbol* found = first_above(functions_, address, &Function_symbol::address);
	if (found == functions_.begin()) return nullptr;
	--found;
	while (found != functions_.begin() && found[-1].address == found->address) --found;
	const bool is_inside = found->size == 0
	                           ? code_section_at(found->address) == code_section_at(address)
	                           : address - found->address < found->size;
	return is_inside ? found : nullptr;
}

Dwarf* os::Elf_symbols::dwarf() {
	if (dwarf_is_tried_ || !has_debug_info_) return dwarf_;
	dwarf_is_tried_ = true;
	dwarf_ = dwarf_begin_elf(elf_, DWARF_C_READ, nullptr);
	size_t count = 0;
	if (dwarf_ && dwarf_getaranges(dwarf_, &address_ranges_, &count) != 0)
		address_ranges_ = nullptr;
	return dwarf_;
}

// The unit that compiled the code at `address`. Where the compiler left a table of address ranges,
// it is asked first, which spares the reading of all units; what it doesn't have (not every
// compiler writes its part) is looked up in the ranges of the units themselves.
os::Elf_symbols::Unit* os::Elf_symbols::unit_at(xylUInt64 address) {
	if (!dwarf()) return nullptr;
	Dwarf_Arange* const range =
		address_ranges_ ? dwarf_getarange_addr(address_ranges_, address) : nullptr;
	Dwarf_Off die = 0;
	if (range && dwarf_getarangeinfo(range, nullptr, nullptr, &die) == 0) return unit_of(die);
	if (!units_are_read_) read_units();
	const Range* found = first_above(unit_ranges_, address, &Range::low);
	if (found == unit_ranges_.begin()) return nullptr;
	--found;
	return address < found->high ? unit_of(found->owner) : nullptr;
}

os::Elf_symbols::Unit* os::Elf_symbols::unit_of(Dwarf_Off die) {
	for (Unit& unit : units_)
		if (unit.die == die) return &unit;
	return units_.push({die, 0, 0, false}) ? units_.end() - 1 : nullptr;
}

void os::Elf_symbols::read_units() {
	units_are_read_ = true;
	Dwarf_CU* unit = nullptr;
	Dwarf_Die die;
	xylUInt8 type = 0;
	while (dwarf_get_units(dwarf_, unit, &unit, nullptr, &type, &die, nullptr) == 0)
		if (type == DW_UT_compile || type == DW_UT_skeleton)
			add_ranges(die, dwarf_dieoffset(&die), unit_ranges_);
	std::sort(unit_ranges_.begin(), unit_ranges_.end(),
	          [](const Range& a, const Range& b) { return a.low < b.low; });
}

// Appends where `die` has code. Functions that the linker dropped keep a range at 0 or thereabouts,
// which is no code.
void os::Elf_symbols::add_ranges(Dwarf_Die& die, xylUInt64 owner,
                                 Plain_array<Range>& ranges) const {
	Dwarf_Addr base = 0;
	Dwarf_Addr low = 0;
	Dwarf_Addr high = 0;
	for (ptrdiff_t next = 0; (next = dwarf_ranges(&die, next, &base, &low, &high)) > 0;) {
		if (low >= high || !code_section_at(low)) continue;
		if (ranges.size() >= max_ranges || !ranges.push({low, high, owner})) return;
	}
}

// Collects the functions with code of their own below `parent`, a unit or namespace.
void os::Elf_symbols::walk_functions(Dwarf_Die& parent, int depth) {
	for_each_child(parent, [&](Dwarf_Die& child) {
		const int tag = dwarf_tag(&child);
		if (tag == DW_TAG_subprogram) add_ranges(child, dwarf_dieoffset(&child), unit_functions_);
		if ((tag == DW_TAG_namespace || tag == DW_TAG_module) && depth < max_depth)
			walk_functions(child, depth + 1);
		return unit_functions_.size() >= max_ranges;
	});
}

bool os::Elf_symbols::function_at(Unit& unit, xylUInt64 address, Dwarf_Die& function) {
	if (!unit.is_walked) {
		unit.is_walked = true;
		unit.functions_begin = static_cast<xylUInt32>(unit_functions_.size());
		Dwarf_Die die;
		if (dwarf_offdie(dwarf_, unit.die, &die)) walk_functions(die, 0);
		unit.functions_end = static_cast<xylUInt32>(unit_functions_.size());
		std::sort(unit_functions_.begin() + unit.functions_begin, unit_functions_.end(),
		          [](const Range& a, const Range& b) { return a.low < b.low; });
	}
	const Range* const first = unit_functions_.begin() + unit.functions_begin;
	const Range* const last = unit_functions_.begin() + unit.functions_end;
	const Range* found = std::upper_bound(
		first, last, address, [](xylUInt64 a, const Range& range) { return a < range.low; });
	if (found == first) return false;
	--found;
	return address < found->high && dwarf_offdie(dwarf_, found->owner, &function);
}

void os::Elf_symbols::add_line(xylUInt64 address, Place& place) {
	Unit* const unit = unit_at(address);
	Dwarf_Die unit_die;
	if (!unit || !dwarf_offdie(dwarf_, unit->die, &unit_die)) return;
	Dwarf_Die function;
	if (function_at(*unit, address, function)) {
		if (!place.function) place.function = name_of(function);
		Dwarf_Die call;
		if (inlined_call_at(function, address, call) && place_of_call(unit_die, call, place))
			return;
	}
	Dwarf_Line* const row = dwarf_getsrc_die(&unit_die, address);
	int line = 0;
	if (!row || dwarf_lineno(row, &line) != 0 || line <= 0) return;
	place.source = dwarf_linesrc(row, nullptr, nullptr);
	place.line = place.source ? static_cast<xylUInt32>(line) : 0;
}

os::Elf_symbols::Place os::Elf_symbols::look_up(xylUInt32 offset, const Elf_symbols* image) {
	Place place{};
	if (!functions_are_read_) read_function_symbols();
	const xylUInt64 address = first_page_ + offset;
	Call_before call = call_before(address);
	if (call == Call_before::unknown && image)
		call = image->call_before(image->first_page_ + offset);
	const Function_symbol* symbol = function_symbol_at(address);
	const bool is_return = call == Call_before::yes || (call == Call_before::unknown &&
	                                                    !(symbol && symbol->address == address));
	const xylUInt64 meant = is_return ? address - 1 : address;
	if (is_return) symbol = function_symbol_at(meant);
	if (symbol) {
		place.function = elf_strptr(elf_, symbol_names_, symbol->name);
		place.distance = address - symbol->address;
	}
	if (code_section_at(meant)) add_line(meant, place);
	return place;
}
