// A stream of values as text.
#pragma once

#include <morvantis/core/xylmutex.h>
#include <morvantis/io/xylio_stream.h>

struct xylInt_vec3;

// Values are formatted to the end of the buffer, and parsed from the tokens at its cursor, which
// bytes below 33 separate (see xylVarString::next_token()). docs/formats.md has the forms.
//
// kept: only floats, doubles, bools, quaternions and integer vectors carry a blank behind them.
// Integers and texts are glued together unless the caller writes separators.
//
// Input at the end of the data reports "Unexpected End of File while reading file: ..." and the
// stream's name to the host, and goes on with an empty token. Numbers aren't validated: what is no
// number is 0. A token of more than 8191 characters is cut, and the next read goes on inside it.
//
// Threads: each operator holds the stream's recursive lock from start to end, so several threads
// may share a stream; a composite value stands together. The other operations take no lock, and the
// lock of a stream that is given to another one as source or target isn't taken.
class MORVANTIS_API xylIO_text_stream : public xylIO_Stream {
public:
	// An empty stream.
	xylIO_text_stream() = default;
	// kept: the argument is ignored.
	xylIO_text_stream(char* ignored);

	// Moves the cursor over separators; without a token behind them the host is told.
	void check_has_tokens();
	// Whether the next string that is read is a check: what is passed stays as it is and is what
	// the next token must be, else the host is told "format broken". The check is then over.
	void set_format_check_pending(bool pending) { format_check_pending = pending ? 1 : 0; }

	// --- Output. With get_auto_flush(), each calls flush().

	xylIO_Stream& operator<<(const xylQuaternion& value) override; // x, y, z, w as floats
	// The source's whole length as an int, then its whole data, wherever its cursor is.
	//
	// kept: without a blank between them, so it isn't what `>>` takes.
	xylIO_Stream& operator<<(const xylIO_Stream& source) override;
	xylIO_Stream& operator<<(float value) override; // "%f "
	xylIO_Stream& operator<<(bool value) override;  // "1 " or "0 "
	// Decimal digits, written as a string.
	xylIO_Stream& operator<<(xylUInt64 value) override;
	xylIO_Stream& operator<<(xylInt64 value) override;
	xylIO_Stream& operator<<(int value) override;
	// kept: as the int with the same bits, so 4,294,967,295 is "-1".
	xylIO_Stream& operator<<(unsigned int value) override;
	xylIO_Stream& operator<<(short value) override;
	xylIO_Stream& operator<<(unsigned char value) override; // as a number
	xylIO_Stream& operator<<(unsigned short value) override;
	xylIO_Stream& operator<<(const char* text) override; // null adds nothing
	xylIO_Stream& operator<<(const xylString_base& text) override;
	xylIO_Stream& operator<<(const xylStream_manip& manipulator) override; // changes nothing
	xylIO_Stream& operator<<(char value);                                  // as a number
	xylIO_Stream& operator<<(double value);                                // "%f "
	xylIO_Stream& operator<<(const xylInt_vec3& value);                    // "%d %d %d "

	// --- Input, one token each where nothing else is said

	// These four are the low bits of a number as strtoul() and atoi() read it where `long` has 32
	// bits: a value out of range is the nearest in range, and for strtoul() 4,294,967,295.
	xylIO_Stream& operator>>(char& value) override;           // strtoul()
	xylIO_Stream& operator>>(unsigned char& value) override;  // atoi()
	xylIO_Stream& operator>>(short& value) override;          // atoi()
	xylIO_Stream& operator>>(unsigned short& value) override; // atoi()
	xylIO_Stream& operator>>(int& value) override;            // strtoul()
	xylIO_Stream& operator>>(unsigned int& value) override;   // strtoul()
	xylIO_Stream& operator>>(bool& value) override;           // atoi(), true unless it is 0
	// Wraps around at 64 bits; a leading "-" negates a signed one.
	//
	// kept: every other character counts as a digit of the value c - '0', a "+" and, for the
	// unsigned one, a "-" included.
	xylIO_Stream& operator>>(xylUInt64& value) override;
	xylIO_Stream& operator>>(xylInt64& value) override;
	xylIO_Stream& operator>>(float& value) override; // atof() narrowed
	// kept: through a float, so what is beyond single precision is lost.
	xylIO_Stream& operator>>(double& value);
	xylIO_Stream& operator>>(xylQuaternion& value) override; // four floats: x, y, z, w
	xylIO_Stream& operator>>(xylInt_vec3& value);            // three ints
	// A count as an int, then that many bytes from the cursor on, or as many as there are; the
	// target's clear() drops what it held.
	xylIO_Stream& operator>>(xylIO_Stream& target) override;
	// A token of any length; in double quotes it may hold separators. See
	// set_format_check_pending(). A fixed string refuses 64 characters or more with a warning, and
	// is then empty.
	xylIO_Stream& operator>>(xylConstString<64>& text) override;
	xylIO_Stream& operator>>(xylVarString& text) override;
	xylIO_Stream& operator>>(const xylStream_manip& manipulator) override; // changes nothing

	xylRecursive_mutex stream_mutex; // held by each operator

private:
	xylIO_Stream& append(const char* text, int length);
	bool checks_format(const xylString_base& expected);
};
