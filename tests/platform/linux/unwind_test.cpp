// A context that a walk has moved is one that the processor can go on with.
#include <morvantis/platform/system/unwind.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <dlfcn.h>
#include <linux/seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <ucontext.h>
#include <unistd.h>
#include <unwind.h>

namespace hand_made {

// A function of one byte whose unwind data say what no compiler would, or would rarely.
#define HAND_MADE(name, rules)                                                                     \
	extern "C" [[gnu::visibility("hidden")]] void name();                                          \
	asm(".pushsection .text\n.globl " #name "\n.hidden " #name "\n.type " #name                    \
	    ", @function\n" #name ":\n.cfi_startproc\n" rules "\nnop\n.cfi_endproc\n.size " #name      \
	    ", 1\n.popsection\n")

// By DWARF's numbers: 0 rax, 3 rbx, 6 rbp, 7 rsp, 12 to 15 themselves, 16 the return address.
HAND_MADE(all_on_rsp, ".cfi_def_cfa_offset 128\n.cfi_offset 3, -16\n.cfi_offset 6, -24\n"
                      ".cfi_offset 12, -32\n.cfi_offset 13, -40\n.cfi_offset 14, -48\n"
                      ".cfi_offset 15, -56");
HAND_MADE(all_on_rbp, ".cfi_def_cfa 6, 16\n.cfi_offset 6, -16\n.cfi_offset 15, -24\n"
                      ".cfi_offset 14, -32\n.cfi_offset 13, -40\n.cfi_offset 12, -48\n"
                      ".cfi_offset 3, -56");
HAND_MADE(farthest_packed, ".cfi_def_cfa_offset 512\n.cfi_offset 3, -248\n.cfi_offset 15, -248");
HAND_MADE(too_far, ".cfi_def_cfa_offset 512\n.cfi_offset 6, -256\n.cfi_offset 3, -264");
HAND_MADE(above, ".cfi_def_cfa_offset 64\n.cfi_offset 3, 8");
HAND_MADE(largest_packed, ".cfi_def_cfa_offset 0x7FFFF8");
HAND_MADE(too_large, ".cfi_def_cfa_offset 0x800008");
HAND_MADE(odd_offset, ".cfi_def_cfa_offset 20");
HAND_MADE(on_another_register, ".cfi_def_cfa 3, 16");
HAND_MADE(pc_elsewhere, ".cfi_def_cfa_offset 64\n.cfi_offset 16, -24");
HAND_MADE(scratch_saved, ".cfi_def_cfa_offset 64\n.cfi_offset 0, -16");
HAND_MADE(in_a_register, ".cfi_def_cfa_offset 64\n.cfi_register 3, 12");
HAND_MADE(as_a_value, ".cfi_def_cfa_offset 64\n.cfi_escape 0x14, 3, 2"); // val_offset
HAND_MADE(rsp_itself_saved, ".cfi_def_cfa_offset 64\n.cfi_offset 7, -16");
HAND_MADE(lost, ".cfi_def_cfa_offset 64\n.cfi_undefined 3\n.cfi_same_value 6");
HAND_MADE(by_expression, ".cfi_escape 0x0F, 3, 0x77, 0xC0, 0"); // rsp + 64
HAND_MADE(senseless_expression, ".cfi_escape 0x0F, 1, 0x01");   // an operation that isn't one
HAND_MADE(senseless_rules, ".cfi_escape 0x0B"); // restores a state that nothing remembered
HAND_MADE(plain, "");
HAND_MADE(signal_frame, ".cfi_signal_frame");
HAND_MADE(never_seen, ".cfi_def_cfa_offset 64\n.cfi_offset 3, 8");
HAND_MADE(no_caller, ".cfi_undefined 16");
// Side by side.
HAND_MADE(in_front, ".cfi_def_cfa_offset 64");
HAND_MADE(behind, "");
#undef HAND_MADE

// Calls as its last instruction. What the call returns to is another function, which brings the
// stack back and claims to have a frame of another size.
extern "C" [[gnu::visibility("hidden")]] void call_at_the_end(void (*work)());
asm(R"(
	.pushsection .text
	.globl call_at_the_end
	.hidden call_at_the_end
	.type call_at_the_end, @function
call_at_the_end:
	.cfi_startproc
	subq $24, %rsp
	.cfi_adjust_cfa_offset 24
	call *%rdi
	.cfi_endproc
	.size call_at_the_end, . - call_at_the_end
	.type behind_the_call, @function
behind_the_call:
	.cfi_startproc
	.cfi_def_cfa_offset 4096
	addq $24, %rsp
	ret
	.cfi_endproc
	.size behind_the_call, . - behind_the_call
	.popsection
)");

// Finds its frame by rbx, which takes all registers to follow.
extern "C" [[gnu::visibility("hidden")]] void call_on_rbx(void (*work)());
asm(R"(
	.pushsection .text
	.globl call_on_rbx
	.hidden call_on_rbx
	.type call_on_rbx, @function
call_on_rbx:
	.cfi_startproc
	pushq %rbx
	.cfi_adjust_cfa_offset 8
	.cfi_offset %rbx, -16
	movq %rsp, %rbx
	.cfi_def_cfa_register %rbx
	call *%rdi
	popq %rbx
	.cfi_def_cfa %rsp, 8
	ret
	.cfi_endproc
	.size call_on_rbx, . - call_on_rbx
	.popsection
)");

} // namespace hand_made

