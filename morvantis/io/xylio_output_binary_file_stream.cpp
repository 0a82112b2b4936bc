#include <morvantis/io/xylio_output_binary_file_stream.h>

#include <morvantis/io/stream_files.h>

xylIO_Output_binary_file_stream::~xylIO_Output_binary_file_stream() {
	close();
	end_stream_file(file_object);
}

int xylIO_Output_binary_file_stream::open(const char* path) {
	return open_output_file({*this, file_object, failed, is_opened}, path, "wb");
}

int xylIO_Output_binary_file_stream::close() {
	return close_output_file({*this, file_object, failed, is_opened});
}

int xylIO_Output_binary_file_stream::flush() {
	return flush_output_file({*this, file_object, failed, is_opened});
}
