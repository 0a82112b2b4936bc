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

// A folder of this process's own among the system's temporary files; empty if it can't be made.
fs::path make_folder() {
	std::error_code failure;
	const fs::path top = fs::temp_directory_path(failure);
	if (failure) return {};
	fs::path folder = top / ("stack_resolve_" + std::to_string(GetCurrentProcessId()));
	fs::create_directory(folder, failure);
	return failure ? fs::path() : folder;
}

class Pdb_reader : public Symbol_reader {
public:
	explicit Pdb_reader(const Reader_options& options)
		: files_(options.folders), folder_(make_folder()) {
		SymSetOptions(SYMOPT_UNDNAME | SYMOPT_LOAD_LINES | SYMOPT_EXACT_SYMBOLS);
		is_started_ = SymInitialize(session(), folder_.string().c_str(), FALSE);
	}
	~Pdb_reader() override {
		if (is_started_) SymCleanup(session());
		std::error_code failure;
		if (!folder_.empty()) fs::remove_all(folder_, failure);
	}

	Resolution resolve(const Frame& frame) override {
		Resolution result = files_.find(frame);
		if (result.outcome != Outcome::resolved) return result;
		if (!load(result.file, frame)) {
			result.outcome = Outcome::no_temporary_files;
		} else if (const DWORD64 base = bases_[result.file]; base == 0) {
			result.outcome = Outcome::no_reader;
		} else {
			look_up(base + frame.offset, result.place);
		}
		return result;
	}

private:
	// Any value that no other session of the process uses.
	HANDLE session() { return this; }

	// Loads the file's image, as far as the library is concerned. False if it can't be made.
	bool load(const std::string& file, const Frame& frame) {
		if (bases_.contains(file)) return true;
		const std::string image = (folder_ / std::to_string(bases_.size())).string() + ".dll";
		const DWORD64 wanted = image_base + bases_.size() * DWORD64{0x100000000};
		if (folder_.empty() || !write_image_for(fs::absolute(file).string(), frame, image))
			return false;
		bases_[file] = SymLoadModuleEx(session(), nullptr, image.c_str(), nullptr, wanted,
		                               largest_image, nullptr, 0);
		return true;
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
	fs::path folder_; // of the images that lead to PDB files; empty if it could not be made
	bool is_started_ = false;
	// Where the image of each PDB file is loaded; 0 if the library can't read the file.
	std::map<std::string, DWORD64> bases_;
};

} // namespace

std::unique_ptr<Symbol_reader> make_pdb_reader(const Reader_options& options) {
	return std::make_unique<Pdb_reader>(options);
}
