#include <morvantis/io/xylio_binary_stream.h>

#include <morvantis/math/xylquaternion.h>
#include <morvantis/strings/xylconststring.h>

#include <cstring>

namespace {

// Bytes from the cursor to the end; none if the cursor is behind it.
unsigned int unread_length(const xylVarString& buffer) {
	return buffer.eof() ? 0 : static_cast<unsigned int>(buffer.stream_length());
}

template <typename Value> void load(xylVarString& buffer, Value& value) {
	std::memcpy(&value, buffer.buffer_p(), sizeof(Value));
	buffer.advance_cursor_by(sizeof(Value));
}

void store_text(xylVarString& buffer, const char* text, size_t length) {
	buffer.push_back_value(static_cast<xylUInt32>(length));
	buffer.push_back(text, static_cast<unsigned int>(length));
}

} // namespace

xylIO_Stream& xylIO_binary_stream::operator<<(const xylQuaternion& value) {
	buffer.push_back_value(value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator<<(const xylIO_Stream& source) {
	const unsigned int count = unread_length(source.buffer);
	buffer.push_back_value(count);
	buffer.push_back(source.buffer.buffer_p(), count);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator<<(float value) {
	buffer.push_back_value(value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator<<(bool value) {
	buffer.push_back_value(value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator<<(xylUInt64 value) {
	buffer.push_back_value(value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator<<(xylInt64 value) {
	buffer.push_back_value(value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator<<(int value) {
	buffer.push_back_value(value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator<<(unsigned int value) {
	buffer.push_back_value(value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator<<(short value) {
	buffer.push_back_value(value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator<<(unsigned char value) {
	buffer.push_back_value(value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator<<(unsigned short value) {
	buffer.push_back_value(value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator<<(const char* text) {
	store_text(buffer, text, text ? std::strlen(text) : 0);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator<<(const xylString_base& text) {
	store_text(buffer, text.char_p(), static_cast<size_t>(text.length()));
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator<<(const xylStream_manip&) { return *this; }

xylIO_Stream& xylIO_binary_stream::operator<<(char value) {
	buffer.push_back_value(value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator>>(char& value) {
	load(buffer, value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator>>(xylIO_Stream& target) {
	unsigned int count = 0;
	*this >> count;
	target.clear();
	target.buffer.get_front_str(buffer, count);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator>>(xylQuaternion& value) {
	load(buffer, value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator>>(float& value) {
	load(buffer, value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator>>(bool& value) {
	unsigned char byte;
	load(buffer, byte);
	value = byte != 0;
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator>>(xylUInt64& value) {
	load(buffer, value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator>>(xylInt64& value) {
	load(buffer, value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator>>(int& value) {
	load(buffer, value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator>>(unsigned int& value) {
	load(buffer, value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator>>(short& value) {
	load(buffer, value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator>>(unsigned char& value) {
	load(buffer, value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator>>(unsigned short& value) {
	load(buffer, value);
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator>>(xylConstString<64>& text) {
	xylVarString whole;
	*this >> whole;
	text = whole;
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator>>(xylVarString& text) {
	int count = 0;
	*this >> count;
	text = xylVarString::empty_str();
	text.get_front_str(buffer, static_cast<unsigned int>(count));
	return *this;
}

xylIO_Stream& xylIO_binary_stream::operator>>(const xylStream_manip&) { return *this; }

void xylIO_binary_stream::write_void(void* src, unsigned int n) {
	buffer.append_binary(src, static_cast<int>(n));
}

void xylIO_binary_stream::read_no_consume(const xylIO_binary_stream& src) {
	buffer.push_back(src.buffer.buffer_p(), unread_length(src.buffer));
}

void xylIO_binary_stream::read_consume(xylIO_binary_stream& src) {
	read_no_consume(src);
	src.buffer.consume_all();
}
