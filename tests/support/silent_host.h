// A host that hears nothing and wants nothing, to be overridden where one has to answer.
#pragma once

#include <morvantis/core/zublibrary_interface.h>

class Silent_host : public zubLibrary_interface {
public:
	void error(const char*, int) override {}
	void warning(const char*, int) override {}
	void content_warning(const char*, int) override {}
	void failed_assert(const char*, int, const char*, bool, bool) override {}
	void simple_assert(const char*, int, const char*) override {}
	void log(const char*) override {}
	bool get_assert_on_exceptions() override { return false; }
	bool get_enable_deterministic_mode() override { return false; }
	bool get_disable_gui_messages() override { return true; }
	bool delete_later_queue_has_element(xylReference_counted_object*) override { return false; }
	void add_delete_later_queue(xylReference_counted_object*) override {}
};