namespace {

ucontext_t moved;
unsigned int steps_to_take;
volatile int left_to_do;
std::string way;

// A frame that is left this way never cleans up the marks of the address sanitizer.
#define LEFT_WITHOUT_RETURN [[gnu::noinline, gnu::no_sanitize_address]]

// Takes its own context, moves it out of some frames and goes on there.
LEFT_WITHOUT_RETURN void leave(int a, int b, int c, int d) {
	getcontext(&moved);
	os::Unwind_step steps[8];
	EXPECT_EQ(os::walk_context(&moved, steps, steps_to_take), steps_to_take);
	way += "left ";
	setcontext(&moved);
	left_to_do = a + b + c + d; // never reached
	way += "stayed ";
}

// Keeps values across the call, which the compiler puts where a call preserves them.
LEFT_WITHOUT_RETURN void inner(int a, int b, int c, int d) {
	leave(a, b, c, d);
	way += "inner " + std::to_string(a + 10 * b + 100 * c + 1000 * d) + " ";
}

[[gnu::noinline]] void outer(int a, int b, int c, int d) {
	inner(1, 2, 3, 4);
	way += "outer " + std::to_string(a + 10 * b + 100 * c + 1000 * d) + " ";
}

xylUInt64 address_of(void (*function)()) { return reinterpret_cast<xylUInt64>(function); }

// Registers and a stack whose values tell where they come from.
class Numbered_thread {
public:
	Numbered_thread() : memory_((0x800000 + 0x1000) / 8) {
		for (size_t i = 0; i < memory_.size(); ++i) memory_[i] = word(i);
	}
	// What lies on the stack, and where.
	static xylUInt64 word(size_t index) { return 0xA000000000000000 + 0x100000001 * index; }
	xylUInt64 place(size_t index) const { return reinterpret_cast<xylUInt64>(&memory_[index]); }
	void put(size_t index, xylUInt64 value) { memory_[index] = value; }

	// Sets all registers.
	void start(void (*function)()) {
		for (unsigned int i = 0; i < 16; ++i) at(i) = 0xB000 + i;
		at(3) = static_cast<greg_t>(place(128));
		at(6) = static_cast<greg_t>(place(64));
		at(7) = static_cast<greg_t>(place(0));
		at(16) = static_cast<greg_t>(address_of(function));
	}
	std::vector<xylUInt64> registers() {
		std::vector<xylUInt64> values;
		for (unsigned int i = 0; i < 17; ++i) values.push_back(static_cast<xylUInt64>(at(i)));
		return values;
	}
	ucontext_t* context() { return &context_; }
	std::vector<os::Unwind_step> walk(unsigned int room) {
		std::vector<os::Unwind_step> steps(room);
		steps.resize(os::walk_context(&context_, steps.data(), room));
		return steps;
	}

private:
	greg_t& at(unsigned int number) {
		static constexpr int order[] = {REG_RAX, REG_RDX, REG_RCX, REG_RBX, REG_RSI, REG_RDI,
		                                REG_RBP, REG_RSP, REG_R8,  REG_R9,  REG_R10, REG_R11,
		                                REG_R12, REG_R13, REG_R14, REG_R15, REG_RIP};
		return context_.uc_mcontext.gregs[order[number]];
	}

