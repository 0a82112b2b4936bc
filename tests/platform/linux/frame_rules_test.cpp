// Rules applied to registers and a few words of memory.
#include <morvantis/platform/system/linux/frame_rules.h>

#include "frame_bytes.h"

#include <gtest/gtest.h>

using os::apply_frame_rules;
using os::evaluate_frame_expression;
using os::Frame_expression;
using os::Frame_registers;
using os::Frame_rule_kind;
using os::Frame_rules;

namespace {

// The words of memory from 0x1000 on are 0xA000000000000000, 0xA000000000000001 and so on; there is
// none elsewhere.
bool read_words(xylUInt64 address, unsigned int size, xylUInt64& value) {
	if (address < 0x1000 || address + size > 0x1100) return false;
	const xylUInt64 word = 0xA000000000000000 + (address - 0x1000) / 8;
	value = word >> 8 * (address % 8);
	if (size < 8) value &= (1ULL << 8 * size) - 1;
	return true;
}

Frame_registers numbered_registers() {
	Frame_registers registers;
	for (unsigned int i = 0; i < os::frame_register_count; ++i) registers.value[i] = 0x1000 + 8 * i;
	return registers;
}

// An expression in a block of exactly its size.
class Expression {
public:
	explicit Expression(const Bytes& operations) {
		const Bytes all = uleb(operations.size()) + operations;
		block_.reset(new unsigned char[all.size()]);
		std::memcpy(block_.get(), all.data(), all.size());
	}
	Frame_expression get() const { return block_.get(); }
	xylUInt64 operand() const { return reinterpret_cast<xylUInt64>(block_.get()); }

private:
	std::unique_ptr<unsigned char[]> block_;
};

// Starts with 5 on the stack.
bool evaluate(const Bytes& operations, xylUInt64& result) {
	const Expression expression(operations);
	return evaluate_frame_expression(expression.get(), numbered_registers(), 5, read_words, result);
}

// Rules of a function that has pushed nothing.
Frame_rules plain_rules() {
	Frame_rules rules{};
	rules.cfa_register = os::frame_rsp;
	rules.cfa_offset = 8;
	rules.kinds[os::frame_pc] = Frame_rule_kind::at_offset;
	rules.operands[os::frame_pc] = 0ULL - 8;
	return rules;
}

} // namespace

