// Everything the library tells its host in words, and the bounded formatting behind it.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API, size_t

class xylVarString;

// Has the compiler compare a format with its arguments where it can. Both numbers count from 1.
#if defined(__clang__)
#define MORVANTIS_FORMAT(format_no, first_no) __attribute__((format(printf, format_no, first_no)))
#elif defined(__GNUC__)
// The other archetype follows the system's C library, and this formatter doesn't.
#define MORVANTIS_FORMAT(format_no, first_no)                                                      \
	__attribute__((format(gnu_printf, format_no, first_no)))
#else
#define MORVANTIS_FORMAT(format_no, first_no)
#endif

// Reports to the host.
//
// Each formats into a buffer of its own size on the stack, then calls the operation of its name on
// one of the two host interfaces. `format` is printf's, with the directives that
// core/legacy_format.h lists; the text is never passed on through "%s", so a text of foreign origin
// must not be the format.
//
// kept: a text as long as the buffer or longer is cut there and reaches the host without a
// terminator, so the host reads no more than the buffer's size.
//
// zubLibrary::initialize() must have run; neither zub_library nor the interface is tested. Any
// thread, several at a time. Nothing is allocated from the library's heap. None ends the program:
// that is the host's decision.
MORVANTIS_API void xyl_error(const char* format, ...) MORVANTIS_FORMAT(1, 2);           // 512
MORVANTIS_API void xyl_warning(const char* format, ...) MORVANTIS_FORMAT(1, 2);         // 4096
MORVANTIS_API void xyl_content_warning(const char* format, ...) MORVANTIS_FORMAT(1, 2); // 512
MORVANTIS_API void xyl_log(const char* format, ...) MORVANTIS_FORMAT(1, 2);             // 65536

// Lines for the screen, of 512 bytes, for the message interface.
//
// kept: these two post whatever get_disable_gui_messages() answers; the two general ones below
// obey it.
MORVANTIS_API void xyl_post_warning_line(const char* format, ...) MORVANTIS_FORMAT(1, 2);
MORVANTIS_API void xyl_post_success_line(const char* format, ...) MORVANTIS_FORMAT(1, 2);
// Formats first and then posts, unless the host disables GUI messages. `value` is the host's own.
MORVANTIS_API void xyl_post_message_line_formatted(unsigned int value, const char* format, ...)
	MORVANTIS_FORMAT(2, 3);
// Hands the same two references on, unless the host disables GUI messages.
MORVANTIS_API void xyl_post_message_line(const xylVarString& text, const int& value);

// Warns with the caller's text, a line feed and the system's message for a platform result code,
// whose line end goes. Only the low 32 bits of `result` count. Where the system has no message, one
// of two fallback texts with the code stands in. The caller's formatted text is cut at 16,384
// bytes, the message at 16,383, and what they compose with the line feed at 32,767.
//
// kept: the composed text is the format of xyl_warning(), so a percent sign in the caller's
// formatted text or in the message is read as a directive, whose argument is whatever stands there.
// Needs about 40 KB of stack.
MORVANTIS_API void xyl_warning_with_platform_result(long result, const char* format, ...)
	MORVANTIS_FORMAT(2, 3);

// Warns with the caller's text, in which the first marker "#E" of the formatted text is replaced by
// the system's message for its last error. Without a marker the message is not used.
//
// kept: the text ends with the message; what the caller wrote behind the marker is lost. The text
// is the format of xyl_warning(), as above. Where the system has no message, a warning about that
// comes first and the marker becomes nothing. The caller's formatted text is cut at 65,536 bytes.
// `format` is only read. Needs about 80 KB of stack.
MORVANTIS_API void xyl_warning_with_system_error(char* format, ...);

// For the asserts of the engine's modules; the library itself has none. The values go to the host
// unchanged and mean what the host says. `flag` is followed by a second one, always false.
MORVANTIS_API void failedAssert(const char* first_text, int number, const char* second_text,
                                bool flag);
MORVANTIS_API void simple_assert(const char* first_text, int number, const char* second_text);

// Formats at most `size` bytes into `buffer`.
//
// Result  the number of characters, or -1 if the text didn't fit: then the last byte of the buffer
//         is the terminator, and the text has size - 1 characters.
// kept: a text of exactly `size` characters has no terminator; the result is `size`.
// A `size` of 0 writes nothing. Any thread; doesn't allocate.
MORVANTIS_API int xyl_snprintf(char* buffer, size_t size, const char* format, ...)
	MORVANTIS_FORMAT(3, 4);

// Writes the number in decimal as xyl_snprintf() would, so 20 digits or a sign and 19 digits need
// 21 bytes with the terminator. `size` is at least 0.
MORVANTIS_API void xyl_long_to_str(long long value, char* buffer, int size);

// Makes the letters A to Z of a terminated text lower-case, in place, and returns `text`. Other
// bytes stay, whatever the locale.
MORVANTIS_API char* xyl_strlwr(char* text);

// Shows `text` to the debugger; on a system without such a channel it goes to standard error.
MORVANTIS_API void xyl_output_debug_string(const char* text);

// Writes the system's message, as it comes, for its last error or for `code`.
//
// `size`  of the buffer, at least 0; of a larger one only 8192 bytes are used.
// Result  `buffer`, in any case. If the system has no message for the number or the buffer doesn't
//         hold it, xyl_warning() tells the host the last error, and the buffer holds what it held
//         or whatever the system left there.
MORVANTIS_API char* xyl_get_system_error(char* buffer, int size);
MORVANTIS_API char* xyl_get_system_error(unsigned int code, char* buffer, int size);
