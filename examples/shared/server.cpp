#include "server.h"

#include "message.h"
#include "table.h"

#include <morvantis/core/xylreport.h>
#include <morvantis/net/bit_buffer_manager.h>

#include <cstdio>
#include <map>
#include <thread>

namespace {

constexpr std::chrono::seconds longest_silence(20); // the client is then given up
constexpr int looks_before_rest = 2000;             // without a packet

class Server {
public:
	Server(const Options& options, Sent_world& world) : options_(options), world_(world) {}

	int run();

private:
	bool receive_one();
	void handle(Dynamic_bit_buffer& packet, const QoNetAddress& from);
	void take_snapshot(const Message& message);
	void acknowledge(const Message& message, const QoNetAddress& to);
	bool is_well() const;
	void print() const;

	const Options& options_;
	Sent_world& world_; // goes through the same ticks as the client's
	QoNet_udp_socket socket_;
	bool has_goodbye_ = false;
	Tally claimed_; // by the client
	int received_ = 0, equal_ = 0, different_ = 0, doubled_ = 0, dropped_ = 0;
	std::map<std::string, int> faults_; // why packets were dropped, and how many
	Meter meter_;
	Stopwatch reading_;
};

// The same seed makes the same world here, so what arrives can be told right from wrong. A tick
// whose packet was damaged never arrives: the world just moves past it.
void Server::take_snapshot(const Message& message) {
	const unsigned int tick = static_cast<unsigned int>(message.id.tick_no);
	if (tick <= world_.tick()) {
		++doubled_;
		return;
	}
	while (world_.tick() < tick && tick - first_tick < static_cast<unsigned int>(options_.ticks)) {
		world_.step();
	}
	const bool is_equal = world_.tick() == tick && world_.time() == message.time &&
	                      are_equal(message.snapshot, world_.snapshot());
	++(is_equal ? equal_ : different_);
	if (!is_equal) xyl_error("tick %u is not what was sent", tick);
}

void Server::acknowledge(const Message& message, const QoNetAddress& to) {
	Message answer;
	answer.id = message.id;
	answer.kind = Message_kind::acknowledgement;
	Dynamic_bit_buffer* packet = bit_buffer_manager.get_bit_buffer();
	Meter meter;
	write_message(*packet, answer, meter);
	socket_.send(packet->as_raw_buffer(), packet->size_in_bytes(), to);
	bit_buffer_manager.return_bit_buffer(packet);
}

void Server::handle(Dynamic_bit_buffer& packet, const QoNetAddress& from) {
	Message message;
	const bool is_read =
		reading_.time([&] { return read_message(packet, world_.tick(), message, meter_); });
	if (!is_read || message.kind == Message_kind::acknowledgement) {
		++dropped_;
		++faults_[is_read ? "not for a server" : meter_.fault];
		xyl_warning("dropped %d bytes: %s", packet.size_in_bytes(), meter_.fault.c_str());
		return;
	}
	if (message.kind == Message_kind::snapshot) {
		take_snapshot(message);
	} else {
		claimed_ = message.tally;
		has_goodbye_ = true;
	}
	acknowledge(message, from);
}

// False when nothing has arrived.
bool Server::receive_one() {
	Dynamic_bit_buffer* packet = bit_buffer_manager.get_bit_buffer();
	packet->guarantee_capacity_in_bits(message_capacity_in_bits(options_.agents));
	int size = 0;
	QoNetAddress from;
	// Straight into the buffer's storage, without a copy on the way.
	const bool has_arrived = socket_.receive(packet->as_raw_buffer(), size, from);
	if (has_arrived) {
		++received_;
		packet->initialize_after_read(size);
		handle(*packet, from);
	}
	bit_buffer_manager.return_bit_buffer(packet);
	return has_arrived;
}

bool Server::is_well() const {
	return has_goodbye_ && different_ == 0 && equal_ == claimed_.undamaged &&
	       dropped_ == claimed_.damaged + claimed_.noise;
}

void Server::print() const {
	Table packets({"server", "packets"});
	packets.add({"received", std::to_string(received_)});
	packets.add({"arrived equal", std::to_string(equal_)});
	packets.add({"arrived different", std::to_string(different_)});
	packets.add({"arrived twice", std::to_string(doubled_)});
	packets.add({"dropped", std::to_string(dropped_)});
	for (const auto& [fault, count] : faults_) {
		packets.add({"  " + fault, std::to_string(count)});
	}
	packets.print();
	Table times({"server", "us per packet"});
	times.add({"read and test every field", in_digits(reading_.mean_microseconds(), 2)});
	times.print();
	std::printf("\n  server: %s\n", is_well() ? "every undamaged packet arrived equal, "
	                                            "every other one was dropped"
	                                          : "THE ROAD IS BROKEN");
}

int Server::run() {
	if (!open_socket(&socket_, options_.port)) {
		xyl_error("server has no port %d to listen on", options_.port);
		return exit_no_port;
	}
	std::printf("  server listens on 127.0.0.1, port %d\n", options_.port);
	std::fflush(stdout);
	xyl_log("server waits for %d ticks of %d agents", options_.ticks, options_.agents);
	auto last_packet = std::chrono::steady_clock::now();
	int idle_looks = 0;
	while (!has_goodbye_ && std::chrono::steady_clock::now() - last_packet < longest_silence) {
		if (receive_one()) {
			last_packet = std::chrono::steady_clock::now();
			idle_looks = 0;
		} else if (++idle_looks < looks_before_rest) {
			std::this_thread::yield();
		} else {
			std::this_thread::sleep_for(std::chrono::milliseconds(1)); // the client has other work
		}
	}
	socket_.close_socket();
	if (is_well()) {
		xyl_post_success_line("server read %d packets, all equal", equal_);
	} else {
		xyl_error("server read %d packets of %d", equal_, claimed_.undamaged);
	}
	print();
	return is_well() ? exit_well : exit_not_equal;
}

} // namespace

int run_server(const Options& options, Sent_world& world) { return Server(options, world).run(); }