TEST(Frame_rules, EvaluatesEveryOperation) {
	struct Case {
		const char* name;
		Bytes operations;
		xylUInt64 result;
	};
	constexpr xylUInt64 minus = ~0ULL; // -1
	const Case cases[] = {
		{"none", {}, 5},
		{"nop", bytes({0x96}), 5},
		// constants
		{"lit0", bytes({0x30}), 0},
		{"lit31", bytes({0x4F}), 31},
		{"addr", bytes({0x03}) + raw(0x123456789ABCDEFULL), 0x123456789ABCDEF},
		{"const1u", bytes({0x08, 0xFF}), 0xFF},
		{"const1s", bytes({0x09, 0xFF}), minus},
		{"const2u", bytes({0x0A, 0xFE, 0xFF}), 0xFFFE},
		{"const2s", bytes({0x0B, 0xFE, 0xFF}), minus - 1},
		{"const4u", bytes({0x0C, 0xFE, 0xFF, 0xFF, 0xFF}), 0xFFFFFFFE},
		{"const4s", bytes({0x0D, 0xFE, 0xFF, 0xFF, 0xFF}), minus - 1},
		{"const8u", bytes({0x0E}) + raw(minus - 2), minus - 2},
		{"const8s", bytes({0x0F}) + raw(minus - 2), minus - 2},
		{"constu", bytes({0x10, 0x80, 1}), 128},
		{"consts", bytes({0x11, 0x7F}), minus},
		{"longest constu", bytes({0x10}) + uleb(minus), minus},
		// registers
		{"reg3", bytes({0x53}), 0x1018},
		{"breg7 + 8", bytes({0x77, 8}), 0x1040},
		{"breg7 - 8", bytes({0x77, 0x78}), 0x1030},
		{"regx 16", bytes({0x90, 16}), 0x1080},
		{"bregx 3 - 1", bytes({0x92, 3, 0x7F}), 0x1017},
		// memory
		{"deref", bytes({0x77, 8, 0x06}), 0xA000000000000008},
		{"deref_size 1", bytes({0x77, 0xF, 0x94, 1}), 0xA0},
		{"deref_size 2", bytes({0x77, 0xE, 0x94, 2}), 0xA000},
		{"deref_size 4", bytes({0x77, 0xC, 0x94, 4}), 0xA0000000},
		{"deref_size 8", bytes({0x77, 8, 0x94, 8}), 0xA000000000000008},
		// the stack; 5, then what lit pushes
		{"dup", bytes({0x12, 0x22}), 10},
		{"drop", bytes({0x3F, 0x13}), 5},
		{"over", bytes({0x32, 0x14, 0x22, 0x1C}), 5 - (2 + 5ULL)},
		{"pick 2", bytes({0x31, 0x32, 0x15, 2}), 5},
		{"swap", bytes({0x32, 0x16, 0x1C}), 2 - 5ULL},
		{"rot", bytes({0x31, 0x32, 0x17, 0x1C, 0x1C}), 2 - (5 - 1ULL)},
		// arithmetic
		{"abs of a negative", bytes({0x11, 0x7D, 0x19}), 3},
		{"abs of a positive", bytes({0x33, 0x19}), 3},
		{"and", bytes({0x33, 0x1A}), 1},
		{"div", bytes({0x32, 0x1B}), 2},
		{"div by -1", bytes({0x11, 0x7F, 0x1B}), minus - 4},
		{"div of a negative", bytes({0x11, 0x79, 0x32, 0x1B}), minus - 2},
		{"least number by -1", bytes({0x0E}) + raw(1ULL << 63) + bytes({0x11, 0x7F, 0x1B}),
	     1ULL << 63},
		{"minus", bytes({0x37, 0x1C}), minus - 1},
		{"mod", bytes({0x33, 0x1D}), 2},
		{"mul", bytes({0x33, 0x1E}), 15},
		{"neg", bytes({0x1F}), minus - 4},
		{"not", bytes({0x20}), ~5ULL},
		{"or", bytes({0x32, 0x21}), 7},
		{"plus", bytes({0x32, 0x22}), 7},
		{"plus_uconst", bytes({0x23, 0x80, 1}), 133},
		{"shl", bytes({0x33, 0x24}), 40},
		{"shl by 64", bytes({0x08, 64, 0x24}), 0},
		{"shr", bytes({0x11, 0x7F, 0x08, 60, 0x25}), 15},
		{"shr by 64", bytes({0x08, 64, 0x25}), 0},
		{"shra", bytes({0x11, 0x78, 0x32, 0x26}), minus - 1},
		{"shra by 64", bytes({0x11, 0x78, 0x08, 64, 0x26}), minus},
		{"xor", bytes({0x33, 0x27}), 6},
		// comparisons have signs
		{"eq", bytes({0x35, 0x29}), 1},
		{"eq not", bytes({0x34, 0x29}), 0},
		{"ge", bytes({0x11, 0x7F, 0x2A}), 1},
		{"ge not", bytes({0x36, 0x2A}), 0},
		{"gt", bytes({0x11, 0x7F, 0x2B}), 1},
		{"gt not", bytes({0x35, 0x2B}), 0},
		{"le", bytes({0x35, 0x2C}), 1},
		{"le not", bytes({0x11, 0x7F, 0x2C}), 0},
		{"lt", bytes({0x36, 0x2D}), 1},
		{"lt not", bytes({0x11, 0x7F, 0x2D}), 0},
		{"ne", bytes({0x34, 0x2E}), 1},
		{"ne not", bytes({0x35, 0x2E}), 0},
		// branches
		{"skip", bytes({0x2F, 1, 0, 0x30}), 5},
		{"bra taken", bytes({0x31, 0x28, 1, 0, 0x30}), 5},
		{"bra not taken", bytes({0x30, 0x28, 1, 0, 0x37}), 7},
		// counts 5 down to 0: minus 1, dup, back while it isn't 0
		{"loop", bytes({0x31, 0x1C, 0x12, 0x28, 0xFA, 0xFF}), 0},
		// what a linkage table has: rsp + 8 + 8 * ((pc & 15) >= 11)
		{"linkage table", bytes({0x77, 8, 0x80, 0, 0x3F, 0x1A, 0x3B, 0x2A, 0x33, 0x24, 0x22}),
	     0x1040},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		xylUInt64 result = 0;
		ASSERT_TRUE(evaluate(c.operations, result));
		EXPECT_EQ(result, c.result);
	}
}

