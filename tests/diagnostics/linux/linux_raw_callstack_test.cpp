// Captures beside the compiler's own walk: many depths and shapes of frames, loaded and reloaded
// libraries, threads, and signal handlers after a real fault.
#include <morvantis/diagnostics/zubcallstack_helpers.h>
#include <morvantis/diagnostics/zubraw_callstack.h>

#include <gtest/gtest.h>

#include <atomic>
#include <csetjmp>
#include <csignal>
#include <cstdlib>
#include <latch>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <alloca.h>
#include <dlfcn.h>
#include <link.h>
#include <sys/mman.h>
#include <ucontext.h>
#include <unwind.h>

namespace {

using Addresses = std::vector<xylUInt64>;
using Work = void (*)(void* data);

// Work behind each call, so that none ends its function.
thread_local volatile int left_to_do;

Addresses addresses_of(const zubRaw_callstack& stack) {
	Addresses addresses;
	for (const zubCallstack_frame& frame : stack.get_stack()) {
		addresses.push_back(frame.module_base + frame.module_offset);
	}
	return addresses;
}

// What the compiler's run-time library finds, the calling function first.
[[gnu::noinline]] Addresses compilers_walk() {
	Addresses addresses;
	_Unwind_Backtrace(
		[](_Unwind_Context* context, void* data) {
			if (const xylUInt64 pc = _Unwind_GetIP(context)) {
				static_cast<Addresses*>(data)->push_back(pc);
			}
			return _URC_NO_REASON;
		},
		&addresses);
	addresses.erase(addresses.begin()); // this function
	return addresses;
}

Addresses first(Addresses addresses, size_t count) {
	addresses.resize(std::min(addresses.size(), count));
	return addresses;
}

Addresses without_first(const Addresses& addresses) {
	return {addresses.begin() + 1, addresses.end()};
}

// Three walks from the same function: ours from its call, ours from its context, and the
// compiler's. They agree from its caller on.
struct Walks {
	Addresses ours, ours_by_context, theirs;

	[[gnu::noinline]] void take() {
		zubRaw_callstack stack;
		stack.capture(nullptr, 1);
		ours = addresses_of(stack);
		ucontext_t context;
		getcontext(&context);
		stack.capture(&context, 0);
		ours_by_context = addresses_of(stack);
		theirs = compilers_walk();
	}
	void expect_equal() const {
		ASSERT_GT(theirs.size(), 1u);
		// The compiler's goes on where ours ends with the 128th step.
		EXPECT_EQ(without_first(ours), first(without_first(theirs), ours.size() - 1));
		EXPECT_EQ(without_first(ours_by_context),
		          first(without_first(theirs), ours_by_context.size() - 1));
		EXPECT_EQ(ours.size(), std::min<size_t>(theirs.size(), 127));
		EXPECT_EQ(ours_by_context.size(), std::min<size_t>(theirs.size(), 128));
	}
};

void capture_here(void* data) {
	static_cast<zubRaw_callstack*>(data)->capture(nullptr, 0);
	left_to_do = left_to_do ^ 1;
}

void take_walks(void* data) { static_cast<Walks*>(data)->take(); }

// Frames of many shapes, in an order that the plan tells.
struct Plan {
	std::vector<int> shapes; // the outermost last
	Walks* walks;
};
void go_on(Plan& plan);

[[gnu::noinline]] void small_frame(Plan& plan) {
	go_on(plan);
	left_to_do = left_to_do ^ 1;
}

[[gnu::noinline]] void large_frame(Plan& plan) {
	volatile char bytes[20000];
	bytes[0] = 1;
	go_on(plan);
	left_to_do = left_to_do ^ bytes[0];
}

[[gnu::noinline]] void growing_frame(Plan& plan) {
	auto* const bytes = static_cast<volatile char*>(alloca(16 + plan.shapes.size() * 40));
	bytes[0] = 1;
	go_on(plan);
	left_to_do = left_to_do ^ bytes[0];
}

[[gnu::noinline]] void aligned_frame(Plan& plan) {
	alignas(128) volatile char bytes[128];
	bytes[0] = 1;
	go_on(plan);
	left_to_do = left_to_do ^ bytes[0];
}

[[gnu::noinline]] void many_registers(Plan& plan, int a, int b, int c, int d, int e, int f) {
	const int g = left_to_do, h = left_to_do, i = left_to_do;
	go_on(plan);
	left_to_do = a ^ b ^ c ^ d ^ e ^ f ^ g ^ h ^ i;
}

[[gnu::noinline]] void throwing_frame(Plan& plan) {
	try {
		go_on(plan);
	} catch (const int& value) {
		left_to_do = value;
	}
}

void frame_of_sort(Plan& plan) {
	static thread_local Plan* current;
	current = &plan;
	int numbers[] = {2, 1};
	std::qsort(numbers, 2, sizeof(int), [](const void*, const void*) {
		Plan* const mine = current;
		go_on(*mine);
		return 0;
	});
}

void go_on(Plan& plan) {
	if (plan.shapes.empty()) return plan.walks->take();
	const int shape = plan.shapes.back();
	plan.shapes.pop_back();
	switch (shape) {
	case 0:
		small_frame(plan);
		break;
	case 1:
		large_frame(plan);
		break;
	case 2:
		growing_frame(plan);
		break;
	case 3:
		aligned_frame(plan);
		break;
	case 4:
		many_registers(plan, 1, 2, 3, 4, 5, 6);
		break;
	case 5:
		throwing_frame(plan);
		break;
	default:
		frame_of_sort(plan);
		break;
	}
}

// A library that is loaded as long as this lives.
class Walked_module {
public:
	explicit Walked_module(const char* name) {
		const std::string path = std::string(MORVANTIS_TEST_MODULES "/") + name + ".so";
		handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
		if (!handle_)
			ADD_FAILURE() << dlerror();
		else
			walk_ = reinterpret_cast<Walk>(dlsym(handle_, "walk_through"));
	}
	~Walked_module() {
		if (handle_) dlclose(handle_);
	}
	Walked_module(const Walked_module&) = delete;
	Walked_module& operator=(const Walked_module&) = delete;

