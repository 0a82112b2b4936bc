// What the operating-system layer, the files and the allocators do for an engine, tried out once.
#pragma once

#include "../shared/table.h"

#include <string>

class xylHeap_allocator_link_list;

// The engine's own allocator, made by run_system_round(). It stays to the end of the process, as
// those of the library do.
extern xylHeap_allocator_link_list* engine_allocator;

struct System_round {
	Table machine{{"this machine", ""}};
	Table work{{"work", "amount", "ms", "as expected"}};
	bool is_sound = true; // every line of `work` is as expected

	void add(const char* what, const std::string& amount, double ms, bool is_right);
};

// Asks the system who and what it is; writes a file into a new folder below `out`, reads it back at
// once and overlapped, and deletes the tree; gives and takes blocks of memory; reads a script word
// by word; makes GUIDs and reads their texts.
System_round run_system_round(const std::string& out);