TEST(Frame_rules, RefusesExpressionsThatMakeNoSense) {
	struct Case {
		const char* name;
		Bytes operations;
	};
	const Case cases[] = {
		{"unknown operation", bytes({0x01})},
		{"another one", bytes({0xFF})},
		{"cut operand", bytes({0x0C, 1, 2})},
		{"endless number", bytes({0x10, 0x80})},
		{"no such register", bytes({0x61})},
		{"no such register with offset", bytes({0x81, 0})},
		{"no such regx", bytes({0x90, 17})},
		{"no such bregx", bytes({0x92, 17, 0})},
		{"empty stack at the end", bytes({0x13})},
		{"empty stack", bytes({0x13, 0x20})},
		{"one operand for two", bytes({0x22})},
		{"dup of nothing", bytes({0x13, 0x12})},
		{"over of one", bytes({0x14})},
		{"pick of too deep", bytes({0x15, 1})},
		{"swap of one", bytes({0x16})},
		{"rot of two", bytes({0x31, 0x17})},
		{"full stack", Bytes(32, 0x30)},
		{"unreadable memory", bytes({0x30, 0x06})},
		{"unreadable by size", bytes({0x30, 0x94, 4})},
		{"odd size", bytes({0x77, 0, 0x94, 3})},
		{"division by 0", bytes({0x30, 0x1B})},
		{"remainder by 0", bytes({0x30, 0x1D})},
		{"branch before the start", bytes({0x2F, 0xFC, 0xFF})},
		{"branch behind the end", bytes({0x2F, 1, 0})},
		{"endless loop", bytes({0x2F, 0xFD, 0xFF})},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		xylUInt64 result = 0;
		EXPECT_FALSE(evaluate(c.operations, result));
	}
	xylUInt64 result = 0;
	EXPECT_TRUE(evaluate(Bytes(31, 0x30), result)); // just full
}

// An expression's size has ten bytes at most, however it is filled up.
TEST(Frame_rules, RefusesASizeOfMoreBytesThanANumberHas) {
	const auto evaluate_sized = [](const Bytes& size, xylUInt64& result) {
		const Bytes all = size + bytes({0x37}) + Bytes(16, 0);
		return evaluate_frame_expression(reinterpret_cast<Frame_expression>(all.data()),
		                                 numbered_registers(), 5, read_words, result);
	};
	const Bytes nine_more(9, '\x80');
	xylUInt64 result = 0;
	EXPECT_TRUE(evaluate_sized(bytes({0x81}) + nine_more.substr(1) + bytes({0}), result));
	EXPECT_EQ(result, 7u);
	EXPECT_FALSE(evaluate_sized(bytes({0x81}) + nine_more + bytes({0}), result));
}

TEST(Frame_rules, MovesToTheCaller) {
	Frame_rules rules = plain_rules();
	Frame_registers registers = numbered_registers();
	const Frame_registers before = registers;
	ASSERT_TRUE(apply_frame_rules(rules, registers, read_words));
	// The CFA is rsp + 8 = 0x1040, and the word before it is the eighth.
	EXPECT_EQ(registers.value[os::frame_pc], 0xA000000000000007);
	EXPECT_EQ(registers.value[os::frame_rsp], 0x1040u);
	for (unsigned int i = 0; i < os::frame_pc; ++i) {
		EXPECT_EQ(registers.value[i] == before.value[i], i != os::frame_rsp) << i;
	}
}

