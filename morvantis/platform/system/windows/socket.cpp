// Winsock 2. The older name functions, since their answers to odd texts are the contract.

#include <morvantis/platform/system/socket.h>

#include <morvantis/platform/system/windows/include_windows.h>

namespace {

SOCKET system_socket(xylInt64 handle) { return static_cast<SOCKET>(handle); }

WSABUF one_buffer(const void* data, int size) {
	return {static_cast<ULONG>(size), static_cast<char*>(const_cast<void*>(data))};
}

os::Transfer last_failure() {
	return WSAGetLastError() == WSAEWOULDBLOCK ? os::Transfer::would_block : os::Transfer::failed;
}

} // namespace

bool os::start_sockets(xylUInt16 wanted_version, xylUInt16* given_version) {
	WSADATA data;
	if (WSAStartup(wanted_version, &data) != 0) return false;
	*given_version = data.wVersion;
	return true;
}

void os::stop_sockets() { WSACleanup(); }

xylInt64 os::open_datagram_socket() {
	return static_cast<xylInt64>(socket(AF_INET, SOCK_DGRAM, 0));
}

bool os::bind_socket(xylInt64 handle, const void* address) {
	return bind(system_socket(handle), static_cast<const sockaddr*>(address),
	            sizeof(sockaddr_in)) != SOCKET_ERROR;
}

void os::close_socket(xylInt64 handle) { closesocket(system_socket(handle)); }

bool os::set_socket_option(xylInt64 handle, Socket_option option, int value) {
	const SOCKET socket = system_socket(handle);
	const auto set_level_option = [=](int name) {
		return setsockopt(socket, SOL_SOCKET, name, reinterpret_cast<const char*>(&value),
		                  sizeof(value)) != SOCKET_ERROR;
	};
	switch (option) {
	case Socket_option::non_blocking: {
		u_long argument = static_cast<u_long>(value);
		return ioctlsocket(socket, static_cast<long>(FIONBIO), &argument) != SOCKET_ERROR;
	}
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
	WSABUF buffer = one_buffer(data, size);
	DWORD bytes = 0;
	if (WSASendTo(system_socket(handle), &buffer, 1, &bytes, 0,
	              static_cast<const sockaddr*>(address), sizeof(sockaddr_in), nullptr,
	              nullptr) == SOCKET_ERROR)
		return last_failure();
	*sent = static_cast<int>(bytes);
	return Transfer::done;
}

os::Transfer os::receive_from(xylInt64 handle, void* data, int size, void* address, int* received,
                              bool* truncated) {
	WSABUF buffer = one_buffer(data, size);
	DWORD bytes = 0, flags = 0;
	int address_size = sizeof(sockaddr_in);
	if (WSARecvFrom(system_socket(handle), &buffer, 1, &bytes, &flags,
	                static_cast<sockaddr*>(address), &address_size, nullptr,
	                nullptr) == SOCKET_ERROR)
		return last_failure();
	*received = static_cast<int>(bytes);
	*truncated = (flags & MSG_PARTIAL) != 0;
	return Transfer::done;
}

bool os::find_host(const char* name, xylUInt32* host) {
	const hostent* entry = gethostbyname(name);
	if (!entry || entry->h_addrtype != AF_INET) return false;
	*host = reinterpret_cast<const in_addr*>(entry->h_addr_list[0])->s_addr;
	return true;
}

const char* os::host_name(xylUInt32 host) {
	const hostent* entry =
		gethostbyaddr(reinterpret_cast<const char*>(&host), sizeof(host), AF_INET);
	return entry ? entry->h_name : nullptr;
}

xylUInt32 os::parse_host(const char* text) { return inet_addr(text); }

const char* os::host_text(xylUInt32 host) {
	in_addr address{};
	address.s_addr = host;
	return inet_ntoa(address);
}
