#include <morvantis/io/zubstring_reader.h>

#include <morvantis/core/xylreport.h>
#include <morvantis/io/string_reading.h>

namespace {

constexpr char wrong_length_text[] = "invalid string format, length does not match";
constexpr char no_char_text[] = "zubString_reader::read( char& c ) not implemented yet.";
constexpr char no_double_text[] = "zubString_reader::read( double& d ) not implemented yet.";
constexpr char no_short_text[] = "zubString_reader::read( xylInt16& i ) not implemented yet.";
constexpr char no_unsigned_short_text[] = "not implemented yet.";

} // namespace

zubString_reader::zubString_reader(const xylVarString& text) : source(text) {}

bool zubString_reader::has_unread_data() { return source.has_more_tokens(); }

bool zubString_reader::read(xylInt_vec3& value) { return read_intvec3(this, value); }

bool zubString_reader::read(xylInt64& value) {
	read_number(source, value);
	return true;
}

bool zubString_reader::read(unsigned int& value) {
	read_number(source, value);
	return true;
}

bool zubString_reader::read(unsigned short&) { return not_implemented(no_unsigned_short_text); }

bool zubString_reader::read(xylUInt64& value) {
	read_number(source, value);
	return true;
}

bool zubString_reader::read(short&) { return not_implemented(no_short_text); }

bool zubString_reader::read(double&) { return not_implemented(no_double_text); }

bool zubString_reader::read(float& value) {
	read_number(source, value);
	return true;
}

bool zubString_reader::read(char&) { return not_implemented(no_char_text); }

bool zubString_reader::read(bool& value) {
	read_number(source, value);
	return true;
}

bool zubString_reader::read(int& value) {
	read_number(source, value);
	return true;
}

bool zubString_reader::read(xylVarString& value) {
	if (read_counted_string(*this, source, value)) return true;
	xyl_warning(wrong_length_text);
	return false;
}
