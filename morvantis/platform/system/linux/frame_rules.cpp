#include <morvantis/platform/system/linux/frame_rules.h>

#include <morvantis/platform/system/linux/byte_reader.h>

namespace os {
namespace {

// DW_OP_*, those without a range.
enum Operation : unsigned char {
	op_addr = 0x03,
	op_deref = 0x06,
	op_const1u = 0x08,
	op_const1s,
	op_const2u,
	op_const2s,
	op_const4u,
	op_const4s,
	op_const8u,
	op_const8s,
	op_constu,
	op_consts,
	op_dup = 0x12,
	op_drop,
	op_over,
	op_pick,
	op_swap,
	op_rot,
	op_abs = 0x19,
	op_and,
	op_div,
	op_minus,
	op_mod,
	op_mul,
	op_neg,
	op_not,
	op_or,
	op_plus,
	op_plus_uconst,
	op_shl,
	op_shr,
	op_shra,
	op_xor,
	op_bra,
	op_eq,
	op_ge,
	op_gt,
	op_le,
	op_lt,
	op_ne,
	op_skip,
	op_lit0 = 0x30,
	op_reg0 = 0x50,
	op_breg0 = 0x70,
	op_regx = 0x90,
	op_bregx = 0x92,
	op_deref_size = 0x94,
	op_nop = 0x96
};

// A branch back could go on for ever.
constexpr int most_operations = 1000;

class Evaluation {
public:
	Evaluation(Byte_reader code, const Frame_registers& registers, Read_memory read)
		: begin_(code.position), code_(code), registers_(registers), read_(read) {}

	bool run(xylUInt64 first, xylUInt64& result) {
		push(first);
		for (int i = 0; code_.position != code_.end && !code_.failed; ++i) {
			if (i == most_operations) return false;
			execute(code_.take<unsigned char>());
		}
		result = pop();
		return !code_.failed;
	}

private:
	static constexpr unsigned int room = 32;

	void push(xylUInt64 value) {
		if (depth_ == room) return code_.fail();
		stack_[depth_++] = value;
	}
	xylUInt64 pop() {
		if (depth_ > 0) return stack_[--depth_];
		code_.fail();
		return 0;
	}
	void push_copy(xylUInt64 below_top) {
		if (below_top >= depth_) return code_.fail();
		push(stack_[depth_ - 1 - below_top]);
	}
	template <typename T> void push_taken() {
		push(static_cast<xylUInt64>(static_cast<xylInt64>(code_.take<T>())));
	}
	void push_register(xylUInt64 number, xylUInt64 offset) {
		if (number >= frame_register_count) return code_.fail();
		push(registers_.value[number] + offset);
	}
	void dereference(unsigned int size) {
		xylUInt64 value = 0;
		const bool is_size = size == 1 || size == 2 || size == 4 || size == 8;
		const xylUInt64 address = pop();
		if (code_.failed || !is_size || !read_(address, size, value)) return code_.fail();
		push(value);
	}
	void branch(bool taken) {
		const auto distance = code_.take<xylInt16>();
		if (!taken || code_.failed) return;
		const auto target = code_.position - begin_ + distance;
		if (target < 0 || target > code_.end - begin_) return code_.fail();
		code_.position = begin_ + target;
	}

	void execute(unsigned int operation) {
		if (operation >= op_lit0 && operation < op_reg0) return push(operation - op_lit0);
		if (operation >= op_reg0 && operation < op_breg0) {
			return push_register(operation - op_reg0, 0);
		}
		if (operation >= op_breg0 && operation < op_regx) {
			return push_register(operation - op_breg0, code_.take_sleb());
		}
		if (is_constant(operation)) return push_constant(operation);
		if (is_binary(operation)) return combine(operation);
		rearrange(operation);
	}

	static bool is_constant(unsigned int operation) {
		return operation == op_addr || (operation >= op_const1u && operation <= op_consts);
	}
	void push_constant(unsigned int operation) {
		switch (operation) {
		case op_const1u:
			return push_taken<xylUInt8>();
		case op_const1s:
			return push_taken<xylInt8>();
		case op_const2u:
			return push_taken<xylUInt16>();
		case op_const2s:
			return push_taken<xylInt16>();
		case op_const4u:
			return push_taken<xylUInt32>();
		case op_const4s:
			return push_taken<xylInt32>();
		case op_constu:
			return push(code_.take_uleb());
		case op_consts:
			return push(code_.take_sleb());
		default:
			return push(code_.take<xylUInt64>()); // op_addr, op_const8u, op_const8s
		}
	}

