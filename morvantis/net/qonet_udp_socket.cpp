#include <morvantis/net/qonet_udp_socket.h>

#include <morvantis/platform/system/socket.h>

#include <iterator>

namespace {

// By the option's number less one.
constexpr os::Socket_option system_options[] = {
	os::Socket_option::non_blocking,
	os::Socket_option::broadcast,
	os::Socket_option::receive_buffer_size,
	os::Socket_option::send_buffer_size,
};
static_assert(std::size(system_options) == QoNet_socket_send_buffer_size);

} // namespace

void QoNet_udp_socket::reset() {
	socket_handle = os::no_socket;
	local_address = {};
}

bool QoNet_udp_socket::bind_socket(const QoNetAddress* address) {
	socket_handle = os::open_datagram_socket();
	if (socket_handle == os::no_socket) return false;
	local_address = {};
	local_address.sin_family = AF_INET;
	if (address) {
		// From the two numbers, not from its other form: reset() lets the two differ.
		QoNetAddress wanted;
		wanted.set_host(address->host, address->port);
		local_address.sin_port = wanted.socket_address.sin_port;
		local_address.sin_addr = wanted.socket_address.sin_addr;
	}
	if (os::bind_socket(socket_handle, &local_address)) return true;
	close_socket();
	return false;
}

bool QoNet_udp_socket::set_socket_option(QoNetSocketOption option, int value) {
	if (option < QoNet_socket_non_blocking || option > QoNet_socket_send_buffer_size) return false;
	return os::set_socket_option(socket_handle, system_options[option - 1], value);
}

void QoNet_udp_socket::close_socket() {
	if (!is_active()) return;
	os::close_socket(socket_handle);
	socket_handle = os::no_socket;
}

int QoNet_udp_socket::send(const QoNetRawBuffer* buffer, int size, const QoNetAddress& address) {
	int sent = 0;
	switch (os::send_to(socket_handle, buffer->data, size, &address.socket_address, &sent)) {
	case os::Transfer::done:
		return sent;
	case os::Transfer::would_block:
		return 0;
	case os::Transfer::failed:
		break;
	}
	return -1;
}

bool QoNet_udp_socket::receive(QoNetRawBuffer* buffer, int& size, QoNetAddress& address) {
	int received = 0;
	bool is_truncated = false;
	size = 0;
	if (os::receive_from(socket_handle, buffer->data, buffer->capacity_in_bits / 8,
	                     &address.socket_address, &received, &is_truncated) != os::Transfer::done)
		return false;
	address.socket_address_updated();
	if (is_truncated) return false;
	size = received;
	return true;
}

bool QoNet_udp_socket::is_active() const { return socket_handle != os::no_socket; }

QoNet_udp_socket::~QoNet_udp_socket() = default;
