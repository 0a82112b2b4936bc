// What one ELF file tells about places in an image: functions, source files and lines.
#pragma once

#include <morvantis/core/xyltypes.h>
#include <morvantis/platform/system/linux/plain_array.h>

#include <elfutils/libdw.h>

namespace os {

// An image or a separate symbol file, opened by elfutils' libelf and libdw.
//
// Nothing is read ahead: opening takes the section headers and the build id, and the first question
// in a compilation unit reads that unit's lines and functions. What has been read is kept until the
// object ends, so later questions cost a few binary searches.
//
// Places are offsets from where the image's first page is loaded, as a raw frame holds them. A
// place right behind a call instruction is where that call returns to, and stands for the call: its
// function and line are those of the byte before it, since what follows in memory may be the next
// statement or, behind a call that never returns, the next function.
//
// The bytes come from outside and may be damaged in any way: answers may then be missing or wrong.
//
// Threads: one at a time per object, which is libdw's rule for its handles.
class Elf_symbols {
public:
	Elf_symbols() = default;
	~Elf_symbols() { close(); }
	Elf_symbols(const Elf_symbols&) = delete;
	Elf_symbols& operator=(const Elf_symbols&) = delete;

	// Opens `path`, once per object. False, with nothing opened, unless it is an ELF file for this
	// processor with a loadable segment.
	bool open(const char* path);

	// The first 16 bytes of the build id, a shorter one filled up with zeros; null when the file
	// has none. What it points to is the object's.
	const unsigned char* build_id() const { return has_build_id_ ? build_id_ : nullptr; }
	// Whether the debug information itself is there; a stripped image has none, and an image whose
	// debug information was moved out only an empty shell of the section.
	bool has_debug_info() const { return has_debug_info_; }
	// Whether the full symbol table is there. The table of the dynamic linker doesn't count:
	// between the few functions in it, every other one would go by a wrong name.
	bool has_symbol_table() const { return symbol_table_ != nullptr; }

	// Whether the machine code is there too; a separate symbol file leaves it out.
	bool has_code() const;

	// What is at a place. Texts are the file's own and live as long as the object.
	struct Place {
		const char* function; // the linker's or source's name; null: not known
		xylUInt64 distance;   // of the place from the function's first byte
		const char* source;   // with its folder; null: not known
		xylUInt32 line;       // 0: not known
	};

	// Function and line at `offset`. The function is the one whose machine code holds the place,
	// and where code of another was inlined there, the line is that of the inlined call in it.
	//
	// `image`  the image itself, for its code, where this file may have none; null: nobody has it,
	//          and then each place but a function's first byte is taken for a return address.
	Place look_up(xylUInt32 offset, const Elf_symbols* image);

private:
	struct Code_section {
		xylUInt64 address, size;
		const unsigned char* bytes; // null in a separate symbol file
	};
	struct Function_symbol {
		xylUInt64 address, size;
		xylUInt32 name; // offset in the string table
		xylUInt32 rank; // of several at one address, the lowest is shown
	};
	struct Range {
		xylUInt64 low, high;
		xylUInt64 owner; // offset of a unit or function in .debug_info
	};
	// Ranges that are read only as far as it takes to find what is asked for.
	struct Range_index {
		const Range* find(xylUInt64 address) const;
		// The same among those from the one with number `first` on, before all are there.
		const Range* find_from(size_t first, xylUInt64 address) const;
		void complete(); // no more will come: sorts them

		Plain_array<Range> ranges;
		bool is_complete = false;
	};
	// A compilation unit of which something was asked.
	struct Unit {
		Unit(Dwarf_Off offset, Unit* before) : die(offset), earlier(before) {}

		Dwarf_Off die;
		Unit* earlier; // the one that was asked before it first was; null for the first of all
		Range_index functions;
		Plain_array<Dwarf_Off> namespaces; // met so far
		Dwarf_Die next;                    // where the walk goes on
		bool has_next = false, is_started = false;
	};

	void close();
	void read_sections();
	void add_section(Elf_Scn* section, const char* name, const GElf_Shdr& header);
	void read_build_id();
	const Code_section* code_section_at(xylUInt64 address) const;
	enum class Call_before { no, yes, unknown };
	Call_before call_before(xylUInt64 address) const;

	void read_function_symbols();
	const Function_symbol* function_symbol_at(xylUInt64 address) const;

	Dwarf* dwarf();
	Unit* unit_at(xylUInt64 address);
	Unit* unit_of(Dwarf_Off die);
	bool unit_in_table(xylUInt64 address, Dwarf_Off& die);
	const Range* read_to_unit(xylUInt64 address);
	void add_ranges(Dwarf_Die& die, Range_index& index) const;
	void add_function(Dwarf_Die& die, Unit& unit) const;
	void walk_namespace(Dwarf_Die& parent, Unit& unit, int depth) const;
	const Range* walk_to_function(Unit& unit, xylUInt64 address) const;
	bool function_at(Unit& unit, xylUInt64 address, Dwarf_Die& function) const;
	void add_line(xylUInt64 address, Place& place);

	int file_ = -1;
	Elf* elf_ = nullptr;
	xylUInt64 first_page_ = 0; // address that the file gives to what is loaded at offset 0
	unsigned char build_id_[16] = {};
	bool has_build_id_ = false;
	bool has_debug_info_ = false;
	Plain_array<Code_section> code_;

	Elf_Scn* symbol_table_ = nullptr;
	size_t symbol_names_ = 0; // its string table
	bool functions_are_read_ = false;
	Plain_array<Function_symbol> functions_; // sorted by address

	Dwarf* dwarf_ = nullptr;
	bool dwarf_is_tried_ = false;
	Elf_Scn* unit_table_ = nullptr; // .debug_aranges, where the compiler wrote it
	Range_index unit_ranges_;
	Dwarf_CU* last_unit_ = nullptr; // read so far
	Unit* units_ = nullptr;         // those that were asked something, the latest first; owned
};

} // namespace os
