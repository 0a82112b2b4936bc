// Stacks whose frames are known, on both systems alike.
#include <morvantis/diagnostics/zubcallstack_helpers.h>
#include <morvantis/diagnostics/zubdebughelp_interface.h>
#include <morvantis/diagnostics/zubraw_callstack.h>

#include "processor_context.h"
#include "start_line.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <mutex> // lock_guard
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

// A frame is a plain record, a stack its array and no more, and the text of one frame private.
static_assert(std::is_trivial_v<zubCallstack_frame> &&
              std::is_standard_layout_v<zubCallstack_frame>);
static_assert(sizeof(zubRaw_callstack) == sizeof(xylArray<zubCallstack_frame>));
static_assert(std::is_same_v<decltype(zubRaw_callstack::stack), xylArray<zubCallstack_frame>>);
template <typename Stack>
concept Shows_one_frame = requires(const zubCallstack_frame& frame, xylVarString& out) {
	Stack::get_frame_str(frame, out);
};
static_assert(!Shows_one_frame<zubRaw_callstack>);

using Frames = std::vector<std::pair<xylUInt64, xylUInt64>>;

Frames frames_of(const zubRaw_callstack& stack) {
	Frames frames;
	for (const zubCallstack_frame& frame : stack.get_stack()) {
		frames.emplace_back(frame.module_base, frame.module_offset);
	}
	return frames;
}

xylUInt64 address_of(const zubCallstack_frame& frame) {
	return frame.module_base + frame.module_offset;
}

std::string text_of(const zubRaw_callstack& stack) { return stack.get_stack_str().char_p(); }

// A chain of functions that no compiler makes into one: each is called through a pointer that may
// change. Each calls twice from one place, first something that notes the address which that call
// returns to, so what a walk has to find is known exactly.
using Function = void (*)();
std::function<void()> innermost_work;
std::vector<xylUInt64> noted; // the last one first
volatile int calls = 2;

void note_caller() {
	zubRaw_callstack stack;
	stack.capture(nullptr, 0); // itself, this function, the caller
	ASSERT_GT(stack.get_frame_count(), 2u);
	noted.insert(noted.begin(), address_of(stack.get_stack()[2]));
}

void run_work() { innermost_work(); }

volatile Function innermost_calls[] = {note_caller, run_work};
void run_innermost() {
	for (int i = 0; i < calls; ++i) innermost_calls[i]();
}

volatile Function middle_calls[] = {note_caller, run_innermost};
void run_middle() {
	for (int i = 0; i < calls; ++i) middle_calls[i]();
}

volatile Function outermost_calls[] = {note_caller, run_middle};
void run_outermost() {
	for (int i = 0; i < calls; ++i) outermost_calls[i]();
}
volatile Function outermost = run_outermost;

int depth_left;
void run_recursion();
volatile Function recursion_calls[] = {run_work, run_recursion};
volatile int recursions;
void run_recursion() {
	recursion_calls[--depth_left > 0]();
	recursions = recursions ^ 1; // or the call would be a jump
}
volatile Function recursion = run_recursion;

// The same for several threads at once.
struct Descent {
	int left;
	zubRaw_callstack stack;
};
void descend(Descent& descent);
void capture_here(Descent& descent) { descent.stack.capture(nullptr, 0); }
void (*volatile descent_calls[])(Descent&) = {capture_here, descend};
void descend(Descent& descent) {
	descent_calls[--descent.left > 0](descent);
	descent.left = descent.left ^ 1;
}

int compare_and_work(const void* left, const void* right) {
	if (innermost_work) {
		run_innermost();
		innermost_work = nullptr;
	}
	return *static_cast<const int*>(left) - *static_cast<const int*>(right);
}

void sort_three_numbers() {
	int numbers[] = {3, 1, 2};
	std::qsort(numbers, std::size(numbers), sizeof(numbers[0]), compare_and_work);
	EXPECT_EQ(numbers[0], 1);
}

volatile Function sort_calls[] = {note_caller, sort_three_numbers};
void sort_something() {
	for (int i = 0; i < calls; ++i) sort_calls[i]();
}

std::vector<xylUInt64> addresses_of(const zubRaw_callstack& stack) {
	std::vector<xylUInt64> addresses;
	for (const zubCallstack_frame& frame : stack.get_stack())
		addresses.push_back(address_of(frame));
	return addresses;
}

