// Reads values from a text from outside.
#pragma once

#include <morvantis/io/zubreader_interface.h>
#include <morvantis/strings/xylvarstring.h>

// Reads what zubString_reader reads, and says of each integer whether there was one.
//
// kept: nothing bounds the length in front of a string, so a text from outside can make a string
// of up to 2 GiB of blanks; and a number text of 20 characters or more ends the process. A host
// that can't trust its source for that looks at the text first.
//
// Copying and moving take the cursor along; what was moved from is left empty.
//
// Threads: one at a time. Reading allocates for tokens and strings.
class MORVANTIS_API zubUnsanitizedString_reader : public zubReader_interface {
public:
	// Copies the text and its cursor; `text` stays as it was.
	zubUnsanitizedString_reader(xylVarString& text);

	// Moves the cursor over separators, bytes below 33. Whether another byte is then under it.
	bool has_unread_data();

	// True if all three numbers were read. `value` is changed in any case, see read_intvec3().
	bool read(xylInt_vec3& value) override;

	// Integers. False, with `value` as it was, if the text has no number here. The bytes that were
	// looked at are consumed.
	//
	// kept: a 32-bit number that ends with the text is read as try_next_token_int() has it: "12x"
	// is 12 there, and "12" is 1.
	bool read(xylInt64& value) override;
	bool read(unsigned int& value) override;
	bool read(xylUInt64& value) override;
	bool read(int& value) override;
	bool read(bool& value) override; // a number, true unless it is 0

	// The number at the start of the next token, as sscanf() reads "%f".
	//
	// kept: always true, even here; `value` stays as it was if there is no number.
	bool read(float& value) override;

	// kept: not implemented. Each warns the host, leaves the value alone, reads nothing and answers
	// false.
	bool read(unsigned short& value) override;
	bool read(short& value) override;
	bool read(double& value) override;
	bool read(char& value) override;

	// A string of the stated length. False, without a message and with `value` holding what came
	// together, if the words are longer than that, as well as for a negative length or none.
	//
	// kept: a text that ends early is filled up with blanks to the length, which counts as read. A
	// word is also taken where the blank behind the last one has made the string long enough.
	bool read(xylVarString& value) override;

	xylVarString source; // the text, with the cursor at what is read next
};
