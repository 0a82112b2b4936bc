// Which symbol file an image in memory belongs to.
#pragma once

#include <morvantis/core/xyltypes.h> // size_t

struct zubCallstack_module;

// Tells how many bytes from an address on may be read; 0 for none.
using Readable_bytes = size_t (*)(const void* address);

// Reads the image that lies at the module's base as the loader left it, of either system's form:
// one that begins with "MZ" by its headers and debug directory, one that begins with ELF's magic by
// its program headers and build-id note. Nothing is read that `readable` doesn't allow, whatever
// the bytes say.
//
// Sets image_size, time_date_stamp and is_stripped from headers that are whole, and the identity
// where there is one. Of several debug records the last counts, up to the first that isn't "RSDS".
// A build id's first 16 bytes are the GUID in memory order, padded with zeros; the age is then 0
// and the symbol file's name the module's own.
//
// Result  whether the image has an identity; false too, with what came before it already set, when
//         a debug record is no "RSDS".
bool read_image_identity(zubCallstack_module& module, Readable_bytes readable);
