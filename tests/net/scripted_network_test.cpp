// The network layer on a system that fails on command. Real sockets are in the other tests.
#include <morvantis/net/qonet.h>
#include <morvantis/net/qonet_udp_socket.h>

#include "scripted_socket.h"

#include <cstring>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Scripted_network_test : public testing::Test {
protected:
	void SetUp() override { scripted_system = {}; }

	Scripted_system& system_ = scripted_system;
	unsigned char storage_[16] = {};
	QoNetRawBuffer buffer_{128, storage_};
};

constexpr char aborting_text[] = "Network could not be initialized, aborting.";

} // namespace

TEST_F(Scripted_network_test, StartsOnceForTwoInitializes) {
	QoNet network;
	EXPECT_TRUE(network.initialize());
	EXPECT_TRUE(network.initialize());
	EXPECT_THAT(system_.calls, ElementsAre("start 514"));
	network.terminate();
	EXPECT_THAT(system_.calls, ElementsAre("start 514", "stop"));
	network.terminate();
	EXPECT_THAT(system_.calls, ElementsAre("start 514", "stop")) << "off, so nothing to stop";
	EXPECT_THAT(system_.errors, IsEmpty());
}

TEST_F(Scripted_network_test, TerminateWithoutInitializeDoesNothing) {
	QoNet().terminate();
	EXPECT_THAT(system_.calls, IsEmpty());
}

TEST_F(Scripted_network_test, StartThatFailsIsReported) {
	system_.starts = false;
	QoNet network;
	EXPECT_FALSE(network.initialize());
	EXPECT_FALSE(network.is_initialized);
	EXPECT_THAT(system_.errors, ElementsAre(aborting_text));
	EXPECT_THAT(system_.calls, ElementsAre("start 514"));
	network.terminate();
	EXPECT_THAT(system_.calls, ElementsAre("start 514"));
	system_.starts = true;
	EXPECT_TRUE(network.initialize()) << "it may be tried again";
}

TEST_F(Scripted_network_test, AnyOtherVersionIsStoppedAndReported) {
	for (const int version : {0x0101, 0x0002, 0x0200, 0x0102, 0x0201, 0x0302, 0x0203}) {
		SCOPED_TRACE(version);
		system_ = {};
		system_.given_version = static_cast<xylUInt16>(version);
		QoNet network;
		EXPECT_FALSE(network.initialize());
		EXPECT_FALSE(network.is_initialized);
		EXPECT_THAT(system_.calls, ElementsAre("start 514", "stop"));
		EXPECT_THAT(system_.errors, ElementsAre(aborting_text));
	}
}

TEST_F(Scripted_network_test, NamesComeBeforeNumbers) {
	system_.named_host = 0x04030201;
	system_.parsed_host = 0x08070605;
	QoNetAddress address;
	EXPECT_TRUE(address.set_host("5.6.7.8", 80));
	EXPECT_EQ(address.get_host(), 0x04030201u);
	EXPECT_THAT(system_.calls, ElementsAre("find 5.6.7.8"));
}

TEST_F(Scripted_network_test, NumbersAreReadWhenNoNameIsFound) {
	system_.parsed_host = 0x08070605;
	QoNetAddress address;
	EXPECT_TRUE(address.set_host("5.6.7.8", 80));
	EXPECT_EQ(address.get_host(), 0x08070605u);
	EXPECT_EQ(address.socket_address.sin_family, AF_INET);
	EXPECT_EQ(address.socket_address.sin_addr.s_addr, 0x08070605u);
	EXPECT_THAT(system_.calls, ElementsAre("find 5.6.7.8", "parse 5.6.7.8"));
}

// The text of this address reads as the mark for a text that is none.
TEST_F(Scripted_network_test, AllOnesAddressComesOnlyFromTheNameService) {
	QoNetAddress address;
	EXPECT_FALSE(address.set_host("255.255.255.255", 80));
	system_.named_host = 0xFFFFFFFF;
	EXPECT_TRUE(address.set_host("255.255.255.255", 80));
	EXPECT_EQ(address.get_host(), 0xFFFFFFFFu);
}

