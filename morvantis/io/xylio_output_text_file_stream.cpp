#include <morvantis/io/xylio_output_text_file_stream.h>

#include <morvantis/io/stream_files.h>

xylIO_Output_text_file_stream::~xylIO_Output_text_file_stream() {
	if (is_opened) close();
	end_stream_file(file_object);
}

int xylIO_Output_text_file_stream::open(const char* path, const bool& append) {
	return open_output_file({*this, file_object, failed, is_opened}, path, append ? "a" : "w");
}

int xylIO_Output_text_file_stream::close() {
	return close_output_file({*this, file_object, failed, is_opened});
}

int xylIO_Output_text_file_stream::flush() {
	return flush_output_file({*this, file_object, failed, is_opened});
}
