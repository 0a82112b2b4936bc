// The math values in a byte buffer: records, stored forms and numbers from tokens.

#include <morvantis/io/xylbuffer.h>
#include <morvantis/math/xylbounding_box.h>
#include <morvantis/math/xylint_vec2.h>
#include <morvantis/math/xylmatrix_frame.h>
#include <morvantis/math/xylplane.h>
#include <morvantis/math/xylvec2.h>

static constexpr float stored_fourth = 1.0f; // stands for the fourth float of a vector

void xylBuffer::write_vec2(const xylVec2& value) { put(value); }
void xylBuffer::write_vec2(const xylInt_vec2& value) { put(value); }
void xylBuffer::read_vec2(xylVec2* out) { take(out, sizeof(*out)); }
void xylBuffer::read_vec2(void* out) { take(out, sizeof(xylVec2)); }

void xylBuffer::write_vec3(const xylVec3& value) {
	put(xylVec3(value.x, value.y, value.z, stored_fourth));
}
void xylBuffer::read_vec3(xylVec3* out) { take(out, sizeof(*out)); }
void xylBuffer::read_vec3(void* out) { take(out, sizeof(xylVec3)); }
void xylBuffer::write_vec4(const xylVec3& value) { put(value); }
void xylBuffer::read_vec4(xylVec3* out) { take(out, sizeof(*out)); }

void xylBuffer::write_quaternion(const xylQuaternion& value) { put(value); }
void xylBuffer::read_quaternion(xylQuaternion* out) { take(out, sizeof(*out)); }

void xylBuffer::write_frame(const xylMatrix_frame& value) { put(value); }
void xylBuffer::read_frame(void* out) { take(out, sizeof(xylMatrix_frame)); }

void xylBuffer::write_transform(const xylTransform& value) {
	xylTransform stored = value;
	stored.origin.w = stored_fourth;
	put(stored);
}
void xylBuffer::read_transform(xylTransform* out) { take(out, sizeof(*out)); }

void xylPlane::write_data(xylBuffer& buffer) const {
	buffer.write_vec3(point);
	buffer.write_vec3(normal);
}

void xylPlane::read_data(xylBuffer& buffer) {
	buffer.read_vec3(&point);
	buffer.read_vec3(&normal);
}

void xylBounding_box::write_data(xylBuffer& buffer) const {
	buffer.write_vec3(min);
	buffer.write_vec3(max);
	buffer.write_vec3(center);
	buffer.write_float(radius);
}

void xylBounding_box::read_data(xylBuffer& buffer) {
	buffer.read_vec3(&min);
	buffer.read_vec3(&max);
	buffer.read_vec3(&center);
	buffer.read_float(&radius);
}

void xylQuaternion::write_data(xylBuffer& buffer) const {
	for (const float component : {x, y, z, w}) buffer.write_float(component);
}

void xylQuaternion::read_data(xylBuffer& buffer) {
	for (float* component : {&x, &y, &z, &w}) buffer.read_float(component);
}

void xylQuaternion::read(xylBuffer& buffer) {
	for (float* component : {&x, &y, &z, &w}) *component = buffer.next_float();
}

void xylVec3::read(xylBuffer& buffer) {
	for (float* component : {&x, &y, &z}) *component = buffer.next_float();
}

void xylMatrix_frame::read(xylBuffer& buffer) {
	for (xylVec3* row : {&s, &f, &u, &origin}) row->read(buffer);
}
