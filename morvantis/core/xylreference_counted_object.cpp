#include <morvantis/core/xylreference_counted_object.h>

#include <morvantis/core/zublibrary.h>
#include <morvantis/memory/xylheap.h>

#include <cstring>

// class_xylReference_counted_object_type_id_ is in load_order.cpp.

xylReference_counted_object::xylReference_counted_object(const xylReference_counted_object& source)
	: zubObject(source), reference_count_(source.get_intrusive_reference_count()) {
	// As a byte: it need not have been set.
	std::memcpy(&reserved_flag_, &source.reserved_flag_, sizeof(reserved_flag_));
}

int xylReference_counted_object::get_type_id() const {
	return class_xylReference_counted_object_type_id_;
}

xylConstString<128> xylReference_counted_object::get_type_name() const {
	return "xylReference_counted_object";
}

void xylReference_counted_object::add_reference() const {
	const_cast<xylReference_counted_object*>(this)->add_reference();
}

int xylReference_counted_object::release_reference() const {
	return const_cast<xylReference_counted_object*>(this)->release_reference();
}

void xylReference_counted_object::end() {
	if (!should_delete_instantly()) return zub_library->add_delete_later_queue(this);
	void* const memory = dynamic_cast<void*>(this); // of the most derived object
	this->~xylReference_counted_object();
	xyl_heap_free(memory);
}

bool xylReference_counted_object::should_be_deleted_this_frame_at_delete_later() const {
	return true;
}

bool xylReference_counted_object::is_agent_visuals() { return false; }

bool xylReference_counted_object::is_scene_view() { return false; }

bool xylReference_counted_object::should_delete_instantly() { return true; }
