// Symbol files by identity: the search of the debug help library, and Debug Interface Access.

#include <morvantis/platform/system/symbols.h>

#include <morvantis/platform/system/windows/include_windows.h>

bool os::find_symbol_file(const char*, const Symbol_file_identity&, char (&)[symbol_text_size]) {
	return false;
}

bool os::look_up_symbol(void*, const char*, const Symbol_file_identity&, xylUInt32,
                        Symbol_answer&) {
	return false;
}
