// The system's last error, its text, and the debugger's text output.
#pragma once

#include <morvantis/core/xyltypes.h> // xylUInt32, size_t

namespace os {

// The calling thread's last error number, as 32 bits.
xylUInt32 last_error();

} // namespace os
