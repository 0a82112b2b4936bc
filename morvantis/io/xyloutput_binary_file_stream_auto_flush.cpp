#include <morvantis/io/xyloutput_binary_file_stream_auto_flush.h>

#include <morvantis/io/xylfile.h>

#include <cstring>

// The destructor of the base would write what the memory buffer holds.
xylOutput_binary_file_stream_auto_flush::~xylOutput_binary_file_stream_auto_flush() { close(); }

// kept: the stream's own, past that of the output stream, which would write the memory buffer.
// NOLINTNEXTLINE(bugprone-parent-virtual-call)
int xylOutput_binary_file_stream_auto_flush::flush() { return xylIO_Stream::flush(); }

template <typename Value>
xylIO_Stream& xylOutput_binary_file_stream_auto_flush::write_value(const Value& value) {
	if (is_opened) file_object->write(&value, 1, sizeof(value));
	return *this;
}

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::write_text(const char* text, size_t length) {
	write_value(static_cast<xylUInt32>(length));
	if (is_opened) file_object->write(text, 1, length);
	return *this;
}

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator<<(const xylIO_Stream&) {
	return *this;
}

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator<<(float value) {
	return write_value(value);
}

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator<<(bool value) {
	return write_value(value);
}

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator<<(xylUInt64 value) {
	return write_value(value);
}

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator<<(xylInt64 value) {
	return write_value(value);
}

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator<<(int value) {
	return write_value(value);
}

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator<<(unsigned int value) {
	return write_value(value);
}

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator<<(short value) {
	return write_value(value);
}

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator<<(unsigned char value) {
	return write_value(value);
}

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator<<(unsigned short value) {
	return write_value(value);
}

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator<<(const char* text) {
	return write_text(text ? text : "", text ? std::strlen(text) : 0);
}

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator<<(const xylString_base& text) {
	return write_text(text.char_p(), static_cast<size_t>(text.length()));
}

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator<<(const xylStream_manip&) {
	return *this;
}

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator<<(char value) {
	return write_value(value);
}

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator>>(char&) { return *this; }

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator>>(int&) { return *this; }

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator>>(unsigned int&) { return *this; }

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator>>(float&) { return *this; }

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator>>(xylConstString<64>&) {
	return *this;
}

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator>>(xylVarString&) { return *this; }

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator>>(xylInt64&) { return *this; }

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator>>(xylUInt64&) { return *this; }

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator>>(bool&) { return *this; }

xylIO_Stream& xylOutput_binary_file_stream_auto_flush::operator>>(const xylStream_manip&) {
	return *this;
}
