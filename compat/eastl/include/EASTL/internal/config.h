// Switches that the other headers of this folder share.
//
// These headers stand in for EASTL on machines without it. They hold the few templates that the
// library uses, under EASTL's own header and template names and with its growth, and offer nothing
// that EASTL does not: code that builds with them builds with EASTL as it stands.
#pragma once

#include <morvantis/core/xylexport.h> // MORVANTIS_API

#include <cstddef>

#ifndef EASTL_API
#define EASTL_API MORVANTIS_API
#endif

using eastl_size_t = size_t;
using eastl_ssize_t = ptrdiff_t;
