// Stacks whose every line is known beforehand, from capture to text.

#include "debug_output.h"
#include "expected_leaks.h"

#include <images/stacked_code.h> // tests/platform/linux

#include <morvantis/diagnostics/zubcallstack.h>
#include <morvantis/diagnostics/zubcallstack_helpers.h>
#include <morvantis/diagnostics/zubdebughelp_interface.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include <dlfcn.h>

namespace {

// One stack as it was resolved, and the calls that are known to have led there.
struct Visited_stack {
	std::vector<std::string> lines;
	std::vector<std::string> expected; // innermost first
};

class Known_stacks_test : public testing::Test {
protected:
	Known_stacks_test() : before_(zub_debughelp_interface) {
		zub_debughelp_interface = &engine_;
		EXPECT_TRUE(engine_.initialize());
	}
	~Known_stacks_test() override {
		zub_debughelp_interface = before_;
		zubCallstack_helpers::clear_module_cache();
		unsetenv("_NT_SYMBOL_PATH");
	}

	// Loads the image, runs its stacks, and unloads it.
	std::vector<Visited_stack> run(const std::string& file) {
		void* const module =
			dlopen((MORVANTIS_TEST_IMAGES "/" + file).c_str(), RTLD_NOW | RTLD_LOCAL);
		if (!module) {
			ADD_FAILURE() << dlerror();
			return {};
		}
		name_ = file.substr(file.rfind('/') + 1);
		zubCallstack_helpers::clear_module_cache(); // another image may have been here
		auto* const run_stacks = reinterpret_cast<Run_stacks*>(dlsym(module, "run_stacks"));
		run_stacks(visit, this);
		dlclose(module);
		return std::move(stacks_);
	}

	const std::string& name() const { return name_; }

private:
	static void visit(const Stacked_call* calls, int count, void* data) {
		auto& test = *static_cast<Known_stacks_test*>(data);
		zubCallstack stack;
		stack.capture(nullptr, 0);
		Visited_stack visited;
		for (const xylVarString& line : stack.get_stack())
			visited.lines.emplace_back(line.char_p());
		for (int i = count; i-- > 0;)
			visited.expected.push_back("@" + test.name_ + "@stacked_code.cpp (" +
			                           std::to_string(calls[i].line) + "): " + calls[i].function);
		test.stacks_.push_back(visited);
	}

	zubDebughelp_interface engine_;
	zubDebughelp_interface* before_;
	std::string name_;
	std::vector<Visited_stack> stacks_;
};

// The lines of one module, in their order.
std::vector<std::string> lines_of(const Visited_stack& stack, const std::string& module) {
	std::vector<std::string> lines;
	for (const std::string& line : stack.lines)
		if (line.compare(1, module.size() + 1, module + "@") == 0) lines.push_back(line);
	return lines;
}

TEST_F(Known_stacks_test, EveryCallHasItsFunctionAndLine) {
	for (const char* file : {"stacked_debug.so", "stacked_release.so"}) {
		SCOPED_TRACE(file);
		const std::vector<Visited_stack> stacks = run(file);
		ASSERT_EQ(stacks.size(), 3u);
		for (const Visited_stack& stack : stacks) EXPECT_EQ(lines_of(stack, file), stack.expected);
		EXPECT_EQ(stacks[0].expected.size(), 2u);
		EXPECT_EQ(stacks[1].expected.size(), 6u);
		EXPECT_EQ(stacks[2].expected.size(), 4u);
	}
}

TEST_F(Known_stacks_test, CallbacksOfTheCLibraryHaveItsFramesBetweenThem) {
	const std::vector<Visited_stack> stacks = run("stacked_release.so");
	ASSERT_EQ(stacks.size(), 3u);
	const std::vector<std::string>& lines = stacks[2].lines;
	const auto called = std::find(lines.begin(), lines.end(), stacks[2].expected[1]);
	const auto calling = std::find(lines.begin(), lines.end(), stacks[2].expected[2]);
	ASSERT_LT(called, calling);
	ASSERT_GT(calling - called, 1);
	// Deferred, or with its symbol file; a sanitizer has its own function in front.
	for (auto line = called + 1; line != calling; ++line)
		EXPECT_THAT(*line, testing::MatchesRegex("[#@]libc.*|.*interceptor_qsort.*"));
}

TEST_F(Known_stacks_test, StrippedImagesGiveDeferredLinesUntilTheirSymbolFileIsFound) {
	const std::vector<Visited_stack> without = run("stripped/stacked_release.so");
	ASSERT_EQ(without.size(), 3u);
	for (const std::string& line : lines_of(without[0], name()))
		EXPECT_THAT(line, testing::MatchesRegex(
							  "#stacked_release\\.so@\\{[0-9A-F]{32}\\} \\(0\\): 0:[0-9]+"));
	EXPECT_EQ(lines_of(without[0], name()).size(), 2u);

	setenv("_NT_SYMBOL_PATH", MORVANTIS_TEST_IMAGES "/separate", 1);
	const std::vector<Visited_stack> with = run("stripped/stacked_release.so");
	ASSERT_EQ(with.size(), 3u);
	for (const Visited_stack& stack : with) EXPECT_EQ(lines_of(stack, name()), stack.expected);
}

TEST_F(Known_stacks_test, TheProgramAndTheLibraryResolveToo) {
	const std::vector<Visited_stack> stacks = run("stacked_debug.so");
	ASSERT_EQ(stacks.size(), 3u);
	EXPECT_THAT(
		stacks[0].lines,
		testing::Contains(testing::MatchesRegex(
			"@diagnostics_tests@known_stacks_test\\.cpp \\([0-9]+\\): .*Known_stacks_test::run")));
	EXPECT_THAT(stacks[0].lines, testing::Contains(testing::MatchesRegex(
									 "@diagnostics_tests@unknown_source.*: "
									 "main|@diagnostics_tests@.*\\.cpp \\([0-9]+\\): main")));
	EXPECT_THAT(stacks[0].lines[0],
	            testing::MatchesRegex("@libMorvantis\\.Library\\.so.*@zub(raw_)?callstack\\.cpp "
	                                  "\\([0-9]+\\): zub(Raw_c|C)allstack::capture"));
}

// The engine's answers about addresses come from the same files.
TEST_F(Known_stacks_test, CountersResolveToTheSameFunctions) {
	unsigned long long addresses[8];
	unsigned long long hash = 0;
	ASSERT_TRUE(zubCallstack::capture_counters(addresses, &hash, 8, 0));
	std::string text;
	{
		const Expected_leaks leaks; // each call leaves a record behind
		const Debug_output_catcher quiet;
		ASSERT_TRUE(zubCallstack::resolve_counters(addresses, 8, text));
	}
	EXPECT_NE(text.find("known_stacks_test.cpp ("), std::string::npos) << text;
	EXPECT_NE(text.find("CountersResolveToTheSameFunctions"), std::string::npos) << text;
}

} // namespace
