// Throws from a source of its own. Internal.
//
// mingw's gcc exports the type information of every exception that is thrown in a source with the
// table of an exported class.
#pragma once

// Throws std::out_of_range with the text, which it copies.
[[noreturn]] void throw_out_of_range(const char* text);
