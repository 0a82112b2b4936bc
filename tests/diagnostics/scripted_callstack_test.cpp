// Resolution of stacks with every answer that a search, a reader and an engine may give.

#include "scripted_symbols.h"

#include <morvantis/diagnostics/zubcallstack.h>
#include <morvantis/diagnostics/zubcallstack_helpers.h>
#include <morvantis/diagnostics/zubraw_callstack.h>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr xylUInt64 game_base = 0x140000000;
constexpr char deferred_line[] = "#game.pdb@{123456789ABCDEF00102030405060708} (7): 0:4660";

os::Symbol_answer answer_of(const char* function, const char* source, xylUInt32 line) {
	os::Symbol_answer answer;
	answer.has_function = function != nullptr;
	if (function) std::strcpy(answer.function, function);
	answer.has_source = source != nullptr;
	if (source) std::strcpy(answer.source, source);
	answer.has_line = line != 0;
	answer.line = line;
	return answer;
}

template <typename Record> Record text_of(const char* text, char (Record::*member)[256]) {
	Record record{};
	std::strcpy(record.*member, text);
	return record;
}

std::string lines_of(const zubCallstack& stack) {
	std::string all;
	for (const xylVarString& line : stack.get_stack()) all += std::string(line.char_p()) + "|";
	return all;
}

} // namespace

class Callstack_test : public Scripted_symbols_test {
protected:
	Callstack_test() {
		zubCallstack_module& game = zubCallstack_helpers::Modules[game_base];
		game.name = "game.exe";
		game.path = "C:\\bin\\game.exe";
		game.pdb_name = "D:\\build\\game.pdb";
		game.pdb_guid = {0x12345678, 0x9ABC, 0xDEF0, {1, 2, 3, 4, 5, 6, 7, 8}};
		game.pdb_signature = 0x53445352;
		game.pdb_age = 7;
		engine_.is_initialized = true;
	}
	std::string resolve(std::initializer_list<zubCallstack_frame> frames) {
		zubRaw_callstack raw;
		for (const zubCallstack_frame& frame : frames) raw.stack.push_back(frame);
		result_ = stack_.resolve_from_raw(raw);
		EXPECT_TRUE(zubCallstack_helpers::dbg_help_lock.try_lock());
		zubCallstack_helpers::dbg_help_lock.unlock();
		return lines_of(stack_);
	}

	zubCallstack stack_;
	bool result_ = false;
};

TEST_F(Callstack_test, EmptyStackHasNoLines) {
	stack_.stack.push_back("from before");
	EXPECT_EQ(resolve({}), "");
	EXPECT_FALSE(result_);
	EXPECT_EQ(stack_.get_frame_count(), 0u);
	EXPECT_STREQ(stack_.get_stack_str().char_p(), "No native frames available.\n");
	EXPECT_THAT(take_calls(), IsEmpty()); // not even the search path is asked for
}

TEST_F(Callstack_test, FrameOfAnUnknownImageHasAllDefaults) {
	EXPECT_EQ(resolve({{game_base + 1, 5}, {0, game_base}}),
	          "@unknown_module@unknown_source (unknown_line): unknown_function|"
	          "@unknown_module@unknown_source (unknown_line): unknown_function|");
	EXPECT_TRUE(result_);
}

TEST_F(Callstack_test, FrameWithoutSymbolFileIsDeferred) {
	EXPECT_EQ(resolve({{game_base, 0x1234}}), std::string(deferred_line) + "|");
	EXPECT_EQ(stack_.get_frame_count(), 1u);
	const std::string text = std::string(deferred_line) + "\n";
	EXPECT_STREQ(stack_.get_stack_str().char_p(), text.c_str());
}

