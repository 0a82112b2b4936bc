// Tables built as bytes: every instruction and pointer form, and what is damaged.
#include <morvantis/platform/system/linux/frame_table.h>

#include "frame_bytes.h"

#include <gtest/gtest.h>

#include <random>

using os::find_frame_rules;
using os::Frame_rule_kind;
using os::Frame_rules;

namespace {

constexpr unsigned int code = 0x10000; // where the functions begin, from the index on

Frame_bytes function_of(const Bytes& instructions) {
	Frame_bytes function;
	function.start = code;
	function.size = 0x100000;
	function.instructions = instructions;
	return function;
}

// The rules at `offset` bytes into the only function.
bool rules_at(const Frame_bytes& function, xylUInt64 offset, Frame_rules& rules) {
	const Table_image image({function});
	return find_frame_rules(image.table(), image.address(code + offset), rules);
}

Bytes expression_of(xylUInt64 operand) {
	const auto* const size = reinterpret_cast<const char*>(operand);
	return {size, static_cast<size_t>(size[0]) + 1};
}

// "cfa=rsp+8 pc=[-8]", for what a rule can be.
std::string text_of(const Frame_rules& rules) {
	std::string text = rules.cfa_is_expression
	                       ? "cfa=expression"
	                       : "cfa=" + std::to_string(rules.cfa_register) + "+" +
	                             std::to_string(static_cast<xylInt64>(rules.cfa_offset));
	for (unsigned int i = 0; i < os::frame_register_count; ++i) {
		const auto number = std::to_string(static_cast<xylInt64>(rules.operands[i]));
		std::string rule;
		switch (rules.kinds[i]) {
		case Frame_rule_kind::same:
			continue;
		case Frame_rule_kind::undefined:
			rule = "undefined";
			break;
		case Frame_rule_kind::at_offset:
			rule = "[" + number + "]";
			break;
		case Frame_rule_kind::is_offset:
			rule = number;
			break;
		case Frame_rule_kind::in_register:
			rule = "r" + number;
			break;
		case Frame_rule_kind::at_expression:
			rule = "[expression]";
			break;
		case Frame_rule_kind::is_expression:
			rule = "expression";
			break;
		}
		text += " " + std::to_string(i) + "=" + rule;
	}
	return text;
}

} // namespace

TEST(Frame_table, FindsTheFunctionThatCoversAnAddress) {
	std::vector<Frame_bytes> functions(3);
	const unsigned int starts[] = {0x1000, 0x1040, 0x2000}, sizes[] = {0x40, 0x20, 0x10};
	for (size_t i = 0; i < functions.size(); ++i) {
		functions[i].start = starts[i];
		functions[i].size = sizes[i];
		functions[i].instructions = bytes({0x0E, static_cast<int>(16 * (i + 1))});
	}
	const Table_image image(functions);
	struct Case {
		const char* name;
		unsigned int offset;
		unsigned int cfa_offset; // 0: not found
	};
	const Case cases[] = {
		{"before all", 0xFFF, 0},          {"first byte", 0x1000, 16},
		{"last byte", 0x103F, 16},         {"next function at once", 0x1040, 32},
		{"its last byte", 0x105F, 32},     {"first byte of a gap", 0x1060, 0},
		{"last byte of a gap", 0x1FFF, 0}, {"last function", 0x2000, 48},
		{"its last byte", 0x200F, 48},     {"behind all", 0x2010, 0},
		{"far behind all", 0x7FFFFFFF, 0},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		Frame_rules rules;
		const bool found = find_frame_rules(image.table(), image.address(c.offset), rules);
		EXPECT_EQ(found, c.cfa_offset != 0);
		EXPECT_EQ(found ? rules.cfa_offset : 0, c.cfa_offset);
	}
}

