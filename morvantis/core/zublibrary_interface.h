// What the library asks of its host: where texts go, how the run is decided, deferred deletion.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API

class xylReference_counted_object;

// Implemented by the host and given to zubLibrary::initialize(), which keeps the pointer and never
// deletes it. The order of the operations is the contract; no virtual destructor is among them.
//
// Threads: the library calls from whatever thread the host called it on, several at a time.
class MORVANTIS_API zubLibrary_interface {
public:
	zubLibrary_interface() = default;
	zubLibrary_interface(const zubLibrary_interface&) {}
	zubLibrary_interface(zubLibrary_interface&&) noexcept {}
	zubLibrary_interface& operator=(const zubLibrary_interface&) { return *this; }
	zubLibrary_interface& operator=(zubLibrary_interface&&) noexcept { return *this; }

	// Texts. `text` is the library's own buffer, valid during the call. The second argument of the
	// first three is for the host's own use: the library always passes 0.
	virtual void error(const char* text, int reserved) = 0;
	virtual void warning(const char* text, int reserved) = 0;
	virtual void content_warning(const char* text, int reserved) = 0;
	// What failedAssert() was given, unchanged; `reserved` is always false.
	virtual void failed_assert(const char* first_text, int number, const char* second_text,
	                           bool flag, bool reserved) = 0;
	virtual void simple_assert(const char* first_text, int number, const char* second_text) = 0;
	virtual void log(const char* text) = 0;

	// Decisions of the run.
	virtual bool get_assert_on_exceptions() = 0;
	virtual bool get_enable_deterministic_mode() = 0;
	virtual bool get_disable_gui_messages() = 0;

	// The host's queue of objects that are to be deleted at a time of its own.
	virtual bool delete_later_queue_has_element(xylReference_counted_object* object) = 0;
	virtual void add_delete_later_queue(xylReference_counted_object* object) = 0;

	// Called by the host with the system's exception record. The default says once, on the debug
	// output, that nothing is implemented, and returns 0; later calls return 0 silently.
	virtual int unhandled_exception_handler(void* exception);
};
