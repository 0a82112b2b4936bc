// In a source of its own: the standard library's engine takes longer to compile than all the rest
// of the strings.

#include <morvantis/strings/xylstring_base.h>

#include <regex>

bool xylString_base::regex_match(const xylString_base& pattern) const {
	return std::regex_match(char_p(), std::regex(pattern.char_p()));
}
