// What the two ends of the road share.
#pragma once

#include <morvantis/net/qonet_udp_socket.h>

#include <chrono>

struct Options {
	int ticks = 1000;
	int agents = 64;
	int damage = 50;             // one packet in so many; 0 for none
	unsigned short port = 41814; // of the server
	unsigned int seed = 1;
};

// Exit codes of both ends.
inline constexpr int exit_well = 0, exit_not_equal = 1, exit_no_network = 2, exit_no_port = 3;

inline QoNetAddress loopback_address(unsigned short port) {
	QoNetAddress address;
	address.set_host("127.0.0.1", port);
	return address;
}

// Opens a socket on loopback that never waits, as a host does that polls once a frame.
inline bool open_socket(QoNet_udp_socket* socket, unsigned short port) {
	const QoNetAddress address = loopback_address(port);
	return socket->bind_socket(&address) &&
	       socket->set_socket_option(QoNet_socket_non_blocking, 1) &&
	       socket->set_socket_option(QoNet_socket_receive_buffer_size, 1 << 20);
}

// Adds up how long something takes.
class Stopwatch {
public:
	template <typename Work> auto time(Work work) {
		const Lap lap(*this);
		return work();
	}
	double mean_microseconds() const {
		return count_ ? std::chrono::duration<double, std::micro>(total_).count() / count_ : 0;
	}

private:
	struct Lap {
		explicit Lap(Stopwatch& watch) : watch_(watch) {}
		~Lap() {
			watch_.total_ += std::chrono::steady_clock::now() - start_;
			++watch_.count_;
		}
		Stopwatch& watch_;
		std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
	};

	std::chrono::steady_clock::duration total_{};
	int count_ = 0;
};
