// A socket layer that answers as a test tells it, for what no working system does.
//
// The program of these tests is linked from the sources of the network layer and this layer in
// place of the system's; the library is not part of it.
#pragma once

#include <morvantis/platform/system/socket.h>

#include <optional>
#include <string>
#include <vector>

// What the layer answers, and what it was asked, of which each test gets a new one.
struct Scripted_system {
	// Answers.
	bool starts = true;
	xylUInt16 given_version = 0x0202;
	xylInt64 next_handle = 7;
	bool binds = true;
	bool sets_option = true;
	os::Transfer transfer = os::Transfer::done;
	int bytes = 0;                // of a send or receive that is done
	bool truncates = false;       // whether a receive that is done lost the rest
	xylUInt32 sender_host = 0;    // of a receive
	unsigned char sender_port[2]; // in network byte order
	std::optional<xylUInt32> named_host;
	xylUInt32 parsed_host = os::no_host;
	const char* name = nullptr;
	const char* text = nullptr;

	// The calls, in words and in order, and the texts that the host got.
	std::vector<std::string> calls;
	std::vector<std::string> errors;
};

extern Scripted_system scripted_system;
