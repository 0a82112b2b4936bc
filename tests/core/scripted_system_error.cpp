#include "scripted_system_error.h"

#include <morvantis/platform/system/error.h>

#include <cstring>

Scripted_system_error& Scripted_system_error::get() {
	static Scripted_system_error instance;
	return instance;
}

xylUInt32 os::last_error() { return Scripted_system_error::get().last_error; }

bool os::system_message(xylUInt32 code, char* buffer, xylUInt32 size) {
	Scripted_system_error& system = Scripted_system_error::get();
	system.asked_codes.push_back(code);
	system.asked_sizes.push_back(size);
	if (system.message && system.message->size() < size) {
		std::strcpy(buffer, system.message->c_str());
		return true;
	}
	if (size != 0) std::strcpy(buffer, "?"); // as it is allowed to
	system.last_error = system.reason;
	return false;
}

char* os::allocate_system_message(xylUInt32 code) {
	Scripted_system_error& system = Scripted_system_error::get();
	system.asked_codes.push_back(code);
	if (!system.message) return nullptr;
	++system.allocated_messages;
	return std::strcpy(new char[system.message->size() + 1], system.message->c_str());
}

void os::free_system_message(char* message) {
	if (message) --Scripted_system_error::get().allocated_messages;
	delete[] message;
}

void os::debug_output(const char*) {}
