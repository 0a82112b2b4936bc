// What the two readers over a string have in common. Internal.
#pragma once

class xylVarString;
class zubReader_interface;

// Reads a string: its length with the reader's read(int&), then words from `source`, each followed
// by one blank, until the length is reached. Whether exactly that many characters came together;
// a length that can't be read or is negative takes no words and gives false.
bool read_counted_string(zubReader_interface& reader, xylVarString& source, xylVarString& target);

// Reads the number at the start of the next token; without one `target` stays as it was.
void read_float(xylVarString& source, float& target);
