// A file as a buffered stream of the C run-time.
#pragma once

#include <morvantis/core/xylreport.h> // MORVANTIS_FORMAT
#include <morvantis/core/xyltypes.h>

#include <atomic>
#include <cstdio> // FILE

// A stream and little more. Only is_valid(), open(), close() and the destructor may be called on a
// closed object; the others hand a null stream to the run-time.
//
// On Windows a stream without "b" in its mode turns line feeds into carriage return and line feed,
// and back.
//
// Failure: the results say so; nothing is reported to the host.
// Threads: an object belongs to one thread at a time; the counter may be read by any.
// Allocation: the run-time's own for the stream; print() uses the library's heap for long texts.
class MORVANTIS_API xylFile {
public:
	// Closed.
	xylFile() = default;
	// Closed, then open(), whose result is_valid() tells.
	xylFile(const char* name, const char* mode);
	// kept: a copy shares the stream, and both objects close it; before the second does, its `file`
	// must be set to null. The counter counts the stream once.
	xylFile(const xylFile&) = default;
	xylFile& operator=(const xylFile&) = default;
	// Closes an open file.
	~xylFile();

	bool is_valid() const { return file != nullptr; } // whether it is open

	// Opens a file.
	//
	// `name`  may be base-relative; null is the empty name, which opens nothing. One of 256
	//         characters or more ends the process. A folder doesn't open.
	// `mode`  fopen()'s
	// Result  0, or the run-time's error number, with the object closed.
	// kept: a file that was open is not closed; its stream is lost, and the counter stays one too
	// high.
	int open(const char* name, const char* mode);
	// Closes the file and opens another one, `name`, in its stream. Arguments and result as above.
	//
	// kept: the counter doesn't change, so after a failure it stays one too high.
	int reopen(const char* name, const char* mode);
	// False on a closed object, with nothing done, and when the run-time could not write what was
	// left in the buffer; the object is closed in any case.
	bool close();

	// Writes formatted text of any length, with the directives and bytes of the reporting
	// functions (see core/xylreport.h).
	//
	// Result  the number of characters, or -1 when the stream fails.
	int print(const char* format, ...) MORVANTIS_FORMAT(2, 3);
	// Reads by the run-time's rules and locale with a format that has one directive, of the
	// target's type. A text without a width may run over its target.
	//
	// Result  1 or 0 values read, or EOF when the file ends before.
	int scan(const char* format, char* target);
	int scan(const char* format, int* target);
	int scan(const char* format, float* target);
	int scan(const char* format, double* target);

	// At most `size` - 1 bytes of a line, line feed included, and a terminator. `dst`, or null at
	// the end of the file and on failure.
	char* gets(char* dst, int size);
	// kept: as char, so the end of the file is the same as the byte 255; eof() tells.
	char getc();
	int putc(char c);           // the byte, 0 to 255, or EOF on failure
	int puts(const char* text); // EOF on failure, else not negative; no line feed is added
	bool eof() const;           // whether a read has met the end

	// The position in bytes; all bits set on failure.
	xylUInt64 tell() const;
	// Moves the position. `offset` is 64 bits with a sign in an unsigned type; `origin` is one of
	// the run-time's SEEK_SET, SEEK_CUR, SEEK_END. 0, or another number on failure.
	int seek(xylUInt64 offset, int origin);
	// Items of `size` bytes. Result: the items that are whole.
	xylUInt64 read(void* dst, xylUInt64 size, xylUInt64 count);
	xylUInt64 write(const void* src, xylUInt64 size, xylUInt64 count);
	int flush(); // 0, or EOF on failure
	// Bytes of the file. The position is afterwards where it was.
	xylUInt64 get_file_size();

	// Open streams of this class in the process.
	static std::atomic<int> open_files_count_;

	FILE* file = nullptr; // the run-time's stream; null when closed
};
