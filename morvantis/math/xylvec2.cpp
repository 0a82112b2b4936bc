#include <morvantis/math/xylvec2.h>

#include <ostream>

std::basic_ostream<char>& operator<<(std::basic_ostream<char>& stream, const xylVec2& v) {
	return stream << '(' << v.x << ", " << v.y << ')';
}
