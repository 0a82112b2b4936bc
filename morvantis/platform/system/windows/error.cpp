#include <morvantis/platform/system/error.h>

#include <morvantis/platform/system/windows/include_windows.h>

xylUInt32 os::last_error() { return GetLastError(); }
