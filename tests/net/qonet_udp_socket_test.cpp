#include <morvantis/net/qonet_udp_socket.h>

#include <morvantis/net/dynamic_bit_buffer.h>

#include "socket_support.h"
#include "virtual_order.h"

#include <cstring>
#include <new>
#include <set>
#include <thread>

#include <gtest/gtest.h>

// What no working system does is in scripted_network_test.cpp.

namespace {

using Udp_socket_test = Loopback_test;

constexpr int largest_datagram = 65507; // 65,535 less the headers of IP (20) and UDP (8)

// How often the destructor ran, told apart from what the class does in it.
struct Counted_socket : QoNet_udp_socket {
	explicit Counted_socket(int* ends) : ends_(ends) {}
	~Counted_socket() override { ++*ends_; }
	int* ends_;
};

} // namespace

TEST_F(Udp_socket_test, FieldsStandBehindTheTable) {
	EXPECT_EQ(sizeof(UDP_socket), 8u);
	EXPECT_EQ(sizeof(QoNet_udp_socket), 32u);
	const QoNet_udp_socket socket;
	const auto offset = [&](const auto& field) {
		return reinterpret_cast<const char*>(&field) - reinterpret_cast<const char*>(&socket);
	};
	EXPECT_EQ(offset(socket.socket_handle), 8);
	EXPECT_EQ(offset(socket.local_address), 16);
}

TEST_F(Udp_socket_test, RawBufferIsCapacityThenData) {
	EXPECT_EQ(offsetof(QoNetRawBuffer, capacity_in_bits), 0u);
	EXPECT_EQ(offsetof(QoNetRawBuffer, data), 8u);
	EXPECT_EQ(sizeof(QoNetRawBuffer), 16u);
}

TEST_F(Udp_socket_test, OptionsAreNumberedFromOne) {
	EXPECT_EQ(QoNet_socket_non_blocking, 1);
	EXPECT_EQ(QoNet_socket_broadcast, 2);
	EXPECT_EQ(QoNet_socket_receive_buffer_size, 3);
	EXPECT_EQ(QoNet_socket_send_buffer_size, 4);
}

TEST_F(Udp_socket_test, VirtualOperationsKeepTheirOrder) {
	const size_t numbers[] = {
		virtual_index(&UDP_socket::reset),
		virtual_index(&UDP_socket::bind_socket),
		virtual_index(&UDP_socket::set_socket_option),
		virtual_index(&UDP_socket::close_socket),
		virtual_index(&UDP_socket::send),
		virtual_index(&UDP_socket::receive),
		virtual_index(&UDP_socket::is_active),
	};
	for (size_t i = 0; i < 7; ++i) EXPECT_EQ(numbers[i], i);
}

TEST_F(Udp_socket_test, BeginsInactive) {
	const QoNet_udp_socket socket;
	EXPECT_EQ(socket.socket_handle, -1);
	EXPECT_FALSE(socket.is_active());
	const sockaddr_in zero{};
	EXPECT_EQ(std::memcmp(&socket.local_address, &zero, sizeof(zero)), 0);
}

TEST_F(Udp_socket_test, WorksThroughTheAbstractClass) {
	QoNet_udp_socket own;
	UDP_socket& socket = own;
	EXPECT_TRUE(socket.bind_socket(nullptr));
	EXPECT_TRUE(socket.is_active());
	EXPECT_TRUE(socket.set_socket_option(QoNet_socket_non_blocking, 1));
	unsigned char byte = 42;
	QoNetRawBuffer buffer{8, &byte};
	EXPECT_EQ(socket.send(&buffer, 1, there_address_), 1);
	int size = -1;
	QoNetAddress sender;
	EXPECT_FALSE(socket.receive(&buffer, size, sender));
	EXPECT_EQ(receive(there_).data, Bytes{42});
	socket.close_socket();
	EXPECT_FALSE(socket.is_active());
	socket.reset();
}

TEST_F(Udp_socket_test, BindsWhereItIsTold) {
	QoNet_udp_socket socket;
	const QoNetAddress any_port = loopback_address(0);
	ASSERT_TRUE(socket.bind_socket(&any_port));
	EXPECT_TRUE(socket.is_active());
	EXPECT_EQ(socket.local_address.sin_family, AF_INET);
	EXPECT_EQ(socket.local_address.sin_port, 0) << "as asked for, not as chosen";
	EXPECT_EQ(socket.local_address.sin_addr.s_addr, loopback_host);
	const unsigned short port = bound_port(socket);
	EXPECT_NE(port, 0);
	socket.close_socket();

	const QoNetAddress exact = loopback_address(port);
	ASSERT_TRUE(socket.bind_socket(&exact));
	EXPECT_EQ(bound_port(socket), port);
	EXPECT_EQ(socket.local_address.sin_port, exact.socket_address.sin_port);
	socket.close_socket();
}

