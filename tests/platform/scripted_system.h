// A system layer that answers as a test tells it and notes what it is asked, for what no working
// system does and for answers of the other one.
//
// The program of these tests is linked from the sources of zubPlatform and of the strings, with
// this layer in place of the system's, and with a heap and a host that count; the library is no
// part of it.
#pragma once

#include <morvantis/platform/system/memory.h>
#include <morvantis/platform/system/path.h>
#include <morvantis/platform/system/processor.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

struct Scripted_system {
	// Answers. What is empty fails.
	std::optional<xylInt64> frequency = 10'000'000;
	xylInt64 counter = 0;
	xylUInt32 milliseconds = 0;
	std::optional<os::Process_memory> process_memory;
	std::optional<os::Memory_status> physical_memory;
	os::Page_sizes page_sizes{4096, 65536};
	std::map<xylUInt32, os::Cpuid_registers> leaves; // the others are all ones
	xylUInt32 processor_count = 1;
	bool succeeds = true;    // of every call with a yes or no
	void* address = nullptr; // of every call with an address
	bool has_symbols = true; // of libraries
	std::string name;        // of the machine or the user
	std::optional<xylUInt32> name_count;
	std::string path; // of every call that asks for one
	os::Path_kind path_kind = os::Path_kind::missing;
	std::map<std::string, os::Path_kind> path_kinds; // of single paths, ahead of the one for all
	std::optional<xylInt64> modification_time;
	char separator = '/';
	std::string current_folder; // empty: it isn't told
	int start_result = 1;       // of starting a process
	xylUInt32 child_id = 7;

	// What happened, in words and in order.
	std::vector<std::string> calls;   // of the system
	std::vector<std::string> reports; // to the host and the debug output
	int allocations = 0;              // of the heap
};

// The one in use; each test gets a new one.
extern Scripted_system scripted_system;
