// Catches what the library shows to a debugger.
#pragma once

#include <string>

// While an object lives, debug output goes to it and nowhere else. One at a time, on one thread.
class Debug_output_catcher {
public:
	Debug_output_catcher();
	~Debug_output_catcher();
	Debug_output_catcher(const Debug_output_catcher&) = delete;
	Debug_output_catcher& operator=(const Debug_output_catcher&) = delete;

	// Everything since the last call, or since the object was made.
	std::string take();

private:
	void* state_;
};
