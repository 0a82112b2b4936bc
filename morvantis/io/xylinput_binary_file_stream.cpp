#include <morvantis/io/xylinput_binary_file_stream.h>

xylIO_Stream& xylInput_binary_file_stream::operator<<(const xylString_base&) { return *this; }

xylIO_Stream& xylInput_binary_file_stream::operator<<(const xylStream_manip&) { return *this; }

xylIO_Stream& xylInput_binary_file_stream::operator<<(float) { return *this; }

xylIO_Stream& xylInput_binary_file_stream::operator<<(bool) { return *this; }
