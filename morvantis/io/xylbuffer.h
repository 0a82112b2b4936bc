// A growing block of bytes with a cursor: binary records, and the tokens of text resources.
#pragma once

#include <morvantis/core/xylguid.h>
#include <morvantis/memory/xylmemory_allocator_base.h> // Allocation_group

#include <cstdint>
#include <cstring> // memcpy, for the reads and writes

class xylFile;
class xylNative_file;
class xylNative_file_async;
class xylString_base;
class xylVarString;
struct xylInt_vec2;
struct xylMatrix_frame;
struct xylQuaternion;
struct xylTransform;
struct xylVec2;
struct xylVec3;

// Writers store at the cursor and let the block grow; readers take what lies at the cursor and test
// nothing, so the caller answers for the layout. Values stand in the machine's own little-endian
// form, back to back, without padding, tags or a version.
//
// The used length is cursor - data; the room is capacity less the used length, as unsigned numbers.
// `capacity` is what was last asked for, which may be less than the block has: see allocate(). A
// buffer whose capacity was brought below its used length counts its room around zero; it must be
// rewound, or grown by ensure_capacity(), before anything is written to it.
//
// Failure: only allocate() reports. Reading behind what was written, and any use of a null or
// dangling cursor, is the caller's error and is not found.
// Threads: a buffer belongs to one thread at a time.
// Allocation: blocks come from the library's heap, aligned to 16 bytes, contents unset.
class MORVANTIS_API xylBuffer {
public:
	// Empty: no block, no capacity.
	xylBuffer() = default;
	// Copies capacity bytes from the start of `other`, its aggressive flag and its group.
	//
	// kept: the copy's cursor is null, so rewind() must come before anything that uses the cursor;
	// and the copy of an empty buffer reports the failure of allocate(0).
	xylBuffer(const xylBuffer& other);
	// Takes over the block, the cursor, the aggressive flag and the group; `other` is left empty.
	// kept: the new buffer owns the block, even one that `other` had from use_values_from().
	xylBuffer(xylBuffer&& other) noexcept;
	// Frees the block, unless it belongs to someone else.
	~xylBuffer();

	// Frees the block; capacity becomes 0. Without a block nothing happens.
	//
	// kept: the cursor is left where it was, outside any block: allocate() or a direct assignment
	// must come before anything else. kept: a block of use_values_from() is freed, too.
	void relase();
	// Looks at the block of `other`, at its cursor and with its capacity and aggressive flag,
	// without owning it: `other` must outlive the use. kept: a block of its own is not freed but
	// lost.
	void use_values_from(const xylBuffer& other);
	// Makes `dst` a copy of the capacity bytes from the start, rewound.
	void copy_data(xylBuffer& dst) const;
	// With the flag each growth asks for twice the capacity at least, in steps of 100 MiB at most.
	void set_allocate_aggresively(bool aggressively) { allocate_aggresively_flag = aggressively; }
	// A label for reports; allocation doesn't look at it.
	void set_allocation_group(xylMemory_allocator_base::Allocation_group group) {
		allocation_group = group;
	}
	xylMemory_allocator_base::Allocation_group get_allocation_group() const {
		return allocation_group;
	}

	// --- Size and cursor

	// The growth step of all writers. The first block is of exactly `size` bytes. A block whose
	// capacity is not above `size` is replaced by one of 1.2 times the larger of the two, in single
	// precision and truncated, with the bytes up to the cursor; what lies behind it is lost.
	//
	// Result  data; null when memory is exhausted, which is reported, and then the buffer is empty
	//         but for its capacity, the size that could not be had.
	// kept: where the capacity is above `size`, the block stays and `size` becomes the capacity.
	// kept: size 0 on an empty buffer reports that allocation failed.
	// kept: a block of use_values_from() is freed like any other when it is replaced.
	xylUInt8* allocate(xylUInt64 size);
	xylUInt8* expand2x() { return allocate(capacity * 2); }
	xylUInt8* expand4x() { return allocate(capacity * 4); }
	// allocate(n) where the capacity is below it.
	void ensure_capacity(xylUInt64 n) {
		if (capacity < n) allocate(n);
	}
	void ensure_capacity(const xylBuffer& other) { ensure_capacity(other.capacity); }
	void ensure_capacity(const xylBuffer* other) { ensure_capacity(other->capacity); }
	// The test of every writer: unless the room is above `n`, allocate(used length + n).
	// kept: a room of exactly `n` makes the block grow.
	MORVANTIS_FORCE_INLINE void ensure_length(xylUInt64 n) {
		if (!(get_remaining_length() > n)) [[unlikely]]
			allocate(used() + n);
	}
	// Room for what `other` holds. kept: grows from the capacity and not from the used length.
	void ensure_length(const xylBuffer& other) {
		const xylUInt64 n = other.get_length();
		if (!(get_remaining_length() > n)) allocate(capacity + n);
	}
	xylUInt64 get_length() const { return data ? used() : 0; } // used length; 0 without a block
	xylUInt64 get_remaining_length() const { return capacity - used(); }
	xylUInt64 get_buffer_size() const { return capacity; }
	xylUInt8* get_buffer_from_start() { return data; }
	const xylUInt8* get_buffer_from_start() const { return data; }
	void rewind() { cursor = data; }
	void rewind_and_zero_memory(); // zeroes capacity bytes
	// Moves the cursor; forward like a write of `delta` bytes, which are left unset.
	//
	// kept: backward, which must stay within the block, goes through allocate(), too: the new
	// position becomes the capacity, so the next write replaces the block and loses what lies
	// behind the cursor. With the aggressive flag the block grows at once instead.
	void move_pointer(int delta);
	// Replaces the block by one of exactly `n` bytes, contents unset.
	//
	// kept: the cursor stays at its old address where that lies within the new block, else it moves
	// to the new block's last byte. With `n` 0 the buffer is empty; without a block nothing
	// happens.
	void shrink(unsigned int n);

