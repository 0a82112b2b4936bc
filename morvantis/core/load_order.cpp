// Every object that static initialisation creates, in one list from first to last. Nothing else in
// the library has a dynamic initialiser; the heap's own start-up comes behind this list.

#include <morvantis/core/xylreference_counted_object.h>
#include <morvantis/diagnostics/zubcallstack_helpers.h>
#include <morvantis/diagnostics/zubdebughelp_interface.h>
#include <morvantis/memory/xylmemory_allocator_globals.h>
#include <morvantis/net/bit_buffer_manager.h>
#include <morvantis/platform/system/process.h> // current_process

// Before all that could ask for a stack. On Linux it needs no code that runs at load.
xylMutex zubCallstack_helpers::dbg_help_lock;

// Takes no memory while it is empty; emptied when the library unloads.
xylMap<xylUInt64, zubCallstack_module> zubCallstack_helpers::Modules;

void* zubDebughelp_interface::dummy_process = os::current_process();

// The first type, number 0. Uses the run-time's heap only, as the library's has not started yet.
int xylReference_counted_object::class_xylReference_counted_object_type_id_ =
	genereate_new_type_id("xylReference_counted_object");

// Its 16 MiB of zeros are the program image's: clearing them costs nothing at load, and pages are
// taken from the system as they are first written to. (clang stops evaluating a constant of this
// length and clears at run time instead, here in its place.)
xylStatic_hashtable<void*, xylUInt64, 1048576> xylMemory_allocator_globals::array_allocation_data_;

// page_allocator_ and heap_allocator_.
namespace {
struct Global_allocators {
	Global_allocators() { xylMemory_allocator_globals::init_global_allocators(); }
} global_allocators;
} // namespace

// Needs no construction; what is registered here is that it is emptied when the library unloads.
Bit_buffer_manager bit_buffer_manager;
