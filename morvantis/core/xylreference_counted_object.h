// Objects that several owners share.
#pragma once

#include <morvantis/core/zubobject.h>

#include <atomic>

// An object with a count of its references. The release that brings the count to 0 ends it: at
// once, or, for a class that answers so, by way of the host's queue.
//
// The object lives on the library's heap (memory/xylheap.h): it is ended by its destructor and
// xyl_heap_free() on its most derived address, never by operator delete.
//
// Threads: references may be taken and released on any threads at once, each with full ordering.
// The end comes on the thread of the last release.
class MORVANTIS_API xylReference_counted_object : public zubObject {
public:
	// Count 0: the creator takes the first reference itself, and until it is released nothing ends
	// the object.
	xylReference_counted_object() = default;
	// kept: the count is copied with the flag, so a copy begins with its source's references, which
	// nobody has to it.
	xylReference_counted_object(const xylReference_counted_object& source);

	int get_type_id() const override;
	xylConstString<128> get_type_name() const override; // "xylReference_counted_object"

	// Takes a reference. The const form calls the other.
	virtual void add_reference() const;
	virtual void add_reference() { ++reference_count_; }
	// Releases a reference and returns how many are left; with 0 the object is ended, or the
	// host's, and must not be touched. The const form calls the other.
	//
	// Where should_delete_instantly() is false, zubLibrary::initialize() must have run; the host's
	// add_delete_later_queue() then has the object, on whatever thread this is.
	// kept: nobody sees a release too many; the count wraps, and the object stays for ever.
	virtual int release_reference() const;
	virtual int release_reference() {
		const unsigned int left = --reference_count_;
		if (left == 0) end();
		return static_cast<int>(left);
	}

	// Questions of the host, which the library doesn't ask.
	virtual bool should_be_deleted_this_frame_at_delete_later() const; // true
	virtual bool is_agent_visuals();                                   // false
	virtual bool is_scene_view();                                      // false

	// References now; other threads may have changed them by the time the caller looks.
	unsigned int get_intrusive_reference_count() const {
		return reference_count_.load(std::memory_order_relaxed);
	}

	static int get_class_xylReference_counted_object_type_id() {
		return class_xylReference_counted_object_type_id_;
	}

	// The number of the type: 0, as the first one of the library's static initialisers.
	static int class_xylReference_counted_object_type_id_;

	mutable std::atomic<unsigned int> reference_count_ = 0;
	bool reserved_flag_; // no meaning in the library; not set by construction, but copied

protected:
	// Whether the last release ends the object at once (true) or hands it to the host.
	virtual bool should_delete_instantly();

private:
	void end(); // deletes the object or hands it to the host
};
