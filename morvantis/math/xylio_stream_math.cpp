// The math values in streams of any kind, float by float.

#include <morvantis/io/xylio_stream.h>
#include <morvantis/math/xylmatrix_frame.h>
#include <morvantis/math/xylvec2.h>

xylIO_Stream& operator<<(xylIO_Stream& stream, const xylVec2& v) { return stream << v.x << v.y; }
xylIO_Stream& operator>>(xylIO_Stream& stream, xylVec2& v) { return stream >> v.x >> v.y; }

xylIO_Stream& operator<<(xylIO_Stream& stream, const xylVec3& v) {
	return stream << v.x << v.y << v.z;
}
xylIO_Stream& operator>>(xylIO_Stream& stream, xylVec3& v) { return stream >> v.x >> v.y >> v.z; }

xylIO_Stream& operator<<(xylIO_Stream& stream, const xylMatrix_frame& frame) {
	return stream << frame.s << frame.f << frame.u << frame.origin;
}
xylIO_Stream& operator>>(xylIO_Stream& stream, xylMatrix_frame& frame) {
	return stream >> frame.s >> frame.f >> frame.u >> frame.origin;
}
