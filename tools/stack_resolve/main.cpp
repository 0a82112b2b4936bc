// Resolves the frames of call stacks in a text, a log for example, long after and far from where
// they were captured: each frame holds the identity of its image, and here are the symbol files.
#include "symbol_readers.h"

#include <cstdio>
#include <fstream>
#include <iostream>
#include <set>

#include <CLI/CLI.hpp>

namespace {

// The program's exit codes; of several that fit, the highest.
enum Exit { all_resolved = 0, some_left = 1, wrong_usage = 2, some_refused = 3, no_input = 4 };

constexpr char purpose[] =
	"Copies a text to standard output with the call-stack frames in it resolved.\n\n"
	"Frames are looked for in two forms,\n"
	"  0x<base> 0x<offset> {GUID} age name\n"
	"  #name@{GUID} (age): 0:offset\n"
	"and become\n"
	"  @name@source (line): function\n"
	"Everything else is copied as it is, and so are frames whose symbol file isn't found.";
constexpr char codes[] =
	"A symbol file is taken only if it belongs to the very build of the frame's image; what was\n"
	"refused is told on standard error. On Linux, ELF files are looked for in /usr/lib/debug\n"
	"too, and PDB files are read by llvm-symbolizer.\n\n"
	"Ends with 0 if every frame was resolved, 1 if some were not, 2 for a wrong command line, 3\n"
	"if a symbol file was refused because its build differs, 4 if the text can't be read.";

struct Options {
	std::string text = "-";
	Reader_options readers{{}, "llvm-symbolizer"};
};

bool parse(int argc, char** argv, Options& options, int& code) {
	CLI::App app(purpose);
	app.footer(codes);
	app.option_defaults()->always_capture_default();
	app.add_option("text", options.text, "file to read, - for standard input");
	app.add_option(
		   "-s,--symbols", options.readers.folders,
		   "folder with symbol files; may be given several times, and the first has precedence")
		->allow_extra_args(false)
		->type_name("FOLDER");
	app.add_option("--symbolizer", options.readers.symbolizer,
	               "program that reads PDB files, on Linux")
		->type_name("PROGRAM");
	try {
		app.parse(argc, argv);
	} catch (const CLI::ParseError& end) {
		code = app.exit(end) == 0 ? all_resolved : wrong_usage;
		return false;
	}
	return true;
}

// Resolves the frames of one text, and remembers which it couldn't.
class Resolver {
public:
	explicit Resolver(const Reader_options& options) {
		// ELF first: asking for a PDB file looks through whole folders.
		readers_.push_back(make_elf_reader(options));
		readers_.push_back(make_pdb_reader(options));
	}

	std::string resolve_line(const std::string& line) {
		std::string result;
		size_t copied = 0;
		Found_frame found;
		while (find_frame(line, copied, found)) {
			result += line.substr(copied, found.begin - copied) + text_of(line, found);
			copied = found.begin + found.length;
		}
		return result + line.substr(copied);
	}

	Exit exit() const { return was_refused_ ? some_refused : was_left_ ? some_left : all_resolved; }

private:
	std::string text_of(const std::string& line, const Found_frame& found) {
		const Resolution resolution = ask(found.frame);
		if (resolution.outcome == Outcome::resolved)
			return resolved_text(found.frame.name, resolution.place);
		was_left_ = true;
		was_refused_ = was_refused_ || resolution.outcome == Outcome::other_build;
		tell(found.frame, resolution);
		return line.substr(found.begin, found.length);
	}

	// The first answer, or of the failures the one that tells most.
	Resolution ask(const Frame& frame) {
		Resolution best;
		for (const auto& reader : readers_) {
			if (!reader) continue;
			const Resolution resolution = reader->resolve(frame);
			if (resolution.outcome == Outcome::resolved) return resolution;
			if (resolution.outcome > best.outcome) best = resolution;
		}
		return best;
	}

	// Once for each build.
	void tell(const Frame& frame, const Resolution& resolution) {
		const std::string build =
			frame.name + " " + guid_text(frame.guid) + " " + std::to_string(frame.age);
		if (!told_.insert(build).second) return;
		std::string reason = "no symbol file found";
		if (resolution.outcome == Outcome::other_build)
			reason = "refused " + resolution.file + ", which is of another build";
		if (resolution.outcome == Outcome::no_reader)
			reason = "nothing here reads " + resolution.file;
		if (resolution.outcome == Outcome::no_temporary_files)
			reason = "can't make the temporary files that reading " + resolution.file + " takes";
		std::fprintf(stderr, "stack_resolve: %s: %s\n", build.c_str(), reason.c_str());
	}

	std::vector<std::unique_ptr<Symbol_reader>> readers_;
	std::set<std::string> told_;
	bool was_left_ = false;
	bool was_refused_ = false;
};

// Line ends are copied as they come, and a last line without one stays without.
Exit resolve_text(std::istream& text, const Reader_options& options) {
	Resolver resolver(options);
	for (std::string line; std::getline(text, line);) {
		std::cout << resolver.resolve_line(line);
		if (!text.eof()) std::cout << '\n';
		std::cout.flush(); // a log may be followed live
	}
	return resolver.exit();
}

} // namespace

int main(int argc, char** argv) {
	Options options;
	int code = 0;
	if (!parse(argc, argv, options, code)) return code;
	if (options.text == "-") return resolve_text(std::cin, options.readers);
	std::ifstream file(options.text, std::ios::binary);
	if (!file || file.peek() == std::ifstream::traits_type::eof()) {
		if (file.eof()) return all_resolved; // an empty text
		std::fprintf(stderr, "stack_resolve: can't read %s\n", options.text.c_str());
		return no_input;
	}
	return resolve_text(file, options.readers);
}
