// A stream of values in their raw memory form.
#pragma once

#include <morvantis/io/xylio_stream.h>

// Values stand in the buffer as in memory: little-endian, without padding or tags.
//
//   char, unsigned char, bool     1 byte; any byte but 0 is read as true
//   short, unsigned short         2 bytes
//   int, unsigned int, float      4 bytes
//   xylInt64, xylUInt64           8 bytes
//   xylQuaternion                 16 bytes: w, x, y, z
//   texts                         4 bytes length, then the characters, no terminator
//   streams                       4 bytes length, then the bytes from the source's cursor to its
//                                 end; that cursor stays
//
// Reads don't test the end of the buffer: the caller knows the layout and asks eof(). A stream must
// not be written to or read into itself.
//
// After each write a zero byte stands behind the data, in storage but not counted.
class MORVANTIS_API xylIO_binary_stream : public xylIO_Stream {
public:
	xylIO_binary_stream() { is_binary = true; }
	// kept: is_binary_file() is false for this one.
	xylIO_binary_stream(const char* data, int length) : xylIO_Stream(data, length) {}

	using xylIO_Stream::operator=;

	xylIO_Stream& operator<<(const xylQuaternion& value) override;
	xylIO_Stream& operator<<(const xylIO_Stream& source) override;
	xylIO_Stream& operator<<(float value) override;
	xylIO_Stream& operator<<(bool value) override;
	xylIO_Stream& operator<<(xylUInt64 value) override;
	xylIO_Stream& operator<<(xylInt64 value) override;
	xylIO_Stream& operator<<(int value) override;
	xylIO_Stream& operator<<(unsigned int value) override;
	xylIO_Stream& operator<<(short value) override;
	xylIO_Stream& operator<<(unsigned char value) override;
	xylIO_Stream& operator<<(unsigned short value) override;
	xylIO_Stream& operator<<(const char* text) override; // null counts as empty
	xylIO_Stream& operator<<(const xylString_base& text) override;
	xylIO_Stream& operator<<(const xylStream_manip& manipulator) override; // does nothing
	xylIO_Stream& operator<<(char value);
	xylIO_Stream& operator>>(char& value) override;
	// Replaces what the target holds, by way of its clear().
	xylIO_Stream& operator>>(xylIO_Stream& target) override;
	xylIO_Stream& operator>>(xylQuaternion& value) override;
	xylIO_Stream& operator>>(float& value) override;
	xylIO_Stream& operator>>(bool& value) override;
	xylIO_Stream& operator>>(xylUInt64& value) override;
	xylIO_Stream& operator>>(xylInt64& value) override;
	xylIO_Stream& operator>>(int& value) override;
	xylIO_Stream& operator>>(unsigned int& value) override;
	xylIO_Stream& operator>>(short& value) override;
	xylIO_Stream& operator>>(unsigned char& value) override;
	xylIO_Stream& operator>>(unsigned short& value) override;
	// A text of 64 characters or more is refused with a warning, and leaves `text` empty.
	xylIO_Stream& operator>>(xylConstString<64>& text) override;
	// Replaces the text, also by an empty one; its cursor goes to 0.
	xylIO_Stream& operator>>(xylVarString& text) override;
	xylIO_Stream& operator>>(const xylStream_manip& manipulator) override; // does nothing

	// The read cursor, as bytes from the start of the buffer and as an address, which the next
	// write may make invalid. set_cursor() takes any value; reading there needs data there.
	unsigned int get_cursor() const {
		return static_cast<unsigned int>(buffer.get_cursor_position());
	}
	void set_cursor(unsigned int position) { buffer.reset_cursor(static_cast<int>(position)); }
	const char* get_cursor_pointer() const { return static_cast<const char*>(buffer.buffer_p()); }

	// Appends `n` bytes; nothing if `n`, taken as signed, is below 1.
	//
	// kept: no zero byte is written behind them.
	void write_void(void* src, unsigned int n);
	// Appends the bytes of `src` from its cursor to its end; that cursor stays, or with
	// read_consume() moves to the end.
	void read_no_consume(const xylIO_binary_stream& src);
	void read_consume(xylIO_binary_stream& src);
};
