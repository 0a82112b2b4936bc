// A stand-in for the reader of symbol files: what it answers, and what it was asked.
#pragma once

#include <windows.h>

// Where an answer can go wrong, in the order of a look-up.
enum Reader_step : unsigned int {
	step_factory,
	step_instance,
	step_load,
	step_session,
	step_function,
	step_any_symbol,
	step_public_symbol,
	step_name,
	step_length,
	step_lines,
	step_line,
	step_line_number,
	step_source,
	step_source_name,
	step_count,
};

struct Reader_script {
	unsigned int failing; // bit n: step n gives `failure`, and nothing else
	unsigned int missing; // bit n: step n succeeds and hands out nothing
	unsigned int leaking; // bit n: step n fails and hands out what it would have
	HRESULT failure;
	const wchar_t* function;
	const wchar_t* source;
	DWORD line;
	ULONGLONG length;  // of the symbol
	bool keeps_length; // get_length() leaves its result as it was

	// What was asked.
	wchar_t path[1024];
	GUID guid;
	DWORD signature, age;
	DWORD tags[8];
	unsigned int tag_count;
	DWORD symbol_place, line_place, line_length, line_index;
	ULONGLONG length_before;
	bool other_identifiers; // a class or interface was asked for that nobody has
	bool other_slots;       // a function was called that nobody should
	unsigned int loads;

	int live_objects, most_objects; // now, and at any time
};

// The double's export of the script, "reader_script".
using Get_reader_script = Reader_script* (*)();
