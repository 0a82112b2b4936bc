// Binary input from a file.
#pragma once

#include <morvantis/io/xylio_binary_stream.h>

class xylFile;

// Reads the whole file when it opens; from then on it is a stream in memory that remembers its
// name.
class MORVANTIS_API xylIO_Input_binary_file_stream : public xylIO_binary_stream {
public:
	xylIO_Input_binary_file_stream() = default;
	// kept: a copy shares the file object. There is one only after a failed open; one of the two
	// then sets its own to null.
	xylIO_Input_binary_file_stream(const xylIO_Input_binary_file_stream&) = default;
	xylIO_Input_binary_file_stream& operator=(const xylIO_Input_binary_file_stream&) = default;
	~xylIO_Input_binary_file_stream() override; // as close()

	// Replaces the buffer by the content of a file, which may be base-relative; the cursor stays
	// where it is, 0 in a new stream. An empty file leaves the buffer as it was. False if it
	// doesn't open, which fail() then tells, too; nothing is reported. A file that is shorter than
	// its size gives what there was. Files of 2 GiB and more are outside the design.
	bool try_open(const char* name);
	// The same: 0, or -1 with an error to the host.
	int open(const char* name);
	// Whether no file has been opened, or it was closed.
	bool fail() const { return failed; }
	// Ends the file object, if any; the data stays readable.
	void close();

	xylFile* file_object = nullptr; // owned; null unless opening has failed
	bool failed = true;             // see fail()
};