TEST(Frame_table, FindsEachOfManyFunctions) {
	for (unsigned int count = 1; count <= 40; ++count) {
		SCOPED_TRACE(count);
		std::vector<Frame_bytes> functions(count);
		for (unsigned int i = 0; i < count; ++i) {
			functions[i].start = code + 16 * i;
			functions[i].size = 16;
			functions[i].instructions = bytes({0x0E}) + uleb(i + 1);
		}
		const Table_image image(functions);
		for (unsigned int i = 0; i < 16 * count; ++i) {
			Frame_rules rules;
			ASSERT_TRUE(find_frame_rules(image.table(), image.address(code + i), rules));
			ASSERT_EQ(rules.cfa_offset, i / 16 + 1);
		}
	}
}

TEST(Frame_table, RunsEveryInstruction) {
	struct Case {
		const char* name;
		Bytes instructions;
		const char* rules;
	};
	const Case cases[] = {
		{"none", {}, "cfa=7+8 16=[-8]"},
		{"nop", bytes({0, 0, 0}), "cfa=7+8 16=[-8]"},
		// CFA
		{"def_cfa", bytes({0x0C, 6, 16}), "cfa=6+16 16=[-8]"},
		{"def_cfa_register", bytes({0x0D, 6}), "cfa=6+8 16=[-8]"},
		{"def_cfa_offset", bytes({0x0E, 0x80, 1}), "cfa=7+128 16=[-8]"},
		{"def_cfa_sf", bytes({0x12, 6, 0x7E}), "cfa=6+16 16=[-8]"},
		{"def_cfa_offset_sf", bytes({0x13, 0x7D}), "cfa=7+24 16=[-8]"},
		{"def_cfa_expression", bytes({0x0F, 2, 0x77, 0}), "cfa=expression 16=[-8]"},
		{"register again", bytes({0x0F, 2, 0x77, 0, 0x0C, 7, 8}), "cfa=7+8 16=[-8]"},
		// registers
		{"offset", bytes({0x86, 2}), "cfa=7+8 6=[-16] 16=[-8]"},
		{"offset_extended", bytes({0x05, 3, 3}), "cfa=7+8 3=[-24] 16=[-8]"},
		{"offset_extended_sf", bytes({0x11, 3, 0x7F}), "cfa=7+8 3=[8] 16=[-8]"},
		{"negative_offset_extended", bytes({0x2F, 3, 3}), "cfa=7+8 3=[24] 16=[-8]"},
		{"val_offset", bytes({0x14, 3, 2}), "cfa=7+8 3=-16 16=[-8]"},
		{"val_offset_sf", bytes({0x15, 3, 0x7E}), "cfa=7+8 3=16 16=[-8]"},
		{"register", bytes({0x09, 3, 12}), "cfa=7+8 3=r12 16=[-8]"},
		{"undefined", bytes({0x07, 16}), "cfa=7+8 16=undefined"},
		{"same_value", bytes({0x08, 16}), "cfa=7+8"},
		{"expression", bytes({0x10, 3, 1, 0x50}), "cfa=7+8 3=[expression] 16=[-8]"},
		{"val_expression", bytes({0x16, 3, 1, 0x50}), "cfa=7+8 3=expression 16=[-8]"},
		{"restore to none", bytes({0x86, 2, 0xC6}), "cfa=7+8 16=[-8]"},
		{"restore to the first", bytes({0x90, 5, 0xD0}), "cfa=7+8 16=[-8]"},
		{"restore_extended", bytes({0x05, 3, 3, 0x06, 3}), "cfa=7+8 16=[-8]"},
		{"args_size", bytes({0x2E, 0x90, 1, 0x86, 2}), "cfa=7+8 6=[-16] 16=[-8]"},
		// vector registers are passed over
		{"offset of xmm", bytes({0x91, 2, 0xA0, 3}), "cfa=7+8 16=[-8]"},
		{"register of xmm", bytes({0x09, 17, 18}), "cfa=7+8 16=[-8]"},
		{"restore of xmm", bytes({0xD1}), "cfa=7+8 16=[-8]"},
		{"expression of xmm", bytes({0x10, 20, 1, 0x50, 0x86, 2}), "cfa=7+8 6=[-16] 16=[-8]"},
		// states
		{"remember and restore", bytes({0x0A, 0x86, 2, 0x0E, 64, 0x0B}), "cfa=7+8 16=[-8]"},
		{"two states", bytes({0x0A, 0x0E, 24, 0x0A, 0x0E, 64, 0x0B, 0x83, 3}),
	     "cfa=7+24 3=[-24] 16=[-8]"},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		Frame_rules rules;
		ASSERT_TRUE(rules_at(function_of(c.instructions), 0, rules));
		EXPECT_EQ(text_of(rules), c.rules);
	}
}