TEST_F(Udp_socket_test, BindsByTheTwoNumbersOfAnAddress) {
	QoNetAddress address = here_address_; // a port in use, which reset() leaves in the other form
	address.reset();
	QoNet_udp_socket socket;
	ASSERT_TRUE(socket.bind_socket(&address));
	EXPECT_NE(bound_port(socket), here_address_.get_port());
	EXPECT_EQ(socket.local_address.sin_addr.s_addr, 0u);
	socket.close_socket();
}

TEST_F(Udp_socket_test, NullBindsAnyAddressAndAPortOfTheSystem) {
	QoNet_udp_socket socket;
	std::memset(&socket.local_address, 0xAA, sizeof(socket.local_address));
	ASSERT_TRUE(socket.bind_socket(nullptr));
	sockaddr_in expected{};
	expected.sin_family = AF_INET;
	EXPECT_EQ(std::memcmp(&socket.local_address, &expected, sizeof(expected)), 0);
	const unsigned short port = bound_port(socket);
	EXPECT_NE(port, 0);
	ASSERT_EQ(send(here_, patterned(3), loopback_address(port)), 3);
	EXPECT_EQ(receive(socket).data, patterned(3));
	socket.close_socket();
}

TEST_F(Udp_socket_test, PortInUseIsRefusedAndLeavesNoSocket) {
	QoNet_udp_socket socket;
	EXPECT_FALSE(socket.bind_socket(&here_address_));
	EXPECT_FALSE(socket.is_active());
	EXPECT_EQ(socket.socket_handle, -1);
	here_.close_socket();
	EXPECT_TRUE(socket.bind_socket(&here_address_)) << "free again";
	socket.close_socket();
}

TEST_F(Udp_socket_test, DatagramsOfEverySizeArriveWhole) {
	for (const int size : {0, 1, 2, 7, 64, 508, 1200, 1408, 1472, 8192, 65506, largest_datagram}) {
		SCOPED_TRACE(size);
		const Bytes data = patterned(static_cast<size_t>(size), static_cast<unsigned int>(size));
		ASSERT_EQ(send(here_, data, there_address_), size);
		const Received received = receive(there_);
		EXPECT_TRUE(received.has_arrived);
		EXPECT_EQ(received.size, size);
		EXPECT_EQ(received.data, data);
		EXPECT_TRUE(received.sender.same_as(here_address_));
	}
}

TEST_F(Udp_socket_test, SenderIsAnAddressToAnswerTo) {
	ASSERT_EQ(send(here_, patterned(5), there_address_), 5);
	const Received question = receive(there_);
	ASSERT_TRUE(question.has_arrived);
	EXPECT_EQ(question.sender.get_host(), loopback_host);
	EXPECT_EQ(question.sender.get_port(), bound_port(here_));
	EXPECT_EQ(question.sender.socket_address.sin_family, AF_INET);
	ASSERT_EQ(send(there_, patterned(6, 1), question.sender), 6);
	EXPECT_EQ(receive(here_).data, patterned(6, 1));
}

TEST_F(Udp_socket_test, SendsToTheSystemFormOfTheAddress) {
	QoNetAddress address = there_address_;
	address.reset();
	ASSERT_EQ(send(here_, patterned(4), address), 4);
	EXPECT_EQ(receive(there_).data, patterned(4));
}

TEST_F(Udp_socket_test, EmptyDatagramIsADatagram) {
	ASSERT_EQ(send(here_, {}, there_address_), 0);
	ASSERT_EQ(send(here_, patterned(1), there_address_), 1);
	const Received received = receive(there_);
	EXPECT_TRUE(received.has_arrived);
	EXPECT_EQ(received.size, 0);
	EXPECT_TRUE(received.sender.same_as(here_address_));
	EXPECT_EQ(receive(there_).size, 1);
}

