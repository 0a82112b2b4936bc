#include <morvantis/io/xylio_input_text_file_stream.h>

#include <morvantis/core/xylreport.h>
#include <morvantis/io/stream_files.h>

namespace {

constexpr char cannot_open_text[] = "Unable to open %s";

} // namespace

xylIO_Input_text_file_stream::~xylIO_Input_text_file_stream() { close(); }

bool xylIO_Input_text_file_stream::try_open(const char* path) {
	return load_stream_file({*this, file_object, failed}, path, "r");
}

int xylIO_Input_text_file_stream::open(const char* path) {
	if (try_open(path)) return 0;
	xyl_warning(cannot_open_text, path);
	return -1;
}

void xylIO_Input_text_file_stream::close() { close_input_file({*this, file_object, failed}); }

xylVarString xylIO_Input_text_file_stream::get_line() { return buffer.get_line(); }
