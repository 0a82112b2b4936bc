// A host that brings the library up, is answered through its interfaces and uses a container whose
// memory comes from the library's heap. Ends with 0 if all of it worked.

#include <morvantis/core/xylreport.h>
#include <morvantis/core/zublibrary.h>
#include <morvantis/core/zublibrary_interface.h>
#include <morvantis/core/zubmessage_interface.h>
#include <morvantis/memory/xylarray.h>
#include <morvantis/memory/xylheap.h>

#include <cstdio>
#include <new>
#include <string>

namespace {

class Messages : public zubMessage_interface {
	void post_warning_line(const char*) override {}
	void post_success_line(const char*) override {}
	void post_message_line_formatted(unsigned int, const char*) override {}
	void post_message_line(const xylVarString&, const int&) override {}
};

class Host : public zubLibrary_interface {
public:
	std::string warnings;

private:
	void error(const char*, int) override {}
	void warning(const char* text, int) override { warnings += text; }
	void content_warning(const char*, int) override {}
	void failed_assert(const char*, int, const char*, bool, bool) override {}
	void simple_assert(const char*, int, const char*) override {}
	void log(const char*) override {}
	bool get_assert_on_exceptions() override { return false; }
	bool get_enable_deterministic_mode() override { return false; }
	bool get_disable_gui_messages() override { return false; }
	bool delete_later_queue_has_element(xylReference_counted_object*) override { return false; }
	void add_delete_later_queue(xylReference_counted_object*) override {}
};

} // namespace

int main() {
	if (zub_library || is_final_cleanup_active_) return 2; // as the load leaves them
	Host host;
	zubLibrary::initialize(&host, new (xyl_heap_allocate(sizeof(Messages))) Messages);
	xyl_warning("%d bottles", 3);

	xylArray<int> numbers;
	for (int i = 0; i < 100; ++i) numbers.push_back(i);

	std::printf("warned: %s; %d numbers in room for %d\n", host.warnings.c_str(),
	            static_cast<int>(numbers.size()), static_cast<int>(numbers.capacity()));
	return host.warnings == "3 bottles" && numbers[99] == 99 && numbers.capacity() == 128 ? 0 : 1;
}