// What a common entry restores ahead of having set anything is as if nothing had been told: not
// what another table said before.
TEST(Frame_table, CommonEntryRestoresToNothing) {
	Frame_bytes before = function_of({});
	before.first_instructions = bytes({0x0C, 7, 8, 0x90, 1, 0x86, 2, 0x83, 3});
	Frame_bytes restoring = function_of({});
	restoring.first_instructions = bytes({0x0C, 7, 8, 0x90, 1, 0x86, 2, 0xC6, 0x06, 3});
	const Table_image images[] = {Table_image({before}), Table_image({restoring})};
	const char* const expected[] = {"cfa=7+8 3=[-24] 6=[-16] 16=[-8]", "cfa=7+8 16=[-8]"};
	for (const int i : {0, 1, 0, 1}) {
		Frame_rules rules;
		ASSERT_TRUE(find_frame_rules(images[i].table(), images[i].address(code), rules));
		EXPECT_EQ(text_of(rules), expected[i]);
	}
}

TEST(Frame_table, ExpressionsPointIntoTheTable) {
	Frame_rules rules;
	const Frame_bytes function =
		function_of(bytes({0x0F, 2, 0x77, 8, 0x16, 3, 3, 0x77, 0xF8, 0, 0x10, 6, 1, 0x30}));
	const Table_image image({function});
	ASSERT_TRUE(find_frame_rules(image.table(), image.address(code), rules));
	EXPECT_EQ(expression_of(reinterpret_cast<xylUInt64>(rules.cfa_expression)),
	          bytes({2, 0x77, 8}));
	EXPECT_EQ(expression_of(rules.operands[3]), bytes({3, 0x77, 0xF8, 0}));
	EXPECT_EQ(expression_of(rules.operands[6]), bytes({1, 0x30}));
}

TEST(Frame_table, StopsWhereTheAddressIs) {
	struct Case {
		const char* name;
		Bytes advance;
		unsigned int distance;
		int code_factor;
	};
	const Case cases[] = {
		{"six bits", bytes({0x41}), 1, 1},
		{"six bits, all set", bytes({0x7F}), 63, 1},
		{"with a factor", bytes({0x44}), 16, 4},
		{"8 bits", bytes({0x02, 200}), 200, 1},
		{"16 bits", bytes({0x03}) + raw<unsigned short>(50000), 50000, 1},
		{"32 bits", bytes({0x04}) + raw(0x12345), 0x12345, 1},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		Frame_bytes function = function_of(c.advance + bytes({0x0E, 16, 0x41, 0x0E, 24}));
		function.code_factor = c.code_factor;
		const auto cfa_offset_at = [&](unsigned int offset) {
			Frame_rules rules;
			return rules_at(function, offset, rules) ? rules.cfa_offset : 0;
		};
		const auto step = static_cast<unsigned int>(c.code_factor);
		EXPECT_EQ(cfa_offset_at(0), 8u);
		EXPECT_EQ(cfa_offset_at(c.distance - 1), 8u);
		EXPECT_EQ(cfa_offset_at(c.distance), 16u);
		EXPECT_EQ(cfa_offset_at(c.distance + step - 1), 16u);
		EXPECT_EQ(cfa_offset_at(c.distance + step), 24u);
	}
}

TEST(Frame_table, SetLocMovesToAnAddress) {
	Frame_bytes function = function_of({});
	function.augmentation_data = bytes({0x33}); // relative to the index, 32 bits
	function.start_bytes = raw(code);
	function.instructions = bytes({0x01}) + raw(code + 5) + bytes({0x0E, 16});
	Frame_rules rules;
	ASSERT_TRUE(rules_at(function, 4, rules));
	EXPECT_EQ(rules.cfa_offset, 8u);
	ASSERT_TRUE(rules_at(function, 5, rules));
	EXPECT_EQ(rules.cfa_offset, 16u);
}

