// The second host: another process of this program, which is sent the world and checks it.
#pragma once

#include "../shared/road.h"
#include "options.h"

// What the first host tells both ends of the road.
Options road_options(const Run_options& options, unsigned short port);

// In the second process: listens on options.second_port until the first host says goodbye, and
// leaves its tables in a file of the out folder. Returns the exit code.
int run_second_host(const Run_options& options);

// In the first process.
class Second_host {
public:
	// Finds a free port, starts the process and waits until it listens; false when one fails.
	bool start(const Run_options& options);
	unsigned short port() const { return port_; }
	// Waits for the tables, once goodbye was said. Whether all arrived as it was sent.
	bool wait_until_content() const;

private:
	// What the second host has written, once the word is in it; empty when that takes too long.
	std::string wait_for(const char* word) const;

	std::string tables_; // the file's path
	unsigned short port_ = 0;
};
