// Integer types of fixed width, the same types on every system.
#pragma once

#include <morvantis/core/xylexport.h> // MORVANTIS_API, for every header that includes this one

#include <cstddef>

using xylInt8 = signed char;
using xylUInt8 = unsigned char;
using xylInt16 = short;
using xylUInt16 = unsigned short;
using xylInt32 = int;
using xylUInt32 = unsigned int;
// Never `long`: its width differs between systems, and overload sets with it.
using xylInt64 = long long;
using xylUInt64 = unsigned long long;

static_assert(sizeof(xylInt16) == 2 && sizeof(xylInt32) == 4 && sizeof(xylInt64) == 8);
static_assert(sizeof(void*) == 8, "the library runs on 64-bit systems");
