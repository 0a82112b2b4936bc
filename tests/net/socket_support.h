// Real sockets on 127.0.0.1 for the tests of the network layer.
#pragma once

#include <morvantis/net/qonet.h>
#include <morvantis/net/qonet_udp_socket.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

using Bytes = std::vector<unsigned char>;

inline constexpr unsigned int loopback_host = 0x0100007F; // 127.0.0.1 in network byte order

// `size` bytes that differ between `seed`s and along the datagram.
Bytes patterned(size_t size, unsigned int seed = 0);

// What the system says of a socket.
unsigned short bound_port(const QoNet_udp_socket& socket);
int receive_buffer_size(const QoNet_udp_socket& socket);
int send_buffer_size(const QoNet_udp_socket& socket);

QoNetAddress loopback_address(unsigned short port);

// Two ends of a connection of the stream kind, for the one thing that no datagram socket does: a
// send queue that fills up. `sender` and `listener` end in close_socket(), as any other.
struct Stream_pair {
	QoNet_udp_socket listener; // holds the other end's data back by never reading it
	QoNet_udp_socket sender;
	bool connect();
};

int send(QoNet_udp_socket& socket, const Bytes& data, const QoNetAddress& address);

// One call of receive() into room for `capacity` bytes. `size` and `has_arrived` are as the call
// left them; the data is cut to `size`.
struct Received {
	bool has_arrived = false;
	int size = -1;
	Bytes data;
	QoNetAddress sender;
};
Received receive(QoNet_udp_socket& socket, size_t capacity = 65536);

// Starts the socket library, and gives each test two sockets on ports of their own that wait for
// what they expect: on this interface a datagram sent is a datagram queued.
class Loopback_test : public testing::Test {
protected:
	void SetUp() override;
	void TearDown() override;

	QoNet network_;
	QoNet_udp_socket here_, there_;
	QoNetAddress here_address_, there_address_;
};