TEST_F(Scripted_network_test, HostIsWrittenByNameThenByNumbersThenNotAtAll) {
	QoNetAddress address;
	address.set_host(5u, 0);
	char out[8];
	const auto written = [&] {
		std::memset(out, '#', sizeof(out));
		address.get_host(out, 6);
		return std::string(out, sizeof(out));
	};
	system_.name = "a.b";
	system_.text = "5.0.0.0";
	EXPECT_EQ(written(), std::string("a.b\0\0\0##", 8));
	EXPECT_THAT(system_.calls, ElementsAre("name 5"));
	system_.name = nullptr;
	EXPECT_EQ(written(), "5.0.0.##");
	system_.text = nullptr;
	EXPECT_EQ(written(), std::string("\0#######", 8));
}

TEST_F(Scripted_network_test, DottedFormAsksNoNameService) {
	QoNetAddress address;
	char out[4] = {'#', '#', '#', '#'};
	system_.name = "a.b";
	address.get_host_ip(out, 4);
	EXPECT_EQ(std::string(out, 4), std::string("\0###", 4));
	EXPECT_THAT(system_.calls, ElementsAre("text 0"));
}

TEST_F(Scripted_network_test, NoSocketToBeHad) {
	system_.next_handle = os::no_socket;
	QoNet_udp_socket socket;
	socket.socket_handle = 3;
	EXPECT_FALSE(socket.bind_socket(nullptr));
	EXPECT_EQ(socket.socket_handle, -1);
	EXPECT_THAT(system_.calls, ElementsAre("open"));
}

TEST_F(Scripted_network_test, BindThatFailsClosesTheSocket) {
	system_.binds = false;
	QoNet_udp_socket socket;
	EXPECT_FALSE(socket.bind_socket(nullptr));
	EXPECT_EQ(socket.socket_handle, -1);
	EXPECT_THAT(system_.calls, ElementsAre("open", "bind 7 2 0", "close 7"));
}

TEST_F(Scripted_network_test, BindSetsNoOption) {
	QoNet_udp_socket socket;
	QoNetAddress address;
	address.set_host(9u, 80);
	EXPECT_TRUE(socket.bind_socket(&address));
	EXPECT_THAT(system_.calls, ElementsAre("open", "bind 7 2 9"));
}

TEST_F(Scripted_network_test, EachOptionIsOneCall) {
	QoNet_udp_socket socket;
	socket.socket_handle = 7;
	for (int option = 1; option <= 4; ++option) {
		SCOPED_TRACE(option);
		system_ = {};
		EXPECT_TRUE(socket.set_socket_option(static_cast<QoNetSocketOption>(option), 100 + option));
		EXPECT_THAT(system_.calls, ElementsAre("option 7 " + std::to_string(option - 1) + ' ' +
		                                       std::to_string(100 + option)));
		system_.sets_option = false;
		EXPECT_FALSE(socket.set_socket_option(static_cast<QoNetSocketOption>(option), 1));
		EXPECT_EQ(socket.socket_handle, 7);
	}
}

TEST_F(Scripted_network_test, UnknownOptionMakesNoCall) {
	QoNet_udp_socket socket;
	for (const int option : {0, 5, -1}) {
		SCOPED_TRACE(option);
		EXPECT_FALSE(socket.set_socket_option(static_cast<QoNetSocketOption>(option), 1));
	}
	EXPECT_THAT(system_.calls, IsEmpty());
}