// Of frames in a row that have one address, as calls from one place have.
size_t longest_run(const std::vector<xylUInt64>& addresses) {
	size_t longest = 1, length = 1;
	for (size_t i = 1; i < addresses.size(); ++i) {
		length = addresses[i] == addresses[i - 1] ? length + 1 : 1;
		longest = std::max(longest, length);
	}
	return longest;
}

// The frames that were noted, one calling the next.
bool has_noted_in_a_row(const zubRaw_callstack& stack) {
	const std::vector<xylUInt64> addresses = addresses_of(stack);
	return std::search(addresses.begin(), addresses.end(), noted.begin(), noted.end()) !=
	       addresses.end();
}

// The same with other frames between them.
bool has_noted_in_order(const zubRaw_callstack& stack) {
	size_t found = 0;
	for (const xylUInt64 address : addresses_of(stack)) {
		if (found < noted.size() && address == noted[found]) ++found;
	}
	return found == noted.size();
}

zubRaw_callstack stack_in(Function function) {
	zubRaw_callstack stack;
	innermost_work = [&] { stack.capture(nullptr, 0); };
	function();
	innermost_work = nullptr;
	return stack;
}

// An address that belongs to no image.
xylUInt64 address_outside(const std::vector<xylUInt64>& memory, size_t index) {
	return reinterpret_cast<xylUInt64>(memory.data() + index);
}

} // namespace

class Raw_callstack_test : public testing::Test {
protected:
	void SetUp() override {
		zubCallstack_helpers::clear_module_cache();
		noted.clear();
	}
	void TearDown() override { zubCallstack_helpers::clear_module_cache(); }
};

TEST_F(Raw_callstack_test, StartsEmpty) {
	zubRaw_callstack stack;
	EXPECT_EQ(stack.get_frame_count(), 0u);
	EXPECT_TRUE(stack.get_stack().empty());
	EXPECT_EQ(text_of(stack), "No native frames available");
}

TEST_F(Raw_callstack_test, TellsTheInnermostFirst) {
	const zubRaw_callstack stack = stack_in(outermost);
	EXPECT_EQ(noted.size(), 3u);
	EXPECT_TRUE(has_noted_in_a_row(stack));
}

TEST_F(Raw_callstack_test, WalksThroughTheRunTimeLibrary) {
	const zubRaw_callstack stack = stack_in(sort_something);
	EXPECT_EQ(noted.size(), 2u); // ahead of qsort() and in what it calls
	EXPECT_TRUE(has_noted_in_order(stack));
	EXPECT_FALSE(has_noted_in_a_row(stack));
}

TEST_F(Raw_callstack_test, BeginsInCaptureItself) {
	zubRaw_callstack stack;
	stack.capture(nullptr, 0);
	ASSERT_GT(stack.get_frame_count(), 2u);
	const xylUInt64 library = stack.get_stack()[0].module_base;
	const xylUInt64 program = stack.get_stack()[1].module_base;
	EXPECT_NE(library, program);
	zubCallstack_helpers::enumerate_modules(nullptr);
	zubCallstack_module module;
	ASSERT_TRUE(zubCallstack_helpers::get_module_info(library, module));
	EXPECT_NE(std::string(module.path.char_p()).find("Morvantis.Library"), std::string::npos);
	ASSERT_TRUE(zubCallstack_helpers::get_module_info(program, module));
	EXPECT_NE(std::string(module.path.char_p()).find("diagnostics_tests"), std::string::npos);
}

TEST_F(Raw_callstack_test, EveryBaseIsThatOfALoadedImage) {
	const zubRaw_callstack stack = stack_in(sort_something);
	zubCallstack_helpers::enumerate_modules(nullptr);
	for (const zubCallstack_frame& frame : stack.get_stack()) {
		SCOPED_TRACE(frame.module_offset);
		zubCallstack_module module;
		ASSERT_TRUE(zubCallstack_helpers::get_module_info(frame.module_base, module));
		EXPECT_LT(frame.module_offset, module.image_size);
	}
}

TEST_F(Raw_callstack_test, SkipCountDropsTheInnermost) {
	std::vector<Frames> stacks;
	innermost_work = [&] {
		for (unsigned int skip = 0; skip < 8; ++skip) {
			zubRaw_callstack stack;
			stack.capture(nullptr, skip);
			stacks.push_back(frames_of(stack));
		}
	};
	outermost();
	innermost_work = nullptr;
	for (unsigned int skip = 0; skip < 8; ++skip) {
		SCOPED_TRACE(skip);
		EXPECT_EQ(stacks[skip], Frames(stacks[0].begin() + skip, stacks[0].end()));
	}
}

