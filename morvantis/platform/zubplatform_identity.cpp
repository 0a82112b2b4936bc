// GUIDs, dynamic libraries, the environment, and the names of machine and user.
#include <morvantis/platform/zubplatform.h>

#include <morvantis/core/xylguid.h>
#include <morvantis/core/xylreport.h>
#include <morvantis/platform/system/module.h>
#include <morvantis/platform/system/process.h>
#include <morvantis/strings/xylvarstring.h>

#include <cstdlib>
#include <cstring>
#include <span>

namespace {

// Asks the system for a name and terminates it at the count that comes back, which ends the process
// if it isn't below the buffer's size.
bool take_name(bool (*ask)(char*, xylUInt32*), std::span<char> buffer, const char* failed_text,
               xylVarString& out) {
	xylUInt32 count = static_cast<xylUInt32>(buffer.size());
	if (!ask(buffer.data(), &count)) {
		xyl_warning_with_system_error(const_cast<char*>(failed_text)); // only reads it
		return false;
	}
	if (count >= buffer.size()) std::abort();
	buffer[count] = 0;
	out = buffer.data();
	return true;
}

} // namespace

void zubPlatform::create_guid(xylGuid_type* out) {
	unsigned char bytes[sizeof(*out)];
	std::memcpy(bytes, out, sizeof(bytes)); // what stays if the system has none to give
	os::create_guid(bytes);
	std::memcpy(out, bytes, sizeof(bytes));
}

void* zubPlatform::load_library(const xylVarString& name) { return os::load_module(name.char_p()); }

bool zubPlatform::free_library(void* module) { return os::free_module(module); }

void* zubPlatform::get_process_address(void* module, xylVarString& symbol) {
	return os::module_symbol(module, symbol.char_p());
}

bool zubPlatform::set_environment_variable(const xylVarString& name, const xylVarString& value) {
	return os::set_environment_variable(name.char_p(), value.char_p());
}

bool zubPlatform::get_computer_name(xylVarString& out) {
	char buffer[16];
	return take_name(os::computer_name, buffer, "Cannot Get Computer Name: #E", out);
}

// kept: the system's count includes the terminator, so ours stands a byte behind the system's own,
// and a name of 256 characters ends the process.
bool zubPlatform::get_os_user_name(xylVarString& out) {
	char buffer[257];
	return take_name(os::user_name, buffer, "Cannot Get User Name: #E", out);
}
