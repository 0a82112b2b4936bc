// Text input from a file, without the operators of output that are used most.
#pragma once

#include <morvantis/io/xylio_input_text_file_stream.h>

// kept: the hidden operators do nothing, also when called through xylIO_Stream; the other ones of
// output still append to the buffer.
class MORVANTIS_API xylInput_text_file_stream : public xylIO_Input_text_file_stream {
public:
	using xylIO_Input_text_file_stream::operator<<;

private:
	xylIO_Stream& operator<<(const xylString_base&) override;
	xylIO_Stream& operator<<(const xylStream_manip&) override;
	xylIO_Stream& operator<<(int) override;
	xylIO_Stream& operator<<(unsigned int) override;
	xylIO_Stream& operator<<(float) override;
	xylIO_Stream& operator<<(xylInt64) override;
	xylIO_Stream& operator<<(xylUInt64) override;
	xylIO_Stream& operator<<(bool) override;
};
