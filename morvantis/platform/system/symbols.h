// The symbol engine: names and lines of code, from the symbol files of images.
#pragma once

#include <morvantis/core/xyltypes.h>

namespace os {

// One thread at a time may be in any of these. `process` is current_process() throughout. Texts are
// UTF-8 where a symbol file holds them, and else in the system's narrow form.

// --- The engine as a whole

// The library that reads symbol files, to be loaded by this name before the engine starts; null
// where the engine brings its own reader.
const char* symbol_reader_library();

// Bits of the debug help library; without effect elsewhere.
void set_symbol_options(xylUInt32 options);

// Where to look for symbol files: elements separated by ";", as get_symbol_search_paths() makes
// them. A system may take the paths only when the engine starts, so no result is told.
void set_symbol_search_path(void* process, const char* paths);

// Starts the engine with the images that are loaded now. False on failure.
bool start_symbol_engine(void* process, const char* paths);
void stop_symbol_engine(void* process);

// --- Symbol files by identity. These two need no started engine.

// What a loaded image says of its symbol file.
struct Symbol_file_identity {
	const char* name;          // the symbol file's name, maybe with a path
	const unsigned char* guid; // 16 bytes in memory order
	xylUInt32 signature;
	xylUInt32 age;
	const char* image_path; // of the image itself, which may hold its own symbols
};

constexpr size_t symbol_text_size = 1024; // of a path, a name or a source, terminator included

// Searches `paths` for the symbol file of exactly this build.
//
// Result  true with its path in `found`; false, with `found` unspecified, when there is none: a
//         file of another build is passed over.
bool find_symbol_file(const char* paths, const Symbol_file_identity& identity,
                      char (&found)[symbol_text_size]);

// What a symbol file knows of one place. A text that doesn't fit is not converted: its array stays
// as it was, which is empty, or for `source` the function's name.
struct Symbol_answer {
	bool has_function = false;
	bool has_line = false;
	bool has_source = false;
	xylUInt32 line = 0;
	char function[symbol_text_size] = {};
	char source[symbol_text_size] = {}; // may have folders in front of the name
};

// Opens a symbol file, asks it for the code at `offset` from the image's base, and closes it again.
//
// The name comes without parameters and result: "ns::Class::f". It is the function's whose machine
// code holds the place; where code of another was inlined there, the line is that of the inlined
// call.
//
// On Windows the place is `offset` itself. On Linux a place right behind a call instruction stands
// for the call: frames hold where calls return to, and the byte there may belong to the next
// statement or, behind a call that never returns, to the next function. Files stay open there, a
// few of them, until stop_symbol_engine(), and are read anew when they change.
//
// `reader`  the entry of symbol_reader_library(), null where there is none
// Result    false, with `answer` untouched, when the file can't be opened as this build's; else
//           true, and `answer` has what is known, which may be nothing.
bool look_up_symbol(void* reader, const char* file, const Symbol_file_identity& identity,
                    xylUInt32 offset, Symbol_answer& answer);

// --- Questions to the started engine about absolute addresses of this process. Each returns false
// when the engine knows nothing, with the reason in last_error() and the answer untouched.

struct Engine_module {
	xylUInt64 base;
	char image[256];
	char loaded_image[256];
};
bool engine_module(void* process, xylUInt64 address, Engine_module& answer);

constexpr size_t engine_text_size = 4096;        // of a name, terminator included
constexpr size_t engine_record_size = 32 + 4096; // head and name

// A record for engine_name(), zeroed but for its sizes, from the C runtime's malloc(); null when
// there is no memory. Whoever wants it back calls free().
void* allocate_engine_record();

struct Engine_name {
	const char* decorated;           // points into the record
	char plain[engine_text_size];    // without parameters and result
	char complete[engine_text_size]; // all that the decoration tells
};
bool engine_name(void* process, xylUInt64 address, void* record, Engine_name& answer);

struct Engine_line {
	const char* file; // the engine's, until its next answer
	xylUInt32 line;
};
bool engine_line(void* process, xylUInt64 address, Engine_line& answer);

} // namespace os
