#include <morvantis/platform/system/error.h>

#include <cerrno>

xylUInt32 os::last_error() { return static_cast<xylUInt32>(errno); }
