#include <morvantis/memory/xylmemory_allocator_globals.h>

void xylMemory_allocator_globals::finalize_global_allocators() {}
