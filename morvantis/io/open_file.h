// What the kinds of file do alike when they open, and what loads whole files asks them.
#pragma once

#include <morvantis/core/xyltypes.h>
#include <morvantis/strings/xylconststring.h>

class xylFile;

// The path that goes to the system for a name that may be base-relative; null is the empty name.
// One of 256 characters or more ends the process.
xylConstString<256> final_path(const char* name);

// Opens a native file: `access` are bits of xylFile_access_flags, `mode` of xylFile_mode_flags;
// other bits have no meaning. os::no_file() if it can't be.
void* open_handle(const char* name, int access, int mode, bool overlapped);

// Closes an open handle and marks it as closed, whether or not the system could.
bool close_handle(void*& handle);

// Bytes of a whole file for somebody who makes room for them: 0 where there is no position to
// measure by, as in a pipe. The position is afterwards where it was.
xylUInt64 size_to_load(xylFile& file);
