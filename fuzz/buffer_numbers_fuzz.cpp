// Numbers of vectors, quaternions and frames from a buffer of any bytes: each must be what the walk
// byte by byte and strtod() make of it, the cursor must stand where that walk ends, and the fourth
// floats must stay as they were.

#include "input.h"

#include <morvantis/io/xylbuffer.h>
#include <morvantis/math/xylmatrix_frame.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr float untouched = 77;

// The rule once more, on an index.
class Plain_walk {
public:
	explicit Plain_walk(const std::string& text) : text_(text) {}

	float next() {
		while (byte() > 31) ++at_;
		if (byte() == 0) {
			while (byte() == 0) ++at_;
		}
		return static_cast<float>(std::strtod(text_.c_str() + at_, nullptr));
	}
	std::size_t at() const { return at_; }

private:
	unsigned char byte() const { return static_cast<unsigned char>(text_.at(at_)); }

	const std::string& text_;
	std::size_t at_ = 0;
};

bool is_same(float a, float b) { return std::memcmp(&a, &b, sizeof(a)) == 0 || (a != a && b != b); }

void require_next(Plain_walk& walk, const xylVec3& v) {
	for (const float number : {v.x, v.y, v.z}) require(is_same(number, walk.next()));
	require(v.w == untouched);
}

void read_one(xylBuffer& buffer, Plain_walk& walk, int choice) {
	const xylVec3 before(1, 2, 3, untouched);
	switch (choice) {
	case 0: {
		xylVec3 v = before;
		v.read(buffer);
		return require_next(walk, v);
	}
	case 1: {
		xylQuaternion q(1, 2, 3, 4);
		q.read(buffer);
		for (const float number : {q.x, q.y, q.z, q.w}) require(is_same(number, walk.next()));
		return;
	}
	default: {
		xylMatrix_frame frame;
		for (xylVec3* row : {&frame.s, &frame.f, &frame.u, &frame.origin}) *row = before;
		frame.read(buffer);
		for (const xylVec3& row : {frame.s, frame.f, frame.u, frame.origin})
			require_next(walk, row);
	}
	}
}

} // namespace

// The first byte chooses what is read; the rest is the text, with as many numbers behind it as the
// greediest choice can take: the walk knows no other end.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
	if (size == 0) return 0;
	std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
	constexpr int rounds = 3;
	for (int i = 0; i <= rounds * 12; ++i)
		text += std::string("\0"
		                    "0.25",
		                    5);
	text += '\0';
	xylBuffer buffer;
	buffer.write_void(text.data(), text.size());
	buffer.rewind();
	Plain_walk walk(text);
	for (int i = 0, choices = data[0]; i < rounds; ++i, choices /= 3) {
		read_one(buffer, walk, choices % 3);
		require(buffer.cursor == buffer.data + walk.at());
	}
	return 0;
}
