// Stacks resolved through the debug help library and a reader of symbol files, with each step of
// the reader failing in turn; and the engine's answers about a library whose functions are known.

#include "../pdb_bytes.h"
#include "expected_leaks.h"
#include "reader_double/reader_double.h"
#include "temporary_folder.h"

#include <morvantis/diagnostics/zubcallstack.h>
#include <morvantis/diagnostics/zubcallstack_helpers.h>
#include <morvantis/diagnostics/zubdebughelp_interface.h>
#include <morvantis/diagnostics/zubraw_callstack.h>

#include <gmock/gmock.h>
#include <windows.h>

#include <dbghelp.h>

#include <cstdio>
#include <cwchar>

namespace {

using testing::HasSubstr;

constexpr xylUInt64 game_base = 0x140000000;
constexpr xylGuid_type guid = {0x12345678, 0x9ABC, 0xDEF0, {1, 2, 3, 4, 5, 6, 7, 8}};
constexpr char deferred_line[] = "#game.pdb@{123456789ABCDEF00102030405060708} (7): 0:4660";

std::string program_folder() {
	char path[MAX_PATH];
	const std::string program(path, GetModuleFileNameA(nullptr, path, sizeof(path)));
	return program.substr(0, program.rfind('\\'));
}

// Where the reader is found, before anybody asks for it.
Reader_script& reader_script() {
	static Reader_script& script = *[] {
		SetDllDirectoryA((program_folder() + "\\reader_double").c_str());
		const HMODULE reader = LoadLibraryA("msdia140.dll");
		const auto get = reinterpret_cast<Get_reader_script>(
			reinterpret_cast<void*>(GetProcAddress(reader, "reader_script")));
		return get();
	}();
	return script;
}

} // namespace

class Symbol_reader_test : public testing::Test {
protected:
	Symbol_reader_test() : folder_guard_(folder_.path()) {
		reader_script() = {};
		reader_script().failure = E_FAIL;
		reader_script().function = L"ns::run";
		reader_script().source = L"C:\\src\\run.cpp";
		reader_script().line = 12;
		reader_script().length = 40;
		zub_debughelp_interface = &engine();
		EXPECT_TRUE(engine().initialize());
		add_game("game.pdb");
		put_symbol_file("game.pdb", Pdb_file(guid, 7, 7));
	}
	~Symbol_reader_test() override {
		EXPECT_EQ(reader_script().live_objects, 0);
		EXPECT_FALSE(reader_script().other_slots);
		EXPECT_FALSE(reader_script().other_identifiers);
		zubCallstack_helpers::clear_module_cache();
		zub_debughelp_interface = nullptr;
	}
	static void add_game(const std::string& pdb_name) {
		zubCallstack_module& game = zubCallstack_helpers::Modules[game_base];
		game.name = "game.exe";
		game.pdb_name = pdb_name.c_str();
		game.pdb_guid = guid;
		game.pdb_signature = 0x53445352;
		game.pdb_age = 7;
	}
	std::string put_symbol_file(const std::string& name, const Pdb_file& file) const {
		return folder_.make_file(name, {file.bytes.begin(), file.bytes.end()});
	}
	static std::string resolve(xylUInt64 offset = 0x1234) {
		zubRaw_callstack raw;
		raw.stack.push_back({game_base, offset});
		zubCallstack stack;
		EXPECT_TRUE(stack.resolve_from_raw(raw));
		return stack.get_frame_count() == 1 ? stack.get_stack()[0].char_p() : "not one line";
	}

	// One for all tests, as its start takes most of their time.
	static zubDebughelp_interface& engine() {
		static zubDebughelp_interface engine;
		return engine;
	}

	Temporary_folder folder_;
	Current_folder folder_guard_;
};

