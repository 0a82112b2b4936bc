#include <morvantis/platform/system/linux/frame_cache.h>

namespace os {

void Frame_cache::store(xylUInt64 address, const Frame_image& image, const unsigned char* build_id,
                        Packed_frame frame) {
	Place* const set = places_[set_index(address)];
	// A place of this address is replaced, else the one that was written less often.
	const auto is_at = [&](const Place& place) {
		return place.address.load(std::memory_order_relaxed) == address;
	};
	const auto version_of = [](const Place& place) {
		return place.version.load(std::memory_order_relaxed);
	};
	const bool second =
		is_at(set[1]) || (!is_at(set[0]) && version_of(set[1]) < version_of(set[0]));
	Place& place = set[second];

	xylUInt64 version = version_of(place);
	if ((version & 1) ||
	    !place.version.compare_exchange_strong(version, version + 1, std::memory_order_acquire)) {
		return; // another thread writes here, or this one does below a signal handler
	}
	xylUInt64 id;
	std::memcpy(&id, build_id, sizeof(id));
	// Released one by one: whoever sees a new word sees the odd version too.
	place.address.store(address, std::memory_order_release);
	place.frame.store(frame, std::memory_order_release);
	place.base.store(image.base, std::memory_order_release);
	place.table.store(image.table, std::memory_order_release);
	place.build_id.store(id, std::memory_order_release);
	place.build_id_place.store(build_id, std::memory_order_release);
	place.version.store(version + 2, std::memory_order_release);
}

} // namespace os
