// The system's last error, the texts of its error numbers, and the debugger's text output.
#pragma once

#include <morvantis/core/xyltypes.h> // xylUInt32, size_t

namespace os {

// The calling thread's last error number, as 32 bits.
xylUInt32 last_error();
// What last_error() says next, on the calling thread.
void set_last_error(xylUInt32 code);

// Writes the system's message for `code`, in the system's language and with its line end where it
// has one, and a terminator.
//
// Result  true, or false with the reason in last_error() where the system has no message for the
//         number or `size` bytes don't hold it; `buffer` may then have been written to.
// Any thread. Does not allocate from the library's heap.
bool system_message(xylUInt32 code, char* buffer, xylUInt32 size);

// The same message, of any length and with its inserts left as they are ("%1"), in memory of the
// system. Null where it has no message. The caller ends it with free_system_message(), which takes
// null.
char* allocate_system_message(xylUInt32 code);
void free_system_message(char* message);

// Shows `text` to a debugger that is attached; on a system without such a channel, writes it to
// standard error at once. Any thread.
void debug_output(const char* text);

} // namespace os
