#include <morvantis/core/zublibrary.h>

#include <morvantis/core/zublibrary_interface.h>
#include <morvantis/core/zubmessage_interface.h>
#include <morvantis/memory/xylheap.h>

#include <new>

zubLibrary* zub_library = nullptr;
bool is_final_cleanup_active_ = false;

zubLibrary::zubLibrary() = default;
zubLibrary::~zubLibrary() = default;

void zubLibrary::initialize(zubLibrary_interface* library_interface,
                            zubMessage_interface* message_interface) {
	zub_library = new (xyl_heap_allocate(sizeof(zubLibrary))) zubLibrary;
	zub_library->interface_ = library_interface;
	zub_library->message_interface_ = message_interface;
}
