// Writes values into a text.
#pragma once

#include <morvantis/io/zubwriter_interface.h>
#include <morvantis/strings/xylvarstring.h>

// Appends each value to a string of its own.
//
// kept: nothing is put between two values. 1 and 2 give "12", which reads as one number; for a text
// that zubString_reader can read the caller appends separators to `output`.
//
// Copying and moving take the text along; what was moved from is left empty.
//
// Threads: one at a time. Writing allocates as the string grows.
class MORVANTIS_API zubString_writer : public zubWriter_interface {
public:
	zubString_writer() = default;

	// The text so far; it changes with each write.
	const xylVarString& get_data() const { return output; }

	void write(const xylInt_vec3& value) override; // the three numbers, nothing between them
	void write(xylInt64 value) override;
	// "%f".
	//
	// kept: a text of more than 32 characters is cut to its first 31.
	void write(double value) override;
	void write(float value) override;
	void write(xylUInt64 value) override;
	void write(bool value) override; // "1" or "0"
	void write(unsigned int value) override;
	void write(int value) override;
	// The length with write(int), then the text.
	void write(const xylVarString& value) override;

	xylVarString output; // the text so far
};
