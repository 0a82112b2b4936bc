// What every datagram socket can do.
#pragma once

#include <morvantis/core/xyltypes.h>         // MORVANTIS_API
#include <morvantis/net/qonetsocketoption.h> // QoNetSocketOption

class QoNetAddress;
struct QoNetRawBuffer;

// A socket that moves datagrams whole: no connection, no retry, no order. It is inactive until
// bind_socket(), active until close_socket() or reset().
//
// A socket belongs to one thread at a time. No operation allocates or tells the host anything.
//
// The order of the operations is a contract. The class has no virtual destructor: nobody ends a
// socket through it.
class MORVANTIS_API UDP_socket {
public:
	// Forgets the socket and its address without closing it: a live one stays open, without an
	// owner.
	virtual void reset() = 0;

	// Opens a socket at `address`; null stands for every address of this machine and a port that
	// the system chooses, port 0 for such a port at the given address. No option is set: the
	// socket blocks.
	//
	// On failure false, and the socket is inactive. The socket that was active before is not
	// closed, but forgotten.
	virtual bool bind_socket(const QoNetAddress* address) = 0;

	// False when the system refuses or there is no such option; the socket is then as before.
	virtual bool set_socket_option(QoNetSocketOption option, int value) = 0;

	// Closes the socket if it is active, otherwise nothing.
	virtual void close_socket() = 0;

	// Sends the first `size` bytes at `buffer->data` as one datagram; 0 bytes are a datagram too.
	// `capacity_in_bits` plays no part.
	//
	// The bytes sent; 0 when a socket that does not block has no room in its queue; -1 on any
	// other failure.
	virtual int send(const QoNetRawBuffer* buffer, int size, const QoNetAddress& address) = 0;

	// Takes one datagram into `buffer->data`, its bytes into `size`, its sender into `address`.
	//
	// False with `size` 0 when there is none, when the call fails, and when the datagram is longer
	// than `capacity_in_bits` / 8 bytes, whose rest is lost. `address.socket_address` may then hold
	// anything.
	virtual bool receive(QoNetRawBuffer* buffer, int& size, QoNetAddress& address) = 0;

	virtual bool is_active() const = 0;
};
static_assert(sizeof(UDP_socket) == sizeof(void*));
