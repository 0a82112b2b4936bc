#include <morvantis/net/qonetaddress.h>

#include <morvantis/net/qonet.h>

#include <cstring>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

namespace {

// The name service is on during each test.
class Address_test : public testing::Test {
protected:
	void SetUp() override { ASSERT_TRUE(network_.initialize()); }
	void TearDown() override { network_.terminate(); }

	QoNet network_;
};

constexpr unsigned int loopback = 0x0100007F;

// The sixteen bytes of the form that the socket calls read.
std::string bytes_of(const QoNetAddress& address, size_t count = sizeof(sockaddr_in)) {
	return std::string(reinterpret_cast<const char*>(&address.socket_address), count);
}

// Family, port and address in `socket_address` agree with the two numbers.
void expect_in_step(const QoNetAddress& address) {
	EXPECT_EQ(address.socket_address.sin_family, 2);
	const std::string bytes = bytes_of(address);
	EXPECT_EQ(static_cast<unsigned char>(bytes[2]), address.port >> 8);
	EXPECT_EQ(static_cast<unsigned char>(bytes[3]), address.port & 0xFF);
	EXPECT_EQ(std::memcmp(bytes.data() + 4, &address.host, 4), 0);
}

} // namespace

TEST_F(Address_test, LayoutIsTheSystemFormThenPortThenHost) {
	EXPECT_TRUE(std::is_standard_layout_v<QoNetAddress>);
	EXPECT_EQ(offsetof(QoNetAddress, socket_address), 0u);
	EXPECT_EQ(offsetof(QoNetAddress, port), 16u);
	EXPECT_EQ(offsetof(QoNetAddress, host), 20u);
	EXPECT_EQ(sizeof(QoNetAddress), 24u);
}

TEST_F(Address_test, BeginsAsNoAddress) {
	const QoNetAddress address;
	EXPECT_EQ(address.get_port(), 0);
	EXPECT_EQ(address.get_host(), 0u);
	EXPECT_EQ(bytes_of(address, 8), std::string("\2\0\0\0\0\0\0\0", 8));
	EXPECT_FALSE(address.is_valid());
}

TEST_F(Address_test, IsValidWithHostOrPort) {
	QoNetAddress port_only, host_only, both;
	port_only.set_port(7);
	host_only.set_host(loopback, 0);
	both.set_host(loopback, 7);
	EXPECT_TRUE(port_only.is_valid());
	EXPECT_TRUE(host_only.is_valid());
	EXPECT_TRUE(both.is_valid());
}

TEST_F(Address_test, DottedLoopbackWithPort80) {
	QoNetAddress address;
	ASSERT_TRUE(address.set_host("127.0.0.1", 80));
	EXPECT_EQ(address.get_host(), 0x0100007Fu);
	EXPECT_EQ(address.get_reversed_host(), 0x7F000001u);
	EXPECT_EQ(address.get_port(), 80);
	EXPECT_EQ(bytes_of(address), std::string("\2\0\0\x50\x7F\0\0\1\0\0\0\0\0\0\0\0", 16));
}

TEST_F(Address_test, ReversesEveryByteOfTheHost) {
	QoNetAddress address;
	address.set_host(0x12345678u, 0);
	EXPECT_EQ(address.get_host(), 0x12345678u);
	EXPECT_EQ(address.get_reversed_host(), 0x78563412u);
}

TEST_F(Address_test, TakesNamesAndNumbers) {
	struct Case {
		const char* name;
		unsigned int reversed_host;
	};
	const Case cases[] = {
		{"localhost", 0x7F000001},
		{"127.0.0.1", 0x7F000001},
		{"10.20.30.40", 0x0A141E28},
		{"0.0.0.0", 0},
		{"1.2", 0x01000002}, // the last number fills the bytes that are left
		{" ", 0},            // no name, and read as numbers it is address 0
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.name);
		QoNetAddress address;
		address.set_host(0x55555555u, 1);
		EXPECT_TRUE(address.set_host(c.name, 50000));
		EXPECT_EQ(address.get_reversed_host(), c.reversed_host);
		EXPECT_EQ(address.get_port(), 50000);
		expect_in_step(address);
	}
}

TEST_F(Address_test, ClearsTheUnusedBytesWhenANameIsSet) {
	QoNetAddress address;
	std::memset(static_cast<void*>(&address), 0xAA, sizeof(address));
	ASSERT_TRUE(address.set_host("127.0.0.1", 80));
	EXPECT_EQ(bytes_of(address).substr(8), std::string(8, '\0'));
}

TEST_F(Address_test, UnresolvableNameKeepsOnlyTheOldHost) {
	const char* const names[] = {"no-such-host.invalid", "256.256.256.256.256", "1.2.3.x"};
	for (const char* name : names) {
		SCOPED_TRACE(name);
		QoNetAddress address;
		address.set_host(loopback, 80);
		EXPECT_FALSE(address.set_host(name, 4000));
		EXPECT_EQ(address.get_port(), 4000);
		EXPECT_EQ(address.get_host(), loopback);
		EXPECT_EQ(bytes_of(address), std::string(16, '\0'));
	}
}

