#include <morvantis/io/zubwriter_interface.h>

#include <morvantis/math/xylint_vec3.h>

void write_intvec3(zubWriter_interface* w, const xylInt_vec3& v) {
	w->write(v.x);
	w->write(v.y);
	w->write(v.z);
}
