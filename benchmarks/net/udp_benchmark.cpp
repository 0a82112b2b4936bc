// One datagram sent and received on loopback, both by one thread: our sockets, the system's calls
// under them, and ENet's sockets.
//
// The system's part is almost all of it, several microseconds, so the question is whether a layer
// adds anything that can be seen.
#include <morvantis/net/qonet.h>
#include <morvantis/net/qonet_udp_socket.h>

#include <vector>

#include <benchmark/benchmark.h>
#include <enet/enet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using Bytes = std::vector<unsigned char>;

Bytes packet_of(const benchmark::State& state) {
	return Bytes(static_cast<size_t>(state.range(0)), 0x5A);
}

// A socket's handle bound to 127.0.0.1, and where it can be reached.
sockaddr_in bound_address(int handle) {
	sockaddr_in address{};
	socklen_t length = sizeof(address);
	getsockname(handle, reinterpret_cast<sockaddr*>(&address), &length);
	return address;
}

void finish(benchmark::State& state, bool is_well) {
	if (!is_well) state.SkipWithError("a datagram did not arrive");
	state.SetBytesProcessed(state.iterations() * state.range(0));
}

void ours(benchmark::State& state) {
	QoNet network;
	network.initialize();
	QoNetAddress address;
	address.set_host(htonl(INADDR_LOOPBACK), 0);
	QoNet_udp_socket sender, receiver;
	bool is_well = sender.bind_socket(&address) && receiver.bind_socket(&address);
	address.set_port(ntohs(bound_address(static_cast<int>(receiver.socket_handle)).sin_port));
	Bytes packet = packet_of(state), room(1408);
	const QoNetRawBuffer out{0, packet.data()};
	QoNetRawBuffer in{1408 * 8, room.data()};
	const int size = static_cast<int>(packet.size());
	QoNetAddress from;
	for (auto _ : state) {
		int received = 0;
		is_well &= sender.send(&out, size, address) == size &&
		           receiver.receive(&in, received, from) && received == size;
		if (!is_well) break;
	}
	finish(state, is_well);
	sender.close_socket();
	receiver.close_socket();
	network.terminate();
}

void raw(benchmark::State& state) {
	const int sender = socket(AF_INET, SOCK_DGRAM, 0), receiver = socket(AF_INET, SOCK_DGRAM, 0);
	sockaddr_in address{}, from{};
	address.sin_family = AF_INET;
	address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
	const auto* where = reinterpret_cast<const sockaddr*>(&address);
	bool is_well =
		bind(sender, where, sizeof(address)) == 0 && bind(receiver, where, sizeof(address)) == 0;
	address = bound_address(receiver);
	Bytes packet = packet_of(state), room(1408);
	const ssize_t size = static_cast<ssize_t>(packet.size());
	for (auto _ : state) {
		socklen_t length = sizeof(from);
		is_well &=
			sendto(sender, packet.data(), packet.size(), 0, where, sizeof(address)) == size &&
			recvfrom(receiver, room.data(), room.size(), 0, reinterpret_cast<sockaddr*>(&from),
		             &length) == size;
		if (!is_well) break;
	}
	finish(state, is_well);
	close(sender);
	close(receiver);
}

void with_enet(benchmark::State& state) {
	enet_initialize();
	const ENetSocket sender = enet_socket_create(ENET_SOCKET_TYPE_DATAGRAM);
	const ENetSocket receiver = enet_socket_create(ENET_SOCKET_TYPE_DATAGRAM);
	ENetAddress address{htonl(INADDR_LOOPBACK), 0}, from{};
	bool is_well = enet_socket_bind(sender, &address) == 0 &&
	               enet_socket_bind(receiver, &address) == 0 &&
	               enet_socket_get_address(receiver, &address) == 0;
	Bytes packet = packet_of(state), room(1408);
	const int size = static_cast<int>(packet.size());
	ENetBuffer out{packet.data(), packet.size()}, in{};
	for (auto _ : state) {
		in = {room.data(), room.size()};
		is_well &= enet_socket_send(sender, &address, &out, 1) == size &&
		           enet_socket_receive(receiver, &from, &in, 1) == size;
		if (!is_well) break;
	}
	finish(state, is_well);
	enet_socket_destroy(sender);
	enet_socket_destroy(receiver);
	enet_deinitialize();
}

BENCHMARK(ours)->Name("udp_send_receive/ours")->Arg(64)->Arg(1200);
BENCHMARK(raw)->Name("udp_send_receive/raw_calls")->Arg(64)->Arg(1200);
BENCHMARK(with_enet)->Name("udp_send_receive/enet")->Arg(64)->Arg(1200);

} // namespace
