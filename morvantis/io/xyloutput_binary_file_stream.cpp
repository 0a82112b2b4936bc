#include <morvantis/io/xyloutput_binary_file_stream.h>

xylIO_Stream& xylOutput_binary_file_stream::operator>>(float&) { return *this; }

xylIO_Stream& xylOutput_binary_file_stream::operator>>(xylConstString<64>&) { return *this; }

xylIO_Stream& xylOutput_binary_file_stream::operator>>(xylVarString&) { return *this; }

xylIO_Stream& xylOutput_binary_file_stream::operator>>(bool&) { return *this; }

xylIO_Stream& xylOutput_binary_file_stream::operator>>(const xylStream_manip&) { return *this; }
