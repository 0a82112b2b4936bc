#include <morvantis/math/xylpackage_serializer.h>

#include <morvantis/io/xylbuffer.h>
#include <morvantis/math/xylbounding_box.h>

void xylPackage_serializer::Primitives::write(const xylBounding_box& box, xylBuffer* out) {
	out->write_uint(0);
	box.write_data(*out);
}

void xylPackage_serializer::Primitives::read(xylBounding_box& box, xylBuffer* in) {
	in->cursor += sizeof(xylUInt32);
	box.read_data(*in);
}
