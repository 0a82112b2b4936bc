// From an offset in a library of some 50 MB with debug information to function, file and line.
// Beside libdwfl, elfutils' own service for that: as a tool uses it that opens the file for each
// frame, and as one that keeps it open.
//
// The first frame costs opening, the symbol table and one unit's lines and functions; a further one
// the tests whether the file is still the same, a few binary searches and the demangling.
#include <morvantis/platform/system/linux/elf_symbols.h>
#include <morvantis/platform/system/symbols.h>

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <cxxabi.h>
#include <elfutils/libdwfl.h>
#include <fcntl.h>
#include <gelf.h>
#include <unistd.h>

namespace {

struct Library {
	std::string path;
	unsigned char guid[16] = {};
	std::vector<xylUInt32> places; // within functions, in random order

	explicit Library(const char* file) : path(file) {
		os::Elf_symbols symbols;
		if (!symbols.open(file)) return;
		std::memcpy(guid, symbols.build_id(), sizeof(guid));
		collect_places();
	}

	os::Symbol_file_identity identity() const { return {path.c_str(), guid, 0, 0, path.c_str()}; }

private:
	void collect_places() {
		const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
		Elf* const elf = elf_begin(descriptor, ELF_C_READ_MMAP, nullptr);
		for (Elf_Scn* section = nullptr; (section = elf_nextscn(elf, section)) != nullptr;) {
			GElf_Shdr header;
			gelf_getshdr(section, &header);
			if (header.sh_type == SHT_SYMTAB) collect_places(elf_getdata(section, nullptr));
		}
		elf_end(elf);
		close(descriptor);
		std::shuffle(places.begin(), places.end(), std::mt19937(1));
	}
	void collect_places(Elf_Data* table) {
		GElf_Sym symbol;
		for (int i = 0; gelf_getsym(table, i, &symbol); ++i)
			if (GELF_ST_TYPE(symbol.st_info) == STT_FUNC && symbol.st_size > 64)
				places.push_back(static_cast<xylUInt32>(symbol.st_value + symbol.st_size / 2));
	}
};

const Library& whole() {
	static const Library library(MORVANTIS_LARGE_LIBRARY);
	return library;
}
// The same without .debug_aranges, the table from addresses to units, which not every compiler
// writes.
const Library& without_table() {
	static const Library library(MORVANTIS_LARGE_LIBRARY_WITHOUT_TABLE);
	return library;
}

// What a resolved frame costs: the search for the file, and the questions to it.
void resolve_ours(const Library& library, xylUInt32 place) {
	char file[os::symbol_text_size];
	os::Symbol_answer answer;
	os::find_symbol_file(".", library.identity(), file);
	os::look_up_symbol(nullptr, file, library.identity(), place, answer);
	benchmark::DoNotOptimize(answer);
}

class Dwfl_file {
public:
	explicit Dwfl_file(const Library& library) : session_(dwfl_begin(&callbacks)) {
		module_ = dwfl_report_offline(session_, "library", library.path.c_str(), -1);
		dwfl_report_end(session_, nullptr, nullptr);
		dwfl_module_getelf(module_, &bias_);
	}
	~Dwfl_file() { dwfl_end(session_); }
	Dwfl_file(const Dwfl_file&) = delete;
	Dwfl_file& operator=(const Dwfl_file&) = delete;

	void resolve(xylUInt32 place) {
		const GElf_Addr address = bias_ + place;
		GElf_Off distance = 0;
		GElf_Sym symbol;
		const char* const name =
			dwfl_module_addrinfo(module_, address, &distance, &symbol, nullptr, nullptr, nullptr);
		char* const demangled =
			name ? abi::__cxa_demangle(name, nullptr, nullptr, nullptr) : nullptr;
		int line = 0;
		if (Dwfl_Line* const row = dwfl_module_getsrc(module_, address))
			benchmark::DoNotOptimize(dwfl_lineinfo(row, nullptr, &line, nullptr, nullptr, nullptr));
		benchmark::DoNotOptimize(demangled);
		benchmark::DoNotOptimize(line);
		std::free(demangled);
	}

private:
	static constexpr Dwfl_Callbacks callbacks{.find_elf = nullptr,
	                                          .find_debuginfo = dwfl_standard_find_debuginfo,
	                                          .section_address = dwfl_offline_section_address,
	                                          .debuginfo_path = nullptr};
	Dwfl* session_;
	Dwfl_Module* module_ = nullptr;
	GElf_Addr bias_ = 0;
};

// The next place of the library, the same in the same order for everybody.
class Places {
public:
	explicit Places(const Library& library) : places_(library.places) {}
	xylUInt32 next() { return places_[index_++ % places_.size()]; }

private:
	const std::vector<xylUInt32>& places_;
	size_t index_ = 0;
};

void first_frame_ours(benchmark::State& state, const Library& (*library)()) {
	Places places(library());
	for (auto _ : state) {
		resolve_ours(library(), places.next());
		os::stop_symbol_engine(nullptr); // closes the file
	}
}

void first_frame_libdwfl(benchmark::State& state, const Library& (*library)()) {
	Places places(library());
	for (auto _ : state) Dwfl_file(library()).resolve(places.next());
}

void further_frame_ours(benchmark::State& state) {
	Places places(whole());
	for (size_t i = 0; i < whole().places.size(); ++i) resolve_ours(whole(), places.next());
	for (auto _ : state) resolve_ours(whole(), places.next());
	os::stop_symbol_engine(nullptr);
}

void further_frame_kept_open(benchmark::State& state) {
	Places places(whole());
	Dwfl_file file(whole());
	for (size_t i = 0; i < whole().places.size(); ++i) file.resolve(places.next());
	for (auto _ : state) file.resolve(places.next());
}

BENCHMARK_CAPTURE(first_frame_ours, , whole)->Name("resolve_first_frame/ours");
BENCHMARK_CAPTURE(first_frame_libdwfl, , whole)->Name("resolve_first_frame/libdwfl");
BENCHMARK_CAPTURE(first_frame_ours, , without_table)->Name("resolve_first_frame_no_aranges/ours");
// Without the table libdwfl finds functions but no lines, so it gets the file that has it.
BENCHMARK_CAPTURE(first_frame_libdwfl, , whole)
	->Name("resolve_first_frame_no_aranges/libdwfl_with_aranges");
BENCHMARK(further_frame_ours)->Name("resolve_further_frame/ours");
BENCHMARK_CAPTURE(first_frame_libdwfl, , whole)->Name("resolve_further_frame/libdwfl_anew");
BENCHMARK(further_frame_kept_open)->Name("resolve_further_frame/libdwfl_kept");

} // namespace
