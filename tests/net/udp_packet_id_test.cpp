#include <morvantis/net/udp_packet_id.h>

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

namespace {

TEST(udp_packet_id, ConstructorsSetBothNumbers) {
	const udp_packet_id none;
	EXPECT_EQ(none.tick_no, 0);
	EXPECT_EQ(none.packet_no, 0);
	const udp_packet_id some(7, 9);
	EXPECT_EQ(some.tick_no, 7);
	EXPECT_EQ(some.packet_no, 9);
}

TEST(udp_packet_id, ConstantsHaveTheirNumbers) {
	EXPECT_EQ(udp_packet_id::PACKET_ID_UNRELIABLE.tick_no, -1);
	EXPECT_EQ(udp_packet_id::PACKET_ID_UNRELIABLE.packet_no, -1);
	EXPECT_EQ(udp_packet_id::PACKET_NO_NOT_ASSIGNED.tick_no, 0);
	EXPECT_EQ(udp_packet_id::PACKET_NO_NOT_ASSIGNED.packet_no, 0);
	EXPECT_EQ(udp_packet_id::PACKET_ID_ZERO.tick_no, 0);
	EXPECT_EQ(udp_packet_id::PACKET_ID_ZERO.packet_no, 0);
}

TEST(udp_packet_id, AssignmentIsMemberwise) {
	udp_packet_id source(7, 9), target;
	target = source;
	EXPECT_EQ(target.tick_no, 7);
	EXPECT_EQ(target.packet_no, 9);
	target = udp_packet_id(1, 2);
	EXPECT_EQ(target.tick_no, 1);
	EXPECT_EQ(target.packet_no, 2);
	target = std::move(source);
	EXPECT_EQ(target.tick_no, 7);
	EXPECT_EQ(source.tick_no, 7);
}

TEST(udp_packet_id, IsAPlainRecordOfTwoNumbers) {
	EXPECT_EQ(sizeof(udp_packet_id), 8u);
	EXPECT_EQ(offsetof(udp_packet_id, packet_no), 4u);
	EXPECT_TRUE(std::is_trivially_copyable_v<udp_packet_id>);
}

} // namespace
