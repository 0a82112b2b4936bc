#include <morvantis/platform/system/linux/frame_table.h>

#include <morvantis/platform/system/linux/byte_reader.h>

#include <cstring>

namespace os {
namespace {

xylUInt64 address_of(const unsigned char* place) { return reinterpret_cast<xylUInt64>(place); }

// DW_EH_PE_*: what form a pointer has, and what it counts from.
enum Pointer_encoding : unsigned char {
	pointer_form = 0x0F,
	pointer_base = 0x70,
	pointer_is_indirect = 0x80,
	from_zero = 0x00,
	from_itself = 0x10,
	from_index = 0x30,
	aligned = 0x50, // no compiler's choice for this processor
	omitted = 0xFF
};

// A pointer's number, without its base.
xylUInt64 take_plain(Byte_reader& reader, unsigned char encoding) {
	const auto extended = [](xylInt64 value) { return static_cast<xylUInt64>(value); };
	if ((encoding & pointer_base) == aligned) reader.fail();
	switch (encoding & pointer_form) {
	case 0x00: // as wide as an address
	case 0x04:
	case 0x0C:
		return reader.take<xylUInt64>();
	case 0x01:
		return reader.take_uleb();
	case 0x02:
		return reader.take<xylUInt16>();
	case 0x03:
		return reader.take<xylUInt32>();
	case 0x09:
		return reader.take_sleb();
	case 0x0A:
		return extended(reader.take<xylInt16>());
	case 0x0B:
		return extended(reader.take<xylInt32>());
	default:
		reader.fail();
		return 0;
	}
}

// A pointer of the forms that code addresses have; the others fail.
xylUInt64 take_pointer(Byte_reader& reader, unsigned char encoding, const Frame_table& table) {
	const xylUInt64 here = address_of(reader.position);
	const xylUInt64 value = take_plain(reader, encoding);
	switch (encoding & (pointer_base | pointer_is_indirect)) {
	case from_zero:
		return value;
	case from_itself:
		return here + value;
	case from_index:
		return address_of(table.index) + value;
	default:
		reader.fail();
		return 0;
	}
}

Byte_reader reader_at(const Frame_table& table, const unsigned char* place) {
	if (place < table.begin || place > table.end) return {table.end, table.end, true};
	return {place, table.end};
}

// The bytes of the entry that begins with a length; none for the end mark.
Byte_reader take_entry(Byte_reader& reader) {
	xylUInt64 length = reader.take<xylUInt32>();
	if (length == 0xFFFFFFFF) length = reader.take<xylUInt64>();
	return reader.take_bytes(length);
}

// What a common information entry (CIE) tells about the functions that refer to it.
struct Common_entry {
	xylUInt64 code_factor = 0;
	xylUInt64 data_factor = 0; // a negative one is a large one
	unsigned char pointer_encoding = from_zero;
	bool has_augmentation_data = false;
	bool is_signal_frame = false;
	Byte_reader instructions = {};
};

bool read_augmentation(Byte_reader letters, Byte_reader data, Common_entry& common) {
	while (letters.left() > 0) {
		switch (letters.take<char>()) {
		case 'R':
			common.pointer_encoding = data.take<unsigned char>();
			break;
		case 'S':
			common.is_signal_frame = true;
			break;
		case 'B':
			break;
		case 'L':
			data.take<unsigned char>();
			break;
		case 'P':
			take_plain(data, data.take<unsigned char>());
			break;
		default:
			return false;
		}
	}
	return !data.failed;
}

bool read_common_entry(const Frame_table& table, const unsigned char* place, Common_entry& common) {
	Byte_reader rest = reader_at(table, place);
	Byte_reader entry = take_entry(rest);
	if (entry.take<xylUInt32>() != 0 || entry.failed) return false;
	const auto version = entry.take<unsigned char>();
	if (version != 1 && version != 3) return false;
	const void* const letters_end = std::memchr(entry.position, 0, entry.left());
	if (!letters_end) return false;
	Byte_reader letters = entry.take_bytes(
		static_cast<xylUInt64>(static_cast<const unsigned char*>(letters_end) - entry.position));
	entry.take<char>(); // the terminator
	common.code_factor = entry.take_uleb();
	common.data_factor = entry.take_sleb();
	const xylUInt64 return_register =
		version == 1 ? entry.take<unsigned char>() : entry.take_uleb();
	if (entry.failed || return_register != frame_pc) return false;
	if (letters.left() > 0) {
		if (letters.take<char>() != 'z') return false;
		common.has_augmentation_data = true;
		const Byte_reader data = entry.take_bytes(entry.take_uleb());
		if (entry.failed || !read_augmentation(letters, data, common)) return false;
	}
	common.instructions = entry;
	return true;
}

// What a frame description entry (FDE) tells about one function.
struct Function_entry {
	xylUInt64 start = 0;
	xylUInt64 size = 0;
	Common_entry common;
	Byte_reader instructions = {};
};

bool read_function_entry(const Frame_table& table, const unsigned char* place,
                         Function_entry& function) {
	Byte_reader rest = reader_at(table, place);
	Byte_reader entry = take_entry(rest);
	const unsigned char* const id_place = entry.position;
	const auto distance = entry.take<xylUInt32>();
	if (entry.failed || distance == 0) return false;
	if (distance > static_cast<xylUInt64>(id_place - table.begin)) return false;
	if (!read_common_entry(table, id_place - distance, function.common)) return false;
	const unsigned char encoding = function.common.pointer_encoding;
	function.start = take_pointer(entry, encoding, table);
	function.size = take_plain(entry, encoding);
	if (function.common.has_augmentation_data) entry.take_bytes(entry.take_uleb());
	function.instructions = entry;
	return !entry.failed;
}

// The description of the last function that begins at or before the address; null without one.
const unsigned char* find_in_index(const Frame_table& table, xylUInt64 address) {
	Byte_reader reader = reader_at(table, table.index);
	const auto version = reader.take<unsigned char>();
	const auto frames_encoding = reader.take<unsigned char>();
	const auto count_encoding = reader.take<unsigned char>();
	const auto entries_encoding = reader.take<unsigned char>();
	if (reader.failed || version != 1 || entries_encoding != 0x3B) return nullptr;
	if (frames_encoding != omitted) take_plain(reader, frames_encoding);
	const xylUInt64 count = take_plain(reader, count_encoding); // omitted is no form, and fails
	if (reader.failed || count > reader.left() / 8) return nullptr;

	const auto offset_at = [&](xylUInt64 byte) {
		xylInt32 offset;
		std::memcpy(&offset, reader.position + byte, sizeof(offset));
		return static_cast<xylInt64>(offset);
	};
	const auto wanted = static_cast<xylInt64>(address - address_of(table.index));
	xylUInt64 first = 0;
	for (xylUInt64 behind = count; first < behind;) {
		const xylUInt64 middle = first + (behind - first) / 2;
		if (offset_at(middle * 8) <= wanted)
			first = middle + 1;
		else
			behind = middle;
	}
	if (first == 0) return nullptr;
	const xylUInt64 place =
		address_of(table.index) + static_cast<xylUInt64>(offset_at((first - 1) * 8 + 4));
	const xylUInt64 offset = place - address_of(table.begin);
	return offset < static_cast<xylUInt64>(table.end - table.begin) ? table.begin + offset
	                                                                : nullptr;
}

// DW_CFA_*: the first three hold an operand in their low six bits.
enum Instruction : unsigned char {
	cfa_advance_loc = 0x40,
	cfa_offset = 0x80,
	cfa_restore = 0xC0,
	cfa_nop = 0x00,
	cfa_set_loc,
	cfa_advance_loc1,
	cfa_advance_loc2,
	cfa_advance_loc4,
	cfa_offset_extended,
	cfa_restore_extended,
	cfa_undefined,
	cfa_same_value,
	cfa_register,
	cfa_remember_state,
	cfa_restore_state,
	cfa_def_cfa,
	cfa_def_cfa_register,
	cfa_def_cfa_offset,
	cfa_def_cfa_expression,
	cfa_expression,
	cfa_offset_extended_sf,
	cfa_def_cfa_sf,
	cfa_def_cfa_offset_sf,
	cfa_val_offset,
	cfa_val_offset_sf,
	cfa_val_expression,
	cfa_gnu_args_size = 0x2E,
	cfa_gnu_negative_offset_extended
};

// Runs a function's instructions as far as they concern one address.
class Frame_program {
public:
	Frame_program(const Frame_table& table, const Function_entry& function, xylUInt64 address,
	              Frame_rules& rules)
		: table_(table), common_(function.common), instructions_(function.instructions),
		  address_(address), location_(function.start), rules_(rules) {}

