// The abstract stream: a name and a buffer in memory, and an operator for each kind of value that
// engine data is made of.
#pragma once

#include <morvantis/strings/xylvarstring.h>

template <int N> class xylConstString;
struct xylQuaternion;

// Manipulators of a stream, of which none has an effect.
enum xylStream_manip { xylStream_manip_none };

// What the binary and the text streams share. Output goes to the end of the buffer, input comes
// from the buffer's cursor. A file stream doesn't read or write piece by piece: input loads the
// whole file when it opens, output is collected and written by flush() and close().
//
// The order of the virtual operations is fixed. Each `<<` and `>>` returns the stream it was called
// on.
//
// A stream is ended through its virtual destructor; one that lives on the library's heap by its
// most derived address, as every object there.
//
// Threads: a stream belongs to one thread at a time, except that the operators of a text stream may
// be called by several.
class MORVANTIS_API xylIO_Stream {
public:
	// An empty stream without a name.
	xylIO_Stream() = default;
	// A stream over a copy of `length` bytes. Null gives an empty one.
	xylIO_Stream(const char* data, int length) : buffer(data, length) {}
	// Copies have a buffer of their own, with the cursor where it was.
	xylIO_Stream(const xylIO_Stream& source) = default;
	xylIO_Stream& operator=(const xylIO_Stream& source) = default;
	virtual ~xylIO_Stream();

	// Drops the data and sets the cursor to 0. What a file already has is not forgotten: an output
	// stream writes nothing before its buffer is as long again.
	virtual void clear();
	// Sets the cursor to 0.
	virtual void reset_to_buffer_start();

	virtual xylIO_Stream& operator<<(const xylQuaternion& value) = 0;
	virtual xylIO_Stream& operator<<(const xylIO_Stream& source) = 0;
	virtual xylIO_Stream& operator<<(float value) = 0;
	virtual xylIO_Stream& operator<<(bool value) = 0;
	virtual xylIO_Stream& operator<<(xylUInt64 value) = 0;
	virtual xylIO_Stream& operator<<(xylInt64 value) = 0;
	virtual xylIO_Stream& operator<<(int value) = 0;
	virtual xylIO_Stream& operator<<(unsigned int value) = 0;
	virtual xylIO_Stream& operator<<(short value) = 0;
	virtual xylIO_Stream& operator<<(unsigned char value) = 0;
	virtual xylIO_Stream& operator<<(unsigned short value) = 0;
	virtual xylIO_Stream& operator<<(const char* text) = 0;
	virtual xylIO_Stream& operator<<(const xylString_base& text) = 0;
	virtual xylIO_Stream& operator<<(const xylStream_manip& manipulator) = 0;
	virtual xylIO_Stream& operator>>(char& value) = 0;
	virtual xylIO_Stream& operator>>(xylIO_Stream& target) = 0;
	virtual xylIO_Stream& operator>>(xylQuaternion& value) = 0;
	virtual xylIO_Stream& operator>>(float& value) = 0;
	virtual xylIO_Stream& operator>>(bool& value) = 0;
	virtual xylIO_Stream& operator>>(xylUInt64& value) = 0;
	virtual xylIO_Stream& operator>>(xylInt64& value) = 0;
	virtual xylIO_Stream& operator>>(int& value) = 0;
	virtual xylIO_Stream& operator>>(unsigned int& value) = 0;
	virtual xylIO_Stream& operator>>(short& value) = 0;
	virtual xylIO_Stream& operator>>(unsigned char& value) = 0;
	virtual xylIO_Stream& operator>>(unsigned short& value) = 0;
	virtual xylIO_Stream& operator>>(xylConstString<64>& text) = 0;
	virtual xylIO_Stream& operator>>(xylVarString& text) = 0;
	virtual xylIO_Stream& operator>>(const xylStream_manip& manipulator) = 0;

	// Whether the cursor is at the end of the data or behind it.
	virtual bool eof();
	// Whether a text stream calls flush() after each value. Binary streams don't look at it.
	virtual void set_auto_flush(bool is_automatic);
	virtual bool get_auto_flush();
	// Writes out what a file has not got yet: 0 when all went well, as always where there is no
	// file.
	virtual int flush();

	bool is_binary_file() const { return is_binary; }
	const xylVarString& get_name() const { return name; }

	xylVarString name;            // of a file stream the path as given, else empty
	int format_check_pending = 0; // 1: the next string that a text stream reads is a check
	bool auto_flush = false;      // see set_auto_flush()
	xylUInt32 flushed_length = 0; // bytes of `buffer` that the file already has
	bool is_binary = false;       // set by the binary family
	xylVarString buffer;          // the data as bytes, zero bytes included, with the read cursor
};
