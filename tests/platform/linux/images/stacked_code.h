// Calls through an image with symbols, which say from where they were made.
#pragma once

// One of the calls: the function that made it and the line it stands in, in stacked_code.cpp.
struct Stacked_call {
	const char* function;
	int line;
};

// Runs functions within functions and calls `visit` from each innermost one, with the calls that
// led there, the outermost first. run_stacks() is how the image exports it.
using Visit_stack = void(const Stacked_call* calls, int count, void* data);
using Run_stacks = void(Visit_stack* visit, void* data);
