// What EASTL asks of a program that brings its own allocator. EASTL's own configuration header
// includes this one first, in the library and in every host: see EASTL_USER_CONFIG_HEADER in
// morvantis/CMakeLists.txt. With compat/eastl it plays no part.
#pragma once

#include <morvantis/core/xylexport.h> // MORVANTIS_API

// The default allocator and its accessors are declared by EASTL and come from this library.
#define EASTL_API MORVANTIS_API
#define EASTL_USER_DEFINED_ALLOCATOR

// An allocator has no name, and so no state.
#define EASTL_NAME_ENABLED 0