TEST_F(Scripted_network_test, SendGivesBytesZeroOrMinusOne) {
	struct Case {
		const char* name;
		os::Transfer transfer;
		int result;
	};
	const Case cases[] = {
		{"done", os::Transfer::done, 11},
		{"would block", os::Transfer::would_block, 0},
		{"failed", os::Transfer::failed, -1},
	};
	QoNet_udp_socket socket;
	socket.socket_handle = 7;
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		system_ = {};
		system_.transfer = c.transfer;
		system_.bytes = 11;
		EXPECT_EQ(socket.send(&buffer_, 16, QoNetAddress()), c.result);
		EXPECT_THAT(system_.calls, ElementsAre("send 7 16"));
	}
}

TEST_F(Scripted_network_test, SendOfNothingIsPassedOn) {
	QoNet_udp_socket socket;
	EXPECT_EQ(socket.send(&buffer_, 0, QoNetAddress()), 0);
	EXPECT_THAT(system_.calls, ElementsAre("send -1 0"));
}

TEST_F(Scripted_network_test, SendHasNoUseForTheCapacity) {
	buffer_.capacity_in_bits = 8;
	QoNet_udp_socket socket;
	system_.bytes = 16;
	EXPECT_EQ(socket.send(&buffer_, 16, QoNetAddress()), 16);
	EXPECT_THAT(system_.calls, ElementsAre("send -1 16"));
}

TEST_F(Scripted_network_test, ReceiveFillsSizeAndSender) {
	system_.bytes = 13;
	system_.sender_host = 0x0100007F;
	system_.sender_port[0] = 0x12;
	system_.sender_port[1] = 0x34;
	QoNet_udp_socket socket;
	int size = -1;
	QoNetAddress sender;
	EXPECT_TRUE(socket.receive(&buffer_, size, sender));
	EXPECT_EQ(size, 13);
	EXPECT_EQ(sender.get_host(), 0x0100007Fu);
	EXPECT_EQ(sender.get_port(), 0x1234);
	EXPECT_THAT(system_.calls, ElementsAre("receive -1 16"));
}

TEST_F(Scripted_network_test, PartialFlagFailsTheReceiveButFillsTheSender) {
	system_.bytes = 16;
	system_.truncates = true;
	system_.sender_host = 5;
	system_.sender_port[1] = 80;
	QoNet_udp_socket socket;
	int size = -1;
	QoNetAddress sender;
	EXPECT_FALSE(socket.receive(&buffer_, size, sender));
	EXPECT_EQ(size, 0);
	EXPECT_EQ(sender.get_host(), 5u);
	EXPECT_EQ(sender.get_port(), 80);
}

TEST_F(Scripted_network_test, ReceiveThatFailsKeepsTheTwoNumbersOfTheSender) {
	for (const os::Transfer transfer : {os::Transfer::would_block, os::Transfer::failed}) {
		SCOPED_TRACE(static_cast<int>(transfer));
		system_.transfer = transfer;
		system_.sender_host = 5;
		QoNet_udp_socket socket;
		int size = -1;
		QoNetAddress sender;
		sender.set_host(9u, 90);
		EXPECT_FALSE(socket.receive(&buffer_, size, sender));
		EXPECT_EQ(size, 0);
		EXPECT_EQ(sender.get_host(), 9u);
		EXPECT_EQ(sender.get_port(), 90);
	}
}

TEST_F(Scripted_network_test, CloseTwiceClosesOnce) {
	QoNet_udp_socket socket;
	socket.close_socket();
	EXPECT_THAT(system_.calls, IsEmpty());
	ASSERT_TRUE(socket.bind_socket(nullptr));
	system_.calls.clear();
	socket.close_socket();
	socket.close_socket();
	EXPECT_THAT(system_.calls, ElementsAre("close 7"));
}

TEST_F(Scripted_network_test, ResetAndDestructorCloseNothing) {
	{
		QoNet_udp_socket forgotten, ended;
		ASSERT_TRUE(forgotten.bind_socket(nullptr));
		ASSERT_TRUE(ended.bind_socket(nullptr));
		system_.calls.clear();
		forgotten.reset();
	}
	EXPECT_THAT(system_.calls, IsEmpty());
}
