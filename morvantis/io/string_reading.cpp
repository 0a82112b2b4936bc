#include <morvantis/io/string_reading.h>

#include <morvantis/core/number_parse.h>
#include <morvantis/io/zubreader_interface.h>
#include <morvantis/strings/xylvarstring.h>

bool read_counted_string(zubReader_interface& reader, xylVarString& source, xylVarString& target) {
	target.clear();
	int count = -1; // what a failed read leaves behind
	reader.read(count);
	xylVarString word;
	while (target.length() < count) {
		source.next_token_str(word);
		target.append(word);
		// kept: at the end of the text the words are empty, and blanks alone fill the string.
		if (target.length() < count) target.append(' ');
	}
	return target.length() == count;
}

void read_float(xylVarString& source, float& target) {
	xylVarString token;
	source.next_token_str(token);
	number_parse::scan_float(token.char_p(), &target);
}
