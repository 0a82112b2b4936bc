// The reader of ELF symbol files, on files of any bytes: what it answers are whole texts, and the
// same question twice has the same answer.
#include "input.h"

#include <morvantis/platform/system/linux/elf_symbols.h>
#include <morvantis/platform/system/linux/function_name.h>

#include <cstdint>
#include <cstring>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace {

bool is_same(const char* a, const char* b) { return a && b ? std::strcmp(a, b) == 0 : a == b; }

void ask(os::Elf_symbols& symbols, std::uint32_t offset) {
	const os::Elf_symbols::Place first = symbols.look_up(offset, nullptr);
	const os::Elf_symbols::Place again = symbols.look_up(offset, nullptr);
	require(is_same(first.function, again.function) && is_same(first.source, again.source));
	require(first.line == again.line && (first.line == 0 || first.source));
	char name[256];
	if (first.function) os::readable_function_name(first.function, false, name, sizeof(name));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
	static const int file = memfd_create("symbols", MFD_CLOEXEC);
	static const std::string path = "/proc/self/fd/" + std::to_string(file);
	require(ftruncate(file, 0) == 0 && pwrite(file, data, size, 0) == static_cast<ssize_t>(size));
	os::Elf_symbols symbols;
	if (!symbols.open(path.c_str())) return 0;
	// Small images have their code near the beginning.
	for (std::uint32_t offset = 0; offset < 0x2000; offset += 37) ask(symbols, offset);
	ask(symbols, 0xFFFFFFFF);
	return 0;
}
