#include "known_image.h"

#include <morvantis/platform/system/linux/elf_symbols.h>
#include <morvantis/platform/system/linux/function_name.h>

#include <string_view>

namespace {

std::string readable(const char* symbol, bool with_parameters = false) {
	char text[256] = "";
	if (symbol) os::readable_function_name(symbol, with_parameters, text, sizeof(text));
	return text;
}

std::string_view file_name(const char* path) {
	const std::string_view text = path ? path : "";
	return text.substr(text.rfind('/') + 1);
}

void expect_place(const Known_offset& known, os::Elf_symbols& symbols,
                  const os::Elf_symbols* code) {
	SCOPED_TRACE(known.function + " in line " + std::to_string(known.line));
	const os::Elf_symbols::Place place = symbols.look_up(known.offset, code);
	EXPECT_EQ(readable(place.function), known.function);
	EXPECT_EQ(file_name(place.source), "known_code.cpp");
	EXPECT_EQ(place.line, known.line);
}

void expect_places(const Known_image& image, os::Elf_symbols& symbols,
                   const os::Elf_symbols* code) {
	ASSERT_EQ(image.places().size(), 8u);
	for (const Known_offset& known : image.places()) expect_place(known, symbols, code);
}

class Elf_symbols_test : public testing::TestWithParam<const char*> {};

TEST_P(Elf_symbols_test, KnowsFunctionAndLineOfEachCall) {
	const Known_image image(GetParam());
	for (const char* form : {"", "compressed", "no_aranges"}) {
		SCOPED_TRACE(form);
		os::Elf_symbols symbols;
		ASSERT_TRUE(symbols.open(known_file(GetParam(), form).c_str()));
		EXPECT_TRUE(symbols.has_debug_info() && symbols.has_symbol_table());
		expect_places(image, symbols, nullptr);
	}
}

TEST_P(Elf_symbols_test, FindsCallsOfASeparateFileInTheImage) {
	const Known_image image(GetParam());
	os::Elf_symbols symbols;
	os::Elf_symbols code;
	ASSERT_TRUE(symbols.open(known_file(GetParam(), "separate", ".debug").c_str()));
	ASSERT_TRUE(code.open(known_file(GetParam(), "stripped").c_str()));
	EXPECT_TRUE(symbols.has_debug_info() && !code.has_debug_info() && !code.has_symbol_table());
	expect_places(image, symbols, &code);
}

TEST_P(Elf_symbols_test, TakesPlacesForReturnAddressesWithoutCode) {
	const Known_image image(GetParam());
	os::Elf_symbols symbols;
	ASSERT_TRUE(symbols.open(known_file(GetParam(), "separate", ".debug").c_str()));
	for (const Known_offset& known : image.places()) {
		// What is behind its call may be another function's first byte.
		if (known.function != "known::never_returns") expect_place(known, symbols, nullptr);
	}
	EXPECT_STREQ(symbols.look_up(image.entry(), nullptr).function, "known_places");
}

TEST_P(Elf_symbols_test, KnowsAFunctionByItsFirstByte) {
	const Known_image image(GetParam());
	os::Elf_symbols symbols;
	ASSERT_TRUE(symbols.open(known_file(GetParam(), "").c_str()));
	const os::Elf_symbols::Place place = symbols.look_up(image.entry(), nullptr);
	EXPECT_STREQ(place.function, "known_places");
	EXPECT_EQ(place.distance, 0u);
	EXPECT_EQ(place.line + 3, image.places()[0].line);
}

TEST_P(Elf_symbols_test, HasNamesWithoutLinesFromASymbolTable) {
	const Known_image image(GetParam());
	os::Elf_symbols symbols;
	ASSERT_TRUE(symbols.open(known_file(GetParam(), "names").c_str()));
	EXPECT_TRUE(symbols.has_symbol_table() && !symbols.has_debug_info());
	for (const Known_offset& known : image.places()) {
		const os::Elf_symbols::Place place = symbols.look_up(known.offset, nullptr);
		EXPECT_EQ(readable(place.function), known.function);
		EXPECT_EQ(place.source, nullptr);
		EXPECT_EQ(place.line, 0u);
	}
}

TEST_P(Elf_symbols_test, AnswersNothingOutsideTheCode) {
	os::Elf_symbols symbols;
	ASSERT_TRUE(symbols.open(known_file(GetParam(), "").c_str()));
	for (const xylUInt32 offset : {0u, 1u, 0x200000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
		const os::Elf_symbols::Place place = symbols.look_up(offset, nullptr);
		EXPECT_EQ(place.function, nullptr);
		EXPECT_EQ(place.source, nullptr);
		EXPECT_EQ(place.line, 0u);
	}
}

INSTANTIATE_TEST_SUITE_P(Images, Elf_symbols_test, testing::Values("known_debug", "known_release"),
                         [](const auto& test) { return test.param; });

TEST(Elf_symbols, PassesOverWhatTheLinkerDropped) {
	const Known_image image("known_dropped");
	for (const char* form : {"", "no_aranges"}) {
		SCOPED_TRACE(form);
		os::Elf_symbols symbols;
		ASSERT_TRUE(symbols.open(known_file("known_dropped", form).c_str()));
		expect_places(image, symbols, nullptr);
	}
}

TEST(Elf_symbols, CountsPlacesFromWhereTheImageWasLinkedFor) {
	const Known_image image("known_placed");
	os::Elf_symbols symbols;
	ASSERT_TRUE(symbols.open(known_file("known_placed", "").c_str()));
	expect_places(image, symbols, nullptr);
	constexpr unsigned char id[16] = {0xA1, 0xB2, 0xC3, 0xD4,
	                                  0xE5, 0xF6, 0x07, 0x18}; // filled up with zeros
	ASSERT_NE(symbols.build_id(), nullptr);
	EXPECT_EQ(std::memcmp(symbols.build_id(), id, sizeof(id)), 0);
}

TEST(Elf_symbols, OpensNothingButImages) {
	for (const char* path : {"/nowhere/at/all", "/", "/etc/passwd", "/dev/null", ""}) {
		SCOPED_TRACE(path);
		os::Elf_symbols symbols;
		EXPECT_FALSE(symbols.open(path));
		EXPECT_EQ(symbols.build_id(), nullptr);
	}
}

TEST(Function_name, LeavesOffWhatIsNotTheName) {
	struct Case {
		const char* demangled;
		const char* name;
	};
	const Case cases[] = {
		// parameters and what stands behind them
		{"f()", "f"},
		{"ns::Class::f(int, char const*) const", "ns::Class::f"},
		{"ns::Class::f(std::map<int, void (*)(char)>) &&", "ns::Class::f"},
		{"(anonymous namespace)::f(unsigned long)", "(anonymous namespace)::f"},
		{"f(int) [clone .cold]", "f"},
		{"f(int) [clone .part.0] [clone .isra.0]", "f"},
		{"f[abi:cxx11](int)", "f[abi:cxx11]"},
		// return types
		{"int pick<int>(int const&)", "pick<int>"},
		{"std::map<int, long> ns::pick<int, char>(int)", "ns::pick<int, char>"},
		{"decltype(auto) pick<(anonymous namespace)::Thing>(int)",
	     "pick<(anonymous namespace)::Thing>"},
		// operators
		{"Class::operator()(int) const", "Class::operator()"},
		{"Class::operator bool() const", "Class::operator bool"},
		{"Class::operator unsigned long() const", "Class::operator unsigned long"},
		{"Class::operator<(Class const&) const", "Class::operator<"},
		{"Class::operator->() const", "Class::operator->"},
		{"bool ns::operator< <int>(ns::Box<int>, int)", "ns::operator< <int>"},
		{"operator new(unsigned long)", "operator new"},
		{"ns::operators::f(int)", "ns::operators::f"},
		// functions in functions
		{"f(int)::{lambda(char)#1}::operator()(char) const",
	     "f(int)::{lambda(char)#1}::operator()"},
		{"auto f<int>(int)::{lambda(auto:1)#1}::operator()<int>(int) const",
	     "f<int>(int)::{lambda(auto:1)#1}::operator()<int>"},
		// no functions, or no C++
		{"main", "main"},
		{"non-virtual thunk to ns::Class::f()", "non-virtual thunk to ns::Class::f"},
		{"", ""},
		{")", ")"},
		{"(", "("},
		{"(int)", "(int)"},
		{"]", "]"},
		{"Class::operator()", "Class::operator()"},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.demangled);
		EXPECT_EQ(os::qualified_name(c.demangled), c.name);
	}
}

TEST(Function_name, IsReadableAndFitsTheBuffer) {
	EXPECT_EQ(readable("_ZN2ns1C1fEi"), "ns::C::f");
	EXPECT_EQ(readable("_ZN2ns1C1fEi", true), "ns::C::f(int)");
	EXPECT_EQ(readable("_ZN2ns1C1fEi.cold"), "ns::C::f");
	EXPECT_EQ(readable("sort.part.0"), "sort");
	EXPECT_EQ(readable("sort.part.0", true), "sort.part.0");
	EXPECT_EQ(readable("__libc_start_main@@GLIBC_2.34"), "__libc_start_main");
	EXPECT_EQ(readable(".hidden"), ".hidden");
	EXPECT_EQ(readable("_Z"), "_Z");
	EXPECT_EQ(readable(""), "");
	char text[5] = "####";
	EXPECT_FALSE(os::readable_function_name("_ZN2ns1C1fEi", false, text, sizeof(text)));
	EXPECT_FALSE(os::readable_function_name("start", false, text, sizeof(text)));
	EXPECT_STREQ(text, "####");
	EXPECT_TRUE(os::readable_function_name("main", false, text, sizeof(text)));
	EXPECT_STREQ(text, "main");
}

} // namespace