	void walk_through(int depth, Work work, void* data) const { walk_(depth, work, data); }
	xylUInt64 place() const { return reinterpret_cast<xylUInt64>(walk_); }
	xylUInt64 base() const {
		Dl_info info;
		return dladdr(reinterpret_cast<void*>(walk_), &info)
		           ? reinterpret_cast<xylUInt64>(info.dli_fbase)
		           : 0;
	}

private:
	using Walk = void (*)(int depth, Work work, void* data);
	void* handle_ = nullptr;
	Walk walk_ = nullptr;
};

// Frames in a module's function, which is shorter than this.
constexpr xylUInt64 function_size = 256;

size_t frames_in(const Walked_module& module, const Addresses& addresses) {
	size_t count = 0;
	for (const xylUInt64 address : addresses) count += address - module.place() < function_size;
	return count;
}

} // namespace

TEST(Linux_raw_callstack, EqualsTheCompilersWalkAtRandomDepths) {
	std::mt19937 random(1);
	for (int i = 0; i < 300; ++i) {
		SCOPED_TRACE(i);
		Plan plan;
		Walks walks;
		plan.walks = &walks;
		for (auto depth = random() % 90; depth > 0; --depth) {
			plan.shapes.push_back(static_cast<int>(random() % 7));
		}
		go_on(plan);
		walks.expect_equal();
		if (HasFailure()) break;
	}
}

TEST(Linux_raw_callstack, WalksThroughALibraryLoadedAtRunTime) {
	for (const char* name : {"walked_short", "walked_long", "walked_nameless"}) {
		SCOPED_TRACE(name);
		const Walked_module module(name);
		for (int again = 0; again < 3; ++again) {
			Walks walks;
			module.walk_through(5, take_walks, &walks);
			walks.expect_equal();
			EXPECT_EQ(frames_in(module, walks.ours), 5u);
		}
		zubRaw_callstack stack;
		module.walk_through(1, capture_here, &stack);
		ASSERT_GT(stack.get_frame_count(), 2u);
		EXPECT_EQ(stack.get_stack()[2].module_base, module.base());
	}
}

// The cache of rules has the closed library's places: same base, same table, same addresses.
TEST(Linux_raw_callstack, TellsALibraryFromAnotherOneAtItsAddress) {
	int same_places = 0;
	xylUInt64 last_place = 0;
	for (int i = 0; i < 20; ++i) {
		SCOPED_TRACE(i);
		const Walked_module module(i % 2 ? "walked_long" : "walked_short");
		same_places += module.place() == last_place;
		last_place = module.place();
		for (int again = 0; again < 2; ++again) {
			Walks walks;
			module.walk_through(4, take_walks, &walks);
			walks.expect_equal();
			EXPECT_EQ(frames_in(module, walks.ours), 4u);
		}
	}
	EXPECT_GT(same_places, 0); // else this shows nothing
}

