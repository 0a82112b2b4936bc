// Binary output to a file.
#pragma once

#include <morvantis/io/xylio_binary_stream.h>

class xylFile;

// Collects all data in memory; flush() and close() write it.
class MORVANTIS_API xylIO_Output_binary_file_stream : public xylIO_binary_stream {
public:
	xylIO_Output_binary_file_stream() = default;
	// kept: a copy shares the file object, which both close; one of the two must be told that
	// nothing is open before.
	xylIO_Output_binary_file_stream(const xylIO_Output_binary_file_stream&) = default;
	xylIO_Output_binary_file_stream& operator=(const xylIO_Output_binary_file_stream&) = default;
	~xylIO_Output_binary_file_stream() override; // as close()

	// Makes the file, which may be base-relative, or empties it. 0, or -1 if that can't be; nothing
	// is reported. A file that was open ends without being written.
	int open(const char* name);
	// Drops the connection to the file without a message once it is written: 1 when all is well or
	// nothing was open, 0 when the run-time could not close the file.
	//
	// kept: when flush() fails its result comes back, and file_object stays, with the file open. It
	// goes with the stream, or when that opens another file.
	int close();
	// Writes what the file has not got yet, as one block, and flushes the run-time's buffer. 0, or
	// 1 if the file took fewer bytes; 0 if nothing is open.
	//
	// kept: what was not taken is not tried again, and a failure of the run-time's flush isn't
	// noticed.
	int flush() override;

	xylFile* file_object = nullptr; // owned; the file, also when opening or the last flush failed
	bool failed = true;             // whether no file is open, as of the last open() or close()
	bool is_opened = false;         // whether output goes to the file
};
