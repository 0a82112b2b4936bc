// The start of the symbol engine and the module cache, with every answer that a system may give.

#include "image_bytes.h"
#include "scripted_symbols.h"

#include <morvantis/diagnostics/zubcallstack_helpers.h>

#include <gmock/gmock.h>

#include <mutex> // lock_guard

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char server_shares[] =
	"*\\\\files.example\\Symbols*\\\\files.example\\SymbolsCasual*\\\\files.example\\SymbolsGame"
	"*\\\\files.example\\SymbolsShipping*\\\\files.example\\SymbolsSystem;";

std::string search_paths() { return zubDebughelp_interface::get_symbol_search_paths().char_p(); }

std::string cached_names() {
	xylArray<xylVarString> names;
	names.push_back("what was there before");
	zubCallstack_helpers::get_cached_module_names(names);
	std::string all;
	for (const xylVarString& name : names) all += std::string(name.char_p()) + ";";
	return all;
}

} // namespace

class Symbol_engine_test : public Scripted_symbols_test {};
class Module_cache_test : public Scripted_symbols_test {};

TEST_F(Symbol_engine_test, EmptyEnvironmentGivesFoldersAndServer) {
	scripted_system.current_folder = "/here";
	EXPECT_EQ(search_paths(), std::string(".;/here;SRV") + server_shares);
	scripted_system.current_folder.clear(); // the system won't tell
	EXPECT_EQ(search_paths(), std::string(".;SRV") + server_shares);
}

TEST_F(Symbol_engine_test, PathsStandInTheirFixedOrder) {
	scripted_system.current_folder = "/here";
	scripted_symbols.environment = {
		{"SYSTEMDRIVE", "C:"},         {"DurangoXDK", "X:\\kit\\"},
		{"SYSTEMROOT", "C:\\Windows"}, {"_NT_ALTERNATE_SYMBOL_PATH", "second;third"},
		{"_NT_SYMBOL_PATH", "first"},  {"PATH", "nothing to do with it"}};
	EXPECT_EQ(search_paths(),
	          std::string(".;/here;first;second;third;C:\\Windows;X:\\kit\\xdk\\symbols\\;"
	                      "SRV*C:\\SymbolCache") +
	              server_shares);
}

TEST_F(Symbol_engine_test, ConsoleFolderGetsNoSeparatorInBetween) {
	scripted_symbols.environment = {{"DurangoXDK", "X:\\kit"}};
	EXPECT_EQ(search_paths(), std::string(".;X:\\kitxdk\\symbols\\;SRV") + server_shares);
}

TEST_F(Symbol_engine_test, EachVariableIsReadIntoFiveHundredAndTwelveBytes) {
	scripted_symbols.environment["_NT_SYMBOL_PATH"] = std::string(511, 'p');
	EXPECT_EQ(search_paths(), ".;" + std::string(511, 'p') + ";SRV" + server_shares);
	scripted_symbols.environment["_NT_SYMBOL_PATH"] += 'p';
	EXPECT_EQ(search_paths(), std::string(".;SRV") + server_shares);
}

TEST_F(Symbol_engine_test, StartAsksTheSystemStepByStep) {
	scripted_symbols.reader = "reader.dll";
	scripted_system.address = reinterpret_cast<void*>(size_t{0x70});
	const std::string paths = search_paths();
	take_calls();
	EXPECT_TRUE(engine_.initialize());
	EXPECT_THAT(take_calls(),
	            ElementsAre("set_symbol_options(8215)", "current_folder(4096)",
	                        "set_symbol_search_path(" + paths + ")", "load_module('reader.dll')",
	                        "module_symbol(0x70, DllGetClassObject)",
	                        "start_symbol_engine(" + paths + ")"));
	EXPECT_TRUE(engine_.is_initialized);
	EXPECT_EQ(engine_.dia_module, scripted_system.address);
	EXPECT_EQ(engine_.dll_get_class_object, scripted_system.address);
}

TEST_F(Symbol_engine_test, SecondStartAsksNothing) {
	EXPECT_TRUE(engine_.initialize());
	take_calls();
	EXPECT_TRUE(engine_.initialize());
	EXPECT_THAT(take_calls(), IsEmpty());
}

