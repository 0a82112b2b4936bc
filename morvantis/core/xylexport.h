// Marks what the library exports, everything else stays hidden; and what must stand inline.
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

// For bodies so short that no function call is worth them, wherever the compiler would draw its
// line.
#if defined(_MSC_VER)
#define MORVANTIS_FORCE_INLINE __forceinline
#elif defined(__GNUC__)
#define MORVANTIS_FORCE_INLINE inline __attribute__((always_inline))
#else
#define MORVANTIS_FORCE_INLINE inline
#endif
