#include <morvantis/core/xylreport.h>

#include <morvantis/core/ascii.h>
#include <morvantis/core/legacy_format.h>
#include <morvantis/core/zublibrary.h>
#include <morvantis/core/zublibrary_interface.h>
#include <morvantis/core/zubmessage_interface.h>
#include <morvantis/platform/system/error.h>

#include <algorithm>
#include <cstdarg>
#include <cstring>

namespace {

constexpr int system_message_size = 8192;
constexpr size_t result_part_size = 16384; // of the caller's text, and of the message behind it
constexpr size_t result_text_size = 2 * result_part_size;
constexpr size_t marked_text_size = 65536;
constexpr char system_error_marker[] = "#E";

constexpr char message_failed_text[] = "Formatting system error message failed with %d!";
constexpr char dispatch_error_text[] = "IDispatch error #%d";
constexpr char unknown_error_text[] = "Unknown error 0x%0lX";

// The results that a dispatch interface defines for itself count on from this one.
constexpr xylUInt32 first_dispatch_result = 0x80040200;
constexpr xylUInt32 last_dispatch_result = 0x8004ffff;

// A report in the buffer that its function has; see format_bounded() for what fits.
template <size_t size> struct Report {
	Report(const char* format, va_list arguments) { format_bounded(text, size, format, arguments); }

	char text[size];
};

// xyl_warning() for texts that are composed on purpose to be read as a format: the compiler's check
// of formats stands in the way of that and is not known of this type.
void (*const warn_with_format)(const char* format, ...) = xyl_warning;

// False, and a warning, if there is no such message.
bool write_system_message(xylUInt32 code, char* buffer, int size) {
	const int used = std::clamp(size, 0, system_message_size);
	if (os::system_message(code, buffer, static_cast<xylUInt32>(used))) return true;
	xyl_warning(message_failed_text, static_cast<int>(os::last_error()));
	return false;
}

void remove_line_end(char* text) {
	size_t length = std::strlen(text);
	if (length <= 1 || text[length - 1] != '\n') return;
	text[--length] = 0;
	if (text[length - 1] == '\r') text[length - 1] = 0;
}

// What to say of a result that the system has no message for.
void write_fallback(xylUInt32 code, char* out, size_t size) {
	if (code > first_dispatch_result && code <= last_dispatch_result) {
		xyl_snprintf(out, size, dispatch_error_text,
		             static_cast<int>(code - first_dispatch_result));
	} else {
		xyl_snprintf(out, size, unknown_error_text, static_cast<unsigned long>(code));
	}
}

// A message of the system for the result, without its line end and cut to `size`, or the fallback.
void write_platform_result(xylUInt32 code, char* out, size_t size) {
	char* message = os::allocate_system_message(code);
	if (!message) return write_fallback(code, out, size);
	remove_line_end(message);
	const size_t length = std::min(std::strlen(message), size - 1);
	std::memcpy(out, message, length);
	out[length] = 0;
	os::free_system_message(message);
}

} // namespace

void xyl_error(const char* format, ...) {
	va_list arguments;
	va_start(arguments, format);
	const Report<512> report(format, arguments);
	va_end(arguments);
	zub_library->interface_->error(report.text, 0);
}

void xyl_warning(const char* format, ...) {
	va_list arguments;
	va_start(arguments, format);
	const Report<4096> report(format, arguments);
	va_end(arguments);
	zub_library->interface_->warning(report.text, 0);
}

void xyl_content_warning(const char* format, ...) {
	va_list arguments;
	va_start(arguments, format);
	const Report<512> report(format, arguments);
	va_end(arguments);
	zub_library->interface_->content_warning(report.text, 0);
}

void xyl_log(const char* format, ...) {
	va_list arguments;
	va_start(arguments, format);
	const Report<65536> report(format, arguments);
	va_end(arguments);
	zub_library->interface_->log(report.text);
}

void xyl_post_warning_line(const char* format, ...) {
	va_list arguments;
	va_start(arguments, format);
	const Report<512> report(format, arguments);
	va_end(arguments);
	zub_library->message_interface_->post_warning_line(report.text);
}

void xyl_post_success_line(const char* format, ...) {
	va_list arguments;
	va_start(arguments, format);
	const Report<512> report(format, arguments);
	va_end(arguments);
	zub_library->message_interface_->post_success_line(report.text);
}

void xyl_post_message_line_formatted(unsigned int value, const char* format, ...) {
	va_list arguments;
	va_start(arguments, format);
	const Report<512> report(format, arguments);
	va_end(arguments);
	if (zub_library->interface_->get_disable_gui_messages()) return;
	zub_library->message_interface_->post_message_line_formatted(value, report.text);
}

void xyl_post_message_line(const xylVarString& text, const int& value) {
	if (zub_library->interface_->get_disable_gui_messages()) return;
	zub_library->message_interface_->post_message_line(text, value);
}

void xyl_warning_with_platform_result(long result, const char* format, ...) {
	// The caller's text, which may fill its part without a terminator; a line feed; the message.
	char text[result_text_size];
	text[result_part_size] = 0;
	va_list arguments;
	va_start(arguments, format);
	format_bounded(text, result_part_size, format, arguments);
	va_end(arguments);

	char* end = text + std::strlen(text);
	*end++ = '\n';
	const auto room = static_cast<size_t>(text + result_text_size - end);
	write_platform_result(static_cast<xylUInt32>(result), end, std::min(room, result_part_size));
	// kept: percent signs in the text are read as directives.
	warn_with_format(text);
}

void xyl_warning_with_system_error(char* format, ...) {
	char message[system_message_size];
	if (!write_system_message(os::last_error(), message, sizeof(message))) message[0] = 0;

	// Behind the text is room for a message that begins at its very end.
	char text[marked_text_size + system_message_size];
	text[marked_text_size] = 0;
	va_list arguments;
	va_start(arguments, format);
	format_bounded(text, marked_text_size, format, arguments);
	va_end(arguments);

	// kept: the message's terminator ends the text, so what stands behind the marker is not moved
	// out of its way. Percent signs in the text are read as directives.
	if (char* marker = std::strstr(text, system_error_marker)) std::strcpy(marker, message);
	warn_with_format(text);
}

void failedAssert(const char* first_text, int number, const char* second_text, bool flag) {
	zub_library->interface_->failed_assert(first_text, number, second_text, flag, false);
}

void simple_assert(const char* first_text, int number, const char* second_text) {
	zub_library->interface_->simple_assert(first_text, number, second_text);
}

int xyl_snprintf(char* buffer, size_t size, const char* format, ...) {
	va_list arguments;
	va_start(arguments, format);
	const int count = format_bounded(buffer, size, format, arguments);
	va_end(arguments);
	if (count < 0 && size != 0) buffer[size - 1] = 0;
	return count;
}

void xyl_long_to_str(long long value, char* buffer, int size) {
	xyl_snprintf(buffer, static_cast<size_t>(size), "%lld", value);
}

char* xyl_strlwr(char* text) {
	for (char* at = text; *at; ++at) *at = ascii::to_lower(*at);
	return text;
}

void xyl_output_debug_string(const char* text) { os::debug_output(text); }

char* xyl_get_system_error(char* buffer, int size) {
	return xyl_get_system_error(os::last_error(), buffer, size);
}

char* xyl_get_system_error(unsigned int code, char* buffer, int size) {
	write_system_message(code, buffer, size);
	return buffer;
}