TEST_F(Symbol_reader_test, LookUpAsksStepByStep) {
	EXPECT_EQ(resolve(0xFFFFFFFF00001234), "@game.exe@run.cpp (12): ns::run");
	const Reader_script& script = reader_script();
	EXPECT_EQ(std::memcmp(&script.guid, &guid, sizeof(guid)), 0);
	EXPECT_EQ(script.signature, 0x53445352u);
	EXPECT_EQ(script.age, 7u);
	const std::wstring path = script.path;
	EXPECT_EQ(path.substr(path.rfind(L'\\') + 1), L"game.pdb");
	EXPECT_EQ(script.tag_count, 1u);
	EXPECT_EQ(script.tags[0], 5u);
	EXPECT_EQ(script.symbol_place, 0x1234u);
	EXPECT_EQ(script.length_before, 4u);
	EXPECT_EQ(script.line_place, 0x1234u);
	EXPECT_EQ(script.line_length, 40u);
	EXPECT_EQ(script.line_index, 0u);
}

TEST_F(Symbol_reader_test, EachFrameOpensTheFileAnew) {
	zubRaw_callstack raw;
	for (const unsigned int offset : {1u, 2u, 1u}) raw.stack.push_back({game_base, offset});
	zubCallstack stack;
	EXPECT_TRUE(stack.resolve_from_raw(raw));
	EXPECT_EQ(reader_script().loads, 3u);
	EXPECT_EQ(reader_script().most_objects, 6) << "what one frame needs, from source to file name";
}

TEST_F(Symbol_reader_test, NamesOfSymbolFilesAreUtf8) {
	const std::filesystem::path path = folder_.path() / L"sp\u00EFel.pdb";
	std::filesystem::rename(folder_.path() / "game.pdb", path);
	add_game("D:\\build\\sp\xC3\xAF"
	         "el.pdb");
	EXPECT_EQ(resolve(), "@game.exe@run.cpp (12): ns::run");
	EXPECT_THAT(std::wstring(reader_script().path), testing::EndsWith(L"\\sp\u00EFel.pdb"));
	std::filesystem::remove(path);
	EXPECT_EQ(resolve(), "#sp\xC3\xAF"
	                     "el.pdb@{123456789ABCDEF00102030405060708} (7): 0:4660");
}

TEST_F(Symbol_reader_test, EachStepThatFailsHasItsLine) {
	constexpr char nothing[] = "@game.exe@unknown_source (unknown_line): unknown_function";
	constexpr char function[] = "@game.exe@unknown_source (unknown_line): ns::run";
	constexpr char number[] = "@game.exe@unknown_source (12): ns::run";
	constexpr char all[] = "@game.exe@run.cpp (12): ns::run";
	constexpr char without_name[] = "@game.exe@run.cpp (12): unknown_function";
	struct Case {
		Reader_step step;
		const char* failed;
		const char* missing; // null: there is nothing to hand out
	};
	const Case cases[] = {
		{step_factory, deferred_line, deferred_line},
		{step_instance, deferred_line, deferred_line},
		{step_load, deferred_line, nullptr},
		{step_session, nothing, nothing},
		{step_function, all, nothing}, // a failure goes on to the next tag
		{step_name, without_name, without_name},
		{step_length, function, nullptr},
		{step_lines, function, function},
		{step_line, function, function},
		{step_line_number, function, nullptr},
		{step_source, number, number},
		{step_source_name, number, number},
	};
	for (const Case& c : cases) {
		for (const HRESULT failure : {E_FAIL, S_FALSE}) {
			SCOPED_TRACE(testing::Message() << "step " << c.step << ", result " << failure);
			reader_script().failure = failure;
			reader_script().missing = 0;
			reader_script().failing = 1u << c.step;
			EXPECT_EQ(resolve(), c.failed);
			EXPECT_EQ(reader_script().live_objects, 0);
			reader_script().failing = 0;
			reader_script().leaking = 1u << c.step; // what is handed out all the same goes back
			if (c.missing) {
				EXPECT_EQ(resolve(),
				          c.step == step_name || c.step == step_source_name ? all : c.failed);
				EXPECT_EQ(reader_script().live_objects, 0);
			}
			reader_script().leaking = 0;
			reader_script().missing = 1u << c.step;
			if (c.missing) {
				EXPECT_EQ(resolve(), c.missing);
			}
			EXPECT_EQ(reader_script().live_objects, 0);
		}
	}
}

