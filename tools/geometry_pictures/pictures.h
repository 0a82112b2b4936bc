// The pictures of docs/geometry.md, with every coordinate from the library's own operations.
#pragma once

#include <string>
#include <vector>

struct Picture {
	std::string name; // of the file
	std::string svg;
};

std::vector<Picture> geometry_pictures();