// The empty name is this machine. Where the name service does not know it, it stays unresolvable,
// since no number is written there either.
TEST_F(Address_test, EmptyNameIsThisMachineOrFails) {
	QoNetAddress address;
	if (address.set_host("", 9)) {
		EXPECT_TRUE(address.is_valid());
		EXPECT_NE(address.get_host(), 0u);
		expect_in_step(address);
	} else {
		EXPECT_EQ(bytes_of(address), std::string(16, '\0'));
	}
}

TEST_F(Address_test, NumberIsTakenUnchanged) {
	QoNetAddress address;
	EXPECT_TRUE(address.set_host(0x0100007Fu, 0xABCD));
	EXPECT_EQ(address.get_host(), 0x0100007Fu);
	EXPECT_EQ(address.get_port(), 0xABCD);
	EXPECT_EQ(bytes_of(address, 8), "\2" + std::string("\0\xAB\xCD\x7F\0\0\1", 7));
}

TEST_F(Address_test, PortChangesInBothForms) {
	QoNetAddress address;
	address.set_host(loopback, 1);
	for (const int wide_port : {0, 1, 255, 256, 0x1234, 65535}) {
		const unsigned short port = static_cast<unsigned short>(wide_port);
		SCOPED_TRACE(port);
		address.set_port(port);
		EXPECT_EQ(address.get_port(), port);
		EXPECT_EQ(address.get_host(), loopback);
		expect_in_step(address);
	}
}

TEST_F(Address_test, SameLooksOnlyAtHostAndPort) {
	QoNetAddress one, other;
	one.set_host(loopback, 80);
	other.set_host(loopback, 80);
	std::memset(reinterpret_cast<char*>(&one.socket_address) + 8, 0x11, 8);
	std::memset(reinterpret_cast<char*>(&other.socket_address) + 8, 0x22, 8);
	EXPECT_TRUE(one.same_as(other));
	other.socket_address.sin_family = 99;
	EXPECT_TRUE(one.same_as(other));
	other.set_port(81);
	EXPECT_FALSE(one.same_as(other));
	other.set_host(loopback + 1, 80);
	EXPECT_FALSE(one.same_as(other));
}

TEST_F(Address_test, AssignmentCopiesAllThreeFields) {
	QoNetAddress one, other;
	one.set_host(loopback, 80);
	std::memset(reinterpret_cast<char*>(&one.socket_address) + 8, 0x11, 8);
	other = one;
	EXPECT_EQ(bytes_of(other), bytes_of(one));
	EXPECT_TRUE(other.same_as(one));
	const QoNetAddress copy(one);
	EXPECT_EQ(bytes_of(copy), bytes_of(one));
}

TEST_F(Address_test, ResetLeavesTheSystemForm) {
	QoNetAddress address;
	ASSERT_TRUE(address.set_host("127.0.0.1", 80));
	const std::string before = bytes_of(address);
	address.reset();
	EXPECT_EQ(address.get_host(), 0u);
	EXPECT_EQ(address.get_port(), 0);
	EXPECT_FALSE(address.is_valid());
	EXPECT_EQ(bytes_of(address), before);
}

TEST_F(Address_test, WritesTheDottedForm) {
	QoNetAddress address;
	address.set_host(0xFF00A8C0u, 80);
	char text[32];
	std::memset(text, '#', sizeof(text));
	address.get_host_ip(text, sizeof(text));
	EXPECT_STREQ(text, "192.168.0.255");
	EXPECT_EQ(std::string(text + 13, 19), std::string(19, '\0')) << "zeroes behind a short text";
}

TEST_F(Address_test, TextThatFillsItsRoomHasNoTerminator) {
	QoNetAddress address;
	address.set_host(loopback, 80);
	struct Case {
		size_t size;
		std::string text; // what stands in the first ten bytes
	};
	const Case cases[] = {
		{0, "##########"},
		{1, "1#########"},
		{8, "127.0.0.##"},
		{9, "127.0.0.1#"}, // exactly the text
		{10, std::string("127.0.0.1\0", 10)},
	};
	for (const Case& c : cases) {
		SCOPED_TRACE(c.size);
		char text[10];
		std::memset(text, '#', sizeof(text));
		address.get_host_ip(text, c.size);
		EXPECT_EQ(std::string(text, sizeof(text)), c.text);
	}
}

TEST_F(Address_test, WritesTheNameOfAHost) {
	QoNetAddress address;
	address.set_host(loopback, 80);
	char text[64];
	std::memset(text, '#', sizeof(text));
	address.get_host(text, sizeof(text));
	EXPECT_STREQ(text, "localhost");
	std::memset(text, '#', sizeof(text));
	address.get_host(text, 5);
	EXPECT_EQ(std::string(text, 6), "local#");
}

TEST_F(Address_test, HostWithoutANameIsWrittenInDottedForm) {
	QoNetAddress address;
	address.set_host(0xFE0000F0u, 80); // 240.0.0.254, of the range that is never handed out
	char text[64];
	std::memset(text, '#', sizeof(text));
	address.get_host(text, sizeof(text));
	EXPECT_STREQ(text, "240.0.0.254");
	std::memset(text, '#', sizeof(text));
	address.get_host(text, 3);
	EXPECT_EQ(std::string(text, 4), "240#");
}
