#include <morvantis/memory/xylmemory_allocator_globals.h>

#include <morvantis/memory/xylheap_allocator.h>
#include <morvantis/memory/xylpage_allocator.h>

xylPage_allocator* xylMemory_allocator_globals::page_allocator_ = nullptr;
xylHeap_allocator* xylMemory_allocator_globals::heap_allocator_ = nullptr;

void xylMemory_allocator_globals::init_global_allocators() {
	page_allocator_ = new xylPage_allocator;
	heap_allocator_ = new xylHeap_allocator(page_allocator_);
}

void xylMemory_allocator_globals::finalize_global_allocators() {}
