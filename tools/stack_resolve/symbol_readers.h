// Where frames are resolved: one reader for each kind of image. A source for each system has those
// that it can offer.
#pragma once

#include "frame_text.h"

#include <memory>
#include <string>
#include <vector>

enum class Outcome {
	resolved,
	no_file,            // no symbol file by that name or identity
	other_build,        // one by that name, of another build
	no_reader,          // the file is there, and nothing here can read it
	no_temporary_files, // a reader would, but can't make the temporary files that it takes
};

struct Resolution {
	Outcome outcome = Outcome::no_file;
	Place place;      // if resolved
	std::string file; // the symbol file that was read, refused or can't be read
};

class Symbol_reader {
public:
	virtual ~Symbol_reader() = default;
	virtual Resolution resolve(const Frame& frame) = 0;
};

struct Reader_options {
	std::vector<std::string> folders; // where symbol files are looked for, first to last
	std::string symbolizer;           // llvm-symbolizer, where it reads PDB files; a name or a path
};

// Reader of ELF files; null on a system that has none.
std::unique_ptr<Symbol_reader> make_elf_reader(const Reader_options& options);
// Reader of PDB files.
std::unique_ptr<Symbol_reader> make_pdb_reader(const Reader_options& options);