	// The bytes at the cursor.
	xylUInt8* get_ptr() { return cursor; }
	const xylUInt8* get_ptr() const { return cursor; }
	operator char*() { return reinterpret_cast<char*>(cursor); }
	operator const char*() const { return reinterpret_cast<const char*>(cursor); }
	operator unsigned char*() { return cursor; }
	operator const unsigned char*() const { return cursor; }
	operator void*() { return cursor; }
	operator const void*() const { return cursor; }
	// The 32-bit value at the cursor, which stays.
	operator int() const { return peek<int>(); }
	operator unsigned int() const { return peek<unsigned int>(); }
	// Compare the zero-terminated text at the cursor, which stays.
	bool operator==(const char* text) const { return std::strcmp(token(), text) == 0; }
	bool operator!=(const char* text) const { return !(*this == text); }

	// --- Binary values: their own bytes, and the cursor behind them

	void write_bool(bool value) { put(value); }
	void write_int8(xylInt8 value) { put(value); }
	void write_uint8(xylUInt8 value) { put(value); }
	void write_uint16(xylUInt16 value) { put(value); }
	void write_int(int value) { put(value); }
	void write_uint(unsigned int value) { put(value); }
	void write_int64(xylInt64 value) { put(value); }
	void write_uint64(xylUInt64 value) { put(value); }
	void write_size_t(size_t value) { put(value); }
	void write_float(float value) { put(value); }
	void write_double(double value) { put(value); }
	void write_guid(const xylGuid_type& value) { put(value); }
	void write_void(const void* bytes, xylUInt64 n); // `bytes` must not lie in this buffer
	void write_buffer(const xylBuffer& source);      // from its start to its cursor; may be itself

	// The target need not be aligned.
	void read_bool(void* out) { take(out, 1); }
	void read_int8(void* out) { take(out, 1); }
	void read_uint8(void* out) { take(out, 1); }
	void read_uint16(void* out) { take(out, 2); }
	void read_int(int* out) { take(out, 4); }
	void read_uint(unsigned int* out) { take(out, 4); }
	void read_int64(xylInt64* out) { take(out, 8); }
	void read_uint64(xylUInt64* out) { take(out, 8); }
	void read_size_t(size_t* out) { take(out, 8); }
	void read_float(float* out) { take(out, 4); }
	void read_double(double* out) { take(out, 8); }
	void read_guid(xylGuid_type* out) { take(out, 16); }
	void read(void* out, int n) { take(out, static_cast<xylUInt64>(static_cast<xylInt64>(n))); }

	// --- Strings: a u32 length and the characters, without a terminator

	void write_string(const char* text); // not null
	void write_string(const xylString_base& text);
	// kept: asks for room for `length` and not for `length` + 4, so a block with less than 4 bytes
	// to spare is overrun by that much.
	void write_string(const char* text, xylUInt64 length);
	// A field of `width` bytes: the string with its terminator, and the cursor behind the field.
	// What lies in the field behind the terminator is left as it was.
	// kept: nothing cuts a string longer than `width` - 1: it runs past the field.
	void write_string_advance_cursor(const xylString_base& text, int width);
	// kept: length 0 leaves `out` as it was and doesn't clear it.
	void read_string(xylString_base& out);

	// --- Files. The files must be open; nothing is reported.

