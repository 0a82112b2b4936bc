// ELF files, by the engine that the library itself resolves stacks with.
#include "../symbol_readers.h"

#include <morvantis/platform/system/linux/elf_symbols.h>
#include <morvantis/platform/system/symbols.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

class Elf_reader : public Symbol_reader {
public:
	explicit Elf_reader(const std::vector<std::string>& folders) : folders_(folders) {
		for (const std::string& folder : folders) search_path_ += folder + ";";
	}

	Resolution resolve(const Frame& frame) override {
		// The image may lie there too: its code tells calls from other instructions.
		const std::string image = find_image(frame);
		const os::Symbol_file_identity identity{frame.name.c_str(), frame.guid.data(), 0, frame.age,
		                                        image.c_str()};
		char file[os::symbol_text_size];
		os::Symbol_answer answer;
		if (!os::find_symbol_file(search_path_.c_str(), identity, file) ||
		    !os::look_up_symbol(nullptr, file, identity, frame.offset, answer)) {
			const std::string other = find_other_build(frame);
			return {other.empty() ? Outcome::no_file : Outcome::other_build, {}, other};
		}
		return {Outcome::resolved,
		        {answer.has_function ? answer.function : "",
		         answer.has_source ? fs::path(answer.source).filename().string() : "",
		         answer.has_line ? answer.line : 0},
		        file};
	}

private:
	// The image itself: where the frame says it was, if this is still its machine, or in a folder.
	std::string find_image(const Frame& frame) const {
		std::vector<std::string> places{frame.path};
		for (const std::string& folder : folders_)
			places.push_back((fs::path(folder) / frame.name).string());
		for (const std::string& path : places) {
			os::Elf_symbols symbols;
			if (symbols.open(path.c_str()) && symbols.has_code() && symbols.build_id() &&
			    std::equal(frame.guid.begin(), frame.guid.end(), symbols.build_id())) {
				return path;
			}
		}
		return {};
	}

	// An ELF file with the image's name or its debug file's, of whatever build.
	std::string find_other_build(const Frame& frame) const {
		std::vector<std::string> places;
		for (const std::string& folder : folders_) {
			places.push_back((fs::path(folder) / frame.name).string());
			places.push_back(places.back() + ".debug");
		}
		places.push_back(frame.path);
		for (const std::string& path : places) {
			os::Elf_symbols symbols;
			if (symbols.open(path.c_str())) return path;
		}
		return {};
	}

	std::vector<std::string> folders_;
	std::string search_path_;
};

} // namespace

std::unique_ptr<Symbol_reader> make_elf_reader(const Reader_options& options) {
	return std::make_unique<Elf_reader>(options.folders);
}
