#include <morvantis/core/throw_out_of_range.h>

#include <stdexcept>

void throw_out_of_range(const char* text) { throw std::out_of_range(text); }
