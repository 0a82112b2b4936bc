// What an object implements that can write itself through a zubWriter_interface.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API

class zubWriter_interface;

// For the engine's modules: nothing in the library calls or implements it.
//
// kept: no virtual destructor. An object isn't destroyed through this interface.
class MORVANTIS_API zubSerializable_interface {
public:
	virtual void serialize(zubWriter_interface& writer) const = 0;
};
