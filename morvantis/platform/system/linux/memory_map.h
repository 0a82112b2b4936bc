// The kernel's list of the mappings of this process, one line of text after another.
#pragma once

#include <morvantis/core/xyltypes.h>

#include <array>

namespace os {

struct Mapping {
	xylUInt64 start;
	xylUInt64 end; // behind the last byte
	xylUInt64 offset;
	bool readable;
	bool executable;
	const char* path; // "/usr/lib/x.so", "[stack]"; empty for memory without a file
};

// Understands a line without its end, such as
// "7f00a000-7f00c000 r-xp 00002000 08:01 1234    /usr/lib/x.so". False for anything else.
bool parse_mapping(const char* line, Mapping* mapping);

// Gives the lines of a part of a file, one after another. Too large for a stack.
class Line_reader {
public:
	// `size` bytes of the file from `position` on.
	void start(int file, xylUInt64 position, xylUInt64 size);
	// The next line without its end, valid until the next call; null at the end. A line too long
	// for the buffer is cut.
	const char* next();

private:
	void refill();

	int file_;
	xylUInt64 position_; // of what is to be read
	xylUInt64 left_;     // bytes there
	size_t begin_, end_; // what has been read and not given away
	std::array<char, 8192> buffer_;
};

} // namespace os
