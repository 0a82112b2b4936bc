// For tests of operations that leave memory behind by contract.
#pragma once

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define MORVANTIS_LEAK_CHECK
#include <sanitizer/lsan_interface.h>
#endif
#endif

// While it lives, the leak check of the address sanitizer passes over what this thread allocates.
class Expected_leaks {
public:
#if defined(MORVANTIS_LEAK_CHECK)
	Expected_leaks() { __lsan_disable(); }
	~Expected_leaks() { __lsan_enable(); }
#else
	Expected_leaks() = default;
	~Expected_leaks() {}
#endif
	Expected_leaks(const Expected_leaks&) = delete;
	Expected_leaks& operator=(const Expected_leaks&) = delete;
};
