// The frames in a text: unresolved ones are found, resolved ones are written.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

// What an unresolved frame says of itself.
struct Frame {
	std::string name;                     // of the image or of its symbol file, without folders
	std::string path;                     // the same as the frame has it, perhaps with folders
	std::array<unsigned char, 16> guid{}; // of the symbol file, in memory order
	std::uint32_t age = 0;
	std::uint32_t offset = 0; // from the image's base
};

// A frame and where it stands in the line.
struct Found_frame {
	Frame frame;
	size_t begin = 0, length = 0;
};

// Looks for a frame in `line`, from `from` on. Two forms are known, each with anything in front of
// it:
//
//     0x<base> 0x<offset> {GUID} age name      16 digits each; the name goes to the end of the line
//     #name@{GUID} (age): 0:offset
//
// A frame whose GUID is zero tells no image and is no match. False when there is none.
bool find_frame(std::string_view line, size_t from, Found_frame& found);

// "{...}": 32 digits, three numbers and eight bytes, as the frames have it.
std::string guid_text(const std::array<unsigned char, 16>& guid);

// What a symbol file knows of a frame. Empty texts and line 0 are not known.
struct Place {
	std::string function;
	std::string source; // its file name alone
	unsigned int line = 0;
};

// "@module@source (line): function", with what is not known named so.
std::string resolved_text(const std::string& module, const Place& place);
