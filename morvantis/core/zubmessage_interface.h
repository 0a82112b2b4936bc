// Where on-screen lines go: the second interface that the host hands to the library.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API

class xylVarString;

// Implemented by the host. The order of the operations is the contract; no virtual destructor is
// among them, and none runs when the library frees the object (zubLibrary::set_message_interface).
//
// The numbers beside the texts are the host's own: the library hands them through.
// Threads: the library calls from whatever thread the host called it on, several at a time.
class MORVANTIS_API zubMessage_interface {
public:
	virtual void post_warning_line(const char* text) = 0;
	virtual void post_success_line(const char* text) = 0;
	virtual void post_message_line_formatted(unsigned int value, const char* text) = 0;
	virtual void post_message_line(const xylVarString& text, const int& value) = 0;
};
