// The loaded images that call stacks are told in, and the lock of their resolution.
#pragma once

#include <morvantis/core/xylmutex.h>
#include <morvantis/diagnostics/zubcallstack_module.h>
#include <morvantis/memory/xylarray.h>
#include <morvantis/memory/xylmap.h>

// The cache of loaded images: what turns a module base of a raw frame into a name and an identity.
//
// An entry once made is never refreshed: an image that is unloaded stays, and another one at the
// same base is not seen until clear_module_cache().
//
// Threads: the cache has no lock. Whoever changes it sees to it that no other thread uses it; a
// resolve reads it under dbg_help_lock. Entries are on the library's heap.
class MORVANTIS_API zubCallstack_helpers {
public:
	// Adds the images of a process that the cache doesn't have yet.
	//
	// `process`  a handle of the process; null means the calling one
	// Result     false, with nothing changed, when the system won't list the images. It waits as
	//            long as the list keeps changing.
	// kept: identities are read from this process's memory, whichever process was listed.
	static bool enumerate_modules(void* process);

	// Loads a library for good, and adds it to the cache unless its image is there already.
	//
	// `path`  becomes the entry's path as it stands; its name is what the system takes for the
	//         file's name
	// Result  the entry's key; 0 when the library can't be loaded.
	static unsigned long long load_and_cache_module(const xylVarString& path);
	// The same for each path; those that fail are passed over. Always true.
	static bool load_and_cache_modules(xylArray<xylVarString> paths);

	// Copies an entry. False, with `out` untouched, when there is none of exactly this key.
	static bool get_module_info(unsigned long long key, zubCallstack_module& out);
	// The same for the first entry in the order of keys whose path has exactly these bytes.
	static bool get_module_info(const xylVarString& path, zubCallstack_module& out);
	static void clear_module_cache();
	// Replaces the array's contents by the path of each entry, in the order of keys.
	static void get_cached_module_names(xylArray<xylVarString>& out);

	// Copies what stands behind the last backslash, or all of it where there is none, with a
	// terminator.
	//
	// `out`  room for it all: it has no bound
	// kept: a forward slash separates nothing, on any system.
	static void get_file_name_from_path(const xylString_base& path, char* out);

	// Unwind steps of one capture, those of skipped frames among them.
	static const unsigned int callstack_max_depth = 128;

	static xylMutex dbg_help_lock; // held for a whole resolve, and for nothing else
	static xylMap<xylUInt64, zubCallstack_module> Modules; // by image base

private:
	// Fills in what the image at the module's base says of itself; see
	// diagnostics/image_identity.h. False when it has no identity.
	static bool load_symbol_info(zubCallstack_module& module);
};
