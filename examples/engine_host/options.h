// What the command line decides.
#pragma once

#include <string>

struct Run_options {
	int frames = 48;
	int agents = 80;
	unsigned int seed = 1;
	std::string out = "engine_host_out"; // a folder, made if there is none
	std::string draw;                    // a file of records to draw in place of a run

	// What the program starts itself with.
	std::string program;            // as it was started
	unsigned short second_port = 0; // plays the second host, listening there
	bool crash = false;             // leaves a dump
};

inline constexpr int ticks_per_frame = 4;
