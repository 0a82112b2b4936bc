// Finds ELF symbol files by the identity of the image that they belong to, and keeps them open.
#pragma once

#include <morvantis/core/xyltypes.h>
#include <morvantis/platform/system/linux/elf_symbols.h>

#include <sys/stat.h>

namespace os {

// The identity of the image whose symbol file is wanted.
struct Wanted_build {
	const char* name;          // file name of the image; a folder in front of it is passed over
	const char* image_path;    // where the image lies, or empty
	const unsigned char* guid; // the first 16 bytes of its build id; all zeros: it has none
	xylUInt32 age;             // 0 for ELF, but part of a symbol store's folder names
};

// The search, and what is known of the files that it met.
//
// A file is known by path, device, inode, size and time of change: one that was replaced is read
// anew. Of at most `max_known` files the facts are kept, and of at most `max_open` everything that
// was read; the ones not used for longest give way.
//
// Constant initialised; clear() gives back what is held. Threads: one at a time.
class Symbol_files {
public:
	// Looks for a file with exactly the wanted build id, in this order:
	//
	// - each element of `search_paths` (separated by ';'): in a folder D, for an image named N with
	//   build id I and store key K (16 GUID bytes in hexadecimal, age): D/N, D/N.debug,
	//   D/.debug/N.debug, D/.build-id/<first byte of I>/<rest of I>.debug, D/N/K/N, D/N/K/N.debug;
	//   of an element "SRV*A*B", the last two in those of A, B that are folders;
	// - the same in /usr/lib/debug, and there N.debug under the image's own folder;
	// - N.debug and .debug/N.debug beside the image, and the image itself.
	//
	// The first with debug information wins; else the first with a symbol table, which gives names
	// without lines. False, with `found` untouched, when there is neither.
	bool find(const char* search_paths, const Wanted_build& build, char (&found)[1024]);

	// The file at `path` if it is of the wanted build; null if it is another's or can't be read.
	// The object stays the files', until the next call of any of these operations.
	Elf_symbols* open(const char* path, const Wanted_build& build);
	// The same for two at once: the image of a symbol file, for its code.
	Elf_symbols* open_beside(const Elf_symbols* kept, const char* path, const Wanted_build& build);

	void clear();

private:
	static constexpr size_t max_known = 64;
	static constexpr size_t max_open = 16;

	struct Known_file {
		char* path;
		dev_t device;
		ino_t inode;
		off_t size;
		timespec changed;
		unsigned char build_id[16];
		bool has_build_id, has_debug_info, has_symbol_table;
		Elf_symbols* symbols; // null: not open
		xylUInt64 last_use;
	};
	struct Search;

	static bool is_of(const Known_file& file, const Wanted_build& build);
	Known_file* know(const char* path, const Elf_symbols* kept);
	void open(Known_file& file, const Elf_symbols* kept);
	void close(Known_file& file);
	void forget(Known_file& file);
	void make_room_for_open(const Elf_symbols* kept);
	Known_file* place_for_new();

	Known_file files_[max_known] = {};
	size_t count_ = 0;
	xylUInt64 uses_ = 0;
};

} // namespace os
