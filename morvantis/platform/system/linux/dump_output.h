// The bytes of a crash dump on their way into its file.
#pragma once

#include <morvantis/core/xyltypes.h>

#include <array>

namespace os {

// Appends to a file through a buffer of its own, by the calls open, read and write alone. After a
// failure of the system it goes on counting and writes nothing more.
//
// The object is too large for a stack and is all zeros until start().
class Dump_output {
public:
	void start(int file);
	xylUInt32 position() const { return written_ + used_; }
	void append(const void* bytes, size_t size);
	// Zeros up to a multiple of `alignment`, a power of two.
	void align(xylUInt32 alignment);
	// Appends memory of this process from `address`; how many bytes of it were readable.
	xylUInt32 append_memory(xylUInt64 address, xylUInt32 size);
	// Appends what the file at `path` gives, at most `limit` bytes; how many.
	xylUInt32 append_file(const char* path, xylUInt32 limit);
	// Puts what the buffer holds into the file.
	void flush();
	// Writes over what stands in the file since the last flush().
	void write_at(xylUInt32 position, const void* bytes, size_t size);
	// Empties the file unless all of it could be written: half a dump is none.
	void finish();
	int file() const { return file_; }

private:
	size_t room() const { return buffer_.size() - used_; }

	int file_;
	bool failed_;
	xylUInt32 written_; // bytes in front of the buffer
	xylUInt32 used_;    // bytes in it
	std::array<char, 65536> buffer_;
};

} // namespace os