	static bool is_binary(unsigned int operation) {
		switch (operation) {
		case op_abs:
		case op_neg:
		case op_not:
		case op_plus_uconst:
		case op_bra:
			return false;
		default:
			return operation >= op_and && operation <= op_ne;
		}
	}
	void combine(unsigned int operation) {
		const xylUInt64 right = pop(), left = pop();
		xylUInt64 result = 0;
		if (!calculate(operation, left, right, result)) return code_.fail();
		push(result);
	}
	// Wraps around like the registers it works on.
	static bool calculate(unsigned int operation, xylUInt64 left, xylUInt64 right,
	                      xylUInt64& result) {
		const auto signed_left = static_cast<xylInt64>(left);
		const auto signed_right = static_cast<xylInt64>(right);
		switch (operation) {
		case op_and:
			result = left & right;
			break;
		case op_or:
			result = left | right;
			break;
		case op_xor:
			result = left ^ right;
			break;
		case op_plus:
			result = left + right;
			break;
		case op_minus:
			result = left - right;
			break;
		case op_mul:
			result = left * right;
			break;
		case op_shl:
			result = right < 64 ? left << right : 0;
			break;
		case op_shr:
			result = right < 64 ? left >> right : 0;
			break;
		case op_shra:
			result = static_cast<xylUInt64>(signed_left >> (right < 63 ? right : 63));
			break;
		case op_div: // the quotient of -1 is the negative, which may be too large for the sign
			if (right == 0) return false;
			result = right == ~0ULL ? 0 - left : static_cast<xylUInt64>(signed_left / signed_right);
			break;
		case op_mod:
			if (right == 0) return false;
			result = left % right;
			break;
		case op_eq:
			result = left == right;
			break;
		case op_ne:
			result = left != right;
			break;
		case op_ge:
			result = signed_left >= signed_right;
			break;
		case op_gt:
			result = signed_left > signed_right;
			break;
		case op_le:
			result = signed_left <= signed_right;
			break;
		case op_lt:
			result = signed_left < signed_right;
			break;
		default:
			return false;
		}
		return true;
	}

	void rearrange(unsigned int operation) {
		switch (operation) {
		case op_nop:
			return;
		case op_deref:
			return dereference(8);
		case op_deref_size:
			return dereference(code_.take<xylUInt8>());
		case op_dup:
			return push_copy(0);
		case op_over:
			return push_copy(1);
		case op_pick:
			return push_copy(code_.take<xylUInt8>());
		case op_drop:
			pop();
			return;
		case op_swap:
			return bring_down(1);
		case op_rot:
			return bring_down(2);
		case op_abs: {
			const xylUInt64 value = pop();
			return push(static_cast<xylInt64>(value) < 0 ? 0 - value : value);
		}
		case op_neg:
			return push(0 - pop());
		case op_not:
			return push(~pop());
		case op_plus_uconst:
			return push(pop() + code_.take_uleb());
		case op_regx:
			return push_register(code_.take_uleb(), 0);
		case op_bregx: {
			const xylUInt64 number = code_.take_uleb();
			return push_register(number, code_.take_sleb());
		}
		case op_skip:
			return branch(true);
		case op_bra:
			return branch(pop() != 0);
		default:
			return code_.fail();
		}
	}
	// Puts the top value below `count` others.
	void bring_down(unsigned int count) {
		if (depth_ <= count) return code_.fail();
		const xylUInt64 top = stack_[depth_ - 1];
		for (unsigned int i = 0; i < count; ++i) stack_[depth_ - 1 - i] = stack_[depth_ - 2 - i];
		stack_[depth_ - 1 - count] = top;
	}

	const unsigned char* begin_;
	Byte_reader code_;
	const Frame_registers& registers_;
	Read_memory read_;
	xylUInt64 stack_[room];
	unsigned int depth_ = 0;
};

bool find_cfa(const Frame_rules& rules, const Frame_registers& registers, Read_memory read,
              xylUInt64& cfa) {
	if (rules.cfa_is_expression) {
		return evaluate_frame_expression(rules.cfa_expression, registers, 0, read, cfa);
	}
	cfa = registers.value[rules.cfa_register] + rules.cfa_offset;
	return true;
}

// Leaves `value` as it is where the rule gives none.
bool find_value(Frame_rule_kind kind, Frame_rule_operand operand, const Frame_registers& registers,
                xylUInt64 cfa, Read_memory read, xylUInt64& value) {
	const auto expression = reinterpret_cast<Frame_expression>(operand);
	xylUInt64 address = 0;
	switch (kind) {
	case Frame_rule_kind::same:
	case Frame_rule_kind::undefined:
		return true;
	case Frame_rule_kind::at_offset:
		return read(cfa + operand, 8, value);
	case Frame_rule_kind::is_offset:
		value = cfa + operand;
		return true;
	case Frame_rule_kind::in_register:
		value = registers.value[operand];
		return true;
	case Frame_rule_kind::at_expression:
		return evaluate_frame_expression(expression, registers, cfa, read, address) &&
		       read(address, 8, value);
	case Frame_rule_kind::is_expression:
		return evaluate_frame_expression(expression, registers, cfa, read, value);
	}
	return false;
}

} // namespace

bool evaluate_frame_expression(Frame_expression expression, const Frame_registers& registers,
                               xylUInt64 first, Read_memory read, xylUInt64& result) {
	// An ULEB128 of 64 bits has at most ten bytes, and this one is known to be whole. One that is
	// filled up with zeros to more is refused.
	Byte_reader size_reader{expression, expression + 10};
	const xylUInt64 size = size_reader.take_uleb();
	if (size_reader.failed) return false;
	const Byte_reader code{size_reader.position, size_reader.position + size};
	return Evaluation(code, registers, read).run(first, result);
}

bool apply_frame_rules(const Frame_rules& rules, Frame_registers& registers, Read_memory read) {
	xylUInt64 cfa = 0;
	if (!find_cfa(rules, registers, read, cfa)) return false;
	Frame_registers caller = registers;
	caller.value[frame_rsp] = cfa; // what its own rule may still change
	for (unsigned int i = 0; i < frame_register_count; ++i) {
		if (!find_value(rules.kinds[i], rules.operands[i], registers, cfa, read, caller.value[i])) {
			return false;
		}
	}
	if (rules.kinds[frame_pc] == Frame_rule_kind::undefined) caller.value[frame_pc] = 0;
	registers = caller;
	return true;
}

} // namespace os
