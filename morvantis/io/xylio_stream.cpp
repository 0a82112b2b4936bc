#include <morvantis/io/xylio_stream.h>

xylIO_Stream::~xylIO_Stream() = default;

void xylIO_Stream::clear() {
	buffer.clear();
	buffer.reset_cursor(0);
}

void xylIO_Stream::reset_to_buffer_start() { buffer.reset_cursor(0); }

bool xylIO_Stream::eof() { return buffer.eof(); }

void xylIO_Stream::set_auto_flush(bool is_automatic) { auto_flush = is_automatic; }

bool xylIO_Stream::get_auto_flush() { return auto_flush; }

int xylIO_Stream::flush() { return 0; }
