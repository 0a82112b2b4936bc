// Finds the rules of an instruction in an image's call frame information.
//
// The table is .eh_frame with its index .eh_frame_hdr, as the Linux Standard Base tells in
// "Exception Frames"; the instructions are those of DWARF 5, 6.4.2.
#pragma once

#include <morvantis/platform/system/linux/frame_rules.h>

namespace os {

// Where an image keeps its call frame information. Nothing outside of [begin, end) is read.
struct Frame_table {
	const unsigned char* index; // .eh_frame_hdr, in its usual form: sorted, offsets of 32 bits
	const unsigned char* begin; // of the image in memory
	const unsigned char* end;
};

// False where no function of the table covers the address, and for a table that makes no sense.
// The rules' expressions point into the table. Nothing is allocated.
bool find_frame_rules(const Frame_table& table, xylUInt64 address, Frame_rules& rules);

} // namespace os