TEST_F(Callstack_test, SearchIsGivenTheIdentityAndOnePathForTheWholeStack) {
	scripted_system.current_folder = "/here";
	resolve({{game_base, 1}, {game_base, 2}});
	const std::string paths = zubDebughelp_interface::get_symbol_search_paths().char_p();
	const std::string search =
		"find(" + paths + ", D:\\build\\game.pdb, 120, 1396986706, 7, C:\\bin\\game.exe)";
	EXPECT_THAT(take_calls(), ElementsAre("current_folder(4096)", search, search,
	                                      "current_folder(4096)")); // the last is this test's own
}

TEST_F(Callstack_test, EngineThatIsOffDefersBehindTheSearch) {
	scripted_symbols.files = {{"D:\\build\\game.pdb", "/found/game.pdb"}};
	scripted_symbols.answers = {{0x1234, answer_of("main", "main.cpp", 3)}};
	engine_.is_initialized = false;
	EXPECT_EQ(resolve({{game_base, 0x1234}}), std::string(deferred_line) + "|");
	EXPECT_THAT(take_calls().back(), HasSubstr("find("));
}

TEST_F(Callstack_test, FileThatCannotBeOpenedDefers) {
	scripted_symbols.files = {{"D:\\build\\game.pdb", "/found/game.pdb"}};
	EXPECT_EQ(resolve({{game_base, 0x1234}}), std::string(deferred_line) + "|");
	EXPECT_EQ(take_calls().back(), "look_up(/found/game.pdb, D:\\build\\game.pdb, 4660)");
}

TEST_F(Callstack_test, OnceTheFileIsOpenWhatIsMissingHasItsDefault) {
	scripted_symbols.files = {{"D:\\build\\game.pdb", "/found/game.pdb"}};
	struct Case {
		const char* name;
		os::Symbol_answer answer;
		const char* line;
	};
	const Case cases[] = {
		{"nothing", answer_of(nullptr, nullptr, 0),
	     "@game.exe@unknown_source (unknown_line): unknown_function|"},
		{"function", answer_of("ns::run", nullptr, 0),
	     "@game.exe@unknown_source (unknown_line): ns::run|"},
		{"function and line", answer_of("ns::run", nullptr, 12),
	     "@game.exe@unknown_source (12): ns::run|"},
		{"all", answer_of("ns::run", "C:\\src\\run.cpp", 12), "@game.exe@run.cpp (12): ns::run|"},
		{"line and source", answer_of(nullptr, "run.cpp", 4294967295u),
	     "@game.exe@run.cpp (4294967295): unknown_function|"},
		{"source with both separators", answer_of("run", "/src/deep\\run.cpp", 1),
	     "@game.exe@run.cpp (1): run|"},
		{"name that did not fit", answer_of("", "", 1), "@game.exe@ (1): |"},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		scripted_symbols.answers = {{0x1234, c.answer}};
		EXPECT_EQ(resolve({{game_base, 0x1234}}), c.line);
		EXPECT_TRUE(result_);
	}
}

TEST_F(Callstack_test, SearchSeesTheLowHalfOfAnOffsetAndTheTextAllOfIt) {
	const xylUInt64 offset = 0xFFFFFFFF00001234;
	scripted_symbols.files = {{"D:\\build\\game.pdb", "/found/game.pdb"}};
	resolve({{game_base, offset}});
	EXPECT_THAT(take_calls().back(), HasSubstr(", 4660)"));
	EXPECT_THAT(stack_.get_stack()[0].char_p(), testing::EndsWith("0:18446744069414588980"));
}

TEST_F(Callstack_test, DeferredLineShowsWhateverTheIdentityIs) {
	zubCallstack_module& game = zubCallstack_helpers::Modules[game_base];
	game.pdb_name = "";
	game.pdb_guid = {0xA, 0xB, 0xC, {0xD, 0, 0, 0, 0, 0, 0, 0xE}};
	game.pdb_age = 0xFFFFFFFF;
	EXPECT_EQ(resolve({{game_base, 0}}), "#@{0000000A000B000C0D0000000000000E} (4294967295): 0:0|");
	game.pdb_name = std::string(3000, 'n').c_str(); // longer than any fixed buffer
	EXPECT_EQ(resolve({{game_base, 0}}), "#" + std::string(3000, 'n') +
	                                         "@{0000000A000B000C0D0000000000000E} "
	                                         "(4294967295): 0:0|");
}

