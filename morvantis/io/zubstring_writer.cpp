#include <morvantis/io/zubstring_writer.h>

void zubString_writer::write(const xylInt_vec3& value) { write_intvec3(this, value); }

void zubString_writer::write(xylInt64 value) { output.append(value); }

void zubString_writer::write(double value) { output.append(value); }

void zubString_writer::write(float value) { output.append(value); }

void zubString_writer::write(xylUInt64 value) { output.append(value); }

void zubString_writer::write(bool value) { output.append(value ? 1 : 0); }

void zubString_writer::write(unsigned int value) { output.append(value); }

void zubString_writer::write(int value) { output.append(value); }

void zubString_writer::write(const xylVarString& value) {
	write(value.length());
	output.append(value);
}
