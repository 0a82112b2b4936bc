// Marks what the library exports; everything else stays hidden.
#pragma once

#if defined(_WIN32)
#if defined(MORVANTIS_BUILDING_LIBRARY)
#define MORVANTIS_API __declspec(dllexport)
#else
#define MORVANTIS_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define MORVANTIS_API __attribute__((visibility("default")))
#else
#define MORVANTIS_API
#endif