	bool run() {
		if (!execute_all(common_.instructions)) return false;
		initial_ = rules_;
		return execute_all(instructions_);
	}

private:
	// Compilers remember one state at a time.
	static constexpr unsigned int most_remembered = 8;

	bool execute_all(Byte_reader code) {
		while (code.left() > 0 && location_ <= address_) execute(code);
		return !code.failed;
	}

	void execute(Byte_reader& code) {
		const auto byte = code.take<unsigned char>();
		const xylUInt64 operand = byte & 0x3F;
		switch (byte & 0xC0) {
		case cfa_advance_loc:
			return advance(operand);
		case cfa_offset:
			return set_offset(operand, code.take_uleb() * common_.data_factor);
		case cfa_restore:
			return restore(operand);
		default:
			break;
		}
		if (byte >= cfa_def_cfa && byte <= cfa_def_cfa_expression) return define_cfa(byte, code);
		if (byte == cfa_def_cfa_sf || byte == cfa_def_cfa_offset_sf) return define_cfa(byte, code);
		if (byte <= cfa_advance_loc4) return move(byte, code);
		set_rule(byte, code);
	}

	void advance(xylUInt64 distance) { location_ += distance * common_.code_factor; }

	void move(unsigned char instruction, Byte_reader& code) {
		switch (instruction) {
		case cfa_set_loc:
			location_ = take_pointer(code, common_.pointer_encoding, table_);
			break;
		case cfa_advance_loc1:
			advance(code.take<xylUInt8>());
			break;
		case cfa_advance_loc2:
			advance(code.take<xylUInt16>());
			break;
		case cfa_advance_loc4:
			advance(code.take<xylUInt32>());
			break;
		default:
			break; // cfa_nop
		}
	}

