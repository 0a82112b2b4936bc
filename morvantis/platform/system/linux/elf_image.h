// What an ELF image in memory says about itself.
#pragma once

#include <morvantis/core/xyltypes.h>

namespace os {

struct Elf_image {
	xylUInt64 size; // from the first byte in memory to behind the last, in whole pages
	xylUInt32 build_id_size;
	xylUInt8 build_id[64]; // a longer one is cut
};

// Reads the headers at `base`, which may be any number, and finds the build id among the notes.
// False when there is no image of this machine; `build_id_size` is 0 when it has no identity.
bool read_elf_image(xylUInt64 base, Elf_image* image);

} // namespace os
