// What the binary and the text file streams do alike with their files. Internal.
#pragma once

class xylFile;
class xylIO_Stream;

// The fields of a file stream that these work on.
struct Input_file {
	xylIO_Stream& stream;
	xylFile*& file_object;
	bool& failed;
};
struct Output_file {
	xylIO_Stream& stream;
	xylFile*& file_object;
	bool& failed;
	bool& is_opened;
};

// Closes a file and gives the object back to the heap; null does nothing.
void end_stream_file(xylFile*& file_object);

// Loads a whole file into the stream's buffer and closes it; an empty one leaves the buffer as it
// was. False if it doesn't open, with the object kept.
bool load_stream_file(const Input_file& file, const char* name, const char* mode);
void close_input_file(const Input_file& file);

// 0, or -1 with the object kept.
int open_output_file(const Output_file& file, const char* name, const char* mode);
int flush_output_file(const Output_file& file);
// By way of the stream's own flush().
int close_output_file(const Output_file& file);
