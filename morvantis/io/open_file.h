// What the three kinds of file do alike when they open.
#pragma once

#include <morvantis/strings/xylconststring.h>

// The path that goes to the system for a name that may be base-relative; null is the empty name.
// One of 256 characters or more ends the process.
xylConstString<256> final_path(const char* name);

// Opens a native file: `access` are bits of xylFile_access_flags, `mode` of xylFile_mode_flags;
// other bits have no meaning. os::no_file() if it can't be.
void* open_handle(const char* name, int access, int mode, bool overlapped);

// Closes an open handle and marks it as closed, whether or not the system could.
bool close_handle(void*& handle);