TEST_F(Udp_socket_test, OversizedDatagramIsNotSent) {
	for (const int size : {largest_datagram + 1, 65536, 100000}) {
		SCOPED_TRACE(size);
		EXPECT_EQ(send(here_, patterned(static_cast<size_t>(size)), there_address_), -1);
	}
	ASSERT_TRUE(there_.set_socket_option(QoNet_socket_non_blocking, 1));
	EXPECT_FALSE(receive(there_).has_arrived);
}

TEST_F(Udp_socket_test, TruncatedDatagramIsAFailedReceive) {
	struct Case {
		size_t sent, capacity;
	};
	for (const Case& c :
	     {Case{2, 1}, Case{1, 0}, Case{100, 99}, Case{1409, 1408}, Case{largest_datagram, 1200}}) {
		SCOPED_TRACE(c.sent);
		ASSERT_EQ(send(here_, patterned(c.sent), there_address_), static_cast<int>(c.sent));
		ASSERT_EQ(send(here_, {}, there_address_), 0);
		const Received cut = receive(there_, c.capacity);
		EXPECT_FALSE(cut.has_arrived);
		EXPECT_EQ(cut.size, 0);
		const Received next = receive(there_, c.capacity);
		EXPECT_TRUE(next.has_arrived) << "the rest of the cut one is lost, the next is whole";
		EXPECT_EQ(next.size, 0);
	}
}

TEST_F(Udp_socket_test, CapacityInBitsIsCutToWholeBytes) {
	unsigned char storage[4] = {9, 9, 9, 9};
	QoNetRawBuffer buffer{23, storage};
	int size = -1;
	QoNetAddress sender;
	ASSERT_EQ(send(here_, {1, 2}, there_address_), 2);
	EXPECT_TRUE(there_.receive(&buffer, size, sender));
	EXPECT_EQ(size, 2);
	ASSERT_EQ(send(here_, {1, 2, 3}, there_address_), 3);
	EXPECT_FALSE(there_.receive(&buffer, size, sender));
	EXPECT_EQ(size, 0);
	EXPECT_EQ(storage[2], 9) << "nothing is written behind the capacity";
}

TEST_F(Udp_socket_test, DoubledDatagramArrivesTwice) {
	for (int i = 0; i < 2; ++i) ASSERT_EQ(send(here_, patterned(32), there_address_), 32);
	for (int i = 0; i < 2; ++i) EXPECT_EQ(receive(there_).data, patterned(32));
}

// A queue that is full loses datagrams without a word to the sender, and what it keeps is whole.
TEST_F(Udp_socket_test, LostDatagramsLeaveTheOthersWhole) {
	constexpr unsigned int sent = 500;
	ASSERT_TRUE(there_.set_socket_option(QoNet_socket_receive_buffer_size, 4096));
	ASSERT_TRUE(there_.set_socket_option(QoNet_socket_non_blocking, 1));
	for (unsigned int i = 0; i < sent; ++i) {
		ASSERT_EQ(send(here_, patterned(1000, i), there_address_), 1000);
	}
	std::set<Bytes> expected;
	for (unsigned int i = 0; i < sent; ++i) expected.insert(patterned(1000, i));
	unsigned int arrived = 0;
	for (Received next = receive(there_); next.has_arrived; next = receive(there_)) {
		++arrived;
		EXPECT_EQ(expected.erase(next.data), 1u) << "whole, and each one once";
	}
	EXPECT_GT(arrived, 0u);
	EXPECT_LT(arrived, sent);
}

TEST_F(Udp_socket_test, NonBlockingReceiveOfNothingFails) {
	ASSERT_TRUE(there_.set_socket_option(QoNet_socket_non_blocking, 1));
	const Received nothing = receive(there_);
	EXPECT_FALSE(nothing.has_arrived);
	EXPECT_EQ(nothing.size, 0);
	ASSERT_EQ(send(here_, patterned(9), there_address_), 9);
	EXPECT_EQ(receive(there_).size, 9);
	EXPECT_FALSE(receive(there_).has_arrived);
}

TEST_F(Udp_socket_test, ReceiveWaitsUnlessTheOptionIsOn) {
	ASSERT_TRUE(there_.set_socket_option(QoNet_socket_non_blocking, 1));
	ASSERT_TRUE(there_.set_socket_option(QoNet_socket_non_blocking, 0));
	for (unsigned int round = 0; round < 20; ++round) {
		Received received;
		std::thread waiting([&] { received = receive(there_); });
		std::this_thread::yield();
		EXPECT_EQ(send(here_, patterned(16, round), there_address_), 16);
		waiting.join();
		ASSERT_TRUE(received.has_arrived);
		EXPECT_EQ(received.data, patterned(16, round));
	}
}