	std::vector<xylUInt64> memory_;
	ucontext_t context_{};
};

// Return addresses from the calling function's own on, as the compiler's walk has them.
std::vector<xylUInt64> compilers_walk() {
	std::vector<xylUInt64> addresses;
	_Unwind_Backtrace(
		[](_Unwind_Context* context, void* data) {
			static_cast<std::vector<xylUInt64>*>(data)->push_back(_Unwind_GetIP(context));
			return _URC_NO_REASON;
		},
		&addresses);
	return {addresses.begin() + 1, addresses.end()};
}

} // namespace

TEST(Unwind, MovesAContextThatRunsOn) {
	struct Case {
		unsigned int steps;
		const char* way;
	};
	const Case cases[] = {{1, "left inner 4321 outer 8765 "}, {2, "left outer 8765 "}};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.steps);
		steps_to_take = c.steps;
		way.clear();
		outer(5, 6, 7, 8);
		EXPECT_EQ(way, c.way);
	}
}

TEST(Unwind, TakesNoMoreStepsThanThereIsRoomFor) {
	os::Unwind_step steps[4] = {};
	EXPECT_EQ(os::walk_callers(steps, 0), 0u);
	EXPECT_EQ(steps[0].pc, 0u);
	EXPECT_EQ(os::walk_callers(steps, 3), 3u);
	EXPECT_NE(steps[2].pc, 0u);
	EXPECT_EQ(steps[3].pc, 0u);
}

TEST(Unwind, LeavesAContextWithoutInstructionAlone) {
	ucontext_t context{}, before{};
	os::Unwind_step step;
	EXPECT_EQ(os::walk_context(&context, &step, 1), 0u);
	EXPECT_EQ(std::memcmp(&context, &before, sizeof(before)), 0);
}

TEST(Unwind, FollowsEveryRule) {
	using namespace hand_made;
	Numbered_thread thread;
	const auto word = &Numbered_thread::word;
	const auto place = [&](size_t index) { return thread.place(index); };
	struct Case {
		const char* name;
		void (*function)();
		std::vector<std::pair<unsigned int, xylUInt64>> caller; // the others stay
		bool has_base = true;
	};
	const Case cases[] = {
		{"all on rsp",
	     all_on_rsp,
	     {{7, place(16)},
	      {16, word(15)},
	      {3, word(14)},
	      {6, word(13)},
	      {12, word(12)},
	      {13, word(11)},
	      {14, word(10)},
	      {15, word(9)}}},
		{"all on rbp",
	     all_on_rbp,
	     {{7, place(66)},
	      {16, word(65)},
	      {6, word(64)},
	      {15, word(63)},
	      {14, word(62)},
	      {13, word(61)},
	      {12, word(60)},
	      {3, word(59)}}},
		{"31 words below",
	     farthest_packed,
	     {{7, place(64)}, {16, word(63)}, {3, word(33)}, {15, word(33)}}},
		{"32 and 33 words below",
	     too_far,
	     {{7, place(64)}, {16, word(63)}, {6, word(32)}, {3, word(31)}}},
		{"above the CFA", above, {{7, place(8)}, {16, word(7)}, {3, word(9)}}},
		{"just below 8 MB", largest_packed, {{7, place(0xFFFFF)}, {16, word(0xFFFFE)}}},
		{"more than 8 MB", too_large, {{7, place(0x100001)}, {16, word(0x100000)}}},
		{"odd offset", odd_offset, {{7, place(0) + 20}, {16, word(1) >> 32 | word(2) << 32}}},
		{"on rbx", on_another_register, {{7, place(130)}, {16, word(129)}}},
		{"return address elsewhere", pc_elsewhere, {{7, place(8)}, {16, word(5)}}},
		{"scratch register", scratch_saved, {{7, place(8)}, {16, word(7)}, {0, word(6)}}},
		{"in a register", in_a_register, {{7, place(8)}, {16, word(7)}, {3, 0xB00C}}},
		{"as a value", as_a_value, {{7, place(8)}, {16, word(7)}, {3, place(6)}}},
		{"rsp saved", rsp_itself_saved, {{7, word(6)}, {16, word(7)}}},
		{"lost and the same", lost, {{7, place(8)}, {16, word(7)}}},
		{"by an expression", by_expression, {{7, place(8)}, {16, word(7)}}},
		{"signal frame", signal_frame, {{7, place(1)}, {16, word(0)}}},
		{"no caller", no_caller, {{16, 0}}},
		// like no rules at all
		{"senseless expression", senseless_expression, {{7, place(1)}, {16, word(0)}}},
		{"senseless rules", senseless_rules, {{7, place(1)}, {16, word(0)}}, false},
	};
	Dl_info program;
	ASSERT_NE(dladdr(reinterpret_cast<void*>(behind), &program), 0);
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		for (const bool is_known : {false, true}) { // by what the first walk left behind
			SCOPED_TRACE(is_known);
			thread.start(c.function);
			std::vector<xylUInt64> expected = thread.registers();
			for (const auto& [number, value] : c.caller) expected[number] = value;
			const std::vector<os::Unwind_step> steps = thread.walk(1);
			ASSERT_EQ(steps.size(), 1u);
			EXPECT_EQ(steps[0].pc, address_of(c.function));
			EXPECT_EQ(steps[0].base,
			          c.has_base ? reinterpret_cast<xylUInt64>(program.dli_fbase) : 0);
			EXPECT_EQ(thread.registers(), expected);
		}
	}
}

