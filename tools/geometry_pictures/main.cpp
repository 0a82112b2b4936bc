// Draws the pictures of docs/geometry.md into a folder.
//
// usage: geometry_pictures <folder>

#include "pictures.h"

#include <cstdio>
#include <fstream>

int main(int argc, char** argv) {
	if (argc != 2) {
		std::fputs("usage: geometry_pictures <folder>\n", stderr);
		return 2;
	}
	for (const Picture& picture : geometry_pictures()) {
		const std::string path = std::string(argv[1]) + "/" + picture.name;
		std::ofstream file(path, std::ios::binary);
		if (!(file << picture.svg).flush()) {
			std::fprintf(stderr, "%s can't be written\n", path.c_str());
			return 1;
		}
	}
	return 0;
}
