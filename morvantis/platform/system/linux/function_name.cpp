#include <morvantis/platform/system/linux/function_name.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <cxxabi.h>

namespace {

bool remove_suffix(std::string_view& text, std::string_view suffix) {
	if (!text.ends_with(suffix)) return false;
	text.remove_suffix(suffix.size());
	return true;
}

// Marks that compilers give to parts and copies of a function, several at times.
std::string_view without_marks(std::string_view text) {
	while (text.ends_with(']')) {
		const size_t mark = text.rfind(" [");
		if (mark == std::string_view::npos) break;
		text = text.substr(0, mark);
	}
	return text;
}

std::string_view without_qualifiers(std::string_view text) {
	while (remove_suffix(text, " const") || remove_suffix(text, " volatile") ||
	       remove_suffix(text, " &&") || remove_suffix(text, " &"));
	return text;
}

// Where the parenthesis that ends the text was opened; npos when it wasn't. Parentheses are always
// in pairs, even in the names of operators, which angle brackets are not.
size_t opening_of_last(std::string_view text) {
	size_t depth = 0;
	for (size_t i = text.size(); i-- > 0;) {
		if (text[i] == ')') ++depth;
		if (text[i] == '(' && --depth == 0) return i;
	}
	return std::string_view::npos;
}

bool is_name_character(char c) {
	return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' ||
	       c == '$' || static_cast<unsigned char>(c) >= 0x80;
}

// Whether the word `operator` stands at `i`: signs behind it belong to a name and are no brackets.
bool is_operator_at(std::string_view text, size_t i) {
	static constexpr std::string_view word = "operator";
	return text.substr(i).starts_with(word) && (i == 0 || !is_name_character(text[i - 1])) &&
	       (i + word.size() == text.size() || !is_name_character(text[i + word.size()]));
}

// Where the name begins behind a return type, which only templates show: after the last space
// outside all brackets. An operator's name may have spaces of its own, so the search ends there.
size_t start_of_name(std::string_view text) {
	size_t start = 0;
	int depth = 0;
	for (size_t i = 0; i < text.size(); ++i) {
		if (depth == 0 && is_operator_at(text, i)) break;
		if (std::strchr("<({[", text[i])) ++depth;
		if (std::strchr(">)}]", text[i])) --depth;
		if (text[i] == ' ' && depth == 0) start = i + 1;
	}
	return start;
}

// "sort" of "sort.part.0" and of "sort@@VERS_2.1": marks on a name that needs no demangling.
std::string_view without_suffixes(std::string_view symbol) {
	const size_t mark = symbol.find_first_of(".@", 1);
	return symbol.substr(0, std::min(mark, symbol.size()));
}

} // namespace

std::string_view os::qualified_name(std::string_view demangled) {
	const std::string_view declaration = without_qualifiers(without_marks(demangled));
	if (!declaration.ends_with(')')) return without_marks(demangled);
	const size_t parameters = opening_of_last(declaration);
	if (parameters == std::string_view::npos || parameters == 0) return demangled;
	const std::string_view name = declaration.substr(0, parameters);
	if (name.ends_with("operator"))
		return declaration; // "f()::operator()": there is no list behind
	if (name.find(" thunk to ") != std::string_view::npos) return name;
	return name.substr(start_of_name(name));
}

bool os::readable_function_name(const char* symbol, bool with_parameters, char* out, size_t size) {
	char* const demangled = std::strncmp(symbol, "_Z", 2) == 0
	                            ? abi::__cxa_demangle(symbol, nullptr, nullptr, nullptr)
	                            : nullptr;
	std::string_view name = demangled ? demangled : symbol;
	if (!with_parameters) name = demangled ? qualified_name(name) : without_suffixes(name);
	const bool fits = name.size() < size;
	if (fits) {
		std::memcpy(out, name.data(), name.size());
		out[name.size()] = 0;
	}
	std::free(demangled);
	return fits;
}
