// What the two readers over a string have in common. Internal.
#pragma once

#include <morvantis/core/xyltypes.h> // xylInt64, xylUInt64

class xylVarString;
class zubReader_interface;

// Each reads one number at the cursor of `source`. False, with `value` as it was, where the text
// has none.

// As xylVarString::try_next_token_int() reads it.
bool read_number(xylVarString& source, int& value);
bool read_number(xylVarString& source, unsigned int& value);
bool read_number(xylVarString& source, bool& value); // true unless it is 0
// As xylVarString::try_next_token_int64() reads it.
bool read_number(xylVarString& source, xylInt64& value);
bool read_number(xylVarString& source, xylUInt64& value);
// What stands at the start of the next token, as sscanf() reads "%f".
bool read_number(xylVarString& source, float& value);

// Reads a string: its length with the reader's read(int&), then words from `source`, each followed
// by one blank, until the length is reached. Whether exactly that many characters came together;
// a length that can't be read or is negative takes no words and gives false.
bool read_counted_string(zubReader_interface& reader, xylVarString& source, xylVarString& target);

// Warns the host with a fixed text. Always false.
bool not_implemented(const char* text);
