// The unit in which the library takes page memory from the system.
#pragma once

#include <morvantis/core/xyltypes.h>

// The larger of the system's page size and the granularity of its block addresses, in bytes; the
// system is asked on every call. Any thread.
xylUInt64 ask_page_size();

// The same, asked on the first call only.
//
// kept: 32 bits with a sign stand between the system's answer and the result.
xylUInt64 known_page_size();
