// Stands in for the system's error numbers and messages, and says what it was asked.
#pragma once

#include <morvantis/core/xyltypes.h>

#include <optional>
#include <string>
#include <vector>

struct Scripted_system_error {
	static Scripted_system_error& get();

	std::optional<std::string> message; // for every number; without one, every request fails
	xylUInt32 last_error = 0;
	xylUInt32 reason = 0; // the last error of a request that fails

	std::vector<xylUInt32> asked_codes;
	std::vector<xylUInt32> asked_sizes; // of system_message()
	int allocated_messages = 0;         // less those freed
};