TEST_F(Udp_socket_test, BroadcastIsRefusedUntilAllowed) {
	QoNet_udp_socket listener;
	ASSERT_TRUE(listener.bind_socket(nullptr));
	QoNetAddress everybody;
	ASSERT_TRUE(everybody.set_host("127.255.255.255", bound_port(listener)));
	EXPECT_EQ(send(here_, patterned(8), everybody), -1);
	ASSERT_TRUE(here_.set_socket_option(QoNet_socket_broadcast, 1));
	EXPECT_EQ(send(here_, patterned(8), everybody), 8);
	EXPECT_EQ(receive(listener).data, patterned(8));
	ASSERT_TRUE(here_.set_socket_option(QoNet_socket_broadcast, 0));
	EXPECT_EQ(send(here_, patterned(8), everybody), -1);
	listener.close_socket();
}

// The system may give more than it is asked for, and rounds.
TEST_F(Udp_socket_test, BufferSizesReachTheSystem) {
	const int former_send_size = send_buffer_size(here_);
	ASSERT_TRUE(here_.set_socket_option(QoNet_socket_receive_buffer_size, 32768));
	EXPECT_GE(receive_buffer_size(here_), 32768);
	EXPECT_LE(receive_buffer_size(here_), 2 * 32768);
	EXPECT_EQ(send_buffer_size(here_), former_send_size);
	const int new_receive_size = receive_buffer_size(here_);
	ASSERT_TRUE(here_.set_socket_option(QoNet_socket_send_buffer_size, 16384));
	EXPECT_GE(send_buffer_size(here_), 16384);
	EXPECT_LE(send_buffer_size(here_), 2 * 16384);
	EXPECT_EQ(receive_buffer_size(here_), new_receive_size);
}

TEST_F(Udp_socket_test, UnknownOptionIsRefused) {
	for (const int option : {0, 5, -1, 1000, -2147483647 - 1, 2147483647}) {
		SCOPED_TRACE(option);
		EXPECT_FALSE(here_.set_socket_option(static_cast<QoNetSocketOption>(option), 1));
	}
}

TEST_F(Udp_socket_test, InactiveSocketFailsInEveryOperation) {
	here_.close_socket();
	for (const QoNetSocketOption option :
	     {QoNet_socket_non_blocking, QoNet_socket_broadcast, QoNet_socket_receive_buffer_size,
	      QoNet_socket_send_buffer_size}) {
		SCOPED_TRACE(option);
		EXPECT_FALSE(here_.set_socket_option(option, 1));
	}
	EXPECT_EQ(send(here_, patterned(4), there_address_), -1);
	const Received nothing = receive(here_);
	EXPECT_FALSE(nothing.has_arrived);
	EXPECT_EQ(nothing.size, 0);
}

TEST_F(Udp_socket_test, ClosedPortSwallowsWhatIsSent) {
	there_.close_socket();
	EXPECT_EQ(send(here_, patterned(4), there_address_), 4);
	ASSERT_TRUE(here_.set_socket_option(QoNet_socket_non_blocking, 1));
	EXPECT_FALSE(receive(here_).has_arrived);
	EXPECT_EQ(send(here_, patterned(4), there_address_), 4);
}

TEST_F(Udp_socket_test, SecondCloseDoesNothing) {
	const QoNetAddress any_port = loopback_address(0);
	here_.close_socket();
	EXPECT_FALSE(here_.is_active());
	EXPECT_EQ(here_.socket_handle, -1);
	QoNet_udp_socket next; // a system may hand the same number out again
	ASSERT_TRUE(next.bind_socket(&any_port));
	here_.close_socket();
	EXPECT_EQ(send(next, patterned(2), there_address_), 2);
	next.close_socket();
}

TEST_F(Udp_socket_test, ResetForgetsWithoutClosing) {
	const QoNet_udp_socket kept = there_;
	QoNet_udp_socket other = kept;
	there_.reset();
	EXPECT_FALSE(there_.is_active());
	EXPECT_EQ(there_.socket_handle, -1);
	const sockaddr_in zero{};
	EXPECT_EQ(std::memcmp(&there_.local_address, &zero, sizeof(zero)), 0);
	there_.close_socket();
	ASSERT_EQ(send(here_, patterned(12), there_address_), 12);
	EXPECT_EQ(receive(other).data, patterned(12)) << "open under its other name";
	other.close_socket();
}

