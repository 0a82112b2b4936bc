// What EASTL's headers declare and leave to the application: the allocator behind all containers.

#include <morvantis/memory/xylarray.h> // gpDefaultAllocator
#include <morvantis/memory/xylheap.h>

namespace eastl {

// compat/eastl has these inline, genuine EASTL declares them alone.
#if defined(EASTL_USER_DEFINED_ALLOCATOR)
allocator::allocator(const char*) {}

allocator::allocator(const allocator&) {}

allocator::allocator(const allocator&, const char*) {}

allocator& allocator::operator=(const allocator&) { return *this; }

EASTL_API bool operator!=(const allocator&, const allocator&) { return false; } // before C++20
#endif

namespace {

allocator default_allocator;

} // namespace

EASTL_API allocator* gpDefaultAllocator = &default_allocator;

EASTL_API allocator* GetDefaultAllocator() { return gpDefaultAllocator; }

EASTL_API allocator* SetDefaultAllocator(allocator* replacement) {
	allocator* former = gpDefaultAllocator;
	gpDefaultAllocator = replacement;
	return former;
}

void* allocator::allocate(size_t n, int) { return xyl_heap_allocate(n); }

void* allocator::allocate(size_t n, size_t alignment, size_t, int) {
	return alignment <= 16 ? xyl_heap_allocate(n) : xyl_heap_allocate_aligned(n, alignment);
}

void allocator::deallocate(void* p, size_t) { xyl_heap_free(p); }

const char* allocator::get_name() const { return "EASTL"; }

void allocator::set_name(const char*) {}

EASTL_API bool operator==(const allocator&, const allocator&) { return true; }

} // namespace eastl
