// The reader of identities, on images of any bytes: of Windows by their headers and debug
// directory, of Linux by their program headers and notes. Nothing behind the bytes is read, and an
// identity is one of the two known kinds.
#include "input.h"

#include <morvantis/diagnostics/image_identity.h>

#include <morvantis/diagnostics/zubcallstack_module.h>

#include <cstdint>
#include <cstring>
#include <memory>

namespace {

const unsigned char* image;
std::size_t image_size;

std::size_t readable_bytes(const void* address) {
	const auto begin = reinterpret_cast<std::size_t>(image);
	const auto place = reinterpret_cast<std::size_t>(address);
	return place >= begin && place - begin < image_size ? image_size - (place - begin) : 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
	// A block of exactly the image's size, so that a byte too far is seen.
	const std::unique_ptr<unsigned char[]> block(new unsigned char[size]);
	if (size > 0) std::memcpy(block.get(), data, size);
	image = block.get();
	image_size = size;

	zubCallstack_module module;
	module.name = "name";
	module.base_address = reinterpret_cast<std::size_t>(block.get());
	const bool has_identity = read_image_identity(module, readable_bytes);
	const bool is_windows = size >= 2 && data[0] == 'M' && data[1] == 'Z';
	require(module.pdb_signature == 0 || module.pdb_signature == 0x53445352);
	require(static_cast<std::size_t>(module.pdb_name.length()) <= size + 4);
	if (!is_windows) {
		require(has_identity == (module.pdb_signature != 0));
		require(module.pdb_age == 0 && !module.is_stripped);
	}
	return 0;
}
