#pragma once

#include <morvantis/core/xyltypes.h>

class MORVANTIS_API xylVarString {
public:
	const char* char_p() const { return ""; }
};