// The place in front of a return address is looked up, since a call may be a function's last
// instruction; but what a signal interrupted is looked up itself, since it may be a first one.
TEST(Unwind, LooksUpTheCallOrWhatWasInterrupted) {
	using namespace hand_made;
	struct Case {
		const char* name;
		void (*function)();
		size_t second; // whose word is the address of the third frame
	};
	const Case cases[] = {{"called", plain, 1 + 7}, {"interrupted", signal_frame, 1}};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		for (const bool is_known : {false, true}) {
			SCOPED_TRACE(is_known);
			Numbered_thread thread;
			thread.start(c.function);
			thread.put(0, address_of(behind));
			thread.put(c.second, address_of(behind)); // always a return address
			const std::vector<os::Unwind_step> steps = thread.walk(3);
			ASSERT_EQ(steps.size(), 3u);
			EXPECT_EQ(steps[1].pc, address_of(behind));
			EXPECT_EQ(steps[2].pc, address_of(behind));
			EXPECT_EQ(thread.registers()[16], Numbered_thread::word(c.second + 8));
			EXPECT_EQ(thread.registers()[7], thread.place(c.second + 9));
		}
	}
}

TEST(Unwind, WalksFromCallsThatNoCompilerMakes) {
	using Call = void (*)(void (*work)());
	static std::vector<xylUInt64> ours, theirs;
	for (const Call call : {hand_made::call_at_the_end, hand_made::call_on_rbx}) {
		SCOPED_TRACE(call == hand_made::call_on_rbx);
		for (const bool is_known : {false, true}) {
			SCOPED_TRACE(is_known);
			ours.clear();
			call([] {
				os::Unwind_step steps[64];
				const unsigned int count = os::walk_callers(steps, 64);
				for (unsigned int i = 0; i < count; ++i) ours.push_back(steps[i].pc);
				theirs = compilers_walk();
			});
			ASSERT_GT(ours.size(), 4u);
			ASSERT_GT(theirs.size(), 4u);
			EXPECT_NE(ours[0], ours[1]);
			EXPECT_TRUE(std::equal(ours.begin() + 1, ours.begin() + 4, theirs.begin() + 1));
		}
	}
}

// In a process that the kernel ends at its first call but for the one that ends it.
TEST(Unwind, MakesNoSystemCall) {
	constexpr int refused = 77;
	constexpr unsigned int room = 64;
	void* const shared =
		mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
	ASSERT_NE(shared, MAP_FAILED);
	auto* const counts = static_cast<volatile unsigned int*>(shared);
	Numbered_thread thread;
	thread.start(hand_made::never_seen);
	std::vector<os::Unwind_step> steps(room);
	// Not by fork(), behind which a sanitizer may start a thread.
	const auto child = static_cast<pid_t>(syscall(SYS_fork));
	if (child == 0) {
		if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) != 0) _exit(refused);
		counts[0] = os::walk_callers(steps.data(), room);
		counts[1] = os::walk_context(thread.context(), steps.data(), 2);
		asm volatile("syscall" : : "a"(SYS_exit), "D"(0) : "rcx", "r11", "memory");
	}
	int status = 0;
	ASSERT_EQ(waitpid(child, &status, 0), child);
	const unsigned int callers = counts[0], in_context = counts[1];
	munmap(shared, 4096);
	if (WIFEXITED(status) && WEXITSTATUS(status) == refused) {
		GTEST_SKIP() << "the kernel doesn't let a process give up its calls";
	}
	EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
	EXPECT_GT(callers, 3u);
	EXPECT_EQ(in_context, 2u);
}
