// Reads values from a text that can be trusted.
#pragma once

#include <morvantis/io/zubreader_interface.h>
#include <morvantis/strings/xylvarstring.h>

// Takes its values from a string of its own, at the string's token cursor: numbers are tokens as
// xylVarString reads them (see try_next_token_int() and try_next_token_int64() for what ends one,
// and for the limit on the length of a number text), and a string is its length in characters
// followed by its words. White space in a string comes back as single blanks, so only strings
// whose words stand one blank apart come back as they were.
//
// Copying and moving take the cursor along; what was moved from is left empty.
//
// Threads: one at a time. Reading allocates for tokens and strings.
class MORVANTIS_API zubString_reader : public zubReader_interface {
public:
	// Copies the text and its cursor.
	zubString_reader(const xylVarString& text);

	// Moves the cursor over separators, bytes below 33. Whether another byte is then under it.
	bool has_unread_data();

	// True if all three numbers were read, which read(int&) always says.
	bool read(xylInt_vec3& value) override;

	// Integers.
	//
	// kept: always true. Where the text has no number the value is unspecified: this class trusts
	// its text, and zubUnsanitizedString_reader doesn't.
	bool read(xylInt64& value) override;
	bool read(unsigned int& value) override;
	bool read(xylUInt64& value) override;
	bool read(int& value) override;
	bool read(bool& value) override; // a number, true unless it is 0

	// The number at the start of the next token, as sscanf() reads "%f"; always true, and `value`
	// stays as it was if there is none.
	bool read(float& value) override;

	// kept: not implemented. Each warns the host, leaves the value alone, reads nothing and answers
	// false.
	bool read(unsigned short& value) override;
	bool read(short& value) override;
	bool read(double& value) override;
	bool read(char& value) override;

	// A string of the stated length. False, with a warning and `value` holding what came together,
	// if the words are longer than that, as well as for a negative length.
	//
	// kept: a text that ends early is filled up with blanks to the length, which counts as read. A
	// word is also taken where the blank behind the last one has made the string long enough.
	bool read(xylVarString& value) override;

	xylVarString source; // the text, with the cursor at what is read next
};
