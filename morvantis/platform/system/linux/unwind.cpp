// Three ways lead out of a frame. The common one takes the packed rules of the cache, which is what
// makes a walk cheap; the rare one reads the image's table and fills the cache; and what the packed
// form can't hold (signal frames, expressions) is read from the table every time.
//
// A walk that hands no context back follows rip, rsp and rbp only. Where a frame needs another
// register, it is made again from its start with all of them.
#include <morvantis/platform/system/unwind.h>

#include <morvantis/platform/system/linux/build_id.h>
#include <morvantis/platform/system/linux/frame_cache.h>
#include <morvantis/platform/system/linux/frame_table.h>

#include <cstring>

#include <dlfcn.h>
#include <ucontext.h>

// Stores the registers that a call preserves as the caller has them behind this call. A few stores
// where getcontext() would ask the kernel for the signal mask.
extern "C" [[gnu::visibility("hidden")]] void
morvantis_save_frame_registers(os::Frame_registers* registers);

asm(R"(
	.pushsection .text
	.p2align 4
	.hidden morvantis_save_frame_registers
	.globl morvantis_save_frame_registers
	.type morvantis_save_frame_registers, @function
morvantis_save_frame_registers:
	.cfi_startproc
	movq %rbx, 24(%rdi)
	movq %rbp, 48(%rdi)
	leaq 8(%rsp), %rax
	movq %rax, 56(%rdi)
	movq %r12, 96(%rdi)
	movq %r13, 104(%rdi)
	movq %r14, 112(%rdi)
	movq %r15, 120(%rdi)
	movq (%rsp), %rax
	movq %rax, 128(%rdi)
	ret
	.cfi_endproc
	.size morvantis_save_frame_registers, . - morvantis_save_frame_registers
	.popsection
)");

