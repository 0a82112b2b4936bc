// Dynamic libraries, and the images that a process has loaded.
#pragma once

#include <morvantis/core/xyltypes.h> // xylUInt64, size_t

namespace os {

// Any thread may call these. Initialisers and clean-ups of the library run inside the calls.

// Loads a library, or counts it once more if it is loaded, by the system's own search.
//
// Result  a handle for the other two functions; null on failure, as for an empty name.
void* load_module(const char* name);

// Takes back one load_module(). False for null and for what is no handle of a loaded library.
bool free_module(void* module);

// The address of an exported symbol; null when `module` has no such symbol. A null `module` has
// none on Linux; on Windows it stands for the running program's own image.
void* module_symbol(void* module, const char* symbol);

// Where the image of a loaded library begins in memory; null for null.
const void* module_base(void* module);

// An image of a process, as its loader tells it. The texts live as long as the call that shows
// them.
struct Loaded_module {
	xylUInt64 key;    // tells images of a process apart; the base of a running one's
	const void* base; // where the image begins in memory
	const char* name; // its file's name
	const char* path; // the full path, or the name again for an image that has no file
};

enum class Module_list { complete, changing, unavailable };

// Shows every loaded image to `visit`, with `data` handed through, the program's own first.
//
// `process`  a handle of the process; null and what is no such handle mean the calling one, and on
//            Linux every value does.
// Result     `changing`: the list was being changed, nothing was shown, and asking again may help;
//            `unavailable`: nothing was shown, and the reason is in last_error().
// On Linux no image of the process is loaded or unloaded during the call; `visit` must not wait for
// a thread that does so.
Module_list visit_modules(void* process, void (*visit)(const Loaded_module&, void* data),
                          void* data);

// How many bytes from `address` on belong to one readable part of an image of this process; 0 where
// there is none. Says nothing of memory that is no image.
size_t readable_image_bytes(const void* address);

} // namespace os
