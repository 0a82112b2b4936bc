#include <morvantis/core/xylreport.h>

#include <morvantis/core/legacy_format.h>
#include <morvantis/core/zublibrary.h>
#include <morvantis/core/zublibrary_interface.h>

int xyl_snprintf(char* buffer, size_t size, const char* format, ...) {
	va_list arguments;
	va_start(arguments, format);
	const int count = format_bounded(buffer, size, format, arguments);
	va_end(arguments);
	if (count < 0) buffer[size - 1] = 0;
	return count;
}

void xyl_warning(const char* format, ...) {
	char buffer[4096];
	va_list arguments;
	va_start(arguments, format);
	format_bounded(buffer, sizeof(buffer), format, arguments);
	va_end(arguments);
	zub_library->interface_->warning(buffer, 0);
}

void xyl_error(const char* format, ...) {
	char buffer[512];
	va_list arguments;
	va_start(arguments, format);
	format_bounded(buffer, sizeof(buffer), format, arguments);
	va_end(arguments);
	zub_library->interface_->error(buffer, 0);
}