TEST_F(Raw_callstack_test, SkippedStepsCountAmongThe128) {
	struct Case {
		unsigned int skip;
		unsigned int frames;
	};
	const Case cases[] = {{0, 128}, {1, 127}, {100, 28}, {127, 1}, {128, 0}, {129, 0}, {~0u, 0}};
	EXPECT_EQ(zubCallstack_helpers::callstack_max_depth, 128u);
	for (const Case& c : cases) {
		SCOPED_TRACE(c.skip);
		zubRaw_callstack stack;
		innermost_work = [&] { stack.capture(nullptr, c.skip); };
		depth_left = 300;
		recursion();
		EXPECT_EQ(stack.get_frame_count(), c.frames);
		EXPECT_EQ(stack.get_stack().size(), c.frames);
		EXPECT_EQ(text_of(stack) == "No native frames available", c.frames == 0);
	}
	innermost_work = nullptr;
}

TEST_F(Raw_callstack_test, TellsEveryDepth) {
	for (int depth = 1; depth <= 100; ++depth) {
		SCOPED_TRACE(depth);
		zubRaw_callstack stack;
		innermost_work = [&] { stack.capture(nullptr, 0); };
		depth_left = depth;
		recursion();
		innermost_work = nullptr;
		EXPECT_EQ(longest_run(addresses_of(stack)), static_cast<size_t>(depth));
	}
}

TEST_F(Raw_callstack_test, CapturesOnSeveralThreadsAtOnce) {
	constexpr int thread_count = 4;
	Start_line start(thread_count);
	std::vector<std::thread> threads;
	for (int number = 0; number < thread_count; ++number) {
		threads.emplace_back([&start, number] {
			Descent descent;
			start.arrive_and_wait();
			for (int i = 0; i < 10000; ++i) {
				const int depth = 1 + (7 * i + number) % 60;
				descent.left = depth;
				descend(descent);
				ASSERT_EQ(longest_run(addresses_of(descent.stack)), static_cast<size_t>(depth));
			}
		});
	}
	for (std::thread& thread : threads) thread.join();
}

// Whoever took one of these locks would wait for itself.
TEST_F(Raw_callstack_test, CaptureAndTextTakeNoLock) {
	zubDebughelp_interface engine;
	zub_debughelp_interface = &engine;
	zubRaw_callstack stack;
	{
		const std::lock_guard resolving(zubCallstack_helpers::dbg_help_lock);
		const std::lock_guard dumping(engine.lock);
		stack.capture(nullptr, 0);
		EXPECT_EQ(text_of(stack).find("[unresolvable frame]"), std::string::npos);
	}
	zub_debughelp_interface = nullptr;
}

TEST_F(Raw_callstack_test, ArrayDoublesFromTheRoomThatItHas) {
	zubRaw_callstack stack;
	stack.stack.reserve(3);
	innermost_work = [&] { stack.capture(nullptr, 0); };
	depth_left = 60;
	recursion();
	innermost_work = nullptr;
	EXPECT_GT(stack.get_frame_count(), 60u);
	const size_t capacity = stack.stack.capacity();
	EXPECT_TRUE(capacity == 96 || capacity == 192) << capacity;
}

TEST_F(Raw_callstack_test, SecondCaptureReplacesTheFirstAndKeepsTheStorage) {
	zubRaw_callstack stack;
	innermost_work = [&] { stack.capture(nullptr, 0); };
	depth_left = 60;
	recursion();
	innermost_work = nullptr;
	const zubCallstack_frame* const storage = stack.stack.data();
	const size_t capacity = stack.stack.capacity();
	EXPECT_GT(stack.get_frame_count(), 60u);
	EXPECT_TRUE(capacity == 64 || capacity == 128) << capacity; // doubled from 1
	stack.capture(nullptr, 0);
	EXPECT_LT(stack.get_frame_count(), 60u);
	EXPECT_GT(stack.get_frame_count(), 0u);
	EXPECT_EQ(stack.stack.data(), storage);
	EXPECT_EQ(stack.stack.capacity(), capacity);
	stack.capture(nullptr, 128);
	EXPECT_EQ(stack.get_frame_count(), 0u);
	EXPECT_EQ(stack.stack.capacity(), capacity);
}

