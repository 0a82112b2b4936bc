#include <morvantis/platform/system/linux/elf_symbols.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>
#include <string_view>

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

// Moves on to the next child of the same parent. False at the end; libdw follows the links between
// neighbours as they stand, so in a damaged file they may lead back, and that is an end too.
bool step_on(Dwarf_Die& child) {
	const Dwarf_Off here = dwarf_dieoffset(&child);
	Dwarf_Die next;
	if (dwarf_siblingof(&child, &next) != 0 || dwarf_dieoffset(&next) <= here) return false;
	child = next;
	return true;
}

// Calls `visit` for each child of `parent` until it returns true.
template <typename Visit> void for_each_child(Dwarf_Die& parent, Visit visit) {
	Dwarf_Die child;
	if (dwarf_child(&parent, &child) != 0) return;
	while (!visit(child) && step_on(child));
}

bool is_namespace(int tag) { return tag == DW_TAG_namespace || tag == DW_TAG_module; }

// Searches a .debug_aranges section for the unit with the code at `address`. The table is a list of
// sets, one a unit, of 64-bit (start, length) pairs behind a header of 12 bytes and its padding
// (DWARF 5, section 6.1.2). libdw's own reader sorts all of it first, which takes a hundred times
// as long as one look at each pair. Pairs that begin outside all code are passed over: functions
// that the linker dropped keep theirs, at 0, and a large one would cover the image's first code.
template <typename Is_code>
bool find_in_unit_table(std::string_view table, xylUInt64 address, Is_code is_code,
                        Dwarf_Off& unit) {
	struct Pair {
		xylUInt64 start, length;
	};
	constexpr size_t header_size = 12;
	while (table.size() >= header_size) {
		xylUInt32 length;
		xylUInt16 version;
		xylUInt32 offset;
		std::memcpy(&length, table.data(), sizeof(length));
		std::memcpy(&version, table.data() + 4, sizeof(version));
		std::memcpy(&offset, table.data() + 6, sizeof(offset));
		const size_t set_size = std::min<size_t>(length + sizeof(length), table.size());
		const bool is_readable = version == 2 && table[10] == sizeof(xylUInt64) && table[11] == 0;
		for (size_t at = sizeof(Pair); is_readable && at + sizeof(Pair) <= set_size;
		     at += sizeof(Pair)) {
			Pair pair;
			std::memcpy(&pair, table.data() + at, sizeof(pair));
			if (address - pair.start >= pair.length || !is_code(pair.start)) continue;
			unit = offset;
			return true;
		}
		table.remove_prefix(set_size);
	}
	return false;
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
	while (Unit* const unit = units_) {
		units_ = unit->earlier;
		unit->~Unit();
		std::free(unit);
	}
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
	if (std::strcmp(name, ".debug_aranges") == 0) unit_table_ = section;
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

const os::Elf_symbols::Range* os::Elf_symbols::Range_index::find(xylUInt64 address) const {
	if (!is_complete) return find_from(0, address);
	const Range* const behind = first_above(ranges, address, &Range::low);
	return behind != ranges.begin() && address < behind[-1].high ? behind - 1 : nullptr;
}

const os::Elf_symbols::Range* os::Elf_symbols::Range_index::find_from(size_t first,
                                                                      xylUInt64 address) const {
	const Range* const found =
		std::find_if(ranges.begin() + first, ranges.end(), [address](const Range& range) {
			return address - range.low < range.high - range.low;
		});
	return found != ranges.end() ? found : nullptr;
}

void os::Elf_symbols::Range_index::complete() {
	is_complete = true;
	std::sort(ranges.begin(), ranges.end(),
	          [](const Range& a, const Range& b) { return a.low < b.low; });
}

Dwarf* os::Elf_symbols::dwarf() {
	if (dwarf_is_tried_ || !has_debug_info_) return dwarf_;
	dwarf_is_tried_ = true;
	dwarf_ = dwarf_begin_elf(elf_, DWARF_C_READ, nullptr);
	return dwarf_;
}

// The unit that compiled the code at `address`. The table of address ranges is asked first, where
// there is one, since it is quickly gone through; what it doesn't have (not every compiler writes
// its part) is looked up in the ranges of the units themselves.
os::Elf_symbols::Unit* os::Elf_symbols::unit_at(xylUInt64 address) {
	if (!dwarf()) return nullptr;
	Dwarf_Off die = 0;
	if (unit_in_table(address, die)) return unit_of(die);
	const Range* found = unit_ranges_.find(address);
	if (!found && !unit_ranges_.is_complete) found = read_to_unit(address);
	return found ? unit_of(found->owner) : nullptr;
}

bool os::Elf_symbols::unit_in_table(xylUInt64 address, Dwarf_Off& die) {
	const Elf_Data* const table = unit_table_ ? elf_getdata(unit_table_, nullptr) : nullptr;
	if (!table || !table->d_buf) return false;
	const std::string_view bytes(static_cast<const char*>(table->d_buf), table->d_size);
	Dwarf_Off unit = 0;
	const auto is_code = [this](xylUInt64 start) { return code_section_at(start) != nullptr; };
	if (!find_in_unit_table(bytes, address, is_code, unit)) return false;
	Dwarf_Off next = 0;
	size_t header = 0;
	if (dwarf_nextcu(dwarf_, unit, &next, &header, nullptr, nullptr, nullptr) != 0) return false;
	die = unit + header;
	return true;
}

os::Elf_symbols::Unit* os::Elf_symbols::unit_of(Dwarf_Off die) {
	for (Unit* unit = units_; unit; unit = unit->earlier)
		if (unit->die == die) return unit;
	void* const memory = std::malloc(sizeof(Unit));
	if (memory) units_ = new (memory) Unit(die, units_);
	return memory ? units_ : nullptr;
}

// Goes on reading units until the one with the code at `address` is met.
const os::Elf_symbols::Range* os::Elf_symbols::read_to_unit(xylUInt64 address) {
	Dwarf_Die die;
	xylUInt8 type = 0;
	while (dwarf_get_units(dwarf_, last_unit_, &last_unit_, nullptr, &type, &die, nullptr) == 0) {
		const size_t known = unit_ranges_.ranges.size();
		if (type == DW_UT_compile || type == DW_UT_skeleton) add_ranges(die, unit_ranges_);
		if (const Range* const found = unit_ranges_.find_from(known, address)) return found;
	}
	unit_ranges_.complete();
	return unit_ranges_.find(address);
}

// Appends where `die` has code. Functions that the linker dropped keep a range at 0 or thereabouts,
// which is no code.
void os::Elf_symbols::add_ranges(Dwarf_Die& die, Range_index& index) const {
	Dwarf_Addr base = 0;
	Dwarf_Addr low = 0;
	Dwarf_Addr high = 0;
	for (ptrdiff_t next = 0; (next = dwarf_ranges(&die, next, &base, &low, &high)) > 0;) {
		if (low >= high || !code_section_at(low)) continue;
		if (index.ranges.size() >= max_ranges ||
		    !index.ranges.push({low, high, dwarf_dieoffset(&die)}))
			return;
	}
}

void os::Elf_symbols::add_function(Dwarf_Die& die, Unit& unit) const {
	// Most have no code: declarations, and what was inlined everywhere.
	if (dwarf_hasattr(&die, DW_AT_low_pc) || dwarf_hasattr(&die, DW_AT_ranges))
		add_ranges(die, unit.functions);
}

void os::Elf_symbols::walk_namespace(Dwarf_Die& parent, Unit& unit, int depth) const {
	for_each_child(parent, [&](Dwarf_Die& child) {
		const int tag = dwarf_tag(&child);
		if (tag == DW_TAG_subprogram) add_function(child, unit);
		if (is_namespace(tag) && depth < max_depth) walk_namespace(child, unit, depth + 1);
		return unit.functions.ranges.size() >= max_ranges;
	});
}

// Goes on with the walk through a unit until the function at `address` is met. GCC puts all
// functions with code into the unit itself and so do others with most, so namespaces come last.
const os::Elf_symbols::Range* os::Elf_symbols::walk_to_function(Unit& unit,
                                                                xylUInt64 address) const {
	Dwarf_Die die;
	if (!unit.is_started && dwarf_offdie(dwarf_, unit.die, &die))
		unit.has_next = dwarf_child(&die, &unit.next) == 0;
	unit.is_started = true;
	while (unit.has_next && unit.functions.ranges.size() < max_ranges) {
		const int tag = dwarf_tag(&unit.next);
		const size_t known = unit.functions.ranges.size();
		if (tag == DW_TAG_subprogram) add_function(unit.next, unit);
		if (is_namespace(tag)) unit.namespaces.push(dwarf_dieoffset(&unit.next));
		unit.has_next = step_on(unit.next);
		if (const Range* const found = unit.functions.find_from(known, address)) return found;
	}
	for (const Dwarf_Off offset : unit.namespaces)
		if (dwarf_offdie(dwarf_, offset, &die)) walk_namespace(die, unit, 0);
	unit.functions.complete();
	return unit.functions.find(address);
}

bool os::Elf_symbols::function_at(Unit& unit, xylUInt64 address, Dwarf_Die& function) const {
	const Range* found = unit.functions.find(address);
	if (!found && !unit.functions.is_complete) found = walk_to_function(unit, address);
	return found && dwarf_offdie(dwarf_, found->owner, &function);
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
