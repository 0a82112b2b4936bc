// Start and stop of the system's socket library.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API

// Whether the process may use sockets. The library keeps one instance, zubLibrary::get_qonet(),
// which the host starts itself before it binds its first socket.
//
// Neither operation takes a lock: they belong to start-up and shutdown. The destructor stops
// nothing.
class MORVANTIS_API QoNet {
public:
	QoNet() = default;

	// Starts the socket library, version 2.2, and returns whether it is on. A second call returns
	// true and starts nothing again. On failure, or when another version is given, it stays off
	// and the host gets one error. Where sockets need no start this always succeeds.
	bool initialize();

	// Stops the socket library if it is on, otherwise nothing. Sockets have to be closed before;
	// nothing enforces it.
	void terminate();

	bool is_initialized = false; // on or off
};
static_assert(sizeof(QoNet) == 1);
