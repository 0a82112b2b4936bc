// The system's datagram sockets, its name service, and the text form of IPv4 addresses.
//
// A handle is the system's socket as 64 bits, `no_socket` for none. A socket address is the
// system's sockaddr_in, 16 bytes, passed by address so that this header needs no system header.
// Hosts and ports inside it, and every `host` below, are in network byte order.
//
// Calls are single calls of the system: no retry, no lock, no allocation from the library's heap.
#pragma once

#include <morvantis/core/xyltypes.h> // xylInt64, xylUInt32

namespace os {

inline constexpr xylInt64 no_socket = -1;
inline constexpr xylUInt32 no_host = 0xFFFFFFFF; // what parse_host() says of a text it can't read

// Starts the system's socket library, asking for `wanted_version` (low byte major, high byte
// minor), and stores the version that it gives. False, with nothing stored, when it does not
// start. Every success wants one stop_sockets(). A system whose sockets need no start gives the
// version asked for.
bool start_sockets(xylUInt16 wanted_version, xylUInt16* given_version);
void stop_sockets();

// A new IPv4 datagram socket, blocking, without an address, not inherited by a process that the
// library starts; `no_socket` when the system has none to give.
xylInt64 open_datagram_socket();

// Gives the socket the address at `address`; port 0 lets the system choose one. False when the
// address is taken, not this machine's, or the handle names no socket.
bool bind_socket(xylInt64 handle, const void* address);

void close_socket(xylInt64 handle);

enum class Socket_option {
	non_blocking,        // 0 blocks, anything else does not
	broadcast,           // 0 forbids datagrams to broadcast addresses, anything else allows them
	receive_buffer_size, // bytes; the system may round
	send_buffer_size,    // bytes; the system may round
};

// False when the system refuses; the socket is then as before.
bool set_socket_option(xylInt64 handle, Socket_option option, int value);

enum class Transfer {
	done,
	would_block, // the socket does not block, and its queue is full or empty
	failed,      // anything else
};

// Sends one datagram of `size` bytes, which may be 0, and stores the bytes sent when done.
Transfer send_to(xylInt64 handle, const void* data, int size, const void* address, int* sent);

// Takes one datagram from the queue into `size` bytes at `data`, and its sender's address into
// `address`. Where it is longer than `size` the rest is lost, and the system either fails or is
// done with `*truncated` set; `*received` then has no meaning. Both are stored only when done.
Transfer receive_from(xylInt64 handle, void* data, int size, void* address, int* received,
                      bool* truncated);

// The first IPv4 address of the host called `name`; numbers in dotted form are names too, and the
// empty name is this machine. False, with nothing stored, when there is none. Blocks for as long
// as the name service takes.
bool find_host(const char* name, xylUInt32* host);

// The name of `host`, or null when it has none. The text belongs to the calling thread's next
// call of this kind. Blocks like find_host().
const char* host_name(xylUInt32 host);

// The address written as one to four numbers with dots between them, each decimal, octal ("0") or
// hexadecimal ("0x"), the last one filling the bytes that are left: "127.1" is 127.0.0.1. A single
// blank is address 0, any other text that can't be read `no_host`.
xylUInt32 parse_host(const char* text);

// `host` in dotted decimal form, or null when the system can't say. The text belongs to the
// calling thread's next call of this kind.
const char* host_text(xylUInt32 host);

} // namespace os
