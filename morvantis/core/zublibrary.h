// The library object: it holds the host's two interfaces and the network layer.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API

class QoNet;
class xylReference_counted_object;
class zubLibrary_interface;
class zubMessage_interface;

class MORVANTIS_API zubLibrary {
public:
	zubLibrary();
	~zubLibrary();

	static void initialize(zubLibrary_interface* library_interface,
	                       zubMessage_interface* message_interface);

	void init_globals();
	void deinit_globals();

	zubLibrary_interface* get_interface() const { return interface_; }
	zubMessage_interface* get_message_interface() const { return message_interface_; }
	QoNet* get_qonet() const { return qonet_; }
	void set_message_interface(zubMessage_interface* replacement);

	bool get_assert_on_exceptions() const;
	bool get_enable_deterministic_mode() const;
	bool get_disable_gui_messages() const;
	bool delete_later_queue_has_element(xylReference_counted_object* object) const;
	void add_delete_later_queue(xylReference_counted_object* object) const;

	zubLibrary_interface* interface_ = nullptr;         // the host's; never deleted
	zubMessage_interface* message_interface_ = nullptr; // the library's once it was replaced
	QoNet* qonet_ = nullptr;
};

// The one library object: null until zubLibrary::initialize(), never reset.
extern MORVANTIS_API zubLibrary* zub_library;

// The host's own flag: the library neither reads nor writes it.
extern MORVANTIS_API bool is_final_cleanup_active_;