	// Reads `n` bytes to the cursor; 0 is true at once. False, with the cursor where it was, unless
	// all have arrived.
	bool read_handle(xylNative_file& file, unsigned int n);
	// The same, with the cursor left at the start of what was read.
	bool read_handle_do_not_advance(xylNative_file& file, unsigned int n);
	// Starts an overlapped read of `n` bytes to the cursor, which stays; the buffer must not change
	// until the file says that it has ended. kept: true, even when the read could not be started.
	bool read_handle_do_not_advance_async(xylNative_file_async& file, unsigned int n);
	// Writes the `n` bytes that lie at the cursor, and advances. False, with the cursor where it
	// was, unless all were written. kept: tests for room as if the buffer were written to, and a
	// block that grows loses the very bytes; the room must be above `n`.
	bool write_handle(xylNative_file& file, unsigned int n);
	// Writes the first `n` bytes of the block; the cursor stays.
	bool write_handle_from_beginning(xylNative_file& file, unsigned int n);
	// Makes room for the whole file and reads from where the file stands to the cursor, which
	// stays. What has no size, such as a pipe, counts as empty.
	void read_file(xylFile* file);
	// Writes the bytes from the start to the cursor.
	void write_file(xylFile* file);

	// --- Math values. Defined with the math folder, which knows their types.

	void write_vec2(const xylVec2& value);     // 8 bytes
	void write_vec2(const xylInt_vec2& value); // 8 bytes
	void read_vec2(xylVec2* out);
	void read_vec2(void* out);
	// 16 bytes: x, y, z and 1. kept: so a vector that was read has 1 as its fourth float.
	void write_vec3(const xylVec3& value);
	void read_vec3(xylVec3* out);
	void read_vec3(void* out);
	void write_vec4(const xylVec3& value); // 16 bytes, the fourth float as it is
	void read_vec4(xylVec3* out);
	// 16 bytes in memory order: w, x, y, z. kept: xylQuaternion::write_data() has w last.
	void write_quaternion(const xylQuaternion& value);
	void read_quaternion(xylQuaternion* out);
	void write_frame(const xylMatrix_frame& value); // 64 bytes, all sixteen floats as they are
	void read_frame(void* out);
	// 32 bytes: the rotation in memory order, the origin's x, y, z and 1.
	void write_transform(const xylTransform& value);
	void read_transform(xylTransform* out);

	// --- Tokens of a prepared text resource
	//
	// The buffer holds tokens between runs of zero bytes. Each operation first leaves the token
	// under the cursor and goes to the start of the next one, where the cursor stays. A byte of 1
	// to 31 ends a token and is not skipped.
	//
	// kept: so the first call skips a token that stands at the very start of the text; that one is
	// looked at with == or get_ptr(). A text that begins with white space gives its first token
	// first. Nothing marks the end: the caller must know how many tokens there are.

	// Loads `size` bytes of a text resource to the start of the block and prepares it for the walk:
	// every byte outside 33 to 127 becomes 0, every comma a dot, and a 0 stands behind the text.
	// The cursor is at the start.
	//
	// `size`  of the file; one of its last 30 bytes must be a separator
	// `name`  of the file, for the messages
	// Result  false, with no message, when fewer bytes arrive; and false, with a warning and a
	//         buffer that is prepared nevertheless, when there was a comma or else a byte that is
	//         not printable ASCII, tab, line feed, carriage return, blank or 0, of which the last
	//         one is named.
	bool trf_read_and_prepare(xylNative_file& file, unsigned int size, const xylVarString& name);

	char* next_string();
	// As atoi(), atof() and strtoul() of 32 bits read them, in the "C" locale: what follows the
	// number is ignored, and without one the result is 0.
	int next_int();
	unsigned int next_uint();
	float next_float();
	double next_double();
	// Moves the cursor to the end of the token under it, which is the result.
	// kept: any count, 0 and negative ones too, skips one token at most.
	char* skip_string(int count);

	// --- Data, in an order that hosts rely on

	xylUInt8* data = nullptr;        // start of the block; null without one
	xylUInt8* cursor = nullptr;      // where the next value goes or comes from
	xylUInt64 capacity = 0;          // bytes of the block as recorded
	bool uses_external_data = false; // the block is someone else's: the destructor leaves it
	bool allocate_aggresively_flag = false;
	xylMemory_allocator_base::Allocation_group allocation_group =
		xylMemory_allocator_base::default_group;

private:
	xylUInt64 used() const {
		return reinterpret_cast<std::uintptr_t>(cursor) - reinterpret_cast<std::uintptr_t>(data);
	}
	const char* token() const { return reinterpret_cast<const char*>(cursor); }
	template <typename Value> Value peek() const {
		Value value;
		std::memcpy(&value, cursor, sizeof(value));
		return value;
	}
	template <typename Value> MORVANTIS_FORCE_INLINE void put(const Value& value) {
		ensure_length(sizeof(value));
		std::memcpy(cursor, &value, sizeof(value));
		cursor += sizeof(value);
	}
	MORVANTIS_FORCE_INLINE void take(void* out, xylUInt64 n) {
		std::memcpy(out, cursor, n);
		cursor += n;
	}
	xylUInt64 grown_size(xylUInt64 size) const;
	void replace_block(xylUInt64 size);
	void put_string(const char* text, xylUInt32 length);
};

static_assert(sizeof(xylBuffer) == 32);
