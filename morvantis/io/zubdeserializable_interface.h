// What an object implements that can read itself through a zubReader_interface.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API

class zubReader_interface;

// For the engine's modules: nothing in the library calls or implements it.
//
// kept: no virtual destructor. An object isn't destroyed through this interface.
class MORVANTIS_API zubDeserializable_interface {
public:
	// Whether all values were read.
	virtual bool deserialize(zubReader_interface& reader) = 0;
};
