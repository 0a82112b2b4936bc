#include "scripted_socket.h"

#include <morvantis/core/xylreport.h>
#include <morvantis/net/qonetaddress.h> // sockaddr_in

#include <cstdarg>
#include <cstdio>
#include <cstring>

Scripted_system scripted_system;

namespace {

void record(const char* call, std::initializer_list<long long> values = {}) {
	std::string text = call;
	for (const long long value : values) text += ' ' + std::to_string(value);
	scripted_system.calls.push_back(text);
}

} // namespace

// The host's end of the report: the one function of the library that the layer's logic calls.
void xyl_error(const char* format, ...) {
	char text[512];
	va_list arguments;
	va_start(arguments, format);
	std::vsnprintf(text, sizeof(text), format, arguments);
	va_end(arguments);
	scripted_system.errors.push_back(text);
}

bool os::start_sockets(xylUInt16 wanted_version, xylUInt16* given_version) {
	record("start", {wanted_version});
	if (scripted_system.starts) *given_version = scripted_system.given_version;
	return scripted_system.starts;
}

void os::stop_sockets() { record("stop"); }

xylInt64 os::open_datagram_socket() {
	record("open");
	return scripted_system.next_handle;
}

bool os::bind_socket(xylInt64 handle, const void* address) {
	sockaddr_in given;
	std::memcpy(&given, address, sizeof(given));
	record("bind", {handle, given.sin_family, given.sin_addr.s_addr});
	return scripted_system.binds;
}

void os::close_socket(xylInt64 handle) { record("close", {handle}); }

bool os::set_socket_option(xylInt64 handle, Socket_option option, int value) {
	record("option", {handle, static_cast<int>(option), value});
	return scripted_system.sets_option;
}

os::Transfer os::send_to(xylInt64 handle, const void*, int size, const void*, int* sent) {
	record("send", {handle, size});
	if (scripted_system.transfer == Transfer::done) *sent = scripted_system.bytes;
	return scripted_system.transfer;
}

os::Transfer os::receive_from(xylInt64 handle, void*, int size, void* address, int* received,
                              bool* truncated) {
	record("receive", {handle, size});
	sockaddr_in sender{};
	sender.sin_family = AF_INET;
	std::memcpy(&sender.sin_port, scripted_system.sender_port, 2);
	sender.sin_addr.s_addr = scripted_system.sender_host;
	std::memcpy(address, &sender, sizeof(sender));
	if (scripted_system.transfer != Transfer::done) return scripted_system.transfer;
	*received = scripted_system.bytes;
	*truncated = scripted_system.truncates;
	return Transfer::done;
}

bool os::find_host(const char* name, xylUInt32* host) {
	record((std::string("find ") + name).c_str());
	if (scripted_system.named_host) *host = *scripted_system.named_host;
	return scripted_system.named_host.has_value();
}

const char* os::host_name(xylUInt32 host) {
	record("name", {host});
	return scripted_system.name;
}

xylUInt32 os::parse_host(const char* text) {
	record((std::string("parse ") + text).c_str());
	return scripted_system.parsed_host;
}

const char* os::host_text(xylUInt32 host) {
	record("text", {host});
	return scripted_system.text;
}
