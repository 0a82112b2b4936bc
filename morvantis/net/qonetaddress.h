// An IPv4 address with its port, in the form that the socket calls take and as two numbers.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API, size_t

// sockaddr_in. This header and qonet_udp_socket.h are the only public ones that bring a header of
// the system along.
#if defined(_WIN32)
#if defined(WIN32_LEAN_AND_MEAN)
#include <winsock2.h>
#else // keeps out what windows.h would bring along beside the sockets
#define WIN32_LEAN_AND_MEAN
#include <winsock2.h>
#undef WIN32_LEAN_AND_MEAN
#endif
#else
#include <netinet/in.h>
#endif

// A value of two forms that every operation but reset() keeps in step:
//
//     port == the port of socket_address in host byte order
//     host == the address of socket_address, untouched, so in network byte order
//
// What is compared is `port` and `host`; what is sent to is `socket_address`.
//
// Names are looked up by the system's name service, which is on after QoNet::initialize(). A value
// belongs to one thread at a time.
class MORVANTIS_API QoNetAddress {
public:
	// Port 0 at address 0, which is_valid() calls no address. The last 8 bytes of
	// `socket_address`, which no system reads, are not set.
	QoNetAddress();
	QoNetAddress(const QoNetAddress&) = default;
	QoNetAddress& operator=(const QoNetAddress&) = default;

	// Takes the first IPv4 address of the host called `name`, or the address that `name` writes
	// in dotted form. Blocks for as long as the name service takes, for any text: the service is
	// asked first, the text read as numbers second.
	//
	// On failure false; `port` is then the new one, `host` the old one, and `socket_address` zero
	// from end to end.
	bool set_host(const char* name, unsigned short new_port);

	// Takes `new_host` in network byte order, unchanged. Always true.
	bool set_host(unsigned int new_host, unsigned short new_port);

	void set_port(unsigned short new_port);
	unsigned short get_port() const { return port; }

	// The address in network byte order: 0x0100007F for 127.0.0.1 on a little-endian machine.
	unsigned int get_host() const { return host; }

	// The address with its four bytes reversed: 0x7F000001 for 127.0.0.1.
	unsigned int get_reversed_host() const;

	// Writes the name of the host, or its dotted form where it has no name, into `size` bytes at
	// `out`, zeroes behind a shorter text. Blocks for as long as the name service takes.
	//
	// kept: a text of `size` characters or more fills `out` and has no terminator.
	// kept: when the system has not even a dotted form, `out[0]` becomes 0 whatever `size` says.
	void get_host(char* out, size_t size) const;

	// Writes the dotted form, in the same way, without asking the name service.
	void get_host_ip(char* out, size_t size) const;

	// Whether both name one port of one host; nothing else is looked at.
	bool same_as(const QoNetAddress& other) const;

	// Whether there is a host or a port.
	bool is_valid() const { return host != 0 || port != 0; }

	// Back to no address. kept: `socket_address` stays as it is, so the two forms part here.
	void reset();

	sockaddr_in socket_address; // the form that the socket calls read and write
	unsigned short port;        // in host byte order
	unsigned int host;          // in network byte order

private:
	friend class QoNet_udp_socket;

	// Takes port and host over from `socket_address`, which a socket call has just written.
	void socket_address_updated();

	void fill_socket_address();
};
static_assert(sizeof(sockaddr_in) == 16);
static_assert(offsetof(QoNetAddress, port) == 16 && offsetof(QoNetAddress, host) == 20);
static_assert(sizeof(QoNetAddress) == 24);