namespace os {
namespace {

constinit Frame_cache cache{};

// A stack's own words, which a sanitizer may have fenced off from its functions.
[[gnu::no_sanitize_address, gnu::no_sanitize_thread]] inline xylUInt64
load_word(xylUInt64 address) {
	xylUInt64 word;
	std::memcpy(&word, reinterpret_cast<const void*>(address), sizeof(word));
	return word;
}

// Reads whatever the rules point to.
[[gnu::no_sanitize_address, gnu::no_sanitize_thread]] bool
read_memory(xylUInt64 address, unsigned int size, xylUInt64& value) {
	const auto* const bytes = reinterpret_cast<const unsigned char*>(address);
	value = 0;
	for (unsigned int i = 0; i < size; ++i) value |= static_cast<xylUInt64>(bytes[i]) << (8 * i);
	return true;
}

// The image of an address; size 0 where there is none, or none with an unwind table.
Frame_image image_of(xylUInt64 address) {
	dl_find_object found;
	if (_dl_find_object(reinterpret_cast<void*>(address), &found) != 0 || !found.dlfo_eh_frame) {
		return {};
	}
	const auto base = reinterpret_cast<xylUInt64>(found.dlfo_map_start);
	return {base, reinterpret_cast<xylUInt64>(found.dlfo_map_end) - base,
	        reinterpret_cast<xylUInt64>(found.dlfo_eh_frame)};
}

constexpr struct {
	Frame_register number;
	unsigned int shift;
} packed_registers[] = {{frame_rbp, packed_rbp_shift},
                        {frame_rbx, packed_rbp_shift + packed_slot_width},
                        {frame_r12, packed_rbp_shift + 2 * packed_slot_width},
                        {frame_r13, packed_rbp_shift + 3 * packed_slot_width},
                        {frame_r14, packed_rbp_shift + 4 * packed_slot_width},
                        {frame_r15, packed_rbp_shift + 5 * packed_slot_width}};

constexpr bool is_preserved(unsigned int number) {
	for (const auto& packed : packed_registers) {
		if (packed.number == number) return true;
	}
	return false;
}

constexpr xylUInt64 below(xylUInt64 words) { return 0 - 8 * words; }

// Rules in the form of the cache, or frame_uncommon.
Packed_frame pack(const Frame_rules& rules) {
	if (rules.kinds[frame_pc] == Frame_rule_kind::undefined) return frame_last;
	const bool on_rbp = rules.cfa_register == frame_rbp;
	if (rules.is_signal_frame || rules.cfa_is_expression ||
	    (!on_rbp && rules.cfa_register != frame_rsp) ||
	    (rules.cfa_offset & ~packed_offset_bits) != 0 ||
	    rules.kinds[frame_pc] != Frame_rule_kind::at_offset ||
	    rules.operands[frame_pc] != below(1)) {
		return frame_uncommon;
	}
	Packed_frame frame = rules.cfa_offset | (on_rbp ? frame_on_rbp : frame_on_rsp);
	for (unsigned int i = 0; i < frame_pc; ++i) {
		const bool is_same =
			rules.kinds[i] == Frame_rule_kind::same || rules.kinds[i] == Frame_rule_kind::undefined;
		if (!is_same && !is_preserved(i)) return frame_uncommon;
	}
	for (const auto& [number, shift] : packed_registers) {
		const Frame_rule_kind kind = rules.kinds[number];
		if (kind == Frame_rule_kind::same || kind == Frame_rule_kind::undefined) continue;
		const xylUInt64 words = (0 - rules.operands[number]) / 8;
		if (kind != Frame_rule_kind::at_offset || words == 0 || words > packed_slot_bits ||
		    rules.operands[number] != below(words)) {
			return frame_uncommon;
		}
		frame |= words << shift;
	}
	return frame;
}

bool read_rules(xylUInt64 address, const Frame_image& image, Frame_rules& rules) {
	const auto place = [](xylUInt64 value) {
		return reinterpret_cast<const unsigned char*>(value);
	};
	const Frame_table table{place(image.table), place(image.base), place(image.base + image.size)};
	return find_frame_rules(table, address, rules);
}

// The way out of a frame that the cache doesn't know. An image without build id can't be told from
// another one at its address, so its frames are looked up each time.
[[gnu::noinline]] Packed_frame learn(xylUInt64 address, Frame_image image) {
	Frame_rules rules;
	const Packed_frame frame = read_rules(address, image, rules) ? pack(rules) : frame_leaf;
	const unsigned char* const build_id =
		find_build_id(reinterpret_cast<const unsigned char*>(image.base));
	if (build_id) cache.store(address, image, build_id, frame);
	return frame;
}

xylUInt64 packed_slot(Packed_frame frame, unsigned int shift) {
	return (frame >> shift) & packed_slot_bits;
}

// What it takes to walk on where no context is handed back.
class Short_registers {
public:
	Short_registers(xylUInt64 pc, xylUInt64 sp, xylUInt64 bp) : pc_(pc), sp_(sp), bp_(bp) {}

	xylUInt64 pc() const { return pc_; }
	void end() { pc_ = 0; }
	xylUInt64 sp() const { return sp_; }
	xylUInt64 bp() const { return bp_; }
	void leave_common(Packed_frame frame, xylUInt64 base) {
		sp_ = base + (frame & packed_offset_bits);
		pc_ = load_word(sp_ - 8);
		const xylUInt64 words = packed_slot(frame, packed_rbp_shift);
		if (words != 0) bp_ = load_word(sp_ - 8 * words);
	}
	void leave_leaf() {
		pc_ = load_word(sp_);
		sp_ += 8;
	}
	static bool leave_uncommon(xylUInt64, Frame_image, bool&) { return false; }

private:
	xylUInt64 pc_, sp_, bp_;
};

// All of them.
struct Whole_registers {
	Frame_registers all;

