// PDB files, by the system's own debug help library.
#include "../pdb_files.h"

#include <morvantis/platform/system/windows/include_windows.h>

#include <cstring>
#include <filesystem>

#include <dbghelp.h>

namespace fs = std::filesystem;

namespace {

constexpr size_t largest_name = 1024;

// A symbol record and the room for its name.
struct Named_symbol {
	SYMBOL_INFO symbol;
	char name[largest_name];
};

class Pdb_reader : public Symbol_reader {
public:
	explicit Pdb_reader(const Reader_options& options)
		: files_(options.folders),
		  folder_(fs::temp_directory_path() /
	              ("stack_resolve_" + std::to_string(GetCurrentProcessId()))) {
		fs::create_directories(folder_);
		SymSetOptions(SYMOPT_UNDNAME | SYMOPT_LOAD_LINES | SYMOPT_EXACT_SYMBOLS);
		is_started_ = SymInitialize(session(), folder_.string().c_str(), FALSE);
	}
	~Pdb_reader() override {
		if (is_started_) SymCleanup(session());
		std::error_code failure;
		fs::remove_all(folder_, failure);
	}

	Resolution resolve(const Frame& frame) override {
		Resolution result = files_.find(frame);
		if (result.outcome != Outcome::resolved) return result;
		const DWORD64 base = base_of(result.file, frame);
		if (base == 0) {
			result.outcome = Outcome::no_reader;
		} else {
			look_up(base + frame.offset, result.place);
		}
		return result;
	}

private:
	// Any value that no other session of the process uses.
	HANDLE session() { return this; }

	// Where the file's image is loaded, as far as the library is concerned; 0 if it can't read it.
	DWORD64 base_of(const std::string& file, const Frame& frame) {
		const auto known = bases_.find(file);
		if (known != bases_.end()) return known->second;
		const std::string image = (folder_ / std::to_string(bases_.size())).string() + ".dll";
		const DWORD64 wanted = image_base + bases_.size() * DWORD64{0x100000000};
		if (!write_image_for(fs::absolute(file).string(), frame, image)) return 0;
		return bases_[file] = SymLoadModuleEx(session(), nullptr, image.c_str(), nullptr, wanted,
		                                      largest_image, nullptr, 0);
	}

	void look_up(DWORD64 address, Place& place) {
		Named_symbol named{};
		named.symbol.SizeOfStruct = sizeof(SYMBOL_INFO);
		named.symbol.MaxNameLen = largest_name;
		DWORD64 distance = 0;
		if (SymFromAddr(session(), address, &distance, &named.symbol))
			place.function = named.symbol.Name;
		IMAGEHLP_LINE64 line{};
		line.SizeOfStruct = sizeof(line);
		DWORD columns = 0;
		if (!SymGetLineFromAddr64(session(), address, &columns, &line)) return;
		place.line = line.LineNumber;
		const std::string path = line.FileName;
		place.source = path.substr(path.find_last_of("/\\") + 1);
	}

	Pdb_files files_;
	fs::path folder_; // of the images that lead to PDB files
	bool is_started_ = false;
	std::map<std::string, DWORD64> bases_; // by PDB file
};

} // namespace

std::unique_ptr<Symbol_reader> make_pdb_reader(const Reader_options& options) {
	return std::make_unique<Pdb_reader>(options);
}
