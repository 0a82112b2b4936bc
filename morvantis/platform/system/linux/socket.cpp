// BSD sockets; names by getaddrinfo and getnameinfo, which any number of threads may call.

#include <morvantis/platform/system/socket.h>

#include <arpa/inet.h>
#include <netdb.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

int descriptor(xylInt64 handle) { return static_cast<int>(handle); }

// Sizes are 32 bits without a sign on the other system: a negative one is refused as too long.
size_t byte_count(int size) { return static_cast<xylUInt32>(size); }

os::Transfer last_failure() {
	return errno == EAGAIN ? os::Transfer::would_block : os::Transfer::failed;
}
static_assert(EAGAIN == EWOULDBLOCK);

} // namespace

bool os::start_sockets(xylUInt16 wanted_version, xylUInt16* given_version) {
	*given_version = wanted_version;
	return true;
}

void os::stop_sockets() {}

xylInt64 os::open_datagram_socket() { return socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0); }

bool os::bind_socket(xylInt64 handle, const void* address) {
	return bind(descriptor(handle), static_cast<const sockaddr*>(address), sizeof(sockaddr_in)) !=
	       -1;
}

void os::close_socket(xylInt64 handle) { close(descriptor(handle)); }

bool os::set_socket_option(xylInt64 handle, Socket_option option, int value) {
	const auto set_level_option = [=](int name) {
		return setsockopt(descriptor(handle), SOL_SOCKET, name, &value, sizeof(value)) != -1;
	};
	switch (option) {
	case Socket_option::non_blocking:
		return ioctl(descriptor(handle), FIONBIO, &value) != -1;
	case Socket_option::broadcast:
		return set_level_option(SO_BROADCAST);
	case Socket_option::receive_buffer_size:
		return set_level_option(SO_RCVBUF);
	case Socket_option::send_buffer_size:
		return set_level_option(SO_SNDBUF);
	}
	return false;
}

os::Transfer os::send_to(xylInt64 handle, const void* data, int size, const void* address,
                         int* sent) {
	const ssize_t bytes = sendto(descriptor(handle), data, byte_count(size), 0,
	                             static_cast<const sockaddr*>(address), sizeof(sockaddr_in));
	if (bytes == -1) return last_failure();
	*sent = static_cast<int>(bytes);
	return Transfer::done;
}

os::Transfer os::receive_from(xylInt64 handle, void* data, int size, void* address, int* received,
                              bool* truncated) {
	socklen_t address_size = sizeof(sockaddr_in);
	// MSG_TRUNC asks for the datagram's own length; without it a cut is silent.
	const ssize_t bytes = recvfrom(descriptor(handle), data, byte_count(size), MSG_TRUNC,
	                               static_cast<sockaddr*>(address), &address_size);
	if (bytes == -1) return last_failure();
	*received = static_cast<int>(bytes);
	*truncated = bytes > size;
	return Transfer::done;
}

bool os::find_host(const char* name, xylUInt32* host) {
	// getaddrinfo knows no empty name; the contract's is this machine's.
	char own_name[256];
	if (name[0] == '\0') {
		if (gethostname(own_name, sizeof(own_name)) != 0) return false;
		name = own_name;
	}
	addrinfo wanted{};
	wanted.ai_family = AF_INET;
	wanted.ai_socktype = SOCK_DGRAM; // else each address comes once per kind of socket
	addrinfo* found = nullptr;
	if (getaddrinfo(name, nullptr, &wanted, &found) != 0) return false;
	sockaddr_in address;
	std::memcpy(&address, found->ai_addr, sizeof(address));
	freeaddrinfo(found);
	*host = address.sin_addr.s_addr;
	return true;
}

const char* os::host_name(xylUInt32 host) {
	static thread_local char name[NI_MAXHOST];
	sockaddr_in address{};
	address.sin_family = AF_INET;
	address.sin_addr.s_addr = host;
	const int failure = getnameinfo(reinterpret_cast<const sockaddr*>(&address), sizeof(address),
	                                name, sizeof(name), nullptr, 0, NI_NAMEREQD);
	return failure == 0 ? name : nullptr;
}

xylUInt32 os::parse_host(const char* text) {
	// inet_addr refuses the single blank, which the contract takes for address 0.
	return std::strcmp(text, " ") == 0 ? 0 : inet_addr(text);
}

const char* os::host_text(xylUInt32 host) {
	in_addr address{};
	address.s_addr = host;
	return inet_ntoa(address);
}
