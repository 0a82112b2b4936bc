#include <morvantis/memory/xylmemory_allocator_base.h>

#include <iterator>

const char* const xylMemory_allocator_base::allocation_group_names[23] = {
	"default_group",   "animation",      "render",         "physics",  "sound",
	"mission",         "mesh_instance",  "loading",        "granite",  "point_light_system",
	"entity_instance", "flora",          "mesh_edit_data", "nav_mesh", "mesh_record_buffers",
	"shader",          "face_gen",       "string",         "profiler", "material",
	"meta_mesh",       "agent_renderer", "count",
};
static_assert(std::size(xylMemory_allocator_base::allocation_group_names) ==
              xylMemory_allocator_base::count + 1);

xylMemory_allocator_base::xylMemory_allocator_base() = default;
xylMemory_allocator_base::xylMemory_allocator_base(const xylMemory_allocator_base&) = default;
xylMemory_allocator_base::xylMemory_allocator_base(xylMemory_allocator_base&&) noexcept = default;
xylMemory_allocator_base&
xylMemory_allocator_base::operator=(const xylMemory_allocator_base&) = default;
xylMemory_allocator_base&
xylMemory_allocator_base::operator=(xylMemory_allocator_base&&) noexcept = default;
xylMemory_allocator_base::~xylMemory_allocator_base() = default;

void* xylMemory_allocator_base::allocate_mem(size_t size, Allocation_group group) {
	return allocate_aligned_mem(size, static_cast<size_t>(default_alignment_), group);
}

void* xylMemory_allocator_base::reallocate_mem(void* memory, size_t size, Allocation_group group) {
	return reallocate_aligned_mem(memory, size, static_cast<size_t>(default_alignment_), group);
}

size_t xylMemory_allocator_base::round_up_to_page_size(size_t size) const {
	return ((size - 1) / page_size() + 1) * page_size();
}