TEST_F(Symbol_engine_test, WithoutAReaderTheEngineIsNotStarted) {
	scripted_symbols.reader = "reader.dll";
	EXPECT_FALSE(engine_.initialize()); // can't be loaded
	EXPECT_EQ(take_calls().back(), "load_module('reader.dll')");
	EXPECT_FALSE(engine_.is_initialized);

	scripted_system.address = reinterpret_cast<void*>(size_t{0x70});
	scripted_system.has_symbols = false; // has no such entry
	EXPECT_FALSE(engine_.initialize());
	EXPECT_EQ(take_calls().back(), "module_symbol(0x70, DllGetClassObject)");
	EXPECT_FALSE(engine_.is_initialized);
	EXPECT_EQ(engine_.dll_get_class_object, nullptr);

	scripted_system.has_symbols = true;
	EXPECT_TRUE(engine_.initialize()); // a later call tries again, without loading once more
	EXPECT_THAT(take_calls(), testing::Not(testing::Contains("load_module('reader.dll')")));
	EXPECT_TRUE(engine_.lock.try_lock()); // every way out gave it back
	engine_.lock.unlock();
}

TEST_F(Symbol_engine_test, EngineThatDoesNotStartMayBeTriedAgain) {
	scripted_symbols.engine_starts = false;
	EXPECT_FALSE(engine_.initialize());
	EXPECT_FALSE(engine_.is_initialized);
	scripted_symbols.engine_starts = true;
	EXPECT_TRUE(engine_.initialize());
	EXPECT_TRUE(engine_.is_initialized);
}

TEST_F(Symbol_engine_test, CleanUpStopsWhatWasStartedAndKeepsTheReader) {
	engine_.cleanup();
	EXPECT_THAT(take_calls(), IsEmpty());

	scripted_symbols.reader = "reader.dll";
	scripted_system.address = reinterpret_cast<void*>(size_t{0x70});
	for (int i = 0; i < 2; ++i) {
		EXPECT_TRUE(engine_.initialize());
		take_calls();
		engine_.cleanup();
		EXPECT_THAT(take_calls(), ElementsAre("stop_symbol_engine"));
		EXPECT_FALSE(engine_.is_initialized);
		EXPECT_EQ(engine_.dia_module, scripted_system.address);
	}
	engine_.cleanup();
	EXPECT_THAT(take_calls(), IsEmpty());
	EXPECT_TRUE(engine_.lock.try_lock());
	engine_.lock.unlock();
}

TEST_F(Symbol_engine_test, ItsLockIsHeldWhileTheEngineStartsAndStops) {
	int calls = 0;
	scripted_symbols.on_call = [&](const std::string& call) {
		EXPECT_FALSE(is_free(engine_.lock)) << call;
		EXPECT_TRUE(is_free(zubCallstack_helpers::dbg_help_lock)) << call;
		++calls;
	};
	engine_.initialize();
	EXPECT_EQ(calls, 3); // options, paths, start
	engine_.cleanup();
	EXPECT_EQ(calls, 4);
}

// Whoever took the lock all the same would never come back.
TEST_F(Symbol_engine_test, WithNothingToDoTheLockIsNotTaken) {
	const std::lock_guard hold(engine_.lock);
	engine_.cleanup();
	engine_.is_initialized = true;
	EXPECT_TRUE(engine_.initialize());
	engine_.is_initialized = false;
}

TEST_F(Symbol_engine_test, DestructorStopsTheEngine) {
	{
		zubDebughelp_interface local;
		EXPECT_FALSE(local.is_initialized);
		EXPECT_EQ(local.dia_module, nullptr);
		EXPECT_EQ(local.dll_get_class_object, nullptr);
		EXPECT_TRUE(local.initialize());
		take_calls();
	}
	EXPECT_THAT(take_calls(), ElementsAre("stop_symbol_engine"));
}

TEST_F(Module_cache_test, ImagesAreTakenInWithTheirIdentities) {
	scripted_symbols.images = {{0x5000, Windows_image().bytes, "game.exe", "C:\\game.exe"},
	                           {0x3000, {'M', 'Z'}, "bare.dll", "C:\\bare.dll"},
	                           {0x4000, Elf_image().bytes, "lib.so", "/lib.so"}};
	EXPECT_TRUE(zubCallstack_helpers::enumerate_modules(nullptr));
	EXPECT_THAT(take_calls(), ElementsAre("visit_modules(null)"));
	EXPECT_EQ(cached_names(), "C:\\bare.dll;/lib.so;C:\\game.exe;"); // in the order of keys

	zubCallstack_module module;
	ASSERT_TRUE(zubCallstack_helpers::get_module_info(0x5000, module));
	EXPECT_STREQ(module.name.char_p(), "game.exe");
	EXPECT_STREQ(module.path.char_p(), "C:\\game.exe");
	EXPECT_EQ(module.base_address,
	          reinterpret_cast<size_t>(scripted_symbols.images[0].bytes.data()));
	EXPECT_EQ(module.image_size, 0x4000u);
	EXPECT_EQ(module.pdb_guid, Windows_image::guid);
	EXPECT_STREQ(module.extra_path.char_p(), "");
	ASSERT_TRUE(zubCallstack_helpers::get_module_info(0x4000, module));
	EXPECT_STREQ(module.pdb_name.char_p(), "lib.so");
	ASSERT_TRUE(zubCallstack_helpers::get_module_info(0x3000, module));
	EXPECT_EQ(module.pdb_signature, 0u);
	EXPECT_STREQ(module.pdb_name.char_p(), "");
}

