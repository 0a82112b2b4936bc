#include "client.h"

#include "table.h"

#include <morvantis/core/xylreport.h>
#include <morvantis/net/bit_buffer_manager.h>

#include <cstdio>
#include <thread>

namespace {

// The library moves datagrams and no more: that what is lost is sent again is the host's business.
constexpr std::chrono::milliseconds patience_for_an_answer(100);
constexpr int attempts = 200;

} // namespace

Client::Client(const Options& options, Sent_world& world)
	: options_(options), world_(world), server_(loopback_address(options.port)) {
	vandal_.set_seed(~options.seed);
}

// A full queue shows as 0 bytes sent: then the packet is offered again.
bool Client::send(Dynamic_bit_buffer& packet) {
	const int size = packet.size_in_bytes();
	for (;;) {
		const int sent =
			sending_.time([&] { return socket_.send(packet.as_raw_buffer(), size, server_); });
		if (sent == size) return true;
		if (sent < 0) return false;
		std::this_thread::yield();
	}
}

// Looks through the answers that have come in for the one to `tick`.
bool Client::is_acknowledged(unsigned int tick) {
	Dynamic_bit_buffer* answer = bit_buffer_manager.get_bit_buffer();
	bool is_found = false;
	int size = 0;
	QoNetAddress from;
	while (!is_found && socket_.receive(answer->as_raw_buffer(), size, from)) {
		answer->initialize_after_read(size);
		Message message;
		Meter meter; // answers are not part of the table
		is_found = from.same_as(server_) && read_message(*answer, tick, message, meter) &&
		           message.kind == Message_kind::acknowledgement &&
		           message.id.tick_no == static_cast<int>(tick);
	}
	bit_buffer_manager.return_bit_buffer(answer);
	return is_found;
}

bool Client::deliver(Dynamic_bit_buffer& packet, unsigned int tick) {
	for (int attempt = 0; attempt < attempts; ++attempt) {
		if (attempt > 0) ++sent_again_;
		if (!send(packet)) return false;
		const auto end = std::chrono::steady_clock::now() + patience_for_an_answer;
		while (std::chrono::steady_clock::now() < end) {
			if (is_acknowledged(tick)) return true;
			std::this_thread::yield();
		}
	}
	return false;
}

// Does to a copy of the packet what a bad line does: turns a bit over, loses the tail, or spoils a
// run of bytes.
void Client::send_damaged(const Dynamic_bit_buffer& packet) {
	Dynamic_bit_buffer damaged(packet);
	const int size = damaged.size_in_bytes();
	const int at = vandal_.random_int_ranged(0, size - 1);
	switch (vandal_.random_int(3)) {
	case 0:
		damaged.buffer[at] ^= static_cast<unsigned char>(1u << vandal_.random_int(8));
		break;
	case 1:
		damaged.shrink_size_to(8 * at);
		break;
	case 2:
		for (int i = at; i < size && i < at + 8; ++i) {
			damaged.buffer[i] ^= static_cast<unsigned char>(vandal_.random_int_ranged(1, 255));
		}
	}
	send(damaged);
	++tally_.damaged;
}

// A datagram from somebody else.
void Client::send_noise() {
	Dynamic_bit_buffer* noise = bit_buffer_manager.get_bit_buffer();
	const int size =
		vandal_.random_int_ranged(0, Dynamic_bit_buffer::static_buffer_size_in_bytes - 1);
	for (int i = 0; i < size; ++i)
		noise->buffer[i] = static_cast<unsigned char>(vandal_.random_int());
	noise->initialize_after_read(size);
	send(*noise);
	bit_buffer_manager.return_bit_buffer(noise);
	++tally_.noise;
}

bool Client::send_tick() {
	const unsigned int number = world_.tick() - first_tick + 1;
	const bool is_damaged =
		options_.damage > 0 && number % static_cast<unsigned int>(options_.damage) == 0;
	Message message;
	message.id = udp_packet_id(static_cast<int>(world_.tick()), 0);
	message.time = world_.time();
	message.snapshot = world_.snapshot();

	// Packets come from the pool, ready and empty, and go back to it: no allocation on the way.
	Dynamic_bit_buffer* packet = bit_buffer_manager.get_bit_buffer();
	packing_.time([&] { write_message(*packet, message, meter_); });
	fingerprint_ = hash_of(packet->get_buffer(), packet->size_in_bytes(), fingerprint_);
	bool is_well = true;
	if (is_damaged) {
		send_damaged(*packet);
		send_noise();
	} else {
		is_well = round_trip_.time([&] { return deliver(*packet, world_.tick()); });
		++tally_.undamaged;
	}
	bit_buffer_manager.return_bit_buffer(packet);
	return is_well;
}

bool Client::say_goodbye() {
	world_.step(); // for a tick of its own
	Message message;
	message.id = udp_packet_id(static_cast<int>(world_.tick()), 0);
	message.kind = Message_kind::goodbye;
	message.tally = tally_;
	Dynamic_bit_buffer packet;
	Meter meter;
	write_message(packet, message, meter);
	const bool is_well = deliver(packet, world_.tick());
	socket_.close_socket();
	return is_well;
}

void Client::print(bool is_well) const {
	meter_.print();
	Table table({"client", "packets"});
	table.add({"sent undamaged, answered", std::to_string(tally_.undamaged)});
	table.add({"damaged on purpose", std::to_string(tally_.damaged)});
	table.add({"noise", std::to_string(tally_.noise)});
	table.add({"sent again", std::to_string(sent_again_)});
	table.print();
	Table times({"client", "us per packet"});
	times.add({"pack", in_digits(packing_.mean_microseconds(), 2)});
	times.add({"send", in_digits(sending_.mean_microseconds(), 2)});
	times.add({"send, and be answered", in_digits(round_trip_.mean_microseconds(), 2)});
	times.print();
	std::printf("\n  client: the packets' fingerprint is %08x, the same on every system\n"
	            "  client: %s\n",
	            fingerprint_,
	            is_well ? "every undamaged packet was answered" : "THE ROAD IS BROKEN");
}

int Client::run() {
	if (!open()) return exit_no_port;
	xyl_log("client sends %d ticks of %d agents to port %d", options_.ticks, options_.agents,
	        options_.port);
	bool is_well = true;
	for (int tick = 1; is_well && tick <= options_.ticks; ++tick) {
		world_.step();
		is_well = send_tick();
	}
	is_well = is_well && say_goodbye();
	if (is_well) {
		xyl_post_success_line("client got an answer to each of %d packets", tally_.undamaged);
	} else {
		xyl_error("client got no answer to tick %u", world_.tick());
	}
	print(is_well);
	return is_well ? exit_well : exit_not_equal;
}
