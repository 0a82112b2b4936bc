// How to get from a function's frame to its caller's, and the doing of it.
//
// As DWARF 5 tells in 6.4 (call frame information) and 2.5 (expressions), for x86-64.
#pragma once

#include <morvantis/core/xyltypes.h>

namespace os {

// The registers by their DWARF numbers.
enum Frame_register : unsigned int {
	frame_rbx = 3,
	frame_rbp = 6,
	frame_rsp = 7,
	frame_r12 = 12,
	frame_r13,
	frame_r14,
	frame_r15,
	frame_pc = 16,
	frame_register_count = 17
};

struct Frame_registers {
	xylUInt64 value[frame_register_count];
};

// A DWARF expression: its size as an ULEB128 and then its bytes, all of them there and in memory
// that outlives the rules.
using Frame_expression = const unsigned char*;

// Where the caller's value of a register is, "CFA" being the canonical frame address: the stack
// pointer ahead of the call.
enum class Frame_rule_kind : unsigned char {
	same,          // still in the register
	undefined,     // lost; of the return address: there is no caller
	at_offset,     // in memory, at CFA + offset
	is_offset,     // CFA + offset itself
	in_register,   // in another register
	at_expression, // in memory, where the expression says
	is_expression  // what the expression says
};

// What a rule works with: the offset, which wraps around so that a negative one is a large one; the
// register, < frame_register_count; or the address of the expression.
using Frame_rule_operand = xylUInt64;

// All that holds at one instruction. Zeros are what holds where nothing was told: every register is
// the same.
struct Frame_rules {
	bool is_signal_frame; // its caller was interrupted and didn't call
	bool cfa_is_expression;
	Frame_rule_kind kinds[frame_register_count];
	Frame_rule_operand operands[frame_register_count];
	xylUInt64 cfa_register; // < frame_register_count
	xylUInt64 cfa_offset;   // on top of the register's value
	Frame_expression cfa_expression;
};

// Reads `size` bytes (1, 2, 4 or 8) at an address, as an unsigned number; false where that isn't
// allowed.
using Read_memory = bool (*)(xylUInt64 address, unsigned int size, xylUInt64& value);

// Moves the registers to the caller. Without a caller, frame_pc becomes 0. False, with nothing
// changed, for an expression that makes no sense and for memory that may not be read.
bool apply_frame_rules(const Frame_rules& rules, Frame_registers& registers, Read_memory read);

// What an expression gives that starts with one value on its stack. False as above.
bool evaluate_frame_expression(Frame_expression expression, const Frame_registers& registers,
                               xylUInt64 first, Read_memory read, xylUInt64& result);

} // namespace os
