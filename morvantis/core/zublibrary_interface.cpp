#include <morvantis/core/zublibrary_interface.h>

#include <morvantis/core/not_implemented.h>

int zubLibrary_interface::unhandled_exception_handler(void*) {
	static constinit std::atomic<bool> said = false;
	// kept: the place that log tools know, wherever the body stands and the build ran.
	say_not_implemented(said, "zubLibrary_interface::unhandled_exception_handler",
	                    "morvantis/core/zublibrary_interface.cpp", 8);
	return 0;
}
