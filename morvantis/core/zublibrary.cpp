#include <morvantis/core/zublibrary.h>

#include <morvantis/core/zublibrary_interface.h>
#include <morvantis/core/zubmessage_interface.h>
#include <morvantis/diagnostics/xyldebug_render_records.h>
#include <morvantis/io/xylio_text_stream.h>
#include <morvantis/memory/xylheap.h>
#include <morvantis/net/qonet.h>

#include <new>

zubLibrary* zub_library = nullptr;
xylIO_text_stream* xyl_debug_ptr = nullptr;
bool is_final_cleanup_active_ = false;

zubLibrary::zubLibrary() : qonet_(new(xyl_heap_allocate(sizeof(QoNet))) QoNet) {}

// kept: the network layer's object is freed without its destructor, so a host that has started the
// sockets stops them itself.
zubLibrary::~zubLibrary() {
	xyl_heap_free(qonet_);
	qonet_ = nullptr;
	deinit_globals();
}

void zubLibrary::initialize(zubLibrary_interface* library_interface,
                            zubMessage_interface* message_interface) {
	auto* library = new (xyl_heap_allocate(sizeof(zubLibrary))) zubLibrary;
	zub_library = library;
	library->interface_ = library_interface;
	library->message_interface_ = message_interface;
	library->init_globals();
}

void zubLibrary::init_globals() {
	xyl_cur_frame_debug_render_objects_ptr =
		new (xyl_heap_allocate(sizeof(xylDebug_render_records))) xylDebug_render_records;
	xyl_debug_ptr = new (xyl_heap_allocate(sizeof(xylIO_text_stream))) xylIO_text_stream;
}

void zubLibrary::deinit_globals() {
	if (xyl_cur_frame_debug_render_objects_ptr) {
		xyl_cur_frame_debug_render_objects_ptr->~xylDebug_render_records();
		xyl_heap_free(xyl_cur_frame_debug_render_objects_ptr);
		xyl_cur_frame_debug_render_objects_ptr = nullptr;
	}
	if (xyl_debug_ptr) {
		void* const block =
			dynamic_cast<void*>(xyl_debug_ptr); // the host may have put its own there
		xyl_debug_ptr->~xylIO_text_stream();
		xyl_heap_free(block);
		xyl_debug_ptr = nullptr;
	}
}

void zubLibrary::set_message_interface(zubMessage_interface* replacement) {
	// The block begins at the whole object, of which the interface may be any base.
	if (message_interface_) xyl_heap_free(dynamic_cast<void*>(message_interface_));
	message_interface_ = replacement;
}

bool zubLibrary::get_assert_on_exceptions() const { return interface_->get_assert_on_exceptions(); }

bool zubLibrary::get_enable_deterministic_mode() const {
	return interface_->get_enable_deterministic_mode();
}

bool zubLibrary::get_disable_gui_messages() const { return interface_->get_disable_gui_messages(); }

bool zubLibrary::delete_later_queue_has_element(xylReference_counted_object* object) const {
	return interface_->delete_later_queue_has_element(object);
}

void zubLibrary::add_delete_later_queue(xylReference_counted_object* object) const {
	interface_->add_delete_later_queue(object);
}
