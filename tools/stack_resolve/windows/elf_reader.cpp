// There is no reader of ELF files on this system.
#include "../symbol_readers.h"

std::unique_ptr<Symbol_reader> make_elf_reader(const Reader_options&) { return nullptr; }
