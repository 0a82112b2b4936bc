// The running process, its surroundings, its machine and its user.
#pragma once

#include <morvantis/core/xyltypes.h>

namespace os {

// Any thread may call all of these; none touches the library's heap.

xylUInt32 current_process_id();

bool is_debugger_present();

// Raises an exception with `code` on the calling thread, without arguments; it comes back only if a
// handler lets it. Where exceptions have no codes, a trap is raised and `code` is lost.
void raise_exception(unsigned int code);

// Sets a variable for this process and its children; an empty value is a value.
//
// Result  false for an empty name or one with "=" in it.
// Threads: where the environment is plain memory of the process, no other thread may read it.
bool set_environment_variable(const char* name, const char* value);

// The machine's name, at most 15 characters.
//
// `size`  in: bytes at `buffer`; out, on success: characters of the name without its terminator.
// Result  false on failure, with the reason in os::last_error().
bool computer_name(char* buffer, xylUInt32* size);

// The name of the user whom the process runs as.
//
// `size`  in: bytes at `buffer`; out, on success: characters of the name and its terminator.
// Result  false on failure, with the reason in os::last_error().
bool user_name(char* buffer, xylUInt32* size);

// Makes a new GUID, in the byte order of memory. On failure, which isn't told, `bytes` is
// untouched.
void create_guid(unsigned char bytes[16]);

} // namespace os