TEST_F(Udp_socket_test, CopiesNameOneSystemSocket) {
	QoNet_udp_socket copy(there_), assigned;
	assigned = there_;
	for (QoNet_udp_socket* socket : {&copy, &assigned}) {
		EXPECT_EQ(socket->socket_handle, there_.socket_handle);
		EXPECT_EQ(std::memcmp(&socket->local_address, &there_.local_address, sizeof(sockaddr_in)),
		          0);
		ASSERT_EQ(send(here_, patterned(3), there_address_), 3);
		EXPECT_EQ(receive(*socket).data, patterned(3));
	}
	copy.close_socket();
	EXPECT_TRUE(there_.is_active()) << "it does not know";
	EXPECT_EQ(send(there_, patterned(3), here_address_), -1);
	there_.reset();
}

TEST_F(Udp_socket_test, DestructorLeavesTheSystemSocketOpen) {
	QoNet_udp_socket owner;
	{
		const QoNet_udp_socket temporary = there_;
		owner = temporary;
	}
	ASSERT_EQ(send(here_, patterned(3), there_address_), 3);
	EXPECT_EQ(receive(owner).data, patterned(3));
}

TEST_F(Udp_socket_test, DestructorIsVirtual) {
	int ends = 0;
	alignas(Counted_socket) unsigned char storage[sizeof(Counted_socket)];
	QoNet_udp_socket* socket = new (storage) Counted_socket(&ends);
	socket->~QoNet_udp_socket();
	EXPECT_EQ(ends, 1);
}

TEST_F(Udp_socket_test, SecondBindForgetsTheFirstSocket) {
	QoNet_udp_socket first = there_;
	const QoNetAddress any_port = loopback_address(0);
	ASSERT_TRUE(there_.bind_socket(&any_port));
	EXPECT_NE(there_.socket_handle, first.socket_handle);
	ASSERT_EQ(send(here_, patterned(3), there_address_), 3);
	EXPECT_EQ(receive(first).data, patterned(3));
	first.close_socket();
}

TEST_F(Udp_socket_test, ReceivesStraightIntoABitBuffer) {
	Dynamic_bit_buffer out, in;
	out.append_bits_from_uint32(5, 3);
	out.append_bits_from_uint32(0xAB, 8);
	ASSERT_EQ(here_.send(out.as_raw_buffer(), out.size_in_bytes(), there_address_), 2);
	int size = 0;
	QoNetAddress sender;
	ASSERT_TRUE(there_.receive(in.as_raw_buffer(), size, sender));
	EXPECT_EQ(size, 2);
	in.initialize_after_read(size);
	unsigned int value = 0;
	EXPECT_TRUE(in.read_bits_to_uint32(value, 3));
	EXPECT_EQ(value, 5u);
	EXPECT_TRUE(in.read_bits_to_uint32(value, 8));
	EXPECT_EQ(value, 0xABu);
}

TEST_F(Udp_socket_test, BitBufferTakesDatagramsUpToItsCapacity) {
	const int capacity = Dynamic_bit_buffer::static_buffer_size_in_bytes;
	Dynamic_bit_buffer in;
	int size = 0;
	QoNetAddress sender;
	ASSERT_EQ(send(here_, patterned(1408), there_address_), capacity);
	EXPECT_TRUE(there_.receive(in.as_raw_buffer(), size, sender));
	EXPECT_EQ(size, capacity);
	EXPECT_EQ(Bytes(in.get_buffer(), in.get_buffer() + size), patterned(1408));
	ASSERT_EQ(send(here_, patterned(1409), there_address_), capacity + 1);
	EXPECT_FALSE(there_.receive(in.as_raw_buffer(), size, sender));
	EXPECT_EQ(size, 0);
}

// A datagram socket never fills its queue on this interface; a connection that nobody reads does.
TEST_F(Udp_socket_test, FullSendQueueShowsAsZeroBytes) {
	Stream_pair pair;
	ASSERT_TRUE(pair.connect());
	ASSERT_TRUE(pair.sender.set_socket_option(QoNet_socket_non_blocking, 1));
	int sent = 1;
	for (int i = 0; i < 10000 && sent > 0; ++i) {
		sent = send(pair.sender, patterned(65536), there_address_);
	}
	EXPECT_EQ(sent, 0);
	pair.sender.close_socket();
	pair.listener.close_socket();
}
