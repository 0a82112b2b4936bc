// Dynamic libraries.
#pragma once

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

} // namespace os