TEST(Frame_table, ReadsEveryPointerForm) {
	struct Case {
		const char* name;
		int encoding;
		Bytes start, size;
	};
	const Case cases[] = {
		{"index, 16 bits", 0x32, raw<unsigned short>(0xF000), raw<unsigned short>(0x100)},
		{"index, 32 bits", 0x33, raw(0xF000), raw(0x100)},
		{"index, 64 bits", 0x34, raw(0xF000ULL), raw(0x100ULL)},
		{"index, signed 16 bits", 0x3A, raw<short>(0x7000), raw<short>(0x100)},
		{"index, signed 32 bits", 0x3B, raw(0xF000), raw(0x100)},
		{"index, signed 64 bits", 0x3C, raw(0xF000ULL), raw(0x100ULL)},
		{"index, ULEB", 0x31, uleb(0xF000), uleb(0x100)},
		{"index, SLEB", 0x39, sleb(0xF000), sleb(0x100)},
		{"index, address", 0x30, raw(0xF000ULL), raw(0x100ULL)},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		Frame_bytes function = function_of({});
		function.start = c.encoding == 0x3A ? 0x7000 : 0xF000;
		function.augmentation_data = bytes({c.encoding});
		function.start_bytes = c.start;
		function.size_bytes = c.size;
		const Table_image image({function});
		Frame_rules rules;
		EXPECT_TRUE(find_frame_rules(image.table(), image.address(function.start), rules));
		EXPECT_TRUE(find_frame_rules(image.table(), image.address(function.start + 0xFF), rules));
		EXPECT_FALSE(find_frame_rules(image.table(), image.address(function.start + 0x100), rules));
	}
}

TEST(Frame_table, ReadsEveryAugmentation) {
	struct Case {
		const char* name;
		Bytes letters, data;
		bool is_signal_frame;
	};
	const Case cases[] = {
		{"pointers", "zR", bytes({0x1B}), false},
		{"signal frame", "zRS", bytes({0x1B}), true},
		{"signal frame first", "zSR", bytes({0x1B}), true},
		{"branch protection", "zRB", bytes({0x1B}), false},
		{"language data", "zLR", bytes({0x1B, 0x1B}), false},
		{"personality of 32 bits", "zPLR", bytes({0x9B, 1, 2, 3, 4, 0x1B, 0x1B}), false},
		{"personality of 64 bits", "zPR", bytes({0x00, 1, 2, 3, 4, 5, 6, 7, 8, 0x1B}), false},
		{"more data than letters", "zR", bytes({0x1B, 1, 2}), false},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		Frame_bytes function = function_of({});
		function.augmentation = c.letters;
		function.augmentation_data = c.data;
		Frame_rules rules;
		ASSERT_TRUE(rules_at(function, 0, rules));
		EXPECT_EQ(rules.is_signal_frame, c.is_signal_frame);
		EXPECT_EQ(text_of(rules), "cfa=7+8 16=[-8]");
	}
}

TEST(Frame_table, ReadsEntriesOfVersion3) {
	Frame_bytes function = function_of({});
	function.version = 3;
	Frame_rules rules;
	EXPECT_TRUE(rules_at(function, 0, rules));
}

