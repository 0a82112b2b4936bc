// A file layer that answers as a test tells it and notes what it is asked.
//
// The program of these tests is linked from the sources of the file classes and of the strings,
// with this layer and tests/platform/scripted_system.h in place of the system's.
#pragma once

#include <morvantis/platform/system/file.h>

#include <cstdio>
#include <deque>
#include <string>
#include <vector>

struct Scripted_file {
	// Answers.
	void* handle = reinterpret_cast<void*>(0x40); // of a file that opens
	bool closes = true;
	// Of reads and writes, one after the other; then calls move all that was asked for.
	std::deque<xylInt64> transfers;
	int interruptions = 0; // that many failures are a signal's
	xylInt64 position = 0; // of each seek
	bool has_size = true;
	xylUInt64 size = 0;          // of files, and each position in a stream
	std::FILE* stream = nullptr; // what opens next
	os::Overlapped_state state = os::Overlapped_state::completed;
	xylUInt32 overlapped_count = 0;

	// What was asked.
	struct Piece {
		const void* memory;
		xylUInt32 size;
		bool operator==(const Piece&) const = default;
	};
	std::string path;          // of the last file that was opened
	os::File_request request;  // of the same
	std::string endings;       // "g" for a read given up, "c" for a closing, in order
	std::vector<Piece> pieces; // of reads and writes
	xylUInt64 offset = 0;      // of the last seek or overlapped read
	os::File_origin origin{};
	bool record_was_clear = false; // at the last overlapped read
	bool waited = false;           // in the last query
};

// The one in use; each test gets a new one.
extern Scripted_file scripted_file;
