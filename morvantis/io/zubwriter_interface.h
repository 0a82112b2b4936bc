// How an engine object hands its values out as text, wherever that text goes.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API, xylInt64, xylUInt64

struct xylInt_vec3;
class xylVarString;

// Writes one value after the other; the order of the operations is fixed, since hosts implement
// them. A `const char*` is none of these values: it would be written as a bool.
//
// kept: no virtual destructor. An object isn't destroyed through this interface.
class MORVANTIS_API zubWriter_interface {
public:
	virtual void write(const xylInt_vec3& value) = 0;
	virtual void write(xylInt64 value) = 0;
	virtual void write(double value) = 0;
	virtual void write(float value) = 0;
	virtual void write(xylUInt64 value) = 0;
	virtual void write(bool value) = 0;
	virtual void write(unsigned int value) = 0;
	virtual void write(int value) = 0;
	virtual void write(const xylVarString& value) = 0;
};

// Writes x, y and z with the writer's write(int).
MORVANTIS_API void write_intvec3(zubWriter_interface* w, const xylInt_vec3& v);
