#include <morvantis/core/zublibrary_interface.h>

#include <morvantis/core/xylreport.h> // xyl_snprintf, xyl_output_debug_string

namespace {

constexpr char not_implemented_text[] = "Not implemented: %s (%s:%d)\n";
constexpr char handler_name[] = "zubLibrary_interface::unhandled_exception_handler";
// kept: the place that log tools know, wherever the body stands and the build ran.
constexpr char handler_file[] = "morvantis/core/zublibrary_interface.cpp";
constexpr int handler_line = 8;

} // namespace

int zubLibrary_interface::unhandled_exception_handler(void*) {
	// kept: a plain flag; two threads that fail at once may both write.
	static bool is_reported = false;
	if (is_reported) return 0;
	is_reported = true;
	char text[512];
	xyl_snprintf(text, sizeof(text), not_implemented_text, handler_name, handler_file,
	             handler_line);
	xyl_output_debug_string(text);
	return 0;
}
