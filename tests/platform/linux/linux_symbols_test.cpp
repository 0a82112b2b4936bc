#include "known_image.h"

#include <morvantis/platform/system/error.h>
#include <morvantis/platform/system/linux/elf_symbols.h>
#include <morvantis/platform/system/symbols.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <thread>

namespace {

unsigned char* guid_of(const std::string& image) {
	static unsigned char guid[16];
	os::Elf_symbols symbols;
	EXPECT_TRUE(symbols.open(image.c_str()));
	std::memcpy(guid, symbols.build_id(), sizeof(guid));
	return guid;
}

std::string file_name(const std::string& path) { return path.substr(path.rfind('/') + 1); }

// The engine of this system, started for the length of a test.
class Linux_symbols_test : public testing::Test {
protected:
	void start(const std::string& paths) {
		ASSERT_TRUE(os::start_symbol_engine(nullptr, paths.c_str()));
	}
	~Linux_symbols_test() override { os::stop_symbol_engine(nullptr); }
};

TEST_F(Linux_symbols_test, NeedsNoReaderLibrary) {
	EXPECT_EQ(os::symbol_reader_library(), nullptr);
	os::set_symbol_options(0x2017);
	os::set_symbol_search_path(nullptr, "/nowhere");
}

TEST_F(Linux_symbols_test, AnswersOffsetsOfAnExactBuild) {
	const Known_image image("known_release");
	const std::string path = known_file("known_release", "stripped");
	const os::Symbol_file_identity identity{"known_release.so", guid_of(path), 0x53445352, 0,
	                                        path.c_str()};
	char found[os::symbol_text_size] = "";
	EXPECT_FALSE(os::find_symbol_file("/nowhere", identity, found));
	const std::string folder = MORVANTIS_TEST_IMAGES "/separate";
	ASSERT_TRUE(os::find_symbol_file(folder.c_str(), identity, found));
	EXPECT_EQ(found, folder + "/known_release.so.debug");
	for (const Known_offset& known : image.places()) {
		os::Symbol_answer answer;
		ASSERT_TRUE(os::look_up_symbol(nullptr, found, identity, known.offset, answer));
		EXPECT_TRUE(answer.has_function && answer.has_line && answer.has_source);
		EXPECT_EQ(answer.function, known.function);
		EXPECT_EQ(file_name(answer.source), "known_code.cpp");
		EXPECT_EQ(answer.line, known.line);
	}
	os::Symbol_answer nothing;
	EXPECT_TRUE(os::look_up_symbol(nullptr, found, identity, 0x00FFFFFF, nothing));
	EXPECT_FALSE(nothing.has_function || nothing.has_line || nothing.has_source);
}

TEST_F(Linux_symbols_test, RefusesFilesOfOtherBuilds) {
	const std::string other = known_file("known_other", "");
	const std::string path = known_file("known_release", "");
	const os::Symbol_file_identity identity{"known_release.so", guid_of(path), 0, 0, nullptr};
	os::Symbol_answer answer;
	answer.line = 77;
	for (const std::string& file :
	     {other, std::string("/nowhere"), std::string(), other + ".debug"})
		EXPECT_FALSE(os::look_up_symbol(nullptr, file.c_str(), identity, 0x1100, answer)) << file;
	EXPECT_EQ(answer.line, 77u);
	char found[os::symbol_text_size];
	EXPECT_FALSE(os::find_symbol_file("/nowhere", {nullptr, identity.guid, 0, 0, nullptr}, found));
	EXPECT_TRUE(os::find_symbol_file("", {nullptr, identity.guid, 0, 0, path.c_str()}, found));
	EXPECT_EQ(found, path);
}

TEST_F(Linux_symbols_test, AnswersAddressesOfThisProcess) {
	const Known_image image("known_debug");
	start("/nowhere");
	os::set_symbol_search_path(nullptr, MORVANTIS_TEST_IMAGES "/separate");
	const std::unique_ptr<void, decltype(&std::free)> record(os::allocate_engine_record(),
	                                                         std::free);
	for (const Known_offset& known : image.places()) {
		const auto address = reinterpret_cast<xylUInt64>(image.base() + known.offset);
		os::Engine_module module;
		ASSERT_TRUE(os::engine_module(nullptr, address, module));
		EXPECT_EQ(module.base, reinterpret_cast<xylUInt64>(image.base()));
		EXPECT_EQ(module.image, known_file("known_debug", "").substr(0, 255));
		EXPECT_STREQ(module.loaded_image, module.image);
		const auto name = std::make_unique<os::Engine_name>();
		ASSERT_TRUE(os::engine_name(nullptr, address, record.get(), *name));
		EXPECT_EQ(name->plain, known.function);
		EXPECT_EQ(std::string(name->complete).find('(') == std::string::npos,
		          known.function == "known_places");
		os::Engine_line line;
		ASSERT_TRUE(os::engine_line(nullptr, address, line));
		EXPECT_EQ(line.line, known.line);
		EXPECT_EQ(file_name(line.file), "known_code.cpp");
		EXPECT_NE(std::string(line.file).find("/images/"), std::string::npos) << "with its folder";
	}
}

TEST_F(Linux_symbols_test, AnswersAddressesBySearchingItsPaths) {
	const Known_image image("known_release", "stripped");
	const Known_offset known = image.places()[1];
	const auto address = reinterpret_cast<xylUInt64>(image.base() + known.offset);
	const auto line_of = [address] {
		os::Engine_line line{nullptr, 0};
		return os::engine_line(nullptr, address, line) ? line.line : 0;
	};
	const std::string folder = MORVANTIS_TEST_IMAGES "/separate";
	EXPECT_EQ(line_of(), 0u) << "not started";
	start("/nowhere");
	EXPECT_EQ(line_of(), 0u);
	start("/nowhere;" + folder);
	EXPECT_EQ(line_of(), known.line);
	os::set_symbol_search_path(nullptr, "/nowhere");
	EXPECT_EQ(line_of(), 0u);
	os::set_symbol_search_path(nullptr, folder.c_str());
	EXPECT_EQ(line_of(), known.line);
	os::stop_symbol_engine(nullptr);
	EXPECT_EQ(line_of(), 0u);
	os::set_symbol_search_path(nullptr, folder.c_str()); // too late, or too early
	EXPECT_EQ(line_of(), 0u);
}

TEST_F(Linux_symbols_test, AnswersAddressesOfAnImageWithAPlaceOfItsOwn) {
	const Known_image image("known_placed");
	start("");
	const std::unique_ptr<void, decltype(&std::free)> record(os::allocate_engine_record(),
	                                                         std::free);
	const auto name = std::make_unique<os::Engine_name>();
	for (const Known_offset& known : image.places()) {
		const auto address = reinterpret_cast<xylUInt64>(image.base() + known.offset);
		os::Engine_line line;
		ASSERT_TRUE(os::engine_line(nullptr, address, line));
		EXPECT_EQ(line.line, known.line);
		ASSERT_TRUE(os::engine_name(nullptr, address, record.get(), *name));
		EXPECT_EQ(name->plain, known.function);
	}
}

TEST_F(Linux_symbols_test, HasTheDecoratedNameInTheRecord) {
	const Known_image image("known_release");
	start("");
	const std::unique_ptr<void, decltype(&std::free)> record(os::allocate_engine_record(),
	                                                         std::free);
	const auto name = std::make_unique<os::Engine_name>();
	for (const Known_offset& known : image.places()) {
		if (known.function != "known::twice<int>") continue;
		ASSERT_TRUE(os::engine_name(nullptr,
		                            reinterpret_cast<xylUInt64>(image.base() + known.offset),
		                            record.get(), *name));
		EXPECT_STREQ(name->decorated, "_ZN5known5twiceIiEET_S1_");
		EXPECT_EQ(static_cast<const void*>(name->decorated), static_cast<char*>(record.get()) + 32);
		EXPECT_STREQ(name->complete, "int known::twice<int>(int)");
	}
}

TEST_F(Linux_symbols_test, FallsBackToExportedNames) {
	start("");
	const std::unique_ptr<void, decltype(&std::free)> record(os::allocate_engine_record(),
	                                                         std::free);
	const auto name = std::make_unique<os::Engine_name>();
	// The C library is stripped on most machines; with its symbol file there may be an alias.
	ASSERT_TRUE(
		os::engine_name(nullptr, reinterpret_cast<xylUInt64>(&std::qsort), record.get(), *name));
	EXPECT_NE(std::string(name->plain).find("qsort"), std::string::npos) << name->plain;
}

TEST_F(Linux_symbols_test, SaysWhyItKnowsNothing) {
	start("");
	int local = 0;
	const xylUInt64 addresses[] = {1, reinterpret_cast<xylUInt64>(&local), ~xylUInt64{0}};
	for (const xylUInt64 address : addresses) {
		SCOPED_TRACE(address);
		os::Engine_module module;
		os::Engine_line line;
		os::set_last_error(0);
		EXPECT_FALSE(os::engine_module(nullptr, address, module));
		EXPECT_EQ(os::last_error(), static_cast<xylUInt32>(ENOENT));
		os::set_last_error(0);
		EXPECT_FALSE(os::engine_line(nullptr, address, line));
		EXPECT_EQ(os::last_error(), static_cast<xylUInt32>(ENOENT));
		const std::unique_ptr<void, decltype(&std::free)> record(os::allocate_engine_record(),
		                                                         std::free);
		const auto name = std::make_unique<os::Engine_name>();
		EXPECT_FALSE(os::engine_name(nullptr, address, record.get(), *name));
	}
}

// kept: a text without room leaves what was there, which for a source is the function's name.
TEST_F(Linux_symbols_test, LeavesOutTextsWithoutRoom) {
	const std::string path = known_file("known_long", "");
	const os::Symbol_file_identity identity{"known_long.so", guid_of(path), 0, 0, path.c_str()};
	void* const image = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
	ASSERT_NE(image, nullptr) << dlerror();
	struct Case {
		std::string name;
		const char *function, *source;
		xylUInt32 line;
	};
	const Case cases[] = {{"short_function", "short_function", "short_function", 7},
	                      {std::string(1100, 'x'), "", "folder/short.cpp", 8}};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.line);
		void* const address = dlsym(image, c.name.c_str());
		dl_find_object facts;
		ASSERT_EQ(_dl_find_object(address, &facts), 0);
		const auto offset = static_cast<xylUInt32>(static_cast<char*>(address) -
		                                           static_cast<char*>(facts.dlfo_map_start));
		os::Symbol_answer answer;
		ASSERT_TRUE(os::look_up_symbol(nullptr, path.c_str(), identity, offset, answer));
		EXPECT_TRUE(answer.has_function && answer.has_line && answer.has_source);
		EXPECT_STREQ(answer.function, c.function);
		const std::string source = answer.source;
		EXPECT_EQ(source.substr(source.size() - std::min(source.size(), std::strlen(c.source))),
		          c.source);
		EXPECT_LT(source.size(), 200u);
		EXPECT_EQ(answer.line, c.line);
	}
	dlclose(image);
}

