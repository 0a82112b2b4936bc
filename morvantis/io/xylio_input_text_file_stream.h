// Text input from a file.
#pragma once

#include <morvantis/io/xylio_text_stream.h>

class xylFile;

// Reads the whole file when it opens, as text: on Windows the run-time turns carriage return and
// line feed into line feed. From then on it is a stream in memory that remembers its name.
class MORVANTIS_API xylIO_Input_text_file_stream : public xylIO_text_stream {
public:
	xylIO_Input_text_file_stream() = default;
	~xylIO_Input_text_file_stream() override; // as close()

	// Replaces the buffer by the content of a file, which may be base-relative; the cursor stays
	// where it is, 0 in a new stream. An empty file leaves the buffer as it was. False if it
	// doesn't open, which fail() then tells, too; nothing is reported.
	bool try_open(const char* name);
	// The same: 0, or -1 with a warning to the host. Takes no lock, as all operations here.
	int open(const char* name);
	// Whether no file has been opened, or it was closed.
	bool fail() const { return failed; }
	// Ends the file object, if any; the data stays readable.
	void close();
	// The bytes from the cursor up to the next line feed or the end; see xylVarString::get_line(),
	// which doesn't step over the line feed.
	xylVarString get_line();

	xylFile* file_object = nullptr; // owned; null unless opening has failed
	bool failed = true;             // see fail()
};
