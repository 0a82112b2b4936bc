// Names of functions as people write them.
#pragma once

#include <string_view>

namespace os {

// The qualified name within a demangled function: "ns::Class::f" of "ns::Class::f(int) const",
// "pick<int>" of "int pick<int>(int const&)". Parameters, qualifiers behind them, a return type and
// marks like " [clone .cold]" are left off; what is in front of a thunk's name stays, and so does a
// text that isn't such a declaration. The result is a part of `demangled`.
std::string_view qualified_name(std::string_view demangled);

// What is written in the source for the linker's name `symbol`: demangled by the Itanium C++ ABI
// and, unless `with_parameters`, reduced by qualified_name(). A name of another kind is copied as
// it is, but for the compiler's marks if it is to be reduced.
//
// Result  false, with `out` untouched, when the name and a terminator need more than `size` bytes.
bool readable_function_name(const char* symbol, bool with_parameters, char* out, size_t size);

} // namespace os
