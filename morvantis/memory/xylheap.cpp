// The parts of the heap door that are the same whatever stands behind it.

#include <morvantis/memory/xylheap.h>

void* XXH_malloc(size_t size) { return xyl_heap_allocate(size); }

void XXH_free(void* memory) { xyl_heap_free(memory); }
