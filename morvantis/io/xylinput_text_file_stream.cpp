#include <morvantis/io/xylinput_text_file_stream.h>

xylIO_Stream& xylInput_text_file_stream::operator<<(const xylString_base&) { return *this; }

xylIO_Stream& xylInput_text_file_stream::operator<<(const xylStream_manip&) { return *this; }

xylIO_Stream& xylInput_text_file_stream::operator<<(int) { return *this; }

xylIO_Stream& xylInput_text_file_stream::operator<<(unsigned int) { return *this; }

xylIO_Stream& xylInput_text_file_stream::operator<<(float) { return *this; }

xylIO_Stream& xylInput_text_file_stream::operator<<(xylInt64) { return *this; }

xylIO_Stream& xylInput_text_file_stream::operator<<(xylUInt64) { return *this; }

xylIO_Stream& xylInput_text_file_stream::operator<<(bool) { return *this; }
