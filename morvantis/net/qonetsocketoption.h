// What can be set on a socket.
#pragma once

// For UDP_socket::set_socket_option(); each line says what its `value` means.
enum QoNetSocketOption : int {
	QoNet_socket_non_blocking = 1,    // 0: send and receive wait; else they return at once
	QoNet_socket_broadcast,           // 0: datagrams to broadcast addresses are refused; else sent
	QoNet_socket_receive_buffer_size, // bytes that the system queues; it may round
	QoNet_socket_send_buffer_size,    // bytes that the system queues; it may round
};
static_assert(QoNet_socket_broadcast == 2 && QoNet_socket_receive_buffer_size == 3 &&
              QoNet_socket_send_buffer_size == 4);
