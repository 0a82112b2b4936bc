// A host that brings the library up, is answered through its interfaces and uses a container whose
// memory comes from the library's heap. Ends with 0 if all of it worked.

#include "../support/silent_host.h" // knows the installed headers only, too

#include <morvantis/core/xylreport.h>
#include <morvantis/core/zublibrary.h>
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

class Host : public Silent_host {
public:
	std::string warnings;

private:
	void warning(const char* text, int) override { warnings += text; }
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
