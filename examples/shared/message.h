// What goes over the road, and how it is packed.
#pragma once

#include "snapshot.h"

#include <morvantis/net/dynamic_bit_buffer.h>

#include <string>

// A step of a power of two, so that a bound that is a multiple of it comes back as itself.
inline constexpr float position_step = 1.0f / 64, orientation_step = 1.0f / 1024;

enum class Message_kind { snapshot, goodbye, acknowledgement, count };

// What a client claims to have sent, so that the server can tell whether it saw everything.
struct Tally {
	int undamaged = 0, damaged = 0, noise = 0;
};

struct Message {
	udp_packet_id id; // the tick, and the packet's number within it
	Message_kind kind = Message_kind::snapshot;
	long long time = 0;
	Snapshot snapshot; // of a snapshot
	Tally tally;       // of a goodbye
};

// The fields of a message, for the table of bits and for the reason why a packet was dropped.
enum Field {
	field_packet_id,
	field_kind,
	field_time,
	field_agent_count,
	field_position,
	field_orientation,
	field_health,
	field_name,
	field_event,
	field_tally,
	field_check_word,
	field_count
};

// What packing and unpacking leave behind for the tables.
struct Meter {
	long long values[field_count] = {}; // that were packed
	long long bits[field_count] = {};   // that they took
	std::string fault;                  // why the last read failed
	void print() const;
};

// FNV-1a of `size` bytes, going on from `hash`.
unsigned int hash_of(const unsigned char* data, int size, unsigned int hash = 2166136261u);

// Packs `message` into an empty buffer, and ends it with a check word. Grows the buffer if needed.
void write_message(Dynamic_bit_buffer& buffer, Message& message, Meter& meter);

// Unpacks a datagram. False, with meter.fault set, at the first thing that is not as a client
// writes it; `message` is then of no use. `reference_tick` is a tick near the one expected.
bool read_message(Dynamic_bit_buffer& buffer, unsigned int reference_tick, Message& message,
                  Meter& meter);

// Bits that the largest message with so many agents takes.
int message_capacity_in_bits(int agent_count);