TEST(Linux_raw_callstack, TakesCodeWithoutUnwindDataForALeaf) {
	const Walked_module module("walked_blind");
	zubRaw_callstack stack;
	module.walk_through(1, capture_here, &stack);
	ASSERT_GT(stack.get_frame_count(), 3u);
	EXPECT_NE(stack.get_stack()[1].module_base, 0u);
	EXPECT_EQ(stack.get_stack()[2].module_base, 0u);
	EXPECT_LT(stack.get_stack()[2].module_offset - module.place(), function_size);
}

TEST(Linux_raw_callstack, CapturesOnThreadsWhileLibrariesComeAndGo) {
	std::atomic<bool> done = false;
	std::atomic<int> wrong = 0, captures = 0;
	const auto check = [&](const Walks& walks) {
		++captures;
		wrong += without_first(walks.ours) != without_first(walks.theirs) ||
		         without_first(walks.ours_by_context) != without_first(walks.theirs);
	};
	std::vector<std::thread> threads;
	for (unsigned int number = 0; number < 8; ++number) {
		threads.emplace_back([&, number] {
			std::mt19937 random(number);
			do {
				Plan plan;
				Walks walks;
				plan.walks = &walks;
				for (auto depth = random() % 20; depth > 0; --depth) {
					plan.shapes.push_back(static_cast<int>(random() % 7));
				}
				go_on(plan);
				check(walks);
			} while (!done);
		});
	}
	for (int i = 0; i < 60; ++i) {
		const Walked_module module(i % 2 ? "walked_long" : "walked_short");
		Walks walks;
		module.walk_through(4, take_walks, &walks);
		check(walks);
	}
	done = true;
	for (std::thread& thread : threads) thread.join();
	EXPECT_EQ(wrong, 0);
	EXPECT_GE(captures, 68);
}

// While the loader's list is held by one thread, another one walks through an image that is looked
// up anew for each frame. A walk that waited for the loader would never end.
TEST(Linux_raw_callstack, WaitsForNoLockOfTheLoader) {
	const Walked_module module("walked_nameless");
	zubRaw_callstack stack;
	std::latch is_running(1), is_held(1), is_captured(1);
	std::thread walker([&] {
		is_running.count_down();
		is_held.wait();
		module.walk_through(3, capture_here, &stack);
		is_captured.count_down();
	});
	is_running.wait(); // a sanitizer asks the loader at a thread's start
	const auto hold = [&] {
		is_held.count_down();
		is_captured.wait();
	};
	dl_iterate_phdr(
		[](dl_phdr_info*, size_t, void* data) {
			(*static_cast<decltype(hold)*>(data))();
			return 1;
		},
		const_cast<void*>(static_cast<const void*>(&hold)));
	walker.join();
	EXPECT_EQ(frames_in(module, addresses_of(stack)), 3u);
}

TEST(Linux_raw_callstack, EndsAtAThreadsStart) {
	Addresses addresses;
	std::thread([&] {
		zubRaw_callstack stack;
		stack.capture(nullptr, 0);
		addresses = addresses_of(stack);
	}).join();
	EXPECT_GT(addresses.size(), 2u);
	EXPECT_LT(addresses.size(), 20u);
}

