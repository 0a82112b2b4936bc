// Binary output that goes to a file value by value.
#pragma once

#include <morvantis/io/xylio_output_binary_file_stream.h>

// Each value goes straight to the file, in the form that xylIO_binary_stream has, and nothing is
// written while no file is open; the run-time's buffer holds it until close(). Failures aren't
// noticed before that.
//
// kept: a quaternion goes to the memory buffer, where nothing ever picks it up; write its floats.
// The hidden operators of input do nothing, also when called through xylIO_Stream.
class MORVANTIS_API xylOutput_binary_file_stream_auto_flush
	: public xylIO_Output_binary_file_stream {
public:
	using xylIO_Output_binary_file_stream::operator>>;
	using xylIO_Output_binary_file_stream::operator<<;

	xylOutput_binary_file_stream_auto_flush() { auto_flush = true; }
	// kept: copies share the file, see the base.
	xylOutput_binary_file_stream_auto_flush(const xylOutput_binary_file_stream_auto_flush&) =
		default;
	xylOutput_binary_file_stream_auto_flush&
	operator=(const xylOutput_binary_file_stream_auto_flush&) = default;
	~xylOutput_binary_file_stream_auto_flush() override; // as close()

	xylIO_Stream& operator<<(const xylIO_Stream& source) override; // does nothing
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
	// kept: nothing to do for it, so 0; the run-time's own buffer is not flushed before close().
	int flush() override;

private:
	template <typename Value> xylIO_Stream& write_value(const Value& value);
	xylIO_Stream& write_text(const char* text, size_t length);
	xylIO_Stream& operator>>(char&) override;
	xylIO_Stream& operator>>(int&) override;
	xylIO_Stream& operator>>(unsigned int&) override;
	xylIO_Stream& operator>>(float&) override;
	xylIO_Stream& operator>>(xylConstString<64>&) override;
	xylIO_Stream& operator>>(xylVarString&) override;
	xylIO_Stream& operator>>(xylInt64&) override;
	xylIO_Stream& operator>>(xylUInt64&) override;
	xylIO_Stream& operator>>(bool&) override;
	xylIO_Stream& operator>>(const xylStream_manip&) override;
};
