// Text resources: their preparation and the walk over their tokens.

#include <morvantis/core/number_parse.h>
#include <morvantis/io/xylbuffer.h>

char* xylBuffer::next_string() {
	while (*cursor > 31) ++cursor;
	if (*cursor == 0) {
		while (*cursor == 0) ++cursor;
	}
	return reinterpret_cast<char*>(cursor);
}

int xylBuffer::next_int() { return number_parse::parse_int32(next_string()); }
unsigned int xylBuffer::next_uint() { return number_parse::parse_uint32(next_string()); }
float xylBuffer::next_float() { return number_parse::parse_float(next_string()); }
double xylBuffer::next_double() { return number_parse::parse_double(next_string()); }

// Every round after the first one would start at the zero byte where that one ends.
char* xylBuffer::skip_string(int) {
	while (*cursor != 0) ++cursor;
	return reinterpret_cast<char*>(cursor);
}
