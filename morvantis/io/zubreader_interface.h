// How an engine object takes its values from a text, wherever that text lives.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API, xylInt64, xylUInt64

struct xylInt_vec3;
class xylVarString;

// Reads one value after the other; the order of the operations is fixed, since hosts implement
// them. Each answers whether the value was read, and an implementation may know less than that:
// see zubString_reader.
//
// kept: no virtual destructor. An object isn't destroyed through this interface.
class MORVANTIS_API zubReader_interface {
public:
	virtual bool read(xylInt_vec3& value) = 0;
	virtual bool read(xylInt64& value) = 0;
	virtual bool read(unsigned int& value) = 0;
	virtual bool read(unsigned short& value) = 0;
	virtual bool read(xylUInt64& value) = 0;
	virtual bool read(short& value) = 0;
	virtual bool read(double& value) = 0;
	virtual bool read(float& value) = 0;
	virtual bool read(char& value) = 0;
	virtual bool read(bool& value) = 0;
	virtual bool read(int& value) = 0;
	virtual bool read(xylVarString& value) = 0;
};

// Reads x, y and z with the reader's read(int&), always all three, so a bad number doesn't move
// those behind it. True if all three answered true. `v` takes what was read in any case, 0 where a
// failed read stored nothing.
MORVANTIS_API bool read_intvec3(zubReader_interface* r, xylInt_vec3& v);
