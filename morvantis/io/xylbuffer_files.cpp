// The byte buffer to and from files.

#include <morvantis/io/xylbuffer.h>

#include <morvantis/core/xylreport.h>
#include <morvantis/io/open_file.h>
#include <morvantis/io/resource_text.h>
#include <morvantis/io/xylfile.h>
#include <morvantis/io/xylnative_file.h>
#include <morvantis/io/xylnative_file_async.h>
#include <morvantis/strings/xylvarstring.h>

static constexpr char comma_text[] =
	"Resource file contains invalid comma(',') characters, use dots('.'): \"%s\"";
static constexpr char bad_character_text[] =
	"Resource file \"%s\" contains at least one invalid character \"%c\". Please check resource "
	"naming and try again.";

bool xylBuffer::read_handle(xylNative_file& file, unsigned int n) {
	if (!read_handle_do_not_advance(file, n)) return false;
	cursor += n;
	return true;
}

bool xylBuffer::read_handle_do_not_advance(xylNative_file& file, unsigned int n) {
	if (n == 0) return true;
	ensure_length(n);
	return file.read(cursor, n) == n;
}

bool xylBuffer::read_handle_do_not_advance_async(xylNative_file_async& file, unsigned int n) {
	ensure_length(n);
	file.read(cursor, n);
	return true;
}

bool xylBuffer::write_handle(xylNative_file& file, unsigned int n) {
	ensure_length(n);
	if (file.write(cursor, n) != n) return false;
	cursor += n;
	return true;
}

bool xylBuffer::write_handle_from_beginning(xylNative_file& file, unsigned int n) {
	return file.write(data, n) == n;
}

void xylBuffer::read_file(xylFile* file) {
	const xylUInt64 size = size_to_load(*file);
	ensure_length(size);
	file->read(cursor, 1, size);
}

void xylBuffer::write_file(xylFile* file) { file->write(data, get_length(), 1); }

bool xylBuffer::trf_read_and_prepare(xylNative_file& file, unsigned int size,
                                     const xylVarString& name) {
	const xylUInt64 size_with_end = xylUInt64{size} + 1;
	ensure_capacity(size_with_end);
	rewind();
	if (!read_handle_do_not_advance(file, size)) return false;
	data[size] = 0;
	const Resource_text_flaws flaws = prepare_resource_text(data, size);
	if (flaws.has_comma) {
		xyl_warning(comma_text, name.char_p());
		return false;
	}
	if (flaws.last_bad_byte != 0) {
		xyl_warning(bad_character_text, name.char_p(), flaws.last_bad_byte);
		return false;
	}
	return true;
}
