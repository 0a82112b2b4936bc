#include "message.h"

#include "table.h"

#include <morvantis/net/read_bit_buffer.h>
#include <morvantis/net/write_bit_buffer.h>

#include <cmath>
#include <cstring>

// How each field is packed. Nothing of this is sent: both ends must hold the same records.
namespace {

constexpr Integer_compression_info kind_info{0, static_cast<int>(Message_kind::count) - 1, 2};
constexpr Integer_compression_info agent_count_info{0, largest_agent_count, 10};
constexpr Integer_compression_info health_info{0, 100, 7};
constexpr Integer_compression_info tally_info{0, 1 << 24, 25};
constexpr Integer_compression_info largest_component_info{0, 3, 2};
constexpr Integer_compression_info check_word_info{-2147483647 - 1, 2147483647, 32};
constexpr Float_compression_info across_info{-world_half_width, world_half_width, position_step,
                                             17};
constexpr Float_compression_info height_info{0, world_height, position_step, 13};
// The three smaller components of a unit quaternion are at most sqrt(1/2) = 0.707.
constexpr Float_compression_info component_info{-0.7109375f, 0.7109375f, orientation_step, 11};

struct Field_info {
	const char* name;
	int unpacked_bits; // as it stands in memory
};
constexpr Field_info field_infos[] = {
	{"packet id", 64},   {"kind", 32},       {"time", 64},
	{"agent count", 32}, {"position", 96},   {"orientation", 128},
	{"health", 32},      {"name", 128},      {"event", 8 * event_capacity + 32},
	{"tally", 96},       {"check word", 32},
};
static_assert(sizeof(field_infos) / sizeof(field_infos[0]) == field_count);

// A unit quaternion without its largest component, which the others and its sign give back.
struct Packed_orientation {
	int largest;
	float others[3];
};

Packed_orientation packed(const float (&q)[4]) {
	Packed_orientation result{};
	for (int i = 1; i < 4; ++i) {
		if (std::fabs(q[i]) > std::fabs(q[result.largest])) result.largest = i;
	}
	const float sign = q[result.largest] < 0 ? -1.0f : 1.0f; // the opposite one turns alike
	for (int i = 0, to = 0; i < 4; ++i) {
		if (i != result.largest) result.others[to++] = q[i] * sign;
	}
	return result;
}

// False when no unit quaternion has these components.
bool unpack(const Packed_orientation& from, float (&q)[4]) {
	float rest = 1;
	for (int i = 0, to = 0; to < 4; ++to) {
		if (to == from.largest) continue;
		q[to] = from.others[i++];
		rest -= q[to] * q[to];
	}
	if (rest < 0) return false;
	q[from.largest] = std::sqrt(rest);
	return true;
}

// Where the two directions differ in more than the buffer's type.
bool serial_id(Write_bit_buffer& buffer, udp_packet_id& id, unsigned int) {
	return buffer.write_packet_id(id);
}
bool serial_id(Read_bit_buffer& buffer, udp_packet_id& id, unsigned int reference_tick) {
	return buffer.read_packet_id(reference_tick, id);
}
bool serial_bytes(Write_bit_buffer& buffer, unsigned char* data, int, int& size) {
	return buffer.serial_op_byte_array(data, size);
}
bool serial_bytes(Read_bit_buffer& buffer, unsigned char* data, int capacity, int& size) {
	return buffer.serial_op_byte_array(data, capacity, size);
}

// One pass over a message in either direction. The operations of the two buffer types have the
// same names, so the fields stand here once, and can't get out of step.
template <typename Buffer> class Pass {
public:
	Pass(Buffer& buffer, Meter& meter) : buffer_(buffer), meter_(meter) {}

	bool fields(Message& message, unsigned int reference_tick) {
		int kind = static_cast<int>(message.kind);
		const bool is_well =
			field(field_packet_id,
		          [&] { return serial_id(buffer_, message.id, reference_tick); }) &&
			field(field_kind, [&] { return buffer_.serial_op(kind, kind_info); }) &&
			field(field_time, [&] { return buffer_.serial_op_time_coarse(message.time); });
		if (!is_well) return false;
		message.kind = static_cast<Message_kind>(kind);
		if (message.kind == Message_kind::snapshot) return snapshot(message.snapshot);
		return message.kind == Message_kind::acknowledgement || tally(message.tally);
	}

	// A hash of all bytes before it: a bit that flips within the legal range of its field is seen
	// by nothing else.
	bool check_word() {
		buffer_.skip_to_next_byte();
		const int size = buffer_.get_cursor_in_bits() / 8;
		const int right = static_cast<int>(hash_of(buffer_.get_buffer(), size));
		int word = right;
		return field(field_check_word,
		             [&] { return buffer_.serial_op(word, check_word_info) && word == right; });
	}

private:
	// Runs the operations of one field. They return false on the first thing that is wrong, and
	// nothing behind it is looked at: a packet is hostile until it has been read to its end.
	template <typename Operations> bool field(Field which, Operations operations) {
		const int start = buffer_.get_cursor_in_bits();
		if (!operations()) {
			meter_.fault = std::string("bad ") + field_infos[which].name;
			return false;
		}
		++meter_.values[which];
		meter_.bits[which] += buffer_.get_cursor_in_bits() - start;
		return true;
	}

	bool snapshot(Snapshot& snapshot) {
		int count = static_cast<int>(snapshot.agents.size());
		if (!field(field_agent_count, [&] { return buffer_.serial_op(count, agent_count_info); }))
			return false;
		// A claim of a thousand agents costs a hostile packet nothing, and us little.
		snapshot.agents.resize(static_cast<size_t>(count));
		for (Sent_agent& one : snapshot.agents) {
			if (!agent(one)) return false;
		}
		return field(field_event, [&] {
			return serial_bytes(buffer_, snapshot.event, event_capacity, snapshot.event_size);
		});
	}

	bool agent(Sent_agent& agent) {
		return field(field_position, [&] { return position(agent.position); }) &&
		       field(field_orientation, [&] { return orientation(agent.orientation); }) &&
		       field(field_health, [&] { return buffer_.serial_op(agent.health, health_info); }) &&
		       field(field_name, [&] { return name(agent.name); });
	}

	bool position(float (&position)[3]) {
		return buffer_.serial_op_float(position[0], across_info) &&
		       buffer_.serial_op_float(position[1], across_info) &&
		       buffer_.serial_op_float(position[2], height_info);
	}

	// Packing leaves the quaternion as it was, or makes it its opposite.
	bool orientation(float (&q)[4]) {
		Packed_orientation rest = packed(q);
		if (!buffer_.serial_op(rest.largest, largest_component_info)) return false;
		for (float& component : rest.others) {
			if (!buffer_.serial_op_float(component, component_info)) return false;
		}
		return unpack(rest, q);
	}

	bool name(char (&text)[16]) {
		int length = static_cast<int>(std::strlen(text));
		if (!serial_bytes(buffer_, reinterpret_cast<unsigned char*>(text), largest_name_size,
		                  length))
			return false;
		text[length] = '\0';
		return true;
	}

	bool tally(Tally& tally) {
		return field(field_tally, [&] {
			return buffer_.serial_op(tally.undamaged, tally_info) &&
			       buffer_.serial_op(tally.damaged, tally_info) &&
			       buffer_.serial_op(tally.noise, tally_info);
		});
	}

	Buffer& buffer_;
	Meter& meter_;
};

} // namespace

