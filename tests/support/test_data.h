// Files that tests read, of the source tree.
#pragma once

#include <string>

// The full path of a file below tests/, "golden/wire.txt" for example.
std::string test_data(const char* file);