TEST_F(Symbol_reader_test, TagsAreTriedInTheirOrder) {
	Reader_script& script = reader_script();
	const auto fail = [&](std::initializer_list<Reader_step> steps) {
		script.failing = script.tag_count = 0;
		for (const Reader_step step : steps) script.failing |= 1u << step;
	};
	fail({step_function});
	EXPECT_EQ(resolve(), "@game.exe@run.cpp (12): ns::run");
	EXPECT_EQ(std::vector(script.tags, script.tags + script.tag_count), (std::vector<DWORD>{5, 0}));
	fail({step_function, step_any_symbol});
	EXPECT_EQ(resolve(), "@game.exe@run.cpp (12): ns::run");
	EXPECT_EQ(std::vector(script.tags, script.tags + script.tag_count),
	          (std::vector<DWORD>{5, 0, 10}));
	fail({step_function, step_any_symbol, step_public_symbol});
	EXPECT_EQ(resolve(), "@game.exe@unknown_source (unknown_line): unknown_function");
	EXPECT_EQ(script.tag_count, 3u);
}

TEST_F(Symbol_reader_test, LengthOfASymbolIsFourUnlessItTells) {
	reader_script().keeps_length = true;
	EXPECT_EQ(resolve(), "@game.exe@run.cpp (12): ns::run");
	EXPECT_EQ(reader_script().line_length, 4u);
	reader_script().keeps_length = false;
	reader_script().length = 0;
	EXPECT_EQ(resolve(), "@game.exe@unknown_source (unknown_line): ns::run");
}

TEST_F(Symbol_reader_test, TextsAreConvertedToUtf8AndBounded) {
	reader_script().function = L"gr\u00F6\u00DFe";
	reader_script().source = L"\u4E2D.cpp"; // no folder in front
	EXPECT_EQ(resolve(), "@game.exe@\xE4\xB8\xAD.cpp (12): gr\xC3\xB6\xC3\x9F"
	                     "e");

	// kept: a text of more than 1024 bytes, terminator included, leaves what was there before.
	const std::wstring fits(1023, L'f'), too_long(1024, L'f');
	reader_script().function = fits.c_str();
	EXPECT_EQ(resolve(), "@game.exe@\xE4\xB8\xAD.cpp (12): " + std::string(1023, 'f'));
	reader_script().function = too_long.c_str();
	EXPECT_EQ(resolve(), "@game.exe@\xE4\xB8\xAD.cpp (12): ");
	reader_script().function = L"ns::run";
	reader_script().source = too_long.c_str();
	EXPECT_EQ(resolve(), "@game.exe@ns::run (12): ns::run");
}

TEST_F(Symbol_reader_test, OnlyTheFileOfThisBuildIsFound) {
	Pdb_file other_guid({1, 2, 3, {}}, 7, 7), other_age(guid, 8, 8);
	put_symbol_file("game.pdb", other_guid);
	EXPECT_EQ(resolve(), deferred_line);
	put_symbol_file("game.pdb", other_age);
	EXPECT_EQ(resolve(), deferred_line);
	folder_.make_file("game.pdb", "no program database");
	EXPECT_EQ(resolve(), deferred_line);
	EXPECT_EQ(reader_script().loads, 0u);
	// Either age agrees, the file's or that of its debug information.
	for (const Pdb_file& right : {Pdb_file(guid, 3, 7), Pdb_file(guid, 7, 3)}) {
		put_symbol_file("game.pdb", right);
		EXPECT_EQ(resolve(), "@game.exe@run.cpp (12): ns::run");
	}
}

TEST_F(Symbol_reader_test, SearchGoesOnPastFilesOfOtherBuilds) {
	put_symbol_file("game.pdb", Pdb_file({1, 2, 3, {}}, 7, 7));
	put_symbol_file("first/game.pdb", Pdb_file(guid, 6, 6));
	put_symbol_file("sec\xC3\xB6nd/game.pdb", Pdb_file(guid, 7, 7));
	put_symbol_file("second/game.pdb", Pdb_file(guid, 7, 7));
	const std::string paths = folder_ / "none" + ";" + folder_ / "first" + ";" + folder_ / "second";
	SetEnvironmentVariableA("_NT_SYMBOL_PATH", paths.c_str());
	EXPECT_EQ(resolve(), "@game.exe@run.cpp (12): ns::run");
	SetEnvironmentVariableA("_NT_SYMBOL_PATH", nullptr);
	EXPECT_THAT(
		std::string(reader_script().path, reader_script().path + std::wcslen(reader_script().path)),
		testing::EndsWith("\\second\\game.pdb"));
}