TEST_F(Module_cache_test, ListThatIsBeingChangedIsAskedForAgain) {
	using enum os::Module_list;
	scripted_symbols.images = {{0x1000, {}, "a", "/a"}};
	scripted_symbols.lists = {changing, changing, changing, complete};
	EXPECT_TRUE(zubCallstack_helpers::enumerate_modules(&scripted_symbols));
	EXPECT_THAT(take_calls(), ElementsAre("visit_modules(a process)", "visit_modules(a process)",
	                                      "visit_modules(a process)", "visit_modules(a process)"));
	EXPECT_EQ(cached_names(), "/a;");

	scripted_symbols.images = {{0x2000, {}, "b", "/b"}};
	scripted_symbols.lists = {changing, unavailable};
	EXPECT_FALSE(zubCallstack_helpers::enumerate_modules(nullptr));
	EXPECT_EQ(cached_names(), "/a;");
}

TEST_F(Module_cache_test, EntryOnceCachedIsNotRefreshed) {
	scripted_symbols.images = {{0x1000, Windows_image().bytes, "old", "/old"}};
	zubCallstack_helpers::enumerate_modules(nullptr);
	scripted_symbols.images = {{0x1000, Elf_image().bytes, "new", "/new"},
	                           {0x2000, {}, "other", "/other"}};
	zubCallstack_helpers::enumerate_modules(nullptr);
	EXPECT_EQ(cached_names(), "/old;/other;");
	zubCallstack_module module;
	ASSERT_TRUE(zubCallstack_helpers::get_module_info(0x1000, module));
	EXPECT_EQ(module.pdb_guid, Windows_image::guid);

	zubCallstack_helpers::clear_module_cache();
	EXPECT_EQ(cached_names(), "");
	zubCallstack_helpers::enumerate_modules(nullptr);
	EXPECT_EQ(cached_names(), "/new;/other;");
}

TEST_F(Module_cache_test, LoadedLibraryIsCachedUnderItsBase) {
	scripted_system.separator = '\\';
	EXPECT_EQ(zubCallstack_helpers::load_and_cache_module("C:\\none.dll"), 0u);
	EXPECT_EQ(cached_names(), "");

	scripted_symbols.images = {{0, Windows_image().bytes, "", ""}};
	scripted_system.address = scripted_symbols.images[0].bytes.data();
	const auto base = reinterpret_cast<size_t>(scripted_system.address);
	EXPECT_EQ(zubCallstack_helpers::load_and_cache_module("C:\\libs/a.dll"), base);
	zubCallstack_module module;
	ASSERT_TRUE(zubCallstack_helpers::get_module_info(base, module));
	EXPECT_STREQ(module.name.char_p(), "libs/a.dll");
	EXPECT_STREQ(module.path.char_p(), "C:\\libs/a.dll");
	EXPECT_EQ(module.base_address, base);
	EXPECT_EQ(module.pdb_guid, Windows_image::guid);

	EXPECT_EQ(zubCallstack_helpers::load_and_cache_module("C:\\another name.dll"), base);
	EXPECT_EQ(cached_names(), "C:\\libs/a.dll;");
}

// Whoever took the lock of resolves would never come back.
TEST_F(Module_cache_test, NoLockIsTaken) {
	scripted_symbols.images = {{0x1000, {}, "a", "/a"}};
	scripted_system.address = &scripted_symbols;
	scripted_symbols.on_call = [&](const std::string&) { EXPECT_TRUE(is_free(engine_.lock)); };
	const std::lock_guard hold(zubCallstack_helpers::dbg_help_lock);
	EXPECT_TRUE(zubCallstack_helpers::enumerate_modules(nullptr));
	EXPECT_NE(zubCallstack_helpers::load_and_cache_module("/b"), 0u);
	zubCallstack_module module;
	EXPECT_TRUE(zubCallstack_helpers::get_module_info(0x1000, module));
	EXPECT_TRUE(zubCallstack_helpers::get_module_info("/a", module));
	EXPECT_EQ(cached_names(), "/a;/b;");
	zubCallstack_helpers::clear_module_cache();
}

