#include <morvantis/io/zubunsanitizedstring_reader.h>

#include <morvantis/core/xylreport.h>
#include <morvantis/io/string_reading.h>

namespace {

constexpr char no_char_text[] = "zubUnsanitizedString_reader::read( char& c ) not implemented yet.";
constexpr char no_double_text[] =
	"zubUnsanitizedString_reader::read( double& d ) not implemented yet.";
constexpr char no_short_text[] =
	"zubUnsanitizedString_reader::read( xylInt16& i ) not implemented yet.";
constexpr char no_unsigned_short_text[] =
	"zubUnsanitizedString_reader::read( xylUInt16& i ) not implemented yet.";

bool not_implemented(const char* text) {
	xyl_warning("%s", text);
	return false;
}

} // namespace

zubUnsanitizedString_reader::zubUnsanitizedString_reader(xylVarString& text) : source(text) {}

bool zubUnsanitizedString_reader::has_unread_data() { return source.has_more_tokens(); }

bool zubUnsanitizedString_reader::read(xylInt_vec3& value) { return read_intvec3(this, value); }

bool zubUnsanitizedString_reader::read(xylInt64& value) {
	return source.try_next_token_int64(value) == xylVarString::read_token_success;
}

bool zubUnsanitizedString_reader::read(unsigned int& value) {
	int number = 0;
	if (!read(number)) return false;
	value = static_cast<unsigned int>(number);
	return true;
}

bool zubUnsanitizedString_reader::read(unsigned short&) {
	return not_implemented(no_unsigned_short_text);
}

bool zubUnsanitizedString_reader::read(xylUInt64& value) {
	xylInt64 number = 0;
	if (!read(number)) return false;
	value = static_cast<xylUInt64>(number);
	return true;
}

bool zubUnsanitizedString_reader::read(short&) { return not_implemented(no_short_text); }

bool zubUnsanitizedString_reader::read(double&) { return not_implemented(no_double_text); }

bool zubUnsanitizedString_reader::read(float& value) {
	read_float(source, value);
	return true;
}

bool zubUnsanitizedString_reader::read(char&) { return not_implemented(no_char_text); }

bool zubUnsanitizedString_reader::read(bool& value) {
	int number = 0;
	if (source.try_next_token_int(number) != xylVarString::read_token_success) return false;
	value = number != 0;
	return true;
}

bool zubUnsanitizedString_reader::read(int& value) {
	return source.try_next_token_int(value) == xylVarString::read_token_success;
}

bool zubUnsanitizedString_reader::read(xylVarString& value) {
	return read_counted_string(*this, source, value);
}
