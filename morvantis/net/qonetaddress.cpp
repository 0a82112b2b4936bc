#include <morvantis/net/qonetaddress.h>

#include <morvantis/platform/system/socket.h>

#include <bit>
#include <cstring>

namespace {

// From host byte order to network byte order, and back.
unsigned short swapped_port(unsigned short port) {
	if constexpr (std::endian::native == std::endian::big) return port;
	return static_cast<unsigned short>(port << 8 | port >> 8);
}

} // namespace

QoNetAddress::QoNetAddress() : port(0), host(0) { fill_socket_address(); }

bool QoNetAddress::set_host(const char* name, unsigned short new_port) {
	port = new_port;
	socket_address = {};
	unsigned int found = 0;
	if (!os::find_host(name, &found)) {
		found = os::parse_host(name);
		if (found == os::no_host) return false;
	}
	host = found;
	fill_socket_address();
	return true;
}

bool QoNetAddress::set_host(unsigned int new_host, unsigned short new_port) {
	host = new_host;
	port = new_port;
	fill_socket_address();
	return true;
}

void QoNetAddress::set_port(unsigned short new_port) {
	port = new_port;
	socket_address.sin_port = swapped_port(new_port);
}

unsigned int QoNetAddress::get_reversed_host() const {
	return host << 24 | (host & 0xFF00) << 8 | (host >> 8 & 0xFF00) | host >> 24;
}

void QoNetAddress::get_host(char* out, size_t size) const {
	if (const char* name = os::host_name(host)) {
		std::strncpy(out, name, size);
	} else {
		get_host_ip(out, size);
	}
}

void QoNetAddress::get_host_ip(char* out, size_t size) const {
	if (const char* text = os::host_text(host)) {
		std::strncpy(out, text, size);
	} else {
		out[0] = 0;
	}
}

bool QoNetAddress::same_as(const QoNetAddress& other) const {
	return host == other.host && port == other.port;
}

void QoNetAddress::reset() {
	host = 0;
	port = 0;
}

void QoNetAddress::socket_address_updated() {
	port = swapped_port(socket_address.sin_port);
	host = socket_address.sin_addr.s_addr;
}

void QoNetAddress::fill_socket_address() {
	socket_address.sin_family = AF_INET;
	socket_address.sin_port = swapped_port(port);
	socket_address.sin_addr.s_addr = host;
}
