#include <morvantis/io/string_reading.h>

#include <morvantis/core/number_parse.h>
#include <morvantis/core/xylreport.h>
#include <morvantis/io/zubreader_interface.h>
#include <morvantis/strings/xylvarstring.h>

namespace {

// A number of the type that the string reads, where another one is wanted.
template <typename Read, typename Value> bool read_as(xylVarString& source, Value& value) {
	Read number = 0;
	if (!read_number(source, number)) return false;
	value = static_cast<Value>(number);
	return true;
}

} // namespace

bool read_number(xylVarString& source, int& value) {
	return source.try_next_token_int(value) == xylVarString::read_token_success;
}

bool read_number(xylVarString& source, unsigned int& value) { return read_as<int>(source, value); }

bool read_number(xylVarString& source, bool& value) { return read_as<int>(source, value); }

bool read_number(xylVarString& source, xylInt64& value) {
	return source.try_next_token_int64(value) == xylVarString::read_token_success;
}

bool read_number(xylVarString& source, xylUInt64& value) {
	return read_as<xylInt64>(source, value);
}

bool read_number(xylVarString& source, float& value) {
	xylVarString token;
	source.next_token_str(token);
	return number_parse::scan_float(token.char_p(), &value);
}

bool read_counted_string(zubReader_interface& reader, xylVarString& source, xylVarString& target) {
	target.clear();
	int count = -1; // what a failed read leaves behind
	reader.read(count);
	xylVarString word;
	// kept: the length without the blank behind the last word decides whether another one follows.
	// So a word is taken also where that blank has made the string long enough.
	for (int length = 0; length < count;) {
		source.next_token_str(word);
		target.append(word);
		length = target.length();
		// kept: at the end of the text the words are empty, and blanks alone fill the string.
		if (length < count) target.append(' ');
	}
	return target.length() == count;
}

bool not_implemented(const char* text) {
	xyl_warning("%s", text);
	return false;
}
