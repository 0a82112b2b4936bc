// Binary output to a file, without the operators of input that are used most.
#pragma once

#include <morvantis/io/xylio_output_binary_file_stream.h>

// kept: the hidden operators do nothing, also when called through xylIO_Stream; the other ones of
// input still read the buffer.
class MORVANTIS_API xylOutput_binary_file_stream : public xylIO_Output_binary_file_stream {
public:
	using xylIO_Output_binary_file_stream::operator>>;

private:
	xylIO_Stream& operator>>(float&) override;
	xylIO_Stream& operator>>(xylConstString<64>&) override;
	xylIO_Stream& operator>>(xylVarString&) override;
	xylIO_Stream& operator>>(bool&) override;
	xylIO_Stream& operator>>(const xylStream_manip&) override;
};
