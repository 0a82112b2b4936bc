// Which build a symbol file of Windows belongs to.
#pragma once

#include <morvantis/core/xyltypes.h>

namespace os {

// A file that is read in pieces. False when there are less than `size` bytes at `place`.
struct Random_access {
	bool (*read)(void* source, xylUInt64 place, void* bytes, size_t size);
	void* source;
};

struct Pdb_identity {
	unsigned char guid[16]; // in memory order
	xylUInt32 age;          // of the file
	xylUInt32 build_age;    // of the debug information in it, which is what images record; the
	                        // file's where there is none
};

// Reads the identity of a program database ("Microsoft C/C++ MSF 7.00"). Whatever the bytes are, it
// reads a bounded number of pieces. False, with `identity` unspecified, when it isn't a whole one.
bool read_pdb_identity(const Random_access& file, Pdb_identity& identity);

} // namespace os
