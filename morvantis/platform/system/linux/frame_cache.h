// Remembers, for each place that was walked through, how its frame is left.
#pragma once

#include <morvantis/core/xyltypes.h>

#include <atomic>
#include <cstring>

namespace os {

// The common rules in one word: the caller's stack pointer is rsp or rbp plus a multiple of 8, its
// address lies right below, and each register that a call preserves is the same or in memory within
// 31 words below.
//
//   bits 0-2   which of the shapes below
//   bits 3-22  the caller's stack pointer, in bytes on top of rsp or rbp (a multiple of 8, in
//   place) bit 23     on top of rbp bits 24-53 five bits each for rbp, rbx, r12, r13, r14, r15:
//   words below the caller's stack
//              pointer, 0 for "the same"
using Packed_frame = xylUInt64;

// What the low bits say.
constexpr Packed_frame frame_shape_bits = 7;
constexpr Packed_frame frame_unknown = 0;
constexpr Packed_frame frame_common = 1;   // the other bits hold
constexpr Packed_frame frame_leaf = 2;     // no unwind entry covers the place
constexpr Packed_frame frame_last = 3;     // it has no caller
constexpr Packed_frame frame_uncommon = 4; // doesn't fit into the bits: the rules have to be read

constexpr xylUInt64 packed_offset_bits = 0x7FFFF8;
constexpr xylUInt64 packed_on_rbp = 1ULL << 23;
constexpr unsigned int packed_rbp_shift = 24;
constexpr unsigned int packed_slot_width = 5;
constexpr xylUInt64 packed_slot_bits = 31;

// An image as the loader tells it of an address now.
struct Frame_image {
	xylUInt64 base;
	xylUInt64 size;
	xylUInt64 table; // address of its .eh_frame_hdr
};

// Sets of two places each. A place belongs to the image that lay there when it was stored: the
// base, the table's address and eight bytes of the image's build id, read again at each hit, have
// to be what they were. Without the build id a library that is loaded where another one was closed
// would be walked by the other's rules.
//
// One for all threads and for signal handlers: every word is an atomic, each place has a version
// that is odd while it is written, and nobody waits. Who finds a place being written takes it for
// absent. (Tables per thread would have to be allocated on the first walk and freed when the thread
// ends, neither of which a signal handler may do.)
class Frame_cache {
public:
	// frame_unknown where nothing is stored. `image` must hold `address`, and be mapped.
	Packed_frame find(xylUInt64 address, const Frame_image& image) const {
		const Place* const set = set_of(address);
		for (int i = 0; i < 2; ++i) {
			if (set[i].address.load(std::memory_order_relaxed) != address) continue;
			if (const Packed_frame frame = set[i].read(address, image)) return frame;
		}
		return frame_unknown;
	}

	// `build_id`  where the eight bytes lie, in the image's first page
	void store(xylUInt64 address, const Frame_image& image, const unsigned char* build_id,
	           Packed_frame frame);

private:
	// Fields are loaded and stored in an order that the version can vouch for: see read().
	struct alignas(64) Place {
		std::atomic<xylUInt64> version; // odd while the others change
		std::atomic<xylUInt64> address;
		std::atomic<xylUInt64> frame;
		std::atomic<xylUInt64> base;
		std::atomic<xylUInt64> table;
		std::atomic<xylUInt64> build_id;
		std::atomic<xylUInt64> build_id_offset; // from base

		Packed_frame read(xylUInt64 wanted, const Frame_image& image) const;
	};

	static constexpr unsigned int set_bits = 10;

	static unsigned int set_index(xylUInt64 address) {
		// Fibonacci hashing: the high bits of the product depend on all of the address.
		return static_cast<unsigned int>((address * 0x9E3779B97F4A7C15ULL) >> (64 - set_bits));
	}
	const Place* set_of(xylUInt64 address) const { return places_[set_index(address)]; }

	Place places_[1 << set_bits][2];
};

inline Packed_frame Frame_cache::Place::read(xylUInt64 wanted, const Frame_image& image) const {
	// Acquiring each word keeps the second look at the version behind all of them.
	const xylUInt64 before = version.load(std::memory_order_acquire);
	const xylUInt64 found = address.load(std::memory_order_acquire);
	const Packed_frame packed = frame.load(std::memory_order_acquire);
	const xylUInt64 found_base = base.load(std::memory_order_acquire);
	const xylUInt64 found_table = table.load(std::memory_order_acquire);
	const xylUInt64 found_id = build_id.load(std::memory_order_acquire);
	const xylUInt64 offset = build_id_offset.load(std::memory_order_acquire);
	if ((before & 1) || version.load(std::memory_order_relaxed) != before) return frame_unknown;
	if (found != wanted || found_base != image.base || found_table != image.table) {
		return frame_unknown;
	}
	xylUInt64 id;
	std::memcpy(&id, reinterpret_cast<const void*>(image.base + offset), sizeof(id));
	return id == found_id ? packed : frame_unknown;
}

} // namespace os
