// One frame of a call stack without symbols.
#pragma once

#include <morvantis/core/xyltypes.h>

// A place in an image, which still means something when the process is gone.
struct zubCallstack_frame {
	xylUInt64 module_base;   // of the image that holds the instruction; 0 when none was found
	xylUInt64 module_offset; // from module_base on; the address itself when that is 0
};
static_assert(sizeof(zubCallstack_frame) == 16);