// Wine copies each element into MAX_PATH characters.
TEST_F(Symbol_reader_test, FoldersThatAreTooLongArePassedOver) {
	put_symbol_file("last/game.pdb", Pdb_file(guid, 7, 7));
	std::filesystem::remove(folder_ / "game.pdb");
	for (const size_t length : {247u, 248u, 260u, 380u}) {
		SCOPED_TRACE(length);
		const std::string paths = "C:\\" + std::string(length - 3, 'x') + ";" + folder_ / "last";
		SetEnvironmentVariableA("_NT_SYMBOL_PATH", paths.c_str());
		EXPECT_EQ(resolve(), "@game.exe@run.cpp (12): ns::run");
	}
	SetEnvironmentVariableA("_NT_SYMBOL_PATH", nullptr);
	EXPECT_EQ(resolve(), deferred_line);
}

TEST_F(Symbol_reader_test, RecordedPathIsCutToItsName) {
	add_game("D:\\build of another machine\\game.pdb");
	EXPECT_EQ(resolve(), "@game.exe@run.cpp (12): ns::run");
	std::filesystem::remove(folder_ / "game.pdb");
	EXPECT_EQ(resolve(), deferred_line);
}

TEST_F(Symbol_reader_test, ImageWithoutIdentityIsDeferred) {
	zubCallstack_helpers::Modules[game_base] = {};
	zubCallstack_helpers::Modules[game_base].name = "game.exe";
	EXPECT_EQ(resolve(), "#@{00000000000000000000000000000000} (0): 0:4660");
}

TEST_F(Symbol_reader_test, EngineHasItsOptionsAndPathsUntilItIsStopped) {
	const HANDLE process = zubDebughelp_interface::dummy_process;
	char paths[8192] = "";
	SymSetOptions(0);
	SetEnvironmentVariableA("_NT_SYMBOL_PATH", folder_.path().string().c_str());
	engine().cleanup();
	EXPECT_FALSE(SymGetSearchPath(process, paths, sizeof(paths)));
	EXPECT_TRUE(engine().initialize());
	EXPECT_EQ(SymGetOptions(), 0x2017u);
	EXPECT_TRUE(SymGetSearchPath(process, paths, sizeof(paths)));
	EXPECT_STREQ(paths, zubDebughelp_interface::get_symbol_search_paths().char_p());
	SetEnvironmentVariableA("_NT_SYMBOL_PATH", nullptr);
}

TEST_F(Symbol_reader_test, EngineThatIsOffDefers) {
	engine().cleanup();
	EXPECT_EQ(resolve(), deferred_line);
	EXPECT_TRUE(engine().initialize());
	EXPECT_EQ(resolve(), "@game.exe@run.cpp (12): ns::run");
}

// --- A library with a real symbol file

namespace {

struct Known_library {
	Known_library() : path(program_folder() + "\\known_functions.dll") {
		key = zubCallstack_helpers::load_and_cache_module(path.c_str());
		call_through = reinterpret_cast<void (*)(void (*)(void*), void*)>(reinterpret_cast<void*>(
			GetProcAddress(reinterpret_cast<HMODULE>(key), "call_through")));
	}
	std::string path;
	unsigned long long key;
	void (*call_through)(void (*)(void*), void*);
};

struct Counters {
	unsigned long long addresses[16], hash;
	bool result;
};

// Leaves out the library's frame and its own.
void capture_here(void* data) {
	auto& counters = *static_cast<Counters*>(data);
	counters.result = zubCallstack::capture_counters(counters.addresses, &counters.hash, 16, 2);
}

} // namespace