	void define_cfa(unsigned char instruction, Byte_reader& code) {
		if (instruction == cfa_def_cfa_expression) {
			rules_.cfa_is_expression = true;
			rules_.cfa_expression = take_expression(code);
			return;
		}
		if (instruction == cfa_def_cfa || instruction == cfa_def_cfa_sf ||
		    instruction == cfa_def_cfa_register) {
			rules_.cfa_register = code.take_uleb();
			if (rules_.cfa_register >= frame_register_count) return code.fail();
		}
		rules_.cfa_is_expression = false;
		if (instruction == cfa_def_cfa || instruction == cfa_def_cfa_offset) {
			rules_.cfa_offset = code.take_uleb();
		} else if (instruction != cfa_def_cfa_register) {
			rules_.cfa_offset = code.take_sleb() * common_.data_factor;
		}
	}

	void set_rule(unsigned char instruction, Byte_reader& code) {
		if (instruction == cfa_remember_state) return remember(code);
		if (instruction == cfa_restore_state) return recall(code);
		const xylUInt64 number = code.take_uleb();
		switch (instruction) {
		case cfa_offset_extended:
			return set_offset(number, code.take_uleb() * common_.data_factor);
		case cfa_offset_extended_sf:
			return set_offset(number, code.take_sleb() * common_.data_factor);
		case cfa_gnu_negative_offset_extended:
			return set_offset(number, 0 - code.take_uleb() * common_.data_factor);
		case cfa_restore_extended:
			return restore(number);
		case cfa_undefined:
			return set(number, Frame_rule_kind::undefined, 0);
		case cfa_same_value:
			return set(number, Frame_rule_kind::same, 0);
		case cfa_register:
			return set_register(number, code);
		case cfa_val_offset:
			return set(number, Frame_rule_kind::is_offset, code.take_uleb() * common_.data_factor);
		case cfa_val_offset_sf:
			return set(number, Frame_rule_kind::is_offset, code.take_sleb() * common_.data_factor);
		case cfa_expression:
			return set_expression(number, Frame_rule_kind::at_expression, code);
		case cfa_val_expression:
			return set_expression(number, Frame_rule_kind::is_expression, code);
		case cfa_gnu_args_size:
			return; // its operand is read, and of no use here
		default:
			return code.fail();
		}
	}

	// Vector registers have rules too, which nobody asks for.
	void set(xylUInt64 number, Frame_rule_kind kind, Frame_rule_operand operand) {
		if (number >= frame_register_count) return;
		rules_.kinds[number] = kind;
		rules_.operands[number] = operand;
	}
	void set_offset(xylUInt64 number, xylUInt64 offset) {
		set(number, Frame_rule_kind::at_offset, offset);
	}
	void set_register(xylUInt64 number, Byte_reader& code) {
		const xylUInt64 source = code.take_uleb();
		if (source >= frame_register_count && number < frame_register_count) return code.fail();
		set(number, Frame_rule_kind::in_register, source);
	}
	void set_expression(xylUInt64 number, Frame_rule_kind kind, Byte_reader& code) {
		set(number, kind, reinterpret_cast<Frame_rule_operand>(take_expression(code)));
	}
	void restore(xylUInt64 number) {
		if (number >= frame_register_count) return;
		set(number, initial_.kinds[number], initial_.operands[number]);
	}

	static Frame_expression take_expression(Byte_reader& code) {
		const Frame_expression expression = code.position;
		code.take_bytes(code.take_uleb());
		return expression;
	}

	void remember(Byte_reader& code) {
		if (remembered_count_ == most_remembered) return code.fail();
		remembered_[remembered_count_++] = rules_;
	}
	void recall(Byte_reader& code) {
		if (remembered_count_ == 0) return code.fail();
		rules_ = remembered_[--remembered_count_];
	}

	const Frame_table& table_;
	const Common_entry& common_;
	const Byte_reader instructions_;
	const xylUInt64 address_;
	xylUInt64 location_; // where the rules so far begin to hold
	Frame_rules& rules_;
	Frame_rules initial_{}; // those that the common entry sets, or none while it still does
	Frame_rules remembered_[most_remembered];
	unsigned int remembered_count_ = 0;
};

} // namespace

bool find_frame_rules(const Frame_table& table, xylUInt64 address, Frame_rules& rules) {
	const unsigned char* const place = find_in_index(table, address);
	Function_entry function;
	if (!place || !read_function_entry(table, place, function)) return false;
	if (address - function.start >= function.size) return false;
	rules = {};
	rules.is_signal_frame = function.common.is_signal_frame;
	return Frame_program(table, function, address, rules).run();
}

} // namespace os
