// The reader of program databases' identities, on files of any bytes: it reads a bounded number of
// pieces, and each within the file.
#include <morvantis/platform/system/pdb_identity.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

struct File {
	const std::uint8_t* data;
	std::size_t size;
	int pieces;
};

bool read_piece(void* source, xylUInt64 place, void* bytes, std::size_t size) {
	auto& file = *static_cast<File*>(source);
	if (++file.pieces > 32 || size == 0) std::abort();
	if (place > file.size || size > file.size - place) return false;
	std::memcpy(bytes, file.data + place, size);
	return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
	File file{data, size, 0};
	os::Pdb_identity identity;
	if (!os::read_pdb_identity({read_piece, &file}, identity)) return 0;
	// All of it was there to be read.
	volatile std::uint32_t sum = identity.age + identity.build_age;
	for (const unsigned char byte : identity.guid) sum = sum + byte;
	return 0;
}
