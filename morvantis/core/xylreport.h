// Everything the library tells its host in words, and the bounded formatting behind it.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API, size_t

class xylVarString;

MORVANTIS_API void xyl_error(const char* format, ...);
MORVANTIS_API void xyl_warning(const char* format, ...);
MORVANTIS_API void xyl_content_warning(const char* format, ...);
MORVANTIS_API void xyl_log(const char* format, ...);
MORVANTIS_API void xyl_post_warning_line(const char* format, ...);
MORVANTIS_API void xyl_post_success_line(const char* format, ...);
MORVANTIS_API void xyl_post_message_line_formatted(unsigned int value, const char* format, ...);
MORVANTIS_API void xyl_post_message_line(const xylVarString& text, const int& value);
MORVANTIS_API void xyl_warning_with_platform_result(long result, const char* format, ...);
MORVANTIS_API void xyl_warning_with_system_error(char* format, ...);
MORVANTIS_API void failedAssert(const char* first_text, int number, const char* second_text,
                                bool flag);
MORVANTIS_API void simple_assert(const char* first_text, int number, const char* second_text);

MORVANTIS_API int xyl_snprintf(char* buffer, size_t size, const char* format, ...);
MORVANTIS_API void xyl_long_to_str(long long value, char* buffer, int size);
MORVANTIS_API char* xyl_strlwr(char* text);
MORVANTIS_API void xyl_output_debug_string(const char* text);
MORVANTIS_API char* xyl_get_system_error(char* buffer, int size);
MORVANTIS_API char* xyl_get_system_error(unsigned int code, char* buffer, int size);
