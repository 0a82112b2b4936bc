#include <morvantis/net/qonet.h>

#include <morvantis/core/xylreport.h>
#include <morvantis/platform/system/socket.h>

namespace {

constexpr char not_initialized_text[] = "Network could not be initialized, aborting.";
constexpr xylUInt16 socket_version = 0x0202; // 2.2: low byte major, high byte minor

} // namespace

bool QoNet::initialize() {
	if (is_initialized) return true;
	xylUInt16 given_version = 0;
	if (os::start_sockets(socket_version, &given_version)) {
		is_initialized = given_version == socket_version;
		if (!is_initialized) os::stop_sockets();
	}
	if (!is_initialized) xyl_error(not_initialized_text);
	return is_initialized;
}

void QoNet::terminate() {
	if (!is_initialized) return;
	os::stop_sockets();
	is_initialized = false;
}