TEST_F(Raw_callstack_test, HashIsZeroForAnyStack) {
	zubRaw_callstack stack;
	EXPECT_EQ(stack.calculate_hash(), 0u);
	stack.capture(nullptr, 0);
	EXPECT_EQ(stack.calculate_hash(), 0u);
}

TEST_F(Raw_callstack_test, CopiesAreIndependent) {
	zubRaw_callstack stack;
	stack.capture(nullptr, 0);
	const Frames frames = frames_of(stack);
	zubRaw_callstack copy(stack), assigned;
	assigned = stack;
	EXPECT_EQ(frames_of(copy), frames);
	EXPECT_EQ(frames_of(assigned), frames);
	copy.stack[0].module_offset = 1;
	assigned.capture(nullptr, 128);
	EXPECT_EQ(frames_of(stack), frames);
}

TEST_F(Raw_callstack_test, MovingTakesTheStorage) {
	zubRaw_callstack stack;
	stack.capture(nullptr, 0);
	const Frames frames = frames_of(stack);
	const zubCallstack_frame* const storage = stack.stack.data();
	zubRaw_callstack moved(std::move(stack));
	EXPECT_EQ(moved.stack.data(), storage);
	zubRaw_callstack assigned;
	assigned = std::move(moved);
	EXPECT_EQ(assigned.stack.data(), storage);
	EXPECT_EQ(frames_of(assigned), frames);
}

TEST_F(Raw_callstack_test, WalksAContextInPlace) {
	zubRaw_callstack stack;
	xylUInt64 first_pc = 0, first_sp = 0, last_pc = 1, last_sp = 0;
	innermost_work = [&] {
		Processor_context::with_current([&](Processor_context& context) {
			first_pc = context.pc();
			first_sp = context.sp();
			stack.capture(context.record(), 0);
			last_pc = context.pc();
			last_sp = context.sp();
		});
	};
	outermost();
	innermost_work = nullptr;
	EXPECT_TRUE(has_noted_in_a_row(stack));
	ASSERT_GT(stack.get_frame_count(), 0u);
	EXPECT_EQ(address_of(stack.get_stack()[0]), first_pc);
	EXPECT_EQ(last_pc, 0u); // the walk ended with the thread's first function
	EXPECT_GT(last_sp, first_sp);
}

TEST_F(Raw_callstack_test, StopsAtAnInstructionAddressOfZero) {
	Processor_context context(0, nullptr);
	zubRaw_callstack stack;
	stack.capture(nullptr, 0);
	stack.capture(context.record(), 0);
	EXPECT_EQ(stack.get_frame_count(), 0u);
}

TEST_F(Raw_callstack_test, TakesAFrameWithoutUnwindEntryForALeaf) {
	std::vector<xylUInt64> memory(8);
	memory[0] = address_outside(memory, 5);
	memory[1] = address_outside(memory, 6);
	const xylUInt64 first = address_outside(memory, 4);
	Processor_context context(first, memory.data());
	zubRaw_callstack stack;
	stack.capture(context.record(), 0);
	EXPECT_EQ(frames_of(stack), (Frames{{0, first}, {0, memory[0]}, {0, memory[1]}}));
	EXPECT_EQ(context.pc(), 0u);
	EXPECT_EQ(context.sp(), address_outside(memory, 3));
}

// A function that has run no instruction yet has its caller's address on top of the stack.
TEST_F(Raw_callstack_test, LeafBehindAFrameOfAnImageHasNoBase) {
	std::vector<xylUInt64> memory(8);
	memory[0] = address_outside(memory, 5);
	const auto first = reinterpret_cast<xylUInt64>(run_work);
	zubCallstack_helpers::enumerate_modules(nullptr);
	Processor_context context(first, memory.data());
	zubRaw_callstack stack;
	stack.capture(context.record(), 0);
	ASSERT_EQ(stack.get_frame_count(), 2u);
	zubCallstack_module module;
	const zubCallstack_frame& in_image = stack.get_stack()[0];
	ASSERT_TRUE(zubCallstack_helpers::get_module_info(in_image.module_base, module));
	EXPECT_EQ(address_of(in_image), first);
	EXPECT_EQ(frames_of(stack)[1], (std::pair<xylUInt64, xylUInt64>(0, memory[0])));
	EXPECT_EQ(context.sp(), address_outside(memory, 2));
	EXPECT_NE(text_of(stack).find("[unresolvable frame] \n0x0000000000000000 0x"),
	          std::string::npos);
}