TEST_F(Callstack_test, EachFrameStartsAnewInTheOrderOfTheStack) {
	zubCallstack_module& other = zubCallstack_helpers::Modules[0x7000];
	other.name = "other.dll";
	other.pdb_name = "other.pdb";
	scripted_symbols.files = {{"D:\\build\\game.pdb", "/found/game.pdb"}};
	scripted_symbols.answers = {{1, answer_of("inner", "a.cpp", 5)},
	                            {2, answer_of(nullptr, nullptr, 0)}};
	EXPECT_EQ(resolve({{game_base, 1}, {game_base, 2}, {0x7000, 3}, {1, 1}, {game_base, 1}}),
	          "@game.exe@a.cpp (5): inner|"
	          "@game.exe@unknown_source (unknown_line): unknown_function|"
	          "#other.pdb@{00000000000000000000000000000000} (0): 0:3|"
	          "@unknown_module@unknown_source (unknown_line): unknown_function|"
	          "@game.exe@a.cpp (5): inner|");
	EXPECT_EQ(stack_.get_frame_count(), 5u);
	resolve({{1, 1}}); // replaces them all
	EXPECT_EQ(stack_.get_frame_count(), 1u);
}

TEST_F(Callstack_test, LongLinesKeepAllTheirText) {
	const std::string name(1023, 'f');
	scripted_symbols.files = {{"D:\\build\\game.pdb", "/found/game.pdb"}};
	scripted_symbols.answers = {{1, answer_of(name.c_str(), "a.cpp", 5)}};
	resolve({{game_base, 1}, {game_base, 1}});
	const std::string line = "@game.exe@a.cpp (5): " + name + "\n";
	EXPECT_EQ(stack_.get_stack_str().char_p(), line + line);
}

TEST_F(Callstack_test, LockIsHeldForTheWholeResolve) {
	int searches = 0;
	scripted_symbols.on_search = [&] {
		++searches;
		EXPECT_FALSE(is_free(zubCallstack_helpers::dbg_help_lock));
	};
	resolve({{game_base, 1}, {game_base, 2}});
	EXPECT_EQ(searches, 2);
	EXPECT_TRUE(engine_.lock.try_lock()); // the engine's own is another
	engine_.lock.unlock();
}

TEST_F(Callstack_test, HashIsZeroAndCopiesAreIndependent) {
	resolve({{1, 1}});
	EXPECT_EQ(stack_.calculate_hash(), 0u);
	zubCallstack copy(stack_);
	stack_.stack[0] = "changed";
	EXPECT_EQ(lines_of(copy), "@unknown_module@unknown_source (unknown_line): unknown_function|");
	const zubCallstack moved(static_cast<zubCallstack&&>(copy));
	EXPECT_EQ(moved.get_frame_count(), 1u);
	EXPECT_EQ(copy.get_frame_count(), 0u);
	stack_ = moved;
	EXPECT_EQ(lines_of(stack_), lines_of(moved));
}

TEST_F(Callstack_test, CaptureTakesTheStackThenTheImagesThenTheLines) {
	scripted_symbols.frames = {{0, 1}, {0, 2}, {0x9000, 0x9005}, {game_base, game_base + 0x1234}};
	scripted_symbols.images = {{0x9000, {}, "late.dll", "C:\\late.dll"}};
	int context = 0;
	stack_.capture(&context, 2);
	EXPECT_EQ(lines_of(stack_),
	          "#@{00000000000000000000000000000000} (0): 0:5|" + std::string(deferred_line) + "|");
	const std::vector<std::string> calls = take_calls();
	EXPECT_EQ(
		std::vector(calls.begin(), calls.begin() + 3),
		(std::vector<std::string>{"walk_context", "visit_modules(null)", "current_folder(4096)"}));

	stack_.capture(nullptr, 4);
	EXPECT_EQ(lines_of(stack_), "");
	EXPECT_THAT(take_calls(), ElementsAre("walk_callers", "visit_modules(null)"));
}

