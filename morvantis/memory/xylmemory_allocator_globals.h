// The allocators and tables that the whole process shares.
#pragma once

#include <morvantis/memory/xylstatic_hashtable.h>

class xylHeap_allocator;
class xylPage_allocator;

// Static members only.
class MORVANTIS_API xylMemory_allocator_globals {
public:
	// Made when the library is loaded, in this order, and never destroyed. On the runtime's heap,
	// so that they need nothing of the library's.
	static xylPage_allocator* page_allocator_;
	static xylHeap_allocator* heap_allocator_;

	// Makes both. A further call replaces both pointers and leaks the former objects.
	static void init_global_allocators();
	// kept: does nothing. The global allocators are never torn down.
	static void finalize_global_allocators();

	// Values by address, for the engine's modules: the library neither reads nor writes it. Empty
	// from load on; at most 1,048,576 addresses, and an insert into the full table never returns.
	static xylStatic_hashtable<void*, xylUInt64, 1048576> array_allocation_data_;
};
