// The state of all agents in two files, as an engine saves a game: one of raw values through a
// binary stream, one to be read and edited by people through a text stream.
#pragma once

#include "agents.h"

#include <string>

// What became of one of the files.
struct State_file {
	std::string path;
	xylUInt64 bytes = 0; // of the file
	double write_us = 0; // from the first value to the closed file
	double read_us = 0;  // from the path to the last value
	bool is_equal = false;
};

struct State_files {
	State_file binary; // comes back bit by bit
	State_file text;   // comes back within the six decimals that a text has

	bool is_sound() const { return binary.is_equal && text.is_equal; }
	void print() const;
};

// Writes both files into the folder `out` (agents.state and agents.txt) and reads them back.
State_files run_state_files(const std::vector<Agent>& agents, const std::string& out);
