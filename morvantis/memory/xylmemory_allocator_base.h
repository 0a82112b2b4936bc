// The interface of allocators for the engine's modules, and the groups that label allocations.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API, size_t

#include <EASTL/functional.h> // function

// Implemented by the concrete allocators and by the engine's own. The order of the virtual
// operations is the contract; no virtual destructor is among them.
//
// Threads: no lock guards the callback, which must be set before allocation starts. For the rest
// see the concrete allocator.
class MORVANTIS_API xylMemory_allocator_base {
public:
	// What a block is for. A label for reports: the library's allocators take any and ignore it.
	enum Allocation_group : unsigned char {
		default_group,
		animation,
		render,
		physics,
		sound,
		mission,
		mesh_instance,
		loading,
		granite,
		point_light_system,
		entity_instance,
		flora,
		mesh_edit_data,
		nav_mesh,
		mesh_record_buffers,
		shader,
		face_gen,
		string,
		profiler,
		material,
		meta_mesh,
		agent_renderer,
		count
	};

	// The groups' names by their values, with that of `count` at the end.
	static const char* const allocation_group_names[23];

	// The callback starts out empty. default_alignment_ is left unset: each concrete constructor
	// sets it.
	xylMemory_allocator_base();
	// A copy copies the callback, a move leaves the source's callback empty. Assignment first
	// destroys the callback that was held before; assigned to itself, nothing happens to it.
	xylMemory_allocator_base(const xylMemory_allocator_base& other);
	xylMemory_allocator_base(xylMemory_allocator_base&& other) noexcept;
	xylMemory_allocator_base& operator=(const xylMemory_allocator_base& other);
	xylMemory_allocator_base& operator=(xylMemory_allocator_base&& other) noexcept;
	// Destroys the callback. kept: not virtual.
	~xylMemory_allocator_base();

	// `size` bytes at `alignment`, a power of two. What a size of 0 gives, and whether the memory
	// is cleared, is the concrete allocator's to say; null when memory is exhausted. The caller
	// owns the block and gives it back through deallocate_mem() of the same allocator.
	virtual void* allocate_aligned_mem(size_t size, size_t alignment, Allocation_group group) = 0;
	// Moves a block to `size` bytes at `alignment`, with its contents; `memory` is then no longer
	// valid.
	virtual void* reallocate_aligned_mem(void* memory, size_t size, size_t alignment,
	                                     Allocation_group group) = 0;
	// Gives a block of `size` bytes back. The result is the concrete allocator's to define.
	virtual bool deallocate_mem(void* memory, size_t size) = 0;
	// Bytes, as the concrete allocator counts them.
	virtual size_t get_total_allocation_size() const = 0;
	// Bytes in a page of the allocator's source.
	virtual size_t page_size() const = 0;
	// The aligned forms at default_alignment_, sign-extended.
	virtual void* allocate_mem(size_t size, Allocation_group group);
	virtual void* reallocate_mem(void* memory, size_t size, Allocation_group group);

	// The next multiple of page_size(), which is asked twice and must not be 0, at or above `size`.
	// A size of 0 wraps around: with a power of two as page size, the result is 0.
	size_t round_up_to_page_size(size_t size) const;

	xylInt32 default_alignment_; // of allocate_mem() and reallocate_mem(), in bytes
	// A concrete allocator may call it with the size of a request, or with -1 for a release.
	eastl::function<void(int)> allocation_callback_;
};

static_assert(xylMemory_allocator_base::count == 22);
