// What operations without an implementation say on the debug output.
#pragma once

#include <atomic>

// Says "Not implemented: operation (file:line)" on the first call with `said`, a flag of the
// operation's own that is clear at load, and nothing afterwards. `file` and `line` are what log
// tools know the operation by. Any thread; two at once may both say it.
void say_not_implemented(std::atomic<bool>& said, const char* operation, const char* file,
                         int line);