// Whether this process has the file open.
bool is_open(const std::string& path) {
	for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
		std::error_code gone;
		if (std::filesystem::read_symlink(entry, gone) == path) return true;
	}
	return false;
}

TEST_F(Linux_symbols_test, ClosesItsFilesAtTheEnd) {
	const std::string path = std::filesystem::canonical(known_file("known_release", "names"));
	const os::Symbol_file_identity identity{"known_release.so", guid_of(path), 0, 0, path.c_str()};
	start("");
	os::Symbol_answer answer;
	ASSERT_TRUE(os::look_up_symbol(nullptr, path.c_str(), identity, 0x1100, answer));
	EXPECT_TRUE(is_open(path));
	os::stop_symbol_engine(nullptr);
	EXPECT_FALSE(is_open(path));
}

TEST_F(Linux_symbols_test, ServesThreadsOneAfterTheOther) {
	const Known_image image("known_release");
	const std::string path = known_file("known_release", "");
	const os::Symbol_file_identity identity{"known_release.so", guid_of(path), 0, 0, path.c_str()};
	start("");
	std::vector<std::thread> threads;
	for (int t = 0; t < 4; ++t)
		threads.emplace_back([&, t] {
			for (int i = 0; i < 50; ++i) {
				const Known_offset& known = image.places()[static_cast<size_t>(i + t) % 8];
				os::Symbol_answer answer;
				EXPECT_TRUE(
					os::look_up_symbol(nullptr, path.c_str(), identity, known.offset, answer));
				EXPECT_EQ(answer.line, known.line);
				if (t == 0) os::stop_symbol_engine(nullptr); // closes what others are about to ask
			}
		});
	for (std::thread& thread : threads) thread.join();
}

} // namespace