TEST(Frame_table, RefusesWhatMakesNoSense) {
	struct Case {
		const char* name;
		void (*damage)(Frame_bytes&);
	};
	const Case cases[] = {
		{"version", [](Frame_bytes& f) { f.version = 2; }},
		{"unknown letter", [](Frame_bytes& f) { f.augmentation = "zXR"; }},
		{"letters without z", [](Frame_bytes& f) { f.augmentation = "R"; }},
		{"too little data", [](Frame_bytes& f) { f.augmentation_data.clear(); }},
		{"other return register", [](Frame_bytes& f) { f.return_register = 8; }},
		{"indirect pointers", [](Frame_bytes& f) { f.augmentation_data = bytes({0x9B}); }},
		{"omitted pointers", [](Frame_bytes& f) { f.augmentation_data = bytes({0xFF}); }},
		{"aligned pointers", [](Frame_bytes& f) { f.augmentation_data = bytes({0x50}); }},
		{"unknown form", [](Frame_bytes& f) { f.augmentation_data = bytes({0x15}); }},
		{"unknown instruction", [](Frame_bytes& f) { f.instructions = bytes({0x17, 0}); }},
		{"cut operand", [](Frame_bytes& f) { f.instructions = bytes({0x04, 1, 2}); }},
		{"endless number", [](Frame_bytes& f) { f.instructions = bytes({0x0E, 0x80}); }},
		{"cut expression", [](Frame_bytes& f) { f.instructions = bytes({0x0F, 9, 0x77}); }},
		{"no such CFA register", [](Frame_bytes& f) { f.instructions = bytes({0x0D, 17}); }},
		{"no such source register", [](Frame_bytes& f) { f.instructions = bytes({9, 3, 17}); }},
		{"no state to restore", [](Frame_bytes& f) { f.instructions = bytes({0x0B}); }},
		{"too many states", [](Frame_bytes& f) { f.instructions = Bytes(9, 0x0A); }},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		Frame_bytes function = function_of({});
		c.damage(function);
		Frame_rules rules;
		EXPECT_FALSE(rules_at(function, 0, rules));
	}
}

TEST(Frame_table, RefusesADamagedIndex) {
	const Bytes whole = Table_image({function_of({})}).content();
	struct Case {
		const char* name;
		size_t place;
		Bytes bytes;
	};
	const Case cases[] = {
		{"version", 0, bytes({2})},
		{"form of the count", 2, bytes({0xFF})},
		{"form of the entries", 3, bytes({0x1B})},
		{"no entries", 8, raw(0)},
		{"more entries than bytes", 8, raw(1000)},
		{"function behind the end", 16, raw(0x7FFFFFF0)},
		{"function before the image", 16, raw(-16)},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		Bytes damaged = whole;
		damaged.replace(c.place, c.bytes.size(), c.bytes);
		const Table_image image(damaged);
		Frame_rules rules;
		EXPECT_FALSE(find_frame_rules(image.table(), image.address(code), rules));
	}
	const Table_image image(whole);
	Frame_rules rules;
	EXPECT_TRUE(find_frame_rules(image.table(), image.address(code), rules));
}

// Under the address sanitizer, a byte read too far ends the test.
TEST(Frame_table, ReadsNothingOutsideOfACutImage) {
	const Bytes whole =
		Table_image({function_of(bytes({0x41, 0x0E, 16, 0x0F, 2, 0x77, 8, 0x86, 2}))}).content();
	for (size_t size = 0; size < whole.size(); ++size) {
		const Table_image image(whole.substr(0, size));
		Frame_rules rules;
		const bool found = find_frame_rules(image.table(), image.address(code + 1), rules);
		EXPECT_EQ(found, size >= whole.size() - 4) << size; // without the end mark it is whole
	}
}

TEST(Frame_table, StaysInsideOfADamagedImage) {
	Frame_bytes function =
		function_of(bytes({0x41, 0x0E, 16, 0x0F, 2, 0x77, 8, 0x0A, 0x86, 2, 0x0B}));
	function.augmentation = "zPLR";
	function.augmentation_data = bytes({0x9B, 1, 2, 3, 4, 0x1B, 0x1B});
	const Bytes whole = Table_image({function, function}).content();
	std::mt19937 random(11);
	int found = 0;
	for (int i = 0; i < 20000; ++i) {
		Bytes damaged = whole;
		for (int changes = 0; changes < 1 + i % 4; ++changes) {
			damaged[random() % damaged.size()] = static_cast<char>(random());
		}
		const Table_image image(damaged);
		Frame_rules rules;
		found += find_frame_rules(image.table(), image.address(code + 1), rules);
	}
	EXPECT_GT(found, 0); // damage to what isn't looked at
	EXPECT_LT(found, 20000);
}