	xylUInt64 pc() const { return all.value[frame_pc]; }
	void end() { all.value[frame_pc] = 0; }
	xylUInt64 sp() const { return all.value[frame_rsp]; }
	xylUInt64 bp() const { return all.value[frame_rbp]; }
	void leave_common(Packed_frame frame, xylUInt64 base) {
		const xylUInt64 caller_sp = base + (frame & packed_offset_bits);
		all.value[frame_rsp] = caller_sp;
		all.value[frame_pc] = load_word(caller_sp - 8);
		for (const auto& [number, shift] : packed_registers) {
			const xylUInt64 words = packed_slot(frame, shift);
			if (words != 0) all.value[number] = load_word(caller_sp - 8 * words);
		}
	}
	void leave_leaf() {
		all.value[frame_pc] = load_word(all.value[frame_rsp]);
		all.value[frame_rsp] += 8;
	}
	// `called` becomes what holds for the caller's address.
	bool leave_uncommon(xylUInt64 address, Frame_image image, bool& called) {
		Frame_rules rules;
		if (read_rules(address, image, rules) && apply_frame_rules(rules, all, read_memory)) {
			called = !rules.is_signal_frame;
		} else {
			leave_leaf();
		}
		return true;
	}
};

// A walk that goes on where it stopped.
template <typename Registers> struct Walk {
	Registers registers;
	// registers.pc is a return address: a call may be its function's last instruction, so the place
	// before counts.
	bool called;
	// Of the last step. It serves the next ones inside it: it can't go while it has a frame here.
	Frame_image image{};
	unsigned int count = 0; // steps that the last run() took

	// False where the registers are too few to go on.
	bool run(Unwind_step* steps, unsigned int room) {
		for (count = 0; count < room && registers.pc() != 0; ++count) {
			const xylUInt64 address = registers.pc() - (called ? 1 : 0);
			if (address - image.base >= image.size) image = image_of(address);
			Packed_frame frame = image.size > 0 ? cache.find(address, image) : frame_leaf;
			if (frame == frame_unknown) frame = learn(address, image);

			const Packed_frame shape = frame & frame_shape_bits;
			steps[count] = {shape == frame_leaf ? 0 : image.base, registers.pc()};
			called = true;
			// Two branches that are foreseen and no choice of a register, which the next step's
			// address would have to wait for.
			if (shape == frame_on_rsp)
				registers.leave_common(frame, registers.sp());
			else if (shape == frame_on_rbp)
				registers.leave_common(frame, registers.bp());
			else if (shape == frame_leaf)
				registers.leave_leaf();
			else if (shape == frame_last)
				registers.end();
			else if (!registers.leave_uncommon(address, image, called))
				return false;
		}
		return true;
	}
};

// The walk of walk_callers() with all registers, which are taken here. `caller_sp` is the stack
// pointer of the frame to begin with: below it are frames of the walk itself, and whether the
// compiler left walk_callers() one isn't known.
[[gnu::noinline]] unsigned int walk_callers_whole(xylUInt64 caller_sp, Unwind_step* steps,
                                                  unsigned int room) {
	Walk<Whole_registers> walk{{}, true};
	morvantis_save_frame_registers(&walk.registers.all);
	Unwind_step own;
	while (walk.registers.sp() < caller_sp && walk.run(&own, 1) && walk.count == 1) {
	}
	walk.run(steps, room);
	return walk.count;
}

// The context's registers in the order of DWARF's numbers.
constexpr int context_order[frame_register_count] = {
	REG_RAX, REG_RDX, REG_RCX, REG_RBX, REG_RSI, REG_RDI, REG_RBP, REG_RSP, REG_R8,
	REG_R9,  REG_R10, REG_R11, REG_R12, REG_R13, REG_R14, REG_R15, REG_RIP};

} // namespace

[[gnu::noinline]] unsigned int walk_callers(Unwind_step* steps, unsigned int room) {
	// With a frame pointer, which asking for it brings about, a frame begins with the caller's
	// frame pointer and the return address.
	const auto frame = reinterpret_cast<xylUInt64>(__builtin_frame_address(0));
	const xylUInt64 caller_sp = frame + 16;
	Walk<Short_registers> walk{{load_word(frame + 8), caller_sp, load_word(frame)}, true};
	return walk.run(steps, room) ? walk.count : walk_callers_whole(caller_sp, steps, room);
}

unsigned int walk_context(void* context, Unwind_step* steps, unsigned int room) {
	greg_t* const values = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
	Walk<Whole_registers> walk{{}, false};
	for (unsigned int i = 0; i < frame_register_count; ++i) {
		walk.registers.all.value[i] = static_cast<xylUInt64>(values[context_order[i]]);
	}
	walk.run(steps, room);
	for (unsigned int i = 0; i < frame_register_count; ++i) {
		values[context_order[i]] = static_cast<greg_t>(walk.registers.all.value[i]);
	}
	return walk.count;
}

} // namespace os
