// The library object: it holds the host's two interfaces and the network layer.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API

class QoNet;
class xylIO_text_stream;
class xylReference_counted_object;
class zubLibrary_interface;
class zubMessage_interface;

// The frame that everything else reports through. A host makes one with initialize() and, when it
// stops, runs the destructor; the library never does, and frees the object never.
//
// Threads: operations that only read may be called from any thread. initialize(),
// set_message_interface(), the assignment and the destructor belong to start-up and shutdown, when
// no other thread uses the library.
class MORVANTIS_API zubLibrary {
public:
	// An object without interfaces, for initialize(); its network layer waits for the host's
	// QoNet::initialize(). Allocates from the library's heap.
	zubLibrary();
	// Frees the network layer's object, sockets started or not, and ends the global objects. The
	// interfaces are left alone, and zub_library keeps its value.
	~zubLibrary();
	// Copies the three fields, after which both objects hold the same network layer.
	zubLibrary(const zubLibrary&) = default;
	zubLibrary& operator=(const zubLibrary&) = default;

	// Brings the library up: makes the library object on the library's heap, stores it in
	// zub_library with the two interfaces, and creates the global objects. The host calls it once,
	// before anything that may report.
	//
	// `library_interface`  the host's, used until the process ends and never deleted.
	// `message_interface`  becomes the library's at the first set_message_interface(), so it must
	//                      come from the library's heap unless that is never called. May be null
	//                      where nobody posts lines.
	// kept: a second call makes a new object in place of the first, which stays allocated.
	static void initialize(zubLibrary_interface* library_interface,
	                       zubMessage_interface* message_interface);

	// Creates the global objects, and destroys them; a second deinit_globals() does nothing.
	// initialize() and the destructor call them.
	void init_globals();
	void deinit_globals();

	zubLibrary_interface* get_interface() const { return interface_; }
	zubMessage_interface* get_message_interface() const { return message_interface_; }
	QoNet* get_qonet() const { return qonet_; }

	// Frees the message interface that is held, if any, and holds `replacement`, which may be null
	// and otherwise must come from the library's heap. The host gets no notice.
	//
	// kept: no destructor of the old one runs, since the interface has none. It must not be given
	// again.
	void set_message_interface(zubMessage_interface* replacement);

	// The host's answers and its queue: each hands on to the operation of its name.
	bool get_assert_on_exceptions() const;
	bool get_enable_deterministic_mode() const;
	bool get_disable_gui_messages() const;
	bool delete_later_queue_has_element(xylReference_counted_object* object) const;
	void add_delete_later_queue(xylReference_counted_object* object) const;

	zubLibrary_interface* interface_ = nullptr;         // the host's; never deleted
	zubMessage_interface* message_interface_ = nullptr; // the library's once it was replaced
	QoNet* qonet_ = nullptr;                            // the library's
};

// The one library object: null until zubLibrary::initialize(), never reset.
extern MORVANTIS_API zubLibrary* zub_library;

// A text stream for the host's debug output, which nothing in the library writes to: made by
// init_globals(), ended by deinit_globals(), null before and after. It has no file.
extern MORVANTIS_API xylIO_text_stream* xyl_debug_ptr;

// The host's own flag, clear at load: the library neither reads nor writes it.
extern MORVANTIS_API bool is_final_cleanup_active_;