TEST_F(Raw_callstack_test, LeavesAContextBehindTheLastOf128Steps) {
	std::vector<xylUInt64> memory(300);
	for (size_t i = 0; i < memory.size(); ++i) memory[i] = address_outside(memory, 0) + i;
	Processor_context context(address_outside(memory, 299), memory.data());
	zubRaw_callstack stack;
	stack.capture(context.record(), 126);
	EXPECT_EQ(frames_of(stack), (Frames{{0, memory[125]}, {0, memory[126]}}));
	EXPECT_EQ(context.pc(), memory[127]);
	EXPECT_EQ(context.sp(), address_outside(memory, 128));
}

TEST_F(Raw_callstack_test, TextHasOneLineForEachFrame) {
	zubCallstack_module module;
	module.path = "C:\\games\\engine\\core.dll";
	module.pdb_guid = {0x0123ABCD, 0x45, 0x6789, {1, 2, 3, 0xA4, 0xB5, 0xC6, 0xD7, 0xE8}};
	module.pdb_age = 3;
	zubCallstack_helpers::Modules[0x1234] = module;
	module.path = "no separator";
	module.pdb_guid = {};
	module.pdb_age = 0xFFFFFFFF;
	zubCallstack_helpers::Modules[0xAB87654321] = module;
	zubRaw_callstack stack;
	stack.stack.push_back({0x1234, 0x56});
	stack.stack.push_back({0xAB87654321, 0xFEDCBA9876543210});
	EXPECT_EQ(
		text_of(stack),
		"0x0000000000001234 0x0000000000000056 {0123ABCD00456789010203A4B5C6D7E8} 3 core.dll\n"
		// the low halves only, and the age as a signed number
		"0x0000000087654321 0x0000000076543210 {00000000000000000000000000000000} -1 "
		"no separator\n");
}

// No formatted text is as long as a path may be where nothing shortens it.
TEST_F(Raw_callstack_test, TextHasAFileNameOfAnyLength) {
	for (const size_t length : {431u, 432u, 433u, 4095u, 5000u}) {
		SCOPED_TRACE(length);
		const std::string name(length, 'n');
		zubCallstack_helpers::Modules[0x1234].path = ("C:\\games\\" + name).c_str();
		zubRaw_callstack stack;
		stack.stack.push_back({0x1234, 0x56});
		stack.stack.push_back({0x1234, 0x57});
		const std::string identity = " {00000000000000000000000000000000} 0 " + name + "\n";
		EXPECT_EQ(text_of(stack), "0x0000000000001234 0x0000000000000056" + identity +
		                              "0x0000000000001234 0x0000000000000057" + identity);
	}
}

TEST_F(Raw_callstack_test, TextOfAnUnresolvableFrameHasTwoLines) {
	zubRaw_callstack stack;
	stack.stack.push_back({0, 0x7F1234});
	stack.stack.push_back({0x10, 0x20}); // no image's base
	EXPECT_EQ(text_of(stack),
	          "[unresolvable frame] \n"
	          "0x0000000000000000 0x00000000007F1234 {00000000000000000000000000000000} 0 \n"
	          "[unresolvable frame] \n"
	          "0x0000000000000010 0x0000000000000020 {00000000000000000000000000000000} 0 \n");
}

TEST_F(Raw_callstack_test, TextNamesImagesThatWereNotCachedBefore) {
	zubRaw_callstack stack;
	stack.capture(nullptr, 0);
	const std::string text = text_of(stack);
	EXPECT_EQ(text.find("[unresolvable frame]"), std::string::npos) << text;
	EXPECT_NE(text.find("diagnostics_tests"), std::string::npos) << text;
	EXPECT_FALSE(zubCallstack_helpers::Modules.empty());
	EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), stack.get_frame_count());
}

TEST_F(Raw_callstack_test, TextOfNoFramesLeavesTheCacheAlone) {
	EXPECT_EQ(text_of(zubRaw_callstack()), "No native frames available");
	EXPECT_TRUE(zubCallstack_helpers::Modules.empty());
}