TEST_F(Symbol_reader_test, SymbolFileOfALinkerIsFoundByTheImagesIdentity) {
	const Known_library library;
	zubCallstack_module module;
	ASSERT_TRUE(zubCallstack_helpers::get_module_info(library.key, module));
	EXPECT_STREQ(module.pdb_name.char_p(), "known_functions.pdb");
	EXPECT_EQ(module.pdb_signature, 0x53445352u);
	EXPECT_STREQ(module.name.char_p(), "known_functions.dll");

	zubRaw_callstack raw;
	raw.stack.push_back({library.key, 0x1010});
	zubCallstack stack;
	SetEnvironmentVariableA("_NT_SYMBOL_PATH", program_folder().c_str());
	stack.resolve_from_raw(raw);
	SetEnvironmentVariableA("_NT_SYMBOL_PATH", nullptr);
	EXPECT_STREQ(stack.get_stack()[0].char_p(), "@known_functions.dll@run.cpp (12): ns::run");
	EXPECT_EQ(std::memcmp(&reader_script().guid, &module.pdb_guid, sizeof(GUID)), 0);
}

TEST_F(Symbol_reader_test, EngineNamesFunctionsFilesAndLinesOfCapturedCounters) {
	const Known_library library;
	SetEnvironmentVariableA("_NT_SYMBOL_PATH", program_folder().c_str());
	engine().cleanup();
	ASSERT_TRUE(engine().initialize()); // the library is among the loaded images now
	SetEnvironmentVariableA("_NT_SYMBOL_PATH", nullptr);
	Counters counters{};
	library.call_through(capture_here, &counters);
	EXPECT_TRUE(counters.result);
	EXPECT_NE(counters.hash, 0u);
	std::string out;
	{
		const Expected_leaks leaks;
		ASSERT_TRUE(zubCallstack::resolve_counters(counters.addresses, 3, out));
	}
	std::string lines[3];
	size_t place = 0;
	for (std::string& line : lines) {
		const size_t end = out.find('\n', place);
		line = out.substr(place, end - place);
		place = end + 1;
	}
	EXPECT_THAT(lines[0],
	            testing::AllOf(HasSubstr("known_functions.cpp (9): "), HasSubstr("inner")));
	EXPECT_THAT(lines[1],
	            testing::AllOf(HasSubstr("known_functions.cpp (14): "), HasSubstr("outer")));
	EXPECT_THAT(lines[2],
	            testing::AllOf(HasSubstr("known_functions.cpp (21): "), HasSubstr("call_through")));
}

namespace {

std::string engine_line(const void* address) {
	auto counter = static_cast<unsigned long long>(reinterpret_cast<size_t>(address));
	std::string out;
	const Expected_leaks leaks;
	EXPECT_TRUE(zubCallstack::resolve_counters(&counter, 1, out));
	return out;
}

} // namespace

// An export is all that the engine knows of it.
TEST_F(Symbol_reader_test, NameOfAnotherCompilerIsShownInFullAndItsImageInPlaceOfALine) {
	reader_script();
	const HMODULE reader = GetModuleHandleA("msdia140.dll");
	const auto* function =
		reinterpret_cast<const void*>(GetProcAddress(reader, "?twice@known@@YAHH@Z"));
	ASSERT_NE(function, nullptr);
	engine().cleanup();
	ASSERT_TRUE(engine().initialize());
	const DWORD options = SymGetOptions();
	SymSetOptions(options & ~static_cast<DWORD>(SYMOPT_UNDNAME)); // or it undoes all of it itself
	const std::string line = engine_line(function);
	SymSetOptions(options);
	char address[32];
	std::snprintf(address, sizeof(address), "%016llX (", reinterpret_cast<long long>(function));
	EXPECT_THAT(line, testing::StartsWith(address));
	EXPECT_THAT(line, testing::EndsWith("\\msdia140.dll): (filename not available): "
	                                    "int __cdecl known::twice(int)\n"));
}

TEST_F(Symbol_reader_test, EngineKnowsNothingOfAnAddressOutsideAllImages) {
	EXPECT_EQ(engine_line(reinterpret_cast<const void*>(size_t{0x10})),
	          "0000000000000010 ((module-name not available)): (filename not available): "
	          "(function-name not available)\n");
}
