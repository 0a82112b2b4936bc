// Memory as the system gives it: whole pages, and figures about the process and the machine.
#pragma once

#include <morvantis/core/xyltypes.h>

namespace os {

// Any thread may call all of these; none touches the library's heap.

struct Page_sizes {
	xylUInt32 page_bytes;        // unit of committing and decommitting
	xylUInt32 granularity_bytes; // unit of the addresses of new blocks
};

Page_sizes page_sizes();

// Takes `size` bytes of zeroed, readable and writable pages, rounded up to whole pages.
//
// Result  page-aligned address, the caller's until release_pages(); null for size 0 and when the
//         system refuses, with the reason in os::last_error().
void* take_pages(xylUInt64 size);

// Bytes from the page that holds `address` to the end of its region: the run of pages of one block
// that are all committed, or all decommitted.
//
// Result  0 when the system knows no region there. What it answers outside the blocks of
//         take_pages() is its own affair.
xylUInt64 region_size(const void* address);

// Gives a whole block back, whatever parts of it were decommitted.
//
// `block`  what take_pages() returned. Anything else, and a block already given back, is false.
bool release_pages(void* block);

// Drops the contents of every page that [`address`, `address` + `size`) touches; the addresses stay
// taken, and must not be read or written any more.
//
// `size`  bytes; 0 means the whole block when `address` is its start, else the call fails.
// Result  false, with nothing dropped, when the range does not lie within one block.
bool decommit_pages(void* address, xylUInt64 size);

struct Process_memory {
	xylUInt64 resident_bytes;  // of the process, in physical memory now
	xylUInt64 committed_bytes; // private memory the system has promised to the process
};

// False, with `*usage` untouched, when the system won't say.
bool process_memory(Process_memory* usage);

struct Memory_status {
	xylUInt64 available_bytes; // could be given out now without swapping
	xylUInt64 total_bytes;     // installed and visible to the system
};

// Physical memory of the machine. False, with `*status` untouched, when the system won't say.
bool physical_memory(Memory_status* status);

} // namespace os