TEST(Frame_rules, FollowsEveryKindOfRule) {
	const Expression at(bytes({0x23, 16})), is(bytes({0x23, 32})); // the CFA is on the stack
	struct Case {
		const char* name;
		Frame_rule_kind kind;
		xylUInt64 operand;
		xylUInt64 value; // of rbx afterwards
	};
	const Case cases[] = {
		{"same", Frame_rule_kind::same, 0, 0x1018},
		{"undefined", Frame_rule_kind::undefined, 0, 0x1018},
		{"at offset", Frame_rule_kind::at_offset, 0ULL - 16, 0xA000000000000006},
		{"is offset", Frame_rule_kind::is_offset, 0ULL - 16, 0x1030},
		{"in register", Frame_rule_kind::in_register, 12, 0x1060},
		{"at expression", Frame_rule_kind::at_expression, at.operand(), 0xA00000000000000A},
		{"is expression", Frame_rule_kind::is_expression, is.operand(), 0x1060},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		Frame_rules rules = plain_rules();
		rules.kinds[os::frame_rbx] = c.kind;
		rules.operands[os::frame_rbx] = c.operand;
		Frame_registers registers = numbered_registers();
		ASSERT_TRUE(apply_frame_rules(rules, registers, read_words));
		EXPECT_EQ(registers.value[os::frame_rbx], c.value);
	}
}

TEST(Frame_rules, TakesTheValuesFromBeforeTheMove) {
	Frame_rules rules = plain_rules();
	rules.kinds[os::frame_rbx] = Frame_rule_kind::in_register;
	rules.operands[os::frame_rbx] = os::frame_rbp;
	rules.kinds[os::frame_rbp] = Frame_rule_kind::in_register;
	rules.operands[os::frame_rbp] = os::frame_rbx;
	Frame_registers registers = numbered_registers();
	ASSERT_TRUE(apply_frame_rules(rules, registers, read_words));
	EXPECT_EQ(registers.value[os::frame_rbx], 0x1030u);
	EXPECT_EQ(registers.value[os::frame_rbp], 0x1018u);
}

TEST(Frame_rules, GivesAnExpressionForTheCfaAndARuleForRsp) {
	const Expression cfa(bytes({0x76, 16})); // rbp + 16
	Frame_rules rules = plain_rules();
	rules.cfa_is_expression = true;
	rules.cfa_expression = cfa.get();
	Frame_registers registers = numbered_registers();
	ASSERT_TRUE(apply_frame_rules(rules, registers, read_words));
	EXPECT_EQ(registers.value[os::frame_rsp], 0x1040u);
	rules.kinds[os::frame_rsp] = Frame_rule_kind::at_offset;
	registers = numbered_registers();
	ASSERT_TRUE(apply_frame_rules(rules, registers, read_words));
	EXPECT_EQ(registers.value[os::frame_rsp], 0xA000000000000008);
}

TEST(Frame_rules, EndsWithoutAReturnAddress) {
	Frame_rules rules = plain_rules();
	rules.kinds[os::frame_pc] = Frame_rule_kind::undefined;
	Frame_registers registers = numbered_registers();
	ASSERT_TRUE(apply_frame_rules(rules, registers, read_words));
	EXPECT_EQ(registers.value[os::frame_pc], 0u);
}

TEST(Frame_rules, ChangesNothingWhenTheyFail) {
	const Expression bad(bytes({0x01}));
	struct Case {
		const char* name;
		void (*damage)(Frame_rules&, const Expression&);
	};
	const Case cases[] = {
		{"memory", [](Frame_rules& r, const Expression&) { r.cfa_offset = 0x10000; }},
		{"CFA",
	     [](Frame_rules& r, const Expression& e) {
			 r.cfa_is_expression = true;
			 r.cfa_expression = e.get();
		 }},
		{"register",
	     [](Frame_rules& r, const Expression& e) {
			 r.kinds[12] = Frame_rule_kind::at_expression;
			 r.operands[12] = e.operand();
		 }},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		Frame_rules rules = plain_rules();
		c.damage(rules, bad);
		Frame_registers registers = numbered_registers();
		const Frame_registers before = registers;
		EXPECT_FALSE(apply_frame_rules(rules, registers, read_words));
		EXPECT_EQ(std::memcmp(&registers, &before, sizeof(before)), 0);
	}
}
