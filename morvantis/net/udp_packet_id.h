// The number of a datagram: the tick it belongs to and its place within that tick.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API

// A plain record. On the wire it takes 17 or 23 bits, see Write_bit_buffer::write_packet_id().
struct MORVANTIS_API udp_packet_id {
	int tick_no;   // from 1; 0 for no tick, -1 in PACKET_ID_UNRELIABLE
	int packet_no; // within the tick, from 0

	constexpr udp_packet_id() : tick_no(0), packet_no(0) {}
	constexpr udp_packet_id(int tick, int packet) : tick_no(tick), packet_no(packet) {}

	static const udp_packet_id PACKET_ID_UNRELIABLE;   // {-1, -1}
	static const udp_packet_id PACKET_NO_NOT_ASSIGNED; // {0, 0}
	static const udp_packet_id PACKET_ID_ZERO;         // {0, 0}
};

static_assert(sizeof(udp_packet_id) == 8);
