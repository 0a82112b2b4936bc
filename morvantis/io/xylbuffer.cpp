#include <morvantis/io/xylbuffer.h>

#include <morvantis/core/xylreport.h>
#include <morvantis/memory/xylheap.h>
#include <morvantis/strings/xylstring_base.h>

#include <algorithm>
#include <cstddef>
#include <limits>

static constexpr char allocation_failed_text[] = "xylBuffer::allocate(%d) failed!";

static_assert(offsetof(xylBuffer, cursor) == 8 && offsetof(xylBuffer, capacity) == 16 &&
              offsetof(xylBuffer, uses_external_data) == 24 &&
              offsetof(xylBuffer, allocate_aggresively_flag) == 25 &&
              offsetof(xylBuffer, allocation_group) == 26);

// 1.2 times `size`, by way of single precision: from 2^24 bytes on the result is a rounded one.
static xylUInt64 scaled_for_growth(xylUInt64 size) {
	constexpr float growth = 1.2f;
	constexpr float first_beyond = 18446744073709551616.0f; // 2^64
	const float scaled = static_cast<float>(size) * growth;
	if (scaled >= first_beyond) return std::numeric_limits<xylUInt64>::max();
	return static_cast<xylUInt64>(scaled);
}

xylBuffer::xylBuffer(const xylBuffer& other) {
	allocate(other.capacity);
	allocate_aggresively_flag = other.allocate_aggresively_flag;
	allocation_group = other.allocation_group;
	if (data && other.data) std::memcpy(data, other.data, other.capacity);
	cursor = nullptr;
}

xylBuffer::xylBuffer(xylBuffer&& other) noexcept
	: data(other.data), cursor(other.cursor), capacity(other.capacity),
	  allocate_aggresively_flag(other.allocate_aggresively_flag),
	  allocation_group(other.allocation_group) {
	other.data = nullptr;
	other.cursor = nullptr;
	other.capacity = 0;
}

xylBuffer::~xylBuffer() {
	if (!uses_external_data) relase();
}

void xylBuffer::relase() {
	if (!data) return;
	xyl_heap_free(data);
	data = nullptr;
	capacity = 0;
}

void xylBuffer::use_values_from(const xylBuffer& other) {
	data = other.data;
	cursor = other.cursor;
	capacity = other.capacity;
	allocate_aggresively_flag = other.allocate_aggresively_flag;
	uses_external_data = true;
}

void xylBuffer::copy_data(xylBuffer& dst) const {
	dst.allocate(capacity);
	if (data && dst.data) std::memcpy(dst.data, data, capacity);
	dst.cursor = dst.data;
}

// What a request for `size` bytes asks for when the aggressive flag has its say.
xylUInt64 xylBuffer::grown_size(xylUInt64 size) const {
	constexpr xylUInt64 largest_step = 100 << 20; // 100 MiB, where the doubling ends
	if (!allocate_aggresively_flag) return size;
	return std::max(size, capacity + std::min(capacity, largest_step));
}

xylUInt8* xylBuffer::allocate(xylUInt64 size) {
	if (!data) {
		if (size != 0) {
			data = static_cast<xylUInt8*>(xyl_heap_allocate(size));
			cursor = data;
		}
	} else {
		size = grown_size(size);
		if (!(capacity > size)) {
			size = scaled_for_growth(std::max(capacity, size));
			replace_block(size);
		}
	}
	if (!data || !cursor) xyl_error(allocation_failed_text, static_cast<int>(size));
	capacity = size;
	return data;
}

// A new block with the bytes up to the cursor. The old one is freed, whoever owns it.
void xylBuffer::replace_block(xylUInt64 size) {
	auto* block = static_cast<xylUInt8*>(xyl_heap_allocate(size));
	const xylUInt64 length = used();
	if (block) std::memcpy(block, data, length);
	xyl_heap_free(data);
	data = block;
	cursor = block ? block + length : nullptr;
}

void xylBuffer::rewind_and_zero_memory() {
	if (data) std::memset(data, 0, capacity);
	cursor = data;
}

void xylBuffer::move_pointer(int delta) {
	ensure_length(static_cast<xylUInt64>(static_cast<xylInt64>(delta)));
	cursor += delta;
}

void xylBuffer::shrink(unsigned int n) {
	if (!data) return;
	const auto old_cursor = reinterpret_cast<std::uintptr_t>(cursor);
	xyl_heap_free(data);
	data = static_cast<xylUInt8*>(xyl_heap_allocate(n));
	capacity = n;
	if (n == 0) {
		cursor = nullptr;
		return;
	}
	const std::uintptr_t offset = old_cursor - reinterpret_cast<std::uintptr_t>(data);
	cursor = data + (offset < n ? offset : n - 1);
}

void xylBuffer::write_void(const void* bytes, xylUInt64 n) {
	ensure_length(n);
	if (n != 0) std::memcpy(cursor, bytes, n);
	cursor += n;
}

void xylBuffer::write_buffer(const xylBuffer& source) {
	const xylUInt64 n = source.get_length();
	ensure_length(n);
	// Looked up only now: a buffer that is appended to itself has just moved.
	if (n != 0) std::memcpy(cursor, source.data, n);
	cursor += n;
}

// Without a test for room.
void xylBuffer::put_string(const char* text, xylUInt32 length) {
	std::memcpy(cursor, &length, sizeof(length));
	cursor += sizeof(length);
	if (length != 0) std::memcpy(cursor, text, length);
	cursor += length;
}

void xylBuffer::write_string(const char* text) {
	const xylUInt64 length = std::strlen(text);
	ensure_length(length + sizeof(xylUInt32));
	put_string(text, static_cast<xylUInt32>(length));
}

void xylBuffer::write_string(const xylString_base& text) {
	const auto length = static_cast<xylUInt32>(text.length());
	ensure_length(xylUInt64{length} + sizeof(xylUInt32));
	put_string(text.char_p(), length);
}

void xylBuffer::write_string(const char* text, xylUInt64 length) {
	ensure_length(length);
	put_string(text, static_cast<xylUInt32>(length));
}

void xylBuffer::write_string_advance_cursor(const xylString_base& text, int width) {
	ensure_length(static_cast<xylUInt64>(static_cast<xylInt64>(width)));
	std::memcpy(cursor, text.char_p(), std::strlen(text.char_p()) + 1);
	cursor += width;
}

void xylBuffer::read_string(xylString_base& out) {
	xylUInt32 length;
	take(&length, sizeof(length));
	if (length == 0) return;
	out.set(token(), static_cast<int>(length));
	cursor += length;
}
