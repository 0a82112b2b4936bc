// What the command line decides.
#pragma once

#include <string>

struct Run_options {
	int frames = 48;
	int agents = 60;
	unsigned int seed = 1;
	std::string out = "engine_host_out"; // a folder, made if there is none
};