unsigned int hash_of(const unsigned char* data, int size, unsigned int hash) {
	for (int i = 0; i < size; ++i) hash = (hash ^ data[i]) * 16777619u;
	return hash;
}

int message_capacity_in_bits(int agent_count) {
	const int header = 23 + 2 + 64 + 10, tail = 11 + 8 * event_capacity + 7 + 32;
	const int agent = 2 * 17 + 13 + 2 + 3 * 11 + 7 + 11 + 8 * largest_name_size;
	return header + agent_count * agent + tail;
}

void write_message(Dynamic_bit_buffer& buffer, Message& message, Meter& meter) {
	// Writes are never checked against the capacity, so it is guaranteed beforehand. Up to 1,408
	// bytes this does nothing.
	buffer.guarantee_capacity_in_bits(
		message_capacity_in_bits(static_cast<int>(message.snapshot.agents.size())));
	Pass<Write_bit_buffer> pass(buffer.as_write_bit_buffer(), meter);
	pass.fields(message, 0);
	pass.check_word();
}

bool read_message(Dynamic_bit_buffer& buffer, unsigned int reference_tick, Message& message,
                  Meter& meter) {
	Read_bit_buffer& view = buffer.as_read_bit_buffer();
	Pass<Read_bit_buffer> pass(view, meter);
	if (!pass.fields(message, reference_tick) || !pass.check_word()) return false;
	if (view.get_unread_bits() == 0) return true;
	meter.fault = "bytes left over";
	return false;
}

void Meter::print() const {
	Table table({"field", "in memory", "packed", "of it"});
	double memory = 0, road = 0;
	const auto add = [&](const std::string& name, double unpacked, double taken) {
		table.add({name, in_digits(unpacked, 0) + " bits", in_digits(taken, 1) + " bits",
		           in_digits(100 * taken / unpacked, 0) + " %"});
	};
	for (int i = 0; i < field_count; ++i) {
		if (values[i] == 0) continue;
		const double count = static_cast<double>(values[i]), taken = static_cast<double>(bits[i]);
		memory += count * field_infos[i].unpacked_bits;
		road += taken;
		add(field_infos[i].name, field_infos[i].unpacked_bits, taken / count);
	}
	const double packets = static_cast<double>(values[field_check_word]);
	add("a whole packet", memory / packets, road / packets);
	table.print();
}
