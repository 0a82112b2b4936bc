#include <morvantis/net/qonet.h>

#include <morvantis/net/qonet_udp_socket.h>

#include <gtest/gtest.h>

// What no working system does, a start that fails or gives another version, is in
// scripted_network_test.cpp.

TEST(QoNet, BeginsOff) { EXPECT_FALSE(QoNet().is_initialized); }

TEST(QoNet, TurnsOnAndOffAgain) {
	QoNet network;
	EXPECT_TRUE(network.initialize());
	EXPECT_TRUE(network.is_initialized);
	network.terminate();
	EXPECT_FALSE(network.is_initialized);
}

TEST(QoNet, TurnsOnAgainAfterStopping) {
	QoNet network;
	for (int round = 0; round < 3; ++round) {
		SCOPED_TRACE(round);
		ASSERT_TRUE(network.initialize());
		QoNet_udp_socket socket;
		EXPECT_TRUE(socket.bind_socket(nullptr));
		socket.close_socket();
		network.terminate();
	}
}

TEST(QoNet, SecondInitializeIsTrue) {
	QoNet network;
	ASSERT_TRUE(network.initialize());
	EXPECT_TRUE(network.initialize());
	network.terminate();
}

TEST(QoNet, TerminateWithoutInitializeStopsNobodyElse) {
	QoNet network, other;
	ASSERT_TRUE(network.initialize());
	other.terminate();
	other.terminate();
	QoNet_udp_socket socket;
	EXPECT_TRUE(socket.bind_socket(nullptr));
	socket.close_socket();
	network.terminate();
}
