#include <morvantis/net/udp_packet_id.h>

constinit const udp_packet_id udp_packet_id::PACKET_ID_UNRELIABLE{-1, -1};
constinit const udp_packet_id udp_packet_id::PACKET_NO_NOT_ASSIGNED{0, 0};
constinit const udp_packet_id udp_packet_id::PACKET_ID_ZERO{0, 0};
