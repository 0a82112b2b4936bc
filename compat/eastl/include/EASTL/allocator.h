// The allocator that containers have by default. Its memory is the library's general heap.
#pragma once

#include <EASTL/internal/config.h> // EASTL_API

namespace eastl {

// Has no state: any allocator may free what another one allocated. Defined in the library, so
// that a host's containers and the library's own share one heap.
//
// Threads: all operations may be called from any thread at the same time.
class EASTL_API allocator {
public:
	// The name is for reports; it isn't kept.
	constexpr explicit allocator(const char* /* name */ = "EASTL") {}
	constexpr allocator(const allocator&) = default;
	constexpr allocator(const allocator&, const char* /* name */) {}
	allocator& operator=(const allocator&) = default;

	// Takes `n` bytes, aligned to 16. Null for 0 bytes and when memory is exhausted. `flags` is
	// ignored.
	void* allocate(size_t n, int flags = 0);
	// The same with an alignment of the caller's, a power of two. `offset` must be a multiple of
	// it: a block aligned at another place than its beginning is outside the contract.
	void* allocate(size_t n, size_t alignment, size_t offset, int flags = 0);
	// Gives a block back; `n` is ignored. Null is allowed.
	void deallocate(void* p, size_t n);

	// Always "EASTL".
	const char* get_name() const;
	// Does nothing.
	void set_name(const char* name);
};

// Always true.
EASTL_API bool operator==(const allocator& a, const allocator& b);

// The allocator that function<> takes memory from, never null unless the host set null.
EASTL_API allocator* GetDefaultAllocator();
// Puts another in its place and returns the former. Not to be called while threads allocate.
EASTL_API allocator* SetDefaultAllocator(allocator* replacement);

// Takes `n` bytes at `alignment`, through the plain form where that is aligned enough.
template <typename Allocator>
void* allocate_memory(Allocator& a, size_t n, size_t alignment, size_t offset) {
	return alignment <= 16 ? a.allocate(n) : a.allocate(n, alignment, offset);
}

} // namespace eastl
