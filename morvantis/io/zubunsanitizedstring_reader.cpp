#include <morvantis/io/zubunsanitizedstring_reader.h>

#include <morvantis/io/string_reading.h>

namespace {

constexpr char no_char_text[] = "zubUnsanitizedString_reader::read( char& c ) not implemented yet.";
constexpr char no_double_text[] =
	"zubUnsanitizedString_reader::read( double& d ) not implemented yet.";
constexpr char no_short_text[] =
	"zubUnsanitizedString_reader::read( xylInt16& i ) not implemented yet.";
constexpr char no_unsigned_short_text[] =
	"zubUnsanitizedString_reader::read( xylUInt16& i ) not implemented yet.";

} // namespace

zubUnsanitizedString_reader::zubUnsanitizedString_reader(xylVarString& text) : source(text) {}

bool zubUnsanitizedString_reader::has_unread_data() { return source.has_more_tokens(); }

bool zubUnsanitizedString_reader::read(xylInt_vec3& value) { return read_intvec3(this, value); }

bool zubUnsanitizedString_reader::read(xylInt64& value) { return read_number(source, value); }

bool zubUnsanitizedString_reader::read(unsigned int& value) { return read_number(source, value); }

bool zubUnsanitizedString_reader::read(unsigned short&) {
	return not_implemented(no_unsigned_short_text);
}

bool zubUnsanitizedString_reader::read(xylUInt64& value) { return read_number(source, value); }

bool zubUnsanitizedString_reader::read(short&) { return not_implemented(no_short_text); }

bool zubUnsanitizedString_reader::read(double&) { return not_implemented(no_double_text); }

bool zubUnsanitizedString_reader::read(float& value) {
	read_number(source, value);
	return true;
}

bool zubUnsanitizedString_reader::read(char&) { return not_implemented(no_char_text); }

bool zubUnsanitizedString_reader::read(bool& value) { return read_number(source, value); }

bool zubUnsanitizedString_reader::read(int& value) { return read_number(source, value); }

bool zubUnsanitizedString_reader::read(xylVarString& value) {
	return read_counted_string(*this, source, value);
}