namespace {

// A write to `forbidden` faults, and the handler captures twice on a stack of its own.
struct Fault {
	zubRaw_callstack by_context, from_handler;
	xylUInt64 pc = 0, pc_behind = 1;
	volatile char* forbidden = nullptr;
	sigjmp_buf back;
};
Fault* fault;

void handle_fault(int, siginfo_t*, void* data) {
	auto* const context = static_cast<ucontext_t*>(data);
	fault->pc = static_cast<xylUInt64>(context->uc_mcontext.gregs[REG_RIP]);
	fault->from_handler.capture(nullptr, 0);
	fault->by_context.capture(context, 0);
	fault->pc_behind = static_cast<xylUInt64>(context->uc_mcontext.gregs[REG_RIP]);
	siglongjmp(fault->back, 1);
}

// The first instructions of a function that is to fault ahead of its frame.
// Bytes of code that no function of this file exceeds, a sanitizer's additions included.
constexpr xylUInt64 longest_function = 2000;

using Faulting = void (*)(volatile char* forbidden);

[[gnu::noinline]] void write_to_forbidden(volatile char* forbidden) {
	*forbidden = 1;
	left_to_do = left_to_do ^ 1;
}

[[gnu::noinline]] void run_into_fault(Faulting faulting, Walks& walks) {
	walks.take();
	faulting(fault->forbidden);
	left_to_do = left_to_do ^ 1;
}

class Raised_fault {
public:
	explicit Raised_fault(Faulting faulting) : stack_(1 << 16) {
		// Room for the frames, so that the handler need not allocate.
		state.by_context.stack.reserve(128);
		state.from_handler.stack.reserve(128);
		page_ = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
		state.forbidden = static_cast<volatile char*>(page_);
		fault = &state;
		const stack_t alternate{stack_.data(), 0, stack_.size()};
		stack_t before_stack;
		sigaltstack(&alternate, &before_stack);
		struct sigaction action{}, before;
		action.sa_sigaction = handle_fault;
		action.sa_flags = SA_SIGINFO | SA_ONSTACK;
		sigaction(SIGSEGV, &action, &before);
		if (sigsetjmp(state.back, 1) == 0) run_into_fault(faulting, walks);
		sigaction(SIGSEGV, &before, nullptr);
		sigaltstack(&before_stack, nullptr);
		munmap(page_, 4096);
	}

	Fault state;
	Walks walks; // from the function that calls the faulting one

private:
	std::vector<char> stack_;
	void* page_ = nullptr;
};

bool ends_with(const Addresses& addresses, const Addresses& end) {
	return addresses.size() >= end.size() &&
	       std::equal(end.rbegin(), end.rend(), addresses.rbegin());
}

} // namespace

TEST(Linux_raw_callstack, CapturesTheContextOfAFault) {
	const Raised_fault raised(write_to_forbidden);
	const Addresses frames = addresses_of(raised.state.by_context);
	ASSERT_GT(frames.size(), 2u);
	EXPECT_EQ(frames[0], raised.state.pc);
	EXPECT_LT(frames[0] - reinterpret_cast<xylUInt64>(write_to_forbidden), longest_function);
	EXPECT_LT(frames[1] - reinterpret_cast<xylUInt64>(run_into_fault), longest_function);
	// From the caller of run_into_fault() on, as before the fault.
	EXPECT_EQ(Addresses(frames.begin() + 2, frames.end()),
	          Addresses(raised.walks.ours.begin() + 2, raised.walks.ours.end()));
	EXPECT_EQ(raised.state.pc_behind, 0u);
}

TEST(Linux_raw_callstack, WalksOutOfASignalHandlerOnAnotherStack) {
	const Raised_fault raised(write_to_forbidden);
	const Addresses frames = addresses_of(raised.state.from_handler);
	ASSERT_GT(frames.size(), 4u);
	EXPECT_LT(frames[1] - reinterpret_cast<xylUInt64>(handle_fault), longest_function);
	// Behind the handler and what the system called it by, all that the context has.
	EXPECT_TRUE(ends_with(frames, addresses_of(raised.state.by_context)));
}

// In the first instruction of a function nothing is saved yet, and the place before it is another
// function's.
TEST(Linux_raw_callstack, LooksUpTheFaultingInstructionItself) {
	extern void fault_at_once(volatile char*) asm("morvantis_test_fault_at_once");
	const Raised_fault raised(fault_at_once);
	const Addresses frames = addresses_of(raised.state.by_context);
	ASSERT_GT(frames.size(), 2u);
	EXPECT_EQ(frames[0], reinterpret_cast<xylUInt64>(fault_at_once));
	EXPECT_LT(frames[1] - reinterpret_cast<xylUInt64>(run_into_fault), longest_function);
	EXPECT_TRUE(ends_with(frames, without_first(without_first(raised.walks.ours))));
	EXPECT_TRUE(ends_with(addresses_of(raised.state.from_handler), frames));
}

// The function before it has a frame of another size up to its very end.
asm(R"(
	.pushsection .text
	.type morvantis_test_before_fault, @function
morvantis_test_before_fault:
	.cfi_startproc
	.cfi_def_cfa_offset 4096
	nop
	.cfi_endproc
	.size morvantis_test_before_fault, . - morvantis_test_before_fault
	.globl morvantis_test_fault_at_once
	.type morvantis_test_fault_at_once, @function
morvantis_test_fault_at_once:
	.cfi_startproc
	movb $1, (%rdi)
	ret
	.cfi_endproc
	.size morvantis_test_fault_at_once, . - morvantis_test_fault_at_once
	.popsection
)");
