// The bytes of every stored form of the byte buffer, which both systems have to write and read
// exactly.

#include <morvantis/io/xylbuffer.h>
#include <morvantis/math/xylbounding_box.h>
#include <morvantis/math/xylint_vec2.h>
#include <morvantis/math/xylmatrix_frame.h>
#include <morvantis/math/xylpackage_serializer.h>
#include <morvantis/math/xylplane.h>
#include <morvantis/math/xylvec2.h>
#include <morvantis/strings/xylvarstring.h>

#include "test_data.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>

namespace {

const xylVec3 vector(1.5f, -2, 3, 4);
const xylQuaternion rotation(0.5f, 1, -2, 3); // w first
const xylGuid_type guid{0x01020304, 0x0506, 0x0708, {9, 10, 11, 12, 13, 14, 15, 16}};

xylBounding_box box() {
	xylBounding_box made;
	made.min = {1, 2, 3, 0};
	made.max = {4, 5, 6, 0};
	made.center = {7, 8, 9, 0};
	made.radius = 10;
	return made;
}

xylMatrix_frame frame() {
	xylMatrix_frame made = xylMatrix_frame::identity();
	made.origin = {1.5f, -2, 3, 1};
	return made;
}

// A value that is read from the bytes and written again gives the same bytes.
struct Form {
	const char* name;
	void (*write)(xylBuffer&);
	void (*copy)(xylBuffer& in, xylBuffer& out); // reads a value and writes it
};

using B = xylBuffer;
#define FORM(type, kind, value)                                                                    \
	Form {                                                                                         \
		#kind, [](B& b) { b.write_##kind(value); }, [](B& in, B& out) {                            \
			type seen{};                                                                           \
			in.read_##kind(&seen);                                                                 \
			out.write_##kind(seen);                                                                \
		}                                                                                          \
	}

const Form forms[] = {
	FORM(bool, bool, true),
	FORM(xylInt8, int8, -2),
	FORM(xylUInt8, uint8, 254),
	FORM(xylUInt16, uint16, 0x0102),
	FORM(int, int, -2),
	FORM(unsigned int, uint, 0x01020304),
	FORM(xylInt64, int64, -2),
	FORM(xylUInt64, uint64, 0x0102030405060708),
	FORM(size_t, size_t, 0x0102030405060708),
	FORM(float, float, 1.5f),
	FORM(double, double, -2.5),
	FORM(xylGuid_type, guid, guid),
	FORM(xylVec2, vec2, xylVec2(1.5f, -2)),
	FORM(xylVec3, vec3, vector),
	FORM(xylVec3, vec4, vector),
	FORM(xylQuaternion, quaternion, rotation),
	FORM(xylMatrix_frame, frame, frame()),
	FORM(xylTransform, transform, (xylTransform{rotation, vector})),
	{"string", [](B& b) { b.write_string("Morvantis"); },
     [](B& in, B& out) {
		 xylVarString seen;
		 in.read_string(seen);
		 out.write_string(seen);
	 }},
	{"int_vec2", [](B& b) { b.write_vec2(xylInt_vec2(-1, 2)); },
     [](B& in, B& out) {
		 xylInt_vec2 seen{};
		 in.read_vec2(static_cast<void*>(&seen));
		 out.write_vec2(seen);
	 }},
	{"quaternion_data", [](B& b) { rotation.write_data(b); },
     [](B& in, B& out) {
		 xylQuaternion seen{};
		 seen.read_data(in);
		 seen.write_data(out);
	 }},
	{"plane_data", [](B& b) { xylPlane(vector, {0, 0, 1}).write_data(b); },
     [](B& in, B& out) {
		 xylPlane seen{};
		 seen.read_data(in);
		 seen.write_data(out);
	 }},
	{"box_data", [](B& b) { box().write_data(b); },
     [](B& in, B& out) {
		 xylBounding_box seen;
		 seen.read_data(in);
		 seen.write_data(out);
	 }},
	{"box_in_package", [](B& b) { xylPackage_serializer::Primitives::write(box(), &b); },
     [](B& in, B& out) {
		 xylBounding_box seen;
		 xylPackage_serializer::Primitives::read(seen, &in);
		 xylPackage_serializer::Primitives::write(seen, &out);
	 }},
};
#undef FORM

std::string hex_of(const xylBuffer& buffer) {
	std::string hex;
	for (xylUInt64 i = 0; i < buffer.get_length(); ++i) {
		char digits[4];
		std::snprintf(digits, sizeof(digits), "%02X ", buffer.get_buffer_from_start()[i]);
		hex += digits;
	}
	if (!hex.empty()) hex.pop_back();
	return hex;
}

std::map<std::string, std::string> load_golden() {
	std::map<std::string, std::string> loaded;
	std::ifstream file(test_data("golden/buffer.txt"));
	for (std::string line; std::getline(file, line);) {
		if (!line.empty() && line.back() == '\r') line.pop_back();
		if (line.empty() || line[0] == '#') continue;
		const std::size_t blank = line.find(' ');
		loaded[line.substr(0, blank)] = line.substr(blank + 1);
	}
	return loaded;
}

TEST(Buffer_golden, EveryFormIsInTheFile) { EXPECT_EQ(load_golden().size(), std::size(forms)); }

TEST(Buffer_golden, WritersProduceTheBytes) {
	const auto golden = load_golden();
	for (const Form& form : forms) {
		SCOPED_TRACE(form.name);
		ASSERT_TRUE(golden.contains(form.name));
		xylBuffer buffer;
		form.write(buffer);
		EXPECT_EQ(hex_of(buffer), golden.at(form.name));
	}
}

TEST(Buffer_golden, ReadersTakeTheBytes) {
	const auto golden = load_golden();
	for (const Form& form : forms) {
		SCOPED_TRACE(form.name);
		ASSERT_TRUE(golden.contains(form.name));
		std::istringstream words(golden.at(form.name));
		xylBuffer in;
		for (unsigned int byte; words >> std::hex >> byte;) {
			in.write_uint8(static_cast<xylUInt8>(byte));
		}
		const xylUInt64 size = in.get_length();
		in.rewind();
		xylBuffer out;
		form.copy(in, out);
		EXPECT_EQ(in.get_length(), size);
		EXPECT_EQ(hex_of(out), golden.at(form.name));
	}
}

} // namespace