TEST_F(Callstack_test, RawCaptureAllocatesNothingButRoomForTheFrames) {
	scripted_symbols.frames.assign(128, {game_base, game_base + 1});
	zubRaw_callstack raw;
	scripted_system.allocations = 0;
	raw.capture(nullptr, 128);
	EXPECT_EQ(scripted_system.allocations, 0);
	raw.capture(nullptr, 28);
	EXPECT_GT(scripted_system.allocations, 0);
	scripted_system.allocations = 0;
	raw.capture(nullptr, 0); // the 128 for which there is room
	int context = 0;
	raw.capture(&context, 5);
	EXPECT_EQ(raw.get_frame_count(), 123u);
	EXPECT_EQ(scripted_system.allocations, 0);
}

// --- Counters

class Counters_test : public Scripted_symbols_test {
protected:
	Counters_test() { engine_.is_initialized = true; }
	std::string resolve(std::vector<xylUInt64> addresses, int count) {
		std::string out = "from before";
		EXPECT_TRUE(zubCallstack::resolve_counters(addresses.data(), count, out));
		return out;
	}
	static os::Engine_name name_of(const char* decorated, const char* plain, const char* complete) {
		os::Engine_name name;
		name.decorated = decorated;
		std::strcpy(name.plain, plain);
		std::strcpy(name.complete, complete);
		return name;
	}
};

TEST_F(Counters_test, CaptureHoldsOneSlotBackForTheEnd) {
	scripted_symbols.stack = {11, 12, 13, 14};
	scripted_symbols.hash = 0x123456789;
	unsigned long long addresses[5] = {1, 1, 1, 1, 1}, hash = 0;
	EXPECT_TRUE(zubCallstack::capture_counters(addresses, &hash, 4, 2));
	EXPECT_THAT(take_calls(), ElementsAre("back_trace(2, 3)"));
	EXPECT_THAT(addresses, ElementsAre(11, 12, 13, 0, 1));
	EXPECT_EQ(hash, 0x123456789u);
}

TEST_F(Counters_test, RoomForTheEndOnlyCapturesNothing) {
	scripted_symbols.stack = {11, 12};
	unsigned long long addresses[2] = {1, 1}, hash = 5;
	EXPECT_FALSE(zubCallstack::capture_counters(addresses, &hash, 1, 0));
	EXPECT_THAT(addresses, ElementsAre(0, 1));
	EXPECT_EQ(hash, 0u);
}

TEST_F(Counters_test, EngineThatIsOffResolvesNothing) {
	engine_.is_initialized = false;
	std::string out = "from before";
	unsigned long long address = 1;
	EXPECT_FALSE(zubCallstack::resolve_counters(&address, 1, out));
	EXPECT_EQ(out, "from before");
	EXPECT_THAT(scripted_symbols.records, IsEmpty());
}

TEST_F(Counters_test, WithoutMemoryNothingIsResolved) {
	scripted_symbols.has_memory = false;
	std::string out = "from before";
	unsigned long long address = 1;
	EXPECT_FALSE(zubCallstack::resolve_counters(&address, 1, out));
	EXPECT_EQ(out, "");
}

// kept: the record of each call stays behind; this test's fixture gives it back.
TEST_F(Counters_test, EachCallLeavesOneRecordBehind) {
	EXPECT_EQ(resolve({}, 0), "");
	EXPECT_EQ(resolve({1}, -1), "");
	EXPECT_EQ(resolve({1, 2, 3}, 3).empty(), false);
	EXPECT_EQ(scripted_symbols.records.size(), 3u);
}

