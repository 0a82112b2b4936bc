// The file operations of xylVarString; they stand here since strings know nothing of files.
#include <morvantis/strings/xylvarstring.h>

#include <morvantis/io/open_file.h>
#include <morvantis/io/xylfile.h>

static constexpr xylUInt64 longest_text = 0x7FFFFFFE; // with its terminator, what an int can say

void xylVarString::read_file(xylFile* file, unsigned int count) {
	const xylUInt64 size = count == 0 ? size_to_load(*file) : count;
	if (size == 0 || size > longest_text) return;
	ensure_length(static_cast<unsigned int>(size));
	length_ = static_cast<int>(file->read(text_, 1, size));
	text_[length_] = 0;
}

void xylVarString::write_file(xylFile* file) const {
	file->write(char_p(), 1, static_cast<xylUInt64>(length_));
}
