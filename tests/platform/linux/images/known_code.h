// What the images with known places tell the tests about themselves.
#pragma once

// A place in the image and what its symbol file has to say of it.
struct Known_place {
	const void* address;  // where a call returns to
	const char* function; // its name without parameters
	int line;             // of the call, in known_code.cpp
};

// known_places(places): fills in at most `most_known_places` and returns how many.
constexpr int most_known_places = 16;
using Known_places = int(Known_place* places);
