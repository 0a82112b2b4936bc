// The file operations of xylVarString; they stand here since strings know nothing of files.
#include <morvantis/strings/xylvarstring.h>

#include <morvantis/io/xylfile.h>

void xylVarString::read_file(xylFile* file, unsigned int count) {
	if (count == 0) count = static_cast<unsigned int>(file->get_file_size());
	if (count == 0) return;
	ensure_length(count);
	length_ = static_cast<int>(file->read(text_, 1, count));
	text_[length_] = 0;
}

void xylVarString::write_file(xylFile* file) const {
	file->write(char_p(), 1, static_cast<xylUInt64>(length_));
}