TEST_F(Module_cache_test, ListOfLibrariesPassesOverFailures) {
	xylArray<xylVarString> paths;
	EXPECT_TRUE(zubCallstack_helpers::load_and_cache_modules(paths));
	paths.push_back("/a.so");
	paths.push_back("/b.so");
	EXPECT_TRUE(zubCallstack_helpers::load_and_cache_modules(paths)); // neither loads
	EXPECT_EQ(cached_names(), "");
	EXPECT_THAT(take_calls(), ElementsAre("load_module('/a.so')", "load_module('/b.so')"));
	scripted_system.address = &scripted_symbols;
	EXPECT_TRUE(zubCallstack_helpers::load_and_cache_modules(paths)); // the same image twice
	EXPECT_EQ(cached_names(), "/a.so;");
	EXPECT_EQ(paths.size(), 2u);
	// Both stay loaded, the one that was cached already too.
	EXPECT_THAT(take_calls(), ElementsAre("load_module('/a.so')", "load_module('/b.so')"));
}

TEST_F(Module_cache_test, QuestionsNeedTheExactKeyOrPath) {
	zubCallstack_module out;
	out.name = "untouched";
	EXPECT_FALSE(zubCallstack_helpers::get_module_info(0x1000, out));
	EXPECT_FALSE(zubCallstack_helpers::get_module_info("/lib/a.so", out));
	scripted_symbols.images = {{0x1000, {}, "high", "/lib/a.so"},
	                           {0x800, {}, "low", "/lib/a.so"},
	                           {0x400, {}, "other", "/lib/A.so"}};
	zubCallstack_helpers::enumerate_modules(nullptr);
	for (const xylUInt64 key : {0x0ull, 0xFFFull, 0x1001ull, 0x100001000ull}) {
		EXPECT_FALSE(zubCallstack_helpers::get_module_info(key, out)) << key;
	}
	for (const char* path : {"/lib/A.SO", "/lib/a.s", "/lib/a.so ", "a.so", ""}) {
		EXPECT_FALSE(zubCallstack_helpers::get_module_info(path, out)) << path;
	}
	EXPECT_STREQ(out.name.char_p(), "untouched");
	EXPECT_TRUE(zubCallstack_helpers::get_module_info(0x1000, out));
	EXPECT_STREQ(out.name.char_p(), "high");
	EXPECT_TRUE(zubCallstack_helpers::get_module_info("/lib/a.so", out)); // the lower key is first
	EXPECT_STREQ(out.name.char_p(), "low");
}

TEST_F(Module_cache_test, FileNameStandsBehindTheLastBackslash) {
	struct Case {
		const char* path;
		const char* name;
	};
	const Case cases[] = {
		{"C:\\game\\bin\\game.exe", "game.exe"},
		{"game.exe", "game.exe"},
		{"", ""},
		{"C:\\game\\", ""},
		{"\\", ""},
		{"/usr/lib/a.so", "/usr/lib/a.so"}, // kept: a slash separates nothing
		{"C:\\game/bin/game.exe", "game/bin/game.exe"},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.path);
		char name[64];
		std::memset(name, '#', sizeof(name));
		zubCallstack_helpers::get_file_name_from_path(xylVarString(c.path), name);
		EXPECT_STREQ(name, c.name);
	}
}

TEST(zubCallstack_module, StartsEmptyAndCopiesEveryField) {
	zubCallstack_module module;
	EXPECT_EQ(module.base_address, 0u);
	EXPECT_EQ(module.image_size, 0u);
	EXPECT_EQ(module.time_date_stamp, 0u);
	EXPECT_FALSE(module.is_stripped);
	EXPECT_EQ(module.pdb_guid, xylGuid_type{});
	EXPECT_EQ(module.pdb_signature, 0u);
	EXPECT_EQ(module.pdb_age, 0u);
	module = {"name", "path", true, 1, 2, 3, "extra", "pdb", {4, 5, 6, {7}}, 8, 9};
	for (const bool assigned : {false, true}) {
		zubCallstack_module copy(module);
		if (assigned) {
			copy = {};
			copy = module;
		}
		EXPECT_STREQ(copy.name.char_p(), "name");
		EXPECT_STREQ(copy.path.char_p(), "path");
		EXPECT_TRUE(copy.is_stripped);
		EXPECT_EQ(copy.time_date_stamp, 1u);
		EXPECT_EQ(copy.base_address, 2u);
		EXPECT_EQ(copy.image_size, 3u);
		EXPECT_STREQ(copy.extra_path.char_p(), "extra");
		EXPECT_STREQ(copy.pdb_name.char_p(), "pdb");
		EXPECT_EQ(copy.pdb_guid, (xylGuid_type{4, 5, 6, {7}}));
		EXPECT_EQ(copy.pdb_signature, 8u);
		EXPECT_EQ(copy.pdb_age, 9u);
	}
}
