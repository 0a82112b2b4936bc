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
// - bits 0-2: which of the shapes below
// - bits 3-22: the caller's stack pointer less rsp or rbp; a multiple of 8, in place
// - bits 23-52: five bits each for rbp, rbx, r12, r13, r14, r15: how many words below the caller's
//   stack pointer it was saved, 0 where it wasn't
using Packed_frame = xylUInt64;

// What the low bits say.
constexpr Packed_frame frame_shape_bits = 7;
constexpr Packed_frame frame_unknown = 0;
constexpr Packed_frame frame_on_rsp = 1;   // the other bits hold, on top of rsp
constexpr Packed_frame frame_on_rbp = 2;   // the same on top of rbp
constexpr Packed_frame frame_leaf = 3;     // no unwind entry covers the place
constexpr Packed_frame frame_last = 4;     // it has no caller
constexpr Packed_frame frame_uncommon = 5; // doesn't fit into the bits: the rules have to be read

constexpr xylUInt64 packed_offset_bits = 0x7FFFF8;
constexpr unsigned int packed_rbp_shift = 23;
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
// would be walked by the other's rules. (The image's first page, where the build id lies, is there
// as long as its base is.)
//
// One for all threads and for signal handlers: every word is an atomic, each place has a version
// that is odd while it is written, and nobody waits. Who finds a place being written takes it for
// absent. (Tables per thread would have to be allocated on the first walk and freed when the thread
// ends, neither of which a signal handler may do.)
class Frame_cache {
public:
	// frame_unknown where nothing is stored. `image` must hold `address`, and be mapped.
	Packed_frame find(xylUInt64 address, const Frame_image& image) const {
		const Place* const set = places_[set_index(address)];
		const Packed_frame frame = set[0].find(address, image);
		return frame != frame_unknown ? frame : set[1].find(address, image);
	}

	// `build_id`  where the eight bytes lie, in the image's first page
	void store(xylUInt64 address, const Frame_image& image, const unsigned char* build_id,
	           Packed_frame frame);

private:
	struct alignas(64) Place {
		std::atomic<xylUInt64> version; // odd while the others change
		std::atomic<xylUInt64> address;
		std::atomic<xylUInt64> frame;
		std::atomic<xylUInt64> base;
		std::atomic<xylUInt64> table;
		std::atomic<xylUInt64> build_id;
		std::atomic<const unsigned char*> build_id_place; // where to read it again

		Packed_frame find(xylUInt64 wanted, const Frame_image& image) const;
	};

	static constexpr unsigned int set_bits = 10;

	static xylUInt64 set_index(xylUInt64 address) {
		// Each step waits for the one before, so every instruction here costs its full time.
		return (address ^ address >> set_bits) % (1 << set_bits);
	}

	Place places_[1 << set_bits][2];
};

// A walk spends most of its time here.
inline Packed_frame Frame_cache::Place::find(xylUInt64 wanted, const Frame_image& image) const {
	// Acquiring each word keeps the second look at the version behind all of them.
	const xylUInt64 before = version.load(std::memory_order_acquire);
	if (address.load(std::memory_order_acquire) != wanted) return frame_unknown;
	const Packed_frame packed = frame.load(std::memory_order_acquire);
	const xylUInt64 other_base = base.load(std::memory_order_acquire) ^ image.base;
	const xylUInt64 other_table = table.load(std::memory_order_acquire) ^ image.table;
	const xylUInt64 stored_id = build_id.load(std::memory_order_acquire);
	const unsigned char* const id_place = build_id_place.load(std::memory_order_acquire);
	const xylUInt64 changed = version.load(std::memory_order_relaxed) ^ before;
	// One question for all, since it is nearly never answered by yes.
	if ((other_base | other_table | changed | (before & 1)) != 0) return frame_unknown;
	xylUInt64 id;
	std::memcpy(&id, id_place, sizeof(id));
	return id == stored_id ? packed : frame_unknown;
}

} // namespace os
