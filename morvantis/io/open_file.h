// What the three kinds of file do alike when they open.
#pragma once

#include <morvantis/platform/system/file.h> // os::File_request
#include <morvantis/strings/xylconststring.h>

// The path that goes to the system for a name that may be base-relative; null is the empty name.
// One of 256 characters or more ends the process.
xylConstString<256> final_path(const char* name);

// The open flags of the native files taken apart, without `overlapped`: bits of
// xylFile_access_flags and of xylFile_mode_flags. Other bits have no meaning.
os::File_request decode_open_flags(int access, int mode);
