// The one way in for the system's header: sets its switches and undoes its macros.
#pragma once

#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX // the C++ library of mingw-w64 sets it itself
#define NOMINMAX
#endif
#include <winsock2.h> // before windows.h, which would bring the older one

#include <windows.h>

#include <mmsystem.h> // its own declarations need the macros that go below

#undef near
#undef far
#undef interface
