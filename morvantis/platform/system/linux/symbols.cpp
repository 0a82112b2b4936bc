#include <morvantis/platform/system/symbols.h>

#include <cerrno>
#include <cstdlib>

const char* os::symbol_reader_library() { return nullptr; }

void os::set_symbol_options(xylUInt32) {}

void os::set_symbol_search_path(void*, const char*) {}

bool os::start_symbol_engine(void*, const char*) { return true; }

void os::stop_symbol_engine(void*) {}

bool os::find_symbol_file(const char*, const Symbol_file_identity&, char (&)[symbol_text_size]) {
	return false;
}

bool os::look_up_symbol(void*, const char*, const Symbol_file_identity&, xylUInt32,
                        Symbol_answer&) {
	return false;
}

bool os::engine_module(void*, xylUInt64, Engine_module&) {
	errno = ENOENT;
	return false;
}

void* os::allocate_engine_record() { return std::calloc(1, engine_record_size); }

bool os::engine_name(void*, xylUInt64, void*, Engine_name&) {
	errno = ENOENT;
	return false;
}

bool os::engine_line(void*, xylUInt64, Engine_line&) {
	errno = ENOENT;
	return false;
}
