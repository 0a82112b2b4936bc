#include "test_data.h"

// The one source that knows where the source tree lies: every other object is the same wherever the
// tree stands.
std::string test_data(const char* file) { return std::string(MORVANTIS_TEST_DATA "/") + file; }
