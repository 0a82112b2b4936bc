#include "socket_support.h"

namespace {

// The two systems differ in the types of these calls' arguments alone; the types come from the
// calls themselves.
template <typename Socket, typename Address, typename Length>
unsigned short ask_port(int (*ask)(Socket, Address*, Length*), xylInt64 handle) {
	sockaddr_in address{};
	Length length = sizeof(address);
	EXPECT_EQ(ask(static_cast<Socket>(handle), reinterpret_cast<Address*>(&address), &length), 0);
	return ntohs(address.sin_port);
}

template <typename Socket, typename Value, typename Length>
int ask_option(int (*ask)(Socket, int, int, Value*, Length*), xylInt64 handle, int name) {
	int value = -1;
	Length length = sizeof(value);
	EXPECT_EQ(ask(static_cast<Socket>(handle), SOL_SOCKET, name, reinterpret_cast<Value*>(&value),
	              &length),
	          0);
	return value;
}

unsigned short port_of(xylInt64 handle) { return ask_port(&getsockname, handle); }

} // namespace

Bytes patterned(size_t size, unsigned int seed) {
	Bytes data(size);
	unsigned int state = seed * 2654435761u + 1;
	for (unsigned char& byte : data) {
		state = state * 1664525u + 1013904223u;
		byte = static_cast<unsigned char>(state >> 24);
	}
	return data;
}

unsigned short bound_port(const QoNet_udp_socket& socket) { return port_of(socket.socket_handle); }

int receive_buffer_size(const QoNet_udp_socket& socket) {
	return ask_option(&getsockopt, socket.socket_handle, SO_RCVBUF);
}

int send_buffer_size(const QoNet_udp_socket& socket) {
	return ask_option(&getsockopt, socket.socket_handle, SO_SNDBUF);
}

QoNetAddress loopback_address(unsigned short port) {
	QoNetAddress address;
	address.set_host(loopback_host, port);
	return address;
}

bool Stream_pair::connect() {
	const auto listening = socket(AF_INET, SOCK_STREAM, 0);
	const auto sending = socket(AF_INET, SOCK_STREAM, 0);
	listener.socket_handle = static_cast<xylInt64>(listening);
	sender.socket_handle = static_cast<xylInt64>(sending);
	if (!listener.is_active() || !sender.is_active()) return false;
	QoNetAddress address = loopback_address(0);
	const auto* system_address = reinterpret_cast<const sockaddr*>(&address.socket_address);
	if (bind(listening, system_address, sizeof(sockaddr_in)) != 0) return false;
	address.set_port(port_of(listener.socket_handle));
	return listen(listening, 1) == 0 &&
	       ::connect(sending, system_address, sizeof(sockaddr_in)) == 0;
}

int send(QoNet_udp_socket& socket, const Bytes& data, const QoNetAddress& address) {
	Bytes copy = data;
	const QoNetRawBuffer buffer{0, copy.data()}; // a send has no use for the capacity
	return socket.send(&buffer, static_cast<int>(copy.size()), address);
}

Received receive(QoNet_udp_socket& socket, size_t capacity) {
	Received result;
	result.data.resize(capacity);
	QoNetRawBuffer buffer{static_cast<xylInt32>(capacity * 8), result.data.data()};
	result.has_arrived = socket.receive(&buffer, result.size, result.sender);
	result.data.resize(static_cast<size_t>(result.size));
	return result;
}

void Loopback_test::SetUp() {
	ASSERT_TRUE(network_.initialize());
	const QoNetAddress any_port = loopback_address(0);
	ASSERT_TRUE(here_.bind_socket(&any_port));
	ASSERT_TRUE(there_.bind_socket(&any_port));
	here_address_ = loopback_address(bound_port(here_));
	there_address_ = loopback_address(bound_port(there_));
}

void Loopback_test::TearDown() {
	here_.close_socket();
	there_.close_socket();
	network_.terminate();
}
