#include <morvantis/core/not_implemented.h>

#include <morvantis/core/xylreport.h> // xyl_snprintf, xyl_output_debug_string

static constexpr char not_implemented_text[] = "Not implemented: %s (%s:%d)\n";

void say_not_implemented(std::atomic<bool>& said, const char* operation, const char* file,
                         int line) {
	if (said.load(std::memory_order_relaxed)) return;
	said.store(true, std::memory_order_relaxed);
	char text[512];
	xyl_snprintf(text, sizeof(text), not_implemented_text, operation, file, line);
	xyl_output_debug_string(text);
}
