#include <morvantis/io/xyloutput_text_file_stream.h>

xylIO_Stream& xylOutput_text_file_stream::operator>>(char&) { return *this; }

xylIO_Stream& xylOutput_text_file_stream::operator>>(short&) { return *this; }

xylIO_Stream& xylOutput_text_file_stream::operator>>(unsigned short&) { return *this; }

xylIO_Stream& xylOutput_text_file_stream::operator>>(int&) { return *this; }

xylIO_Stream& xylOutput_text_file_stream::operator>>(unsigned int&) { return *this; }

xylIO_Stream& xylOutput_text_file_stream::operator>>(float&) { return *this; }

xylIO_Stream& xylOutput_text_file_stream::operator>>(xylVarString&) { return *this; }

xylIO_Stream& xylOutput_text_file_stream::operator>>(xylInt64&) { return *this; }

xylIO_Stream& xylOutput_text_file_stream::operator>>(xylUInt64&) { return *this; }

xylIO_Stream& xylOutput_text_file_stream::operator>>(bool&) { return *this; }

xylIO_Stream& xylOutput_text_file_stream::operator>>(const xylStream_manip&) { return *this; }
