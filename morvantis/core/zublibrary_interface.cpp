#include <morvantis/core/zublibrary_interface.h>

int zubLibrary_interface::unhandled_exception_handler(void*) { return 0; }