TEST_F(Counters_test, EntryWithALineNamesFileLineAndFunction) {
	scripted_symbols.names[9] = name_of("?run@@YAXXZ", "run", "void run(void)");
	scripted_symbols.lines[9] = {"C:\\src\\run.cpp", 12};
	EXPECT_EQ(resolve({9}, 1), "C:\\src\\run.cpp (12): void run(void)\n");
	EXPECT_THAT(scripted_system.reports,
	            ElementsAre("ERROR: SymGetModuleInfo64, GetLastError: 126 (Address: "
	                        "0000000000000009)\n",
	                        "C:\\src\\run.cpp (12): void run(void)\n"));
}

TEST_F(Counters_test, MostCompleteNameIsShown) {
	struct Case {
		os::Engine_name name;
		const char* shown;
	};
	const Case cases[] = {
		{name_of("?run@@YAXXZ", "run", "void run(void)"), "void run(void)"},
		{name_of("?run@@YAXXZ", "run", ""), "run"},
		{name_of("?run@@YAXXZ", "", ""), "?run@@YAXXZ"},
		{name_of("", "run", ""), "run"},
		{name_of("", "", ""), "(function-name not available)"},
	};
	scripted_symbols.lines[9] = {"a.cpp", 1};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.shown);
		scripted_symbols.names[9] = c.name;
		EXPECT_EQ(resolve({9}, 1), std::string("a.cpp (1): ") + c.shown + "\n");
	}
}

TEST_F(Counters_test, EntryWithoutALineNamesAddressModuleAndFunction) {
	scripted_symbols.modules[0xAB] = text_of("C:\\game.exe", &os::Engine_module::image);
	scripted_symbols.names[0xAB] = name_of("run", "", "");
	EXPECT_EQ(resolve({0xAB}, 1),
	          "00000000000000AB (C:\\game.exe): (filename not available): run\n");
	scripted_symbols.lines[0xAB] = {"", 5}; // a line without a file is none
	EXPECT_EQ(resolve({0xAB}, 1),
	          "00000000000000AB (C:\\game.exe): (filename not available): run\n");
}

TEST_F(Counters_test, UnknownAddressShowsThreeFallbacksAndThreeNotes) {
	scripted_symbols.last_error = 487;
	const std::string text = "00000001400000FF ((module-name not available)): (filename not "
							 "available): (function-name not available)\n";
	EXPECT_EQ(resolve({0x1400000FF}, 1), text);
	const auto note = [](const std::string& question) {
		return "ERROR: " + question + ", GetLastError: 487 (Address: 00000001400000FF)\n";
	};
	EXPECT_THAT(scripted_system.reports,
	            ElementsAre(note("SymGetModuleInfo64"), note("SymGetSymFromAddr64"),
	                        note("SymGetLineFromAddr64"), text));
}

TEST_F(Counters_test, FirstZeroEndsTheListAndEntriesForgetEachOther) {
	scripted_symbols.modules[1] = text_of("one", &os::Engine_module::image);
	scripted_symbols.names[1] = name_of("f", "g", "h");
	scripted_symbols.lines[1] = {"a.cpp", 3};
	const std::string unknown = "0000000000000002 ((module-name not available)): (filename not "
								"available): (function-name not available)\n";
	EXPECT_EQ(resolve({1, 2, 0, 1}, 4), "a.cpp (3): h\n" + unknown);
	EXPECT_EQ(resolve({1, 2, 1}, 1), "a.cpp (3): h\n");
	EXPECT_EQ(resolve({0, 1}, 2), "");
}

TEST_F(Counters_test, TextsStopAtTheirBuffer) {
	const std::string file(4091, 'f');
	scripted_symbols.lines[1] = {file.c_str(), 3};
	scripted_symbols.names[1] = name_of("name", "", "");
	EXPECT_EQ(resolve({1}, 1), (file + " (3): name\n").substr(0, 4095));
}
