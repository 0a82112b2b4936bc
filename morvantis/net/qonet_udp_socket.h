// A datagram socket of the system.
#pragma once

#include <morvantis/core/xyltypes.h>    // xylInt64, MORVANTIS_API
#include <morvantis/net/qonetaddress.h> // sockaddr_in, QoNetAddress
#include <morvantis/net/qonetrawbuffer.h>
#include <morvantis/net/udp_socket.h> // what each operation does

// UDP over IPv4 by the system's own calls, one call for each send and receive, straight from and
// into the caller's buffer. Wants QoNet::initialize() before, QoNet::terminate() after.
//
// A copy names the same socket of the system: it is closed once, through one of the two.
class MORVANTIS_API QoNet_udp_socket : public UDP_socket {
public:
	QoNet_udp_socket() = default;
	QoNet_udp_socket(const QoNet_udp_socket&) = default;
	QoNet_udp_socket& operator=(const QoNet_udp_socket&) = default;

	void reset() override;
	bool bind_socket(const QoNetAddress* address) override;
	bool set_socket_option(QoNetSocketOption option, int value) override;
	void close_socket() override;
	int send(const QoNetRawBuffer* buffer, int size, const QoNetAddress& address) override;
	bool receive(QoNetRawBuffer* buffer, int& size, QoNetAddress& address) override;
	bool is_active() const override;

	// Does not close the socket; its owner has done so.
	virtual ~QoNet_udp_socket();

	xylInt64 socket_handle = -1;    // the system's handle; -1 for none
	sockaddr_in local_address = {}; // as given to bind_socket(); a port chosen by the system is 0
};
static_assert(sizeof(QoNet_udp_socket) == 32);
