#include <morvantis/io/zubreader_interface.h>

#include <morvantis/math/xylint_vec3.h>

bool read_intvec3(zubReader_interface* r, xylInt_vec3& v) {
	int x = 0;
	int y = 0;
	int z = 0;
	const bool has_x = r->read(x);
	const bool has_y = r->read(y);
	const bool has_z = r->read(z);
	v = xylInt_vec3(x, y, z);
	return has_x && has_y && has_z;
}
